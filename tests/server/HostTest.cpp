// The engine seen from a host that knows only the published contract: creation, identity,
// aggregation, class objects and when the library may be unloaded.
#include <windows.h>
#include <objbase.h>
#include <ocidl.h>

#include <gtest/gtest.h>

#include <string>

#include "CTestMedia.h"
#include "ServerPaths.h"
#include "engine/ComPtr.h"
#include "engine/TessalyContract.h"
#include "tests/support/CrossApartment.h"

namespace {

class ComApartment : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)); }
    void TearDown() override { CoUninitialize(); }
};

// The library's own exports, reached the way COM reaches them.
class ServerExports
{
public:
    ServerExports() : m_hModule(LoadLibraryW(kServerPath))
    {
        pfnGetClassObject = reinterpret_cast<decltype(pfnGetClassObject)>(
            reinterpret_cast<void*>(GetProcAddress(m_hModule, "DllGetClassObject")));
        pfnCanUnloadNow = reinterpret_cast<decltype(pfnCanUnloadNow)>(
            reinterpret_cast<void*>(GetProcAddress(m_hModule, "DllCanUnloadNow")));
    }
    ~ServerExports() { FreeLibrary(m_hModule); }
    bool Loaded() const { return m_hModule && pfnGetClassObject && pfnCanUnloadNow; }

    HRESULT(WINAPI* pfnGetClassObject)(REFCLSID, REFIID, void**) = nullptr;
    HRESULT(WINAPI* pfnCanUnloadNow)() = nullptr;

private:
    HMODULE m_hModule;
};

template <class T>
HRESULT Create(REFCLSID clsid, REFIID riid, ComPtr<T>& out, IUnknown* pOuter = nullptr)
{
    return CoCreateInstance(clsid, pOuter, CLSCTX_INPROC_SERVER, riid, &out);
}

void ExpectRefused(IUnknown* pObject, REFIID riid)
{
    void* pv = reinterpret_cast<void*>(0x1);
    EXPECT_EQ(E_NOINTERFACE, pObject->QueryInterface(riid, &pv));
    EXPECT_EQ(nullptr, pv);
}

using Creation = ComApartment;

TEST_F(Creation, PlayAnswersExactlyItsInterfacesWithOnePointerForThePlayChain)
{
    ComPtr<IUnknown> unknown;
    ASSERT_EQ(S_OK, Create(CLSID_Play, IID_IUnknown, unknown));
    ComPtr<IPlay> play;
    ComPtr<IPlay2> play2;
    ComPtr<IPlayCD> playCD;
    ComPtr<ITextDisplay> text;
    ComPtr<IConnectionPointContainer> container;
    EXPECT_EQ(S_OK, QueryTo(unknown, IID_IPlay, play));
    EXPECT_EQ(S_OK, QueryTo(unknown, IID_IPlay2, play2));
    EXPECT_EQ(S_OK, QueryTo(unknown, IID_IPlayCD, playCD));
    EXPECT_EQ(S_OK, QueryTo(unknown, IID_ITextDisplay, text));
    EXPECT_EQ(S_OK, QueryTo(unknown, IID_IConnectionPointContainer, container));
    EXPECT_EQ(static_cast<void*>(play.Get()), static_cast<void*>(play2.Get()));
    EXPECT_EQ(static_cast<void*>(play.Get()), static_cast<void*>(playCD.Get()));

    for (REFIID riid : {IID_IDispatch, IID_IQueryFileInfo, IID_IPlayEvents, IID_IPlayCDEvents,
                        IID_IConnectionPoint, IID_IClassFactory, IID_IPersist})
        ExpectRefused(unknown.Get(), riid);

    // Every interface leads back to the same identity.
    ComPtr<IUnknown> again;
    EXPECT_EQ(S_OK, QueryTo(text, IID_IUnknown, again));
    EXPECT_EQ(unknown.Get(), again.Get());
    EXPECT_EQ(S_OK, QueryTo(playCD, IID_IUnknown, again));
    EXPECT_EQ(unknown.Get(), again.Get());
}

TEST_F(Creation, QueryFileInfoAnswersOnlyIUnknownAndItsInterface)
{
    ComPtr<IQueryFileInfo> query;
    ASSERT_EQ(S_OK, Create(CLSID_QueryFileInfo, IID_IQueryFileInfo, query));
    ComPtr<IUnknown> unknown;
    EXPECT_EQ(S_OK, QueryTo(query, IID_IUnknown, unknown));
    EXPECT_EQ(static_cast<void*>(query.Get()), static_cast<void*>(unknown.Get()));
    for (REFIID riid : {IID_IDispatch, IID_IPlay, IID_ITextDisplay, IID_IConnectionPointContainer})
        ExpectRefused(query.Get(), riid);
}

