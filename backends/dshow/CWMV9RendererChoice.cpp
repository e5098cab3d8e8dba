#include "backends/dshow/CWMV9RendererChoice.h"

#include "backends/dshow/WMFormatInterfaces.h"
#include "engine/ComPtr.h"
#include "trace/Trace.h"
#include "inspect/CASFFileParser.h"

namespace {

// Windows Media Video 9 in its simple/main, advanced and screen/image forms.
const DWORD g_WMV9FourCCs[] = {MAKEFOURCC('W', 'M', 'V', '3'), MAKEFOURCC('W', 'M', 'V', 'A'),
                               MAKEFOURCC('W', 'M', 'V', 'P'), MAKEFOURCC('W', 'V', 'P', '2')};

bool HasConnectedInputPin(IBaseFilter* pFilter)
{
    ComPtr<IEnumPins> pins;
    if (FAILED(pFilter->EnumPins(&pins)))
        return true; // cannot tell: leave it where it is
    for (;;)
    {
        ComPtr<IPin> pin;
        if (pins->Next(1, &pin, nullptr) != S_OK)
            return false;
        PIN_DIRECTION direction;
        ComPtr<IPin> peer;
        if (SUCCEEDED(pin->QueryDirection(&direction)) && direction == PINDIR_INPUT &&
            SUCCEEDED(pin->ConnectedTo(&peer)))
            return true;
    }
}

} // namespace

BOOL CWMV9RendererChoice::IsWMV9VideoCodec(CASFFileParser& parser)
{
    // Cleared first: the parser leaves the record alone for a file without video.
    ASF_VIDEO_INFO video = {};
    ASF_AUDIO_INFO audio = {};
    uint16_t wChannelType = 0;
    if (FAILED(parser.GetAVFileInfo(&video, &audio, &wChannelType)))
    {
        TESSALY_TRACE("E:CDShowPlayer::IsWMV9VideoCodec> CASFFileParser::GetAVFileInfo failed");
        return FALSE;
    }
    for (DWORD dwFourCC : g_WMV9FourCCs)
    {
        if (video.dwFourCC == dwFourCC)
            return TRUE;
    }
    return FALSE;
}

HRESULT CWMV9RendererChoice::ReadConformanceTemplate(IWMMetadataEditor* pEditor, LPCWSTR pwszFile,
                                                     BOOL* pbHas)
{
    *pbHas = FALSE;
    ComPtr<IWMMetadataEditor> editor(pEditor);
    HRESULT hr = S_OK;
    ComPtr<wmf::IWMMetadataEditor2> editor2;
    if (SUCCEEDED(QueryTo(editor, wmf::IID_IWMMetadataEditor2, editor2)))
    {
        hr = editor2->OpenEx(pwszFile, GENERIC_READ, FILE_SHARE_READ);
        if (FAILED(hr))
        {
            TESSALY_TRACE("E:CDShowPlayer::HasDeviceConformanceMetaData> IWMMetadataEditor2->OpenEx failed");
            return hr;
        }
    }
    else
    {
        hr = editor->Open(pwszFile);
        if (FAILED(hr))
        {
            TESSALY_TRACE("E:CDShowPlayer::HasDeviceConformanceMetaData> IWMMetadataEditor->Open failed");
            return hr;
        }
    }

    ComPtr<IWMHeaderInfo> headerInfo;
    ComPtr<IWMHeaderInfo3> headerInfo3;
    if (FAILED(QueryTo(editor, wmf::IID_IWMHeaderInfo, headerInfo)))
        TESSALY_TRACE("E:CDShowPlayer::HasDeviceConformanceMetaData> Failed to query for IWMHeaderInfo");
    else if (FAILED(QueryTo(headerInfo, wmf::IID_IWMHeaderInfo3, headerInfo3)))
        TESSALY_TRACE("E:CDShowPlayer::HasDeviceConformanceMetaData> QI for IWMHeaderInfo3 failed");
    else
    {
        WORD wCount = 0;
        if (SUCCEEDED(headerInfo3->GetAttributeIndices(0xFFFF, L"DeviceConformanceTemplate",
                                                       nullptr, nullptr, &wCount)))
        {
            TESSALY_TRACE("S:HasDeviceConformanceMetaData> number of values found for DeviceConformanceTemplate = %d",
                          wCount);
            *pbHas = wCount != 0;
        }
        else
            TESSALY_TRACE("E:CDShowPlayer::HasDeviceConformanceMetaData> IWMHeaderInfo3->GetAttributeIndices failed");
    }

    hr = editor->Close();
    if (FAILED(hr))
        TESSALY_TRACE("E:CDShowPlayer::HasDeviceConformanceMetaData> IWMMetadataEditor->Close failed");
    return hr;
}

HRESULT CWMV9RendererChoice::AddVMR9Filter(IGraphBuilder* pGraph)
{
    TESSALY_TRACE("S:CDShowPlayer::AddVMR9Filter> Attempt to use Video Mixing Render v9 to render video files...");
    ComPtr<IBaseFilter> vmr;
    HRESULT hr = CoCreateInstance(CLSID_VideoMixingRenderer9, nullptr, CLSCTX_INPROC_SERVER,
                                  IID_IBaseFilter, &vmr);
    if (FAILED(hr))
    {
        TESSALY_TRACE("E:CDShowPlayer::AddVMR9Filter> CoCreateInstance <CLSID_VideoMixingRenderer9> failed");
        return hr;
    }
    hr = pGraph->AddFilter(vmr.Get(), nullptr);
    if (FAILED(hr))
        TESSALY_TRACE("E:CDShowPlayer::AddVMR9Filter> pIGB->AddFilter failed");
    return hr;
}

// When the video stream could not be connected after all, an idle VMR-9 would still answer for
// the graph's video window: the file would count as video, and some renderers even fault when
// asked for the size of a picture they never got.
void CWMV9RendererChoice::RemoveUnconnectedVMR9(IGraphBuilder* pGraph)
{
    ComPtr<IEnumFilters> filters;
    if (FAILED(pGraph->EnumFilters(&filters)))
        return;
    ComPtr<IBaseFilter> idle;
    for (;;)
    {
        ComPtr<IBaseFilter> filter;
        if (filters->Next(1, &filter, nullptr) != S_OK)
            break;
        CLSID clsid;
        if (SUCCEEDED(filter->GetClassID(&clsid)) && IsEqualCLSID(clsid, CLSID_VideoMixingRenderer9) &&
            !HasConnectedInputPin(filter.Get()))
            idle = filter;
    }
    // Removed only once the enumeration is over, which a change of the graph would invalidate.
    if (idle && SUCCEEDED(pGraph->RemoveFilter(idle.Get())))
        TESSALY_TRACE("S:CDShowPlayer::OpenFile> Removed the unconnected VMR-9 again");
}
