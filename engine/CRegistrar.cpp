#include "engine/CRegistrar.h"

#include <string>

namespace {

std::wstring GuidString(const GUID& guid)
{
    WCHAR wsz[40] = {};
    StringFromGUID2(guid, wsz, 40);
    return wsz;
}

} // namespace

HRESULT CRegistrar::SetKey(LPCWSTR pwszKey, LPCWSTR pwszValueName, LPCWSTR pwszValue)
{
    HKEY hKey = nullptr;
    LONG lResult = RegCreateKeyExW(HKEY_CLASSES_ROOT, pwszKey, 0, nullptr, REG_OPTION_NON_VOLATILE,
                                   KEY_SET_VALUE, nullptr, &hKey, nullptr);
    if (lResult == ERROR_SUCCESS)
    {
        const DWORD cb = static_cast<DWORD>((lstrlenW(pwszValue) + 1) * sizeof(WCHAR));
        lResult = RegSetValueExW(hKey, pwszValueName, 0, REG_SZ, reinterpret_cast<const BYTE*>(pwszValue), cb);
        RegCloseKey(hKey);
    }
    return HRESULT_FROM_WIN32(lResult);
}

HRESULT CRegistrar::DeleteTree(LPCWSTR pwszKey)
{
    // Removes the key itself too; a key that is not there is already as wanted.
    const LONG lResult = RegDeleteTreeW(HKEY_CLASSES_ROOT, pwszKey);
    return lResult == ERROR_FILE_NOT_FOUND ? S_OK : HRESULT_FROM_WIN32(lResult);
}

HRESULT CRegistrar::RegisterClassEntry(const CClassEntry& entry, const GUID& libid, LPCWSTR pwszModulePath)
{
    const std::wstring clsid = GuidString(*entry.pclsid);
    const std::wstring progId = entry.pwszProgId;
    const std::wstring viProgId = entry.pwszVersionIndependentProgId;
    const std::wstring classKey = L"CLSID\\" + clsid;

    HRESULT hr = DeleteTree(classKey.c_str());
    const struct
    {
        std::wstring key;
        LPCWSTR pwszName;
        std::wstring value;
    } values[] = {
        {progId, nullptr, entry.pwszDescription},
        {progId + L"\\CLSID", nullptr, clsid},
        {viProgId, nullptr, entry.pwszDescription},
        {viProgId + L"\\CLSID", nullptr, clsid},
        {viProgId + L"\\CurVer", nullptr, progId},
        {classKey, nullptr, entry.pwszDescription},
        {classKey + L"\\ProgID", nullptr, progId},
        {classKey + L"\\VersionIndependentProgID", nullptr, viProgId},
        {classKey + L"\\InprocServer32", nullptr, pwszModulePath},
        {classKey + L"\\InprocServer32", L"ThreadingModel", L"Apartment"},
        {classKey + L"\\TypeLib", nullptr, GuidString(libid)},
    };
    for (const auto& v : values)
    {
        if (SUCCEEDED(hr))
            hr = SetKey(v.key.c_str(), v.pwszName, v.value.c_str());
    }
    return hr;
}

HRESULT CRegistrar::UnregisterClassEntry(const CClassEntry& entry)
{
    // CLSID itself is shared by every server and stays.
    HRESULT hr = DeleteTree((L"CLSID\\" + GuidString(*entry.pclsid)).c_str());
    const HRESULT hrProgId = DeleteTree(entry.pwszProgId);
    const HRESULT hrViProgId = DeleteTree(entry.pwszVersionIndependentProgId);
    if (SUCCEEDED(hr))
        hr = FAILED(hrProgId) ? hrProgId : hrViProgId;
    return hr;
}
