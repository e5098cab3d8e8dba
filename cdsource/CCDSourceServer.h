// The library's one class and its class object, for the entry points in DllEntry.cpp: kept
// apart from them so that tests reach the same code without loading the library.
#pragma once

#include <windows.h>

class CCDSourceServer
{
public:
    // The class object of CLSID_TessalyCDAudioSource (made on first request and kept until
    // Term), or CLASS_E_CLASSNOTAVAILABLE.
    static HRESULT GetClassObject(REFCLSID rclsid, REFIID riid, void** ppv);
    // S_OK when no object, enumerator, held class object or server lock needs the library.
    static HRESULT CanUnloadNow();
    static HRESULT RegisterServer(HINSTANCE hInstance);
    static HRESULT UnregisterServer();
    // Releases the class object; when the library is unloaded.
    static void Term();
};
