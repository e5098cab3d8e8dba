#include "objects/CConnectionPoint.h"

#include <olectl.h>

#include <vector>

#include "engine/ComBoundary.h"
#include "engine/CComEnum.h"

namespace {

struct ConnectDataPolicy
{
    static void AddRef(CONNECTDATA& cd) { cd.pUnk->AddRef(); }
    static void Release(CONNECTDATA& cd) { cd.pUnk->Release(); }
};

typedef CComEnum<IEnumConnections, &IID_IEnumConnections, CONNECTDATA, ConnectDataPolicy> CEnumConnections;

} // namespace

CConnectionPoint::CConnectionPoint(IConnectionPointContainer* pContainer, const IID& iid)
    : m_pContainer(pContainer), m_iid(iid)
{
}

STDMETHODIMP CConnectionPoint::QueryInterface(REFIID riid, void** ppv)
{
    if (!ppv)
        return E_POINTER;
    if (riid == IID_IUnknown || riid == IID_IConnectionPoint)
    {
        *ppv = static_cast<IConnectionPoint*>(this);
        AddRef();
        return S_OK;
    }
    *ppv = nullptr;
    return E_NOINTERFACE;
}

STDMETHODIMP_(ULONG) CConnectionPoint::AddRef()
{
    return m_pContainer->AddRef();
}

STDMETHODIMP_(ULONG) CConnectionPoint::Release()
{
    return m_pContainer->Release();
}

STDMETHODIMP CConnectionPoint::GetConnectionInterface(IID* piid)
{
    if (!piid)
        return E_POINTER;
    *piid = m_iid;
    return S_OK;
}

STDMETHODIMP CConnectionPoint::GetConnectionPointContainer(IConnectionPointContainer** ppCPC)
{
    if (!ppCPC)
        return E_POINTER;
    *ppCPC = m_pContainer;
    m_pContainer->AddRef();
    return S_OK;
}

STDMETHODIMP CConnectionPoint::Advise(IUnknown* pUnkSink, DWORD* pdwCookie)
{
    return ComBoundary([&]() -> HRESULT {
        if (!pUnkSink || !pdwCookie)
            return E_POINTER;
        *pdwCookie = 0;
        IUnknown* pSink = nullptr;
        HRESULT hr = pUnkSink->QueryInterface(m_iid, reinterpret_cast<void**>(&pSink));
        if (hr == E_NOINTERFACE)
            return CONNECT_E_CANNOTCONNECT;
        if (FAILED(hr))
            return hr;
        if (!pSink)
            return CONNECT_E_CANNOTCONNECT;
        if (!m_sinks.Add(pSink))
        {
            pSink->Release();
            return CONNECT_E_ADVISELIMIT;
        }
        // The cookie is the sink's own interface pointer: unique while it is connected.
        *pdwCookie = static_cast<DWORD>(reinterpret_cast<UINT_PTR>(pSink));
        return S_OK;
    });
}

STDMETHODIMP CConnectionPoint::Unadvise(DWORD dwCookie)
{
    IUnknown* pSink = reinterpret_cast<IUnknown*>(static_cast<UINT_PTR>(dwCookie));
    return m_sinks.Remove(pSink) ? S_OK : CONNECT_E_NOCONNECTION;
}

STDMETHODIMP CConnectionPoint::EnumConnections(IEnumConnections** ppEnum)
{
    return ComBoundary([&]() -> HRESULT {
        if (!ppEnum)
            return E_POINTER;
        *ppEnum = nullptr;
        std::vector<CONNECTDATA> connections;
        for (int i = 0; i < m_sinks.Size(); ++i)
        {
            if (IUnknown* pSink = m_sinks.At(i))
                connections.push_back({pSink, static_cast<DWORD>(reinterpret_cast<UINT_PTR>(pSink))});
        }
        return CEnumConnections::Create(connections, ppEnum);
    });
}
