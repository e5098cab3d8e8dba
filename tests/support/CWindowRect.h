// Where a child window stands, in its parent's client coordinates, as layout checks compare it.
#pragma once

#include <windows.h>

#include <vector>

class CWindowRect
{
public:
    static RECT InParent(HWND hWnd)
    {
        RECT rc = {};
        GetWindowRect(hWnd, &rc);
        MapWindowPoints(HWND_DESKTOP, GetParent(hWnd), reinterpret_cast<POINT*>(&rc), 2);
        return rc;
    }

    // {left, top, right, bottom}, so that several windows compare as one list.
    static std::vector<long> Edges(HWND hWnd)
    {
        const RECT rc = InParent(hWnd);
        return {rc.left, rc.top, rc.right, rc.bottom};
    }
};
