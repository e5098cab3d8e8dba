// The information window in a 640 x 480 host, read back off the screen; its clock is the test's.
#include <windows.h>
#include <gtest/gtest.h>
#include <memory>
#include <string>
#include "CPictureFiles.h"
#include "CWindowPixels.h"
#include "display/CInfoWnd.h"
#include "tests/support/CMessagePump.h"

namespace {

const COLORREF BLACK = RGB(0, 0, 0), NAVY = RGB(0, 0, 0x60), RED = RGB(220, 30, 30), BLUE = RGB(30, 60, 230);
const RECT CLIENT = {0, 0, 640, 480};

LOGFONTW Font(LONG nHeight, LONG nWeight = FW_NORMAL) { return {nHeight, 0, 0, 0, nWeight, 0, 0, 0, DEFAULT_CHARSET, 0, 0, 0, 0, L"times"}; }

struct CInfoWndProbe : CInfoWnd
{
    using CInfoWnd::m_rcCaption, CInfoWnd::m_rcDescript;
    DWORD Now() const override { return dwNow; }
    DWORD dwNow = 1000000;
};

class InfoWnd : public ::testing::Test
{
protected:
    void SetUp() override
    {
        // Never activated, Wine hands the window to no window manager (two seconds a destruction).
        hWndHost = CreateWindowExW(0, L"STATIC", L"host", WS_POPUP | WS_CLIPCHILDREN, 0, 0, 640, 480, nullptr, nullptr,
                                   nullptr, nullptr);
        ShowWindow(hWndHost, SW_SHOWNOACTIVATE);
        // As the Play object makes it: a hidden child with the default rectangle, then moved.
        info->SetMediaInfoRecord(&record);
        hWnd = info->Create(hWndHost, CWindowBase::rcDefault, nullptr, WS_CHILD | WS_CLIPSIBLINGS | WS_CLIPCHILDREN, 0);
        ASSERT_NE(nullptr, hWnd);
        MoveWindow(hWnd, 0, 0, 640, 480, TRUE);
        ShowWindow(hWnd, SW_SHOWNA);
    }
    void TearDown() override
    {
        info.reset();
        EXPECT_FALSE(IsWindow(hWnd)) << "the object takes its window along";
        DestroyWindow(hWndHost);
        CMessagePump::PumpFor(0);
    }
    void Paint() { RedrawWindow(hWnd, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW); }
    CWindowPixels Grab() const { return CWindowPixels(hWnd); }
    bool NeedsPaint() const { return GetUpdateRect(hWnd, nullptr, FALSE) != FALSE; }
    static void SetField(short* pField, const std::wstring& text) { lstrcpyW(reinterpret_cast<LPWSTR>(pField), text.c_str()); }
    void ShowPanelOn(COLORREF crTop, COLORREF crBottom, DWORD dwMode = INFO_MODE_MEDIA)
    {
        info->SetGradientBkColor(crTop, crBottom, FALSE);
        ASSERT_EQ(S_OK, info->SetDisplayMode(dwMode, TRUE));
        info->ShowMediaInfo(TRUE);
        Paint();
    }
    void Ticks(int n)
    {
        for (int i = 0; i < n; ++i)
            SendMessageW(hWnd, WM_TIMER, CInfoWnd::SCROLL_TIMER_ID, 0);
    }
    // On the box's last row, the far edge of where a click counts.
    void Click(const RECT& rc) { SendMessageW(hWnd, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(rc.left + 5, rc.bottom - 1)); }
    bool ScrollTimerRuns() { return KillTimer(hWnd, CInfoWnd::SCROLL_TIMER_ID) != FALSE; }

