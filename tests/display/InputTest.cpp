// Mouse and keys: movement wakes the cursor and stays here, everything else goes to the host;
// the cursor hides two seconds after the last movement. The window's clock is the test's.
#include "InfoWndTest.h"

namespace {

// The thread's cursor display counter, unchanged by asking.
int CursorCount()
{
    ShowCursor(TRUE);
    return ShowCursor(FALSE);
}

using InfoWndInput = InfoWndTest;

TEST_F(InfoWndInput, MovementStaysHereWhileClicksAndKeysArePostedToTheHost)
{
    const UINT forwarded[] = {WM_LBUTTONDBLCLK, WM_CHAR,     WM_DEADCHAR,      WM_KEYDOWN,      WM_KEYUP,
                              WM_LBUTTONDOWN,   WM_LBUTTONUP, WM_RBUTTONDBLCLK, WM_RBUTTONDOWN, WM_RBUTTONUP};
    EXPECT_EQ(1, SendMessageW(hWnd, WM_MOUSEMOVE, 0, MAKELPARAM(10, 10)));
    for (UINT uMsg : forwarded)
        EXPECT_EQ(0, SendMessageW(hWnd, uMsg, uMsg + 1, MAKELPARAM(uMsg & 0xFF, 7)));
    EXPECT_EQ(1, SendMessageW(hWnd, WM_MOUSEMOVE, 0, MAKELPARAM(20, 20)));
    DrainHostQueue();

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
    EXPECT_EQ(nShown + 1, CursorCount());
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

// A child control's notification goes back to the control, 0x2000 above its own number.
TEST_F(InfoWndInput, ChildNotificationsAreReflectedToTheChild)
{
    static std::vector<UINT> received;
    received.clear();
    struct Child
    {
        static LRESULT CALLBACK Proc(HWND hChild, UINT uMsg, WPARAM wParam, LPARAM lParam)
        {
            received.push_back(uMsg);
            return uMsg == 0x2000 + WM_COMMAND ? 42 : DefWindowProcW(hChild, uMsg, wParam, lParam);
        }
    };
    HWND hChild = CreateWindowExW(0, L"STATIC", L"", WS_CHILD, 0, 0, 10, 10, hWnd, nullptr, nullptr, nullptr);
    SetWindowLongPtrW(hChild, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(&Child::Proc));
    EXPECT_EQ(42, SendMessageW(hWnd, WM_COMMAND, MAKEWPARAM(7, BN_CLICKED), reinterpret_cast<LPARAM>(hChild)));
    SendMessageW(hWnd, WM_COMMAND, 7, 0); // a menu command names no child
    EXPECT_EQ(std::vector<UINT>{0x2000 + WM_COMMAND}, received);
    DestroyWindow(hChild);
}

} // namespace
