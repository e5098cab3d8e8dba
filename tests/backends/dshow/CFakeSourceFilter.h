// A companion Ogg or FLAC source filter for a machine that has none: it logs what the engine asks
// of it and hands the filter work to a real filter inside (the platform's file source, whose byte
// stream automatic rendering then splits and decodes, or a filter without output pins), whose
// pins the graph sees.
#pragma once

#include <windows.h>

#include <dshow.h>

#include <string>
#include <vector>

#include "backends/dshow/CompanionSourceFilters.h"
#include "engine/ComPtr.h"

#define TESSALY_FORWARD_TO_INNER(method, params, args) \
    HRESULT STDMETHODCALLTYPE method params override { return m_inner->method args; }

class CFakeSourceFilter : public IBaseFilter, public IFileSourceFilter, public ISourceFilterSetup
{
public:
    struct Options
    {
        CLSID inner = CLSID_AsyncReader;
        bool bOffersSetup = true;
        HRESULT hrLoad = S_OK; // a failure here is answered without loading
    };

    static HRESULT Create(const Options& options, std::vector<std::string>* pLog, REFIID riid, void** ppv);

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_cRef; }
    ULONG STDMETHODCALLTYPE Release() override;

    TESSALY_FORWARD_TO_INNER(GetClassID, (CLSID* pClsid), (pClsid))
    TESSALY_FORWARD_TO_INNER(Stop, (), ())
    TESSALY_FORWARD_TO_INNER(Pause, (), ())
    TESSALY_FORWARD_TO_INNER(Run, (REFERENCE_TIME tStart), (tStart))
    TESSALY_FORWARD_TO_INNER(GetState, (DWORD dwMs, FILTER_STATE* pState), (dwMs, pState))
    TESSALY_FORWARD_TO_INNER(SetSyncSource, (IReferenceClock* pClock), (pClock))
    TESSALY_FORWARD_TO_INNER(GetSyncSource, (IReferenceClock** ppClock), (ppClock))
    TESSALY_FORWARD_TO_INNER(EnumPins, (IEnumPins** ppEnum), (ppEnum))
    TESSALY_FORWARD_TO_INNER(FindPin, (LPCWSTR pwszId, IPin** ppPin), (pwszId, ppPin))
    TESSALY_FORWARD_TO_INNER(QueryFilterInfo, (FILTER_INFO* pInfo), (pInfo))
    TESSALY_FORWARD_TO_INNER(QueryVendorInfo, (LPWSTR* ppwszInfo), (ppwszInfo))
    HRESULT STDMETHODCALLTYPE JoinFilterGraph(IFilterGraph* pGraph, LPCWSTR pwszName) override;
    HRESULT STDMETHODCALLTYPE Load(LPCOLESTR pwszFile, const AM_MEDIA_TYPE* pMediaType) override;
    HRESULT STDMETHODCALLTYPE GetCurFile(LPOLESTR* ppwszFile, AM_MEDIA_TYPE* pMediaType) override;
    HRESULT STDMETHODCALLTYPE Setup(DWORD dwValue) override;

private:
    CFakeSourceFilter(const Options& options, std::vector<std::string>* pLog) : m_options(options), m_pLog(pLog) {}
    virtual ~CFakeSourceFilter() = default;

    ULONG m_cRef = 1;
    Options m_options;
    std::vector<std::string>* m_pLog;
    ComPtr<IBaseFilter> m_inner;
};
