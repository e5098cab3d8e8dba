// Building a graph by hand, filter by filter, for back-ends that cannot leave it to automatic
// rendering (the CD graph). Pins are handed out with a reference the caller releases.
#pragma once

#include <windows.h>

#include <dshow.h>

class CFilterGraphHelper
{
public:
    // The first pin of that direction, connected or not; S_FALSE and a null pin when none.
    static HRESULT FindPinByDirection(IBaseFilter* pFilter, PIN_DIRECTION direction, IPin** ppPin);
    static HRESULT FindInputPin(IBaseFilter* pFilter, IPin** ppPin);
    static HRESULT FindOutputPin(IBaseFilter* pFilter, IPin** ppPin);

    static HRESULT AddFilterToGraph(IFilterGraph* pGraph, IBaseFilter* pFilter);

    // Allocator properties, when given, are only a suggestion to whichever pin takes them.
    static HRESULT ConnectPins(IFilterGraph* pGraph, IPin* pOutput, IPin* pInput,
                               const AM_MEDIA_TYPE* pMediaType,
                               const ALLOCATOR_PROPERTIES* pAllocatorProperties);
    // Joins the upstream filter's first output pin to the downstream filter's first input pin.
    static HRESULT ConnectFilters(IFilterGraph* pGraph, IBaseFilter* pUpstream,
                                  IBaseFilter* pDownstream, const AM_MEDIA_TYPE* pMediaType,
                                  const ALLOCATOR_PROPERTIES* pAllocatorProperties);

private:
    // Each side that negotiates buffers hears the suggestion; none is made without properties.
    static void SuggestAllocatorProperties(IUnknown* pUpstream, IUnknown* pDownstream,
                                           const ALLOCATOR_PROPERTIES* pAllocatorProperties);
};
