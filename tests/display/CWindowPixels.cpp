#include "CWindowPixels.h"

CWindowPixels::CWindowPixels(HWND hWnd)
    : CWindowPixels(0, 0, nullptr)
{
    RECT rc = {};
    GetClientRect(hWnd, &rc);
    HDC hdcWindow = GetDC(hWnd);
    *this = CWindowPixels(rc.right, rc.bottom, [&](HDC hdc) {
        BitBlt(hdc, 0, 0, rc.right, rc.bottom, hdcWindow, 0, 0, SRCCOPY);
    });
    ReleaseDC(hWnd, hdcWindow);
}

CWindowPixels::CWindowPixels(int nWidth, int nHeight, const std::function<void(HDC hdc)>& draw)
    : m_nWidth(nWidth), m_nHeight(nHeight), m_pixels(static_cast<size_t>(nWidth) * nHeight)
{
    if (!draw)
        return;
    BITMAPINFO bmi = {};
    bmi.bmiHeader = {sizeof(bmi.bmiHeader), nWidth, -nHeight, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* pBits = nullptr;
    HBITMAP hbm = CreateDIBSection(nullptr, &bmi, DIB_RGB_COLORS, &pBits, nullptr, 0);
    HDC hdcMem = CreateCompatibleDC(nullptr);
    HGDIOBJ hbmOld = SelectObject(hdcMem, hbm);
    draw(hdcMem);
    GdiFlush();
    for (size_t i = 0; i < m_pixels.size(); ++i)
        m_pixels[i] = static_cast<const DWORD*>(pBits)[i] & 0x00FFFFFF;
    SelectObject(hdcMem, hbmOld);
    DeleteDC(hdcMem);
    DeleteObject(hbm);
}

COLORREF CWindowPixels::At(int x, int y) const
{
    const DWORD rgb = m_pixels[static_cast<size_t>(y) * m_nWidth + x];
    return RGB(GetBValue(rgb), GetGValue(rgb), GetRValue(rgb));
}

int CWindowPixels::CountOther(const RECT& rc, COLORREF cr) const
{
    int n = 0;
    for (int y = rc.top; y < rc.bottom; ++y)
        for (int x = rc.left; x < rc.right; ++x)
            n += At(x, y) != cr;
    return n;
}

int CWindowPixels::CountDifferent(const CWindowPixels& other, const RECT& rc, int nShift) const
{
    int n = 0;
    for (int y = rc.top; y < rc.bottom; ++y)
        for (int x = rc.left; x < rc.right; ++x)
            n += At(x, y) != other.At(x, y + nShift);
    return n;
}
