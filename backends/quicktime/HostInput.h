// The keyboard and mouse messages that the QuickTime back-ends' windows hand on to the host's
// window, so that input over the movie reaches the host as if the movie were not there.
#pragma once

#include <windows.h>

inline bool IsHostInput(UINT uMsg)
{
    return uMsg == WM_MOUSEACTIVATE || (uMsg >= WM_NCMOUSEMOVE && uMsg <= WM_NCMBUTTONDBLCLK) ||
           (uMsg >= WM_KEYDOWN && uMsg <= WM_SYSDEADCHAR) ||
           (uMsg >= WM_MOUSEMOVE && uMsg <= WM_MBUTTONDBLCLK);
}
