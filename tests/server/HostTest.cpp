// Creation, identity, aggregation, class objects and unloading, as a host that knows only the contract meets them.
#include <windows.h>
#include <objbase.h>
#include <ocidl.h>

#include <gtest/gtest.h>

#include "ServerHost.h"

namespace {

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

// An outer object that counts what its aggregated inner object asks of it.
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

using ComObjects = ComApartment;

TEST_F(ComObjects, EachClassAnswersExactlyItsInterfacesWithOneIdentityAndOneCount)
{
    ComPtr<IUnknown> play, text, again, query;
    ComPtr<IPlay> chain[3];
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_Play, nullptr, CLSCTX_INPROC_SERVER, IID_IUnknown, &play));
    for (int i = 0; i < 3; ++i)
        EXPECT_EQ(S_OK, play->QueryInterface(i == 0 ? IID_IPlay : i == 1 ? IID_IPlay2 : IID_IPlayCD, &chain[i]));
    EXPECT_EQ(chain[0].Get(), chain[1].Get()) << "one pointer for the Play chain";
    EXPECT_EQ(chain[0].Get(), chain[2].Get());
    EXPECT_EQ(S_OK, QueryTo(play, IID_ITextDisplay, text));
    EXPECT_EQ(S_OK, QueryTo(text, IID_IUnknown, again));
    EXPECT_EQ(play.Get(), again.Get()) << "every interface leads back to the same identity";
    ExpectRefused(play.Get(), {&IID_IDispatch, &IID_IQueryFileInfo, &IID_IPlayEvents, &IID_IPlayCDEvents,
                               &IID_IConnectionPoint, &IID_IClassFactory, &IID_IPersist});
    EXPECT_EQ(7u, again->AddRef()) << "one count: play, three of the chain, text, again and this";
    EXPECT_EQ(6u, again->Release());
    for (auto& p : chain)
        p.Reset();
    text.Reset();
    again.Reset();
    EXPECT_EQ(0u, play.Detach()->Release());

    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_QueryFileInfo, nullptr, CLSCTX_INPROC_SERVER, IID_IQueryFileInfo, &query));
    EXPECT_EQ(S_OK, QueryTo(query, IID_IUnknown, again));
    EXPECT_EQ(query.Get(), again.Get());
    ExpectRefused(query.Get(), {&IID_IDispatch, &IID_IPlay, &IID_ITextDisplay, &IID_IConnectionPointContainer});
    EXPECT_EQ(1u, again.Detach()->Release());
    EXPECT_EQ(0u, query.Detach()->Release());
}

TEST_F(ComObjects, AggregatedOnlyAsIUnknownWhoseInterfacesCountAndQueryOnTheOuter)
{
    RecordingOuter outer;
    for (REFCLSID clsid : {CLSID_Play, CLSID_QueryFileInfo})
    {
        void* pv = reinterpret_cast<void*>(0x1);
        EXPECT_EQ(CLASS_E_NOAGGREGATION, CoCreateInstance(clsid, &outer, CLSCTX_INPROC_SERVER, IID_IPlay, &pv));
        EXPECT_EQ(nullptr, pv);
    }
    EXPECT_EQ(0, outer.addRefs);
    ComPtr<IUnknown> inner, self, viaInterface, queryInner;
    ComPtr<IPlay> play;
    ComPtr<IPlay2> play2;
    ComPtr<IQueryFileInfo> query;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_Play, &outer, CLSCTX_INPROC_SERVER, IID_IUnknown, &inner));
    EXPECT_EQ(S_OK, QueryTo(inner, IID_IUnknown, self));
    EXPECT_EQ(inner.Get(), self.Get()) << "the inner unknown answers IUnknown itself";
    EXPECT_NE(static_cast<IUnknown*>(&outer), inner.Get());
    const LONG addRefsBefore = outer.addRefs;
    ASSERT_EQ(S_OK, QueryTo(inner, IID_IPlay, play));
    EXPECT_EQ(addRefsBefore + 1, outer.addRefs) << "the handed-out interface is counted on the outer";
    EXPECT_EQ(S_OK, QueryTo(play, IID_IUnknown, viaInterface));
    EXPECT_EQ(static_cast<IUnknown*>(&outer), viaInterface.Get());
    const LONG queriesBefore = outer.queries;
    EXPECT_EQ(E_NOINTERFACE, QueryTo(play, IID_IPlay2, play2)) << "the outer decides, and it knows no IPlay2";
    EXPECT_EQ(queriesBefore + 1, outer.queries);
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_QueryFileInfo, &outer, CLSCTX_INPROC_SERVER, IID_IUnknown, &queryInner));
    EXPECT_EQ(S_OK, QueryTo(queryInner, IID_IQueryFileInfo, query));
    play.Reset();
    viaInterface.Reset();
    query.Reset();
    EXPECT_EQ(outer.addRefs, outer.releases) << "every count taken on the outer was given back";
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
    RecordingOuter outer;
    ASSERT_EQ(S_OK, pfnGetClassObject(CLSID_Play, IID_IClassFactory, &factory));
    EXPECT_EQ(S_FALSE, pfnCanUnloadNow()) << "a class object is held";
    EXPECT_EQ(S_OK, QueryTo(factory, IID_IUnknown, unknown));
    EXPECT_EQ(E_POINTER, factory->QueryInterface(IID_IClassFactory, nullptr));
    ExpectRefused(factory.Get(), {&IID_IDispatch, &IID_IPlay});
    EXPECT_EQ(E_POINTER, factory->CreateInstance(nullptr, IID_IPlay, nullptr));
    for (IUnknown* pOuter : {static_cast<IUnknown*>(&outer), static_cast<IUnknown*>(nullptr)})
    {
        pv = reinterpret_cast<void*>(0x1);
        EXPECT_EQ(pOuter ? CLASS_E_NOAGGREGATION : E_NOINTERFACE, factory->CreateInstance(pOuter, IID_IQueryFileInfo, &pv));
        EXPECT_EQ(nullptr, pv);
    }
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
