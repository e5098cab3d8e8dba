// The black background that covers the host window and the video window placed inside it.
#include <gtest/gtest.h>

#include "CPlaybackHost.h"
#include "CTestMedia.h"

namespace {

// The window's rectangle in its parent's client coordinates.
RECT ChildRect(HWND hWnd)
{
    RECT rc = {};
    GetWindowRect(hWnd, &rc);
    MapWindowPoints(nullptr, GetParent(hWnd), reinterpret_cast<POINT*>(&rc), 2);
    return rc;
}

::testing::AssertionResult HasRect(HWND hWnd, LONG left, LONG top, LONG right, LONG bottom)
{
    const RECT rc = ChildRect(hWnd);
    if (rc.left == left && rc.top == top && rc.right == right && rc.bottom == bottom)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "(" << rc.left << "," << rc.top << "," << rc.right << ","
                                         << rc.bottom << ")";
}

// The renderer's window is the background's only child.
HWND VideoWindow(CPlaybackHost& host)
{
    return FindWindowExW(host.DShow().BackgroundWindow(), nullptr, nullptr, nullptr);
}

class DShowVideoWindow : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(S_OK, host.Open(CTestMedia::Path("clip.avi"), nullptr));
        hVideo = VideoWindow(host);
        ASSERT_NE(nullptr, hVideo);
    }

    CPlaybackHost host; // 320 x 240, the 160 x 120 clip fits twice over
    HWND hVideo = nullptr;
};

TEST_F(DShowVideoWindow, TheBackgroundCoversTheParentAndTheStretchFlagPlacesTheVideo)
{
    const HWND hBackground = host.DShow().BackgroundWindow();
    EXPECT_EQ(host.Window(), GetParent(hBackground));
    WCHAR text[64];
    GetClassNameW(hBackground, text, 64);
    EXPECT_STREQ(L"DSHOWPLAYER.Background.WndClass", text);
    GetWindowTextW(hBackground, text, 64);
    EXPECT_STREQ(L"DSHOWPLAYER.Background.Window", text);
    EXPECT_TRUE(IsWindowVisible(hBackground));
    EXPECT_TRUE(HasRect(hBackground, 0, 0, 320, 240));
    EXPECT_TRUE(IsWindowVisible(hVideo));

    // The back-end starts out stretching, whatever flags the file was opened with.
    EXPECT_TRUE(HasRect(hVideo, 0, 0, 320, 240));
    ASSERT_EQ(S_OK, host.Player().SetPlaybackFlags(0));
    EXPECT_TRUE(HasRect(hVideo, 80, 60, 240, 180));
    ASSERT_EQ(S_OK, host.Player().SetPlaybackFlags(TESSALY_PLAYBACK_FLAG_STRETCH));
    EXPECT_TRUE(HasRect(hVideo, 0, 0, 320, 240));
}

TEST_F(DShowVideoWindow, FollowsTheParentsNewSizeOnlyWhenItChanges)
{
    host.Resize(640, 360);
    ASSERT_EQ(S_OK, host.Player().SetParentWindowSize(640, 360));
    EXPECT_TRUE(HasRect(host.DShow().BackgroundWindow(), 0, 0, 640, 360));
    EXPECT_TRUE(HasRect(hVideo, 80, 0, 560, 360));

    ASSERT_EQ(S_OK, host.DShow().VideoWindow()->SetWindowPosition(1, 1, 10, 10));
    ASSERT_EQ(S_OK, host.Player().SetParentWindowSize(640, 360));
    EXPECT_TRUE(HasRect(hVideo, 1, 1, 11, 11));
}

TEST_F(DShowVideoWindow, OnlyTheStretchBitLaysTheVideoOutAgain)
{
    ASSERT_EQ(S_OK, host.DShow().VideoWindow()->SetWindowPosition(5, 5, 50, 50));
    ASSERT_EQ(S_OK, host.DShow().SetPlaybackFlags(TESSALY_PLAYBACK_FLAG_STRETCH | 2));
    EXPECT_TRUE(HasRect(hVideo, 5, 5, 55, 55));
    ASSERT_EQ(S_OK, host.DShow().SetPlaybackFlags(2));
    EXPECT_TRUE(HasRect(hVideo, 80, 60, 240, 180));
}

TEST_F(DShowVideoWindow, KeysAndClicksOverTheVideoReachTheParentUnchanged)
{
    const LPARAM lKey = 0x00390001;
    const LPARAM lPoint = MAKELPARAM(10, 20);
    PostMessageW(hVideo, WM_KEYDOWN, VK_SPACE, lKey);
    PostMessageW(hVideo, WM_LBUTTONDOWN, MK_LBUTTON, lPoint);
    ASSERT_TRUE(host.PumpUntil([&] { return host.inputs.size() >= 2; }, 5000));
    EXPECT_EQ(static_cast<UINT>(WM_KEYDOWN), host.inputs[0].uMsg);
    EXPECT_EQ(static_cast<WPARAM>(VK_SPACE), host.inputs[0].wParam);
    EXPECT_EQ(lKey, host.inputs[0].lParam);
    EXPECT_EQ(static_cast<UINT>(WM_LBUTTONDOWN), host.inputs[1].uMsg);
    EXPECT_EQ(static_cast<WPARAM>(MK_LBUTTON), host.inputs[1].wParam);
    EXPECT_EQ(lPoint, host.inputs[1].lParam);
}

TEST_F(DShowVideoWindow, ClosingTakesTheVideoAwayAndDestroyTheBackEndsWindows)
{
    const HWND hBackground = host.DShow().BackgroundWindow();
    const HWND hEvents = host.DShow().EventWindow();
    ASSERT_EQ(S_OK, host.Player().CloseFile());
    EXPECT_EQ(nullptr, host.DShow().Graph());
    EXPECT_FALSE(IsWindow(hVideo)) << "the renderer outlived its graph";
    EXPECT_TRUE(IsWindow(hBackground)) << "the background follows the parent, not the file";

    host.Player().Destroy();
    EXPECT_FALSE(IsWindow(hBackground));
    EXPECT_FALSE(IsWindow(hEvents));
}

TEST(DShowSoundOnly, GetsNoVideoWindow)
{
    CPlaybackHost host;
    TESSALY_FILEINFO info = {};
    ASSERT_EQ(S_OK, host.Open(CTestMedia::Path("tone.wav"), &info));
    EXPECT_EQ(TESSALY_FILEINFO_AUDIO_ONLY, info.dwAttributeMask & TESSALY_FILEINFO_AUDIO_ONLY);
    EXPECT_EQ(nullptr, VideoWindow(host));
    EXPECT_TRUE(HasRect(host.DShow().BackgroundWindow(), 0, 0, 320, 240));
}

} // namespace
