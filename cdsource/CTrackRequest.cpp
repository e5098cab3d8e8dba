#include "cdsource/CTrackRequest.h"

namespace {

// Reads a track number of one or two digits at *ppwsz, moving past it; 0 when there is none or
// it is outside 1..99.
int ReadTrackNumber(LPCWSTR* ppwsz)
{
    LPCWSTR p = *ppwsz;
    int nValue = 0;
    int nDigits = 0;
    while (*p >= L'0' && *p <= L'9')
    {
        if (++nDigits > 2)
            return 0;
        nValue = nValue * 10 + (*p - L'0');
        ++p;
    }
    *ppwsz = p;
    return nDigits == 0 ? 0 : nValue;
}

} // namespace

HRESULT CTrackRequest::Parse(LPCWSTR pwszRequest)
{
    if (!pwszRequest)
        return E_INVALIDARG;
    WCHAR wcDrive = pwszRequest[0];
    if (wcDrive >= L'a' && wcDrive <= L'z')
        wcDrive = static_cast<WCHAR>(wcDrive - L'a' + L'A');
    if (wcDrive < L'A' || wcDrive > L'Z' || pwszRequest[1] != L'/')
        return E_INVALIDARG;

    LPCWSTR p = pwszRequest + 2;
    const int nFirst = ReadTrackNumber(&p);
    if (nFirst == 0)
        return E_INVALIDARG;
    int nLast = nFirst;
    if (*p == L'-')
    {
        ++p;
        nLast = ReadTrackNumber(&p);
        if (nLast == 0)
            return E_INVALIDARG;
    }
    if (*p != L'\0')
        return E_INVALIDARG;
    // Well-formed text whose range is empty: the tracks it asks for cannot be found on any disc.
    if (nFirst > nLast)
        return HRESULT_FROM_WIN32(ERROR_NOT_FOUND);

    m_wcDrive = wcDrive;
    m_nFirst = nFirst;
    m_nLast = nLast;
    return S_OK;
}
