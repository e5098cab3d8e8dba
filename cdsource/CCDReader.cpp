#include "cdsource/CCDReader.h"

#include <new>

#include "cdimage/CDiscImageSetting.h"
#include "cdsource/CDiscImageReader.h"
#include "cdsource/CDriveReader.h"

HRESULT CCDReader::Open(WCHAR wcDrive, DWORD dwReadMode, std::unique_ptr<CCDReader>* ppReader)
{
    ppReader->reset();
    const std::wstring cuePath = CDiscImageSetting::ImageFor(wcDrive);
    if (!cuePath.empty())
    {
        std::unique_ptr<CDiscImageReader> pImage(new (std::nothrow) CDiscImageReader);
        if (!pImage)
            return E_OUTOFMEMORY;
        const HRESULT hr = pImage->Open(cuePath);
        if (SUCCEEDED(hr))
            *ppReader = std::move(pImage);
        return hr;
    }
    std::unique_ptr<CDriveReader> pDrive(new (std::nothrow) CDriveReader(dwReadMode));
    if (!pDrive)
        return E_OUTOFMEMORY;
    const HRESULT hr = pDrive->Open(wcDrive);
    if (SUCCEEDED(hr))
        *ppReader = std::move(pDrive);
    return hr;
}
