// A stand-alone object of class T: T supplies its interfaces through InternalQueryInterface,
// this supplies the reference count. The object keeps the library loaded while it lives.
#pragma once

#include <windows.h>

#include "engine/CComRefCount.h"

template <class T>
class CComObject final : public T
{
public:
    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override
    {
        if (!ppv)
            return E_POINTER;
        *ppv = riid == IID_IUnknown ? this->GetUnknown() : this->InternalQueryInterface(riid);
        if (!*ppv)
            return E_NOINTERFACE;
        AddRef();
        return S_OK;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return m_refCount.AddRef(); }
    STDMETHODIMP_(ULONG) Release() override
    {
        return m_refCount.Release([this] {
            this->FinalRelease();
            delete this;
        });
    }

private:
    CComRefCount m_refCount;
};
