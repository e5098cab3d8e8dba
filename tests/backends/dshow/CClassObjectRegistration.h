// Stands in for an installed COM class within this process: while the object lives,
// CoCreateInstance of the class identifier reaches the given creation function.
#pragma once

#include <windows.h>

#include <functional>

class CClassObjectRegistration : public IClassFactory
{
public:
    typedef std::function<HRESULT(REFIID riid, void** ppv)> Create;

    CClassObjectRegistration(REFCLSID clsid, Create create);
    CClassObjectRegistration(const CClassObjectRegistration&) = delete;
    CClassObjectRegistration& operator=(const CClassObjectRegistration&) = delete;
    virtual ~CClassObjectRegistration();

    HRESULT Registered() const { return m_hrRegistered; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return 2; } // lives on the test's stack
    ULONG STDMETHODCALLTYPE Release() override { return 1; }
    HRESULT STDMETHODCALLTYPE CreateInstance(IUnknown* pOuter, REFIID riid, void** ppv) override;
    HRESULT STDMETHODCALLTYPE LockServer(BOOL) override { return S_OK; }

private:
    Create m_create;
    DWORD m_dwCookie = 0;
    HRESULT m_hrRegistered;
};
