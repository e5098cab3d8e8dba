// The black background over the host window and the video window inside it: where the picture
// goes with and without the stretch flag and after the parent's size changes, what the window
// then shows, where input over the video goes, and which windows outlive a file.
#include <gtest/gtest.h>

#include "CPlaybackHost.h"
#include "CTestMedia.h"
#include "CWindowPixels.h"
#include "tests/support/CWindowRect.h"

namespace {

// The window's rectangle in its parent's client coordinates.
::testing::AssertionResult HasRect(HWND hWnd, const RECT& expected)
{
    const RECT rc = CWindowRect::InParent(hWnd);
    if (EqualRect(&rc, &expected))
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "(" << rc.left << "," << rc.top << "," << rc.right << "," << rc.bottom << ")";
}

// Every pixel inside `video` (less a two-pixel seam for the scaler's edge) is the clip's red, and
// every pixel of the window outside it (less the same seam) is black.
::testing::AssertionResult ShowsVideoAt(HWND hWnd, const RECT& video)
{
    const CWindowPixels pixels(hWnd);
    int nNotRed = 0, nNotBlack = 0;
    for (int y = 0; y < pixels.Height(); ++y)
    {
        for (int x = 0; x < pixels.Width(); ++x)
        {
            const COLORREF cr = pixels.At(x, y);
            const bool bRed = GetRValue(cr) > 160 && GetGValue(cr) < 90 && GetBValue(cr) < 90;
            nNotRed += x >= video.left + 2 && x < video.right - 2 && y >= video.top + 2 && y < video.bottom - 2 && !bRed;
            nNotBlack += (x < video.left - 2 || x >= video.right + 2 || y < video.top - 2 || y >= video.bottom + 2) &&
                         cr != RGB(0, 0, 0);
        }
    }
    if (nNotRed == 0 && nNotBlack == 0)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << nNotRed << " pixels inside are not the video's red, " << nNotBlack
                                         << " outside are not black";
}

class DShowVideo : public ::testing::Test
{
protected:
    void Open(const char* pszFile)
    {
        ASSERT_EQ(S_OK, host.Open(CTestMedia::Path(pszFile), nullptr));
        hVideo = FindWindowExW(host.DShow().BackgroundWindow(), nullptr, nullptr, nullptr); // its only child
        ASSERT_NE(nullptr, hVideo);
    }

    CPlaybackHost host; // 320 x 240; the clips are 160 x 120
    HWND hVideo = nullptr;
};

TEST_F(DShowVideo, ThePictureFollowsTheStretchBitAndTheParentsSize)
{
    Open("red.avi");
    const HWND hBackground = host.DShow().BackgroundWindow();
    EXPECT_EQ(host.Window(), GetParent(hBackground));
    EXPECT_TRUE(IsWindowVisible(hBackground));
    EXPECT_TRUE(IsWindowVisible(hVideo));
    ASSERT_EQ(S_OK, host.Player().Play());
    // The back-end starts out stretching, whatever flags the file was opened with (kAsOpened).
    const DWORD kAsOpened = ~0u;
    const struct { int nWidth, nHeight; DWORD dwFlags; RECT video; } steps[] = {
        {320, 240, kAsOpened, {0, 0, 320, 240}},
        {320, 240, 0, {80, 60, 240, 180}},
        {640, 360, 0, {240, 120, 400, 240}},
        {640, 360, TESSALY_PLAYBACK_FLAG_STRETCH, {80, 0, 560, 360}},
    };
    for (const auto& step : steps)
    {
        SCOPED_TRACE(std::to_string(step.nWidth) + " wide, flags " + std::to_string(step.dwFlags));
        host.Resize(step.nWidth, step.nHeight);
        ASSERT_EQ(S_OK, host.Player().SetParentWindowSize(step.nWidth, step.nHeight));
        if (step.dwFlags != kAsOpened)
        {
            ASSERT_EQ(S_OK, host.Player().SetPlaybackFlags(step.dwFlags));
        }
        EXPECT_TRUE(HasRect(hBackground, {0, 0, step.nWidth, step.nHeight}));
        EXPECT_TRUE(HasRect(hVideo, step.video));
        host.PumpFor(600); // frames keep coming while it plays; a few repaint what was laid out anew
        EXPECT_TRUE(ShowsVideoAt(host.Window(), step.video));
    }

    // Neither the same size again nor flags whose stretch bit stays lay the picture out anew.
    ASSERT_EQ(S_OK, host.DShow().VideoWindow()->SetWindowPosition(1, 1, 10, 10));
    ASSERT_EQ(S_OK, host.Player().SetParentWindowSize(640, 360));
    ASSERT_EQ(S_OK, host.DShow().SetPlaybackFlags(TESSALY_PLAYBACK_FLAG_STRETCH | 2));
    EXPECT_TRUE(HasRect(hVideo, {1, 1, 11, 11}));
    ASSERT_EQ(S_OK, host.DShow().SetPlaybackFlags(2));
    EXPECT_TRUE(HasRect(hVideo, {240, 120, 400, 240}));
}

TEST_F(DShowVideo, KeysAndClicksOverTheVideoReachTheParentUnchanged)
{
    Open("clip.avi");
    const LPARAM lKey = 0x00390001, lPoint = MAKELPARAM(10, 20);
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

TEST_F(DShowVideo, ClosingTakesTheVideoAwayAndDestroyTheBackEndsWindowsAndSoundGetsNone)
{
    Open("clip.avi");
    const HWND hBackground = host.DShow().BackgroundWindow();
    const HWND hEvents = host.DShow().EventWindow();
    ASSERT_EQ(S_OK, host.Player().CloseFile());
    EXPECT_EQ(nullptr, host.DShow().Graph());
    EXPECT_FALSE(IsWindow(hVideo)) << "the renderer outlived its graph";
    EXPECT_TRUE(IsWindow(hBackground)) << "the background follows the parent, not the file";

    TESSALY_FILEINFO info = {};
    ASSERT_EQ(S_OK, host.Open(CTestMedia::Path("tone.wav"), &info));
    EXPECT_EQ(TESSALY_FILEINFO_AUDIO_ONLY, info.dwAttributeMask & TESSALY_FILEINFO_AUDIO_ONLY);
    EXPECT_EQ(nullptr, FindWindowExW(hBackground, nullptr, nullptr, nullptr));
    EXPECT_TRUE(HasRect(hBackground, {0, 0, 320, 240}));

    host.Player().Destroy();
    EXPECT_FALSE(IsWindow(hBackground));
    EXPECT_FALSE(IsWindow(hEvents));
}

} // namespace
