#include "CPictureFiles.h"

#include <gdiplus.h>
#include <algorithm>

using namespace Gdiplus::DllExports;

namespace {

void Put(std::vector<BYTE>& bytes, std::initializer_list<UINT32> values, int nBytes) // little-endian
{
    for (UINT32 value : values)
        for (int i = 0; i < nBytes; ++i)
            bytes.push_back(static_cast<BYTE>(value >> (8 * i)));
}

void Fill(HDC hdc, int nWidth, int nHeight, COLORREF cr)
{
    HGDIOBJ hOld = SelectObject(hdc, CreateSolidBrush(cr));
    SelectObject(hdc, GetStockObject(NULL_PEN));
    Rectangle(hdc, 0, 0, nWidth + 1, nHeight + 1);
    DeleteObject(SelectObject(hdc, hOld));
}

UINT32 Argb(COLORREF cr) { return 0xFF000000u | (GetRValue(cr) << 16) | (GetGValue(cr) << 8) | GetBValue(cr); }

} // namespace

std::vector<BYTE> CPictureFiles::Read(const std::wstring& path)
{
    HANDLE hFile = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    std::vector<BYTE> bytes(hFile == INVALID_HANDLE_VALUE ? 0 : GetFileSize(hFile, nullptr));
    DWORD dwRead = 0;
    return ReadFile(hFile, bytes.data(), static_cast<DWORD>(bytes.size()), &dwRead, nullptr), CloseHandle(hFile), bytes;
}

std::wstring CPictureFiles::Encode(const std::wstring& name, int nWidth, int nHeight, const Painter& paint) const
{
    const std::wstring ext = name.substr(name.find_last_of(L'.') + 1);
    const std::wstring mime = ext == L"bmp" || ext == L"dib" ? L"image/bmp" : ext == L"png" ? L"image/png" : ext.substr(0, 2) == L"ti" ? L"image/tiff" : L"image/jpeg";
    UINT nCount = 0, cbSize = 0;
    GdipGetImageEncodersSize(&nCount, &cbSize);
    std::vector<BYTE> buffer(cbSize + 1);
    auto* pCodecs = reinterpret_cast<Gdiplus::ImageCodecInfo*>(buffer.data());
    GdipGetImageEncoders(nCount, cbSize, pCodecs);
    const Gdiplus::ImageCodecInfo* pCodec = std::find_if(pCodecs, pCodecs + nCount, [&](const auto& codec) { return mime == codec.MimeType; });
    Gdiplus::GpBitmap* pBitmap = nullptr;
    if (pCodec == pCodecs + nCount || GdipCreateBitmapFromScan0(nWidth, nHeight, 0, PixelFormat24bppRGB, nullptr, &pBitmap) != Gdiplus::Ok)
        return std::wstring();
    for (int y = 0; y < nHeight; ++y)
        for (int x = 0; x < nWidth; ++x)
            GdipBitmapSetPixel(pBitmap, x, y, Argb(paint(x, y)));
    const std::wstring path = Path(name);
    const Gdiplus::Status status = GdipSaveImageToFile(pBitmap, path.c_str(), &pCodec->Clsid, nullptr);
    return GdipDisposeImage(pBitmap), status == Gdiplus::Ok ? path : std::wstring();
}

std::wstring CPictureFiles::Icon(const std::wstring& name, int nSize, COLORREF cr) const
{
    const UINT32 cbMask = (nSize + 31) / 32 * 4 * nSize, cbImage = 40 + 4 * nSize * nSize + cbMask;
    std::vector<BYTE> bytes = {0, 0, 1, 0, 1, 0, static_cast<BYTE>(nSize), static_cast<BYTE>(nSize), 0, 0}; // an icon of one image
    Put(bytes, {1, 32}, 2);
    Put(bytes, {cbImage, 6 + 16, 40, static_cast<UINT32>(nSize), 2u * nSize}, 4); // the height counts the mask's rows
    Put(bytes, {1, 32}, 2);
    Put(bytes, {0, 0, 0, 0, 0, 0}, 4);
    for (int i = 0; i < nSize * nSize; ++i)
        Put(bytes, {Argb(cr)}, 4);
    bytes.resize(bytes.size() + cbMask, 0); // every pixel opaque
    return Bytes(name, bytes);
}

