// wmvcore.dll, loaded on first use: the engine must start on machines without the Windows Media
// Format runtime, so it is not linked. Editors it hands out must be released before it goes.
#pragma once

#include <windows.h>

#include <wmsdkidl.h>

class CWMVCoreLibrary
{
public:
    CWMVCoreLibrary() = default;
    CWMVCoreLibrary(const CWMVCoreLibrary&) = delete;
    CWMVCoreLibrary& operator=(const CWMVCoreLibrary&) = delete;
    ~CWMVCoreLibrary() { Unload(); }

    // WMCreateEditor's answer, or the system error when the library or the export is missing.
    HRESULT CreateEditor(IWMMetadataEditor** ppEditor);
    void Unload();

private:
    HMODULE m_hModule = nullptr;
};
