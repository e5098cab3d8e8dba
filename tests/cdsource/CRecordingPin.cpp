#include "CRecordingPin.h"

#include "cdsource/CScopedLock.h"

CRecordingPin::CRecordingPin(const Options& options) : m_options(options)
{
    InitializeCriticalSection(&m_cs);
    CoCreateInstance(CLSID_MemoryAllocator, nullptr, CLSCTX_INPROC_SERVER, IID_IMemAllocator, &m_pOwnAllocator);
}

STDMETHODIMP CRecordingPin::QueryInterface(REFIID riid, void** ppv)
{
    *ppv = nullptr;
    if (riid == IID_IUnknown || riid == IID_IPin)
        *ppv = static_cast<IPin*>(this);
    else if (riid == IID_IMemInputPin && m_options.bMemInput)
        *ppv = static_cast<IMemInputPin*>(this);
    else
        return E_NOINTERFACE;
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

HRESULT CRecordingPin::Log(const std::string& call, HRESULT hr)
{
    CScopedLock lock(&m_cs);
    m_calls.push_back(call);
    return hr;
}

HRESULT CRecordingPin::Flush(bool bBegin)
{
    // A flushed renderer lets go of the samples it queued, which frees the source's buffers; they
    // are released after the lock, as a release may wake the source.
    std::vector<ComPtr<IMediaSample>> kept;
    CScopedLock lock(&m_cs);
    kept.swap(m_kept);
    if (bBegin != m_bFlushing)
        m_calls.push_back(bBegin ? "BeginFlush" : "EndFlush");
    m_bFlushing = bBegin;
    return S_OK;
}

STDMETHODIMP CRecordingPin::Receive(IMediaSample* pSample)
{
    REFERENCE_TIME tStart = -1, tEnd = -1;
    pSample->GetTime(&tStart, &tEnd);
    BYTE* pData = nullptr;
    pSample->GetPointer(&pData);
    const long cb = pSample->GetActualDataLength();
    CScopedLock lock(&m_cs);
    if (m_bFlushing)
        return S_FALSE; // as a renderer does; the source may still be on its way to the flush
    m_calls.push_back("Receive " + std::to_string(tStart) + " " + std::to_string(tEnd) + " " + std::to_string(cb) +
                      (pSample->IsDiscontinuity() == S_OK ? " discontinuity" : ""));
    m_bytes.insert(m_bytes.end(), pData, pData + cb);
    if (m_options.bKeepSamples)
        m_kept.push_back(ComPtr<IMediaSample>(pSample));
    return S_OK;
}

std::vector<std::string> CRecordingPin::Calls() const
{
    CScopedLock lock(&m_cs);
    return m_calls;
}

size_t CRecordingPin::Count(const std::string& call) const
{
    size_t n = 0;
    for (const std::string& each : Calls())
        n += each.compare(0, call.size(), call) == 0;
    return n;
}

bool CRecordingPin::WaitForCall(const std::string& call, size_t nTimes, DWORD dwTimeoutMs) const
{
    for (const ULONGLONG start = GetTickCount64(); Count(call) < nTimes && GetTickCount64() - start < dwTimeoutMs;)
        Sleep(5);
    return Count(call) >= nTimes;
}

std::vector<uint8_t> CRecordingPin::Bytes() const
{
    CScopedLock lock(&m_cs);
    return m_bytes;
}

void CRecordingPin::ClearRecords()
{
    CScopedLock lock(&m_cs);
    m_calls.clear();
    m_bytes.clear();
}
