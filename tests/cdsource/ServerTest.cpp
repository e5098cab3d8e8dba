// The in-process server: its class object and the module's lifetime, and the built library as
// COM and a host see it (its exports, registration under HKEY_CLASSES_ROOT, creation by class).
// These cases write the shared registry of the test prefix, so they run one at a time with
// the other programs that do.
#include <windows.h>

#include <dshow.h>

#include <gtest/gtest.h>

#include <string>

#include "cdsource/CCDSourceRegistrar.h"
#include "cdsource/CCDSourceServer.h"
#include "cdsource/CDAudioSource.h"
#include "engine/CComPtr.h"
#include "engine/CModuleLock.h"

namespace {

class Server : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)); }
    void TearDown() override { CoUninitialize(); }
};

// An outer object for aggregation: it counts its own references only.
class COuter : public IUnknown
{
public:
    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override
    {
        if (riid == IID_IUnknown)
        {
            *ppv = this;
            AddRef();
            return S_OK;
        }
        return inner ? inner->QueryInterface(riid, ppv) : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++lRef); }
    STDMETHODIMP_(ULONG) Release() override { return static_cast<ULONG>(--lRef); }

    LONG lRef = 1;
    IUnknown* inner = nullptr;
};

std::wstring ClassKey()
{
    WCHAR wszClsid[40] = {};
    StringFromGUID2(CLSID_TessalyCDAudioSource, wszClsid, 40);
    return std::wstring(L"CLSID\\") + wszClsid;
}

std::wstring FilterEntryKey()
{
    WCHAR wszCategory[40] = {}, wszClsid[40] = {};
    StringFromGUID2(CLSID_LegacyAmFilterCategory, wszCategory, 40);
    StringFromGUID2(CLSID_TessalyCDAudioSource, wszClsid, 40);
    return std::wstring(L"CLSID\\") + wszCategory + L"\\Instance\\" + wszClsid;
}

// The string value, or "(none)" when the key or value is not there.
std::wstring ReadValue(const std::wstring& key, LPCWSTR pwszName)
{
    WCHAR wsz[MAX_PATH] = {};
    DWORD cb = sizeof(wsz);
    if (RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), pwszName, RRF_RT_REG_SZ, nullptr, wsz, &cb) != ERROR_SUCCESS)
        return L"(none)";
    return wsz;
}

bool KeyExists(const std::wstring& key)
{
    HKEY hKey = nullptr;
    if (RegOpenKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, KEY_READ, &hKey) != ERROR_SUCCESS)
        return false;
    RegCloseKey(hKey);
    return true;
}

