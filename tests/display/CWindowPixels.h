// What a window shows: its client area copied off the screen once, then read pixel by pixel.
#pragma once

#include <windows.h>

#include <functional>
#include <vector>

class CWindowPixels
{
public:
    explicit CWindowPixels(HWND hWnd);
    // What draw paints on a surface of that size: a reference picture.
    CWindowPixels(int nWidth, int nHeight, const std::function<void(HDC hdc)>& draw);

    int Width() const { return m_nWidth; }
    int Height() const { return m_nHeight; }
    COLORREF At(int x, int y) const;
    // Pixels of rc whose colour is not cr.
    int CountOther(const RECT& rc, COLORREF cr) const;
    // Pixels of rc unlike the pixel nShift rows lower in other.
    int CountDifferent(const CWindowPixels& other, const RECT& rc, int nShift = 0) const;

private:
    int m_nWidth = 0;
    int m_nHeight = 0;
    std::vector<DWORD> m_pixels; // 0x00RRGGBB, top row first
};
