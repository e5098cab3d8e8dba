// A companion Ogg or FLAC source filter for a machine that has none: it keeps a log of what the
// engine asks of it and hands the filter work to a real filter inside (the platform's file
// source, whose byte stream automatic rendering then splits and decodes, or a filter without
// output pins). Its pins are the inner filter's, so the graph sees a working source.
#pragma once

#include <windows.h>

#include <dshow.h>

#include <functional>
#include <string>
#include <vector>

#include "backends/dshow/CompanionSourceFilters.h"
#include "engine/ComPtr.h"

class CFakeSourceFilter : public IBaseFilter, public IFileSourceFilter, public ISourceFilterSetup
{
public:
    struct Options
    {
        CLSID inner = CLSID_AsyncReader;
        bool bOffersSetup = true;
        HRESULT hrLoad = S_OK; // a failure here is answered without loading
        std::function<void(IFilterGraph*)> onJoin; // hears the graph the filter joins or leaves (null)
    };

    static HRESULT Create(const Options& options, std::vector<std::string>* pLog, REFIID riid,
                          void** ppv);

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_cRef; }
    ULONG STDMETHODCALLTYPE Release() override;

    HRESULT STDMETHODCALLTYPE GetClassID(CLSID* pClsid) override { return m_inner->GetClassID(pClsid); }
    HRESULT STDMETHODCALLTYPE Stop() override { return m_inner->Stop(); }
    HRESULT STDMETHODCALLTYPE Pause() override { return m_inner->Pause(); }
    HRESULT STDMETHODCALLTYPE Run(REFERENCE_TIME tStart) override { return m_inner->Run(tStart); }
    HRESULT STDMETHODCALLTYPE GetState(DWORD dwMs, FILTER_STATE* pState) override
    {
        return m_inner->GetState(dwMs, pState);
    }
    HRESULT STDMETHODCALLTYPE SetSyncSource(IReferenceClock* pClock) override
    {
        return m_inner->SetSyncSource(pClock);
    }
    HRESULT STDMETHODCALLTYPE GetSyncSource(IReferenceClock** ppClock) override
    {
        return m_inner->GetSyncSource(ppClock);
    }
    HRESULT STDMETHODCALLTYPE EnumPins(IEnumPins** ppEnum) override { return m_inner->EnumPins(ppEnum); }
    HRESULT STDMETHODCALLTYPE FindPin(LPCWSTR pwszId, IPin** ppPin) override
    {
        return m_inner->FindPin(pwszId, ppPin);
    }
    HRESULT STDMETHODCALLTYPE QueryFilterInfo(FILTER_INFO* pInfo) override
    {
        return m_inner->QueryFilterInfo(pInfo);
    }
    HRESULT STDMETHODCALLTYPE JoinFilterGraph(IFilterGraph* pGraph, LPCWSTR pwszName) override;
    HRESULT STDMETHODCALLTYPE QueryVendorInfo(LPWSTR* ppwszInfo) override
    {
        return m_inner->QueryVendorInfo(ppwszInfo);
    }

    HRESULT STDMETHODCALLTYPE Load(LPCOLESTR pwszFile, const AM_MEDIA_TYPE* pMediaType) override;
    HRESULT STDMETHODCALLTYPE GetCurFile(LPOLESTR* ppwszFile, AM_MEDIA_TYPE* pMediaType) override;

    HRESULT STDMETHODCALLTYPE Setup(DWORD dwValue) override;

private:
    CFakeSourceFilter(const Options& options, std::vector<std::string>* pLog);
    virtual ~CFakeSourceFilter() = default;

    ULONG m_cRef = 1;
    Options m_options;
    std::vector<std::string>* m_pLog;
    ComPtr<IBaseFilter> m_inner;
};
