// The port of a native window. The caller gives every message of that window to the movie
// controller and makes no other periodic call, so the association is what makes messages arrive
// while a movie plays: a window timer while the controller asks for ticks, and the service
// message that movies post (and the filter graph sends as its event notice).
#pragma once

#include <windows.h>

#include <atomic>

class CPortAssociation
{
public:
    // Made on the window's own thread, which owns the window's timers.
    explicit CPortAssociation(HWND hWnd);
    CPortAssociation(const CPortAssociation&) = delete;
    CPortAssociation& operator=(const CPortAssociation&) = delete;

    HWND Window() const { return m_hWnd; }
    // Starts or stops the tick timer; only the window's thread can, elsewhere nothing happens.
    void KeepTicking(bool bTicking);
    // Stops the ticks for good. A window timer can only be killed on the window's thread: from
    // another thread the timer ends with the window (its ticks then find no port and are ignored).
    void End();

    // A message of this layer's own, registered so that it never meets one of the caller's.
    static UINT ServiceMessage();

    static constexpr UINT_PTR kTickTimerId = 0x71746D6C;
    static constexpr UINT kTickMs = 40;

private:
    bool OnWindowThread() const;

    HWND m_hWnd;
    DWORD m_dwThreadId;
    std::atomic<bool> m_bTicking{false};
};
