#include "engine/CDllModule.h"

#include <oleauto.h>

#include <new>

#include "engine/ComPtr.h"
#include "engine/CRegistrar.h"
#include "trace/Trace.h"

extern "C" HRESULT WINAPI PrxDllRegisterServer();
extern "C" HRESULT WINAPI PrxDllUnregisterServer();

// The locks live as long as the object, not just between Init and Term: back-ends linked into
// a program of their own (the tests) use the start-up counters without any Init.
CDllModule::CDllModule(const CFrameworkStartup& startup) : m_startup(startup)
{
    InitializeCriticalSection(&m_csClassObjects);
    InitializeCriticalSection(&m_csLock);
}

CDllModule::~CDllModule()
{
    DeleteCriticalSection(&m_csLock);
    DeleteCriticalSection(&m_csClassObjects);
}

HRESULT CDllModule::Init(CClassEntry* pTable, size_t nEntries, HINSTANCE hInstance, const GUID* plibid)
{
    TESSALY_TRACE("S:CDllModule::Init> Enter");
    m_pTable = pTable;
    m_nEntries = nEntries;
    m_hInstance = hInstance;
    m_plibid = plibid;
    TESSALY_TRACE("S:CDllModule::CDllModule> Initialize Critical Section");
    TESSALY_TRACE("S:CDllModule::Init> Exit");
    return S_OK;
}

void CDllModule::Term()
{
    TESSALY_TRACE("S:CDllModule::Term> Enter");
    TESSALY_TRACE("S:CDllModule::Term> Terminate Critical Section");
    EnterCriticalSection(&m_csClassObjects);
    for (size_t i = 0; i < m_nEntries; ++i)
    {
        m_pTable[i].pClassObject.Reset();
    }
    LeaveCriticalSection(&m_csClassObjects);
    TESSALY_TRACE("S:CDllModule::Term> Done...");
}

HRESULT CDllModule::GetClassObject(REFCLSID rclsid, REFIID riid, void** ppv)
{
    if (!ppv)
        return E_POINTER;
    *ppv = nullptr;
    for (size_t i = 0; i < m_nEntries; ++i)
    {
        CClassEntry& entry = m_pTable[i];
        if (*entry.pclsid != rclsid)
            continue;
        EnterCriticalSection(&m_csClassObjects);
        if (!entry.pClassObject)
            Adopt(entry.pClassObject, new (std::nothrow) CClassFactory(entry.pfnCreateInstance));
        const ComPtr<CClassFactory> pClassObject = entry.pClassObject;
        LeaveCriticalSection(&m_csClassObjects);
        return pClassObject ? pClassObject->QueryInterface(riid, ppv) : E_OUTOFMEMORY;
    }
    return CLASS_E_CLASSNOTAVAILABLE;
}

HRESULT CDllModule::ModulePath(WCHAR (&wszPath)[MAX_PATH]) const
{
    const DWORD cch = GetModuleFileNameW(m_hInstance, wszPath, MAX_PATH);
    if (cch == 0 || cch >= MAX_PATH)
        return cch ? HRESULT_FROM_WIN32(ERROR_INSUFFICIENT_BUFFER) : HRESULT_FROM_WIN32(GetLastError());
    return S_OK;
}

HRESULT CDllModule::RegisterServer()
{
    HRESULT hr = PrxDllRegisterServer();
    if (FAILED(hr))
        return hr;
    WCHAR wszPath[MAX_PATH];
    hr = ModulePath(wszPath);
    for (size_t i = 0; i < m_nEntries && SUCCEEDED(hr); ++i)
        hr = CRegistrar::RegisterClassEntry(m_pTable[i], *m_plibid, wszPath);
    if (FAILED(hr))
        return hr;

    ComPtr<ITypeLib> pTypeLib;
    hr = LoadTypeLibEx(wszPath, REGKIND_NONE, &pTypeLib);
    if (SUCCEEDED(hr))
        hr = RegisterTypeLib(pTypeLib.Get(), wszPath, nullptr);
    return hr;
}

HRESULT CDllModule::UnregisterServer()
{
    PrxDllUnregisterServer();
    for (size_t i = 0; i < m_nEntries; ++i)
        CRegistrar::UnregisterClassEntry(m_pTable[i]);
    // The embedded library names its own version, locale and system kind (32- or 64-bit
    // Windows), which is what registration wrote under.
    WCHAR wszPath[MAX_PATH];
    HRESULT hr = ModulePath(wszPath);
    ComPtr<ITypeLib> pTypeLib;
    if (SUCCEEDED(hr))
        hr = LoadTypeLibEx(wszPath, REGKIND_NONE, &pTypeLib);
    TLIBATTR* pAttr = nullptr;
    if (SUCCEEDED(hr))
        hr = pTypeLib->GetLibAttr(&pAttr);
    if (FAILED(hr))
        return hr;
    hr = UnRegisterTypeLib(pAttr->guid, pAttr->wMajorVerNum, pAttr->wMinorVerNum, pAttr->lcid, pAttr->syskind);
    pTypeLib->ReleaseTLibAttr(pAttr);
    return hr;
}

