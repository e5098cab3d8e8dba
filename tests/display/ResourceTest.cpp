// Everything the window makes it gives back: no GDI object outlives it.
#include "CGdiObjectCount.h"
#include "CTestPicture.h"
#include "InfoWndTest.h"

namespace {

using InfoWndResources = InfoWndTest;

TEST_F(InfoWndResources, AWindowLifeLeavesNoGdiObjectBehind)
{
    const CTestPicture cover(120, 90, RGB(200, 100, 0));
    FillSampleRecord();
    LOGFONTW lf = {};
    lstrcpyW(lf.lfFaceName, L"arial");
    lf.lfHeight = -18;
    auto life = [&] {
        CreateWindows(640, 480);
        info->LoadCoverArt(cover.Path());
        info->LoadCoverArt(cover.Path()); // into the same bitmap
        info->SetDisplayMode(INFO_MODE_MEDIA, TRUE);
        info->ShowMediaInfo(TRUE);
        Paint();
        info->SetFont(&lf, TRUE);
        info->SetGradientBkColor(RGB(1, 2, 3), RGB(4, 5, 6), TRUE);
        Resize(500, 400);
        Paint();
        SendMessageW(hWnd, WM_LBUTTONDOWN, 0, MAKELPARAM(250, 300)); // scrolls: it overflows
        SendMessageW(hWnd, WM_TIMER, CInfoWnd::SCROLL_TIMER_ID, 0);
        info->SetDisplayMode(INFO_MODE_CAPTION, TRUE);
        Paint();
        info->SetFont(nullptr, FALSE);
        info->ClearMediaInfo();
        DestroyWindows();
    };
    DestroyWindows();
    life(); // the platform's own first-use objects (caches, stock objects) appear here
    const int nBefore = CGdiObjectCount::Live();
    ASSERT_GT(nBefore, 0);
    for (int i = 0; i < 3; ++i)
        life();
    EXPECT_EQ(nBefore, CGdiObjectCount::Live());
}

TEST_F(InfoWndResources, DeletingTheObjectTakesItsWindowAlong)
{
    info.reset();
    EXPECT_FALSE(IsWindow(hWnd));
    EXPECT_TRUE(IsWindow(hWndHost));
}

} // namespace
