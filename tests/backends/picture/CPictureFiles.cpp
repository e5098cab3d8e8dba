#include "CPictureFiles.h"

#include <gdiplus.h>

#include <cstring>

using namespace Gdiplus::DllExports;

namespace {

std::wstring Lower(std::wstring text)
{
    for (wchar_t& c : text)
        c = static_cast<wchar_t>(towlower(c));
    return text;
}

const wchar_t* MimeTypeFor(const std::wstring& name)
{
    const size_t nDot = name.find_last_of(L'.');
    const std::wstring ext = Lower(nDot == std::wstring::npos ? std::wstring() : name.substr(nDot));
    if (ext == L".bmp" || ext == L".dib")
        return L"image/bmp";
    if (ext == L".jpg" || ext == L".jpeg" || ext == L".jpe" || ext == L".jfif")
        return L"image/jpeg";
    if (ext == L".png")
        return L"image/png";
    if (ext == L".tif" || ext == L".tiff")
        return L"image/tiff";
    return nullptr;
}

bool FindEncoder(const wchar_t* pwszMime, CLSID* pclsid)
{
    UINT nCount = 0, cbSize = 0;
    if (GdipGetImageEncodersSize(&nCount, &cbSize) != Gdiplus::Ok || cbSize == 0)
        return false;
    std::vector<BYTE> buffer(cbSize);
    auto* pCodecs = reinterpret_cast<Gdiplus::ImageCodecInfo*>(buffer.data());
    if (GdipGetImageEncoders(nCount, cbSize, pCodecs) != Gdiplus::Ok)
        return false;
    for (UINT i = 0; i < nCount; ++i)
    {
        if (wcscmp(pCodecs[i].MimeType, pwszMime) == 0)
        {
            *pclsid = pCodecs[i].Clsid;
            return true;
        }
    }
    return false;
}

void Put16(std::vector<BYTE>& bytes, UINT16 value)
{
    bytes.push_back(static_cast<BYTE>(value & 0xFF));
    bytes.push_back(static_cast<BYTE>(value >> 8));
}

void Put32(std::vector<BYTE>& bytes, UINT32 value)
{
    Put16(bytes, static_cast<UINT16>(value & 0xFFFF));
    Put16(bytes, static_cast<UINT16>(value >> 16));
}

// One little-endian TIFF directory entry whose value fits in its four bytes.
void PutEntry(std::vector<BYTE>& bytes, UINT16 nTag, UINT16 nType, UINT32 nCount, UINT32 nValue)
{
    Put16(bytes, nTag);
    Put16(bytes, nType);
    Put32(bytes, nCount);
    if (nType == 3 && nCount == 1)
    {
        Put16(bytes, static_cast<UINT16>(nValue));
        Put16(bytes, 0);
    }
    else
    {
        Put32(bytes, nValue);
    }
}

} // namespace

std::wstring CPictureFiles::Bytes(const std::wstring& name, const std::vector<BYTE>& bytes) const
{
    return m_folder.Write(name, std::string(bytes.begin(), bytes.end()));
}

std::vector<BYTE> CPictureFiles::Read(const std::wstring& path)
{
    std::vector<BYTE> bytes;
    HANDLE hFile = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
    if (hFile == INVALID_HANDLE_VALUE)
        return bytes;
    bytes.resize(GetFileSize(hFile, nullptr));
    DWORD dwRead = 0;
    if (!bytes.empty())
        ReadFile(hFile, bytes.data(), static_cast<DWORD>(bytes.size()), &dwRead, nullptr);
    bytes.resize(dwRead);
    CloseHandle(hFile);
    return bytes;
}

std::wstring CPictureFiles::Encode(const std::wstring& name, int nWidth, int nHeight, const Painter& paint) const
{
    CLSID clsid;
    const wchar_t* pwszMime = MimeTypeFor(name);
    if (!pwszMime || !FindEncoder(pwszMime, &clsid))
        return std::wstring();
    Gdiplus::GpBitmap* pBitmap = nullptr;
    if (GdipCreateBitmapFromScan0(nWidth, nHeight, 0, PixelFormat24bppRGB, nullptr, &pBitmap) != Gdiplus::Ok)
        return std::wstring();
    for (int y = 0; y < nHeight; ++y)
    {
        for (int x = 0; x < nWidth; ++x)
        {
            const COLORREF cr = paint(x, y);
            GdipBitmapSetPixel(pBitmap, x, y, 0xFF000000u | (GetRValue(cr) << 16) | (GetGValue(cr) << 8) | GetBValue(cr));
        }
    }
    const std::wstring path = Path(name);
    const Gdiplus::Status status = GdipSaveImageToFile(pBitmap, path.c_str(), &clsid, nullptr);
    GdipDisposeImage(pBitmap);
    return status == Gdiplus::Ok ? path : std::wstring();
}

