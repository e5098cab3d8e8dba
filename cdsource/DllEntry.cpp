// The library's entry point and its four exports; everything else is in tessaly_cdsource_core.
#include <windows.h>
#include <olectl.h>

#include "cdsource/CCDSourceServer.h"

namespace {

HINSTANCE g_hInstance = nullptr;

} // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE hInstance, DWORD dwReason, LPVOID pvReserved);

extern "C" BOOL WINAPI DllMain(HINSTANCE hInstance, DWORD dwReason, LPVOID)
{
    if (dwReason == DLL_PROCESS_ATTACH)
    {
        g_hInstance = hInstance;
        DisableThreadLibraryCalls(hInstance);
    }
    else if (dwReason == DLL_PROCESS_DETACH)
    {
        CCDSourceServer::Term();
    }
    return TRUE;
}

STDAPI DllCanUnloadNow()
{
    return CCDSourceServer::CanUnloadNow();
}

STDAPI DllGetClassObject(REFCLSID rclsid, REFIID riid, void** ppv)
{
    return CCDSourceServer::GetClassObject(rclsid, riid, ppv);
}

STDAPI DllRegisterServer()
{
    return CCDSourceServer::RegisterServer(g_hInstance);
}

STDAPI DllUnregisterServer()
{
    return CCDSourceServer::UnregisterServer();
}
