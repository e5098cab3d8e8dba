// What a window shows: its client area copied off the screen once, then read pixel by pixel.
#pragma once

#include <windows.h>

#include <functional>
#include <vector>

class CWindowPixels
{
public:
    explicit CWindowPixels(HWND hWnd);
    // What draw paints on a screen-compatible surface of that size: a reference picture.
    CWindowPixels(int nWidth, int nHeight, const std::function<void(HDC hdc)>& draw);

    int Width() const { return m_nWidth; }
    int Height() const { return m_nHeight; }
    COLORREF At(int x, int y) const;
    // Pixels of rc whose colour is not cr.
    int CountOther(const RECT& rc, COLORREF cr) const;
    // Pixels of rc that differ from the colour of their own row at column x0 (a column that
    // shows only the background).
    int CountUnlikeRow(const RECT& rc, int x0) const;
    // The bounding box of the pixels unlike their row's background at x0; empty when none.
    RECT BoundsUnlikeRow(const RECT& rc, int x0) const;
    // Whether rows [top, bottom) of rc equal rows [top + nShift, bottom + nShift) of other.
    int CountDifferent(const CWindowPixels& other, const RECT& rc) const;
    bool RowsEqual(const CWindowPixels& other, const RECT& rc, int nShift) const;
    bool SavePng(LPCWSTR pwszPath) const;

private:
    void Capture(int nWidth, int nHeight, const std::function<void(HDC hdc)>& draw);

    int m_nWidth = 0;
    int m_nHeight = 0;
    std::vector<DWORD> m_pixels; // 0x00RRGGBB, top row first
};
