// The engine seen from a host that knows only the published contract: creation, identity,
// aggregation, class objects and when the library may be unloaded.
#include <windows.h>
#include <objbase.h>
#include <ocidl.h>

#include <gtest/gtest.h>

#include "ServerHost.h"

namespace {

// The library's own exports, reached the way COM reaches them.
struct ServerExports
{
    HMODULE hModule = LoadLibraryW(kServerPath);
    HRESULT(WINAPI* pfnGetClassObject)(REFCLSID, REFIID, void**) = reinterpret_cast<decltype(pfnGetClassObject)>(
        reinterpret_cast<void*>(GetProcAddress(hModule, "DllGetClassObject")));
    HRESULT(WINAPI* pfnCanUnloadNow)() = reinterpret_cast<decltype(pfnCanUnloadNow)>(
        reinterpret_cast<void*>(GetProcAddress(hModule, "DllCanUnloadNow")));
    ~ServerExports() { FreeLibrary(hModule); }
};

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

using Creation = ComApartment;

TEST_F(Creation, EachClassAnswersExactlyItsInterfacesWithOneIdentityAndOneCount)
{
    IUnknown* pPlay = nullptr;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_Play, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, reinterpret_cast<void**>(&pPlay)));
    void* pChain[3] = {};
    const IID* const chain[] = {&IID_IPlay, &IID_IPlay2, &IID_IPlayCD};
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(S_OK, pPlay->QueryInterface(*chain[i], &pChain[i]));
    EXPECT_EQ(pChain[0], pChain[1]) << "one pointer for the Play chain";
    EXPECT_EQ(pChain[0], pChain[2]);
    ITextDisplay* pText = nullptr;
    EXPECT_EQ(S_OK, pPlay->QueryInterface(IID_ITextDisplay, reinterpret_cast<void**>(&pText)));
    ExpectRefused(pPlay, {&IID_IDispatch, &IID_IQueryFileInfo, &IID_IPlayEvents, &IID_IPlayCDEvents,
                          &IID_IConnectionPoint, &IID_IClassFactory, &IID_IPersist});
    IUnknown* pAgain = nullptr;
    EXPECT_EQ(S_OK, pText->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&pAgain)));
    EXPECT_EQ(pPlay, pAgain) << "every interface leads back to the same identity";
    EXPECT_EQ(7u, pAgain->AddRef()) << "one count for the whole object: 1 + 3 + 1 + 1 + 1";
    pAgain->Release();
    IConnectionPointContainer* pContainer = nullptr;
    EXPECT_EQ(S_OK, pPlay->QueryInterface(IID_IConnectionPointContainer, reinterpret_cast<void**>(&pContainer)));
    pAgain->Release();
    pContainer->Release();
    pText->Release();
    for (void* pv : pChain)
        static_cast<IUnknown*>(pv)->Release();
    EXPECT_EQ(0u, pPlay->Release());

    IQueryFileInfo* pQuery = nullptr;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_QueryFileInfo, nullptr, CLSCTX_INPROC_SERVER, IID_IQueryFileInfo,
                                     reinterpret_cast<void**>(&pQuery)));
    EXPECT_EQ(S_OK, pQuery->QueryInterface(IID_IUnknown, reinterpret_cast<void**>(&pAgain)));
    EXPECT_EQ(static_cast<IUnknown*>(pQuery), pAgain);
    ExpectRefused(pQuery, {&IID_IDispatch, &IID_IPlay, &IID_ITextDisplay, &IID_IConnectionPointContainer});
    EXPECT_EQ(1u, pAgain->Release());
    EXPECT_EQ(0u, pQuery->Release());
}

