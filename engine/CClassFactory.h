// The class object of one creatable class. The module's class table keeps one reference to
// it for the life of the library; that reference alone must not keep the library loaded, so
// the module is locked only while someone else holds the object too.
#pragma once

#include <windows.h>

class CClassFactory final : public IClassFactory
{
public:
    typedef HRESULT (*PFNCREATEINSTANCE)(IUnknown* pOuter, REFIID riid, void** ppv);

    explicit CClassFactory(PFNCREATEINSTANCE pfnCreateInstance);
    CClassFactory(const CClassFactory&) = delete;
    CClassFactory& operator=(const CClassFactory&) = delete;

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;
    STDMETHODIMP CreateInstance(IUnknown* pOuter, REFIID riid, void** ppv) override;
    STDMETHODIMP LockServer(BOOL fLock) override;

private:
    ~CClassFactory();

    PFNCREATEINSTANCE m_pfnCreateInstance;
    CRITICAL_SECTION m_csRef; // the lock transitions must pair with the count changes
    LONG m_lRef = 1;          // the class table's own reference
};
