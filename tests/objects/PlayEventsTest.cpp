// The Play object as a host meets it: events, driven through the callback the dispatcher calls,
// reach recording sinks in slot order; the connection points' contract; bad arguments refused.
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
#include "objects/CQueryFileInfo.h"
#include "tests/support/CRecordingSink.h"

namespace {

class PlayEvents : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
        ASSERT_EQ(S_OK, CComCreator<CPlay>::CreateInstance(nullptr, IID_IPlay, &m_play));
        ASSERT_EQ(S_OK, QueryTo(m_play, IID_IConnectionPointContainer, m_container));
        ASSERT_EQ(S_OK, m_container->FindConnectionPoint(IID_IPlayEvents, &m_events));
        ASSERT_EQ(S_OK, m_container->FindConnectionPoint(IID_IPlayCDEvents, &m_cdEvents));
    }
    void TearDown() override
    {
        ReleasePlay();
        CoUninitialize();
    }
    void ReleasePlay()
    {
        m_events.Reset();
        m_cdEvents.Reset();
        m_container.Reset();
        m_play.Reset();
    }
    // What the dispatcher calls.
    void Deliver(DWORD dwEvent, ULONG_PTR ulParam = 0)
    {
        CPlay::OnMediaPlayerEvent(dwEvent, ulParam, static_cast<CPlay*>(static_cast<IPlayCD*>(m_play.Get())));
    }
    // Sinks outlive the Play object, which may still hold them in TearDown.
    CRecordingSink* Sink(const char* name, bool bCD = true)
    {
        m_sinks.push_back(std::make_unique<CRecordingSink>(name, &m_log, bCD));
        return m_sinks.back().get();
    }
    DWORD Advise(IConnectionPoint* pPoint, CRecordingSink* pSink)
    {
        DWORD dwCookie = 0;
        EXPECT_EQ(S_OK, pPoint->Advise(pSink, &dwCookie));
        EXPECT_EQ(pSink->Cookie(), dwCookie) << "the cookie is the sink's interface pointer";
        return dwCookie;
    }
    std::vector<std::string> Who()
    {
        std::vector<std::string> names;
        for (const auto& e : m_log)
            names.push_back(e.sink + ":" + e.event);
        m_log.clear();
        return names;
    }
    typedef std::vector<std::string> Names;

    std::vector<std::unique_ptr<CRecordingSink>> m_sinks;
    std::vector<CRecordingSink::Entry> m_log;
    ComPtr<IPlay> m_play;
    ComPtr<IConnectionPointContainer> m_container;
    ComPtr<IConnectionPoint> m_events, m_cdEvents;
};

TEST_F(PlayEvents, EverySinkHearsInSlotOrderAndAFreedSlotIsTakenByTheNextSink)
{
    CRecordingSink* s[5] = {Sink("s0"), Sink("s1"), Sink("s2"), Sink("s3"), Sink("s4")};
    DWORD cookies[5];
    for (int i = 0; i < 5; ++i)
        cookies[i] = Advise(m_events.Get(), s[i]);
    ASSERT_EQ(S_OK, m_events->Unadvise(cookies[1]));
    EXPECT_EQ(0, s[1]->OutsideRefs());
    Advise(m_events.Get(), Sink("late"));
    s[2]->answer = E_UNEXPECTED; // a failing sink neither stops the others nor loses its place
    Deliver(STREAMING_EVENT_COMPLETE);
    Deliver(0x00010000 | STREAMING_EVENT_COMPLETE); // only the low 16 bits count
    Deliver(9);
    Deliver(0x10000); // unknown codes are dropped
    const Names pass = {"s0:complete", "late:complete", "s2:complete", "s3:complete", "s4:complete"};
    Names twice = pass;
    twice.insert(twice.end(), pass.begin(), pass.end());
    EXPECT_EQ(twice, Who());
}

