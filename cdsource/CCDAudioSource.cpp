#include "cdsource/CCDAudioSource.h"

#include <cstring>
#include <new>
#include <vector>

#include "cdsource/CCDMediaType.h"
#include "cdsource/CScopedLock.h"
#include "cdsource/CTrackRequest.h"
#include "engine/CComEnum.h"
#include "trace/Trace.h"

namespace {

struct PinPolicy
{
    static void AddRef(IPin* p) { p->AddRef(); }
    static void Release(IPin* p) { p->Release(); }
};

typedef CComEnum<IEnumPins, &IID_IEnumPins, IPin*, PinPolicy> CEnumPins;

} // namespace

CCDAudioSource::CCDAudioSource() : m_pin(this), m_seeking(static_cast<IBaseFilter*>(this), this)
{
    InitializeCriticalSection(&m_cs);
}

CCDAudioSource::~CCDAudioSource()
{
    m_streamer.Stop();
    DeleteCriticalSection(&m_cs);
}

void CCDAudioSource::FinalRelease()
{
    m_streamer.Stop();
}

void* CCDAudioSource::InternalQueryInterface(REFIID riid)
{
    if (riid == IID_IPersist || riid == IID_IMediaFilter || riid == IID_IBaseFilter)
        return static_cast<IBaseFilter*>(this);
    if (riid == IID_IFileSourceFilter)
        return static_cast<IFileSourceFilter*>(this);
    if (riid == IID_IMediaSeeking)
        return static_cast<IMediaSeeking*>(&m_seeking);
    if (riid == IID_ICDAudioSourceConfig)
        return static_cast<ICDAudioSourceConfig*>(this);
    return nullptr;
}

STDMETHODIMP CCDAudioSource::GetClassID(CLSID* pClsid)
{
    if (!pClsid)
        return E_POINTER;
    *pClsid = CLSID_TessalyCDAudioSource;
    return S_OK;
}

IMediaEventSink* CCDAudioSource::GraphEvents() const
{
    if (!m_pGraph)
        return nullptr;
    // Held uncounted like the graph itself, which outlives every delivery of its filters.
    ComPtr<IMediaEventSink> events;
    if (FAILED(m_pGraph->QueryInterface(IID_IMediaEventSink, &events)))
        return nullptr;
    return events.Get();
}

HRESULT CCDAudioSource::StartStreaming()
{
    if (!m_pin.IsConnected())
        return S_OK;
    return m_streamer.Start(m_pin.StreamTarget(GraphEvents()));
}

STDMETHODIMP CCDAudioSource::Stop()
{
    TESSALY_TRACE("S:CCDAudioSource::Stop> from state %d", static_cast<int>(m_state.load()));
    CScopedLock lock(&m_cs);
    m_streamer.Stop();
    m_state = State_Stopped;
    return S_OK;
}

STDMETHODIMP CCDAudioSource::Pause()
{
    TESSALY_TRACE("S:CCDAudioSource::Pause> from state %d", static_cast<int>(m_state.load()));
    CScopedLock lock(&m_cs);
    if (m_state == State_Stopped)
    {
        const HRESULT hr = StartStreaming();
        if (FAILED(hr))
            return hr;
    }
    m_state = State_Paused;
    return S_OK;
}

STDMETHODIMP CCDAudioSource::Run(REFERENCE_TIME)
{
    // Delivery is paced by the renderer's clock, so the start time is of no use here.
    TESSALY_TRACE("S:CCDAudioSource::Run> from state %d", static_cast<int>(m_state.load()));
    CScopedLock lock(&m_cs);
    if (m_state == State_Stopped)
    {
        const HRESULT hr = StartStreaming();
        if (FAILED(hr))
            return hr;
    }
    m_state = State_Running;
    return S_OK;
}

STDMETHODIMP CCDAudioSource::GetState(DWORD, FILTER_STATE* pState)
{
    if (!pState)
        return E_POINTER;
    // Read without the lock: a downstream filter may ask from inside a call of the streaming
    // thread while Stop holds the lock and waits for that thread. A source has no intermediate
    // states, so the answer is always final.
    *pState = m_state;
    return S_OK;
}

