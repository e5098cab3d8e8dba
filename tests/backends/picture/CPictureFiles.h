// Picture files written at test time into a folder of their own, removed with it.
#pragma once

#include <windows.h>
#include <functional>
#include <string>
#include <vector>
#include "CTempFolder.h"

class CPictureFiles
{
public:
    using Painter = std::function<COLORREF(int x, int y)>; // each pixel's colour
    // Encoded by GDI+ by the name's extension (.bmp/.dib, .png, .tif/.tiff, else JPEG); empty if it cannot.
    std::wstring Encode(const std::wstring& name, int nWidth, int nHeight, const Painter& paint) const;
    // A 32-bit icon, a placeable Windows metafile, an enhanced metafile: one colour filling it; an
    // uncompressed RGB TIFF whose directory carries the EXIF orientation tag.
    std::wstring Icon(const std::wstring& name, int nSize, COLORREF cr) const;
    std::wstring WindowsMetafile(const std::wstring& name, int nWidth, int nHeight, COLORREF cr) const;
    std::wstring EnhancedMetafile(const std::wstring& name, int nWidth, int nHeight, COLORREF cr) const;
    std::wstring OrientedTiff(const std::wstring& name, int nWidth, int nHeight, UINT16 nOrientation, const Painter& paint) const;
    std::wstring Bytes(const std::wstring& name, const std::vector<BYTE>& bytes) const { return m_folder.Write(name, std::string(bytes.begin(), bytes.end())); }
    static std::vector<BYTE> Read(const std::wstring& path);
    std::wstring Path(const std::wstring& name) const { return m_folder.Path(name); }

private:
    CTempFolder m_folder;
};
