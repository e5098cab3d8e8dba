// Files played end to end through the dispatcher as the engine builds it: what the open reports,
// progress that keeps to the clock, one completion at the end of a movie or a sound with the movie
// back at its start; an animated GIF loops and never completes.
#include <gtest/gtest.h>

#include "CPlaybackHost.h"
#include "CQTStage.h"

namespace {

const double kFrame = 1.0 / 25;
// A bare AAC stream names no length: ffprobe and the platform each estimate their own.
const double kEstimate = 0.1;
const DWORD kMovie = TESSALY_FILEINFO_SEEKABLE;
const DWORD kSound = TESSALY_FILEINFO_AUDIO_ONLY | TESSALY_FILEINFO_SEEKABLE;

struct Expected
{
    const char* pszName;
    DWORD dwMask;
    double dTolerance;
};

void PrintTo(const Expected& expected, std::ostream* pStream)
{
    *pStream << expected.pszName;
}

class QTPlayback : public ::testing::TestWithParam<Expected>
{
};

TEST_P(QTPlayback, ReportsTheFilePlaysInRealTimeAndCompletesOnceAtItsStart)
{
    const CQTStage::Truth truth = CQTStage::Read(GetParam().pszName);
    CPlaybackHost host;
    TESSALY_FILEINFO info = {};
    ASSERT_EQ(S_OK, host.Open(CQTStage::Path(GetParam().pszName), &info));
    EXPECT_EQ(GetParam().dwMask, info.dwAttributeMask);
    EXPECT_NEAR(truth.dDuration, info.dDuration, GetParam().dTolerance);
    EXPECT_EQ(truth.dwWidth, info.dwWidth);
    EXPECT_EQ(truth.dwHeight, info.dwHeight);

    const ULONGLONG start = GetTickCount64();
    ASSERT_EQ(S_OK, host.Player().Play());
    ASSERT_TRUE(host.PumpUntilEnd(15000));
    EXPECT_GT((GetTickCount64() - start) / 1000.0, info.dDuration - 0.2) << "ended before its time";
    host.PumpFor(500);
    ASSERT_EQ(0u, host.Count(STREAMING_EVENT_ERROR));
    ASSERT_EQ(1u, host.Count(STREAMING_EVENT_COMPLETE));
    ASSERT_EQ(STREAMING_EVENT_COMPLETE, host.events.back().dwCode);
    // The report made with the completion finds the movie rewound; the ones before keep to the
    // clock since Play and never go back.
    const std::vector<double> progress = host.Progress();
    ASSERT_GT(progress.size(), 5u);
    EXPECT_EQ(0.0, progress.back());
    EXPECT_GT(progress[progress.size() - 2], info.dDuration / 2);
    for (size_t i = 0; i + 1 < progress.size(); ++i)
    {
        EXPECT_LE(progress[i], (host.events[i].tick - start) / 1000.0 + 0.1) << "report " << i;
        EXPECT_GE(progress[i], i ? progress[i - 1] : 0.0) << "report " << i;
    }
    EXPECT_EQ(Playback_State_Stop, host.Player().GetPlayState());
}

INSTANTIATE_TEST_SUITE_P(Movies, QTPlayback,
                         ::testing::Values(Expected{"clip.mov", kMovie, kFrame}, Expected{"clip.mp4", kMovie, kFrame},
                                           Expected{"clip.m4v", kMovie, kFrame}, Expected{"clip.3gp", kMovie, kFrame}));
INSTANTIATE_TEST_SUITE_P(Sounds, QTPlayback,
                         ::testing::Values(Expected{"tone.m4a", kSound, kFrame}, Expected{"tone.aac", kSound, kEstimate},
                                           Expected{"tone.aiff", kSound, kFrame}));

TEST(QTPlaybackGif, AnAnimatedGifIsAPictureOfOneSecondThatLoopsAndNeverCompletes)
{
    CPlaybackHost host;
    TESSALY_FILEINFO info = {};
    ASSERT_EQ(S_OK, host.Open(CQTStage::Path("anim.gif"), &info));
    EXPECT_EQ(static_cast<DWORD>(TESSALY_FILEINFO_PICTURE), info.dwAttributeMask);
    EXPECT_EQ(1.0, info.dDuration);
    EXPECT_EQ(80u, info.dwWidth);
    EXPECT_EQ(60u, info.dwHeight);

    ASSERT_EQ(S_OK, host.Player().Play());
    EXPECT_FALSE(host.PumpUntilEnd(3000)) << "a looping GIF has no end";
    EXPECT_GT(host.Progress().size(), 10u) << "a picture's progress counts the timer's ticks";
    EXPECT_EQ(host.Progress().size(), host.events.size());
}

} // namespace
