// Creates an instance of T for a class object, plain or aggregated, the way every class of
// the engine is created: allocate, final construction, then the asked-for interface; the new
// object is destroyed again when either step fails.
#pragma once

#include <windows.h>

#include <new>

#include "engine/CComAggObject.h"
#include "engine/CComObject.h"
#include "engine/ComBoundary.h"

template <class T>
class CComCreator
{
public:
    static HRESULT CreateInstance(IUnknown* pOuter, REFIID riid, void** ppv)
    {
        if (!ppv)
            return E_POINTER;
        *ppv = nullptr;
        // An object's constructor may allocate what it owns (the dispatcher and its back-ends).
        return ComBoundary([&]() -> HRESULT {
            return pOuter ? Create(new (std::nothrow) CComAggObject<T>(pOuter), riid, ppv)
                          : Create(new (std::nothrow) CComObject<T>(), riid, ppv);
        });
    }

private:
    template <class O>
    static HRESULT Create(O* pObject, REFIID riid, void** ppv)
    {
        if (!pObject)
            return E_OUTOFMEMORY;
        pObject->AddRef(); // keeps it alive through a FinalConstruct that hands itself out
        HRESULT hr = pObject->FinalConstruct();
        if (SUCCEEDED(hr))
            hr = pObject->QueryInterface(riid, ppv);
        pObject->Release(); // destroys it when nothing above took a reference
        return hr;
    }
};
