// A window owned by a C++ object: the object's address travels in the creation parameters and
// then lives in the window's user data, so that every message from WM_NCCREATE on (WM_CREATE
// included) reaches the object's message map.
#pragma once

#include <windows.h>

class CWindowBase
{
public:
    // Position and size left to the system, as for any window created without a rectangle.
    static const RECT rcDefault;

    CWindowBase() = default;
    CWindowBase(const CWindowBase&) = delete;
    CWindowBase& operator=(const CWindowBase&) = delete;
    // The window must be gone by now: its procedure would otherwise reach a dead object.
    virtual ~CWindowBase();

    // Registers the derived class's window class on first use. Null when creation fails,
    // including when WM_CREATE answers -1.
    HWND Create(HWND hWndParent, const RECT& rc, LPCWSTR pwszWindowName, DWORD dwStyle,
                DWORD dwExStyle);
    BOOL DestroyWindow();
    // Without a window, nothing: a null handle would invalidate every window on the desktop.
    BOOL Invalidate(BOOL bErase = TRUE) const
    {
        return m_hWnd ? InvalidateRect(m_hWnd, nullptr, bErase) : FALSE;
    }
    HWND GetHandle() const { return m_hWnd; }
    BOOL IsWindow() const { return ::IsWindow(m_hWnd); }

protected:
    virtual LPCWSTR GetWndClassName() const = 0;
    // True when the message was handled, its answer in lResult. dwMsgMapID selects one of
    // several maps; the window procedure always asks for map 0.
    virtual bool ProcessWindowMessage(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam,
                                      LRESULT& lResult, DWORD dwMsgMapID) = 0;

    // Sends a child control's notification back to that control (OCM_BASE + message), so
    // controls can handle their own notifications; false when the message names no child.
    bool ReflectNotifications(UINT uMsg, WPARAM wParam, LPARAM lParam, LRESULT& lResult) const;

    HWND m_hWnd = nullptr;

private:
    static LRESULT CALLBACK StaticWindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam);
    bool RegisterWndClass() const;
};