// An outer object that records what its aggregated inner object asks of it.
class RecordingOuter : public IUnknown
{
public:
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

using Aggregation = ComApartment;

TEST_F(Aggregation, OnlyIUnknownIsHandedOutAndTheInterfacesCountAndQueryOnTheOuter)
{
    RecordingOuter outer;
    for (REFCLSID clsid : {CLSID_Play, CLSID_QueryFileInfo})
    {
        void* pv = reinterpret_cast<void*>(0x1);
        EXPECT_EQ(CLASS_E_NOAGGREGATION, CoCreateInstance(clsid, &outer, CLSCTX_INPROC_SERVER, IID_IPlay, &pv));
        EXPECT_EQ(nullptr, pv);
    }
    EXPECT_EQ(0, outer.addRefs);

    ComPtr<IUnknown> inner, self, viaInterface;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_Play, &outer, CLSCTX_INPROC_SERVER, IID_IUnknown, &inner));
    ASSERT_NE(static_cast<IUnknown*>(&outer), inner.Get());
    EXPECT_EQ(S_OK, QueryTo(inner, IID_IUnknown, self));
    EXPECT_EQ(inner.Get(), self.Get()) << "the inner unknown answers IUnknown itself";
    const LONG addRefsBefore = outer.addRefs;
    ComPtr<IPlay> play;
    ASSERT_EQ(S_OK, QueryTo(inner, IID_IPlay, play));
    EXPECT_EQ(addRefsBefore + 1, outer.addRefs) << "the handed-out interface is counted on the outer";
    EXPECT_EQ(S_OK, QueryTo(play, IID_IUnknown, viaInterface));
    EXPECT_EQ(static_cast<IUnknown*>(&outer), viaInterface.Get());
    const LONG queriesBefore = outer.queries;
    ComPtr<IPlay2> play2;
    EXPECT_EQ(E_NOINTERFACE, QueryTo(play, IID_IPlay2, play2)) << "the outer decides, and it knows no IPlay2";
    EXPECT_EQ(queriesBefore + 1, outer.queries);

    ComPtr<IUnknown> queryInner;
    ComPtr<IQueryFileInfo> query;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_QueryFileInfo, &outer, CLSCTX_INPROC_SERVER, IID_IUnknown, &queryInner));
    EXPECT_EQ(S_OK, QueryTo(queryInner, IID_IQueryFileInfo, query));
    play.Reset();
    viaInterface.Reset();
    query.Reset();
    EXPECT_EQ(outer.addRefs, outer.releases) << "every count taken on the outer was given back";
}

using ClassObjects = ComApartment;

TEST_F(ClassObjects, AClassObjectChecksItsArgumentsAndAnswersIUnknownAndIClassFactoryOnly)
{
    ServerExports server;
    ASSERT_NE(nullptr, server.pfnGetClassObject);
    void* pv = reinterpret_cast<void*>(0x1);
    EXPECT_EQ(CLASS_E_CLASSNOTAVAILABLE, server.pfnGetClassObject(IID_IPlay, IID_IClassFactory, &pv));
    EXPECT_EQ(nullptr, pv);
    EXPECT_EQ(E_POINTER, server.pfnGetClassObject(CLSID_Play, IID_IClassFactory, nullptr));

    ComPtr<IClassFactory> factory;
    ASSERT_EQ(S_OK, server.pfnGetClassObject(CLSID_QueryFileInfo, IID_IClassFactory, &factory));
    ComPtr<IUnknown> unknown;
    EXPECT_EQ(S_OK, QueryTo(factory, IID_IUnknown, unknown));
    EXPECT_EQ(E_POINTER, factory->QueryInterface(IID_IClassFactory, nullptr));
    ExpectRefused(factory.Get(), {&IID_IDispatch, &IID_IQueryFileInfo});

    EXPECT_EQ(E_POINTER, factory->CreateInstance(nullptr, IID_IQueryFileInfo, nullptr));
    RecordingOuter outer;
    pv = reinterpret_cast<void*>(0x1);
    EXPECT_EQ(CLASS_E_NOAGGREGATION, factory->CreateInstance(&outer, IID_IQueryFileInfo, &pv));
    EXPECT_EQ(nullptr, pv);
    pv = reinterpret_cast<void*>(0x1);
    EXPECT_EQ(E_NOINTERFACE, factory->CreateInstance(nullptr, IID_IPlay, &pv));
    EXPECT_EQ(nullptr, pv);
}

TEST_F(ClassObjects, TheLibraryCanUnloadOnlyWhenNothingIsHeld)
{
    ServerExports server;
    ASSERT_NE(nullptr, server.pfnCanUnloadNow);
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

    for (BOOL bLock : {TRUE, FALSE})
    {
        ASSERT_EQ(S_OK, server.pfnGetClassObject(CLSID_Play, IID_IClassFactory, &factory));
        EXPECT_EQ(S_OK, factory->LockServer(bLock));
        factory.Reset();
        EXPECT_EQ(bLock ? S_FALSE : S_OK, server.pfnCanUnloadNow()) << "locked: " << bLock;
    }
}

} // namespace
