#include "cdsource/CCDOutputPin.h"

#include <cstring>

#include "cdsource/CCDAudioSource.h"
#include "cdsource/CCDMediaType.h"
#include "cdsource/CMediaTypeEnum.h"
#include "cdsource/CScopedLock.h"
#include "trace/Trace.h"

const WCHAR CCDOutputPin::kName[] = L"Output";

CCDOutputPin::CCDOutputPin(CCDAudioSource* pFilter)
    : m_pFilter(pFilter), m_seeking(static_cast<IPin*>(this), pFilter)
{
}

STDMETHODIMP CCDOutputPin::QueryInterface(REFIID riid, void** ppv)
{
    if (!ppv)
        return E_POINTER;
    if (riid == IID_IUnknown || riid == IID_IPin)
        *ppv = static_cast<IPin*>(this);
    else if (riid == IID_IMediaSeeking)
        *ppv = static_cast<IMediaSeeking*>(&m_seeking);
    else
    {
        *ppv = nullptr;
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

// A pin lives as long as its filter, so its references are the filter's.
STDMETHODIMP_(ULONG) CCDOutputPin::AddRef()
{
    return static_cast<IBaseFilter*>(m_pFilter)->AddRef();
}

STDMETHODIMP_(ULONG) CCDOutputPin::Release()
{
    return static_cast<IBaseFilter*>(m_pFilter)->Release();
}

STDMETHODIMP CCDOutputPin::Connect(IPin* pReceivePin, const AM_MEDIA_TYPE* pmt)
{
    if (!pReceivePin)
        return E_POINTER;
    CScopedLock lock(m_pFilter->FilterLock());
    if (m_pConnected)
        return VFW_E_ALREADY_CONNECTED;
    if (!m_pFilter->IsStopped())
        return VFW_E_NOT_STOPPED;
    if (!CCDMediaType::Allows(pmt))
        return VFW_E_TYPE_NOT_ACCEPTED;
    PIN_DIRECTION direction = PINDIR_OUTPUT;
    if (FAILED(pReceivePin->QueryDirection(&direction)) || direction != PINDIR_INPUT)
        return VFW_E_INVALID_DIRECTION;

    AM_MEDIA_TYPE mt;
    HRESULT hr = CCDMediaType::Fill(&mt);
    if (FAILED(hr))
        return hr;
    hr = pReceivePin->ReceiveConnection(static_cast<IPin*>(this), &mt);
    CCDMediaType::FreeFormat(&mt);
    if (FAILED(hr))
    {
        TESSALY_TRACE("E:CCDOutputPin::Connect> ReceiveConnection refused, hr = 0x%08lx", static_cast<unsigned long>(hr));
        return hr;
    }

    ComPtr<IMemInputPin> input;
    hr = pReceivePin->QueryInterface(IID_IMemInputPin, &input);
    if (FAILED(hr))
        hr = VFW_E_NO_TRANSPORT;
    else
        hr = DecideAllocator(input.Get());
    if (FAILED(hr))
    {
        TESSALY_TRACE("E:CCDOutputPin::Connect> no transport, hr = 0x%08lx", static_cast<unsigned long>(hr));
        // The input pin already took the connection; it is told that it did not happen.
        pReceivePin->Disconnect();
        return hr;
    }
    m_pConnected = pReceivePin;
    m_pInput = input;
    return S_OK;
}

HRESULT CCDOutputPin::TryAllocator(IMemInputPin* pInput, IMemAllocator* pAllocator, const ALLOCATOR_PROPERTIES& wanted)
{
    ALLOCATOR_PROPERTIES request = wanted;
    ALLOCATOR_PROPERTIES actual;
    std::memset(&actual, 0, sizeof(actual));
    HRESULT hr = pAllocator->SetProperties(&request, &actual);
    if (FAILED(hr))
        return hr;
    // A sample must hold at least one whole sector.
    if (actual.cbBuffer < static_cast<long>(CCDReader::kSectorBytes) || actual.cBuffers < 1)
        return VFW_E_SIZENOTSET;
    hr = pInput->NotifyAllocator(pAllocator, FALSE);
    if (FAILED(hr))
        return hr;
    const uint32_t ulFit = static_cast<uint32_t>(actual.cbBuffer) / CCDReader::kSectorBytes;
    m_ulSectorsPerSample = ulFit < kSectorsPerSample ? ulFit : kSectorsPerSample;
    m_pAllocator = pAllocator;
    return S_OK;
}

HRESULT CCDOutputPin::DecideAllocator(IMemInputPin* pInput)
{
    ALLOCATOR_PROPERTIES requirements;
    std::memset(&requirements, 0, sizeof(requirements));
    if (FAILED(pInput->GetAllocatorRequirements(&requirements)))
        std::memset(&requirements, 0, sizeof(requirements));
    ALLOCATOR_PROPERTIES wanted;
    wanted.cBuffers = requirements.cBuffers > kBuffers ? requirements.cBuffers : kBuffers;
    const long cbSample = static_cast<long>(kSectorsPerSample * CCDReader::kSectorBytes);
    wanted.cbBuffer = requirements.cbBuffer > cbSample ? requirements.cbBuffer : cbSample;
    wanted.cbAlign = requirements.cbAlign > 1 ? requirements.cbAlign : 1;
    wanted.cbPrefix = requirements.cbPrefix > 0 ? requirements.cbPrefix : 0;

    ComPtr<IMemAllocator> allocator;
    HRESULT hr = pInput->GetAllocator(&allocator);
    if (SUCCEEDED(hr) && allocator)
    {
        hr = TryAllocator(pInput, allocator.Get(), wanted);
        if (SUCCEEDED(hr))
            return hr;
    }
    hr = CoCreateInstance(CLSID_MemoryAllocator, nullptr, CLSCTX_INPROC_SERVER, IID_IMemAllocator, &allocator);
    if (FAILED(hr))
        return hr;
    return TryAllocator(pInput, allocator.Get(), wanted);
}

STDMETHODIMP CCDOutputPin::ReceiveConnection(IPin*, const AM_MEDIA_TYPE*)
{
    // Only input pins are connected to.
    return E_UNEXPECTED;
}

STDMETHODIMP CCDOutputPin::Disconnect()
{
    CScopedLock lock(m_pFilter->FilterLock());
    if (!m_pFilter->IsStopped())
        return VFW_E_NOT_STOPPED;
    if (!m_pConnected)
        return S_FALSE;
    m_pAllocator->Decommit();
    m_pAllocator.Reset();
    m_pInput.Reset();
    m_pConnected.Reset();
    m_ulSectorsPerSample = kSectorsPerSample;
    return S_OK;
}

STDMETHODIMP CCDOutputPin::ConnectedTo(IPin** ppPin)
{
    if (!ppPin)
        return E_POINTER;
    CScopedLock lock(m_pFilter->FilterLock());
    *ppPin = m_pConnected.Get();
    if (!*ppPin)
        return VFW_E_NOT_CONNECTED;
    (*ppPin)->AddRef();
    return S_OK;
}

STDMETHODIMP CCDOutputPin::ConnectionMediaType(AM_MEDIA_TYPE* pmt)
{
    if (!pmt)
        return E_POINTER;
    CScopedLock lock(m_pFilter->FilterLock());
    if (!m_pConnected)
    {
        std::memset(pmt, 0, sizeof(*pmt));
        return VFW_E_NOT_CONNECTED;
    }
    return CCDMediaType::Fill(pmt);
}

STDMETHODIMP CCDOutputPin::QueryPinInfo(PIN_INFO* pInfo)
{
    if (!pInfo)
        return E_POINTER;
    pInfo->pFilter = static_cast<IBaseFilter*>(m_pFilter);
    pInfo->pFilter->AddRef();
    lstrcpynW(pInfo->achName, kName, MAX_PIN_NAME);
    pInfo->dir = PINDIR_OUTPUT;
    return S_OK;
}

STDMETHODIMP CCDOutputPin::QueryDirection(PIN_DIRECTION* pDirection)
{
    if (!pDirection)
        return E_POINTER;
    *pDirection = PINDIR_OUTPUT;
    return S_OK;
}

STDMETHODIMP CCDOutputPin::QueryId(LPWSTR* ppwszId)
{
    if (!ppwszId)
        return E_POINTER;
    *ppwszId = static_cast<LPWSTR>(CoTaskMemAlloc(sizeof(kName)));
    if (!*ppwszId)
        return E_OUTOFMEMORY;
    std::memcpy(*ppwszId, kName, sizeof(kName));
    return S_OK;
}

STDMETHODIMP CCDOutputPin::QueryAccept(const AM_MEDIA_TYPE* pmt)
{
    if (!pmt)
        return E_POINTER;
    return CCDMediaType::Matches(*pmt) ? S_OK : S_FALSE;
}

STDMETHODIMP CCDOutputPin::EnumMediaTypes(IEnumMediaTypes** ppEnum)
{
    return CMediaTypeEnum::Create(ppEnum);
}

STDMETHODIMP CCDOutputPin::QueryInternalConnections(IPin**, ULONG*)
{
    return E_NOTIMPL;
}

// Stream control travels downstream from an output pin, never into it.
STDMETHODIMP CCDOutputPin::EndOfStream()
{
    return E_UNEXPECTED;
}

STDMETHODIMP CCDOutputPin::BeginFlush()
{
    return E_UNEXPECTED;
}

STDMETHODIMP CCDOutputPin::EndFlush()
{
    return E_UNEXPECTED;
}

STDMETHODIMP CCDOutputPin::NewSegment(REFERENCE_TIME, REFERENCE_TIME, double)
{
    return E_UNEXPECTED;
}

CSampleStreamer::Target CCDOutputPin::StreamTarget(IMediaEventSink* pEvents) const
{
    CSampleStreamer::Target target;
    target.pPin = m_pConnected.Get();
    target.pInput = m_pInput.Get();
    target.pAllocator = m_pAllocator.Get();
    target.ulSectorsPerSample = m_ulSectorsPerSample;
    target.pEvents = pEvents;
    return target;
}
