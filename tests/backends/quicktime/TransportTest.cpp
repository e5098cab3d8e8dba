// Pause, resume, stop and seeking of a movie (its controller serviced on the host's thread) and
// of a sound (serviced by the audio back-end's worker) through the dispatcher, and the transport
// that a still picture only pretends to follow.
#include <gtest/gtest.h>

#include "CPlaybackHost.h"
#include "CQTStage.h"
#include "backends/quicktime/CQTPlayer.h"

namespace {

class QTTransport : public ::testing::TestWithParam<const char*>
{
protected:
    void SetUp() override { ASSERT_EQ(S_OK, host.Open(CQTStage::Path(GetParam()), nullptr)); }
    double Position() { return CQTStage::Position(host.Player()); }

    CPlaybackHost host;
};

TEST_P(QTTransport, PauseHoldsThePositionAndASecondPauseResumesToTheEnd)
{
    ASSERT_EQ(S_OK, host.Player().Play());
    host.PumpFor(600);
    ASSERT_EQ(S_OK, host.Player().Pause());
    const double dPaused = Position();
    EXPECT_GT(dPaused, 0.1);
    const size_t nReports = host.Progress().size();
    host.PumpFor(700);
    EXPECT_NEAR(dPaused, Position(), 0.05);
    EXPECT_EQ(nReports, host.Progress().size()) << "progress went on while paused";

    ASSERT_EQ(S_OK, host.Player().Pause());
    EXPECT_EQ(Playback_State_Play, host.Player().GetPlayState());
    ASSERT_TRUE(host.PumpUntilEnd(10000));
    EXPECT_EQ(1u, host.Count(STREAMING_EVENT_COMPLETE));
    EXPECT_EQ(0u, host.Count(STREAMING_EVENT_ERROR));
}

TEST_P(QTTransport, StopRewindsAndASeekLandsWhereAskedAndPlaysOnFromThere)
{
    ASSERT_EQ(S_OK, host.Player().Play());
    host.PumpFor(800);
    ASSERT_EQ(S_OK, host.Player().Stop());
    EXPECT_EQ(0.0, Position());
    const size_t nEvents = host.events.size();
    host.PumpFor(500);
    EXPECT_EQ(nEvents, host.events.size());
    EXPECT_EQ(0.0, Position()) << "a stopped movie does not move";

    ASSERT_EQ(S_OK, host.Player().Play());
    ASSERT_EQ(S_OK, host.Player().Pause());
    ASSERT_EQ(S_OK, host.Player().SeekTo(1.25));
    EXPECT_NEAR(1.25, Position(), 0.02);
    ASSERT_EQ(S_OK, host.Player().Pause());
    ASSERT_TRUE(host.PumpUntilEnd(10000));
    const std::vector<double> progress = host.Progress();
    // The last report is made after the end, rewound.
    for (size_t i = nEvents; i + 1 < progress.size(); ++i)
        EXPECT_GE(progress[i], 1.2) << "report " << i;
    EXPECT_EQ(1u, host.Count(STREAMING_EVENT_COMPLETE));
}

INSTANTIATE_TEST_SUITE_P(MovieAndSound, QTTransport, ::testing::Values("clip.mov", "tone.m4a"));

struct Picture
{
    const char* pszName;
    DWORD dwWidth;
    DWORD dwHeight;
};

void PrintTo(const Picture& picture, std::ostream* pStream)
{
    *pStream << picture.pszName;
}

class QTPicture : public ::testing::TestWithParam<Picture>
{
};

TEST_P(QTPicture, TransportIsPretendedSeekingRefusedAndThePositionStaysZero)
{
    CPlaybackHost host;
    TESSALY_FILEINFO info = {};
    info.dDuration = -1.0;
    ASSERT_EQ(S_OK, host.Open(CQTStage::Path(GetParam().pszName), &info));
    EXPECT_EQ(static_cast<DWORD>(TESSALY_FILEINFO_PICTURE), info.dwAttributeMask);
    EXPECT_EQ(0.0, info.dDuration) << "a GIF of one frame has no length either";
    EXPECT_EQ(GetParam().dwWidth, info.dwWidth);
    EXPECT_EQ(GetParam().dwHeight, info.dwHeight);

    CQTPlayer& qt = *CQTStage::Find<CQTPlayer>(host.Player());
    EXPECT_EQ(S_OK, qt.Play());
    EXPECT_EQ(S_OK, qt.Pause());
    EXPECT_EQ(S_OK, qt.Resume());
    EXPECT_EQ(S_OK, qt.Stop());
    EXPECT_EQ(E_FAIL, qt.SetCurTime(0.5));
    double dSeconds = -1.0;
    EXPECT_EQ(S_OK, qt.GetCurTime(&dSeconds));
    EXPECT_EQ(0.0, dSeconds);
}

INSTANTIATE_TEST_SUITE_P(Stills, QTPicture,
                         ::testing::Values(Picture{"still.pict", 64, 48}, Picture{"still.gif", 80, 60}));

} // namespace
