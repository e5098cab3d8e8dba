// The library as COM meets it: registration and the registry it leaves behind, creation, identity,
// aggregation, class objects and unloading.
#include <windows.h>
#include <objbase.h>
#include <ocidl.h>

#include <gtest/gtest.h>

#include <string>

#include "ServerHost.h"

namespace {

const wchar_t* const kServerPath = L"" TESSALY_DLL_PATH;

std::wstring Guid(const GUID& guid)
{
    WCHAR wsz[40] = {};
    StringFromGUID2(guid, wsz, 40);
    return wsz;
}

// What regsvr32 does: one of the library's exports called in this process.
HRESULT CallExport(const char* pszExport)
{
    const HMODULE hModule = LoadLibraryW(kServerPath);
    auto pfn = reinterpret_cast<HRESULT(WINAPI*)()>(reinterpret_cast<void*>(GetProcAddress(hModule, pszExport)));
    const HRESULT hr = pfn ? pfn() : E_UNEXPECTED;
    FreeLibrary(hModule);
    return hr;
}

// The number of subkeys, or -1 when the key is missing.
int Subkeys(const std::wstring& key)
{
    HKEY hKey = nullptr;
    DWORD dwSubkeys = 0;
    if (RegOpenKeyExW(HKEY_CLASSES_ROOT, key.c_str(), 0, KEY_READ, &hKey) != ERROR_SUCCESS)
        return -1;
    RegQueryInfoKeyW(hKey, nullptr, nullptr, nullptr, &dwSubkeys, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr);
    RegCloseKey(hKey);
    return static_cast<int>(dwSubkeys);
}

// In upper case, so that paths compare without case.
std::string Upper(std::wstring s)
{
    CharUpperW(&s[0]);
    return std::string(s.begin(), s.end());
}

std::string Value(const std::wstring& key, const wchar_t* pwszName)
{
    WCHAR wsz[1024] = {};
    DWORD cb = sizeof(wsz) - sizeof(WCHAR), dwType = 0;
    const LSTATUS status = RegGetValueW(HKEY_CLASSES_ROOT, key.c_str(), pwszName, RRF_RT_ANY, &dwType, wsz, &cb);
    return status != ERROR_SUCCESS ? "<missing>" : dwType == REG_SZ ? Upper(wsz) : "<not a string>";
}

const IID* const kInterfaces[] = {&IID_IPlay, &IID_IPlay2, &IID_IPlayCD, &IID_ITextDisplay,
                                  &IID_IPlayEvents, &IID_IPlayCDEvents, &IID_IQueryFileInfo};
const std::wstring kTypeLib = L"TypeLib\\" + Guid(LIBID_TESSALYLib);

void ExpectRegistered()
{
    struct Entry { std::wstring key; const wchar_t* pwszName; std::wstring value; };
    const std::wstring proxyClass = Guid(IID_IPlay2);
    std::vector<Entry> expected = {{L"Interface\\" + Guid(IID_IPlay), nullptr, L"IPlay"},
                                   {L"CLSID\\" + proxyClass + L"\\InprocServer32", nullptr, kServerPath},
                                   {kTypeLib + L"\\1.0", nullptr, L"Tessaly 1.0 Type Library"},
                                   {kTypeLib + (sizeof(void*) == 8 ? L"\\1.0\\409\\win64" : L"\\1.0\\409\\win32"), nullptr, kServerPath}};
    for (const IID* iid : kInterfaces)
        expected.push_back({L"Interface\\" + Guid(*iid) + L"\\ProxyStubClsid32", nullptr, proxyClass});
    for (const auto& c : {std::make_pair(&CLSID_Play, std::wstring(L"Play")), std::make_pair(&CLSID_QueryFileInfo, std::wstring(L"QueryFileInfo"))})
    {
        const std::wstring clsid = Guid(*c.first), classKey = L"CLSID\\" + clsid, description = c.second + L" Class";
        const std::wstring viProgId = L"Tessaly." + c.second, progId = viProgId + L".1";
        expected.insert(expected.end(), {{progId, nullptr, description}, {progId + L"\\CLSID", nullptr, clsid},
                                         {viProgId, nullptr, description}, {viProgId + L"\\CLSID", nullptr, clsid},
                                         {viProgId + L"\\CurVer", nullptr, progId}, {classKey, nullptr, description},
                                         {classKey + L"\\ProgID", nullptr, progId},
                                         {classKey + L"\\VersionIndependentProgID", nullptr, viProgId},
                                         {classKey + L"\\InprocServer32", nullptr, kServerPath},
                                         {classKey + L"\\InprocServer32", L"ThreadingModel", L"Apartment"},
                                         {classKey + L"\\TypeLib", nullptr, Guid(LIBID_TESSALYLib)}});
        EXPECT_EQ(4, Subkeys(classKey)) << "nothing but what registration writes";
    }
    for (const Entry& e : expected)
        EXPECT_EQ(Upper(e.value), Value(e.key, e.pwszName)) << Upper(e.key) << " " << Upper(e.pwszName ? e.pwszName : L"");
}

// The case leaves the library registered, as the other cases expect it.
TEST(Registration, RegisterWritesEveryKeyOverAnyLeftoverAndUnregisterRemovesThemAll)
{
    const std::wstring classKey = L"CLSID\\" + Guid(CLSID_Play);
    ASSERT_EQ(S_OK, CallExport("DllRegisterServer"));
    HKEY hKey = nullptr;
    ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyExW(HKEY_CLASSES_ROOT, (classKey + L"\\Leftover").c_str(), 0, nullptr, 0,
                                             KEY_WRITE, nullptr, &hKey, nullptr));
    RegCloseKey(hKey);
    ASSERT_EQ(S_OK, CallExport("DllRegisterServer"));
    ExpectRegistered();

