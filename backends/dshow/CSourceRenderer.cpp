#include "backends/dshow/CSourceRenderer.h"

#include "backends/dshow/CFilterGraphHelper.h"
#include "backends/dshow/CompanionSourceFilters.h"
#include "base/CUtility.h"
#include "engine/ComPtr.h"
#include "trace/Trace.h"

namespace {

// Some readers (Wine's, for one) parse the file only once the graph runs: until then their pins
// answer a length of zero, and a graph built on them could tell the host neither the duration
// nor whether it can seek. A reader that cannot answer at all is given the benefit of the doubt.
bool ReaderReportsNoLength(IBaseFilter* pReader)
{
    ComPtr<IPin> pin;
    if (CFilterGraphHelper::FindOutputPin(pReader, &pin) != S_OK)
        return false;
    ComPtr<IMediaSeeking> seeking;
    if (FAILED(pin->QueryInterface(IID_IMediaSeeking, &seeking)))
        return false;
    LONGLONG llDuration = 0;
    return seeking->GetDuration(&llDuration) == S_OK && llDuration == 0;
}

} // namespace

HRESULT CSourceRenderer::RenderMP3File(IGraphBuilder* pGraph, LPCWSTR pwszFile)
{
    TESSALY_TRACE("S:CDShowPlayer::RenderMP3File> Attempt to use WM ASF Reader to play MP3 files...");
    ComPtr<IBaseFilter> reader;
    HRESULT hr = CoCreateInstance(CLSID_WMAsfReader, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter,
                                  &reader);
    if (FAILED(hr))
    {
        TESSALY_TRACE("E:CDShowPlayer::RenderMP3File> CoCreateInstance <CLSID_WMAsfReader> failed");
        return hr;
    }
    ComPtr<IFileSourceFilter> fileSource;
    hr = QueryTo(reader, IID_IFileSourceFilter, fileSource);
    if (FAILED(hr))
    {
        TESSALY_TRACE("E:CDShowPlayer::RenderMP3File> QI for IFileSourceFilter from <CLSID_WMAsfReader> failed");
        return hr;
    }
    hr = fileSource->Load(pwszFile, nullptr);
    if (FAILED(hr))
    {
        TESSALY_TRACE("E:CDShowPlayer::RenderMP3File> IFileSourceFilter->Load failed");
        return hr;
    }
    if (ReaderReportsNoLength(reader.Get()))
    {
        TESSALY_TRACE("E:CDShowPlayer::RenderMP3File> WM ASF Reader reports no length before playback");
        return E_FAIL;
    }
    hr = pGraph->AddFilter(reader.Get(), nullptr);
    if (FAILED(hr))
    {
        TESSALY_TRACE("E:CDShowPlayer::RenderMP3File> pIGB->AddFilter failed");
        return hr;
    }

    // Windows XP's reader hands out compressed MP3 that only the ACM wrapper decodes.
    if (CUtility::IsWindowsXP())
    {
        ComPtr<IBaseFilter> acm;
        hr = CoCreateInstance(CLSID_ACMWrapper, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter,
                              &acm);
        if (FAILED(hr))
        {
            TESSALY_TRACE("E:CDShowPlayer::RenderMP3File> CoCreateInstance <CLSID_ACMWrapper> failed");
            return hr;
        }
        hr = pGraph->AddFilter(acm.Get(), nullptr);
        if (FAILED(hr))
        {
            TESSALY_TRACE("E:CDShowPlayer::RenderMP3File> pIGB->AddFilter failed");
            return hr;
        }
    }
    return RenderSourcePins(pGraph, reader.Get(), "RenderMP3File", "pIASFReader");
}

HRESULT CSourceRenderer::RenderOGGFile(IGraphBuilder* pGraph, LPCWSTR pwszFile)
{
    TESSALY_TRACE("S:CDShowPlayer::RenderOGGFile> Attempt to use OggSourceFilter to play ogg files...");
    return RenderCompanionSource(pGraph, pwszFile, CLSID_OggSourceFilter, L"OGG Reader",
                                 "RenderOGGFile", "CLSID_OggSourceFilter");
}

