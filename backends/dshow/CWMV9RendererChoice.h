// Whether a Windows Media file's video goes to the Video Mixing Renderer 9: Windows Media Video 9
// streams do, unless the file carries a device-conformance template, which marks content made
// for a device profile that the default renderer shows as intended.
#pragma once

#include <windows.h>

#include <dshow.h>
#include <wmsdkidl.h>

class CASFFileParser;

class CWMV9RendererChoice
{
public:
    // From the video FourCC of an ASF header the parser has read; FALSE when it has no video.
    static BOOL IsWMV9VideoCodec(CASFFileParser& parser);
    // Reads the attribute through an editor the caller created; the editor is closed again.
    static HRESULT ReadConformanceTemplate(IWMMetadataEditor* pEditor, LPCWSTR pwszFile, BOOL* pbHas);
    static HRESULT AddVMR9Filter(IGraphBuilder* pGraph);
    // Takes a VMR-9 that automatic rendering left unconnected out of the graph again.
    static void RemoveUnconnectedVMR9(IGraphBuilder* pGraph);
};
