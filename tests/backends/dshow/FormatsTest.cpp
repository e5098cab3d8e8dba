// Every format of the back-end's table that this platform decodes, played end to end through
// the dispatcher with a real parent window and message loop.
#include <gtest/gtest.h>

#include <string>

#include "CPlaybackHost.h"
#include "CTestMedia.h"

namespace {

// A frame of the fixtures' 25 frames a second, and a millisecond for the 100-ns rounding.
constexpr double kFrame = 1.0 / 25 + 0.001;

class PlaysEndToEnd : public ::testing::TestWithParam<const char*>
{
};

TEST_P(PlaysEndToEnd, OpensWithTheTrueInformationAndPlaysInRealTimeToCompletion)
{
    CTestMedia::Truth truth;
    ASSERT_TRUE(CTestMedia::Read(GetParam(), &truth));
    const bool bVideo = truth.dwWidth != 0;
    CPlaybackHost host;

    TESSALY_FILEINFO info = {};
    // A busy platform now and then renders only part of a file it renders whole on other tries.
    ASSERT_EQ(S_OK, host.OpenWhole(CTestMedia::Path(GetParam()), &info));
    EXPECT_NEAR(truth.dDuration, info.dDuration, kFrame);
    EXPECT_EQ(truth.dwWidth, info.dwWidth);
    EXPECT_EQ(truth.dwHeight, info.dwHeight);
    EXPECT_EQ(TESSALY_FILEINFO_SEEKABLE | (bVideo ? 0u : TESSALY_FILEINFO_AUDIO_ONLY), info.dwAttributeMask);
    EXPECT_EQ(Playback_State_Stop, host.Player().GetPlayState());

    const ULONGLONG start = GetTickCount64();
    ASSERT_EQ(S_OK, host.Player().Play());
    ASSERT_TRUE(host.PumpUntilEnd(15000)) << "no completion event";
    const double dElapsed = (GetTickCount64() - start) / 1000.0;

    ASSERT_EQ(1u, host.Count(STREAMING_EVENT_COMPLETE));
    EXPECT_EQ(0u, host.Count(STREAMING_EVENT_ERROR));
    EXPECT_EQ(STREAMING_EVENT_COMPLETE, host.events.back().dwCode);
    EXPECT_EQ(Playback_State_Stop, host.Player().GetPlayState());
    // The null audio device and the video clock run in real time.
    EXPECT_GT(dElapsed, truth.dDuration - 0.3);

    // About one report every 100 ms, each no further on than the time since Play.
    const std::vector<double> progress = host.Progress();
    EXPECT_GE(progress.size(), 5u);
    EXPECT_LE(progress.size(), 30u);
    for (const CPlaybackHost::Event& event : host.events)
    {
        if (event.dwCode == STREAMING_EVENT_PROGRESS)
        {
            EXPECT_LE(event.dProgress, (event.tick - start) / 1000.0 + 0.25);
        }
    }
    // The clock may run a little past the end before the renderers report it; the last report,
    // made on completion, is the end itself.
    for (size_t i = 1; i + 1 < progress.size(); ++i)
        EXPECT_GE(progress[i], progress[i - 1]) << "report " << i;
    EXPECT_NEAR(truth.dDuration, progress.back(), kFrame);

    // After completion the back-end stands paused at the start, as Stop leaves it.
    double dPosition = -1.0;
    EXPECT_EQ(S_OK, host.DShow().GetCurTime(&dPosition));
    EXPECT_EQ(0.0, dPosition);
}

std::string FileTestName(const ::testing::TestParamInfo<const char*>& info)
{
    std::string name = info.param;
    name[name.find('.')] = '_';
    return name;
}

INSTANTIATE_TEST_SUITE_P(DShowFormats, PlaysEndToEnd,
                         ::testing::Values("tone.wav", "tone.mp3", "tone.wma", "tone.ogg", "tone.flac",
                                           "tone.mpa", "clip.wmv", "clip.asf", "clip.avi", "clip.divx",
                                           "clip.mpg"),
                         FileTestName);

} // namespace
