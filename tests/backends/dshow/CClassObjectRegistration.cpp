#include "CClassObjectRegistration.h"

#include <objbase.h>

CClassObjectRegistration::CClassObjectRegistration(REFCLSID clsid, Create create)
    : m_create(std::move(create)),
      m_hrRegistered(CoRegisterClassObject(clsid, this, CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &m_dwCookie))
{
}

CClassObjectRegistration::~CClassObjectRegistration()
{
    if (SUCCEEDED(m_hrRegistered))
        CoRevokeClassObject(m_dwCookie);
}

HRESULT STDMETHODCALLTYPE CClassObjectRegistration::QueryInterface(REFIID riid, void** ppv)
{
    const bool bKnown = IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, IID_IClassFactory);
    *ppv = bKnown ? static_cast<IClassFactory*>(this) : nullptr;
    return bKnown ? S_OK : E_NOINTERFACE;
}

HRESULT STDMETHODCALLTYPE CClassObjectRegistration::CreateInstance(IUnknown* pOuter, REFIID riid, void** ppv)
{
    *ppv = nullptr;
    return pOuter ? CLASS_E_NOAGGREGATION : m_create(riid, ppv);
}
