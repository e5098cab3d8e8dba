// The CD audio source filter (CLSID_TessalyCDAudioSource): a DirectShow source whose "file" is a
// range of tracks, "D/3" or "D/3-7", read from the disc image the drive letter is set to stand
// for, or else from the drive. One output pin delivers the range as 44.1 kHz stereo 16-bit PCM.
//
// Results of Load, beyond those of CTrackRequest::Parse and CCDReader::Open: E_POINTER for a null
// text, VFW_E_NOT_STOPPED unless stopped, HRESULT_FROM_WIN32(ERROR_NOT_FOUND) when the disc
// lacks the first or last track. A failed Load leaves no range at all, not the one loaded before
// it. A Load on a connected filter keeps the connection: the media type never changes.
#pragma once

#include <windows.h>

#include <dshow.h>

#include <atomic>
#include <memory>
#include <string>

#include "cdsource/CCDOutputPin.h"
#include "cdsource/CCDReader.h"
#include "cdsource/CDAudioSource.h"
#include "cdsource/CPositionSeeking.h"
#include "cdsource/CSampleStreamer.h"
#include "cdsource/CTrackRange.h"
#include "engine/CComObjectRoot.h"
#include "engine/ComPtr.h"

class CCDAudioSource : public CComObjectRoot,
                       public IBaseFilter,
                       public IFileSourceFilter,
                       public ICDAudioSourceConfig
{
public:
    CCDAudioSource();
    ~CCDAudioSource() override;
    CCDAudioSource(const CCDAudioSource&) = delete;
    CCDAudioSource& operator=(const CCDAudioSource&) = delete;

    // A filter released while it still streams stops first, so no thread outlives it.
    void FinalRelease();
    IUnknown* GetUnknown() { return static_cast<IBaseFilter*>(this); }
    void* InternalQueryInterface(REFIID riid);

    // IPersist
    STDMETHODIMP GetClassID(CLSID* pClsid) override;
    // IMediaFilter
    STDMETHODIMP Stop() override;
    STDMETHODIMP Pause() override;
    STDMETHODIMP Run(REFERENCE_TIME tStart) override;
    STDMETHODIMP GetState(DWORD dwMilliseconds, FILTER_STATE* pState) override;
    STDMETHODIMP SetSyncSource(IReferenceClock* pClock) override;
    STDMETHODIMP GetSyncSource(IReferenceClock** ppClock) override;
    // IBaseFilter
    STDMETHODIMP EnumPins(IEnumPins** ppEnum) override;
    STDMETHODIMP FindPin(LPCWSTR pwszId, IPin** ppPin) override;
    STDMETHODIMP QueryFilterInfo(FILTER_INFO* pInfo) override;
    STDMETHODIMP JoinFilterGraph(IFilterGraph* pGraph, LPCWSTR pwszName) override;
    STDMETHODIMP QueryVendorInfo(LPWSTR* ppwszInfo) override;

    // IFileSourceFilter. The media type passed to Load is ignored. GetCurFile: the track text as
    // the last successful Load took it (CoTaskMemAlloc) and, when pmt is given, the delivered
    // type (format block from CoTaskMemAlloc); E_FAIL, with a null name, before any Load.
    STDMETHODIMP Load(LPCOLESTR pwszRequest, const AM_MEDIA_TYPE* pmt) override;
    STDMETHODIMP GetCurFile(LPOLESTR* ppwszRequest, AM_MEDIA_TYPE* pmt) override;

    // ICDAudioSourceConfig. The read mode applies from the next Load.
    STDMETHODIMP SetReadMode(DWORD dwMode) override;
    STDMETHODIMP GetDeliveredBytes(ULONGLONG* pcbDelivered) override;

    // For the pin and the seeking interfaces. The lock guards the state, the connection and
    // the loaded range; it is never taken by the streaming thread.
    CRITICAL_SECTION* FilterLock() { return &m_cs; }
    bool IsStopped() const { return m_state == State_Stopped; }
    void GetSectorPositions(uint32_t* pulSectors, uint32_t* pulStart, uint32_t* pulCurrent, uint32_t* pulStop) const;
    // Under the lock. A new start while streaming flushes downstream and restarts delivery there.
    HRESULT Reposition(bool bStart, uint32_t ulStart, bool bStop, uint32_t ulStop);

private:
    HRESULT StartStreaming();
    IMediaEventSink* GraphEvents() const;

    CRITICAL_SECTION m_cs;
    std::atomic<FILTER_STATE> m_state{State_Stopped}; // written under the lock, read by GetState without it
    ComPtr<IReferenceClock> m_pClock;
    IFilterGraph* m_pGraph = nullptr; // not counted: the graph holds the filter
    std::wstring m_name;
    std::wstring m_request;
    DWORD m_dwReadMode = CDAudioRead_Default;
    // The reader and range outlive the streamer, whose thread reads them.
    std::unique_ptr<CCDReader> m_pReader;
    std::unique_ptr<CTrackRange> m_pRange;
    CSampleStreamer m_streamer;
    CCDOutputPin m_pin;
    CPositionSeeking m_seeking;
};
