// What the information window asks of whoever draws the picture under it: to take the window as
// its parent, and to fit the picture into the part of it that the caption strip leaves free. The
// dispatcher answers; the window knows nothing more of it.
#pragma once

#include <windows.h>

class IVideoArea
{
public:
    virtual HRESULT SetParentWindow(HWND hWnd) = 0;
    virtual HRESULT SetParentWindowSize(DWORD dwWidth, DWORD dwHeight) = 0;

protected:
    ~IVideoArea() = default;
};
