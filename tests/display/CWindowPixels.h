// What a window shows (its client area copied off the screen once), or what draw paints on a
// surface of that size, read pixel by pixel.
#pragma once

#include <windows.h>
#include <functional>
#include <vector>

class CWindowPixels
{
public:
    explicit CWindowPixels(HWND hWnd);
    CWindowPixels(int nWidth, int nHeight, const std::function<void(HDC hdc)>& draw);

    int Width() const { return m_nWidth; }
    int Height() const { return m_nHeight; }
    COLORREF At(int x, int y) const { return m_pixels[static_cast<size_t>(y) * m_nWidth + x]; }
    // Pixels of rc whose colour is not cr.
    int CountOther(const RECT& rc, COLORREF cr) const { return Count(rc, [&](int x, int y) { return At(x, y) != cr; }); }
    // Pixels of rc unlike the pixel nShift rows lower in other.
    int CountDifferent(const CWindowPixels& other, const RECT& rc, int nShift = 0) const
    {
        return Count(rc, [&](int x, int y) { return At(x, y) != other.At(x, y + nShift); });
    }

private:
    int Count(const RECT& rc, const std::function<bool(int x, int y)>& differs) const;
    int m_nWidth = 0, m_nHeight = 0;
    std::vector<COLORREF> m_pixels; // top row first
};
