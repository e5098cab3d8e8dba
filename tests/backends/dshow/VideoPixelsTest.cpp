// What the host window shows while a video plays: the picture where the fitting puts it, with and
// without the stretch flag and after the parent's size changes, and black everywhere else.
#include <gtest/gtest.h>

#include "CPlaybackHost.h"
#include "CTestMedia.h"
#include "CWindowPixels.h"

namespace {

bool IsRed(COLORREF cr)
{
    return GetRValue(cr) > 160 && GetGValue(cr) < 90 && GetBValue(cr) < 90;
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
            const bool bInside = x >= video.left + 2 && x < video.right - 2 && y >= video.top + 2 &&
                                 y < video.bottom - 2;
            const bool bOutside = x < video.left - 2 || x >= video.right + 2 || y < video.top - 2 ||
                                  y >= video.bottom + 2;
            nNotRed += bInside && !IsRed(pixels.At(x, y));
            nNotBlack += bOutside && pixels.At(x, y) != RGB(0, 0, 0);
        }
    }
    if (nNotRed == 0 && nNotBlack == 0)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << nNotRed << " pixels inside are not the video's red, " << nNotBlack
                                         << " outside are not black; centre pixel 0x" << std::hex
                                         << pixels.At(pixels.Width() / 2, pixels.Height() / 2);
}

class DShowVideoPixels : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(S_OK, host.Open(CTestMedia::Path("red.avi"), nullptr));
        // The back-end opens stretching whatever the flags; clearing the flag lays it out anew.
        ASSERT_EQ(S_OK, host.Player().SetPlaybackFlags(0));
        ASSERT_EQ(S_OK, host.Player().Play());
        Settle();
    }

    // Frames keep coming while it plays; a few of them repaint whatever was laid out anew.
    void Settle() { host.PumpFor(600); }

    CPlaybackHost host; // 320 x 240; the clip is 160 x 120
};

TEST_F(DShowVideoPixels, WithoutStretchingTheClipKeepsItsSizeInTheMiddle)
{
    EXPECT_TRUE(ShowsVideoAt(host.Window(), {80, 60, 240, 180}));
}

TEST_F(DShowVideoPixels, StretchingFillsTheHeightOfAWideWindowWithBarsBesideIt)
{
    host.Resize(640, 360);
    ASSERT_EQ(S_OK, host.Player().SetParentWindowSize(640, 360));
    ASSERT_EQ(S_OK, host.Player().SetPlaybackFlags(TESSALY_PLAYBACK_FLAG_STRETCH));
    Settle();
    EXPECT_TRUE(ShowsVideoAt(host.Window(), {80, 0, 560, 360}));
}

TEST_F(DShowVideoPixels, AParentResizeCentresTheClipAgain)
{
    host.Resize(640, 360);
    ASSERT_EQ(S_OK, host.Player().SetParentWindowSize(640, 360));
    Settle();
    EXPECT_TRUE(ShowsVideoAt(host.Window(), {240, 120, 400, 240}));
}

} // namespace
