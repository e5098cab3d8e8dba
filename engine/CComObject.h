// A stand-alone object of class T: T supplies its interfaces through InternalQueryInterface,
// this supplies the reference count. The object keeps the library loaded while it lives.
#pragma once

#include <windows.h>

#include "engine/CModuleLock.h"

template <class T>
class CComObject final : public T
{
public:
    CComObject() { CModuleLock::Lock(); }
    ~CComObject() override { CModuleLock::Unlock(); }

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
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&m_lRef)); }
    STDMETHODIMP_(ULONG) Release() override
    {
        const LONG lRef = InterlockedDecrement(&m_lRef);
        if (lRef == 0)
        {
            // Guards against a re-entrant AddRef/Release pair from inside FinalRelease.
            m_lRef = 1;
            this->FinalRelease();
            delete this;
        }
        return static_cast<ULONG>(lRef);
    }

private:
    LONG m_lRef = 0;
};
