#include "hosts/player/CMediaTitle.h"

#include <windows.h>
#include <propidl.h>
#include <propsys.h>
#include <shlobj.h>

#include "engine/ComPtr.h"

namespace {

// System.Title; defined here so that no property-key library is needed.
const PROPERTYKEY kTitleKey = {{0xF29F85E0, 0x4FF9, 0x1068, {0xAB, 0x91, 0x08, 0x00, 0x2B, 0x27, 0xB3, 0xD9}}, 2};

} // namespace

std::wstring CMediaTitle::Of(const std::wstring& path)
{
    std::wstring title = FromTags(path);
    return title.empty() ? FromName(path) : title;
}

std::wstring CMediaTitle::FromName(const std::wstring& path)
{
    const size_t nSlash = path.find_last_of(L"\\/");
    std::wstring name = nSlash == std::wstring::npos ? path : path.substr(nSlash + 1);
    const size_t nDot = name.find_last_of(L'.');
    if (nDot != std::wstring::npos && nDot > 0)
        name.resize(nDot);
    return name;
}

std::wstring CMediaTitle::FromTags(const std::wstring& path)
{
    ComPtr<IPropertyStore> store;
    if (FAILED(SHGetPropertyStoreFromParsingName(path.c_str(), nullptr, GPS_DEFAULT, IID_IPropertyStore, &store)))
        return {};
    PROPVARIANT value;
    PropVariantInit(&value);
    std::wstring title;
    if (SUCCEEDED(store->GetValue(kTitleKey, &value)) && value.vt == VT_LPWSTR && value.pwszVal)
        title = value.pwszVal;
    PropVariantClear(&value);
    return title;
}
