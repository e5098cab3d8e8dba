// What the window hands to its host: movement wakes the cursor and stays here, clicks and keys are
// posted on, the cursor hides two seconds after the last movement (by the test's clock); and the
// room a shown caption strip takes from the picture under the window.
#include <string>

#include "InfoWndTest.h"

namespace {

using InfoWndInput = InfoWndTest;

// The thread's cursor display counter, unchanged by asking.
int CursorCount()
{
    ShowCursor(TRUE);
    return ShowCursor(FALSE);
}

TEST_F(InfoWndInput, MovementStaysHereWhileClicksAndKeysArePostedToTheHost)
{
    const UINT forwarded[] = {WM_LBUTTONDBLCLK, WM_CHAR,      WM_DEADCHAR,      WM_KEYDOWN,     WM_KEYUP,
                              WM_LBUTTONDOWN,   WM_LBUTTONUP, WM_RBUTTONDBLCLK, WM_RBUTTONDOWN, WM_RBUTTONUP};
    EXPECT_EQ(1, SendMessageW(hWnd, WM_MOUSEMOVE, 0, MAKELPARAM(10, 10)));
    for (UINT uMsg : forwarded)
        EXPECT_EQ(0, SendMessageW(hWnd, uMsg, uMsg + 1, MAKELPARAM(uMsg & 0xFF, 7)));
    EXPECT_EQ(1, SendMessageW(hWnd, WM_MOUSEMOVE, 0, MAKELPARAM(20, 20)));
    const std::vector<MSG> hostMessages = HostMessages();
    ASSERT_EQ(std::size(forwarded), hostMessages.size());
    for (size_t i = 0; i < hostMessages.size(); ++i)
    {
        EXPECT_EQ(forwarded[i], hostMessages[i].message);
        EXPECT_EQ(forwarded[i] + 1, hostMessages[i].wParam);
        EXPECT_EQ(MAKELPARAM(forwarded[i] & 0xFF, 7), static_cast<DWORD>(hostMessages[i].lParam));
    }
}

TEST_F(InfoWndInput, CursorHidesOnTheFirstTickMoreThanTwoSecondsAfterTheLastMove)
{
    const int nShown = CursorCount();
    const DWORD t0 = info->dwNow;
    SendMessageW(hWnd, WM_MOUSEMOVE, 0, 0);
    EXPECT_EQ(nShown + 1, CursorCount());
    // The timer is a real one: it reaches the window's queue.
    MSG msg = {};
    const DWORD dwStart = GetTickCount();
    while (!PeekMessageW(&msg, hWnd, WM_TIMER, WM_TIMER, PM_REMOVE) && GetTickCount() - dwStart < 5000)
        MsgWaitForMultipleObjects(0, nullptr, FALSE, 50, QS_TIMER);
    EXPECT_EQ(static_cast<UINT>(WM_TIMER), msg.message);
    EXPECT_EQ(CInfoWnd::CURSOR_TIMER_ID, msg.wParam);
    info->dwNow = t0 + 1500;
    SendMessageW(hWnd, WM_MOUSEMOVE, 0, 0); // moves again: two seconds from here
    auto tick = [&](DWORD dwNow) {
        info->dwNow = dwNow;
        return SendMessageW(hWnd, WM_TIMER, CInfoWnd::CURSOR_TIMER_ID, 0);
    };
    EXPECT_EQ(1, tick(t0 + 2001));
    EXPECT_EQ(1, tick(t0 + 3500));
    EXPECT_EQ(nShown + 1, CursorCount());
    EXPECT_EQ(1, tick(t0 + 3501));
    EXPECT_EQ(nShown, CursorCount());
    // Stopped: further ticks are not the window's any more, and the system timer is gone.
    EXPECT_EQ(0, tick(t0 + 9000));
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
        return hrSize;
    }
    HWND hWndInfo = nullptr;
    HRESULT hrSize = S_FALSE;
    std::vector<std::string> calls;
};

using Calls = std::vector<std::string>;

TEST_F(InfoWndInput, AShownCaptionLeavesThePictureTheTopFourFifthsOnEveryChangeAndHidingGivesAllBack)
{
    CRecordingVideoArea area;
    area.hWndInfo = hWnd;
    info->SetVideoArea(&area);
    EXPECT_EQ(S_OK, info->SetDisplayMode(INFO_MODE_CAPTION, TRUE)); // not shown yet: the picture keeps the window
    EXPECT_EQ(Calls{}, area.calls);
    ValidateRect(hWnd, nullptr);
    info->ShowMediaInfo(TRUE);
    EXPECT_TRUE(NeedsPaint());
    ValidateRect(hWnd, nullptr);
    info->ShowMediaInfo(TRUE); // no change
    EXPECT_FALSE(NeedsPaint());
    EXPECT_EQ(S_FALSE, info->SetDisplayMode(INFO_MODE_CAPTION, FALSE)); // unchanged mode, told again
    info->ShowMediaInfo(-1); // any other value is a change
    EXPECT_TRUE(NeedsPaint());
    info->ShowMediaInfo(FALSE);
    EXPECT_EQ((Calls{"size(640,383)", "size(640,383)", "size(640,383)", "parent(info)"}), area.calls);

    area.calls.clear(); // a panel or nothing leaves the picture alone
    EXPECT_EQ(S_OK, info->SetDisplayMode(INFO_MODE_MEDIA, TRUE));
    info->ShowMediaInfo(TRUE);
    EXPECT_EQ(S_OK, info->SetDisplayMode(INFO_MODE_NONE, TRUE));
    info->SetVideoArea(nullptr);
    info->ShowMediaInfo(FALSE);
    EXPECT_EQ(Calls{}, area.calls);
}

} // namespace
