#include "backends/wmp/CAtlAxLibrary.h"


#include "backends/wmp/WMPInterfaces.h"
#include "engine/ComPtr.h"
#include "trace/Trace.h"

struct CAtlAxLibrary::Entries
{
    BOOL(WINAPI* pfnWinInit)();
    HRESULT(WINAPI* pfnGetHost)(HWND, IUnknown**);
    HRESULT(WINAPI* pfnGetControl)(HWND, IUnknown**);
    HRESULT(WINAPI* pfnCreateControl)(LPCOLESTR, HWND, IStream*, IUnknown**);
};

namespace {

template <class F>
bool Resolve(HMODULE hModule, const char* pszName, F* pfn)
{
    *pfn = reinterpret_cast<F>(reinterpret_cast<void*>(GetProcAddress(hModule, pszName)));
    return *pfn != nullptr;
}

} // namespace

const CAtlAxLibrary::Entries* CAtlAxLibrary::Load()
{
    // Loaded once and kept: the "AtlAxWin" class and the windows of every host in the process run
    // on its code, so unloading it with any of them alive would leave them without a procedure.
    static const Entries* const s_pEntries = []() -> const Entries* {
        static Entries entries = {};
        HMODULE hModule = LoadLibraryW(L"atl.dll");
        if (!hModule || !Resolve(hModule, "AtlAxWinInit", &entries.pfnWinInit) ||
            !Resolve(hModule, "AtlAxGetHost", &entries.pfnGetHost) ||
            !Resolve(hModule, "AtlAxGetControl", &entries.pfnGetControl) ||
            !Resolve(hModule, "AtlAxCreateControl", &entries.pfnCreateControl))
        {
            TESSALY_TRACE("E:CAtlAxLibrary::Load> atl.dll or its containment functions are missing");
            return nullptr;
        }
        return &entries;
    }();
    return s_pEntries;
}

DWORD WINAPI CAtlAxLibrary::WinInitThread(void* pContext)
{
    auto pCall = static_cast<WinInitCall*>(pContext);
    pCall->bResult = pCall->pEntries->pfnWinInit();
    return 0;
}

// Registering the container class is process-wide and needed once. It runs on a thread of its
// own because some ATLs (the platform's here) also initialise OLE on the calling thread and never
// take it back: on the host's thread that would leave the host's apartment open after the host
// ended it (and unbalanced once per control host).
bool CAtlAxLibrary::WinInit()
{
    static const bool s_bRegistered = [] {
        WinInitCall call = {Load(), FALSE};
        if (!call.pEntries)
            return false;
        // The caller waits for the thread, so the call record on its stack outlives it.
        HANDLE hThread = CreateThread(nullptr, 0, &CAtlAxLibrary::WinInitThread, &call, 0, nullptr);
        if (!hThread)
            return false;
        WaitForSingleObject(hThread, INFINITE);
        CloseHandle(hThread);
        return call.bResult != FALSE;
    }();
    return s_bRegistered;
}

HRESULT CAtlAxLibrary::GetHost(HWND hWnd, IUnknown** ppHost)
{
    *ppHost = nullptr;
    const Entries* pEntries = Load();
    return pEntries ? pEntries->pfnGetHost(hWnd, ppHost) : E_FAIL;
}

HRESULT CAtlAxLibrary::GetControl(HWND hWnd, IUnknown** ppControl)
{
    *ppControl = nullptr;
    const Entries* pEntries = Load();
    return pEntries ? pEntries->pfnGetControl(hWnd, ppControl) : E_FAIL;
}

HRESULT CAtlAxLibrary::CreateControl(HWND hWndContainer, LPCOLESTR pwszClassId)
{
    const Entries* pEntries = Load();
    if (!pEntries)
        return E_FAIL;
    ComPtr<IUnknown> pHost;
    ComPtr<wmp::IAxWinHostWindow> pSite;
    if (SUCCEEDED(pEntries->pfnGetHost(hWndContainer, &pHost)) &&
        SUCCEEDED(QueryTo(pHost, wmp::IID_IAxWinHostWindow, pSite)))
        return pSite->CreateControl(pwszClassId, hWndContainer, nullptr);
    TESSALY_TRACE("S:CAtlAxLibrary::CreateControl> the container has no site interface; ATL creates the control");
    return pEntries->pfnCreateControl(pwszClassId, hWndContainer, nullptr, nullptr);
}
