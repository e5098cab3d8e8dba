#include "cdsource/CCDSourceServer.h"

#include <new>

#include "cdsource/CCDAudioSource.h"
#include "cdsource/CCDSourceRegistrar.h"
#include "engine/CClassFactory.h"
#include "engine/CComCreator.h"
#include "engine/CModuleLock.h"

namespace {

// The class table's own reference; it does not keep the library loaded (see CClassFactory).
CClassFactory* volatile g_pClassObject = nullptr;

} // namespace

HRESULT CCDSourceServer::GetClassObject(REFCLSID rclsid, REFIID riid, void** ppv)
{
    if (!ppv)
        return E_POINTER;
    *ppv = nullptr;
    if (rclsid != CLSID_TessalyCDAudioSource)
        return CLASS_E_CLASSNOTAVAILABLE;
    CClassFactory* pClassObject = g_pClassObject;
    if (!pClassObject)
    {
        // Two threads asking at once both make one; the first kept wins and the other goes.
        CClassFactory* pNew = new (std::nothrow) CClassFactory(CComCreator<CCDAudioSource>::CreateInstance);
        if (!pNew)
            return E_OUTOFMEMORY;
        pClassObject = static_cast<CClassFactory*>(
            InterlockedCompareExchangePointer(reinterpret_cast<void* volatile*>(&g_pClassObject), pNew, nullptr));
        if (pClassObject)
            pNew->Release();
        else
            pClassObject = pNew;
    }
    return pClassObject->QueryInterface(riid, ppv);
}

HRESULT CCDSourceServer::CanUnloadNow()
{
    return CModuleLock::Count() == 0 ? S_OK : S_FALSE;
}

HRESULT CCDSourceServer::RegisterServer(HINSTANCE hInstance)
{
    WCHAR wszPath[MAX_PATH];
    const DWORD cch = GetModuleFileNameW(hInstance, wszPath, MAX_PATH);
    if (cch == 0)
        return HRESULT_FROM_WIN32(GetLastError());
    if (cch >= MAX_PATH)
        return HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER);
    return CCDSourceRegistrar::Register(wszPath);
}

HRESULT CCDSourceServer::UnregisterServer()
{
    return CCDSourceRegistrar::Unregister();
}

void CCDSourceServer::Term()
{
    CClassFactory* pClassObject = static_cast<CClassFactory*>(
        InterlockedExchangePointer(reinterpret_cast<void* volatile*>(&g_pClassObject), nullptr));
    if (pClassObject)
        pClassObject->Release();
}
