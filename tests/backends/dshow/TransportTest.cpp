// Pause, resume, stop and seeking of a real graph, through the dispatcher.
#include <gtest/gtest.h>

#include "CPlaybackHost.h"
#include "CTestMedia.h"

namespace {

double Position(CPlaybackHost& host)
{
    double dSeconds = -1.0;
    EXPECT_EQ(S_OK, host.DShow().GetCurTime(&dSeconds));
    return dSeconds;
}

OAFilterState GraphState(CPlaybackHost& host)
{
    OAFilterState state = -1;
    EXPECT_EQ(S_OK, host.DShow().MediaControl()->GetState(5000, &state));
    return state;
}

TEST(DShowTransport, PauseHoldsThePositionAndASecondPauseResumesToTheEnd)
{
    CPlaybackHost host;
    ASSERT_EQ(S_OK, host.Open(CTestMedia::Path("tone.wav"), nullptr));
    const ULONGLONG start = GetTickCount64();
    ASSERT_EQ(S_OK, host.Player().Play());
    host.PumpFor(600);

    ASSERT_EQ(S_OK, host.Player().Pause());
    EXPECT_EQ(Playback_State_Pause, host.Player().GetPlayState());
    EXPECT_EQ(State_Paused, GraphState(host));
    const double dPaused = Position(host);
    EXPECT_GT(dPaused, 0.2);
    EXPECT_LT(dPaused, 1.5);
    const size_t nReports = host.Progress().size();
    host.PumpFor(700);
    EXPECT_NEAR(dPaused, Position(host), 0.05);
    EXPECT_EQ(nReports, host.Progress().size()) << "progress went on while paused";

    ASSERT_EQ(S_OK, host.Player().Pause());
    EXPECT_EQ(Playback_State_Play, host.Player().GetPlayState());
    ASSERT_TRUE(host.PumpUntilEnd(10000));
    EXPECT_EQ(1u, host.Count(STREAMING_EVENT_COMPLETE));
    // Two seconds of sound plus the time it stood still.
    EXPECT_GT((GetTickCount64() - start) / 1000.0, 2.0 + 0.7 - 0.3);
}

TEST(DShowTransport, StopRewindsToTheStartAndLeavesTheGraphPaused)
{
    CPlaybackHost host;
    ASSERT_EQ(S_OK, host.Open(CTestMedia::Path("clip.avi"), nullptr));
    ASSERT_EQ(S_OK, host.Player().Play());
    host.PumpFor(800);

    ASSERT_EQ(S_OK, host.Player().Stop());
    EXPECT_EQ(Playback_State_Stop, host.Player().GetPlayState());
    EXPECT_EQ(0.0, Position(host));
    EXPECT_EQ(State_Paused, GraphState(host)) << "a stopped video shows its first frame";
    const size_t nEvents = host.events.size();
    host.PumpFor(500);
    EXPECT_EQ(nEvents, host.events.size());

    // Playing again starts from the beginning.
    ASSERT_EQ(S_OK, host.Player().Play());
    ASSERT_TRUE(host.PumpUntilEnd(10000));
    const std::vector<double> progress = host.Progress();
    ASSERT_GT(progress.size(), 3u);
    EXPECT_LT(progress[0], 0.5);
    EXPECT_EQ(1u, host.Count(STREAMING_EVENT_COMPLETE));
}

TEST(DShowTransport, SeeksLandOnWholeSeconds)
{
    CPlaybackHost host;
    TESSALY_FILEINFO info = {};
    ASSERT_EQ(S_OK, host.Open(CTestMedia::Path("tone.wav"), &info));
    ASSERT_EQ(TESSALY_FILEINFO_SEEKABLE, info.dwAttributeMask & TESSALY_FILEINFO_SEEKABLE);
    ASSERT_EQ(S_OK, host.Player().Play());
    host.PumpFor(300);
    ASSERT_EQ(S_OK, host.Player().Pause());

    EXPECT_EQ(S_OK, host.Player().SeekTo(0.9));
    EXPECT_EQ(0.0, Position(host));
    EXPECT_EQ(S_OK, host.Player().SeekTo(1.9));
    EXPECT_EQ(1.0, Position(host));

    // Leaving the pause plays on from there.
    const size_t nBefore = host.Progress().size();
    ASSERT_EQ(S_OK, host.Player().Play());
    ASSERT_TRUE(host.PumpUntilEnd(10000));
    const std::vector<double> progress = host.Progress();
    ASSERT_GT(progress.size(), nBefore);
    EXPECT_GE(progress[nBefore], 1.0);
}

} // namespace
