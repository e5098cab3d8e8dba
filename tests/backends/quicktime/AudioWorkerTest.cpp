// The audio back-end's worker thread: gone by the time Destroy returns, even when that is called
// from inside one of the dispatcher's events; a sound closed while playing is gone and silent;
// and a hundred players leave nothing behind.
#include <gtest/gtest.h>

#include <vector>

#include "CPlaybackHost.h"
#include "CQTStage.h"
#include "backends/quicktime/CQTAudioPlayer.h"
#include "backends/quicktime/CQTPlayer.h"
#include "tests/support/CProcessCounts.h"

namespace {

// Open kernel handles, found by asking about every small handle value: this platform's process
// handle count does not move whatever is opened.
long OpenHandleCount()
{
    long nHandles = 0;
    for (ULONG_PTR value = 4; value < 0x10000; value += 4)
    {
        DWORD dwFlags = 0;
        nHandles += GetHandleInformation(reinterpret_cast<HANDLE>(value), &dwFlags) != FALSE;
    }
    return nHandles;
}

struct Destroyer
{
    CPlaybackHost* pHost;
    DWORD dwOn;
    HANDLE hWorker;
    DWORD dwWorkerAfterDestroy;
};

HRESULT DestroyOnEvent(DWORD dwEvent, ULONG_PTR, void* pContext)
{
    auto p = static_cast<Destroyer*>(pContext);
    if (dwEvent == p->dwOn && p->dwWorkerAfterDestroy == WAIT_FAILED)
    {
        p->pHost->Player().Destroy();
        p->dwWorkerAfterDestroy = WaitForSingleObject(p->hWorker, 0);
    }
    return S_OK;
}

class QTAudioDestroyedInAnEvent : public ::testing::TestWithParam<DWORD>
{
};

TEST_P(QTAudioDestroyedInAnEvent, ReturnsOnlyAfterTheWorkerHasEnded)
{
    CPlaybackHost host;
    ASSERT_EQ(S_OK, host.Open(CQTStage::Path("tone.m4a"), nullptr));
    const HWND hHandler = g_hQTAudioHandlerWnd;
    ASSERT_NE(GetCurrentThreadId(), GetWindowThreadProcessId(hHandler, nullptr));
    Destroyer destroyer = {&host, GetParam(),
                           OpenThread(SYNCHRONIZE, FALSE, GetWindowThreadProcessId(hHandler, nullptr)), WAIT_FAILED};
    host.Player().SetEventCallback(DestroyOnEvent, &destroyer);
    ASSERT_EQ(S_OK, host.Player().Play());
    ASSERT_TRUE(host.PumpUntil([&] { return destroyer.dwWorkerAfterDestroy != WAIT_FAILED; }, 10000));
    EXPECT_EQ(WAIT_OBJECT_0, destroyer.dwWorkerAfterDestroy);
    EXPECT_FALSE(IsWindow(hHandler));
    host.PumpFor(300); // what was still posted finds nothing to reach
    CloseHandle(destroyer.hWorker);
}

INSTANTIATE_TEST_SUITE_P(ProgressAndCompletion, QTAudioDestroyedInAnEvent,
                         ::testing::Values(STREAMING_EVENT_PROGRESS, STREAMING_EVENT_COMPLETE),
                         [](const ::testing::TestParamInfo<DWORD>& param) {
                             return param.param == STREAMING_EVENT_PROGRESS ? "Progress" : "Completion";
                         });

TEST(QTAudioWorker, ASoundClosedWhilePlayingIsGoneAndStaysQuiet)
{
    CPlaybackHost host;
    ASSERT_EQ(S_OK, host.Open(CQTStage::Path("tone.m4a"), nullptr));
    ASSERT_EQ(S_OK, host.Player().Play());
    host.PumpFor(300);
    ASSERT_EQ(S_OK, host.Player().CloseFile());
    EXPECT_EQ(E_FAIL, CQTStage::Find<CQTAudioPlayer>(host.Player())->Play()) << "nothing left to play";
    const size_t nEvents = host.events.size();
    host.PumpFor(2500);
    EXPECT_EQ(nEvents, host.events.size()) << "the closed sound still reported";
}

// QuickTime is kept started meanwhile (each start and stop of the layer leaves a handle of its
// own), and the platform's filter graphs leave about a hundred handles each, so handles are held
// flat over players that open nothing. The limits catch a leak per player, not the noise.
TEST(QTAudioWorker, AHundredPlayersLeaveNoThreadWindowOrHandleBehind)
{
    CPlaybackHost host;
    CQTPlayer holder;
    ASSERT_EQ(S_OK, holder.Init());
    const std::wstring path = CQTStage::Path("tone.m4a");
    auto growthOver = [&](const char* pszWhat, bool bOpen) {
        auto player = [&] {
            CQTAudioPlayer qa;
            std::vector<HRESULT> results = {qa.Init(), qa.SetParentWindow(host.Window())};
            if (bOpen)
                results.insert(results.end(), {qa.OpenFile(path.c_str(), 0, 1), qa.Play(), qa.CloseFile()});
            qa.Destroy();
            EXPECT_EQ(std::vector<HRESULT>(results.size(), S_OK), results);
        };
        for (int i = 0; i < 3; ++i) // the platform's first-use caches
            player();
        host.PumpFor(100);
        const CProcessCounts before = CProcessCounts::Take();
        const long nHandles = OpenHandleCount();
        for (int i = 0; i < 100; ++i)
            player();
        CProcessCounts growth;
        for (int nWait = 0; nWait < 25 && (nWait == 0 || growth.lThreads >= 3); ++nWait)
        {
            host.PumpFor(200); // the platform's streaming threads end a little later
            growth = CProcessCounts::Take() - before;
        }
        growth.lHandles = OpenHandleCount() - nHandles;
        growth.Print(pszWhat);
        EXPECT_LT(growth.lThreads, 3);
        EXPECT_LT(growth.lUserObjects, 10);
        EXPECT_LT(growth.lGdiObjects, 10);
        return growth.lHandles;
    };
    EXPECT_LT(growthOver("100 players parented and destroyed", false), 10);
    growthOver("100 players that opened, played and closed a sound", true);
    holder.Destroy();
}

} // namespace