HRESULT CSourceRenderer::RenderFlacFile(IGraphBuilder* pGraph, LPCWSTR pwszFile)
{
    TESSALY_TRACE("S:CDShowPlayer::RenderFlacFile> Attempt to use FlacSourceFilter to play Flac files...");
    return RenderCompanionSource(pGraph, pwszFile, CLSID_FlacSourceFilter, L"FLAC Reader",
                                 "RenderFlacFile", "CLSID_FlacSourceFilter");
}

HRESULT CSourceRenderer::RenderCompanionSource(IGraphBuilder* pGraph, LPCWSTR pwszFile,
                                               REFCLSID clsid, LPCWSTR pwszFilterName,
                                               const char* pszMethod, const char* pszClsidName)
{
    ComPtr<IBaseFilter> source;
    HRESULT hr = CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter, &source);
    if (FAILED(hr))
    {
        TESSALY_TRACE("E:CDShowPlayer::%s> CoCreateInstance <%s> failed", pszMethod, pszClsidName);
        return hr;
    }

    ComPtr<ISourceFilterSetup> setup;
    hr = FAILED(QueryTo(source, IID_ISourceFilterSetup, setup)) ? E_NOINTERFACE : setup->Setup(1);
    if (SUCCEEDED(hr))
    {
        ComPtr<IFileSourceFilter> fileSource;
        hr = FAILED(QueryTo(source, IID_IFileSourceFilter, fileSource))
                 ? E_NOINTERFACE
                 : fileSource->Load(pwszFile, nullptr);
    }
    if (SUCCEEDED(hr))
        hr = pGraph->AddFilter(source.Get(), pwszFilterName);
    if (FAILED(hr))
    {
        pGraph->RemoveFilter(source.Get());
        return hr;
    }
    return RenderSourcePins(pGraph, source.Get(), pszMethod, "pFileSource");
}

HRESULT CSourceRenderer::RenderSourcePins(IGraphBuilder* pGraph, IBaseFilter* pSource,
                                          const char* pszMethod, const char* pszSourceName)
{
    ComPtr<IEnumPins> pins;
    HRESULT hr = pSource->EnumPins(&pins);
    if (FAILED(hr))
    {
        TESSALY_TRACE("E:CDShowPlayer::%s> %s->EnumPins failed", pszMethod, pszSourceName);
        pGraph->RemoveFilter(pSource);
        return hr;
    }
    if (!RenderToOutputPin(pins.Get(), pGraph))
    {
        TESSALY_TRACE("E:CDShowPlayer::%s> No output pin is rendered", pszMethod);
        pGraph->RemoveFilter(pSource);
        return E_FAIL;
    }
    return S_OK;
}

BOOL CSourceRenderer::RenderToOutputPin(IEnumPins* pPins, IGraphBuilder* pGraph)
{
    BOOL bRendered = FALSE;
    pPins->Reset();
    for (;;)
    {
        ComPtr<IPin> pin;
        if (pPins->Next(1, &pin, nullptr) != S_OK)
            break;
        PIN_DIRECTION direction;
        if (FAILED(pin->QueryDirection(&direction)))
        {
            TESSALY_TRACE("E:CDShowPlayer::RenderToOutputPin> pIPin->QueryDirection failed");
            continue;
        }
        if (direction != PINDIR_OUTPUT)
        {
            TESSALY_TRACE("S:CDShowPlayer::RenderToOutputPin> Not output pin, skip...");
            continue;
        }
        // Every output pin gets its chance: a file may carry a stream nothing here can play.
        if (SUCCEEDED(pGraph->Render(pin.Get())))
            bRendered = TRUE;
        else
            TESSALY_TRACE("E:CDShowPlayer::RenderToOutputPin> failed to render this output pin");
    }
    return bRendered;
}
