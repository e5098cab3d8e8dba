// A downstream input pin as a real COM object: it records the calls and samples it receives, in
// order. It can refuse the connection or lack IMemInputPin, and can keep the samples it takes, as
// a renderer queues them, so that the source's allocator runs dry.
#pragma once

#include <windows.h>

#include <dshow.h>

#include <cstdint>
#include <string>
#include <vector>

#include "engine/ComPtr.h"

class CRecordingPin : public IPin, public IMemInputPin
{
public:
    struct Options
    {
        HRESULT hrReceiveConnection = S_OK;
        bool bMemInput = true; // answers IMemInputPin
        bool bKeepSamples = false; // until a flush or ReleaseSamples
    };

    explicit CRecordingPin(const Options& options);
    virtual ~CRecordingPin() { DeleteCriticalSection(&m_cs); }

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override;
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&m_lRef)); }
    STDMETHODIMP_(ULONG) Release() override;

    STDMETHODIMP Connect(IPin*, const AM_MEDIA_TYPE*) override { return E_UNEXPECTED; }
    STDMETHODIMP ReceiveConnection(IPin*, const AM_MEDIA_TYPE*) override
    {
        return Log("ReceiveConnection", m_options.hrReceiveConnection);
    }
    STDMETHODIMP Disconnect() override { return Log("Disconnect"); }
    STDMETHODIMP ConnectedTo(IPin**) override { return E_NOTIMPL; }
    STDMETHODIMP ConnectionMediaType(AM_MEDIA_TYPE*) override { return E_NOTIMPL; }
    STDMETHODIMP QueryPinInfo(PIN_INFO*) override { return E_NOTIMPL; }
    STDMETHODIMP QueryDirection(PIN_DIRECTION* pDirection) override { *pDirection = PINDIR_INPUT; return S_OK; }
    STDMETHODIMP QueryId(LPWSTR*) override { return E_NOTIMPL; }
    STDMETHODIMP QueryAccept(const AM_MEDIA_TYPE*) override { return S_OK; }
    STDMETHODIMP EnumMediaTypes(IEnumMediaTypes**) override { return E_NOTIMPL; }
    STDMETHODIMP QueryInternalConnections(IPin**, ULONG*) override { return E_NOTIMPL; }
    STDMETHODIMP EndOfStream() override { return Log("EndOfStream"); }
    STDMETHODIMP BeginFlush() override { return Flush(true); }
    STDMETHODIMP EndFlush() override { return Flush(false); }
    STDMETHODIMP NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate) override
    {
        return Log("NewSegment " + std::to_string(tStart) + " " + std::to_string(tStop) + (dRate == 1.0 ? "" : " rate?"));
    }

    STDMETHODIMP GetAllocator(IMemAllocator** ppAllocator) override
    {
        *ppAllocator = m_pOwnAllocator.Get();
        (*ppAllocator)->AddRef();
        return Log("GetAllocator");
    }
    STDMETHODIMP NotifyAllocator(IMemAllocator* pAllocator, BOOL) override
    {
        return Log(pAllocator == m_pOwnAllocator.Get() ? "NotifyAllocator(own)" : "NotifyAllocator(other)");
    }
    STDMETHODIMP GetAllocatorRequirements(ALLOCATOR_PROPERTIES*) override { return E_NOTIMPL; }
    STDMETHODIMP Receive(IMediaSample* pSample) override;
    STDMETHODIMP ReceiveMultiple(IMediaSample**, long, long*) override { return E_NOTIMPL; }
    STDMETHODIMP ReceiveCanBlock() override { return S_FALSE; }

    // "ReceiveConnection", "GetAllocator", "NotifyAllocator(own)" or "NotifyAllocator(other)",
    // "NewSegment 0 30000000", "Receive <start> <end> <bytes>[ discontinuity]", "EndOfStream",
    // "BeginFlush", "EndFlush", "Disconnect".
    std::vector<std::string> Calls() const;
    // The calls that begin with this text.
    size_t Count(const std::string& call) const;
    bool WaitForCall(const std::string& call, size_t nTimes, DWORD dwTimeoutMs = 10000) const;
    // What the samples held, end to end.
    std::vector<uint8_t> Bytes() const;
    void ReleaseSamples() { Flush(false); }
    void ClearRecords();
    LONG Refs() const { return m_lRef; }

private:
    HRESULT Log(const std::string& call, HRESULT hr = S_OK);
    HRESULT Flush(bool bBegin);

    const Options m_options;
    volatile LONG m_lRef = 1;
    mutable CRITICAL_SECTION m_cs;
    std::vector<std::string> m_calls;
    std::vector<uint8_t> m_bytes;
    std::vector<ComPtr<IMediaSample>> m_kept;
    bool m_bFlushing = false;
    ComPtr<IMemAllocator> m_pOwnAllocator;
};
