// The engine's information windows among a host window's children, found by their class as a
// host that knows only the contract would find them.
#pragma once

#include <windows.h>

struct ChildSearch
{
    HWND hFound;
    int count;
};

inline BOOL CALLBACK FindInfoWindow(HWND hWnd, LPARAM lParam)
{
    WCHAR wsz[64];
    auto* search = reinterpret_cast<ChildSearch*>(lParam);
    if (GetClassNameW(hWnd, wsz, 64) && lstrcmpW(wsz, L"INFOWND.Display.WndClass") == 0)
    {
        search->hFound = hWnd;
        ++search->count;
    }
    return TRUE;
}

inline ChildSearch InfoWindowsOf(HWND hParent)
{
    ChildSearch search = {nullptr, 0};
    EnumChildWindows(hParent, FindInfoWindow, reinterpret_cast<LPARAM>(&search));
    return search;
}
