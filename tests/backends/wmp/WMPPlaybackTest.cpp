// Unprotected Windows Media files played through the Media Player control back-end (the route
// forced to it), against the platform's real control: what an open reports, playback in real
// time to the completion event, and the transport.
#include <gtest/gtest.h>

#include <algorithm>
#include <cwctype>

#include "CControlStage.h"
#include "CTestMedia.h"

namespace {

class WMPPlayback : public ::testing::TestWithParam<const char*>
{
};

// What an open must report for an item of the type the control names: the size only for
// video and pictures, a duration for everything but pictures.
void ExpectKind(const std::wstring& type, const TESSALY_FILEINFO& info, const CTestMedia::Truth& truth)
{
    std::wstring lower(type);
    std::transform(lower.begin(), lower.end(), lower.begin(), ::towlower);
    const bool bAudio = lower == L"audio";
    const bool bSized = lower == L"video" || lower == L"photo";
    if (lower.empty())
        std::printf("this platform's control names no media type: the item is taken as neither sound nor picture\n");
    EXPECT_EQ(bAudio ? TESSALY_FILEINFO_AUDIO_ONLY : 0u, info.dwAttributeMask & TESSALY_FILEINFO_AUDIO_ONLY);
    EXPECT_EQ(0u, info.dwAttributeMask & TESSALY_FILEINFO_PICTURE);
    EXPECT_NE(0u, info.dwAttributeMask & TESSALY_FILEINFO_SEEKABLE);
    if (bSized)
    {
        EXPECT_EQ(truth.dwWidth, info.dwWidth);
        EXPECT_EQ(truth.dwHeight, info.dwHeight);
    }
    else
    {
        EXPECT_EQ(0u, info.dwWidth);
        EXPECT_EQ(0u, info.dwHeight);
    }
}

TEST_P(WMPPlayback, OpensWithItsDurationThenPlaysInRealTimeToTheCompletionEvent)
{
    CTestMedia::Truth truth;
    ASSERT_TRUE(CTestMedia::Read(GetParam(), &truth));
    auto host = CControlStage::ControlHost();
    TESSALY_FILEINFO info = {};
    ASSERT_EQ(S_OK, CControlStage::OpenRendered(*host, GetParam(), &info));
    ASSERT_NE(nullptr, CControlStage::FindContainer(host->Window()));
    EXPECT_NEAR(truth.dDuration, info.dDuration, 0.1);
    ExpectKind(CControlStage::ControlMediaType(host->Window()), info, truth);

    // Open leaves the item stopped: nothing advances until the host says play.
    host->PumpFor(300);
    EXPECT_TRUE(host->Progress().empty());

    const ULONGLONG start = CControlStage::PlayRendered(*host, GetParam());
    ASSERT_NE(0u, start);
    host->PumpFor(600);
    const std::vector<double> progress = host->Progress();
    ASSERT_GE(progress.size(), 5u);
    EXPECT_GT(progress.back(), 0.5);
    EXPECT_LT(progress.back(), 1.3);
    EXPECT_TRUE(std::is_sorted(progress.begin(), progress.end()));

    ASSERT_TRUE(host->PumpUntilEnd(10000));
    EXPECT_EQ(1u, host->Count(STREAMING_EVENT_COMPLETE));
    EXPECT_EQ(0u, host->Count(STREAMING_EVENT_ERROR));
    EXPECT_GT((GetTickCount64() - start) / 1000.0, truth.dDuration - 0.3);
    EXPECT_EQ(Playback_State_Stop, host->Player().GetPlayState());
}

TEST_P(WMPPlayback, StopHaltsProgressAndPlayStartsAgain)
{
    auto host = CControlStage::ControlHost();
    ASSERT_EQ(S_OK, CControlStage::OpenRendered(*host, GetParam()));
    ASSERT_NE(0u, CControlStage::PlayRendered(*host, GetParam()));
    ASSERT_EQ(S_OK, host->Player().Stop());
    EXPECT_EQ(Playback_State_Stop, host->Player().GetPlayState());
    const size_t nReports = host->Progress().size();
    host->PumpFor(500);
    EXPECT_EQ(nReports, host->Progress().size()) << "progress went on after stop";

    host->events.clear();
    ASSERT_NE(0u, CControlStage::PlayRendered(*host, GetParam()));
    ASSERT_TRUE(host->PumpUntilEnd(10000));
    EXPECT_EQ(1u, host->Count(STREAMING_EVENT_COMPLETE));
}

// Sound only: this platform's control, seeking a video while playing it, stalls its graph (no end
// of media, and its stop then never returns).
TEST(WMPSeek, ASeekWhilePlayingMovesTheProgressThere)
{
    auto host = CControlStage::ControlHost();
    ASSERT_EQ(S_OK, CControlStage::OpenRendered(*host, "tone.wma"));
    ASSERT_NE(0u, CControlStage::PlayRendered(*host, "tone.wma"));
    ASSERT_EQ(S_OK, host->Player().SeekTo(1.2));
    host->PumpFor(300);
    ASSERT_FALSE(host->Progress().empty());
    EXPECT_GE(host->Progress().back(), 1.2);
    ASSERT_TRUE(host->PumpUntilEnd(10000));
    EXPECT_EQ(1u, host->Count(STREAMING_EVENT_COMPLETE));
}

TEST_P(WMPPlayback, PauseAndResumeAreForwardedAndPlaybackStillCompletes)
{
    CTestMedia::Truth truth;
    ASSERT_TRUE(CTestMedia::Read(GetParam(), &truth));
    auto host = CControlStage::ControlHost();
    ASSERT_EQ(S_OK, CControlStage::OpenRendered(*host, GetParam()));
    const ULONGLONG start = CControlStage::PlayRendered(*host, GetParam());
    ASSERT_NE(0u, start);
    ASSERT_EQ(S_OK, host->Player().Pause());
    EXPECT_EQ(Playback_State_Pause, host->Player().GetPlayState());
    host->PumpFor(800);
    ASSERT_EQ(S_OK, host->Player().Pause());
    EXPECT_EQ(Playback_State_Play, host->Player().GetPlayState());
    ASSERT_TRUE(host->PumpUntilEnd(10000));
    EXPECT_EQ(1u, host->Count(STREAMING_EVENT_COMPLETE));
    // A control that held still ends no sooner than the item's length plus the pause.
    const double dElapsed = (GetTickCount64() - start) / 1000.0;
    std::printf(dElapsed < truth.dDuration + 0.6 ? "this platform's control cannot pause (pause answers E_NOTIMPL): it "
                                                   "played on and ended after %.2f s\n"
                                                 : "the control held still while paused: ended after %.2f s\n",
                dElapsed);
}

INSTANTIATE_TEST_SUITE_P(Media, WMPPlayback, ::testing::Values("tone.wma", "clip.wmv"));

} // namespace
