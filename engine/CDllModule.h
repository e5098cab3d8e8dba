// The library's module object: class table and class objects, registration, and the
// process-wide, reference-counted start-up of QuickTime and GDI+ shared by every back-end.
#pragma once

#include <windows.h>

#include "engine/CClassEntry.h"
#include "engine/CFrameworkStartup.h"

class CDllModule
{
public:
    explicit CDllModule(const CFrameworkStartup& startup = CFrameworkStartup::Platform());
    CDllModule(const CDllModule&) = delete;
    CDllModule& operator=(const CDllModule&) = delete;
    virtual ~CDllModule();

    HRESULT Init(CClassEntry* pTable, size_t nEntries, HINSTANCE hInstance, const GUID* plibid);
    void Term();

    HRESULT GetClassObject(REFCLSID rclsid, REFIID riid, void** ppv);
    HRESULT RegisterServer();
    HRESULT UnregisterServer();
    HINSTANCE Instance() const { return m_hInstance; }

    void InitQT();
    void DeInitQT();
    bool IsQTInstalled() const { return m_bQTInstalled != FALSE; }
    bool IsQTVersionSupported() const { return (m_wQTVersion & 0xFFFF) >= 0x0700; }

    void InitGdiplus();
    void DeInitGdiplus();
    bool IsGdiplusStarted() const { return m_ulGdiplusToken != 0; }

private:
    HRESULT ModulePath(WCHAR (&wszPath)[MAX_PATH]) const;

    const CFrameworkStartup& m_startup;
    CClassEntry* m_pTable = nullptr;
    size_t m_nEntries = 0;
    HINSTANCE m_hInstance = nullptr;
    const GUID* m_plibid = nullptr;
    CRITICAL_SECTION m_csClassObjects; // class objects may be asked for from any thread

    CRITICAL_SECTION m_csLock;
    LONG m_nQTRefCount = 0;
    BOOL m_bQTInstalled = FALSE;
    DWORD m_wQTVersion = 0;
    LONG m_nGdiplusRefCount = 0;
    ULONG_PTR m_ulGdiplusToken = 0;
};

// The one module object of the loaded library.
extern CDllModule g_DllModule;
