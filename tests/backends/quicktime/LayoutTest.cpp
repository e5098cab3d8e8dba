// Where the video back-end puts its windows in the host's window: fitted by the stretch flag,
// refitted when the parent is resized; what SetPlaybackFlags answers; and input over the
// back-ends' windows handed on to the host.
#include <gtest/gtest.h>

#include <algorithm>
#include <tuple>

#include "CPlaybackHost.h"
#include "CQTStage.h"
#include "backends/quicktime/CQTAudioPlayer.h"
#include "backends/quicktime/CQTPlayer.h"

namespace {

using Box = std::tuple<long, long, long, long>;

class QTLayout : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(S_OK, host.Open(CQTStage::Path("clip.mov"), nullptr));
        hBackground = FindWindowExW(host.Window(), nullptr, L"QTPlayer.Background.WndClass", nullptr);
        hVideo = FindWindowExW(hBackground, nullptr, L"QTPlayer.Handler.WndClass", nullptr);
        ASSERT_NE(nullptr, hVideo);
        pQT = CQTStage::Find<CQTPlayer>(host.Player());
    }

    double Position() { return CQTStage::Position(host.Player()); }

    CPlaybackHost host{320, 240};
    HWND hBackground = nullptr;
    HWND hVideo = nullptr;
    CQTPlayer* pQT = nullptr;
};

TEST_F(QTLayout, TheMovieFollowsTheStretchFlagAndAChangedFlagIsAnsweredWithEFail)
{
    EXPECT_EQ(Box(0, 0, 320, 240), CQTStage::PlacedRect(hBackground));
    EXPECT_EQ(Box(0, 0, 320, 240), CQTStage::PlacedRect(hVideo)) << "160x120 stretched to the window";
    EXPECT_EQ(S_OK, pQT->SetPlaybackFlags(TESSALY_PLAYBACK_FLAG_STRETCH));
    EXPECT_EQ(E_FAIL, pQT->SetPlaybackFlags(0));
    EXPECT_EQ(Box(80, 60, 240, 180), CQTStage::PlacedRect(hVideo)) << "centred at its own size";
    EXPECT_EQ(S_OK, pQT->SetPlaybackFlags(0)) << "the refused change was kept all the same";
}

TEST_F(QTLayout, AParentResizeRefitsBothWindowsAndSetsAPausedMoviePlaying)
{
    ASSERT_EQ(S_OK, host.Player().Play());
    host.PumpFor(300);
    ASSERT_EQ(S_OK, host.Player().Pause());
    const double dPaused = Position();

    host.Resize(400, 200);
    ASSERT_EQ(S_OK, host.Player().SetParentWindowSize(400, 200));
    EXPECT_EQ(Box(0, 0, 400, 200), CQTStage::PlacedRect(hBackground));
    EXPECT_EQ(Box(67, 0, 333, 200), CQTStage::PlacedRect(hVideo)) << "stretched to the height, 266 wide, centred";
    host.PumpFor(800);
    EXPECT_GT(Position(), dPaused + 0.2) << "a resize resumes the movie, whatever the dispatcher's state";
    EXPECT_EQ(Playback_State_Pause, host.Player().GetPlayState());
}

// The controller does not take the click as play or pause.
TEST_F(QTLayout, AClickOverTheMovieReachesTheHostAndTheMovieGoesOn)
{
    ASSERT_EQ(S_OK, host.Player().Play());
    SetCursorPos(100, 100); // over the movie, which fills the host window at the screen's corner
    PostMessageW(hVideo, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(100, 100));
    host.PumpFor(200);
    const double dBefore = Position();
    host.PumpFor(500);
    EXPECT_GT(Position(), dBefore + 0.2);
    EXPECT_TRUE(std::any_of(host.inputs.begin(), host.inputs.end(),
                            [](const CPlaybackHost::Input& input) { return input.uMsg == WM_LBUTTONDOWN; }));
}

TEST(QTAudioInput, AKeyOnTheWorkersWindowReachesTheHost)
{
    CPlaybackHost host;
    ASSERT_EQ(S_OK, host.Open(CQTStage::Path("tone.m4a"), nullptr));
    PostMessageW(g_hQTAudioHandlerWnd, WM_KEYDOWN, VK_RETURN, 0);
    ASSERT_TRUE(host.PumpUntil([&] { return !host.inputs.empty(); }, 2000));
    EXPECT_EQ(static_cast<UINT>(WM_KEYDOWN), host.inputs[0].uMsg);
    EXPECT_EQ(static_cast<WPARAM>(VK_RETURN), host.inputs[0].wParam);
}

} // namespace
