// A standard COM enumerator over a snapshot of items (Next, Skip, Reset, Clone). Each item is
// held with whatever reference Policy takes, and the library stays loaded while it exists.
#pragma once

#include <windows.h>

#include <new>
#include <vector>

#include "engine/CModuleLock.h"
#include "engine/ComBoundary.h"

template <class IEnum, const IID* piid, class T, class Policy>
class CComEnum final : public IEnum
{
public:
    // Takes its own references on the items.
    static HRESULT Create(const std::vector<T>& items, IEnum** ppEnum)
    {
        return Make(items, 0, ppEnum);
    }

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override
    {
        if (!ppv)
            return E_POINTER;
        if (riid == IID_IUnknown || riid == *piid)
        {
            *ppv = static_cast<IEnum*>(this);
            AddRef();
            return S_OK;
        }
        *ppv = nullptr;
        return E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&m_lRef)); }
    STDMETHODIMP_(ULONG) Release() override
    {
        const LONG lRef = InterlockedDecrement(&m_lRef);
        if (lRef == 0)
            delete this;
        return static_cast<ULONG>(lRef);
    }

    STDMETHODIMP Next(ULONG cItems, T* pItems, ULONG* pcFetched) override
    {
        if (!pItems || (cItems > 1 && !pcFetched))
            return E_POINTER;
        ULONG cFetched = 0;
        for (; cFetched < cItems && m_nPos < m_items.size(); ++cFetched, ++m_nPos)
        {
            pItems[cFetched] = m_items[m_nPos];
            Policy::AddRef(pItems[cFetched]);
        }
        if (pcFetched)
            *pcFetched = cFetched;
        return cFetched == cItems ? S_OK : S_FALSE;
    }
    STDMETHODIMP Skip(ULONG cItems) override
    {
        const size_t nLeft = m_items.size() - m_nPos;
        m_nPos += cItems < nLeft ? cItems : nLeft;
        return cItems <= nLeft ? S_OK : S_FALSE;
    }
    STDMETHODIMP Reset() override
    {
        m_nPos = 0;
        return S_OK;
    }
    STDMETHODIMP Clone(IEnum** ppEnum) override
    {
        return Make(m_items, m_nPos, ppEnum);
    }

private:
    // The snapshot is a copy: the copy, not only the object, may find no memory.
    static HRESULT Make(const std::vector<T>& items, size_t nPos, IEnum** ppEnum)
    {
        if (!ppEnum)
            return E_POINTER;
        *ppEnum = nullptr;
        return ComBoundary([&]() -> HRESULT {
            *ppEnum = new (std::nothrow) CComEnum(items, nPos);
            return *ppEnum ? S_OK : E_OUTOFMEMORY;
        });
    }

    CComEnum(const std::vector<T>& items, size_t nPos) : m_items(items), m_nPos(nPos)
    {
        for (T& item : m_items)
            Policy::AddRef(item);
        CModuleLock::Lock();
    }
    ~CComEnum()
    {
        for (T& item : m_items)
            Policy::Release(item);
        CModuleLock::Unlock();
    }

    LONG m_lRef = 1;
    std::vector<T> m_items;
    size_t m_nPos;
};
