#include "backends/picture/CPictureDecoder.h"

#include <objbase.h>

#include <cstring>
#include <memory>

#include "engine/ComPtr.h"

using Gdiplus::Bitmap;
using Gdiplus::Image;

namespace {

const PROPID kOrientationTag = 0x0112;

} // namespace

BYTE* CPictureDecoder::ReadFileToMemory(LPCWSTR pwszFile, DWORD* pdwSize)
{
    *pdwSize = 0;
    HANDLE hFile = CreateFileW(pwszFile, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                               FILE_ATTRIBUTE_NORMAL, nullptr);
    if (hFile == INVALID_HANDLE_VALUE)
        return nullptr;
    const DWORD dwSize = GetFileSize(hFile, nullptr);
    BYTE* pBytes = nullptr;
    if (dwSize != 0 && dwSize != INVALID_FILE_SIZE)
    {
        pBytes = static_cast<BYTE*>(CoTaskMemAlloc(dwSize));
        DWORD dwRead = 0;
        if (pBytes && (!ReadFile(hFile, pBytes, dwSize, &dwRead, nullptr) || dwRead != dwSize))
        {
            CoTaskMemFree(pBytes);
            pBytes = nullptr;
        }
    }
    CloseHandle(hFile);
    if (pBytes)
        *pdwSize = dwSize;
    return pBytes;
}

// The stream owns a copy of the bytes (its block is freed on its last release), so the
// decoder may keep reading from it after the caller frees its own buffer.
Image* CPictureDecoder::CreateImageFromMemory(const BYTE* pBytes, DWORD dwSize, Gdiplus::Status* pStatus)
{
    *pStatus = Gdiplus::OutOfMemory;
    HGLOBAL hMem = GlobalAlloc(GMEM_MOVEABLE, dwSize);
    if (!hMem)
        return nullptr;
    void* pMem = GlobalLock(hMem);
    if (!pMem)
    {
        GlobalFree(hMem);
        return nullptr;
    }
    memcpy(pMem, pBytes, dwSize);
    GlobalUnlock(hMem);
    ComPtr<IStream> pStream;
    if (FAILED(CreateStreamOnHGlobal(hMem, TRUE, &pStream)))
    {
        GlobalFree(hMem);
        return nullptr;
    }
    Bitmap* pBitmap = Bitmap::FromStream(pStream.Get(), FALSE);
    if (!pBitmap)
        return nullptr;
    *pStatus = pBitmap->GetLastStatus();
    if (*pStatus != Gdiplus::Ok)
    {
        if (Gdiplus::Metafile* pMetafile = LoadMetafile(pStream.Get()))
        {
            delete pBitmap;
            *pStatus = Gdiplus::Ok;
            return pMetafile;
        }
    }
    return pBitmap;
}

// Windows' GDI+ makes a bitmap of a metafile by playing it; some platforms' GDI+ refuses a
// metafile as a bitmap but loads it as a metafile. It is kept as drawing commands: played at
// the size it is shown it is sharper, and far cheaper than a bitmap of its own size scaled up.
Gdiplus::Metafile* CPictureDecoder::LoadMetafile(IStream* pStream)
{
    const LARGE_INTEGER start = {};
    if (FAILED(pStream->Seek(start, STREAM_SEEK_SET, nullptr)))
        return nullptr;
    std::unique_ptr<Gdiplus::Metafile> pMetafile(new Gdiplus::Metafile(pStream));
    if (pMetafile->GetLastStatus() != Gdiplus::Ok || pMetafile->GetWidth() < 1 || pMetafile->GetHeight() < 1)
        return nullptr;
    return pMetafile.release();
}

// Turns the picture upright by its orientation tag; a picture without one (the lookup fails
// and leaves a failure status) is used as stored.
void CPictureDecoder::ApplyOrientation(Image* pImage)
{
    const UINT cbItem = pImage->GetPropertyItemSize(kOrientationTag);
    void* pItem = cbItem ? CoTaskMemAlloc(cbItem) : nullptr;
    if (pItem)
        pImage->GetPropertyItem(kOrientationTag, cbItem, static_cast<Gdiplus::PropertyItem*>(pItem));
    if (pImage->GetLastStatus() == Gdiplus::Ok && pItem)
    {
        const auto* pProperty = static_cast<const Gdiplus::PropertyItem*>(pItem);
        if (pProperty->value && pProperty->length >= sizeof(UINT16))
        {
            UINT16 nOrientation = 0;
            memcpy(&nOrientation, pProperty->value, sizeof(nOrientation));
            pImage->RotateFlip(OrientationToRotateFlip(nOrientation));
        }
    }
    CoTaskMemFree(pItem);
}

Gdiplus::RotateFlipType CPictureDecoder::OrientationToRotateFlip(UINT16 nOrientation)
{
    if (nOrientation < 1 || nOrientation > 8)
        return Gdiplus::RotateNoneFlipNone;
    return static_cast<Gdiplus::RotateFlipType>((nOrientation - 1) % 4);
}
