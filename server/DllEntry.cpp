// The library's entry point and its four exports.
#include <windows.h>
#include <olectl.h>

#include "engine/CComCreator.h"
#include "engine/ComBoundary.h"
#include "engine/CDllModule.h"
#include "engine/CModuleLock.h"
#include "engine/TessalyContract.h"
#include "trace/Trace.h"
#include "objects/CPlay.h"
#include "objects/CQueryFileInfo.h"

extern "C" BOOL WINAPI PrxDllMain(HINSTANCE hInstance, DWORD dwReason, LPVOID pvReserved);
extern "C" HRESULT WINAPI PrxDllGetClassObject(REFCLSID rclsid, REFIID riid, void** ppv);
extern "C" HRESULT WINAPI PrxDllCanUnloadNow();

extern "C" BOOL WINAPI DllMain(HINSTANCE hInstance, DWORD dwReason, LPVOID pvReserved);

namespace {

CClassEntry g_ClassTable[] = {
    {&CLSID_Play, CComCreator<CPlay>::CreateInstance, L"Play Class", L"Tessaly.Play.1", L"Tessaly.Play", nullptr},
    {&CLSID_QueryFileInfo, CComCreator<CQueryFileInfo>::CreateInstance, L"QueryFileInfo Class",
     L"Tessaly.QueryFileInfo.1", L"Tessaly.QueryFileInfo", nullptr},
};

} // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE hInstance, DWORD dwReason, LPVOID pvReserved)
{
    // The proxy/stub part remembers the instance for its own registration.
    PrxDllMain(hInstance, dwReason, pvReserved);
    if (dwReason == DLL_PROCESS_ATTACH)
    {
        TESSALY_TRACE("S:DllMain> Debugging Tessaly started...");
        g_DllModule.Init(g_ClassTable, sizeof(g_ClassTable) / sizeof(g_ClassTable[0]), hInstance, &LIBID_TESSALYLib);
        DisableThreadLibraryCalls(hInstance);
    }
    else if (dwReason == DLL_PROCESS_DETACH)
    {
        g_DllModule.Term();
    }
    return TRUE;
}

STDAPI DllCanUnloadNow()
{
    if (PrxDllCanUnloadNow() != S_OK)
        return S_FALSE;
    return CModuleLock::Count() == 0 ? S_OK : S_FALSE;
}

STDAPI DllGetClassObject(REFCLSID rclsid, REFIID riid, void** ppv)
{
    if (!ppv)
        return E_POINTER; // before the proxy part, which would write through it
    if (SUCCEEDED(PrxDllGetClassObject(rclsid, riid, ppv)))
        return S_OK;
    return ComBoundary([&] { return g_DllModule.GetClassObject(rclsid, riid, ppv); });
}

STDAPI DllRegisterServer()
{
    return ComBoundary([] { return g_DllModule.RegisterServer(); });
}

STDAPI DllUnregisterServer()
{
    return ComBoundary([] { return g_DllModule.UnregisterServer(); });
}