TEST_F(Server, TheClassObjectMakesFiltersAndEveryObjectKeepsTheModule)
{
    ASSERT_EQ(S_OK, CCDSourceServer::CanUnloadNow());
    void* pv = reinterpret_cast<void*>(1);
    EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE, CCDSourceServer::GetClassObject(CLSID_FilterGraph, IID_IClassFactory, &pv));
    EXPECT_EQ(nullptr, pv);
    EXPECT_EQ(E_POINTER, CCDSourceServer::GetClassObject(CLSID_TessalyCDAudioSource, IID_IClassFactory, nullptr));

    CComPtr<IClassFactory> factory;
    ASSERT_EQ(S_OK, CCDSourceServer::GetClassObject(CLSID_TessalyCDAudioSource, IID_IClassFactory, factory.Out()));
    EXPECT_EQ(S_FALSE, CCDSourceServer::CanUnloadNow()); // held by someone other than the module
    CComPtr<IClassFactory> again;
    ASSERT_EQ(S_OK, CCDSourceServer::GetClassObject(CLSID_TessalyCDAudioSource, IID_IClassFactory, again.Out()));
    EXPECT_EQ(factory.Get(), again.Get()); // one class object
    again.Reset();

    CComPtr<IBaseFilter> filter;
    ASSERT_EQ(S_OK, factory->CreateInstance(nullptr, IID_IBaseFilter, filter.Out()));
    factory.Reset();
    EXPECT_EQ(S_FALSE, CCDSourceServer::CanUnloadNow());
    CComPtr<IEnumPins> pins;
    ASSERT_EQ(S_OK, filter->EnumPins(&pins));
    CComPtr<IPin> pin;
    ASSERT_EQ(S_OK, pins->Next(1, &pin, nullptr));
    CComPtr<IEnumMediaTypes> types;
    ASSERT_EQ(S_OK, pin->EnumMediaTypes(&types));
    pin.Reset();
    filter.Reset();
    EXPECT_EQ(S_FALSE, CCDSourceServer::CanUnloadNow()); // the enumerators are still out
    pins.Reset();
    EXPECT_EQ(S_FALSE, CCDSourceServer::CanUnloadNow());
    types.Reset();
    EXPECT_EQ(S_OK, CCDSourceServer::CanUnloadNow());

    ASSERT_EQ(S_OK, CCDSourceServer::GetClassObject(CLSID_TessalyCDAudioSource, IID_IClassFactory, factory.Out()));
    EXPECT_EQ(S_OK, factory->LockServer(TRUE));
    factory.Reset();
    EXPECT_EQ(S_FALSE, CCDSourceServer::CanUnloadNow());
    ASSERT_EQ(S_OK, CCDSourceServer::GetClassObject(CLSID_TessalyCDAudioSource, IID_IClassFactory, factory.Out()));
    EXPECT_EQ(S_OK, factory->LockServer(FALSE));

    // Aggregated: only the inner unknown is handed out, and the filter's interfaces count on the outer.
    COuter outer;
    EXPECT_EQ(CLASS_E_NOAGGREGATION, factory->CreateInstance(&outer, IID_IBaseFilter, &pv));
    CComPtr<IUnknown> inner;
    ASSERT_EQ(S_OK, factory->CreateInstance(&outer, IID_IUnknown, inner.Out()));
    outer.inner = inner.Get();
    CComPtr<IBaseFilter> aggregated;
    ASSERT_EQ(S_OK, inner.QueryInterface(IID_IBaseFilter, aggregated));
    EXPECT_EQ(2, outer.lRef);
    CComPtr<IUnknown> identity;
    ASSERT_EQ(S_OK, aggregated.QueryInterface(IID_IUnknown, identity));
    EXPECT_EQ(static_cast<IUnknown*>(&outer), identity.Get());
    CComPtr<IPin> aggregatedPin;
    ASSERT_EQ(S_OK, aggregated->FindPin(L"Output", &aggregatedPin));
    EXPECT_EQ(4, outer.lRef); // the pin's reference is the filter's, so the outer's
    aggregatedPin.Reset();
    identity.Reset();
    aggregated.Reset();
    EXPECT_EQ(1, outer.lRef);
    outer.inner = nullptr;
    inner.Reset();
    factory.Reset();
    EXPECT_EQ(S_OK, CCDSourceServer::CanUnloadNow());
    CCDSourceServer::Term();
}

typedef HRESULT(STDAPICALLTYPE* PFNDLLGETCLASSOBJECT)(REFCLSID, REFIID, void**);
typedef HRESULT(STDAPICALLTYPE* PFNDLLENTRY)();

