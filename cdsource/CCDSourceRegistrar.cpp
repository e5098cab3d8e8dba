#include "cdsource/CCDSourceRegistrar.h"

#include <dshow.h>

#include <string>

#include "cdsource/CDAudioSource.h"
#include "engine/ComPtr.h"

const WCHAR CCDSourceRegistrar::kFriendlyName[] = L"Tessaly CD Audio Source";

namespace {

std::wstring ClassKey()
{
    WCHAR wszClsid[40] = {};
    StringFromGUID2(CLSID_TessalyCDAudioSource, wszClsid, 40);
    return std::wstring(L"CLSID\\") + wszClsid;
}

LONG SetValue(const std::wstring& key, LPCWSTR pwszName, LPCWSTR pwszValue)
{
    HKEY hKey = nullptr;
    LONG lResult = RegCreateKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, nullptr, REG_OPTION_NON_VOLATILE, KEY_SET_VALUE,
                                   nullptr, &hKey, nullptr);
    if (lResult != ERROR_SUCCESS)
        return lResult;
    const DWORD cb = static_cast<DWORD>((lstrlenW(pwszValue) + 1) * sizeof(WCHAR));
    lResult = RegSetValueExW(hKey, pwszName, 0, REG_SZ, reinterpret_cast<const BYTE*>(pwszValue), cb);
    RegCloseKey(hKey);
    return lResult;
}

LONG DeleteTree(const std::wstring& key)
{
    const LONG lResult = RegDeleteTreeW(HKEY_CLASSES_ROOT, key.c_str());
    return lResult == ERROR_FILE_NOT_FOUND ? ERROR_SUCCESS : lResult;
}

// The filter entry needs COM; registration tools start it, other callers may not have.
class CComForCall
{
public:
    CComForCall() : m_hr(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}
    ~CComForCall()
    {
        if (SUCCEEDED(m_hr))
            CoUninitialize();
    }

private:
    HRESULT m_hr;
};

} // namespace

HRESULT CCDSourceRegistrar::RegisterFilterEntry(bool bRegister)
{
    CComForCall com;
    ComPtr<IFilterMapper2> mapper;
    HRESULT hr = CoCreateInstance(CLSID_FilterMapper2, nullptr, CLSCTX_INPROC_SERVER, IID_IFilterMapper2, &mapper);
    if (FAILED(hr))
        return hr;
    if (!bRegister)
    {
        hr = mapper->UnregisterFilter(&CLSID_LegacyAmFilterCategory, nullptr, CLSID_TessalyCDAudioSource);
        // Already gone is as wanted.
        return hr == HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND) ? S_OK : hr;
    }
    REGPINTYPES type = {&MEDIATYPE_Audio, &MEDIASUBTYPE_PCM};
    REGFILTERPINS2 pin = {};
    pin.dwFlags = REG_PINFLAG_B_OUTPUT;
    pin.cInstances = 1;
    pin.nMediaTypes = 1;
    pin.lpMediaType = &type;
    REGFILTER2 filter = {};
    filter.dwVersion = 2;
    filter.dwMerit = MERIT_DO_NOT_USE;
    filter.cPins2 = 1;
    filter.rgPins2 = &pin;
    return mapper->RegisterFilter(CLSID_TessalyCDAudioSource, kFriendlyName, nullptr, &CLSID_LegacyAmFilterCategory,
                                  nullptr, &filter);
}

HRESULT CCDSourceRegistrar::Register(LPCWSTR pwszModulePath)
{
    if (!pwszModulePath)
        return E_POINTER;
    try
    {
        const std::wstring classKey = ClassKey();
        LONG lResult = DeleteTree(classKey);
        if (lResult == ERROR_SUCCESS)
            lResult = SetValue(classKey, nullptr, kFriendlyName);
        if (lResult == ERROR_SUCCESS)
            lResult = SetValue(classKey + L"\\InprocServer32", nullptr, pwszModulePath);
        if (lResult == ERROR_SUCCESS)
            lResult = SetValue(classKey + L"\\InprocServer32", L"ThreadingModel", L"Both");
        if (lResult != ERROR_SUCCESS)
            return HRESULT_FROM_WIN32(lResult);
        return RegisterFilterEntry(true);
    }
    catch (...)
    {
        return E_OUTOFMEMORY;
    }
}

HRESULT CCDSourceRegistrar::Unregister()
{
    try
    {
        const HRESULT hrEntry = RegisterFilterEntry(false);
        const LONG lResult = DeleteTree(ClassKey());
        if (lResult != ERROR_SUCCESS)
            return HRESULT_FROM_WIN32(lResult);
        return hrEntry;
    }
    catch (...)
    {
        return E_OUTOFMEMORY;
    }
}
