#include "CPngPixels.h"

#include <gdiplus.h>

namespace {

Gdiplus::GpBitmap* AsBitmap(void* p)
{
    return static_cast<Gdiplus::GpBitmap*>(p);
}

} // namespace

CPngPixels::CPngPixels(const std::wstring& path)
{
    Gdiplus::GdiplusStartupInput input;
    if (Gdiplus::GdiplusStartup(&m_token, &input, nullptr) != Gdiplus::Ok)
        return;
    Gdiplus::GpBitmap* pBitmap = nullptr;
    if (Gdiplus::DllExports::GdipCreateBitmapFromFile(path.c_str(), &pBitmap) == Gdiplus::Ok)
        m_pBitmap = pBitmap;
}

CPngPixels::~CPngPixels()
{
    if (m_pBitmap)
        Gdiplus::DllExports::GdipDisposeImage(AsBitmap(m_pBitmap));
    if (m_token)
        Gdiplus::GdiplusShutdown(m_token);
}

unsigned CPngPixels::Width() const
{
    UINT uWidth = 0;
    if (m_pBitmap)
        Gdiplus::DllExports::GdipGetImageWidth(AsBitmap(m_pBitmap), &uWidth);
    return uWidth;
}

unsigned CPngPixels::Height() const
{
    UINT uHeight = 0;
    if (m_pBitmap)
        Gdiplus::DllExports::GdipGetImageHeight(AsBitmap(m_pBitmap), &uHeight);
    return uHeight;
}

COLORREF CPngPixels::At(unsigned x, unsigned y) const
{
    Gdiplus::ARGB argb = 0;
    if (m_pBitmap)
        Gdiplus::DllExports::GdipBitmapGetPixel(AsBitmap(m_pBitmap), static_cast<INT>(x), static_cast<INT>(y), &argb);
    return RGB((argb >> 16) & 0xFF, (argb >> 8) & 0xFF, argb & 0xFF);
}