    TESSALY_MEDIA_INFO record = {};
    std::unique_ptr<CInfoWndProbe> info = std::make_unique<CInfoWndProbe>();
    HWND hWndHost = nullptr;
    HWND hWnd = nullptr;
    CPictureFiles files;
};

std::wstring Lines(int nLines)
{
    std::wstring text = L"Line 1";
    for (int i = 2; i <= nLines; ++i)
        text += L"\r\nLine " + std::to_wstring(i) + L": the programme opens with three nocturnes, followed by preludes played without a break.";
    return text;
}

// The gradient and the record's text in "times" of the given heights (title, channel,
// description), each field clipped to its box at 640 x 480.
CWindowPixels ReferencePanel(const TESSALY_MEDIA_INFO& record, COLORREF crTop, COLORREF crBottom, COLORREF crText,
                             const LONG (&heights)[3])
{
    return CWindowPixels(640, 480, [&](HDC hdc) {
        auto v = [](LONG y, COLORREF cr) { return TRIVERTEX{y ? 640 : 0, y, COLOR16(GetRValue(cr) << 8), COLOR16(GetGValue(cr) << 8), COLOR16(GetBValue(cr) << 8), 0}; };
        TRIVERTEX vertices[2] = {v(0, crTop), v(480, crBottom)};
        GRADIENT_RECT gradientRect = {0, 1};
        GradientFill(hdc, vertices, 2, &gradientRect, 1, GRADIENT_FILL_RECT_V);
        SetBkMode(hdc, TRANSPARENT);
        SetTextColor(hdc, crText);
        auto draw = [&](const short* pField, RECT rc, LONG nHeight, LONG nWeight, UINT uFormat) {
            const LOGFONTW lf = Font(nHeight, nWeight);
            HGDIOBJ hOld = SelectObject(hdc, CreateFontIndirectW(&lf));
            IntersectClipRect(hdc, rc.left, rc.top, rc.right, rc.bottom);
            DrawTextW(hdc, reinterpret_cast<LPCWSTR>(pField), -1, &rc, uFormat | DT_CENTER);
            SelectClipRgn(hdc, nullptr);
            DeleteObject(SelectObject(hdc, hOld));
        };
        draw(record.wszChannelName, {183, 19, 615, 50}, heights[1], FW_SEMIBOLD, DT_VCENTER | DT_SINGLELINE);
        draw(record.wszTitle, {183, 50, 615, 110}, heights[0], FW_NORMAL, DT_VCENTER | DT_WORDBREAK);
        draw(record.wszReleaseDate, {183, 110, 615, 141}, heights[0], FW_NORMAL, DT_VCENTER | DT_SINGLELINE);
        draw(record.wszDescript, {25, 160, 615, 461}, heights[2], FW_NORMAL, DT_WORDBREAK | DT_EDITCONTROL);
    });
}

TEST_F(InfoWnd, PanelIsTheHostsGradientAndTextInItsBoxesInFontsScaledToThemAndOnlyForcedChangesInvalidate)
{
    SetField(record.wszChannelName, L"Radio Tessaly");
    SetField(record.wszTitle, L"Evening Concert: Nocturnes and Preludes");
    SetField(record.wszReleaseDate, L"2024-05-17");
    SetField(record.wszDescript, Lines(8));
    const COLORREF kTop = RGB(200, 30, 10), kBottom = RGB(20, 140, 250), kYellow = RGB(255, 255, 0);
    info->SetTextColor(kYellow, FALSE);
    ShowPanelOn(kTop, kBottom);
    EXPECT_EQ(0, Grab().CountDifferent(ReferencePanel(record, kTop, kBottom, kYellow, {-24, -24, -23}), CLIENT));
    const LOGFONTW lf = Font(-30);
    EXPECT_EQ(S_OK, info->SetFont(&lf, TRUE));
    EXPECT_TRUE(NeedsPaint());
    ValidateRect(hWnd, nullptr);
    EXPECT_EQ(S_OK, info->SetFont(nullptr, TRUE)); // the default fonts, and the window left as painted
    EXPECT_FALSE(NeedsPaint());
    Paint();
    HDC hdc = GetDC(hWnd);
    const int nDpi = GetDeviceCaps(hdc, LOGPIXELSY);
    ReleaseDC(hWnd, hdc);
    const LONG defaults[3] = {-MulDiv(12, nDpi, 72), -MulDiv(14, nDpi, 72), -MulDiv(10, nDpi, 72)};
    EXPECT_EQ(0, Grab().CountDifferent(ReferencePanel(record, kTop, kBottom, kYellow, defaults), CLIENT));
    info->SetGradientBkColor(kTop, kBottom, TRUE); // unchanged colours: nothing to paint
    info->SetTextColor(kYellow, TRUE);
    EXPECT_FALSE(NeedsPaint());
    info->SetGradientBkColor(RED, RED, FALSE);
    EXPECT_FALSE(NeedsPaint()) << "not forced";
    info->SetTextColor(RGB(0, 255, 0), TRUE);
    EXPECT_TRUE(NeedsPaint());
}

TEST_F(InfoWnd, CoverArtFillsItsBoxAlongTheLongerSideCentred)
{
    // Wide: the box's width, 143 × 0.5 = 71 high, 25 down; tall: its height, 122 ÷ 4 = 30 wide, 56 across.
    const std::pair<SIZE, RECT> kPictures[] = {{{200, 100}, {25, 44, 168, 115}}, {{50, 200}, {81, 19, 111, 141}}};
    for (const auto& [size, rc] : kPictures)
    {
        info->ClearMediaInfo();
        ASSERT_TRUE(info->LoadCoverArt(files.Encode(L"art.bmp", size.cx, size.cy, [](int, int) { return RED; }).c_str()));
        ShowPanelOn(NAVY, NAVY);
        const CWindowPixels pixels = Grab();
        EXPECT_EQ(0, pixels.CountOther(rc, RED)) << size.cx << " x " << size.cy;
        EXPECT_EQ((rc.right - rc.left) * (rc.bottom - rc.top), pixels.CountOther(CLIENT, NAVY)) << "nothing else";
    }
    info->ClearMediaInfo();
    Paint();
    EXPECT_EQ(0, Grab().CountOther(CLIENT, NAVY));
}

TEST_F(InfoWnd, BlackUnlessShownInAPanelOrCaptionModeWhoseStripIsTheBottomFifth)
{
    SetField(record.wszTitle, L"A title");
    ASSERT_TRUE(info->LoadCoverArt(files.Encode(L"art.bmp", 60, 60, [](int, int) { return RED; }).c_str()));
    const std::pair<DWORD, BOOL> kBlack[] = {{INFO_MODE_NONE, TRUE}, {INFO_MODE_MEDIA, FALSE}, {INFO_MODE_CAPTION, FALSE}, {3, FALSE}};
    for (const auto& [dwMode, bShow] : kBlack) // 3 is no mode and changes nothing
    {
        EXPECT_EQ(dwMode == 3 ? E_INVALIDARG : S_OK, info->SetDisplayMode(dwMode, TRUE));
        info->ShowMediaInfo(bShow);
        Paint();
        EXPECT_EQ(0, Grab().CountOther(CLIENT, BLACK)) << "mode " << dwMode << " shown " << bShow;
    }
    ShowPanelOn(NAVY, NAVY, INFO_MODE_CAPTION);
    const CWindowPixels pixels = Grab();
    EXPECT_EQ(0, pixels.CountOther({0, 0, 640, 383}, BLACK));
    EXPECT_EQ(0, pixels.CountOther({0, 383, 640, 480}, NAVY));
}

TEST_F(InfoWnd, AClickScrollsAnOverflowingDescriptionAPixelATickWrappingAfter101AndASecondClickStopsIt)
{
    const RECT box = info->m_rcDescript;
    SetField(record.wszDescript, Lines(2));
    ShowPanelOn(NAVY, NAVY);
    Click(box);
    EXPECT_FALSE(ScrollTimerRuns()) << "shorter than its box";
    SetField(record.wszDescript, Lines(8));
    Paint();
    const CWindowPixels first = Grab();
    Click(box);
    EXPECT_TRUE(ScrollTimerRuns());
    Ticks(3); // the first tick draws the text where it stands, each later one a pixel higher
    const CWindowPixels moved = Grab();
    EXPECT_EQ(0, moved.CountDifferent(first, {box.left, box.top, box.right, box.bottom - 2}, 2));
    Ticks(98);
    EXPECT_EQ(0, Grab().CountDifferent(first, {box.left, box.top, box.right, box.top + 100}, 100));
    Ticks(1);
    EXPECT_EQ(0, Grab().CountOther(box, NAVY));
    Ticks(12); // the top 12 rows of the text now stand at the bottom of the box
    const CWindowPixels reentered = Grab();
    const RECT rcBottom = {box.left, box.bottom - 12, box.right, box.bottom};
    EXPECT_EQ(0, reentered.CountDifferent(first, rcBottom, 12 - (box.bottom - box.top)));
    EXPECT_EQ(0, reentered.CountOther({box.left, box.top, box.right, box.bottom - 12}, NAVY));
    EXPECT_NE(0, reentered.CountOther(rcBottom, NAVY));
    Click(box);
    Ticks(5);
    EXPECT_EQ(0, Grab().CountDifferent(reentered, box)) << "stopped";
    Paint();
    EXPECT_EQ(0, Grab().CountDifferent(first, box)) << "rewound";
}

TEST_F(InfoWnd, MovementStaysHereWhileClicksAndKeysArePostedToTheHost)
{
    const UINT forwarded[] = {WM_LBUTTONDBLCLK, WM_CHAR,      WM_DEADCHAR,      WM_KEYDOWN,     WM_KEYUP,
                              WM_LBUTTONDOWN,   WM_LBUTTONUP, WM_RBUTTONDBLCLK, WM_RBUTTONDOWN, WM_RBUTTONUP};
    EXPECT_EQ(1, SendMessageW(hWnd, WM_MOUSEMOVE, 0, MAKELPARAM(10, 10)));
    for (UINT uMsg : forwarded)
        EXPECT_EQ(0, SendMessageW(hWnd, uMsg, uMsg + 1, MAKELPARAM(uMsg & 0xFF, 7)));
    EXPECT_EQ(1, SendMessageW(hWnd, WM_MOUSEMOVE, 0, MAKELPARAM(20, 20)));
    MSG msg;
    for (UINT uMsg : forwarded)
    {
        ASSERT_TRUE(PeekMessageW(&msg, hWndHost, WM_KEYFIRST, WM_MOUSELAST, PM_REMOVE));
        EXPECT_EQ(uMsg, msg.message);
        EXPECT_EQ(uMsg + 1, msg.wParam);
        EXPECT_EQ(MAKELPARAM(uMsg & 0xFF, 7), static_cast<DWORD>(msg.lParam));
    }
    EXPECT_FALSE(PeekMessageW(&msg, hWndHost, WM_KEYFIRST, WM_MOUSELAST, PM_REMOVE));
}

TEST_F(InfoWnd, CursorHidesOnTheFirstTickMoreThanTwoSecondsAfterTheLastMove)
{
    auto CursorCount = [] { return ShowCursor(TRUE), ShowCursor(FALSE); }; // the display counter, unchanged
    const int nShown = CursorCount();
    const DWORD t0 = info->dwNow;
    SendMessageW(hWnd, WM_MOUSEMOVE, 0, 0);
    EXPECT_EQ(nShown + 1, CursorCount());
    MSG msg = {}; // the timer is a real one: it reaches the window's queue
    for (const DWORD dwStart = GetTickCount(); !PeekMessageW(&msg, hWnd, WM_TIMER, WM_TIMER, PM_REMOVE) && GetTickCount() - dwStart < 5000;)
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 50, QS_TIMER);
    EXPECT_EQ(CInfoWnd::CURSOR_TIMER_ID, msg.wParam);
    info->dwNow = t0 + 1500;
    SendMessageW(hWnd, WM_MOUSEMOVE, 0, 0); // moves again: two seconds from here
    auto tick = [&](DWORD dwNow) { return info->dwNow = dwNow, SendMessageW(hWnd, WM_TIMER, CInfoWnd::CURSOR_TIMER_ID, 0); };
    EXPECT_EQ(1, tick(t0 + 3500));
    EXPECT_EQ(nShown + 1, CursorCount());
    EXPECT_EQ(1, tick(t0 + 3501));
    EXPECT_EQ(nShown, CursorCount());
    EXPECT_EQ(0, tick(t0 + 9000)) << "no longer the window's timer";
    EXPECT_EQ(nShown, CursorCount());
    EXPECT_FALSE(KillTimer(hWnd, CInfoWnd::CURSOR_TIMER_ID));
}

