#include "CFakeSourceFilter.h"

#include "CTestMedia.h"

HRESULT CFakeSourceFilter::Create(const Options& options, std::vector<std::string>* pLog, REFIID riid, void** ppv)
{
    CFakeSourceFilter* pFilter = new CFakeSourceFilter(options, pLog);
    HRESULT hr = CoCreateInstance(options.inner, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter, &pFilter->m_inner);
    if (SUCCEEDED(hr))
        hr = pFilter->QueryInterface(riid, ppv);
    pFilter->Release();
    return hr;
}

// The inner filter answers for everything this one does not implement itself.
HRESULT STDMETHODCALLTYPE CFakeSourceFilter::QueryInterface(REFIID riid, void** ppv)
{
    if (IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IPersist) || IsEqualIID(riid, IID_IMediaFilter) ||
        IsEqualIID(riid, IID_IBaseFilter))
        *ppv = static_cast<IBaseFilter*>(this);
    else if (IsEqualIID(riid, IID_IFileSourceFilter))
        *ppv = static_cast<IFileSourceFilter*>(this);
    else if (IsEqualIID(riid, IID_ISourceFilterSetup))
        *ppv = m_options.bOffersSetup ? static_cast<ISourceFilterSetup*>(this) : nullptr;
    else
        return m_inner->QueryInterface(riid, ppv);
    if (!*ppv)
        return E_NOINTERFACE;
    AddRef();
    return S_OK;
}

ULONG STDMETHODCALLTYPE CFakeSourceFilter::Release()
{
    const ULONG cRef = --m_cRef;
    if (cRef == 0)
        delete this;
    return cRef;
}

HRESULT STDMETHODCALLTYPE CFakeSourceFilter::JoinFilterGraph(IFilterGraph* pGraph, LPCWSTR pwszName)
{
    m_pLog->push_back(pGraph ? "JoinFilterGraph(" + CTestMedia::Narrow(pwszName) + ")" : "LeaveFilterGraph");
    return m_inner->JoinFilterGraph(pGraph, pwszName);
}

HRESULT STDMETHODCALLTYPE CFakeSourceFilter::Load(LPCOLESTR pwszFile, const AM_MEDIA_TYPE* pMediaType)
{
    m_pLog->push_back("Load(" + CTestMedia::Narrow(pwszFile) + (pMediaType ? ", media type)" : ", no media type)"));
    ComPtr<IFileSourceFilter> inner;
    if (FAILED(m_options.hrLoad))
        return m_options.hrLoad;
    // An inner filter that reads no files has nothing to load.
    return FAILED(QueryTo(m_inner, IID_IFileSourceFilter, inner)) ? S_OK : inner->Load(pwszFile, pMediaType);
}

HRESULT STDMETHODCALLTYPE CFakeSourceFilter::GetCurFile(LPOLESTR* ppwszFile, AM_MEDIA_TYPE* pMediaType)
{
    ComPtr<IFileSourceFilter> inner;
    const HRESULT hr = QueryTo(m_inner, IID_IFileSourceFilter, inner);
    return FAILED(hr) ? hr : inner->GetCurFile(ppwszFile, pMediaType);
}

HRESULT STDMETHODCALLTYPE CFakeSourceFilter::Setup(DWORD dwValue)
{
    m_pLog->push_back("Setup(" + std::to_string(dwValue) + ")");
    return S_OK;
}