TEST_F(Server, TheBuiltLibraryRegistersServesAndUnregistersTheFilter)
{
    HMODULE hLibrary = LoadLibraryW(TESSALY_CDSOURCE_DLL_PATH);
    ASSERT_NE(nullptr, hLibrary) << "error " << GetLastError();
    auto pfnGetClassObject = reinterpret_cast<PFNDLLGETCLASSOBJECT>(
        reinterpret_cast<void*>(GetProcAddress(hLibrary, "DllGetClassObject")));
    auto pfnCanUnloadNow = reinterpret_cast<PFNDLLENTRY>(reinterpret_cast<void*>(GetProcAddress(hLibrary, "DllCanUnloadNow")));
    auto pfnRegister = reinterpret_cast<PFNDLLENTRY>(reinterpret_cast<void*>(GetProcAddress(hLibrary, "DllRegisterServer")));
    auto pfnUnregister =
        reinterpret_cast<PFNDLLENTRY>(reinterpret_cast<void*>(GetProcAddress(hLibrary, "DllUnregisterServer")));
    ASSERT_TRUE(pfnGetClassObject && pfnCanUnloadNow && pfnRegister && pfnUnregister);

    // Through its own class object, without the registry.
    EXPECT_EQ(S_OK, pfnCanUnloadNow());
    {
        CComPtr<IClassFactory> factory;
        ASSERT_EQ(S_OK, pfnGetClassObject(CLSID_TessalyCDAudioSource, IID_IClassFactory, factory.Out()));
        CComPtr<IBaseFilter> filter;
        ASSERT_EQ(S_OK, factory->CreateInstance(nullptr, IID_IBaseFilter, filter.Out()));
        factory.Reset();
        EXPECT_EQ(S_FALSE, pfnCanUnloadNow());
        CComPtr<IFileSourceFilter> source;
        ASSERT_EQ(S_OK, filter.QueryInterface(IID_IFileSourceFilter, source));
        EXPECT_EQ(E_INVALIDARG, source->Load(L"not a range", nullptr));
    }
    EXPECT_EQ(S_OK, pfnCanUnloadNow());

    // Registered: the class by its path, free-threaded, with its friendly name, and among the filters.
    // The test prefix may have it registered already (other programs play through it); it is
    // registered again at the end if so.
    const bool bWasRegistered = KeyExists(ClassKey());
    WCHAR wszPath[MAX_PATH] = {};
    ASSERT_GT(GetModuleFileNameW(hLibrary, wszPath, MAX_PATH), 0u);
    ASSERT_EQ(S_OK, pfnRegister());
    ASSERT_EQ(S_OK, pfnRegister()); // twice leaves one clean registration
    EXPECT_EQ(std::wstring(L"Tessaly CD Audio Source"), ReadValue(ClassKey(), nullptr));
    EXPECT_EQ(std::wstring(wszPath), ReadValue(ClassKey() + L"\\InprocServer32", nullptr));
    EXPECT_EQ(std::wstring(L"Both"), ReadValue(ClassKey() + L"\\InprocServer32", L"ThreadingModel"));
    EXPECT_EQ(std::wstring(L"Tessaly CD Audio Source"), ReadValue(FilterEntryKey(), L"FriendlyName"));

    {
        // As the engine creates it.
        CComPtr<IBaseFilter> filter;
        ASSERT_EQ(S_OK, CoCreateInstance(CLSID_TessalyCDAudioSource, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter,
                                         filter.Out()));
        CLSID clsid = GUID_NULL;
        EXPECT_EQ(S_OK, filter->GetClassID(&clsid));
        EXPECT_TRUE(clsid == CLSID_TessalyCDAudioSource);
        CComPtr<ICDAudioSourceConfig> config;
        EXPECT_EQ(S_OK, filter.QueryInterface(IID_ICDAudioSourceConfig, config));
    }

    ASSERT_EQ(S_OK, pfnUnregister());
    EXPECT_FALSE(KeyExists(ClassKey()));
    EXPECT_FALSE(KeyExists(FilterEntryKey()));
    EXPECT_EQ(S_OK, pfnUnregister()); // already gone is done
    CComPtr<IBaseFilter> none;
    EXPECT_EQ(REGDB_E_CLASSNOTREG, CoCreateInstance(CLSID_TessalyCDAudioSource, nullptr, CLSCTX_INPROC_SERVER,
                                                    IID_IBaseFilter, none.Out()));
    CoFreeUnusedLibraries();
    EXPECT_EQ(S_OK, pfnCanUnloadNow());
    if (bWasRegistered)
    {
        EXPECT_EQ(S_OK, pfnRegister());
    }
    FreeLibrary(hLibrary);
}

TEST_F(Server, TheRegistrarRefusesANullPath)
{
    EXPECT_EQ(E_POINTER, CCDSourceRegistrar::Register(nullptr));
    EXPECT_EQ(std::wstring(L"Tessaly CD Audio Source"), std::wstring(CCDSourceRegistrar::kFriendlyName));
}

} // namespace