TEST_F(Creation, ReferenceCountsGoBackToZero)
{
    IPlay* pPlay = nullptr;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_Play, nullptr, CLSCTX_INPROC_SERVER, IID_IPlay,
                                     reinterpret_cast<void**>(&pPlay)));
    EXPECT_EQ(2u, pPlay->AddRef());
    ITextDisplay* pText = nullptr;
    ASSERT_EQ(S_OK, pPlay->QueryInterface(IID_ITextDisplay, reinterpret_cast<void**>(&pText)));
    EXPECT_EQ(3u, pText->AddRef() - 1) << "one count for the whole object";
    EXPECT_EQ(3u, pText->Release());
    EXPECT_EQ(2u, pText->Release());
    EXPECT_EQ(1u, pPlay->Release());
    EXPECT_EQ(0u, pPlay->Release());
}

// An outer object that records what its aggregated inner object asks of it.
class RecordingOuter : public IUnknown
{
public:
    LONG addRefs = 0;
    LONG releases = 0;
    LONG queries = 0;

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override
    {
        ++queries;
        if (riid == IID_IUnknown)
        {
            *ppv = this;
            AddRef();
            return S_OK;
        }
        *ppv = nullptr;
        return E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(++addRefs - releases + 1); }
    STDMETHODIMP_(ULONG) Release() override { return static_cast<ULONG>(addRefs - ++releases + 1); }
};

using Aggregation = ComApartment;

TEST_F(Aggregation, AskingForAnythingButIUnknownIsRefused)
{
    RecordingOuter outer;
    for (REFCLSID clsid : {CLSID_Play, CLSID_QueryFileInfo})
    {
        void* pv = reinterpret_cast<void*>(0x1);
        EXPECT_EQ(CLASS_E_NOAGGREGATION, CoCreateInstance(clsid, &outer, CLSCTX_INPROC_SERVER, IID_IPlay, &pv));
        EXPECT_EQ(nullptr, pv);
    }
    EXPECT_EQ(0, outer.addRefs);
}

TEST_F(Aggregation, TheInnerUnknownKeepsItsOwnIdentityAndInterfacesCountOnTheOuter)
{
    RecordingOuter outer;
    ComPtr<IUnknown> inner;
    ASSERT_EQ(S_OK, Create(CLSID_Play, IID_IUnknown, inner, &outer));
    ASSERT_NE(static_cast<IUnknown*>(&outer), inner.Get());

    ComPtr<IUnknown> self;
    EXPECT_EQ(S_OK, QueryTo(inner, IID_IUnknown, self));
    EXPECT_EQ(inner.Get(), self.Get()) << "the inner unknown answers IUnknown itself";
    self.Reset();

    const LONG addRefsBefore = outer.addRefs;
    ComPtr<IPlay> play;
    ASSERT_EQ(S_OK, QueryTo(inner, IID_IPlay, play));
    EXPECT_EQ(addRefsBefore + 1, outer.addRefs) << "the handed-out interface is counted on the outer";

    // IUnknown calls on the inner object's interfaces go to the outer object.
    ComPtr<IUnknown> viaInterface;
    EXPECT_EQ(S_OK, QueryTo(play, IID_IUnknown, viaInterface));
    EXPECT_EQ(static_cast<IUnknown*>(&outer), viaInterface.Get());
    const LONG queriesBefore = outer.queries;
    ComPtr<IPlay2> play2;
    EXPECT_EQ(E_NOINTERFACE, QueryTo(play, IID_IPlay2, play2)) << "the outer decides, and it knows no IPlay2";
    EXPECT_EQ(queriesBefore + 1, outer.queries);

    play.Reset();
    viaInterface.Reset();
    EXPECT_EQ(outer.addRefs, outer.releases) << "every count taken on the outer was given back";
}

TEST_F(Aggregation, QueryFileInfoCanBeAggregatedToo)
{
    RecordingOuter outer;
    ComPtr<IUnknown> inner;
    ASSERT_EQ(S_OK, Create(CLSID_QueryFileInfo, IID_IUnknown, inner, &outer));
    ComPtr<IQueryFileInfo> query;
    EXPECT_EQ(S_OK, QueryTo(inner, IID_IQueryFileInfo, query));
    query.Reset();
    EXPECT_EQ(outer.addRefs, outer.releases);
}

