#include "CWindowPixels.h"

CWindowPixels::CWindowPixels(HWND hWnd)
{
    RECT rc = {};
    GetClientRect(hWnd, &rc);
    HDC hdcWindow = GetDC(hWnd);
    *this = CWindowPixels(rc.right, rc.bottom, [&](HDC hdc) { BitBlt(hdc, 0, 0, rc.right, rc.bottom, hdcWindow, 0, 0, SRCCOPY); });
    ReleaseDC(hWnd, hdcWindow);
}

CWindowPixels::CWindowPixels(int nWidth, int nHeight, const std::function<void(HDC hdc)>& draw)
    : m_nWidth(nWidth), m_nHeight(nHeight), m_pixels(static_cast<size_t>(nWidth) * nHeight)
{
    BITMAPINFO bmi = {};
    bmi.bmiHeader = {sizeof(bmi.bmiHeader), nWidth, -nHeight, 1, 32, BI_RGB, 0, 0, 0, 0, 0};
    void* pBits = nullptr;
    HBITMAP hbm = CreateDIBSection(nullptr, &bmi, DIB_RGB_COLORS, &pBits, nullptr, 0);
    HDC hdcMem = CreateCompatibleDC(nullptr);
    HGDIOBJ hbmOld = SelectObject(hdcMem, hbm);
    draw(hdcMem);
    GdiFlush();
    for (size_t i = 0; i < m_pixels.size(); ++i) // 0x00RRGGBB in, 0x00BBGGRR out
        m_pixels[i] = RGB(GetBValue(static_cast<const DWORD*>(pBits)[i]), GetGValue(static_cast<const DWORD*>(pBits)[i]), GetRValue(static_cast<const DWORD*>(pBits)[i]));
    SelectObject(hdcMem, hbmOld);
    DeleteDC(hdcMem);
    DeleteObject(hbm);
}

int CWindowPixels::Count(const RECT& rc, const std::function<bool(int x, int y)>& differs) const
{
    int n = 0;
    for (int y = rc.top; y < rc.bottom; ++y)
        for (int x = rc.left; x < rc.right; ++x)
            n += differs(x, y);
    return n;
}
