// Events from the dispatcher to the host's sinks, driven through the very callback the
// dispatcher calls, with sinks that record what reaches them and in which order.
#include <windows.h>
#include <olectl.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "dispatch/CMediaPlayer.h"
#include "engine/CComCreator.h"
#include "engine/ComPtr.h"
#include "objects/CPlay.h"
#include "tests/support/CRecordingSink.h"

namespace {

typedef std::vector<CRecordingSink::Entry> Log;

class PlayEvents : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
        ASSERT_EQ(S_OK, CComCreator<CPlay>::CreateInstance(nullptr, IID_IPlay, &m_play));
        m_pPlay = static_cast<CPlay*>(static_cast<IPlayCD*>(m_play.Get()));
        ComPtr<IConnectionPointContainer> container;
        ASSERT_EQ(S_OK, QueryTo(m_play, IID_IConnectionPointContainer, container));
        ASSERT_EQ(S_OK, container->FindConnectionPoint(IID_IPlayEvents, &m_events));
        ASSERT_EQ(S_OK, container->FindConnectionPoint(IID_IPlayCDEvents, &m_cdEvents));
    }
    void TearDown() override
    {
        m_events.Reset();
        m_cdEvents.Reset();
        m_play.Reset();
        CoUninitialize();
    }

    // What the dispatcher calls.
    void Deliver(DWORD dwEvent, ULONG_PTR ulParam = 0) { CPlay::OnMediaPlayerEvent(dwEvent, ulParam, m_pPlay); }
    void DeliverProgress(double dSeconds) { Deliver(STREAMING_EVENT_PROGRESS, reinterpret_cast<ULONG_PTR>(&dSeconds)); }

    // Sinks live as long as the fixture: the Play object may still hold them in TearDown.
    CRecordingSink* Sink(const char* name, bool bCD = true)
    {
        m_sinks.push_back(std::make_unique<CRecordingSink>(name, &m_log, bCD));
        return m_sinks.back().get();
    }
    DWORD Advise(IConnectionPoint* pPoint, CRecordingSink& sink)
    {
        DWORD dwCookie = 0;
        EXPECT_EQ(S_OK, pPoint->Advise(&sink, &dwCookie));
        return dwCookie;
    }
    std::vector<std::string> Who() const
    {
        std::vector<std::string> names;
        for (const auto& e : m_log)
            names.push_back(e.sink + ":" + e.event);
        return names;
    }

    std::vector<std::unique_ptr<CRecordingSink>> m_sinks;
    ComPtr<IPlay> m_play;
    CPlay* m_pPlay = nullptr;
    ComPtr<IConnectionPoint> m_events;
    ComPtr<IConnectionPoint> m_cdEvents;
    Log m_log;
};

TEST_F(PlayEvents, CompletionReachesEverySinkInSlotOrder)
{
    auto a = Sink("a"), b = Sink("b");
    Advise(m_events.Get(), *a);
    Advise(m_events.Get(), *b);
    Deliver(STREAMING_EVENT_COMPLETE);
    EXPECT_EQ((std::vector<std::string>{"a:complete", "b:complete"}), Who());
}

TEST_F(PlayEvents, OnlyTheLow16BitsOfTheEventCodeCount)
{
    auto a = Sink("a");
    Advise(m_events.Get(), *a);
    Deliver(0x00010000 | STREAMING_EVENT_COMPLETE);
    Deliver(9);      // unknown: dropped
    Deliver(0x10000); // code 0: unknown too
    EXPECT_EQ((std::vector<std::string>{"a:complete"}), Who());
}

TEST_F(PlayEvents, TheSecondOfFiveUnadvisedLeavesASlotTheNextSinkTakes)
{
    CRecordingSink* sinks[5] = {Sink("s0"), Sink("s1"), Sink("s2"), Sink("s3"), Sink("s4")};
    DWORD cookies[5];
    for (int i = 0; i < 5; ++i)
        cookies[i] = Advise(m_events.Get(), *sinks[i]);
    EXPECT_EQ(sinks[1]->Cookie(), cookies[1]) << "the cookie is the sink's interface pointer";
    ASSERT_EQ(S_OK, m_events->Unadvise(cookies[1]));
    EXPECT_EQ(0, sinks[1]->OutsideRefs());
    auto late = Sink("late");
    Advise(m_events.Get(), *late);
    Deliver(STREAMING_EVENT_COMPLETE);
    EXPECT_EQ((std::vector<std::string>{"s0:complete", "late:complete", "s2:complete", "s3:complete", "s4:complete"}),
              Who());
}