void CDllModule::InitQT()
{
    TESSALY_TRACE("S:CDllModule::InitQT> Enter");
    EnterCriticalSection(&m_csLock);
    if (m_nQTRefCount == 0)
    {
        TESSALY_TRACE("S:CDllModule::InitQT> QT framework not initialized yet, do it now...");
        OSErr err = m_startup.pfnInitializeQTML(0);
        if (err != 0)
        {
            TESSALY_TRACE("E:CDllModule::InitQT> InitializeQTML Failed, OSErr = %x", static_cast<unsigned>(err));
        }
        else if ((err = m_startup.pfnEnterMovies()) != 0)
        {
            TESSALY_TRACE("E:CDllModule::InitQT> EnterMovies Failed, OSErr = %x", static_cast<unsigned>(err));
        }
        else
        {
            m_bQTInstalled = TRUE;
            TESSALY_TRACE("S:CDllModule::InitQT> QT is Installed");
        }
        // Once started in this process QuickTime counts as installed; only the version of a
        // failed start-up is unknown.
        m_wQTVersion = 0;
        if (m_bQTInstalled)
        {
            long lVersion = 0;
            if (m_startup.pfnGestalt(gestaltQuickTime, &lVersion) != 0)
                lVersion = 0;
            m_wQTVersion = (static_cast<DWORD>(lVersion) >> 16) & 0xFFFF;
            TESSALY_TRACE("S:CDllModule::InitQT> QT version = 0x%x", static_cast<unsigned>(m_wQTVersion));
        }
    }
    else
    {
        TESSALY_TRACE("S:CDllModule::InitQT> QT framework initialized, increment ref count only...");
    }
    // Counted even after a failed start-up, so that every InitQT pairs with one DeInitQT.
    ++m_nQTRefCount;
    LeaveCriticalSection(&m_csLock);
    TESSALY_TRACE("S:CDllModule::InitQT> Exit");
}

void CDllModule::DeInitQT()
{
    TESSALY_TRACE("S:CDllModule::DeInitQT> Enter");
    EnterCriticalSection(&m_csLock);
    if (m_nQTRefCount != 0)
    {
        TESSALY_TRACE("S:CDllModule::DeInitQT> Decreasing ref count by one...");
        if (--m_nQTRefCount == 0)
        {
            TESSALY_TRACE("S:CDllModule::DeInitQT> terminating QT...");
            m_startup.pfnExitMovies();
            m_startup.pfnTerminateQTML();
        }
        else
        {
            TESSALY_TRACE("S:CDllModule::DeInitQT> ref count is not null...");
        }
    }
    LeaveCriticalSection(&m_csLock);
    TESSALY_TRACE("S:CDllModule::DeInitQT> Exit");
}

void CDllModule::InitGdiplus()
{
    TESSALY_TRACE("S:CDllModule::InitGdiplus> Enter");
    EnterCriticalSection(&m_csLock);
    if (m_nGdiplusRefCount == 0)
    {
        TESSALY_TRACE("S:CDllModule::InitGdiplus> GDI+ not initialized yet, do it now...");
        m_ulGdiplusToken = 0;
        // Only successful start-ups are counted: a failure leaves the next call to try again.
        if (m_startup.pfnStartGdiplus(&m_ulGdiplusToken))
            m_nGdiplusRefCount = 1;
        else
            m_ulGdiplusToken = 0;
    }
    else
    {
        TESSALY_TRACE("S:CDllModule::InitGdiplus> GDI+ initialized, increment ref count only...");
        ++m_nGdiplusRefCount;
    }
    LeaveCriticalSection(&m_csLock);
    TESSALY_TRACE("S:CDllModule::InitGdiplus> Exit");
}

void CDllModule::DeInitGdiplus()
{
    TESSALY_TRACE("S:CDllModule::DeInitGdiplus> Enter");
    EnterCriticalSection(&m_csLock);
    if (m_nGdiplusRefCount != 0)
    {
        TESSALY_TRACE("S:CDllModule::DeInitGdiplus> Decreasing ref count by one...");
        if (--m_nGdiplusRefCount == 0)
        {
            if (m_ulGdiplusToken != 0)
            {
                TESSALY_TRACE("S:CDllModule::DeInitGdiplus> terminating GDI+...");
                m_startup.pfnShutdownGdiplus(m_ulGdiplusToken);
                m_ulGdiplusToken = 0;
            }
            else
            {
                TESSALY_TRACE("S:CDllModule::DeInitGdiplus> GDI+ not startup properly, don't need to terminate...");
            }
        }
        else
        {
            TESSALY_TRACE("S:CDllModule::DeInitGdiplus> ref count is not null...");
        }
    }
    LeaveCriticalSection(&m_csLock);
    TESSALY_TRACE("S:CDllModule::DeInitGdiplus> Exit");
}

CDllModule g_DllModule;
