// Owns one COM reference: released when the owner goes, so no path can leak or double-release.
#pragma once

#include <unknwn.h>

#include <utility>

template <class T>
class CComPtr
{
public:
    CComPtr() = default;
    CComPtr(T* p) : m_p(p) // takes a new reference
    {
        if (m_p)
            m_p->AddRef();
    }
    CComPtr(const CComPtr& other) : CComPtr(other.m_p) {}
    CComPtr(CComPtr&& other) noexcept : m_p(std::exchange(other.m_p, nullptr)) {}
    ~CComPtr() { Reset(); }

    CComPtr& operator=(CComPtr other) noexcept
    {
        std::swap(m_p, other.m_p);
        return *this;
    }

    T* operator->() const { return m_p; }
    T* Get() const { return m_p; }
    explicit operator bool() const { return m_p != nullptr; }

    // For out-parameters: whatever was held is released first.
    T** operator&()
    {
        Reset();
        return &m_p;
    }
    void** Out()
    {
        Reset();
        return reinterpret_cast<void**>(&m_p);
    }

    void Reset()
    {
        if (T* p = std::exchange(m_p, nullptr))
            p->Release();
    }
    void Attach(T* p) // adopts a reference the caller already holds
    {
        Reset();
        m_p = p;
    }
    T* Detach() { return std::exchange(m_p, nullptr); }

    template <class Q>
    HRESULT QueryInterface(REFIID riid, CComPtr<Q>& result) const
    {
        return m_p ? m_p->QueryInterface(riid, result.Out()) : E_POINTER;
    }

private:
    T* m_p = nullptr;
};
