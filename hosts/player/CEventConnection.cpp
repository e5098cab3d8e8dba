#include "hosts/player/CEventConnection.h"

HRESULT CEventConnection::Connect(IUnknown* pSource, REFIID riidEvents, IUnknown* pSink)
{
    Disconnect();
    ComPtr<IConnectionPointContainer> container;
    HRESULT hr = pSource->QueryInterface(IID_IConnectionPointContainer, &container);
    if (SUCCEEDED(hr))
        hr = container->FindConnectionPoint(riidEvents, &m_point);
    if (SUCCEEDED(hr))
        hr = m_point->Advise(pSink, &m_dwCookie);
    if (FAILED(hr))
        m_point.Reset();
    return hr;
}

void CEventConnection::Disconnect()
{
    if (m_point && m_dwCookie)
        m_point->Unadvise(m_dwCookie);
    m_dwCookie = 0;
    m_point.Reset();
}
