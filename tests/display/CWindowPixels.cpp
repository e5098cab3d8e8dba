#include "CWindowPixels.h"

#include <gdiplus.h>

using namespace Gdiplus::DllExports;

CWindowPixels::CWindowPixels(HWND hWnd)
{
    RECT rc = {};
    GetClientRect(hWnd, &rc);
    HDC hdcWindow = GetDC(hWnd);
    Capture(rc.right, rc.bottom, [&](HDC hdc) {
        BitBlt(hdc, 0, 0, rc.right, rc.bottom, hdcWindow, 0, 0, SRCCOPY);
    });
    ReleaseDC(hWnd, hdcWindow);
}

CWindowPixels::CWindowPixels(int nWidth, int nHeight, const std::function<void(HDC hdc)>& draw)
{
    Capture(nWidth, nHeight, draw);
}

void CWindowPixels::Capture(int nWidth, int nHeight, const std::function<void(HDC hdc)>& draw)
{
    m_nWidth = nWidth;
    m_nHeight = nHeight;
    m_pixels.resize(static_cast<size_t>(m_nWidth) * m_nHeight);

    BITMAPINFO bmi = {};
    bmi.bmiHeader.biSize = sizeof(bmi.bmiHeader);
    bmi.bmiHeader.biWidth = m_nWidth;
    bmi.bmiHeader.biHeight = -m_nHeight;
    bmi.bmiHeader.biPlanes = 1;
    bmi.bmiHeader.biBitCount = 32;
    void* pBits = nullptr;
    HBITMAP hbm = CreateDIBSection(nullptr, &bmi, DIB_RGB_COLORS, &pBits, nullptr, 0);
    HDC hdcMem = CreateCompatibleDC(nullptr);
    HGDIOBJ hbmOld = SelectObject(hdcMem, hbm);
    draw(hdcMem);
    GdiFlush();
    const DWORD* pSource = static_cast<const DWORD*>(pBits);
    for (size_t i = 0; i < m_pixels.size(); ++i)
        m_pixels[i] = pSource[i] & 0x00FFFFFF;
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

int CWindowPixels::CountUnlikeRow(const RECT& rc, int x0) const
{
    int n = 0;
    for (int y = rc.top; y < rc.bottom; ++y)
        n += CountOther({rc.left, y, rc.right, y + 1}, At(x0, y));
    return n;
}

RECT CWindowPixels::BoundsUnlikeRow(const RECT& rc, int x0) const
{
    RECT bounds = {};
    for (int y = rc.top; y < rc.bottom; ++y)
    {
        for (int x = rc.left; x < rc.right; ++x)
        {
            if (At(x, y) == At(x0, y))
                continue;
            const RECT pixel = {x, y, x + 1, y + 1};
            UnionRect(&bounds, &bounds, &pixel);
        }
    }
    return bounds;
}

int CWindowPixels::CountDifferent(const CWindowPixels& other, const RECT& rc) const
{
    int n = 0;
    for (int y = rc.top; y < rc.bottom; ++y)
        for (int x = rc.left; x < rc.right; ++x)
            n += At(x, y) != other.At(x, y);
    return n;
}

bool CWindowPixels::RowsEqual(const CWindowPixels& other, const RECT& rc, int nShift) const
{
    for (int y = rc.top; y < rc.bottom; ++y)
        for (int x = rc.left; x < rc.right; ++x)
            if (At(x, y) != other.At(x, y + nShift))
                return false;
    return true;
}

bool CWindowPixels::SavePng(LPCWSTR pwszPath) const
{
    static const CLSID clsidPng = {0x557CF406, 0x1A04, 0x11D3, {0x9A, 0x73, 0x00, 0x00, 0xF8, 0x1E, 0xF3, 0x2E}};
    std::vector<DWORD> scan(m_pixels);
    Gdiplus::GpBitmap* pBitmap = nullptr;
    if (GdipCreateBitmapFromScan0(m_nWidth, m_nHeight, m_nWidth * 4, PixelFormat32bppRGB,
                                  reinterpret_cast<BYTE*>(scan.data()), &pBitmap) != Gdiplus::Ok)
        return false;
    const bool bSaved = GdipSaveImageToFile(pBitmap, pwszPath, &clsidPng, nullptr) == Gdiplus::Ok;
    GdipDisposeImage(pBitmap);
    return bSaved;
}
