// A picture file made into a GDI+ image the viewer can own: read whole, decoded from memory,
// turned upright by its orientation tag.
#pragma once

#include <windows.h>

#include <gdiplus.h>

class CPictureDecoder
{
public:
    // The whole file in a CoTaskMemAlloc block; null for a file that cannot be opened or read,
    // or an empty one.
    static BYTE* ReadFileToMemory(LPCWSTR pwszFile, DWORD* pdwSize);
    // Null when no image object could be made; otherwise *pStatus tells whether it decoded.
    static Gdiplus::Image* CreateImageFromMemory(const BYTE* pBytes, DWORD dwSize, Gdiplus::Status* pStatus);
    static void ApplyOrientation(Gdiplus::Image* pImage);
    // EXIF orientation (1-8) to the GDI+ rotation that shows the picture upright; mirrored
    // orientations are shown turned, never flipped.
    static Gdiplus::RotateFlipType OrientationToRotateFlip(UINT16 nOrientation);

private:
    static Gdiplus::Metafile* LoadMetafile(IStream* pStream);
};