TEST_F(PlayEvents, ASinkMayAdviseAnotherIntoALaterSlotAndUnadviseItselfFromInsideTheEvent)
{
    auto first = Sink("first"), gap = Sink("gap"), third = Sink("third"), newcomer = Sink("newcomer");
    const DWORD dwFirst = Advise(m_events.Get(), first);
    const DWORD dwGap = Advise(m_events.Get(), gap);
    Advise(m_events.Get(), third);
    ASSERT_EQ(S_OK, m_events->Unadvise(dwGap));
    HRESULT hrInside = E_FAIL;
    LONG refsInside = 0;
    first->onEvent = [&](const char*) {
        Advise(m_events.Get(), newcomer); // into the free slot 1
        hrInside = m_events->Unadvise(dwFirst);
        refsInside = first->OutsideRefs();
    };
    Deliver(STREAMING_EVENT_COMPLETE);
    EXPECT_EQ(S_OK, hrInside);
    EXPECT_EQ(1, refsInside) << "held by the firing loop during its own call";
    EXPECT_EQ(0, first->OutsideRefs());
    Deliver(STREAMING_EVENT_COMPLETE);
    EXPECT_EQ((Names{"first:complete", "newcomer:complete", "third:complete", "newcomer:complete", "third:complete"}),
              Who());
}

TEST_F(PlayEvents, TrackCompletionGoesToTheCDPointOnlyAndWhileStoppedProgressIsKeptAndErrorsDropped)
{
    auto cd = Sink("cd"), play = Sink("play");
    Advise(m_cdEvents.Get(), cd);
    Advise(m_events.Get(), play);
    Deliver(STREAMING_EVENT_COMPLETE);
    Deliver(STREAMING_EVENT_TRACK_COMPLETE);
    double dSeconds = 3.25;
    Deliver(STREAMING_EVENT_PROGRESS, reinterpret_cast<ULONG_PTR>(&dSeconds));
    Deliver(STREAMING_EVENT_ERROR, static_cast<ULONG_PTR>(E_ABORT));
    EXPECT_EQ((Names{"play:complete", "cd:track"}), Who());
    TESSALY_PLAYBACK_STATE state = Playback_State_Busy;
    double dTime = -1.0;
    EXPECT_EQ(S_OK, m_play->GetState(&state, &dTime));
    EXPECT_EQ(Playback_State_Stop, state);
    EXPECT_EQ(3.25, dTime);
}

TEST_F(PlayEvents, AdviseAndUnadviseRefuseBadArgumentsAndHoldNothingThen)
{
    auto a = Sink("a"), cdless = Sink("cdless", false);
    DWORD dwCookie = 7;
    EXPECT_EQ(E_POINTER, m_events->Advise(nullptr, &dwCookie));
    EXPECT_EQ(7u, dwCookie);
    EXPECT_EQ(E_POINTER, m_events->Advise(a, nullptr));
    EXPECT_EQ(CONNECT_E_CANNOTCONNECT, m_cdEvents->Advise(cdless, &dwCookie));
    EXPECT_EQ(0u, dwCookie);
    EXPECT_EQ(0, cdless->OutsideRefs());
    a->bAnswersPlayEvents = false;
    dwCookie = 7;
    EXPECT_EQ(CONNECT_E_CANNOTCONNECT, m_events->Advise(a, &dwCookie));
    EXPECT_EQ(0u, dwCookie);
    a->bAnswersPlayEvents = true;

    EXPECT_EQ(CONNECT_E_NOCONNECTION, m_events->Unadvise(0));
    EXPECT_EQ(CONNECT_E_NOCONNECTION, m_events->Unadvise(0x12345678));
    dwCookie = Advise(m_events.Get(), a);
    EXPECT_EQ(CONNECT_E_NOCONNECTION, m_cdEvents->Unadvise(dwCookie)) << "another point's list";
    EXPECT_EQ(S_OK, m_events->Unadvise(dwCookie));
    EXPECT_EQ(CONNECT_E_NOCONNECTION, m_events->Unadvise(dwCookie));
    EXPECT_EQ(0, a->OutsideRefs());
}

