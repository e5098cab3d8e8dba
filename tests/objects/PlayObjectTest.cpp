// The Play object as a host meets it: events reach recording sinks in slot order; the connection
// points' contract; each allocation failed in turn is refused and leaves nothing behind.
#include <windows.h>
#include <olectl.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <deque>
#include <new>
#include <string>
#include <vector>

#include "dispatch/CMediaPlayer.h"
#include "engine/CComCreator.h"
#include "engine/CModuleLock.h"
#include "engine/ComPtr.h"
#include "objects/CPlay.h"
#include "objects/CSinkList.h"
#include "tests/support/CRecordingSink.h"

static thread_local long t_nFailAt = 0, t_nMade = 0; // the allocation to fail on this thread, from 1 (0: none)
static void* Allocate(std::size_t cb) { return t_nFailAt && ++t_nMade == t_nFailAt ? nullptr : std::malloc(cb ? cb : 1); }
void* operator new(std::size_t cb) { if (void* p = Allocate(cb)) return p; throw std::bad_alloc(); }
void* operator new[](std::size_t cb) { return operator new(cb); }
void* operator new(std::size_t cb, const std::nothrow_t&) noexcept { return Allocate(cb); }
void operator delete(void* p) noexcept { std::free(p); }
void operator delete[](void* p) noexcept { std::free(p); }
void operator delete[](void* p, std::size_t) noexcept { std::free(p); }
void operator delete(void* p, std::size_t) noexcept { std::free(p); }

namespace {
typedef std::vector<std::string> Names;

TEST(SinkList, ReadsOutsideTheSlotsAnswerNull)
{
    std::vector<CRecordingSink::Entry> log;
    CRecordingSink sink("0", &log);
    CSinkList list; // releases the sink as it goes
    ASSERT_TRUE(list.Add((sink.AddRef(), &sink)));
    EXPECT_EQ(&sink, list.At(0));
    EXPECT_EQ(nullptr, list.At(1));
    EXPECT_EQ(nullptr, list.At(-1));
}

class PlayObject : public ::testing::Test
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
    void TearDown() override { ReleasePlay(), CoUninitialize(); }
    void ReleasePlay() { m_events.Reset(), m_cdEvents.Reset(), m_container.Reset(), m_play.Reset(); }
    void Deliver(DWORD dwEvent, ULONG_PTR ulParam = 0) // what the dispatcher calls
    {
        CPlay::OnMediaPlayerEvent(dwEvent, ulParam, static_cast<CPlay*>(static_cast<IPlayCD*>(m_play.Get())));
    }
    CRecordingSink* Sink(const char* name, bool bCD = true) // outlives the Play object
    {
        return &m_sinks.emplace_back(name, &m_log, bCD);
    }
    DWORD Advise(IConnectionPoint* pPoint, CRecordingSink* pSink)
    {
        DWORD dwCookie = 0;
        EXPECT_EQ(S_OK, pPoint->Advise(pSink, &dwCookie));
        EXPECT_EQ(pSink->Cookie(), dwCookie) << "the cookie is the sink's interface pointer";
        return dwCookie;
    }
    Names Who()
    {
        Names names;
        for (const auto& e : m_log)
            names.push_back(e.sink + ":" + e.event);
        m_log.clear();
        return names;
    }

    std::deque<CRecordingSink> m_sinks;
    std::vector<CRecordingSink::Entry> m_log;
    ComPtr<IPlay> m_play;
    ComPtr<IConnectionPointContainer> m_container;
    ComPtr<IConnectionPoint> m_events, m_cdEvents;
};

TEST_F(PlayObject, SinksHearInSlotOrderAFailingOneStopsNoOneAndASinkMayAdviseAnotherOrUnadviseItselfInside)
{
    auto first = Sink("first"), gap = Sink("gap"), third = Sink("third"), newcomer = Sink("newcomer");
    const DWORD dwFirst = Advise(m_events.Get(), first), dwGap = Advise(m_events.Get(), gap);
    Advise(m_events.Get(), third);
    ASSERT_EQ(S_OK, m_events->Unadvise(dwGap));
    HRESULT hrInside = E_FAIL;
    LONG refsInside = 0;
    first->answer = E_UNEXPECTED;
    first->onEvent = [&](const char*) {
        Advise(m_events.Get(), newcomer); // into the free slot 1
        hrInside = m_events->Unadvise(dwFirst);
        refsInside = first->OutsideRefs();
    };
    Deliver(STREAMING_EVENT_COMPLETE);
    EXPECT_EQ(S_OK, hrInside);
    EXPECT_EQ(1, refsInside) << "held by the firing loop during its own call";
    EXPECT_EQ(0, first->OutsideRefs());
    for (DWORD dwEvent : {0x10000ul | STREAMING_EVENT_COMPLETE, 9ul, 0x10000ul})
        Deliver(dwEvent); // only the low 16 bits count; unknown codes are dropped
    EXPECT_EQ((Names{"first:complete", "newcomer:complete", "third:complete", "newcomer:complete", "third:complete"}), Who());
}

TEST_F(PlayObject, TrackCompletionGoesToTheCDPointOnlyAndWhileStoppedProgressAndErrorsAreNotPassedOn)
{
    Advise(m_cdEvents.Get(), Sink("cd"));
    Advise(m_events.Get(), Sink("play"));
    double dSeconds = 3.25;
    Deliver(STREAMING_EVENT_COMPLETE);
    Deliver(STREAMING_EVENT_TRACK_COMPLETE);
    Deliver(STREAMING_EVENT_PROGRESS, reinterpret_cast<ULONG_PTR>(&dSeconds));
    Deliver(STREAMING_EVENT_ERROR, static_cast<ULONG_PTR>(E_ABORT));
    EXPECT_EQ((Names{"play:complete", "cd:track"}), Who());
}

