// What a host sees while real files play through the registered library: progress about ten
// times a second, one completion, the state afterwards, pauses and closes that silence the object,
// two objects at once, and no growth over many cycles. (Each back-end's own playback has its
// tests; the re-entrancy table plays every back-end through this library.)
#include <windows.h>
#include <objbase.h>
#include <ocidl.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ServerHost.h"
#include "tests/support/CProcessCounts.h"

namespace {

using PlaySequence = CServerHost;

TEST_F(PlaySequence, ProgressAboutTenTimesASecondThenCompletionThenStop)
{
    ASSERT_EQ(S_OK, Open("tone.wav"));
    ASSERT_EQ(S_OK, Play());
    ASSERT_TRUE(PumpUntilCompleted()) << "a two-second file completes";
    // Two seconds at 100 ms a tick; a busy machine only makes ticks late, never early.
    const std::vector<double> progress = Progress();
    EXPECT_GE(progress.size(), 8u);
    EXPECT_LE(progress.size(), 25u);
    for (size_t i = 1; i < progress.size(); ++i)
        EXPECT_GE(progress[i], progress[i - 1]) << "time only moves forward";
    for (const auto& e : m_log)
        EXPECT_TRUE(e.event != "progress" || e.state == Playback_State_Play);
    ASSERT_FALSE(progress.empty());
    EXPECT_GT(progress.back(), 1.5) << "the last report is near the end";
    EXPECT_EQ("complete", m_log.back().event);
    EXPECT_EQ(0, Count("error"));
    TESSALY_PLAYBACK_STATE state = Playback_State_Busy;
    double dTime = -1.0;
    EXPECT_EQ(S_OK, m_play->GetState(&state, &dTime));
    EXPECT_EQ(Playback_State_Stop, state);
    EXPECT_EQ(progress.back(), dTime) << "the last progress time is what GetState keeps";
}

TEST_F(PlaySequence, PausedPlaybackReportsNoProgressAndNothingArrivesAfterCloseFile)
{
    ASSERT_EQ(S_OK, Open("tone.wav"));
    ASSERT_EQ(S_OK, Play());
    ASSERT_TRUE(PumpUntil([&] { return Count("progress") >= 2; }, 10000));
    ASSERT_EQ(S_OK, m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PAUSE, 0, nullptr));
    EXPECT_EQ(Playback_State_Pause, State());
    size_t nBefore = m_log.size();
    CMessagePump::PumpFor(600);
    EXPECT_EQ(nBefore, m_log.size()) << "paused";
    ASSERT_EQ(S_OK, Play());
    ASSERT_TRUE(PumpUntil([&] { return m_log.size() > nBefore + 1; }, 5000)) << "resumed";
    EXPECT_EQ(S_OK, m_play->CloseFile());
    nBefore = m_log.size();
    CMessagePump::PumpFor(2500);
    EXPECT_EQ(nBefore, m_log.size()) << "closed";
}

TEST_F(PlaySequence, TwoPlayObjectsPlayInOneProcess)
{
    ComPtr<IPlay2> second;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_Play, nullptr, CLSCTX_INPROC_SERVER, IID_IPlay2, &second));
    Log secondLog;
    CRecordingSink secondSink("second", &secondLog);
    ComPtr<IConnectionPoint> point;
    DWORD dwCookie = 0;
    ASSERT_EQ(S_OK, Advise(second.Get(), IID_IPlayEvents, &secondSink, &point, &dwCookie));
    std::wstring path = CTestMedia::Path("tone.mp3");
    ASSERT_EQ(S_OK, Open("tone.wav"));
    ASSERT_EQ(S_OK, second->OpenFile(&path[0], 0, 1, nullptr));
    ASSERT_EQ(S_OK, Play());
    ASSERT_EQ(S_OK, second->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr));
    EXPECT_TRUE(PumpUntil([&] { return Count("complete") && Count(secondLog, "complete"); }, 20000));
    EXPECT_GE(Count("progress"), 8);
    EXPECT_GE(Count(secondLog, "progress"), 8) << "each object reports its own file";
    EXPECT_EQ(S_OK, point->Unadvise(dwCookie));
}

// Figures are printed; the limits are generous on purpose: they catch a leak per cycle, not noise.
TEST_F(PlaySequence, TwoHundredOpenPlayCloseCyclesLeaveNoGrowth)
{
    auto cycle = [&] {
        EXPECT_EQ(S_OK, Open("tone.wav"));
        EXPECT_EQ(S_OK, Play());
        CMessagePump::PumpFor(5);
        EXPECT_EQ(S_OK, m_play->CloseFile());
    };
    for (int i = 0; i < 10; ++i) // warm-up: back-end start-up and the platform's caches
        cycle();
    const CProcessCounts before = CProcessCounts::Take();
    for (int i = 0; i < 200; ++i)
        cycle();
    CMessagePump::PumpFor(200);
    const CProcessCounts growth = CProcessCounts::Take() - before;
    growth.Print("after 200 cycles");
    EXPECT_LT(growth.lHandles, 50);
    EXPECT_LT(growth.lGdiObjects, 50);
    EXPECT_LT(growth.lPrivateKb, 16 * 1024);
}

} // namespace
