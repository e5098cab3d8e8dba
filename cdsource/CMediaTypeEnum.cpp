#include "cdsource/CMediaTypeEnum.h"

#include <new>

#include "cdsource/CCDMediaType.h"
#include "engine/CModuleLock.h"

CMediaTypeEnum::CMediaTypeEnum(ULONG ulPos) : m_ulPos(ulPos)
{
    CModuleLock::Lock();
}

CMediaTypeEnum::~CMediaTypeEnum()
{
    CModuleLock::Unlock();
}

HRESULT CMediaTypeEnum::Create(IEnumMediaTypes** ppEnum)
{
    if (!ppEnum)
        return E_POINTER;
    *ppEnum = new (std::nothrow) CMediaTypeEnum(0);
    return *ppEnum ? S_OK : E_OUTOFMEMORY;
}

STDMETHODIMP CMediaTypeEnum::QueryInterface(REFIID riid, void** ppv)
{
    if (!ppv)
        return E_POINTER;
    if (riid == IID_IUnknown || riid == IID_IEnumMediaTypes)
    {
        *ppv = static_cast<IEnumMediaTypes*>(this);
        AddRef();
        return S_OK;
    }
    *ppv = nullptr;
    return E_NOINTERFACE;
}

STDMETHODIMP_(ULONG) CMediaTypeEnum::AddRef()
{
    return static_cast<ULONG>(InterlockedIncrement(&m_lRef));
}

STDMETHODIMP_(ULONG) CMediaTypeEnum::Release()
{
    const LONG lRef = InterlockedDecrement(&m_lRef);
    if (lRef == 0)
        delete this;
    return static_cast<ULONG>(lRef);
}

STDMETHODIMP CMediaTypeEnum::Next(ULONG cTypes, AM_MEDIA_TYPE** ppTypes, ULONG* pcFetched)
{
    if (!ppTypes || (cTypes > 1 && !pcFetched))
        return E_POINTER;
    ULONG cFetched = 0;
    while (cFetched < cTypes && m_ulPos < kTypes)
    {
        AM_MEDIA_TYPE* pmt = CCDMediaType::Create();
        if (!pmt)
        {
            // Nothing half-done stays with the caller.
            while (cFetched > 0)
            {
                CCDMediaType::Delete(ppTypes[--cFetched]);
                ppTypes[cFetched] = nullptr;
                --m_ulPos;
            }
            if (pcFetched)
                *pcFetched = 0;
            return E_OUTOFMEMORY;
        }
        ppTypes[cFetched++] = pmt;
        ++m_ulPos;
    }
    if (pcFetched)
        *pcFetched = cFetched;
    return cFetched == cTypes ? S_OK : S_FALSE;
}

STDMETHODIMP CMediaTypeEnum::Skip(ULONG cTypes)
{
    const ULONG ulLeft = kTypes - m_ulPos;
    m_ulPos += cTypes < ulLeft ? cTypes : ulLeft;
    return cTypes <= ulLeft ? S_OK : S_FALSE;
}

STDMETHODIMP CMediaTypeEnum::Reset()
{
    m_ulPos = 0;
    return S_OK;
}

STDMETHODIMP CMediaTypeEnum::Clone(IEnumMediaTypes** ppEnum)
{
    if (!ppEnum)
        return E_POINTER;
    *ppEnum = new (std::nothrow) CMediaTypeEnum(m_ulPos);
    return *ppEnum ? S_OK : E_OUTOFMEMORY;
}
