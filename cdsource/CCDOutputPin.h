// The filter's one output pin, "Output". It offers and accepts only CCDMediaType's type, uses
// the connected input pin's allocator or a memory allocator of its own, and answers
// IMediaSeeking for the filter. It lives inside the filter and shares its reference count and
// its lock.
#pragma once

#include <windows.h>

#include <dshow.h>

#include <cstdint>

#include "cdsource/CPositionSeeking.h"
#include "cdsource/CSampleStreamer.h"
#include "engine/ComPtr.h"

class CCDAudioSource;

class CCDOutputPin final : public IPin
{
public:
    static const WCHAR kName[];
    // Samples of a little more than a tenth of a second, in whole sectors.
    static const uint32_t kSectorsPerSample = 8;
    // Enough queued in the renderer to ride out a slow read.
    static const long kBuffers = 4;

    explicit CCDOutputPin(CCDAudioSource* pFilter);
    CCDOutputPin(const CCDOutputPin&) = delete;
    CCDOutputPin& operator=(const CCDOutputPin&) = delete;
    virtual ~CCDOutputPin() = default;

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    STDMETHODIMP Connect(IPin* pReceivePin, const AM_MEDIA_TYPE* pmt) override;
    STDMETHODIMP ReceiveConnection(IPin* pConnector, const AM_MEDIA_TYPE* pmt) override;
    STDMETHODIMP Disconnect() override;
    STDMETHODIMP ConnectedTo(IPin** ppPin) override;
    STDMETHODIMP ConnectionMediaType(AM_MEDIA_TYPE* pmt) override;
    STDMETHODIMP QueryPinInfo(PIN_INFO* pInfo) override;
    STDMETHODIMP QueryDirection(PIN_DIRECTION* pDirection) override;
    STDMETHODIMP QueryId(LPWSTR* ppwszId) override;
    STDMETHODIMP QueryAccept(const AM_MEDIA_TYPE* pmt) override;
    STDMETHODIMP EnumMediaTypes(IEnumMediaTypes** ppEnum) override;
    STDMETHODIMP QueryInternalConnections(IPin** ppPins, ULONG* pnPins) override;
    STDMETHODIMP EndOfStream() override;
    STDMETHODIMP BeginFlush() override;
    STDMETHODIMP EndFlush() override;
    STDMETHODIMP NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate) override;

    // For the filter, under its lock.
    bool IsConnected() const { return static_cast<bool>(m_pConnected); }
    IPin* ConnectedPin() const { return m_pConnected.Get(); }
    // What the streaming thread delivers to; only while connected.
    CSampleStreamer::Target StreamTarget(IMediaEventSink* pEvents) const;

private:
    // Settles the buffers with the input pin: its requirements, then its allocator, then one
    // of our own; the one it takes (NotifyAllocator) is the connection's.
    HRESULT DecideAllocator(IMemInputPin* pInput);
    HRESULT TryAllocator(IMemInputPin* pInput, IMemAllocator* pAllocator, const ALLOCATOR_PROPERTIES& wanted);

    CCDAudioSource* m_pFilter;
    CPositionSeeking m_seeking;
    ComPtr<IPin> m_pConnected;
    ComPtr<IMemInputPin> m_pInput;
    ComPtr<IMemAllocator> m_pAllocator;
    uint32_t m_ulSectorsPerSample = kSectorsPerSample;
};