std::wstring CPictureFiles::Icon(const std::wstring& name, int nSize, COLORREF cr) const
{
    std::vector<BYTE> bytes;
    const UINT32 cbMaskRow = ((static_cast<UINT32>(nSize) + 31) / 32) * 4;
    const UINT32 cbImage = 40 + 4u * nSize * nSize + cbMaskRow * nSize;
    Put16(bytes, 0); // reserved
    Put16(bytes, 1); // icon
    Put16(bytes, 1); // one image
    bytes.push_back(static_cast<BYTE>(nSize));
    bytes.push_back(static_cast<BYTE>(nSize));
    bytes.push_back(0); // no palette
    bytes.push_back(0);
    Put16(bytes, 1);  // planes
    Put16(bytes, 32); // bits per pixel
    Put32(bytes, cbImage);
    Put32(bytes, 6 + 16);
    Put32(bytes, 40); // BITMAPINFOHEADER: the height counts the colour rows and the mask's
    Put32(bytes, static_cast<UINT32>(nSize));
    Put32(bytes, static_cast<UINT32>(2 * nSize));
    Put16(bytes, 1);
    Put16(bytes, 32);
    for (int i = 0; i < 6; ++i)
        Put32(bytes, 0);
    for (int i = 0; i < nSize * nSize; ++i)
        Put32(bytes, 0xFF000000u | (GetRValue(cr) << 16) | (GetGValue(cr) << 8) | GetBValue(cr));
    bytes.insert(bytes.end(), cbMaskRow * nSize, 0); // every pixel opaque
    return Bytes(name, bytes);
}

std::wstring CPictureFiles::EnhancedMetafile(const std::wstring& name, int nWidth, int nHeight, COLORREF cr) const
{
    const std::wstring path = Path(name);
    HDC hdcRef = GetDC(nullptr);
    // The frame is in hundredths of a millimetre, measured on the reference device.
    RECT rcFrame = {0, 0, nWidth * GetDeviceCaps(hdcRef, HORZSIZE) * 100 / GetDeviceCaps(hdcRef, HORZRES),
                    nHeight * GetDeviceCaps(hdcRef, VERTSIZE) * 100 / GetDeviceCaps(hdcRef, VERTRES)};
    HDC hdc = CreateEnhMetaFileW(hdcRef, path.c_str(), &rcFrame, nullptr);
    ReleaseDC(nullptr, hdcRef);
    if (!hdc)
        return std::wstring();
    HBRUSH hBrush = CreateSolidBrush(cr);
    const RECT rc = {0, 0, nWidth, nHeight};
    FillRect(hdc, &rc, hBrush);
    DeleteObject(hBrush);
    HENHMETAFILE hemf = CloseEnhMetaFile(hdc);
    if (!hemf)
        return std::wstring();
    DeleteEnhMetaFile(hemf);
    return path;
}

std::wstring CPictureFiles::WindowsMetafile(const std::wstring& name, int nWidth, int nHeight, COLORREF cr) const
{
    HDC hdc = CreateMetaFileW(nullptr);
    if (!hdc)
        return std::wstring();
    SetWindowOrgEx(hdc, 0, 0, nullptr);
    SetWindowExtEx(hdc, nWidth, nHeight, nullptr);
    HBRUSH hBrush = CreateSolidBrush(cr);
    HGDIOBJ hOld = SelectObject(hdc, hBrush);
    SelectObject(hdc, GetStockObject(NULL_PEN));
    Rectangle(hdc, 0, 0, nWidth + 1, nHeight + 1);
    SelectObject(hdc, hOld);
    HMETAFILE hmf = CloseMetaFile(hdc);
    DeleteObject(hBrush);
    if (!hmf)
        return std::wstring();
    const UINT cbBits = GetMetaFileBitsEx(hmf, 0, nullptr);
    std::vector<BYTE> bits(cbBits);
    GetMetaFileBitsEx(hmf, cbBits, bits.data());
    DeleteMetaFile(hmf);

    // The placeable header gives the picture its size: units of 1/96 inch, one per pixel.
    std::vector<BYTE> bytes;
    Put32(bytes, 0x9AC6CDD7u);
    Put16(bytes, 0);
    Put16(bytes, 0);
    Put16(bytes, 0);
    Put16(bytes, static_cast<UINT16>(nWidth));
    Put16(bytes, static_cast<UINT16>(nHeight));
    Put16(bytes, 96);
    Put32(bytes, 0);
    UINT16 nChecksum = 0;
    for (size_t i = 0; i < bytes.size(); i += 2)
        nChecksum ^= static_cast<UINT16>(bytes[i] | (bytes[i + 1] << 8));
    Put16(bytes, nChecksum);
    bytes.insert(bytes.end(), bits.begin(), bits.end());
    return Bytes(name, bytes);
}