TEST_F(PlayEvents, ASinkThatFailsKeepsReceivingAndTheNextSinkStillHearsTheEvent)
{
    auto failing = Sink("failing"), next = Sink("next");
    failing->answer = E_UNEXPECTED;
    Advise(m_events.Get(), *failing);
    Advise(m_events.Get(), *next);
    Deliver(STREAMING_EVENT_COMPLETE);
    Deliver(STREAMING_EVENT_COMPLETE);
    EXPECT_EQ((std::vector<std::string>{"failing:complete", "next:complete", "failing:complete", "next:complete"}),
              Who());
}

TEST_F(PlayEvents, ASinkMayUnadviseItselfFromInsideTheEvent)
{
    auto quitter = Sink("quitter"), other = Sink("other");
    const DWORD dwCookie = Advise(m_events.Get(), *quitter);
    Advise(m_events.Get(), *other);
    HRESULT hrInside = E_FAIL;
    LONG refsInside = 0;
    quitter->onEvent = [&](const char*) {
        hrInside = m_events->Unadvise(dwCookie);
        refsInside = quitter->OutsideRefs();
    };
    Deliver(STREAMING_EVENT_COMPLETE);
    EXPECT_EQ(S_OK, hrInside);
    EXPECT_EQ(1, refsInside) << "held by the firing loop during its own call";
    EXPECT_EQ(0, quitter->OutsideRefs());
    Deliver(STREAMING_EVENT_COMPLETE);
    EXPECT_EQ((std::vector<std::string>{"quitter:complete", "other:complete", "other:complete"}), Who());
}

TEST_F(PlayEvents, ASinkAdvisedFromInsideAnEventIntoALaterSlotIsCalledInTheSamePass)
{
    auto first = Sink("first"), gap = Sink("gap"), third = Sink("third"), newcomer = Sink("newcomer");
    Advise(m_events.Get(), *first);
    const DWORD dwGap = Advise(m_events.Get(), *gap);
    Advise(m_events.Get(), *third);
    ASSERT_EQ(S_OK, m_events->Unadvise(dwGap)); // slot 1 free
    first->onEvent = [&](const char*) {
        if (newcomer->OutsideRefs() == 0)
            Advise(m_events.Get(), *newcomer);
    };
    Deliver(STREAMING_EVENT_COMPLETE);
    EXPECT_EQ((std::vector<std::string>{"first:complete", "newcomer:complete", "third:complete"}), Who());
}

TEST_F(PlayEvents, TrackCompletionGoesOnlyToTheCDPointAndEverythingElseOnlyToThePlayPoint)
{
    auto cdOnly = Sink("cd"), playOnly = Sink("play");
    Advise(m_cdEvents.Get(), *cdOnly);
    Advise(m_events.Get(), *playOnly);
    Deliver(STREAMING_EVENT_COMPLETE);
    Deliver(STREAMING_EVENT_TRACK_COMPLETE);
    EXPECT_EQ((std::vector<std::string>{"play:complete", "cd:track"}), Who());
}

TEST_F(PlayEvents, WhileStoppedProgressIsOnlyRememberedAndErrorsAreDropped)
{
    auto a = Sink("a");
    Advise(m_events.Get(), *a);
    DeliverProgress(3.25);
    Deliver(STREAMING_EVENT_ERROR, static_cast<ULONG_PTR>(E_ABORT));
    EXPECT_TRUE(m_log.empty());

    TESSALY_PLAYBACK_STATE state = Playback_State_Busy;
    double dTime = -1.0;
    EXPECT_EQ(S_OK, m_play->GetState(&state, &dTime));
    EXPECT_EQ(Playback_State_Stop, state);
    EXPECT_EQ(3.25, dTime);
}

TEST_F(PlayEvents, SinksAreReleasedWithThePlayObject)
{
    auto a = Sink("a"), b = Sink("b");
    Advise(m_events.Get(), *a);
    Advise(m_cdEvents.Get(), *b);
    Advise(m_events.Get(), *b);
    EXPECT_EQ(1, a->OutsideRefs());
    EXPECT_EQ(2, b->OutsideRefs());
    m_events.Reset();
    m_cdEvents.Reset();
    m_play.Reset();
    EXPECT_EQ(0, a->OutsideRefs());
    EXPECT_EQ(0, b->OutsideRefs());
}

// ---- the connection-point contract -----------------------------------------------------------

