// Renders a file through a source filter chosen for its format rather than the one automatic
// rendering would pick: the WM ASF Reader for MP3, the companion Ogg and FLAC sources. A path
// that fails leaves the graph for automatic rendering; filters it already added may stay in it.
#pragma once

#include <windows.h>

#include <dshow.h>

class CSourceRenderer
{
public:
    static HRESULT RenderMP3File(IGraphBuilder* pGraph, LPCWSTR pwszFile);
    static HRESULT RenderOGGFile(IGraphBuilder* pGraph, LPCWSTR pwszFile);
    static HRESULT RenderFlacFile(IGraphBuilder* pGraph, LPCWSTR pwszFile);
    // Tries every output pin, even after one rendered; TRUE when at least one did.
    static BOOL RenderToOutputPin(IEnumPins* pPins, IGraphBuilder* pGraph);

private:
    // The method and source names only name the failing step in the trace.
    static HRESULT RenderCompanionSource(IGraphBuilder* pGraph, LPCWSTR pwszFile, REFCLSID clsid,
                                         LPCWSTR pwszFilterName, const char* pszMethod,
                                         const char* pszClsidName);
    // A source none of whose pins rendered leaves the graph again.
    static HRESULT RenderSourcePins(IGraphBuilder* pGraph, IBaseFilter* pSource,
                                    const char* pszMethod, const char* pszSourceName);
};
