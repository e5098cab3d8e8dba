#include "cdsource/CSampleStreamer.h"

#include "trace/Trace.h"

CSampleStreamer::CSampleStreamer()
{
    InitializeCriticalSection(&m_cs);
}

CSampleStreamer::~CSampleStreamer()
{
    Stop();
    DeleteCriticalSection(&m_cs);
}

void CSampleStreamer::SetSource(CCDReader* pReader, const CTrackRange* pRange)
{
    EnterCriticalSection(&m_cs);
    m_pReader = pReader;
    m_pRange = pReader ? pRange : nullptr;
    m_ulStart = 0;
    m_ulCurrent = 0;
    m_ulStop = m_pRange ? m_pRange->Sectors() : 0;
    m_ullDelivered = 0;
    LeaveCriticalSection(&m_cs);
}

uint32_t CSampleStreamer::Sectors() const
{
    EnterCriticalSection(&m_cs);
    const uint32_t ulSectors = m_pRange ? m_pRange->Sectors() : 0;
    LeaveCriticalSection(&m_cs);
    return ulSectors;
}

void CSampleStreamer::GetPositions(uint32_t* pulStart, uint32_t* pulCurrent, uint32_t* pulStop) const
{
    EnterCriticalSection(&m_cs);
    *pulStart = m_ulStart;
    *pulCurrent = m_ulCurrent;
    *pulStop = m_ulStop;
    LeaveCriticalSection(&m_cs);
}

void CSampleStreamer::SetPositions(uint32_t ulStart, uint32_t ulStop)
{
    EnterCriticalSection(&m_cs);
    m_ulStart = ulStart;
    m_ulCurrent = ulStart;
    m_ulStop = ulStop;
    LeaveCriticalSection(&m_cs);
}

void CSampleStreamer::SetStop(uint32_t ulStop)
{
    EnterCriticalSection(&m_cs);
    m_ulStop = ulStop;
    LeaveCriticalSection(&m_cs);
}

uint64_t CSampleStreamer::DeliveredBytes() const
{
    EnterCriticalSection(&m_cs);
    const uint64_t ullDelivered = m_ullDelivered;
    LeaveCriticalSection(&m_cs);
    return ullDelivered;
}

HRESULT CSampleStreamer::Start(const Target& target)
{
    if (m_hThread)
        return S_OK;
    HRESULT hr = target.pAllocator->Commit();
    if (FAILED(hr))
    {
        TESSALY_TRACE("E:CSampleStreamer::Start> Commit failed, hr = 0x%08lx", static_cast<unsigned long>(hr));
        return hr;
    }
    m_pPin = target.pPin;
    m_pInput = target.pInput;
    m_pAllocator = target.pAllocator;
    m_ulSectorsPerSample = target.ulSectorsPerSample ? target.ulSectorsPerSample : 1;
    m_pEvents = target.pEvents;
    InterlockedExchange(&m_lStopRequested, 0);
    EnterCriticalSection(&m_cs);
    m_ulCurrent = m_ulStart;
    LeaveCriticalSection(&m_cs);

    m_hThread = CreateThread(nullptr, 0, ThreadProc, this, 0, nullptr);
    if (!m_hThread)
    {
        const DWORD dwError = GetLastError();
        hr = dwError != ERROR_SUCCESS ? HRESULT_FROM_WIN32(dwError) : E_FAIL;
        m_pAllocator->Decommit();
        m_pPin.Reset();
        m_pInput.Reset();
        m_pAllocator.Reset();
        m_pEvents = nullptr;
    }
    return hr;
}

void CSampleStreamer::Stop()
{
    if (!m_hThread)
        return;
    InterlockedExchange(&m_lStopRequested, 1);
    m_pAllocator->Decommit();
    WaitForSingleObject(m_hThread, INFINITE);
    CloseHandle(m_hThread);
    m_hThread = nullptr;
    m_pPin.Reset();
    m_pInput.Reset();
    m_pAllocator.Reset();
    m_pEvents = nullptr;
}

bool CSampleStreamer::StopRequested() const
{
    return InterlockedCompareExchange(const_cast<volatile LONG*>(&m_lStopRequested), 0, 0) != 0;
}

