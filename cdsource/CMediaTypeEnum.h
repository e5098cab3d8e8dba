// IEnumMediaTypes over the filter's one type (CCDMediaType). Each type handed out is the
// caller's, format block and all. The library stays loaded while an enumerator exists.
#pragma once

#include <windows.h>

#include <dshow.h>

class CMediaTypeEnum final : public IEnumMediaTypes
{
public:
    static HRESULT Create(IEnumMediaTypes** ppEnum);

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    STDMETHODIMP Next(ULONG cTypes, AM_MEDIA_TYPE** ppTypes, ULONG* pcFetched) override;
    STDMETHODIMP Skip(ULONG cTypes) override;
    STDMETHODIMP Reset() override;
    STDMETHODIMP Clone(IEnumMediaTypes** ppEnum) override;

private:
    explicit CMediaTypeEnum(ULONG ulPos);
    ~CMediaTypeEnum();

    static const ULONG kTypes = 1;

    LONG m_lRef = 1;
    ULONG m_ulPos; // enumerators are used from one thread at a time, as COM enumerators are
};