// Whoever draws the picture under the window, recording what it is asked.
struct CRecordingVideoArea : IVideoArea
{
    HRESULT SetParentWindow(HWND hWnd) override
    {
        calls.push_back(hWnd == hWndInfo ? "parent(info)" : "parent(?)");
        return S_OK;
    }
    HRESULT SetParentWindowSize(DWORD dwWidth, DWORD dwHeight) override
    {
        calls.push_back("size(" + std::to_string(dwWidth) + "," + std::to_string(dwHeight) + ")");
        return S_FALSE;
    }
    HWND hWndInfo = nullptr;
    std::vector<std::string> calls;
};

TEST_F(InfoWnd, AShownCaptionLeavesThePictureTheTopFourFifthsAndScrollsItsStripAndHidingGivesAllBack)
{
    CRecordingVideoArea area;
    area.hWndInfo = hWnd;
    info->SetVideoArea(&area);
    SetField(record.wszDescript, Lines(8));
    EXPECT_EQ(S_OK, info->SetDisplayMode(INFO_MODE_CAPTION, TRUE)); // not shown yet: the picture keeps the window
    EXPECT_TRUE(area.calls.empty());
    info->SetGradientBkColor(NAVY, NAVY, FALSE);
    info->ShowMediaInfo(TRUE);
    EXPECT_TRUE(NeedsPaint());
    Paint();
    info->ShowMediaInfo(TRUE); // no change
    EXPECT_FALSE(NeedsPaint());
    const RECT strip = info->m_rcCaption;
    const CWindowPixels first = Grab();
    Click({315, 0, 0, strip.top}); // in the description box, which is no text box in this mode
    EXPECT_FALSE(ScrollTimerRuns());
    Click(strip);
    Ticks(2);
    EXPECT_EQ(0, Grab().CountDifferent(first, {strip.left, strip.top, strip.right, strip.bottom - 1}, 1));
    EXPECT_EQ(S_FALSE, info->SetDisplayMode(INFO_MODE_CAPTION, FALSE)); // unchanged mode, told again
    info->ShowMediaInfo(-1); // any other value is a change
    EXPECT_TRUE(NeedsPaint());
    info->ShowMediaInfo(FALSE);
    EXPECT_EQ((std::vector<std::string>{"size(640,383)", "size(640,383)", "size(640,383)", "parent(info)"}), area.calls);

    area.calls.clear(); // a panel or nothing leaves the picture alone
    EXPECT_EQ(S_OK, info->SetDisplayMode(INFO_MODE_MEDIA, TRUE));
    info->ShowMediaInfo(TRUE);
    EXPECT_EQ(S_OK, info->SetDisplayMode(INFO_MODE_NONE, TRUE));
    info->SetVideoArea(nullptr);
    info->ShowMediaInfo(FALSE);
    EXPECT_TRUE(area.calls.empty());
}

} // namespace
