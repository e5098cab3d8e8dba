// The system's ATL library, loaded when the first control host needs it: control containment in
// a window of class "AtlAxWin" without ATL's headers or static library.
#pragma once

#include <windows.h>

#include <unknwn.h>

class CAtlAxLibrary
{
public:
    // False when the library or one of its containment functions is missing.
    static bool WinInit();
    static HRESULT GetHost(HWND hWnd, IUnknown** ppHost);
    static HRESULT GetControl(HWND hWnd, IUnknown** ppControl);
    // Puts the control of the class given as text into the container window: through the
    // container's site interface where it offers one, else by ATL's own creation function (the
    // platform's ATL here has no site interface on its containers).
    static HRESULT CreateControl(HWND hWndContainer, LPCOLESTR pwszClassId);

private:
    struct Entries;
    struct WinInitCall
    {
        const Entries* pEntries;
        BOOL bResult;
    };
    static const Entries* Load();
    static DWORD WINAPI WinInitThread(void* pContext);
};
