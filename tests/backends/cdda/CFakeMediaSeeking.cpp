#include "CFakeMediaSeeking.h"

HRESULT CFakeMediaSeeking::QueryInterface(REFIID riid, void** ppv)
{
    if (!ppv)
        return E_POINTER;
    if (riid != IID_IUnknown && riid != IID_IMediaSeeking)
    {
        *ppv = nullptr;
        return E_NOINTERFACE;
    }
    *ppv = static_cast<IMediaSeeking*>(this);
    AddRef();
    return S_OK;
}

HRESULT CFakeMediaSeeking::GetCurrentPosition(LONGLONG* pllCurrent)
{
    if (SUCCEEDED(hrPosition))
        *pllCurrent = llPosition;
    return hrPosition;
}

HRESULT CFakeMediaSeeking::GetAvailable(LONGLONG* pllEarliest, LONGLONG* pllLatest)
{
    *pllEarliest = llEarliest;
    *pllLatest = llLatest;
    return S_OK;
}

HRESULT CFakeMediaSeeking::SetPositions(LONGLONG* pllCurrent, DWORD dwCurrentFlags, LONGLONG* pllStop, DWORD dwStopFlags)
{
    seeks.push_back({pllCurrent ? *pllCurrent : -1, dwCurrentFlags, pllStop != nullptr, dwStopFlags});
    return hrSetPositions;
}
