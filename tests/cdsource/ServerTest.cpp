// The built library through its exports: its registration under HKEY_CLASSES_ROOT. It writes
// the shared registry of the test prefix.
#include <windows.h>

#include <dshow.h>

#include <gtest/gtest.h>

#include <string>

#include "cdsource/CDAudioSource.h"
#include "engine/ComPtr.h"

namespace {

std::wstring GuidText(REFGUID guid)
{
    WCHAR wsz[40] = {};
    return StringFromGUID2(guid, wsz, 40) ? wsz : L"";
}

std::wstring ReadValue(const std::wstring& key, LPCWSTR pwszName = nullptr)  // "(none)" when not there
{
    WCHAR wsz[MAX_PATH] = {};
    DWORD cb = sizeof(wsz);
    return RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), pwszName, RRF_RT_REG_SZ, nullptr, wsz, &cb) ? L"(none)" : wsz;
}

TEST(Server, TheLibraryRegistersAndUnregistersTheFilter)
{
    ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    HMODULE hLibrary = LoadLibraryW(TESSALY_CDSOURCE_DLL_PATH);
    ASSERT_NE(nullptr, hLibrary) << "error " << GetLastError();
    const auto entry = [&](const char* pszName) { return reinterpret_cast<HRESULT(STDAPICALLTYPE*)()>(reinterpret_cast<void*>(GetProcAddress(hLibrary, pszName))); };
    const auto pfnGetClassObject = reinterpret_cast<HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**)>(reinterpret_cast<void*>(entry("DllGetClassObject")));
    const auto pfnCanUnloadNow = entry("DllCanUnloadNow"), pfnRegister = entry("DllRegisterServer"), pfnUnregister = entry("DllUnregisterServer");
    ASSERT_TRUE(pfnGetClassObject && pfnCanUnloadNow && pfnRegister && pfnUnregister);
    // The class factory and module count are the engine's (server_tests ClassObjects.*).
    void* pv = &pv;
    EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE, pfnGetClassObject(CLSID_FilterGraph, IID_IClassFactory, &pv));
    EXPECT_EQ(nullptr, pv);
    ComPtr<IBaseFilter> filter;

    // Registered twice, one clean registration: the class by its path, free-threaded, with its
    // name, and among the filters. The prefix may have it registered already (other programs play
    // through it); it is registered again at the end if so.
    const std::wstring classKey = L"CLSID\\" + GuidText(CLSID_TessalyCDAudioSource), filterKey = L"CLSID\\" +
        GuidText(CLSID_LegacyAmFilterCategory) + L"\\Instance\\" + GuidText(CLSID_TessalyCDAudioSource);
    const bool bWasRegistered = ReadValue(classKey) != L"(none)";
    WCHAR wszPath[MAX_PATH] = {};
    ASSERT_GT(GetModuleFileNameW(hLibrary, wszPath, MAX_PATH), 0u);
    ASSERT_EQ(S_OK, pfnRegister());
    ASSERT_EQ(S_OK, pfnRegister());
    EXPECT_EQ(L"Tessaly CD Audio Source|" + std::wstring(wszPath) + L"|Both|Tessaly CD Audio Source",
              ReadValue(classKey) + L"|" + ReadValue(classKey + L"\\InprocServer32") + L"|" +
              ReadValue(classKey + L"\\InprocServer32", L"ThreadingModel") + L"|" + ReadValue(filterKey, L"FriendlyName"));
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_TessalyCDAudioSource, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter, &filter));
    EXPECT_EQ(S_FALSE, pfnCanUnloadNow()) << "the same library";
    filter.Reset();
    ASSERT_EQ(S_OK, pfnUnregister());
    EXPECT_EQ(L"(none)|(none)", ReadValue(classKey) + L"|" + ReadValue(filterKey, L"FriendlyName"));
    EXPECT_EQ(S_OK, pfnUnregister());  // already gone is done
    EXPECT_EQ(REGDB_E_CLASSNOTREG, CoCreateInstance(CLSID_TessalyCDAudioSource, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter, &filter));
    EXPECT_EQ(S_OK, bWasRegistered ? pfnRegister() : S_OK);
    CoFreeUnusedLibraries();
    FreeLibrary(hLibrary);
    CoUninitialize();
}

} // namespace
