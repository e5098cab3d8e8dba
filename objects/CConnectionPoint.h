// One outgoing interface of the Play object. It is part of the object: its reference count is
// the object's, and it holds the sinks advised on it.
#pragma once

#include <windows.h>
#include <ocidl.h>

#include "objects/CSinkList.h"

class CConnectionPoint final : public IConnectionPoint
{
public:
    CConnectionPoint(IConnectionPointContainer* pContainer, const IID& iid);
    CConnectionPoint(const CConnectionPoint&) = delete;
    CConnectionPoint& operator=(const CConnectionPoint&) = delete;

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    STDMETHODIMP GetConnectionInterface(IID* piid) override;
    STDMETHODIMP GetConnectionPointContainer(IConnectionPointContainer** ppCPC) override;
    STDMETHODIMP Advise(IUnknown* pUnkSink, DWORD* pdwCookie) override;
    STDMETHODIMP Unadvise(DWORD dwCookie) override;
    STDMETHODIMP EnumConnections(IEnumConnections** ppEnum) override;

    // Calls every sink in slot order, each held by a reference for its own call, so that a sink
    // may unadvise itself or advise others from inside the event. Returns the last sink's answer.
    template <class I, class Call>
    HRESULT Fire(Call call)
    {
        HRESULT hr = S_OK;
        const int nSize = m_sinks.Size(); // sinks added beyond it wait for the next event
        for (int i = 0; i < nSize; ++i)
        {
            IUnknown* pSink = m_sinks.At(i);
            if (!pSink)
                continue;
            pSink->AddRef();
            hr = call(static_cast<I*>(static_cast<void*>(pSink)));
            pSink->Release();
        }
        return hr;
    }

    const IID& Iid() const { return m_iid; }
    void ReleaseSinks() { m_sinks.ReleaseAll(); }

private:
    IConnectionPointContainer* m_pContainer; // the owning object, not counted
    const IID m_iid;
    CSinkList m_sinks;
};
