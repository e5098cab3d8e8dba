#include "display/CCoverArt.h"

#include <gdiplus.h>

using namespace Gdiplus::DllExports;

bool CCoverArt::Load(HWND hWnd, LPCWSTR pwszPath)
{
    if (!pwszPath || !*pwszPath)
    {
        Delete();
        return true;
    }

    HDC hdc = GetDC(hWnd);
    if (!hdc)
        return false;
    HDC hdcMem = CreateCompatibleDC(hdc);
    if (!hdcMem)
    {
        ReleaseDC(hWnd, hdc);
        return false;
    }
    Gdiplus::GpBitmap* pPicture = nullptr;
    if (GdipCreateBitmapFromFile(pwszPath, &pPicture) != Gdiplus::Ok)
    {
        DeleteDC(hdcMem);
        ReleaseDC(hWnd, hdc);
        return false;
    }

    UINT nWidth = 0;
    UINT nHeight = 0;
    GdipGetImageWidth(pPicture, &nWidth);
    GdipGetImageHeight(pPicture, &nHeight);
    m_nArtWidth = static_cast<int>(nWidth);
    m_nArtHeight = static_cast<int>(nHeight);
    if (!m_hbmCoverArt)
        m_hbmCoverArt = CreateCompatibleBitmap(hdc, m_nArtWidth, m_nArtHeight);
    ReleaseDC(hWnd, hdc);
    if (!m_hbmCoverArt)
    {
        GdipDisposeImage(pPicture);
        DeleteDC(hdcMem);
        return false;
    }

    HGDIOBJ hbmOld = SelectObject(hdcMem, m_hbmCoverArt);
    Gdiplus::GpGraphics* pGraphics = nullptr;
    if (GdipCreateFromHDC(hdcMem, &pGraphics) == Gdiplus::Ok)
    {
        GdipDrawImageRectI(pGraphics, pPicture, 0, 0, m_nArtWidth, m_nArtHeight);
        GdipDeleteGraphics(pGraphics);
    }
    SelectObject(hdcMem, hbmOld);
    GdipDisposeImage(pPicture);
    DeleteDC(hdcMem);
    return true;
}

void CCoverArt::Draw(HDC hdc, const RECT& rcBox) const
{
    if (!m_hbmCoverArt)
        return;
    const int nBoxWidth = rcBox.right - rcBox.left;
    const int nBoxHeight = rcBox.bottom - rcBox.top;
    // Both ratios as single-precision values, so that a picture and a box of equal shape
    // compare equal and the picture fills the box's width.
    const float fArtAspect = static_cast<float>(static_cast<double>(m_nArtHeight) / m_nArtWidth);
    const float fBoxAspect = static_cast<float>(static_cast<double>(nBoxHeight) / nBoxWidth);
    int nWidth, nHeight, nOffsetX, nOffsetY;
    if (fArtAspect <= fBoxAspect)
    {
        nWidth = nBoxWidth;
        nHeight = static_cast<int>(nBoxWidth * static_cast<double>(fArtAspect));
        nOffsetX = 0;
        nOffsetY = (nBoxHeight - nHeight) / 2;
    }
    else
    {
        nWidth = static_cast<int>(nBoxHeight / static_cast<double>(fArtAspect));
        nHeight = nBoxHeight;
        nOffsetX = (nBoxWidth - nWidth) / 2;
        nOffsetY = 0;
    }

    HDC hdcMem = CreateCompatibleDC(hdc);
    HGDIOBJ hbmOld = SelectObject(hdcMem, m_hbmCoverArt);
    const int nOldMode = SetStretchBltMode(hdc, COLORONCOLOR);
    StretchBlt(hdc, rcBox.left + nOffsetX, rcBox.top + nOffsetY, nWidth, nHeight, hdcMem, 0, 0,
               m_nArtWidth, m_nArtHeight, SRCCOPY);
    SetStretchBltMode(hdc, nOldMode);
    SelectObject(hdcMem, hbmOld);
    DeleteDC(hdcMem);
}

void CCoverArt::Delete()
{
    if (m_hbmCoverArt)
    {
        DeleteObject(m_hbmCoverArt);
        m_hbmCoverArt = nullptr;
    }
}
