// The description scroll: started by a click on a description as high as its box or higher, a
// pixel a tick, back in from below the box after 101 pixels; a second click stops it and the next
// paint rewinds. Ticks are sent by hand.
#include <string>

#include "InfoWndTest.h"

namespace {

class InfoWndScroll : public InfoWndTest
{
protected:
    // Sizes the window so that the description box holds a whole number of lines of the
    // description font made from the host's font, and returns that number.
    int FitWholeLines()
    {
        const LOGFONTW lf = Font(L"times", -20), lfDescript = Font(L"times", static_cast<LONG>(-20 * 0.89));
        const int nLineHeight = Measure(lfDescript, L"x");
        for (int nHeight = 400; nHeight < 700; ++nHeight)
        {
            Resize(640, nHeight);
            box = info->m_rcDescript;
            if ((box.bottom - box.top) % nLineHeight == 0)
                break;
        }
        EXPECT_EQ(S_OK, info->SetFont(&lf, FALSE)); // after the resize, which would scale it
        const int nLines = (box.bottom - box.top) / nLineHeight;
        EXPECT_EQ(box.bottom - box.top, Measure(lfDescript, Lines(nLines)));
        return nLines;
    }
    int Measure(const LOGFONTW& lf, const std::wstring& text) const
    {
        HDC hdc = GetDC(hWnd);
        HGDIOBJ hOld = SelectObject(hdc, CreateFontIndirectW(&lf));
        RECT rc = info->m_rcDescript;
        DrawTextW(hdc, text.c_str(), -1, &rc, DT_WORDBREAK | DT_CALCRECT | DT_EDITCONTROL);
        DeleteObject(SelectObject(hdc, hOld));
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
    // On the box's last row, the far edge of where a click counts.
    void Click(const RECT& rc) { SendMessageW(hWnd, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(rc.left + 5, rc.bottom - 1)); }
    void Ticks(int n)
    {
        for (int i = 0; i < n; ++i)
            SendMessageW(hWnd, WM_TIMER, CInfoWnd::SCROLL_TIMER_ID, 0);
    }
    bool ScrollTimerRuns() { return KillTimer(hWnd, CInfoWnd::SCROLL_TIMER_ID) != FALSE; }

    RECT box = {};
};

TEST_F(InfoWndScroll, AClickScrollsADescriptionAsHighAsItsBoxButNotAShorterOneAndASecondClickStopsIt)
{
    const int nLines = FitWholeLines();
    SetField(record.wszDescript, Lines(nLines - 1));
    ShowPanelOn(NAVY);
    const CWindowPixels still = Grab();
    Click(box);
    Ticks(3);
    EXPECT_EQ(0, Grab().CountDifferent(still, box));
    EXPECT_FALSE(ScrollTimerRuns());

    SetField(record.wszDescript, Lines(nLines));
    Paint();
    const CWindowPixels first = Grab();
    Click(box);
    Ticks(3); // the first tick draws the text where it stands, each later one a pixel higher
    const CWindowPixels moved = Grab();
    EXPECT_EQ(0, moved.CountDifferent(first, {box.left, box.top, box.right, box.bottom - 2}, 2));
    EXPECT_NE(0, moved.CountDifferent(first, box));
    EXPECT_EQ(0, moved.CountOther({box.left, box.bottom - 2, box.right, box.bottom}, NAVY));
    EXPECT_TRUE(ScrollTimerRuns());
    Click(box);
    Ticks(5);
    EXPECT_EQ(0, Grab().CountDifferent(moved, box)) << "stopped";
    Paint();
    EXPECT_EQ(0, Grab().CountDifferent(first, box)) << "rewound";
}

TEST_F(InfoWndScroll, TheOffsetWrapsAfter101PixelsToBelowTheBox)
{
    SetField(record.wszDescript, Lines(FitWholeLines()));
    ShowPanelOn(NAVY);
    const CWindowPixels first = Grab();
    Click(box);
    Ticks(101);
    EXPECT_EQ(0, Grab().CountDifferent(first, {box.left, box.top, box.right, box.bottom - 100}, 100));
    Ticks(1);
    EXPECT_EQ(0, Grab().CountOther(box, NAVY));
    Ticks(12); // the top 12 rows of the text now stand at the bottom of the box
    const CWindowPixels reentered = Grab();
    const RECT rcBottom = {box.left, box.bottom - 12, box.right, box.bottom};
    EXPECT_EQ(0, reentered.CountDifferent(first, rcBottom, 12 - (box.bottom - box.top)));
    EXPECT_EQ(0, reentered.CountOther({box.left, box.top, box.right, box.bottom - 12}, NAVY));
    EXPECT_NE(0, reentered.CountOther(rcBottom, NAVY));
}

TEST_F(InfoWndScroll, InCaptionModeTheStripIsTheBoxThatScrolls)
{
    SetField(record.wszDescript, Lines(12));
    info->SetGradientBkColor(NAVY, NAVY, FALSE);
    info->SetDisplayMode(INFO_MODE_CAPTION, TRUE);
    info->ShowMediaInfo(TRUE);
    Paint();
    const RECT strip = info->m_rcCaption;
    const CWindowPixels first = Grab();
    Click({315, 0, 0, strip.top}); // in the description box, which is no text box in this mode
    EXPECT_FALSE(ScrollTimerRuns());
    Click(strip);
    Ticks(2);
    EXPECT_EQ(0, Grab().CountDifferent(first, {strip.left, strip.top, strip.right, strip.bottom - 1}, 1));
    EXPECT_NE(0, Grab().CountDifferent(first, strip));
}

} // namespace