    ASSERT_EQ(S_OK, CallExport("DllUnregisterServer"));
    std::vector<std::wstring> gone = {classKey, L"CLSID\\" + Guid(CLSID_QueryFileInfo), L"Tessaly.Play", L"Tessaly.Play.1",
                                      L"Tessaly.QueryFileInfo", L"Tessaly.QueryFileInfo.1", L"CLSID\\" + Guid(IID_IPlay2), kTypeLib};
    for (const IID* iid : kInterfaces)
        gone.push_back(L"Interface\\" + Guid(*iid));
    for (const std::wstring& key : gone)
        EXPECT_EQ(-1, Subkeys(key)) << Upper(key);
    EXPECT_NE(-1, Subkeys(L"CLSID")) << "the shared key stays";
    ASSERT_EQ(S_OK, CallExport("DllRegisterServer"));
}

// Each refused interface answers E_NOINTERFACE and a null output.
void ExpectRefused(IUnknown* pObject, std::initializer_list<const IID*> refused)
{
    for (const IID* iid : refused)
    {
        void* pv = reinterpret_cast<void*>(0x1);
        EXPECT_EQ(E_NOINTERFACE, pObject->QueryInterface(*iid, &pv));
        EXPECT_EQ(nullptr, pv);
    }
}

// An outer object that counts what an aggregated object asks of it.
struct RecordingOuter : public IUnknown
{
    LONG addRefs = 0, releases = 0, queries = 0;
    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override
    {
        ++queries;
        *ppv = riid == IID_IUnknown ? this : nullptr;
        return *ppv ? (AddRef(), S_OK) : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++addRefs - releases + 1); }
    STDMETHODIMP_(ULONG) Release() override { return static_cast<ULONG>(addRefs - ++releases + 1); }
};

using ComObjects = ComApartment;

TEST_F(ComObjects, EachClassAnswersExactlyItsInterfacesWithOneIdentityAndOneCountAndIsAggregatedOnlyAsIUnknown)
{
    RecordingOuter outer;
    for (REFCLSID clsid : {CLSID_Play, CLSID_QueryFileInfo})
    {
        void* pv = reinterpret_cast<void*>(0x1);
        EXPECT_EQ(CLASS_E_NOAGGREGATION, CoCreateInstance(clsid, &outer, CLSCTX_INPROC_SERVER, IID_IPlay, &pv));
        EXPECT_EQ(nullptr, pv);
    }
    ComPtr<IUnknown> inner, play, query;
    {
        ComPtr<IUnknown> viaInterface, again, text;
        ComPtr<IPlay> aggregated, chain[3];
        ASSERT_EQ(S_OK, CoCreateInstance(CLSID_Play, &outer, CLSCTX_INPROC_SERVER, IID_IUnknown, &inner));
        const LONG addRefsBefore = outer.addRefs, queriesBefore = outer.queries;
        ASSERT_EQ(S_OK, QueryTo(inner, IID_IPlay, aggregated));
        EXPECT_EQ(addRefsBefore + 1, outer.addRefs) << "the handed-out interface is counted on the outer";
        EXPECT_EQ(S_OK, QueryTo(aggregated, IID_IUnknown, viaInterface));
        EXPECT_EQ(static_cast<IUnknown*>(&outer), viaInterface.Get());
        EXPECT_EQ(E_NOINTERFACE, aggregated->QueryInterface(IID_IPlay2, &again)) << "the outer decides, and it knows no IPlay2";
        EXPECT_EQ(queriesBefore + 2, outer.queries);

        ASSERT_EQ(S_OK, CoCreateInstance(CLSID_Play, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &play));
        for (int i = 0; i < 3; ++i)
            EXPECT_EQ(S_OK, play->QueryInterface(i == 0 ? IID_IPlay : i == 1 ? IID_IPlay2 : IID_IPlayCD, &chain[i]));
        EXPECT_TRUE(chain[0].Get() == chain[1].Get() && chain[1].Get() == chain[2].Get()) << "one pointer for the Play chain";
        EXPECT_EQ(S_OK, QueryTo(play, IID_ITextDisplay, text));
        EXPECT_EQ(S_OK, QueryTo(text, IID_IUnknown, again));
        EXPECT_EQ(play.Get(), again.Get()) << "every interface leads back to the same identity";
        ExpectRefused(play.Get(), {&IID_IDispatch, &IID_IQueryFileInfo, &IID_IPlayEvents, &IID_IPlayCDEvents,
                                   &IID_IConnectionPoint, &IID_IClassFactory, &IID_IPersist});
        EXPECT_EQ(7u, again->AddRef()) << "one count: play, three of the chain, text, again and this";
        EXPECT_EQ(6u, again->Release());
    }
    EXPECT_EQ(outer.addRefs, outer.releases) << "every count taken on the outer was given back";
    EXPECT_EQ(0u, play.Detach()->Release());
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_QueryFileInfo, nullptr, CLSCTX_INPROC_SERVER, IID_IQueryFileInfo, &query));
    ExpectRefused(query.Get(), {&IID_IDispatch, &IID_IPlay, &IID_ITextDisplay, &IID_IConnectionPointContainer});
    EXPECT_EQ(S_OK, query->QueryInterface(IID_IUnknown, &play));
    EXPECT_EQ(query.Get(), play.Get());
    EXPECT_EQ(1u, play.Detach()->Release());
    EXPECT_EQ(0u, query.Detach()->Release());
}

