// Where a picture lands in the host's window: fitted and centred on black, kept at its own size
// or stretched by the flag, laid out again when the host's window changes size.
#include <gtest/gtest.h>

#include "CPictureCheck.h"
#include "CPictureFiles.h"
#include "CPictureStage.h"

namespace {

const COLORREF kRed = RGB(255, 0, 0);
const DWORD kStretch = 1;
const int kScaledSeam = 5; // 64 pixels grown to 200: a source pixel and a half is about five

class PictureLayout : public ::testing::Test
{
protected:
    std::wstring Red(int nWidth, int nHeight)
    {
        return files.Encode(L"red-" + std::to_wstring(nWidth) + L"x" + std::to_wstring(nHeight) + L".png", nWidth,
                            nHeight, [](int, int) { return kRed; });
    }

    CPictureFiles files;
    CPictureStage stage; // 200 x 200
};

TEST_F(PictureLayout, ASmallPictureKeepsItsSizeInTheMiddleWithoutTheStretchFlag)
{
    ASSERT_EQ(S_OK, stage.Open(Red(64, 32), 0, 0));
    EXPECT_TRUE(ShowsPictureAt(stage.Window(), {68, 84, 132, 116}, kRed));
}

TEST_F(PictureLayout, TheStretchFlagGrowsASmallPictureKeepingItsAspectRatio)
{
    ASSERT_EQ(S_OK, stage.Open(Red(64, 32), 0, kStretch));
    EXPECT_TRUE(ShowsPictureAt(stage.Window(), {0, 50, 200, 150}, kRed, kScaledSeam));
}

TEST_F(PictureLayout, ALargePictureIsShrunkWhateverTheFlag)
{
    for (DWORD dwFlags : {0ul, kStretch})
    {
        ASSERT_EQ(S_OK, stage.Open(Red(400, 100), 0, dwFlags));
        EXPECT_TRUE(ShowsPictureAt(stage.Window(), {0, 75, 200, 125}, kRed)) << "flags " << dwFlags;
    }
}

TEST_F(PictureLayout, AResizedHostWindowLaysThePictureOutAgain)
{
    ASSERT_EQ(S_OK, stage.Open(Red(64, 32), 0, kStretch));
    stage.Resize(100, 300);
    EXPECT_TRUE(ShowsPictureAt(stage.Window(), {0, 125, 100, 175}, kRed, kScaledSeam));
    stage.Resize(300, 100);
    EXPECT_TRUE(ShowsPictureAt(stage.Window(), {50, 0, 250, 100}, kRed, kScaledSeam));
}

TEST_F(PictureLayout, TheStretchFlagAloneWaitsForTheNextLayout)
{
    ASSERT_EQ(S_OK, stage.Open(Red(64, 32), 0, 0));
    ASSERT_EQ(S_OK, stage.Viewer().SetPlaybackFlags(kStretch));
    stage.PumpFor(100);
    EXPECT_TRUE(ShowsPictureAt(stage.Window(), {68, 84, 132, 116}, kRed));
    stage.Resize(200, 200); // the same size: nothing to lay out
    EXPECT_TRUE(ShowsPictureAt(stage.Window(), {68, 84, 132, 116}, kRed));
    stage.Resize(200, 100);
    EXPECT_TRUE(ShowsPictureAt(stage.Window(), {0, 0, 200, 100}, kRed, kScaledSeam));
}

TEST_F(PictureLayout, TheWindowCoversTheHostUnderItsOwnClassAndTitle)
{
    const HWND hWnd = stage.Viewer().PictureWindow();
    ASSERT_TRUE(IsWindow(hWnd));
    EXPECT_EQ(stage.Window(), GetParent(hWnd));
    wchar_t wszText[64] = {};
    GetClassNameW(hWnd, wszText, 64);
    EXPECT_STREQ(L"PICTViewer.Handler.WndClass", wszText);
    GetWindowTextW(hWnd, wszText, 64);
    EXPECT_STREQ(L"PICTViewer.Handler.Window", wszText);
    RECT rc = {};
    GetClientRect(hWnd, &rc);
    EXPECT_EQ(200, rc.right);
    EXPECT_EQ(200, rc.bottom);

    stage.Viewer().Deactivate();
    EXPECT_FALSE(IsWindowVisible(hWnd));
    stage.Viewer().Activate();
    EXPECT_TRUE(IsWindowVisible(hWnd));
}

} // namespace
