// The pixels of a PNG file the player wrote, read back through GDI+.
#pragma once

#include <windows.h>

#include <string>

class CPngPixels
{
public:
    explicit CPngPixels(const std::wstring& path);
    ~CPngPixels();
    CPngPixels(const CPngPixels&) = delete;
    CPngPixels& operator=(const CPngPixels&) = delete;

    bool Loaded() const { return m_pBitmap != nullptr; }
    unsigned Width() const;
    unsigned Height() const;
    COLORREF At(unsigned x, unsigned y) const;

private:
    ULONG_PTR m_token = 0;
    void* m_pBitmap = nullptr;
};
