// The description scroll: started by a click on a description that fills its box, one pixel a
// tick, back in from below the box after 101 pixels. Ticks are sent by hand.
#include <string>

#include "InfoWndTest.h"

namespace {

const COLORREF NAVY = RGB(0, 0, 0x60);

class InfoWndScroll : public InfoWndTest
{
protected:
    // Sizes the window so that the description box holds a whole number of lines of the
    // description font made from lf, and returns that number.
    int FitWholeLines()
    {
        LOGFONTW lf = {};
        lstrcpyW(lf.lfFaceName, L"times");
        lf.lfHeight = -20;
        LOGFONTW lfDescript = lf;
        lfDescript.lfHeight = static_cast<LONG>(lf.lfHeight * 0.89);
        nLineHeight = MeasureLines(lfDescript, L"x");
        for (int nHeight = 400; nHeight < 700; ++nHeight)
        {
            Resize(640, nHeight);
            box = info->DescriptBox();
            if ((box.bottom - box.top) % nLineHeight == 0)
                break;
        }
        EXPECT_EQ(S_OK, info->SetFont(&lf, FALSE)); // after the resize, which would scale it
        const int nLines = (box.bottom - box.top) / nLineHeight;
        EXPECT_EQ(box.bottom - box.top, MeasureLines(lfDescript, Lines(nLines).c_str()));
        return nLines;
    }

    int MeasureLines(const LOGFONTW& lf, LPCWSTR pwszText) const
    {
        HDC hdc = GetDC(hWnd);
        HFONT hFont = CreateFontIndirectW(&lf);
        HGDIOBJ hOld = SelectObject(hdc, hFont);
        RECT rc = info->DescriptBox();
        DrawTextW(hdc, pwszText, -1, &rc, DT_WORDBREAK | DT_CALCRECT | DT_EDITCONTROL);
        SelectObject(hdc, hOld);
        DeleteObject(hFont);
        ReleaseDC(hWnd, hdc);
        return rc.bottom - rc.top;
    }

    static std::wstring Lines(int nLines)
    {
        std::wstring text = L"Line 1 of the description";
        for (int i = 2; i <= nLines; ++i)
            text += L"\r\nLine " + std::to_wstring(i) + L" of the description";
        return text;
    }

    void ShowDescription(int nLines)
    {
        SetField(record.wszDescript, Lines(nLines).c_str());
        ShowPanelOn(NAVY);
    }

    void Click(int x, int y) { SendMessageW(hWnd, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(x, y)); }
    // On the box's last row, the far edge of where a click counts.
    void Click(const RECT& rc) { Click(rc.left + 5, rc.bottom - 1); }
    void Ticks(int n)
    {
        for (int i = 0; i < n; ++i)
            SendMessageW(hWnd, WM_TIMER, CInfoWnd::SCROLL_TIMER_ID, 0);
    }
    bool ScrollTimerRuns() { return KillTimer(hWnd, CInfoWnd::SCROLL_TIMER_ID) != FALSE; }

    RECT box = {};
    int nLineHeight = 0;
};

TEST_F(InfoWndScroll, AClickScrollsADescriptionAsHighAsItsBoxButNotAShorterOne)
{
    const int nLines = FitWholeLines();
    ShowDescription(nLines - 1);
    const CWindowPixels still = Grab();
    Click(box);
    Ticks(3);
    EXPECT_EQ(0, Grab().CountDifferent(still, box));
    EXPECT_FALSE(ScrollTimerRuns());

    ShowDescription(nLines);
    const CWindowPixels first = Grab();
    Click(box);
    Ticks(3); // the first tick draws the text where it stands, each later one a pixel higher
    const CWindowPixels moved = Grab();
    EXPECT_TRUE(moved.RowsEqual(first, {box.left, box.top, box.right, box.bottom - 2}, 2));
    EXPECT_NE(0, moved.CountDifferent(first, box));
    EXPECT_EQ(0, moved.CountOther({box.left, box.bottom - 2, box.right, box.bottom}, NAVY));
    EXPECT_TRUE(ScrollTimerRuns());
}

TEST_F(InfoWndScroll, ASecondClickStopsTheScrollAndTheNextPaintRewinds)
{
    ShowDescription(FitWholeLines());
    const CWindowPixels first = Grab();
    Click(box);
    Ticks(5);
    Click(box);
    const CWindowPixels stopped = Grab();
    Ticks(5);
    EXPECT_EQ(0, Grab().CountDifferent(stopped, box));
    Paint();
    EXPECT_EQ(0, Grab().CountDifferent(first, box));
}

TEST_F(InfoWndScroll, TheOffsetWrapsAfter101PixelsToBelowTheBox)
{
    ShowDescription(FitWholeLines());
    const CWindowPixels first = Grab();
    const int nHeight = box.bottom - box.top;
    Click(box);
    Ticks(101);
    EXPECT_TRUE(Grab().RowsEqual(first, {box.left, box.top, box.right, box.bottom - 100}, 100));
    Ticks(1);
    EXPECT_EQ(0, Grab().CountOther(box, NAVY));
    // k ticks later the top k rows of the text stand at the bottom of the box.
    const int k = nLineHeight / 2;
    Ticks(k);
    const CWindowPixels reentered = Grab();
    EXPECT_TRUE(reentered.RowsEqual(first, {box.left, box.bottom - k, box.right, box.bottom}, k - nHeight));
    EXPECT_EQ(0, reentered.CountOther({box.left, box.top, box.right, box.bottom - k}, NAVY));
    EXPECT_NE(0, reentered.CountOther(box, NAVY));
}

TEST_F(InfoWndScroll, InCaptionModeTheStripIsTheBoxThatScrolls)
{
    SetField(record.wszDescript, Lines(12).c_str());
    info->SetGradientBkColor(NAVY, NAVY, FALSE);
    info->SetDisplayMode(INFO_MODE_CAPTION, TRUE);
    info->ShowMediaInfo(TRUE);
    Paint();
    const RECT strip = info->CaptionBox();
    const CWindowPixels first = Grab();
    Click(320, strip.top - 1); // in the description box, which is no text box in this mode
    EXPECT_FALSE(ScrollTimerRuns());
    Click(strip);
    Ticks(2);
    EXPECT_TRUE(Grab().RowsEqual(first, {strip.left, strip.top, strip.right, strip.bottom - 1}, 1));
    EXPECT_NE(0, Grab().CountDifferent(first, strip));
}

} // namespace