TEST_F(PlayObject, AdviseAndUnadviseRefuseBadArgumentsAndHoldNothingThen)
{
    auto a = Sink("a"), cdless = Sink("cdless", false);
    DWORD dwCookie = 7;
    EXPECT_EQ(E_POINTER, m_events->Advise(nullptr, &dwCookie));
    EXPECT_EQ(7u, dwCookie);
    EXPECT_EQ(E_POINTER, m_events->Advise(a, nullptr));
    EXPECT_EQ(CONNECT_E_CANNOTCONNECT, m_cdEvents->Advise(cdless, &dwCookie));
    EXPECT_EQ(0u, dwCookie);
    EXPECT_EQ(0, cdless->OutsideRefs());
    EXPECT_EQ(CONNECT_E_NOCONNECTION, m_events->Unadvise(0));
    dwCookie = Advise(m_events.Get(), a);
    EXPECT_EQ(CONNECT_E_NOCONNECTION, m_cdEvents->Unadvise(dwCookie)) << "another point's list";
    EXPECT_EQ(S_OK, m_events->Unadvise(dwCookie));
    EXPECT_EQ(CONNECT_E_NOCONNECTION, m_events->Unadvise(dwCookie));
    EXPECT_EQ(0, a->OutsideRefs());
}

TEST_F(PlayObject, AnUnknownPointIsRefusedConnectionsAreListedAndSinksGoWithThePlayObject)
{
    IConnectionPoint* pPoint = reinterpret_cast<IConnectionPoint*>(0x1);
    EXPECT_EQ(CONNECT_E_NOCONNECTION, m_container->FindConnectionPoint(IID_IPlay, &pPoint));
    EXPECT_EQ(nullptr, pPoint);
    auto a = Sink("a"), b = Sink("b"), c = Sink("c");
    Advise(m_events.Get(), a);
    m_events->Unadvise(Advise(m_events.Get(), b));
    Advise(m_events.Get(), c);
    Advise(m_cdEvents.Get(), c);
    ComPtr<IEnumConnections> connections;
    ASSERT_EQ(S_OK, m_events->EnumConnections(&connections));
    CONNECTDATA data[3] = {};
    ULONG cFetched = 0;
    EXPECT_EQ(S_FALSE, connections->Next(3, data, &cFetched));
    ASSERT_EQ(2u, cFetched);
    EXPECT_EQ(a->Cookie(), data[0].dwCookie);
    EXPECT_EQ(c->Cookie(), data[1].dwCookie);
    EXPECT_EQ(3, a->OutsideRefs()) << "the list, the enumerator and the fetched entry each hold one";
    data[0].pUnk->Release(), data[1].pUnk->Release();
    connections.Reset();
    EXPECT_EQ(2, c->OutsideRefs());
    ReleasePlay();
    EXPECT_EQ(0, a->OutsideRefs() + b->OutsideRefs() + c->OutsideRefs());
}

// Fails allocation 1, 2, ... until a run makes fewer, which must succeed; answers how many failed.
long FailEachInTurn(HRESULT hrRefusal, const std::function<HRESULT()>& call, const std::function<void(HRESULT)>& after)
{
    for (long k = 1; k < 5000 && !::testing::Test::HasFailure(); ++k)
    {
        t_nMade = 0, t_nFailAt = k;
        const HRESULT hr = call();
        t_nFailAt = 0;
        after(hr);
        EXPECT_EQ(t_nMade < k ? S_OK : hrRefusal, hr) << "allocation " << k << " failed (S_OK: every one served)";
        if (t_nMade < k)
            return k - 1;
    }
    return 0;
}

// A call that hands out an object: null on failure, one the caller alone holds on success.
long HandsOut(const std::function<HRESULT(void**)>& call)
{
    const LONG lLocks = CModuleLock::Count();
    void* pv = nullptr;
    return FailEachInTurn(E_OUTOFMEMORY, [&] { return call(&(pv = reinterpret_cast<void*>(1))); }, [&](HRESULT hr) {
        if (SUCCEEDED(hr))
            EXPECT_EQ(0u, static_cast<IUnknown*>(pv)->Release());
        else
            EXPECT_EQ(nullptr, pv);
        EXPECT_EQ(lLocks, CModuleLock::Count()) << "an object left alive";
    });
}

TEST_F(PlayObject, FailedAllocationsAreRefusedHandOutNothingAndHoldNoSink)
{
    EXPECT_GT(HandsOut([](void** ppv) { return CComCreator<CPlay>::CreateInstance(nullptr, IID_IPlay, ppv); }), 1)
        << "the dispatcher and its back-ends are allocated";
    CRecordingSink* s[5] = {Sink("a"), Sink("b"), Sink("c"), Sink("d"), Sink("e")};
    for (int i = 0; i < 4; ++i)
        Advise(m_events.Get(), s[i]);
    DWORD dwCookie = 0;
    EXPECT_EQ(1, FailEachInTurn(CONNECT_E_ADVISELIMIT, [&] { return m_events->Advise(s[4], &(dwCookie = 7)); }, [&](HRESULT hr) {
        EXPECT_EQ(SUCCEEDED(hr) ? s[4]->Cookie() : 0u, dwCookie);
        EXPECT_EQ(SUCCEEDED(hr) ? 1 : 0, s[4]->OutsideRefs());
    })) << "the fifth sink grows the list once";
    EXPECT_GT(HandsOut([&](void** ppv) { return m_events->EnumConnections(reinterpret_cast<IEnumConnections**>(ppv)); }), 0);
    for (CRecordingSink* sink : s)
        EXPECT_EQ(1, sink->OutsideRefs()) << "only the connection holds a sink";
}

} // namespace
