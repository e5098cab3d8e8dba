// The inner, non-delegating unknown of an aggregated T. The outer object holds it; it answers
// IUnknown with its own identity and hands every other interface of T out, counted on the outer.
#pragma once

#include <windows.h>

#include "engine/CComContainedObject.h"
#include "engine/CComRefCount.h"

template <class T>
class CComAggObject final : public IUnknown
{
public:
    explicit CComAggObject(IUnknown* pOuter) : m_contained(pOuter) {}
    virtual ~CComAggObject() = default;

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
    STDMETHODIMP_(ULONG) AddRef() override { return m_refCount.AddRef(); }
    STDMETHODIMP_(ULONG) Release() override
    {
        return m_refCount.Release([this] {
            m_contained.FinalRelease();
            delete this;
        });
    }

private:
    CComRefCount m_refCount;
    CComContainedObject<T> m_contained;
};