TEST_F(PlayEvents, ThePointsAndTheirConnectionsAreListedAndSinksGoWithThePlayObject)
{
    IConnectionPoint* points[3] = {reinterpret_cast<IConnectionPoint*>(0x1)};
    EXPECT_EQ(E_POINTER, m_container->FindConnectionPoint(IID_IPlayEvents, nullptr));
    EXPECT_EQ(CONNECT_E_NOCONNECTION, m_container->FindConnectionPoint(IID_IPlay, &points[0]));
    EXPECT_EQ(nullptr, points[0]);
    ComPtr<IEnumConnectionPoints> enumPoints;
    ASSERT_EQ(S_OK, m_container->EnumConnectionPoints(&enumPoints));
    ULONG cFetched = 0;
    EXPECT_EQ(S_FALSE, enumPoints->Next(3, points, &cFetched));
    ASSERT_EQ(2u, cFetched);
    EXPECT_EQ(m_events.Get(), points[0]);
    EXPECT_EQ(m_cdEvents.Get(), points[1]);
    IConnectionPointContainer* pOwner = nullptr;
    EXPECT_EQ(S_OK, points[1]->GetConnectionPointContainer(&pOwner));
    EXPECT_EQ(m_container.Get(), pOwner);
    IID iid = IID_NULL;
    EXPECT_EQ(S_OK, points[1]->GetConnectionInterface(&iid));
    EXPECT_EQ(IID_IPlayCDEvents, iid);
    ComPtr<IUnknown> unknown;
    EXPECT_EQ(S_OK, QueryTo(m_events, IID_IUnknown, unknown));
    EXPECT_EQ(static_cast<IUnknown*>(m_events.Get()), unknown.Get()) << "a point answers IUnknown itself";
    ComPtr<IPlay> notAPlay;
    EXPECT_EQ(E_NOINTERFACE, QueryTo(m_events, IID_IPlay, notAPlay));
    for (IUnknown* p : {static_cast<IUnknown*>(pOwner), static_cast<IUnknown*>(points[0]), static_cast<IUnknown*>(points[1])})
        p->Release();
    enumPoints.Reset();
    unknown.Reset();

    auto a = Sink("a"), b = Sink("b"), c = Sink("c");
    Advise(m_events.Get(), a);
    m_events->Unadvise(Advise(m_events.Get(), b));
    Advise(m_events.Get(), c);
    Advise(m_cdEvents.Get(), c);
    ComPtr<IEnumConnections> connections;
    ASSERT_EQ(S_OK, m_events->EnumConnections(&connections));
    CONNECTDATA data[3] = {};
    EXPECT_EQ(S_FALSE, connections->Next(3, data, &cFetched));
    ASSERT_EQ(2u, cFetched);
    EXPECT_EQ(a->Cookie(), data[0].dwCookie);
    EXPECT_EQ(c->Cookie(), data[1].dwCookie);
    EXPECT_EQ(3, a->OutsideRefs()) << "the list, the enumerator and the fetched entry each hold one";
    data[0].pUnk->Release();
    data[1].pUnk->Release();
    connections.Reset();
    EXPECT_EQ(1, a->OutsideRefs());
    EXPECT_EQ(2, c->OutsideRefs());
    ReleasePlay();
    for (auto sink : {a, b, c})
        EXPECT_EQ(0, sink->OutsideRefs());
}

TEST_F(PlayEvents, CallsRefuseArgumentsTheyCannotUse)
{
    double dPosition = 1.0;
    const struct
    {
        ULONG dwFlag, dwSize;
        BYTE* pParam;
        HRESULT hr;
    } controls[] = {
        {0x77, 0, nullptr, TESSALY_E_NOTSUPPORTED},
        {TESSALY_PLAYBACK_CONTROL_SEEKTOPOS, 0, reinterpret_cast<BYTE*>(&dPosition), E_INVALIDARG},
        {TESSALY_PLAYBACK_CONTROL_SEEKTOPOS, sizeof(double), nullptr, E_INVALIDARG},
        {TESSALY_PLAYBACK_CONTROL_SEEKTOPOS, sizeof(double), reinterpret_cast<BYTE*>(0x10), E_INVALIDARG},
    };
    for (const auto& c : controls)
        EXPECT_EQ(c.hr, m_play->PlaybackControl(c.dwFlag, c.dwSize, c.pParam)) << c.dwFlag << " " << c.dwSize;

    ComPtr<IQueryFileInfo> query;
    ASSERT_EQ(S_OK, CComCreator<CQueryFileInfo>::CreateInstance(nullptr, IID_IQueryFileInfo, &query));
    wchar_t wszPath[] = L"C:\\notes.txt";
    EXPECT_EQ(E_INVALIDARG, query->GetFileInfo(wszPath, nullptr));
}

} // namespace