std::wstring CPictureFiles::EnhancedMetafile(const std::wstring& name, int nWidth, int nHeight, COLORREF cr) const
{
    // The frame is in hundredths of a millimetre, measured on the reference device.
    HDC hdcRef = GetDC(nullptr);
    const RECT rcFrame = {0, 0, nWidth * GetDeviceCaps(hdcRef, HORZSIZE) * 100 / GetDeviceCaps(hdcRef, HORZRES),
                          nHeight * GetDeviceCaps(hdcRef, VERTSIZE) * 100 / GetDeviceCaps(hdcRef, VERTRES)};
    HDC hdc = CreateEnhMetaFileW(hdcRef, Path(name).c_str(), &rcFrame, nullptr);
    ReleaseDC(nullptr, hdcRef);
    Fill(hdc, nWidth, nHeight, cr);
    DeleteEnhMetaFile(CloseEnhMetaFile(hdc));
    return Path(name);
}

std::wstring CPictureFiles::WindowsMetafile(const std::wstring& name, int nWidth, int nHeight, COLORREF cr) const
{
    HDC hdc = CreateMetaFileW(nullptr);
    SetWindowExtEx(hdc, nWidth, nHeight, nullptr);
    Fill(hdc, nWidth, nHeight, cr);
    HMETAFILE hmf = CloseMetaFile(hdc);
    // The placeable header gives the picture its size: units of 1/96 inch, one per pixel.
    std::vector<BYTE> bytes;
    Put(bytes, {0x9AC6CDD7u}, 4);
    Put(bytes, {0, 0, 0, static_cast<UINT32>(nWidth), static_cast<UINT32>(nHeight), 96, 0, 0}, 2);
    UINT16 nChecksum = 0;
    for (size_t i = 0; i < bytes.size(); i += 2)
        nChecksum ^= static_cast<UINT16>(bytes[i] | (bytes[i + 1] << 8));
    Put(bytes, {nChecksum}, 2);
    bytes.resize(22 + GetMetaFileBitsEx(hmf, 0, nullptr));
    GetMetaFileBitsEx(hmf, static_cast<UINT>(bytes.size() - 22), &bytes[22]);
    DeleteMetaFile(hmf);
    return Bytes(name, bytes);
}

std::wstring CPictureFiles::OrientedTiff(const std::wstring& name, int nWidth, int nHeight, UINT16 nOrientation, const Painter& paint) const
{
    // Eleven directory entries (tag, type 3 = short or 4 = long, count, a value that fits in four
    // bytes), then the three bits-per-sample shorts the third entry points at, then the pixels.
    const UINT32 nBitsAt = 8 + 2 + 11 * 12 + 4, nPixelsAt = nBitsAt + 6, w = nWidth, h = nHeight;
    std::vector<BYTE> bytes = {'I', 'I', 42, 0, 8, 0, 0, 0, 11, 0};
    for (const auto& entry : {std::vector<UINT32>{256, 4, 1, w}, {257, 4, 1, h}, {258, 3, 3, nBitsAt}, {259, 3, 1, 1}, {262, 3, 1, 2}, {273, 4, 1, nPixelsAt},
                              {274, 3, 1, nOrientation}, {277, 3, 1, 3}, {278, 4, 1, h}, {279, 4, 1, 3 * w * h}, {284, 3, 1, 1}})
    {
        Put(bytes, {entry[0], entry[1]}, 2);
        Put(bytes, {entry[2], entry[3]}, 4);
    }
    Put(bytes, {0}, 4); // no further directory
    Put(bytes, {8, 8, 8}, 2);
    for (int y = 0; y < nHeight; ++y)
        for (int x = 0; x < nWidth; ++x)
            bytes.insert(bytes.end(), {GetRValue(paint(x, y)), GetGValue(paint(x, y)), GetBValue(paint(x, y))});
    return Bytes(name, bytes);
}
