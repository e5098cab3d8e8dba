#include "backends/dshow/CFilterGraphHelper.h"

#include <initializer_list>

#include "engine/ComPtr.h"

HRESULT CFilterGraphHelper::FindPinByDirection(IBaseFilter* pFilter, PIN_DIRECTION direction,
                                               IPin** ppPin)
{
    if (!ppPin)
        return E_POINTER;
    *ppPin = nullptr;
    if (!pFilter)
        return E_POINTER;

    ComPtr<IEnumPins> pins;
    HRESULT hr = pFilter->EnumPins(&pins);
    if (FAILED(hr))
        return hr;
    for (;;)
    {
        ComPtr<IPin> pin;
        ULONG fetched = 0;
        hr = pins->Next(1, &pin, &fetched);
        if (FAILED(hr))
            return hr;
        if (hr != S_OK || fetched != 1)
            return S_FALSE;
        PIN_DIRECTION pinDirection;
        hr = pin->QueryDirection(&pinDirection);
        if (FAILED(hr))
            return hr;
        if (pinDirection == direction)
        {
            *ppPin = pin.Detach();
            return S_OK;
        }
    }
}

HRESULT CFilterGraphHelper::FindInputPin(IBaseFilter* pFilter, IPin** ppPin)
{
    return FindPinByDirection(pFilter, PINDIR_INPUT, ppPin);
}

HRESULT CFilterGraphHelper::FindOutputPin(IBaseFilter* pFilter, IPin** ppPin)
{
    return FindPinByDirection(pFilter, PINDIR_OUTPUT, ppPin);
}

HRESULT CFilterGraphHelper::AddFilterToGraph(IFilterGraph* pGraph, IBaseFilter* pFilter)
{
    if (!pGraph || !pFilter)
        return E_POINTER;
    return pGraph->AddFilter(pFilter, nullptr);
}

void CFilterGraphHelper::SuggestAllocatorProperties(IUnknown* pUpstream, IUnknown* pDownstream,
                                                    const ALLOCATOR_PROPERTIES* pAllocatorProperties)
{
    if (!pAllocatorProperties)
        return;
    for (IUnknown* pObject : {pUpstream, pDownstream})
    {
        ComPtr<IAMBufferNegotiation> negotiation;
        if (SUCCEEDED(pObject->QueryInterface(IID_IAMBufferNegotiation, &negotiation)))
            negotiation->SuggestAllocatorProperties(pAllocatorProperties);
    }
}

HRESULT CFilterGraphHelper::ConnectPins(IFilterGraph* pGraph, IPin* pOutput, IPin* pInput,
                                        const AM_MEDIA_TYPE* pMediaType,
                                        const ALLOCATOR_PROPERTIES* pAllocatorProperties)
{
    if (!pGraph || !pOutput || !pInput)
        return E_POINTER;
    SuggestAllocatorProperties(pOutput, pInput, pAllocatorProperties);
    return pGraph->ConnectDirect(pOutput, pInput, pMediaType);
}

HRESULT CFilterGraphHelper::ConnectFilters(IFilterGraph* pGraph, IBaseFilter* pUpstream,
                                           IBaseFilter* pDownstream, const AM_MEDIA_TYPE* pMediaType,
                                           const ALLOCATOR_PROPERTIES* pAllocatorProperties)
{
    if (!pGraph || !pUpstream || !pDownstream)
        return E_POINTER;
    SuggestAllocatorProperties(pUpstream, pDownstream, pAllocatorProperties);
    ComPtr<IPin> output;
    HRESULT hr = FindOutputPin(pUpstream, &output);
    if (FAILED(hr))
        return hr;
    ComPtr<IPin> input;
    hr = FindInputPin(pDownstream, &input);
    if (FAILED(hr))
        return hr;
    // A side without a pin of that direction arrives as a missing pin and is refused there.
    return ConnectPins(pGraph, output.Get(), input.Get(), pMediaType, pAllocatorProperties);
}
