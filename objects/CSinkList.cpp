#include "objects/CSinkList.h"

#include <new>

CSinkList::~CSinkList()
{
    ReleaseAll();
}

IUnknown* CSinkList::At(int nIndex) const
{
    if (nIndex < 0 || nIndex >= m_nSize)
        return nullptr;
    return m_nSize == 1 ? m_pSingle : m_ppSinks[nIndex];
}

bool CSinkList::Add(IUnknown* pSink)
{
    if (m_nSize == 0)
    {
        m_pSingle = pSink;
        m_nSize = 1;
        return true;
    }
    if (m_nSize == 1)
    {
        IUnknown** ppSinks = new (std::nothrow) IUnknown*[4]();
        if (!ppSinks)
            return false;
        ppSinks[0] = m_pSingle;
        m_pSingle = nullptr;
        m_ppSinks = ppSinks;
        m_nSize = 4;
    }
    for (int i = 0; i < m_nSize; ++i)
    {
        if (!m_ppSinks[i])
        {
            m_ppSinks[i] = pSink;
            return true;
        }
    }
    IUnknown** ppSinks = new (std::nothrow) IUnknown*[2 * m_nSize]();
    if (!ppSinks)
        return false;
    for (int i = 0; i < m_nSize; ++i)
        ppSinks[i] = m_ppSinks[i];
    delete[] m_ppSinks;
    m_ppSinks = ppSinks;
    m_ppSinks[m_nSize] = pSink;
    m_nSize *= 2;
    return true;
}

bool CSinkList::Remove(IUnknown* pSink)
{
    if (!pSink)
        return false;
    if (m_nSize == 1)
    {
        if (m_pSingle != pSink)
            return false;
        m_pSingle = nullptr;
        m_nSize = 0;
        pSink->Release();
        return true;
    }
    for (int i = 0; i < m_nSize; ++i)
    {
        if (m_ppSinks[i] == pSink)
        {
            m_ppSinks[i] = nullptr;
            pSink->Release();
            return true;
        }
    }
    return false;
}

void CSinkList::ReleaseAll()
{
    // Detach first: a sink's Release may call back into the object.
    IUnknown* pSingle = m_pSingle;
    IUnknown** ppSinks = m_ppSinks;
    const int nSize = m_nSize;
    m_pSingle = nullptr;
    m_ppSinks = nullptr;
    m_nSize = 0;
    if (nSize == 1 && pSingle)
        pSingle->Release();
    for (int i = 0; ppSinks && i < nSize; ++i)
    {
        if (ppSinks[i])
            ppSinks[i]->Release();
    }
    delete[] ppSinks;
}