using ClassObjects = ComApartment;

TEST_F(ClassObjects, UnknownClassesAndNullOutputsAreRefused)
{
    ServerExports server;
    ASSERT_TRUE(server.Loaded());
    void* pv = reinterpret_cast<void*>(0x1);
    EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE, server.pfnGetClassObject(IID_IPlay, IID_IClassFactory, &pv));
    EXPECT_EQ(nullptr, pv);
    EXPECT_EQ(E_POINTER, server.pfnGetClassObject(CLSID_Play, IID_IClassFactory, nullptr));
}

TEST_F(ClassObjects, AClassObjectAnswersIUnknownAndIClassFactoryOnly)
{
    ServerExports server;
    ASSERT_TRUE(server.Loaded());
    ComPtr<IClassFactory> factory;
    ASSERT_EQ(S_OK, server.pfnGetClassObject(CLSID_QueryFileInfo, IID_IClassFactory, &factory));
    ComPtr<IUnknown> unknown;
    EXPECT_EQ(S_OK, QueryTo(factory, IID_IUnknown, unknown));
    ExpectRefused(factory.Get(), IID_IDispatch);
    ExpectRefused(factory.Get(), IID_IQueryFileInfo);

    EXPECT_EQ(E_POINTER, factory->CreateInstance(nullptr, IID_IQueryFileInfo, nullptr));
    RecordingOuter outer;
    void* pv = reinterpret_cast<void*>(0x1);
    EXPECT_EQ(CLASS_E_NOAGGREGATION, factory->CreateInstance(&outer, IID_IQueryFileInfo, &pv));
    EXPECT_EQ(nullptr, pv);
    pv = reinterpret_cast<void*>(0x1);
    EXPECT_EQ(E_NOINTERFACE, factory->CreateInstance(nullptr, IID_IPlay, &pv));
    EXPECT_EQ(nullptr, pv);
}

TEST_F(ClassObjects, TheLibraryCanUnloadOnlyWhenNothingIsHeld)
{
    ServerExports server;
    ASSERT_TRUE(server.Loaded());
    EXPECT_EQ(S_OK, server.pfnCanUnloadNow());

    ComPtr<IClassFactory> factory;
    ASSERT_EQ(S_OK, server.pfnGetClassObject(CLSID_Play, IID_IClassFactory, &factory));
    EXPECT_EQ(S_FALSE, server.pfnCanUnloadNow()) << "a class object is held";

    ComPtr<IPlay> play;
    ASSERT_EQ(S_OK, factory->CreateInstance(nullptr, IID_IPlay, &play));
    factory.Reset();
    EXPECT_EQ(S_FALSE, server.pfnCanUnloadNow()) << "an object is alive";
    play.Reset();
    EXPECT_EQ(S_OK, server.pfnCanUnloadNow());

    ASSERT_EQ(S_OK, server.pfnGetClassObject(CLSID_Play, IID_IClassFactory, &factory));
    EXPECT_EQ(S_OK, factory->LockServer(TRUE));
    factory.Reset();
    EXPECT_EQ(S_FALSE, server.pfnCanUnloadNow()) << "locked";
    ASSERT_EQ(S_OK, server.pfnGetClassObject(CLSID_Play, IID_IClassFactory, &factory));
    EXPECT_EQ(S_OK, factory->LockServer(FALSE));
    factory.Reset();
    EXPECT_EQ(S_OK, server.pfnCanUnloadNow());
}

// ---- querying files ------------------------------------------------------------------------

struct FindClass
{
    const wchar_t* pwszClass;
    int count;
};

BOOL CALLBACK CountClass(HWND hWnd, LPARAM lParam)
{
    auto* find = reinterpret_cast<FindClass*>(lParam);
    WCHAR wsz[128];
    if (GetClassNameW(hWnd, wsz, 128) && lstrcmpW(wsz, find->pwszClass) == 0)
        ++find->count;
    return TRUE;
}

int ThreadWindowsOfClass(const wchar_t* pwszClass)
{
    FindClass find = {pwszClass, 0};
    EnumThreadWindows(GetCurrentThreadId(), CountClass, reinterpret_cast<LPARAM>(&find));
    return find.count;
}

BOOL CALLBACK CountVisible(HWND hWnd, LPARAM lParam)
{
    if (IsWindowVisible(hWnd))
        ++*reinterpret_cast<int*>(lParam);
    return TRUE;
}

