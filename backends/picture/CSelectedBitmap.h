// A memory context holding one bitmap for as long as it lives: one fade frame's worth.
#pragma once

#include <windows.h>

class CSelectedBitmap
{
public:
    CSelectedBitmap(HDC hdcLike, HBITMAP hbm) : m_hdc(CreateCompatibleDC(hdcLike))
    {
        if (m_hdc)
            m_hbmOld = SelectObject(m_hdc, hbm);
    }
    ~CSelectedBitmap()
    {
        if (!m_hdc)
            return;
        SelectObject(m_hdc, m_hbmOld);
        DeleteDC(m_hdc);
    }
    CSelectedBitmap(const CSelectedBitmap&) = delete;
    CSelectedBitmap& operator=(const CSelectedBitmap&) = delete;
    HDC Dc() const { return m_hdc; }

private:
    HDC m_hdc;
    HGDIOBJ m_hbmOld = nullptr;
};