DWORD WINAPI CSampleStreamer::ThreadProc(void* pvThis)
{
    // The downstream filters are free-threaded; the thread joins the process's multithreaded
    // apartment so that any of them that checks finds COM ready.
    const HRESULT hrCom = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    static_cast<CSampleStreamer*>(pvThis)->Deliver();
    if (SUCCEEDED(hrCom))
        CoUninitialize();
    return 0;
}

void CSampleStreamer::Abort(HRESULT hr)
{
    TESSALY_TRACE("E:CSampleStreamer::Abort> delivery ends, hr = 0x%08lx", static_cast<unsigned long>(hr));
    if (m_pEvents)
        m_pEvents->Notify(EC_ERRORABORT, static_cast<LONG_PTR>(hr), 0);
    // The renderer still hears the end, so that it does not wait for more.
    m_pPin->EndOfStream();
}

void CSampleStreamer::Deliver()
{
    EnterCriticalSection(&m_cs);
    const uint32_t ulStart = m_ulStart;
    uint32_t ulStop = m_ulStop;
    LeaveCriticalSection(&m_cs);
    m_pPin->NewSegment(CTrackRange::TimeOf(ulStart), CTrackRange::TimeOf(ulStop), 1.0);
    TESSALY_TRACE("S:CSampleStreamer::Deliver> segment from sector %lu", static_cast<unsigned long>(ulStart));

    uint32_t ulNext = ulStart;
    bool bFirst = true;
    while (!StopRequested())
    {
        EnterCriticalSection(&m_cs);
        ulStop = m_ulStop;
        LeaveCriticalSection(&m_cs);
        if (ulNext >= ulStop)
        {
            TESSALY_TRACE("S:CSampleStreamer::Deliver> end of stream at sector %lu", static_cast<unsigned long>(ulNext));
            m_pPin->EndOfStream();
            return;
        }

        ComPtr<IMediaSample> sample;
        HRESULT hr = m_pAllocator->GetBuffer(&sample, nullptr, nullptr, 0);
        if (FAILED(hr))
        {
            // Decommitted: Stop is on its way, and asked for nothing to be said.
            if (!StopRequested())
                Abort(hr);
            return;
        }
        const uint32_t ulLeft = ulStop - ulNext;
        const uint32_t ulCount = ulLeft < m_ulSectorsPerSample ? ulLeft : m_ulSectorsPerSample;
        const long cbData = static_cast<long>(ulCount * CCDReader::kSectorBytes);
        BYTE* pData = nullptr;
        hr = sample->GetPointer(&pData);
        if (SUCCEEDED(hr) && sample->GetSize() < cbData)
            hr = VFW_E_BUFFER_OVERFLOW;
        if (SUCCEEDED(hr))
            hr = m_pRange ? m_pRange->Read(*m_pReader, ulNext, ulCount, pData) : E_UNEXPECTED;
        if (SUCCEEDED(hr))
            hr = sample->SetActualDataLength(cbData);
        if (FAILED(hr))
        {
            sample.Reset();
            Abort(hr);
            return;
        }
        REFERENCE_TIME tStart = CTrackRange::TimeOf(ulNext - ulStart);
        REFERENCE_TIME tEnd = CTrackRange::TimeOf(ulNext + ulCount - ulStart);
        sample->SetTime(&tStart, &tEnd);
        sample->SetMediaTime(nullptr, nullptr);
        sample->SetSyncPoint(TRUE);
        sample->SetPreroll(FALSE);
        sample->SetDiscontinuity(bFirst ? TRUE : FALSE);

        hr = m_pInput->Receive(sample.Get());
        sample.Reset();
        if (hr != S_OK)
        {
            TESSALY_TRACE("S:CSampleStreamer::Deliver> Receive answered 0x%08lx at sector %lu",
                          static_cast<unsigned long>(hr), static_cast<unsigned long>(ulNext));
            // S_FALSE: downstream wants no more of this segment; a failure: it is flushing,
            // stopping, or reporting an error of its own. Either way this segment is over.
            return;
        }
        bFirst = false;
        ulNext += ulCount;
        EnterCriticalSection(&m_cs);
        m_ulCurrent = ulNext;
        m_ullDelivered += static_cast<uint64_t>(cbData);
        LeaveCriticalSection(&m_cs);
    }
}
