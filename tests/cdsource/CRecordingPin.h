// A downstream input pin as a real COM object: it records the calls and bytes it receives, in
// order. It can refuse the connection or lack IMemInputPin.
#pragma once
#include <windows.h>

#include <dshow.h>

#include <string>
#include <vector>

#include "cdsource/CScopedLock.h"
#include "engine/ComPtr.h"

class CRecordingPin : public IPin, public IMemInputPin
{
public:
    struct Options { HRESULT hrReceiveConnection = S_OK; bool bMemInput = true; };
    explicit CRecordingPin(const Options& options) : m_options(options)
    {
        InitializeCriticalSection(&m_cs);
        CoCreateInstance(CLSID_MemoryAllocator, nullptr, CLSCTX_INPROC_SERVER, IID_IMemAllocator, &m_pOwnAllocator);
    }
    virtual ~CRecordingPin() { DeleteCriticalSection(&m_cs); }

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override
    {
        *ppv = riid == IID_IUnknown || riid == IID_IPin ? static_cast<void*>(static_cast<IPin*>(this))
             : riid == IID_IMemInputPin && m_options.bMemInput ? static_cast<IMemInputPin*>(this) : nullptr;
        return *ppv ? (AddRef(), S_OK) : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&m_lRef)); }
    STDMETHODIMP_(ULONG) Release() override
    {
        const LONG lRef = InterlockedDecrement(&m_lRef);
        if (lRef == 0)
            delete this;
        return static_cast<ULONG>(lRef);
    }
    STDMETHODIMP Connect(IPin*, const AM_MEDIA_TYPE*) override { return E_UNEXPECTED; }
    STDMETHODIMP ReceiveConnection(IPin*, const AM_MEDIA_TYPE*) override { return Log("ReceiveConnection", m_options.hrReceiveConnection); }
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
    STDMETHODIMP BeginFlush() override { return Log("BeginFlush"); }
    STDMETHODIMP EndFlush() override { return Log("EndFlush"); }
    STDMETHODIMP NewSegment(REFERENCE_TIME tStart, REFERENCE_TIME tStop, double dRate) override
    {
        return Log("NewSegment " + std::to_string(tStart) + " " + std::to_string(tStop) + (dRate == 1.0 ? "" : " rate?"));
    }
    STDMETHODIMP GetAllocator(IMemAllocator** ppAllocator) override { (*ppAllocator = m_pOwnAllocator.Get())->AddRef(); return Log("GetAllocator"); }
    STDMETHODIMP NotifyAllocator(IMemAllocator* pAllocator, BOOL) override
    {
        return Log(pAllocator == m_pOwnAllocator.Get() ? "NotifyAllocator(own)" : "NotifyAllocator(other)");
    }
    STDMETHODIMP GetAllocatorRequirements(ALLOCATOR_PROPERTIES*) override { return E_NOTIMPL; }
    // Logs "Receive <start> <end> <bytes>[ discontinuity]".
    STDMETHODIMP Receive(IMediaSample* pSample) override
    {
        REFERENCE_TIME tStart = -1, tEnd = -1;
        BYTE* pData = nullptr;
        pSample->GetTime(&tStart, &tEnd);
        pSample->GetPointer(&pData);
        const long cb = pSample->GetActualDataLength();
        CScopedLock lock(&m_cs);
        m_calls.push_back("Receive " + std::to_string(tStart) + " " + std::to_string(tEnd) + " " + std::to_string(cb) +
                          (pSample->IsDiscontinuity() == S_OK ? " discontinuity" : ""));
        m_bytes.insert(m_bytes.end(), pData, pData + cb);
        return S_OK;
    }
    STDMETHODIMP ReceiveMultiple(IMediaSample**, long, long*) override { return E_NOTIMPL; }
    STDMETHODIMP ReceiveCanBlock() override { return S_FALSE; }

    std::vector<std::string> Calls() const { CScopedLock lock(&m_cs); return m_calls; }
    std::vector<uint8_t> Bytes() const { CScopedLock lock(&m_cs); return m_bytes; }
    bool WaitForEndOfStream() const  // within 10 s
    {
        for (const ULONGLONG start = GetTickCount64(); GetTickCount64() - start < 10000; Sleep(5))
            if (Calls().size() && Calls().back() == "EndOfStream")
                return true;
        return false;
    }
    void ClearRecords() { CScopedLock lock(&m_cs); m_calls.clear(); m_bytes.clear(); }
    LONG Refs() const { return m_lRef; }

private:
    HRESULT Log(const std::string& call, HRESULT hr = S_OK) { CScopedLock lock(&m_cs); m_calls.push_back(call); return hr; }
    const Options m_options;
    volatile LONG m_lRef = 1;
    mutable CRITICAL_SECTION m_cs;
    std::vector<std::string> m_calls;
    std::vector<uint8_t> m_bytes;
    ComPtr<IMemAllocator> m_pOwnAllocator;
};
