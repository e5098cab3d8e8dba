#include "CRecordingPin.h"

#include <cstring>

CRecordingPin::CRecordingPin(const Options& options) : m_options(options)
{
    InitializeCriticalSection(&m_cs);
    m_hChanged = CreateEventW(nullptr, FALSE, FALSE, nullptr);
    m_hRelease = CreateEventW(nullptr, TRUE, FALSE, nullptr);
}

CRecordingPin::~CRecordingPin()
{
    CloseHandle(m_hRelease);
    CloseHandle(m_hChanged);
    DeleteCriticalSection(&m_cs);
}

STDMETHODIMP CRecordingPin::QueryInterface(REFIID riid, void** ppv)
{
    if (!ppv)
        return E_POINTER;
    if (riid == IID_IUnknown || riid == IID_IPin)
        *ppv = static_cast<IPin*>(this);
    else if (riid == IID_IMemInputPin && m_options.bMemInput)
        *ppv = static_cast<IMemInputPin*>(this);
    else
    {
        *ppv = nullptr;
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

STDMETHODIMP_(ULONG) CRecordingPin::Release()
{
    const LONG lRef = InterlockedDecrement(&m_lRef);
    if (lRef == 0)
        delete this;
    return static_cast<ULONG>(lRef);
}

void CRecordingPin::Log(const std::string& call)
{
    EnterCriticalSection(&m_cs);
    m_calls.push_back(call);
    LeaveCriticalSection(&m_cs);
    SetEvent(m_hChanged);
}

STDMETHODIMP CRecordingPin::ReceiveConnection(IPin* pConnector, const AM_MEDIA_TYPE* pmt)
{
    Log("ReceiveConnection");
    if (FAILED(m_options.hrReceiveConnection))
        return m_options.hrReceiveConnection;
    EnterCriticalSection(&m_cs);
    m_pConnector = pConnector;
    m_type = *pmt;
    m_type.pbFormat = nullptr;
    m_type.pUnk = nullptr;
    if (pmt->pbFormat && pmt->cbFormat >= sizeof(WAVEFORMATEX))
        std::memcpy(&m_format, pmt->pbFormat, sizeof(WAVEFORMATEX));
    LeaveCriticalSection(&m_cs);
    return S_OK;
}

STDMETHODIMP CRecordingPin::Disconnect()
{
    Log("Disconnect");
    EnterCriticalSection(&m_cs);
    const bool bWasConnected = static_cast<bool>(m_pConnector);
    m_pConnector.Reset();
    m_pNotified.Reset();
    LeaveCriticalSection(&m_cs);
    return bWasConnected ? S_OK : S_FALSE;
}

STDMETHODIMP CRecordingPin::ConnectedTo(IPin** ppPin)
{
    EnterCriticalSection(&m_cs);
    *ppPin = m_pConnector.Get();
    if (*ppPin)
        (*ppPin)->AddRef();
    LeaveCriticalSection(&m_cs);
    return *ppPin ? S_OK : VFW_E_NOT_CONNECTED;
}

STDMETHODIMP CRecordingPin::ConnectionMediaType(AM_MEDIA_TYPE* pmt)
{
    *pmt = m_type;
    return S_OK;
}

STDMETHODIMP CRecordingPin::QueryPinInfo(PIN_INFO* pInfo)
{
    pInfo->pFilter = nullptr;
    lstrcpynW(pInfo->achName, L"Recording", MAX_PIN_NAME);
    pInfo->dir = PINDIR_INPUT;
    return S_OK;
}

STDMETHODIMP CRecordingPin::QueryDirection(PIN_DIRECTION* pDirection)
{
    *pDirection = PINDIR_INPUT;
    return S_OK;
}

STDMETHODIMP CRecordingPin::EndOfStream()
{
    Log("EndOfStream");
    return S_OK;
}

STDMETHODIMP CRecordingPin::BeginFlush()
{
    std::vector<CComPtr<IMediaSample>> kept;
    EnterCriticalSection(&m_cs);
    m_bFlushing = true;
    kept.swap(m_kept);
    LeaveCriticalSection(&m_cs);
    Log("BeginFlush");
    // A renderer flushed lets go of what it holds: queued samples, and a sample it waits with.
    SetEvent(m_hRelease);
    return S_OK;
}

STDMETHODIMP CRecordingPin::EndFlush()
{
    EnterCriticalSection(&m_cs);
    m_bFlushing = false;
    if (m_options.bBlockReceive)
        ResetEvent(m_hRelease);
    LeaveCriticalSection(&m_cs);
    Log("EndFlush");
    return S_OK;
}

STDMETHODIMP CRecordingPin::NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate)
{
    Log("NewSegment " + std::to_string(tStart) + " " + std::to_string(tStop) + (dRate == 1.0 ? "" : " rate?"));
    return S_OK;
}

STDMETHODIMP CRecordingPin::GetAllocator(IMemAllocator** ppAllocator)
{
    Log("GetAllocator");
    *ppAllocator = nullptr;
    if (!m_options.bOffersAllocator)
        return VFW_E_NO_ALLOCATOR;
    if (!m_pOwnAllocator)
    {
        const HRESULT hr = CoCreateInstance(CLSID_MemoryAllocator, nullptr, CLSCTX_INPROC_SERVER, IID_IMemAllocator,
                                            m_pOwnAllocator.Out());
        if (FAILED(hr))
            return hr;
    }
    *ppAllocator = m_pOwnAllocator.Get();
    (*ppAllocator)->AddRef();
    return S_OK;
}

STDMETHODIMP CRecordingPin::NotifyAllocator(IMemAllocator* pAllocator, BOOL)
{
    const bool bOwn = pAllocator == m_pOwnAllocator.Get();
    Log(bOwn ? "NotifyAllocator(own)" : "NotifyAllocator(other)");
    if (FAILED(m_options.hrNotifyAllocator))
        return m_options.hrNotifyAllocator;
    EnterCriticalSection(&m_cs);
    m_pNotified = pAllocator;
    m_bNotifiedOwn = bOwn;
    LeaveCriticalSection(&m_cs);
    return S_OK;
}

ALLOCATOR_PROPERTIES CRecordingPin::NotifiedProperties() const
{
    ALLOCATOR_PROPERTIES props = {};
    EnterCriticalSection(&m_cs);
    if (m_pNotified)
        m_pNotified->GetProperties(&props);
    LeaveCriticalSection(&m_cs);
    return props;
}

STDMETHODIMP CRecordingPin::GetAllocatorRequirements(ALLOCATOR_PROPERTIES* pProps)
{
    if (!m_options.bHasRequirements)
        return E_NOTIMPL;
    *pProps = m_options.requirements;
    return S_OK;
}

STDMETHODIMP CRecordingPin::Receive(IMediaSample* pSample)
{
    EnterCriticalSection(&m_cs);
    const bool bFlushing = m_bFlushing;
    LeaveCriticalSection(&m_cs);
    if (bFlushing)
    {
        Log("Receive(flushing)");
        return S_FALSE;
    }
    Sample sample;
    sample.bTimeValid = SUCCEEDED(pSample->GetTime(&sample.tStart, &sample.tEnd));
    sample.bDiscontinuity = pSample->IsDiscontinuity() == S_OK;
    sample.bSyncPoint = pSample->IsSyncPoint() == S_OK;
    BYTE* pData = nullptr;
    pSample->GetPointer(&pData);
    const long cb = pSample->GetActualDataLength();
    if (pData && cb > 0)
        sample.data.assign(pData, pData + cb);
    EnterCriticalSection(&m_cs);
    if (m_options.hrReceive == S_OK)
        m_samples.push_back(std::move(sample));
    if (m_options.bKeepSamples)
        m_kept.push_back(CComPtr<IMediaSample>(pSample));
    LeaveCriticalSection(&m_cs);
    Log("Receive");
    if (m_options.bBlockReceive)
        WaitForSingleObject(m_hRelease, INFINITE);
    return m_options.hrReceive;
}

STDMETHODIMP CRecordingPin::ReceiveMultiple(IMediaSample** ppSamples, long nSamples, long* pnProcessed)
{
    HRESULT hr = S_OK;
    long n = 0;
    for (; n < nSamples && hr == S_OK; ++n)
        hr = Receive(ppSamples[n]);
    *pnProcessed = n;
    return hr;
}

std::vector<std::string> CRecordingPin::Calls() const
{
    EnterCriticalSection(&m_cs);
    std::vector<std::string> calls = m_calls;
    LeaveCriticalSection(&m_cs);
    return calls;
}

std::vector<CRecordingPin::Sample> CRecordingPin::Samples() const
{
    EnterCriticalSection(&m_cs);
    std::vector<Sample> samples = m_samples;
    LeaveCriticalSection(&m_cs);
    return samples;
}

uint64_t CRecordingPin::AcceptedBytes() const
{
    uint64_t cb = 0;
    EnterCriticalSection(&m_cs);
    for (const Sample& sample : m_samples)
        cb += sample.data.size();
    LeaveCriticalSection(&m_cs);
    return cb;
}

std::vector<int16_t> CRecordingPin::LeftChannel(size_t nFromSample) const
{
    std::vector<int16_t> left;
    const std::vector<Sample> samples = Samples();
    for (size_t i = nFromSample; i < samples.size(); ++i)
    {
        const std::vector<uint8_t>& data = samples[i].data;
        for (size_t b = 0; b + 3 < data.size(); b += 4)
            left.push_back(static_cast<int16_t>(data[b] | (data[b + 1] << 8)));
    }
    return left;
}

size_t CRecordingPin::Count(const std::string& call) const
{
    size_t n = 0;
    for (const std::string& each : Calls())
        n += each == call;
    return n;
}

bool CRecordingPin::WaitFor(const std::function<bool()>& done, DWORD dwTimeoutMs) const
{
    const ULONGLONG start = GetTickCount64();
    while (!done())
    {
        const ULONGLONG elapsed = GetTickCount64() - start;
        if (elapsed >= dwTimeoutMs)
            return false;
        // Woken by every logged call; the short bound covers a wake-up taken by another waiter.
        WaitForSingleObject(m_hChanged, 50);
    }
    return true;
}

bool CRecordingPin::WaitForCall(const std::string& call, size_t nTimes, DWORD dwTimeoutMs) const
{
    return WaitFor([&] { return Count(call) >= nTimes; }, dwTimeoutMs);
}

void CRecordingPin::ReleaseSamples()
{
    std::vector<CComPtr<IMediaSample>> kept;
    EnterCriticalSection(&m_cs);
    kept.swap(m_kept);
    LeaveCriticalSection(&m_cs);
}

void CRecordingPin::Unblock()
{
    EnterCriticalSection(&m_cs);
    m_options.bBlockReceive = false;
    LeaveCriticalSection(&m_cs);
    SetEvent(m_hRelease);
}

void CRecordingPin::ClearRecords()
{
    EnterCriticalSection(&m_cs);
    m_calls.clear();
    m_samples.clear();
    LeaveCriticalSection(&m_cs);
}
