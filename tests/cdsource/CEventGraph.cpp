#include "CEventGraph.h"

CEventGraph::CEventGraph()
{
    InitializeCriticalSection(&m_cs);
}

CEventGraph::~CEventGraph()
{
    DeleteCriticalSection(&m_cs);
}

STDMETHODIMP CEventGraph::QueryInterface(REFIID riid, void** ppv)
{
    if (!ppv)
        return E_POINTER;
    if (riid == IID_IUnknown || riid == IID_IFilterGraph)
        *ppv = static_cast<IFilterGraph*>(this);
    else if (riid == IID_IMediaEventSink)
        *ppv = static_cast<IMediaEventSink*>(this);
    else
    {
        *ppv = nullptr;
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

STDMETHODIMP_(ULONG) CEventGraph::Release()
{
    const LONG lRef = InterlockedDecrement(&m_lRef);
    if (lRef == 0)
        delete this;
    return static_cast<ULONG>(lRef);
}

STDMETHODIMP CEventGraph::Notify(long lCode, LONG_PTR lParam1, LONG_PTR lParam2)
{
    EnterCriticalSection(&m_cs);
    m_events.push_back({lCode, lParam1, lParam2});
    LeaveCriticalSection(&m_cs);
    return S_OK;
}

std::vector<CEventGraph::Event> CEventGraph::Events() const
{
    EnterCriticalSection(&m_cs);
    std::vector<Event> events = m_events;
    LeaveCriticalSection(&m_cs);
    return events;
}