STDMETHODIMP CCDAudioSource::SetSyncSource(IReferenceClock* pClock)
{
    CScopedLock lock(&m_cs);
    m_pClock = pClock;
    return S_OK;
}

STDMETHODIMP CCDAudioSource::GetSyncSource(IReferenceClock** ppClock)
{
    if (!ppClock)
        return E_POINTER;
    CScopedLock lock(&m_cs);
    *ppClock = m_pClock.Get();
    if (*ppClock)
        (*ppClock)->AddRef();
    return S_OK;
}

STDMETHODIMP CCDAudioSource::EnumPins(IEnumPins** ppEnum)
{
    if (!ppEnum)
        return E_POINTER;
    *ppEnum = nullptr;
    try
    {
        return CEnumPins::Create(std::vector<IPin*>{static_cast<IPin*>(&m_pin)}, ppEnum);
    }
    catch (...)
    {
        return E_OUTOFMEMORY;
    }
}

STDMETHODIMP CCDAudioSource::FindPin(LPCWSTR pwszId, IPin** ppPin)
{
    if (!ppPin)
        return E_POINTER;
    *ppPin = nullptr;
    if (!pwszId)
        return E_POINTER;
    if (lstrcmpW(pwszId, CCDOutputPin::kName) != 0)
        return VFW_E_NOT_FOUND;
    *ppPin = static_cast<IPin*>(&m_pin);
    (*ppPin)->AddRef();
    return S_OK;
}

STDMETHODIMP CCDAudioSource::QueryFilterInfo(FILTER_INFO* pInfo)
{
    if (!pInfo)
        return E_POINTER;
    CScopedLock lock(&m_cs);
    lstrcpynW(pInfo->achName, m_name.c_str(), MAX_FILTER_NAME);
    pInfo->pGraph = m_pGraph;
    if (pInfo->pGraph)
        pInfo->pGraph->AddRef();
    return S_OK;
}

STDMETHODIMP CCDAudioSource::JoinFilterGraph(IFilterGraph* pGraph, LPCWSTR pwszName)
{
    CScopedLock lock(&m_cs);
    try
    {
        m_name = pwszName ? pwszName : L"";
    }
    catch (...)
    {
        return E_OUTOFMEMORY;
    }
    m_pGraph = pGraph;
    return S_OK;
}

STDMETHODIMP CCDAudioSource::QueryVendorInfo(LPWSTR*)
{
    return E_NOTIMPL;
}

STDMETHODIMP CCDAudioSource::Load(LPCOLESTR pwszRequest, const AM_MEDIA_TYPE*)
{
    if (!pwszRequest)
        return E_POINTER;
    CScopedLock lock(&m_cs);
    if (m_state != State_Stopped)
        return VFW_E_NOT_STOPPED;
    // A refused range must not leave the previous one behind: a caller that connects without
    // checking the load would otherwise play tracks it no longer asked for.
    m_streamer.SetSource(nullptr, nullptr);
    m_pReader.reset();
    m_pRange.reset();
    m_request.clear();
    try
    {
        CTrackRequest request;
        HRESULT hr = request.Parse(pwszRequest);
        if (FAILED(hr))
            return hr;
        std::unique_ptr<CCDReader> pReader;
        hr = CCDReader::Open(request.Drive(), m_dwReadMode, &pReader);
        if (FAILED(hr))
        {
            TESSALY_TRACE("E:CCDAudioSource::Load> cannot open the disc, hr = 0x%08lx", static_cast<unsigned long>(hr));
            return hr;
        }
        std::unique_ptr<CTrackRange> pRange(new CTrackRange);
        hr = pRange->Select(pReader->Tracks(), request.First(), request.Last());
        if (FAILED(hr))
            return hr;
        std::wstring text(pwszRequest);

        // Nothing below can fail: the new range replaces the old one whole.
        m_streamer.SetSource(pReader.get(), pRange.get());
        m_pReader = std::move(pReader);
        m_pRange = std::move(pRange);
        m_request.swap(text);
        TESSALY_TRACE("S:CCDAudioSource::Load> %lu sectors", static_cast<unsigned long>(m_pRange->Sectors()));
        return S_OK;
    }
    catch (...)
    {
        return E_OUTOFMEMORY;
    }
}