// The library's exports reached as COM reaches them: class objects check their arguments, and
// the library may unload only when no object, class object or lock is held.
TEST_F(ComObjects, ClassObjectsCheckTheirArgumentsAndHoldTheLibraryLikeObjectsAndLocks)
{
    const HMODULE hModule = LoadLibraryW(kServerPath);
    auto pfnGetClassObject = reinterpret_cast<HRESULT(WINAPI*)(REFCLSID, REFIID, void**)>(
        reinterpret_cast<void*>(GetProcAddress(hModule, "DllGetClassObject")));
    auto pfnCanUnloadNow = reinterpret_cast<HRESULT(WINAPI*)()>(reinterpret_cast<void*>(GetProcAddress(hModule, "DllCanUnloadNow")));
    ASSERT_TRUE(pfnGetClassObject && pfnCanUnloadNow);
    void* pv = reinterpret_cast<void*>(0x1);
    EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE, pfnGetClassObject(IID_IPlay, IID_IClassFactory, &pv));
    EXPECT_EQ(nullptr, pv);
    EXPECT_EQ(E_POINTER, pfnGetClassObject(CLSID_Play, IID_IClassFactory, nullptr));
    EXPECT_EQ(S_OK, pfnCanUnloadNow());

    ComPtr<IClassFactory> factory;
    ComPtr<IUnknown> unknown;
    ComPtr<IPlay> play;
    ASSERT_EQ(S_OK, pfnGetClassObject(CLSID_Play, IID_IClassFactory, &factory));
    EXPECT_EQ(S_FALSE, pfnCanUnloadNow()) << "a class object is held";
    EXPECT_EQ(S_OK, QueryTo(factory, IID_IUnknown, unknown));
    EXPECT_EQ(E_POINTER, factory->QueryInterface(IID_IClassFactory, nullptr));
    ExpectRefused(factory.Get(), {&IID_IDispatch, &IID_IPlay});
    EXPECT_EQ(E_POINTER, factory->CreateInstance(nullptr, IID_IPlay, nullptr));
    pv = reinterpret_cast<void*>(0x1);
    EXPECT_EQ(E_NOINTERFACE, factory->CreateInstance(nullptr, IID_IQueryFileInfo, &pv));
    EXPECT_EQ(nullptr, pv);
    ASSERT_EQ(S_OK, factory->CreateInstance(nullptr, IID_IPlay, &play));
    factory.Reset();
    unknown.Reset();
    EXPECT_EQ(S_FALSE, pfnCanUnloadNow()) << "an object is alive";
    play.Reset();
    EXPECT_EQ(S_OK, pfnCanUnloadNow());
    for (BOOL bLock : {TRUE, FALSE})
    {
        ASSERT_EQ(S_OK, pfnGetClassObject(CLSID_QueryFileInfo, IID_IClassFactory, &factory));
        EXPECT_EQ(S_OK, factory->LockServer(bLock));
        factory.Reset();
        EXPECT_EQ(bLock ? S_FALSE : S_OK, pfnCanUnloadNow()) << "locked: " << bLock;
    }
    FreeLibrary(hModule);
}

} // namespace
