#include "engine/CClassFactory.h"

#include "engine/CModuleLock.h"
#include "trace/Trace.h"

CClassFactory::CClassFactory(PFNCREATEINSTANCE pfnCreateInstance) : m_pfnCreateInstance(pfnCreateInstance)
{
    InitializeCriticalSection(&m_csRef);
}

CClassFactory::~CClassFactory()
{
    DeleteCriticalSection(&m_csRef);
}

STDMETHODIMP CClassFactory::QueryInterface(REFIID riid, void** ppv)
{
    if (!ppv)
        return E_POINTER;
    if (riid == IID_IUnknown || riid == IID_IClassFactory)
    {
        *ppv = static_cast<IClassFactory*>(this);
        AddRef();
        return S_OK;
    }
    *ppv = nullptr;
    return E_NOINTERFACE;
}

STDMETHODIMP_(ULONG) CClassFactory::AddRef()
{
    EnterCriticalSection(&m_csRef);
    const LONG lRef = ++m_lRef;
    if (lRef == 2)
        CModuleLock::Lock();
    LeaveCriticalSection(&m_csRef);
    return static_cast<ULONG>(lRef);
}

STDMETHODIMP_(ULONG) CClassFactory::Release()
{
    EnterCriticalSection(&m_csRef);
    const LONG lRef = --m_lRef;
    if (lRef == 1)
        CModuleLock::Unlock();
    LeaveCriticalSection(&m_csRef);
    if (lRef == 0)
        delete this;
    return static_cast<ULONG>(lRef);
}

STDMETHODIMP CClassFactory::CreateInstance(IUnknown* pOuter, REFIID riid, void** ppv)
{
    if (!ppv)
        return E_POINTER;
    *ppv = nullptr;
    if (pOuter && riid != IID_IUnknown)
    {
        TESSALY_TRACE("CComClassFactory: asked for non IUnknown interface while creating an aggregated object");
        return CLASS_E_NOAGGREGATION;
    }
    return m_pfnCreateInstance(pOuter, riid, ppv);
}

STDMETHODIMP CClassFactory::LockServer(BOOL fLock)
{
    if (fLock)
        CModuleLock::Lock();
    else
        CModuleLock::Unlock();
    return S_OK;
}