int VisibleThreadWindows()
{
    int count = 0;
    EnumThreadWindows(GetCurrentThreadId(), CountVisible, reinterpret_cast<LPARAM>(&count));
    return count;
}

using QueryFileInfo = ComApartment;

TEST_F(QueryFileInfo, ANullRecordIsRefusedBeforeTheEngineStarts)
{
    ComPtr<IQueryFileInfo> query;
    ASSERT_EQ(S_OK, Create(CLSID_QueryFileInfo, IID_IQueryFileInfo, query));
    WCHAR path[] = L"C:\\song.mp3";
    EXPECT_EQ(E_INVALIDARG, query->GetFileInfo(path, nullptr));
    EXPECT_EQ(0, ThreadWindowsOfClass(L"MEDIAPLAYER.Event.Handler.WndClass"));
    EXPECT_EQ(0, ThreadWindowsOfClass(L"CQueryFileInfo.Hidden.WndClass"));
}

TEST_F(QueryFileInfo, MissingOrUnknownExtensionsAreNotSupportedAndLeaveTheRecordAlone)
{
    ComPtr<IQueryFileInfo> query;
    ASSERT_EQ(S_OK, Create(CLSID_QueryFileInfo, IID_IQueryFileInfo, query));
    for (const wchar_t* pwszPath : {L"C:\\Media\\noextension", L"C:\\Media\\notes.txt", L"C:\\Media\\dot.", L""})
    {
        TESSALY_FILEINFO info = {7, 7.0, 7, 7};
        WCHAR path[MAX_PATH];
        lstrcpyW(path, pwszPath);
        EXPECT_EQ(TESSALY_E_NOTSUPPORTED, query->GetFileInfo(path, &info));
        EXPECT_EQ(7u, info.dwAttributeMask);
        EXPECT_EQ(7.0, info.dDuration);
        EXPECT_EQ(7u, info.dwWidth);
        EXPECT_EQ(7u, info.dwHeight);
    }
    EXPECT_EQ(0, VisibleThreadWindows()) << "a query shows nothing";
}

// The DLL's own proxy/stub carries the calls of a multi-threaded apartment to the object.
TEST_F(QueryFileInfo, AnotherApartmentGetsTheSameAnswersThroughTheProxy)
{
    ComPtr<IQueryFileInfo> query;
    ASSERT_EQ(S_OK, Create(CLSID_QueryFileInfo, IID_IQueryFileInfo, query));
    HRESULT hrUnknown = E_FAIL, hrOther = E_FAIL, hrReal = E_FAIL;
    TESSALY_FILEINFO viaProxy = {};
    bool bProxy = false;
    const HRESULT hrUnmarshal =
        CallFromAnotherApartment<IQueryFileInfo>(query.Get(), IID_IQueryFileInfo, [&](IQueryFileInfo* remote) {
            bProxy = remote != query.Get();
            WCHAR path[] = L"C:\\Media\\notes.txt";
            TESSALY_FILEINFO info = {};
            hrUnknown = remote->GetFileInfo(path, &info);
            TESSALY_FILEINFO other = {};
            WCHAR clip[] = L"C:\\Media\\clip.zzz";
            hrOther = remote->GetFileInfo(clip, &other);
            std::wstring real = CTestMedia::Path("clip.wmv");
            hrReal = remote->GetFileInfo(&real[0], &viaProxy);
        });
    ASSERT_EQ(S_OK, hrUnmarshal);
    EXPECT_TRUE(bProxy);
    EXPECT_EQ(TESSALY_E_NOTSUPPORTED, hrUnknown);
    EXPECT_EQ(TESSALY_E_NOTSUPPORTED, hrOther);

    // A real file answers the same through the proxy as directly.
    std::wstring real = CTestMedia::Path("clip.wmv");
    TESSALY_FILEINFO direct = {};
    ASSERT_EQ(S_OK, query->GetFileInfo(&real[0], &direct));
    EXPECT_EQ(S_OK, hrReal);
    EXPECT_EQ(direct.dwAttributeMask, viaProxy.dwAttributeMask);
    EXPECT_EQ(direct.dDuration, viaProxy.dDuration);
    EXPECT_EQ(direct.dwWidth, viaProxy.dwWidth);
    EXPECT_EQ(direct.dwHeight, viaProxy.dwHeight);
    EXPECT_EQ(160u, viaProxy.dwWidth);
}

} // namespace
