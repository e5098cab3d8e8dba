#include "backends/dshow/CWMVCoreLibrary.h"

namespace {

typedef HRESULT(WINAPI* WMCreateEditorProc)(IWMMetadataEditor**);

HRESULT LastErrorResult()
{
    const DWORD dwError = GetLastError();
    return dwError ? HRESULT_FROM_WIN32(dwError) : E_FAIL;
}

} // namespace

HRESULT CWMVCoreLibrary::CreateEditor(IWMMetadataEditor** ppEditor)
{
    *ppEditor = nullptr;
    if (!m_hModule)
    {
        m_hModule = LoadLibraryW(L"wmvcore.dll");
        if (!m_hModule)
            return LastErrorResult();
    }
    auto pfnCreate = reinterpret_cast<WMCreateEditorProc>(
        reinterpret_cast<void*>(GetProcAddress(m_hModule, "WMCreateEditor")));
    if (!pfnCreate)
        return LastErrorResult();
    return pfnCreate(ppEditor);
}

void CWMVCoreLibrary::Unload()
{
    if (m_hModule)
    {
        FreeLibrary(m_hModule);
        m_hModule = nullptr;
    }
}
