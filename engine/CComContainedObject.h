// Class T living inside an aggregate: every IUnknown call on T's interfaces goes to the
// outer object, which owns the identity and the reference count.
#pragma once

#include <windows.h>

template <class T>
class CComContainedObject final : public T
{
public:
    explicit CComContainedObject(IUnknown* pOuter) : m_pOuter(pOuter) {}

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override { return m_pOuter->QueryInterface(riid, ppv); }
    STDMETHODIMP_(ULONG) AddRef() override { return m_pOuter->AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return m_pOuter->Release(); }

private:
    IUnknown* m_pOuter; // not counted: the outer object owns us
};