std::wstring CPictureFiles::OrientedTiff(const std::wstring& name, int nWidth, int nHeight, UINT16 nOrientation,
                                         const Painter& paint) const
{
    const UINT16 kEntries = 11;
    const UINT32 nIfd = 8;
    const UINT32 nBitsPerSample = nIfd + 2 + kEntries * 12 + 4;
    const UINT32 nPixels = nBitsPerSample + 6;
    const UINT32 cbPixels = 3u * nWidth * nHeight;
    std::vector<BYTE> bytes = {'I', 'I', 42, 0};
    Put32(bytes, nIfd);
    Put16(bytes, kEntries);
    PutEntry(bytes, 256, 4, 1, static_cast<UINT32>(nWidth));
    PutEntry(bytes, 257, 4, 1, static_cast<UINT32>(nHeight));
    PutEntry(bytes, 258, 3, 3, nBitsPerSample);
    PutEntry(bytes, 259, 3, 1, 1); // uncompressed
    PutEntry(bytes, 262, 3, 1, 2); // RGB
    PutEntry(bytes, 273, 4, 1, nPixels);
    PutEntry(bytes, 274, 3, 1, nOrientation);
    PutEntry(bytes, 277, 3, 1, 3);
    PutEntry(bytes, 278, 4, 1, static_cast<UINT32>(nHeight));
    PutEntry(bytes, 279, 4, 1, cbPixels);
    PutEntry(bytes, 284, 3, 1, 1); // samples interleaved
    Put32(bytes, 0);              // no further directory
    for (int i = 0; i < 3; ++i)
        Put16(bytes, 8);
    for (int y = 0; y < nHeight; ++y)
    {
        for (int x = 0; x < nWidth; ++x)
        {
            const COLORREF cr = paint(x, y);
            bytes.insert(bytes.end(), {GetRValue(cr), GetGValue(cr), GetBValue(cr)});
        }
    }
    return Bytes(name, bytes);
}

std::wstring CPictureFiles::OrientedJpeg(const std::wstring& name, int nWidth, int nHeight, UINT16 nOrientation,
                                         const Painter& paint) const
{
    const std::wstring plain = Encode(L"plain-" + name, nWidth, nHeight, paint);
    std::vector<BYTE> jpeg = Read(plain);
    DeleteFileW(plain.c_str());
    if (jpeg.size() < 4 || jpeg[0] != 0xFF || jpeg[1] != 0xD8)
        return std::wstring();
    // APP1 "Exif": a big-endian TIFF header and one directory holding only the orientation.
    const std::vector<BYTE> exif = {0xFF, 0xE1, 0, 34, 'E', 'x', 'i', 'f', 0, 0, 'M', 'M', 0, 42, 0, 0, 0, 8,
                                    0, 1, 0x01, 0x12, 0, 3, 0, 0, 0, 1,
                                    static_cast<BYTE>(nOrientation >> 8), static_cast<BYTE>(nOrientation & 0xFF),
                                    0, 0, 0, 0, 0, 0};
    size_t nAt = 2;
    if (jpeg[2] == 0xFF && jpeg[3] == 0xE0 && jpeg.size() > 6) // after the JFIF segment
        nAt = 4 + ((jpeg[4] << 8) | jpeg[5]);
    jpeg.insert(jpeg.begin() + static_cast<std::ptrdiff_t>(nAt), exif.begin(), exif.end());
    return Bytes(name, jpeg);
}
