// A downstream input pin as a real COM object: it takes the source's connection, records every
// call and sample it receives (times, flags, bytes) in order, and can be told to act as a
// renderer would: refuse a connection or an allocator, keep the samples it gets (so the
// allocator runs dry), or hold each Receive until it is flushed or released.
#pragma once

#include <windows.h>

#include <dshow.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "engine/CComPtr.h"

class CRecordingPin : public IPin, public IMemInputPin
{
public:
    struct Options
    {
        HRESULT hrReceiveConnection = S_OK;
        bool bMemInput = true;             // answers IMemInputPin
        bool bOffersAllocator = true;      // GetAllocator hands out a memory allocator of its own
        HRESULT hrNotifyAllocator = S_OK;  // answer to NotifyAllocator, for every allocator
        bool bHasRequirements = false;     // GetAllocatorRequirements: these, or E_NOTIMPL
        ALLOCATOR_PROPERTIES requirements = {};
        bool bKeepSamples = false;         // keeps a reference to each sample until flushed or ReleaseSamples
        bool bBlockReceive = false;        // each Receive waits until a flush or Unblock
        HRESULT hrReceive = S_OK;          // once recorded, Receive answers this
    };

    struct Sample
    {
        REFERENCE_TIME tStart = 0;
        REFERENCE_TIME tEnd = 0;
        bool bTimeValid = false;
        bool bDiscontinuity = false;
        bool bSyncPoint = false;
        std::vector<uint8_t> data;
    };

    explicit CRecordingPin(const Options& options);
    virtual ~CRecordingPin();

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override;
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&m_lRef)); }
    STDMETHODIMP_(ULONG) Release() override;

    STDMETHODIMP Connect(IPin*, const AM_MEDIA_TYPE*) override { return E_UNEXPECTED; }
    STDMETHODIMP ReceiveConnection(IPin* pConnector, const AM_MEDIA_TYPE* pmt) override;
    STDMETHODIMP Disconnect() override;
    STDMETHODIMP ConnectedTo(IPin** ppPin) override;
    STDMETHODIMP ConnectionMediaType(AM_MEDIA_TYPE* pmt) override;
    STDMETHODIMP QueryPinInfo(PIN_INFO* pInfo) override;
    STDMETHODIMP QueryDirection(PIN_DIRECTION* pDirection) override;
    STDMETHODIMP QueryId(LPWSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP QueryAccept(const AM_MEDIA_TYPE*) override { return S_OK; }
    STDMETHODIMP EnumMediaTypes(IEnumMediaTypes**) override { return E_NOTIMPL; }
    STDMETHODIMP QueryInternalConnections(IPin**, ULONG*) override { return E_NOTIMPL; }
    STDMETHODIMP EndOfStream() override;
    STDMETHODIMP BeginFlush() override;
    STDMETHODIMP EndFlush() override;
    STDMETHODIMP NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate) override;

    STDMETHODIMP GetAllocator(IMemAllocator** ppAllocator) override;
    STDMETHODIMP NotifyAllocator(IMemAllocator* pAllocator, BOOL bReadOnly) override;
    STDMETHODIMP GetAllocatorRequirements(ALLOCATOR_PROPERTIES* pProps) override;
    STDMETHODIMP Receive(IMediaSample* pSample) override;
    STDMETHODIMP ReceiveMultiple(IMediaSample** ppSamples, long nSamples, long* pnProcessed) override;
    STDMETHODIMP ReceiveCanBlock() override { return m_options.bBlockReceive ? S_OK : S_FALSE; }

    // What happened, in order: "ReceiveConnection", "GetAllocator", "NotifyAllocator(own)" or
    // "NotifyAllocator(other)", "NewSegment 0 30000000", "Receive", "EndOfStream", "BeginFlush",
    // "EndFlush", "Disconnect".
    std::vector<std::string> Calls() const;
    std::vector<Sample> Samples() const;
    // Bytes of the samples it accepted, and the left-channel 16-bit samples in them, in order.
    uint64_t AcceptedBytes() const;
    std::vector<int16_t> LeftChannel(size_t nFromSample = 0) const;
    size_t Count(const std::string& call) const;
    bool WaitFor(const std::function<bool()>& done, DWORD dwTimeoutMs) const;
    bool WaitForCall(const std::string& call, size_t nTimes, DWORD dwTimeoutMs) const;

    AM_MEDIA_TYPE ConnectedType() const { return m_type; } // format block not copied
    WAVEFORMATEX ConnectedFormat() const { return m_format; }
    bool NotifiedOwnAllocator() const { return m_bNotifiedOwn; }
    ALLOCATOR_PROPERTIES NotifiedProperties() const;
    // The samples it keeps (bKeepSamples), and any Receive it holds (bBlockReceive), let go.
    void ReleaseSamples();
    void Unblock();
    LONG Refs() const { return m_lRef; }
    // Starts a new recording (samples and calls), e.g. after a flush.
    void ClearRecords();

private:
    void Log(const std::string& call);

    Options m_options;
    volatile LONG m_lRef = 1;
    mutable CRITICAL_SECTION m_cs;
    HANDLE m_hChanged;  // auto-reset: something was logged
    HANDLE m_hRelease;  // manual-reset: held Receive calls return
    std::vector<std::string> m_calls;
    std::vector<Sample> m_samples;
    std::vector<CComPtr<IMediaSample>> m_kept;
    bool m_bFlushing = false;
    CComPtr<IPin> m_pConnector;
    AM_MEDIA_TYPE m_type = {};
    WAVEFORMATEX m_format = {};
    CComPtr<IMemAllocator> m_pOwnAllocator;
    CComPtr<IMemAllocator> m_pNotified;
    bool m_bNotifiedOwn = false;
};
