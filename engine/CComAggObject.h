// The inner, non-delegating unknown of an aggregated T. The outer object holds it; it answers
// IUnknown with its own identity and hands every other interface of T out, counted on the outer.
#pragma once

#include <windows.h>

#include "engine/CComContainedObject.h"
#include "engine/CModuleLock.h"

template <class T>
class CComAggObject final : public IUnknown
{
public:
    explicit CComAggObject(IUnknown* pOuter) : m_contained(pOuter) { CModuleLock::Lock(); }
    virtual ~CComAggObject() { CModuleLock::Unlock(); }

    HRESULT FinalConstruct() { return m_contained.FinalConstruct(); }

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override
    {
        if (!ppv)
            return E_POINTER;
        if (riid == IID_IUnknown)
        {
            *ppv = static_cast<IUnknown*>(this);
            AddRef();
            return S_OK;
        }
        *ppv = m_contained.InternalQueryInterface(riid);
        if (!*ppv)
            return E_NOINTERFACE;
        static_cast<IUnknown*>(*ppv)->AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&m_lRef)); }
    STDMETHODIMP_(ULONG) Release() override
    {
        const LONG lRef = InterlockedDecrement(&m_lRef);
        if (lRef == 0)
        {
            m_lRef = 1;
            m_contained.FinalRelease();
            delete this;
        }
        return static_cast<ULONG>(lRef);
    }

private:
    LONG m_lRef = 0;
    CComContainedObject<T> m_contained;
};