TEST_F(PlayEvents, AdviseChecksItsArgumentsAndTheSinksInterface)
{
    auto a = Sink("a");
    DWORD dwCookie = 7;
    EXPECT_EQ(E_POINTER, m_events->Advise(nullptr, &dwCookie));
    EXPECT_EQ(7u, dwCookie);
    EXPECT_EQ(E_POINTER, m_events->Advise(a, nullptr));

    auto cdless = Sink("cdless", false);
    EXPECT_EQ(CONNECT_E_CANNOTCONNECT, m_cdEvents->Advise(cdless, &dwCookie));
    EXPECT_EQ(0u, dwCookie);
    EXPECT_EQ(0, cdless->OutsideRefs());

    a->bAnswersPlayEvents = false;
    dwCookie = 7;
    EXPECT_EQ(CONNECT_E_CANNOTCONNECT, m_events->Advise(a, &dwCookie));
    EXPECT_EQ(0u, dwCookie);
}

TEST_F(PlayEvents, UnadviseRefusesCookiesItDidNotIssueOrAlreadyTookBack)
{
    auto a = Sink("a");
    EXPECT_EQ(CONNECT_E_NOCONNECTION, m_events->Unadvise(0));
    EXPECT_EQ(CONNECT_E_NOCONNECTION, m_events->Unadvise(0x12345678));
    const DWORD dwCookie = Advise(m_events.Get(), *a);
    EXPECT_EQ(CONNECT_E_NOCONNECTION, m_cdEvents->Unadvise(dwCookie)) << "another point's list";
    EXPECT_EQ(S_OK, m_events->Unadvise(dwCookie));
    EXPECT_EQ(CONNECT_E_NOCONNECTION, m_events->Unadvise(dwCookie));
}

TEST_F(PlayEvents, TheContainerFindsAndListsItsTwoPointsInOrder)
{
    ComPtr<IConnectionPointContainer> container;
    ASSERT_EQ(S_OK, QueryTo(m_play, IID_IConnectionPointContainer, container));
    EXPECT_EQ(E_POINTER, container->FindConnectionPoint(IID_IPlayEvents, nullptr));
    IConnectionPoint* pPoint = reinterpret_cast<IConnectionPoint*>(0x1);
    EXPECT_EQ(CONNECT_E_NOCONNECTION, container->FindConnectionPoint(IID_IPlay, &pPoint));
    EXPECT_EQ(nullptr, pPoint);

    ComPtr<IEnumConnectionPoints> points;
    ASSERT_EQ(S_OK, container->EnumConnectionPoints(&points));
    IConnectionPoint* found[3] = {};
    ULONG cFetched = 0;
    EXPECT_EQ(S_FALSE, points->Next(3, found, &cFetched));
    ASSERT_EQ(2u, cFetched);
    EXPECT_EQ(m_events.Get(), found[0]);
    EXPECT_EQ(m_cdEvents.Get(), found[1]);
    IID iid;
    EXPECT_EQ(S_OK, found[1]->GetConnectionInterface(&iid));
    EXPECT_EQ(IID_IPlayCDEvents, iid);
    found[0]->Release();
    found[1]->Release();

    ComPtr<IConnectionPointContainer> owner;
    EXPECT_EQ(S_OK, m_events->GetConnectionPointContainer(&owner));
    EXPECT_EQ(container.Get(), owner.Get());
    ComPtr<IUnknown> unknown;
    EXPECT_EQ(S_OK, QueryTo(m_events, IID_IUnknown, unknown));
    EXPECT_EQ(static_cast<IUnknown*>(m_events.Get()), unknown.Get()) << "a point answers IUnknown itself";
    ComPtr<IPlay> notAPlay;
    EXPECT_EQ(E_NOINTERFACE, QueryTo(m_events, IID_IPlay, notAPlay));
}

TEST_F(PlayEvents, EnumConnectionsListsEachSinkWithItsCookie)
{
    auto a = Sink("a"), b = Sink("b"), c = Sink("c");
    Advise(m_events.Get(), *a);
    const DWORD dwB = Advise(m_events.Get(), *b);
    Advise(m_events.Get(), *c);
    m_events->Unadvise(dwB);
    ComPtr<IEnumConnections> connections;
    ASSERT_EQ(S_OK, m_events->EnumConnections(&connections));
    CONNECTDATA data[4] = {};
    ULONG cFetched = 0;
    EXPECT_EQ(S_FALSE, connections->Next(4, data, &cFetched));
    ASSERT_EQ(2u, cFetched);
    EXPECT_EQ(a->Cookie(), data[0].dwCookie);
    EXPECT_EQ(c->Cookie(), data[1].dwCookie);
    EXPECT_EQ(3, a->OutsideRefs()) << "the list, the enumerator and the fetched entry each hold one";
    data[0].pUnk->Release();
    data[1].pUnk->Release();
    connections.Reset();
    EXPECT_EQ(1, a->OutsideRefs());
}

} // namespace