STDMETHODIMP CCDAudioSource::GetCurFile(LPOLESTR* ppwszRequest, AM_MEDIA_TYPE* pmt)
{
    if (!ppwszRequest)
        return E_POINTER;
    *ppwszRequest = nullptr;
    CScopedLock lock(&m_cs);
    if (m_request.empty())
        return E_FAIL;
    const size_t cb = (m_request.size() + 1) * sizeof(WCHAR);
    auto* pwsz = static_cast<LPOLESTR>(CoTaskMemAlloc(cb));
    if (!pwsz)
        return E_OUTOFMEMORY;
    std::memcpy(pwsz, m_request.c_str(), cb);
    if (pmt)
    {
        const HRESULT hr = CCDMediaType::Fill(pmt);
        if (FAILED(hr))
        {
            CoTaskMemFree(pwsz);
            return hr;
        }
    }
    *ppwszRequest = pwsz;
    return S_OK;
}

STDMETHODIMP CCDAudioSource::SetReadMode(DWORD dwMode)
{
    if (dwMode != CDAudioRead_Default && dwMode != CDAudioRead_Raw)
        return E_INVALIDARG;
    CScopedLock lock(&m_cs);
    m_dwReadMode = dwMode;
    return S_OK;
}

STDMETHODIMP CCDAudioSource::GetDeliveredBytes(ULONGLONG* pcbDelivered)
{
    if (!pcbDelivered)
        return E_POINTER;
    *pcbDelivered = m_streamer.DeliveredBytes();
    return S_OK;
}

void CCDAudioSource::GetSectorPositions(uint32_t* pulSectors, uint32_t* pulStart, uint32_t* pulCurrent,
                                        uint32_t* pulStop) const
{
    *pulSectors = m_streamer.Sectors();
    m_streamer.GetPositions(pulStart, pulCurrent, pulStop);
}

HRESULT CCDAudioSource::Reposition(bool bStart, uint32_t ulStart, bool bStop, uint32_t ulStop)
{
    TESSALY_TRACE("S:CCDAudioSource::Reposition> start %d %lu, stop %d %lu, streaming %d", bStart ? 1 : 0,
                  static_cast<unsigned long>(ulStart), bStop ? 1 : 0, static_cast<unsigned long>(ulStop),
                  m_streamer.IsStarted() ? 1 : 0);
    uint32_t ulSectors, ulOldStart, ulCurrent, ulOldStop;
    GetSectorPositions(&ulSectors, &ulOldStart, &ulCurrent, &ulOldStop);
    if (!bStart)
        ulStart = ulOldStart;
    if (!bStop)
        ulStop = ulOldStop;
    if (ulStop < ulStart)
        return E_INVALIDARG;
    if (!m_streamer.IsStarted())
    {
        m_streamer.SetPositions(ulStart, ulStop);
        return S_OK;
    }
    if (!bStart)
    {
        m_streamer.SetStop(ulStop);
        return S_OK;
    }
    // The platform's graph passes one seek to every filter that answers IMediaSeeking, so this
    // one hears it twice: on itself, and through the renderer at its pin. Delivery that has just
    // begun there and is still under way, with nothing accepted yet, would only begin again the
    // same way.
    if (ulStart == ulOldStart && ulCurrent == ulOldStart && ulStop == ulOldStop && m_streamer.IsDelivering())
        return S_OK;
    // Whatever downstream holds or is rendering of the old position goes, and a Receive it
    // blocks returns; then delivery begins again at the new start with a new segment.
    IPin* pPeer = m_pin.ConnectedPin();
    pPeer->BeginFlush();
    m_streamer.Stop();
    pPeer->EndFlush();
    m_streamer.SetPositions(ulStart, ulStop);
    return StartStreaming();
}
