// Stands in for a filter graph where only its event sink matters: a filter that joins it reports
// events (EC_ERRORABORT...) through IMediaEventSink, and they are recorded here in order. Every
// IFilterGraph method answers E_NOTIMPL.
#pragma once

#include <windows.h>

#include <dshow.h>

#include <vector>

class CEventGraph : public IFilterGraph, public IMediaEventSink
{
public:
    struct Event
    {
        long lCode;
        LONG_PTR lParam1;
        LONG_PTR lParam2;
    };

    CEventGraph();
    virtual ~CEventGraph();

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override;
    STDMETHODIMP_(ULONG) AddRef() override { return static_cast<ULONG>(InterlockedIncrement(&m_lRef)); }
    STDMETHODIMP_(ULONG) Release() override;

    STDMETHODIMP AddFilter(IBaseFilter*, LPCWSTR) override { return E_NOTIMPL; }
    STDMETHODIMP RemoveFilter(IBaseFilter*) override { return E_NOTIMPL; }
    STDMETHODIMP EnumFilters(IEnumFilters**) override { return E_NOTIMPL; }
    STDMETHODIMP FindFilterByName(LPCWSTR, IBaseFilter**) override { return E_NOTIMPL; }
    STDMETHODIMP ConnectDirect(IPin*, IPin*, const AM_MEDIA_TYPE*) override { return E_NOTIMPL; }
    STDMETHODIMP Reconnect(IPin*) override { return E_NOTIMPL; }
    STDMETHODIMP Disconnect(IPin*) override { return E_NOTIMPL; }
    STDMETHODIMP SetDefaultSyncSource() override { return E_NOTIMPL; }

    STDMETHODIMP Notify(long lCode, LONG_PTR lParam1, LONG_PTR lParam2) override;

    std::vector<Event> Events() const;
    LONG Refs() const { return m_lRef; }

private:
    volatile LONG m_lRef = 1;
    mutable CRITICAL_SECTION m_cs;
    std::vector<Event> m_events;
};
