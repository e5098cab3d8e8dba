// The built library as COM and a host see it: its class object and the module's lifetime, its
// registration under HKEY_CLASSES_ROOT, and creation by class. It writes the shared registry of
// the test prefix, so it runs one at a time with the other programs that do.
#include <windows.h>

#include <dshow.h>

#include <gtest/gtest.h>

#include <string>

#include "cdsource/CCDSourceRegistrar.h"
#include "cdsource/CDAudioSource.h"
#include "engine/ComPtr.h"

namespace {

std::wstring GuidText(REFGUID guid)
{
    WCHAR wsz[40] = {};
    StringFromGUID2(guid, wsz, 40);
    return wsz;
}

// The string value, "(none)" when the key or value is not there.
std::wstring ReadValue(const std::wstring& key, LPCWSTR pwszName = nullptr)
{
    WCHAR wsz[MAX_PATH] = {};
    DWORD cb = sizeof(wsz);
    return RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), pwszName, RRF_RT_REG_SZ, nullptr, wsz, &cb) ? L"(none)" : wsz;
}

TEST(Server, TheLibrarysClassObjectKeepsItLoadedAndItRegistersAndUnregistersTheFilter)
{
    ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    HMODULE hLibrary = LoadLibraryW(TESSALY_CDSOURCE_DLL_PATH);
    ASSERT_NE(nullptr, hLibrary) << "error " << GetLastError();
    typedef HRESULT(STDAPICALLTYPE * PFNDLLENTRY)();
    auto entry = [&](const char* pszName) { return reinterpret_cast<void*>(GetProcAddress(hLibrary, pszName)); };
    auto pfnGetClassObject = reinterpret_cast<HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**)>(entry("DllGetClassObject"));
    const auto pfnCanUnloadNow = reinterpret_cast<PFNDLLENTRY>(entry("DllCanUnloadNow")),
               pfnRegister = reinterpret_cast<PFNDLLENTRY>(entry("DllRegisterServer")),
               pfnUnregister = reinterpret_cast<PFNDLLENTRY>(entry("DllUnregisterServer"));
    ASSERT_TRUE(pfnGetClassObject && pfnCanUnloadNow && pfnRegister && pfnUnregister);

    // Every object, enumerator, held class object and server lock keeps the library loaded.
    ASSERT_EQ(S_OK, pfnCanUnloadNow());
    void* pv = &pv;
    EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE, pfnGetClassObject(CLSID_FilterGraph, IID_IClassFactory, &pv));
    EXPECT_EQ(nullptr, pv);
    EXPECT_EQ(E_POINTER, pfnGetClassObject(CLSID_TessalyCDAudioSource, IID_IClassFactory, nullptr));
    ComPtr<IClassFactory> factory;
    ComPtr<IBaseFilter> filter;
    ComPtr<IEnumPins> pins;
    ASSERT_EQ(S_OK, pfnGetClassObject(CLSID_TessalyCDAudioSource, IID_IClassFactory, &factory));
    EXPECT_EQ(S_FALSE, pfnCanUnloadNow());
    EXPECT_EQ(CLASS_E_NOAGGREGATION, factory->CreateInstance(factory.Get(), IID_IBaseFilter, &pv));
    ASSERT_EQ(S_OK, factory->CreateInstance(nullptr, IID_IBaseFilter, &filter));
    EXPECT_EQ(S_OK, factory->LockServer(TRUE));
    factory.Reset();
    ASSERT_EQ(S_OK, filter->EnumPins(&pins));
    filter.Reset();
    EXPECT_EQ(S_FALSE, pfnCanUnloadNow());
    pins.Reset();
    EXPECT_EQ(S_FALSE, pfnCanUnloadNow());
    ASSERT_EQ(S_OK, pfnGetClassObject(CLSID_TessalyCDAudioSource, IID_IClassFactory, &factory));
    EXPECT_EQ(S_OK, factory->LockServer(FALSE));
    factory.Reset();
    EXPECT_EQ(S_OK, pfnCanUnloadNow());

    // Registered twice, one clean registration: the class by its path, free-threaded, with its
    // name, and among the filters. The prefix may have it registered already (other programs play
    // through it); it is registered again at the end if so.
    const std::wstring classKey = L"CLSID\\" + GuidText(CLSID_TessalyCDAudioSource), filterKey = L"CLSID\\" +
        GuidText(CLSID_LegacyAmFilterCategory) + L"\\Instance\\" + GuidText(CLSID_TessalyCDAudioSource);
    const bool bWasRegistered = ReadValue(classKey) != L"(none)";
    WCHAR wszPath[MAX_PATH] = {};
    ASSERT_GT(GetModuleFileNameW(hLibrary, wszPath, MAX_PATH), 0u);
    EXPECT_EQ(E_POINTER, CCDSourceRegistrar::Register(nullptr));
    ASSERT_EQ(S_OK, pfnRegister());
    ASSERT_EQ(S_OK, pfnRegister());
    EXPECT_EQ(L"Tessaly CD Audio Source|" + std::wstring(wszPath) + L"|Both|Tessaly CD Audio Source",
              ReadValue(classKey) + L"|" + ReadValue(classKey + L"\\InprocServer32") + L"|" +
              ReadValue(classKey + L"\\InprocServer32", L"ThreadingModel") + L"|" + ReadValue(filterKey, L"FriendlyName"));
    // As the engine creates it: the same library.
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_TessalyCDAudioSource, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter, &filter));
    CLSID clsid = GUID_NULL;
    EXPECT_EQ(S_OK, filter->GetClassID(&clsid));
    EXPECT_TRUE(clsid == CLSID_TessalyCDAudioSource);
    EXPECT_EQ(S_FALSE, pfnCanUnloadNow());
    filter.Reset();

    ASSERT_EQ(S_OK, pfnUnregister());
    EXPECT_EQ(L"(none)|(none)", ReadValue(classKey) + L"|" + ReadValue(filterKey, L"FriendlyName"));
    EXPECT_EQ(S_OK, pfnUnregister());  // already gone is done
    EXPECT_EQ(REGDB_E_CLASSNOTREG, CoCreateInstance(CLSID_TessalyCDAudioSource, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter, &filter));
    CoFreeUnusedLibraries();
    EXPECT_EQ(S_OK, pfnCanUnloadNow());
    EXPECT_EQ(S_OK, bWasRegistered ? pfnRegister() : S_OK);
    FreeLibrary(hLibrary);
    CoUninitialize();
}

} // namespace
