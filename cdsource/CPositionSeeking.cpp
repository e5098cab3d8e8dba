#include "cdsource/CPositionSeeking.h"

#include "cdsource/CCDAudioSource.h"
#include "cdsource/CScopedLock.h"
#include "cdsource/CTrackRange.h"

namespace {

bool IsMediaTime(const GUID* pFormat)
{
    return pFormat && *pFormat == TIME_FORMAT_MEDIA_TIME;
}

// Null stands for the format in use, which is always media time.
bool IsMediaTimeOrCurrent(const GUID* pFormat)
{
    return !pFormat || *pFormat == TIME_FORMAT_MEDIA_TIME;
}

LONGLONG Clamp(LONGLONG llTime, LONGLONG llDuration)
{
    return llTime < 0 ? 0 : llTime > llDuration ? llDuration : llTime;
}

} // namespace

CPositionSeeking::CPositionSeeking(IUnknown* pOwner, CCDAudioSource* pSource) : m_pOwner(pOwner), m_pSource(pSource)
{
}

STDMETHODIMP CPositionSeeking::GetCapabilities(DWORD* pdwCapabilities)
{
    if (!pdwCapabilities)
        return E_POINTER;
    *pdwCapabilities = kCapabilities;
    return S_OK;
}

STDMETHODIMP CPositionSeeking::CheckCapabilities(DWORD* pdwCapabilities)
{
    if (!pdwCapabilities)
        return E_POINTER;
    const DWORD dwAsked = *pdwCapabilities;
    *pdwCapabilities = dwAsked & kCapabilities;
    if (*pdwCapabilities == dwAsked)
        return S_OK;
    return *pdwCapabilities ? S_FALSE : E_FAIL;
}

STDMETHODIMP CPositionSeeking::IsFormatSupported(const GUID* pFormat)
{
    if (!pFormat)
        return E_POINTER;
    return IsMediaTime(pFormat) ? S_OK : S_FALSE;
}

STDMETHODIMP CPositionSeeking::QueryPreferredFormat(GUID* pFormat)
{
    if (!pFormat)
        return E_POINTER;
    *pFormat = TIME_FORMAT_MEDIA_TIME;
    return S_OK;
}

STDMETHODIMP CPositionSeeking::GetTimeFormat(GUID* pFormat)
{
    return QueryPreferredFormat(pFormat);
}

STDMETHODIMP CPositionSeeking::IsUsingTimeFormat(const GUID* pFormat)
{
    if (!pFormat)
        return E_POINTER;
    return IsMediaTime(pFormat) ? S_OK : S_FALSE;
}

STDMETHODIMP CPositionSeeking::SetTimeFormat(const GUID* pFormat)
{
    if (!pFormat)
        return E_POINTER;
    return IsMediaTime(pFormat) ? S_OK : E_INVALIDARG;
}

STDMETHODIMP CPositionSeeking::GetDuration(LONGLONG* pllDuration)
{
    if (!pllDuration)
        return E_POINTER;
    uint32_t ulSectors, ulStart, ulCurrent, ulStop;
    m_pSource->GetSectorPositions(&ulSectors, &ulStart, &ulCurrent, &ulStop);
    *pllDuration = CTrackRange::TimeOf(ulSectors);
    return S_OK;
}

STDMETHODIMP CPositionSeeking::GetStopPosition(LONGLONG* pllStop)
{
    if (!pllStop)
        return E_POINTER;
    uint32_t ulSectors, ulStart, ulCurrent, ulStop;
    m_pSource->GetSectorPositions(&ulSectors, &ulStart, &ulCurrent, &ulStop);
    *pllStop = CTrackRange::TimeOf(ulStop);
    return S_OK;
}

STDMETHODIMP CPositionSeeking::GetCurrentPosition(LONGLONG* pllCurrent)
{
    if (!pllCurrent)
        return E_POINTER;
    uint32_t ulSectors, ulStart, ulCurrent, ulStop;
    m_pSource->GetSectorPositions(&ulSectors, &ulStart, &ulCurrent, &ulStop);
    *pllCurrent = CTrackRange::TimeOf(ulCurrent);
    return S_OK;
}

STDMETHODIMP CPositionSeeking::ConvertTimeFormat(LONGLONG* pllTarget, const GUID* pTargetFormat, LONGLONG llSource,
                                                 const GUID* pSourceFormat)
{
    if (!pllTarget)
        return E_POINTER;
    if (!IsMediaTimeOrCurrent(pTargetFormat) || !IsMediaTimeOrCurrent(pSourceFormat))
        return E_INVALIDARG;
    *pllTarget = llSource;
    return S_OK;
}

STDMETHODIMP CPositionSeeking::SetPositions(LONGLONG* pllCurrent, DWORD dwCurrentFlags, LONGLONG* pllStop,
                                            DWORD dwStopFlags)
{
    const DWORD dwCurrentHow = dwCurrentFlags & AM_SEEKING_PositioningBitsMask;
    const DWORD dwStopHow = dwStopFlags & AM_SEEKING_PositioningBitsMask;
    // Incremental positioning is relative to the new start, which only a stop can be.
    if (dwCurrentHow == AM_SEEKING_IncrementalPositioning)
        return E_INVALIDARG;
    if ((dwCurrentHow != AM_SEEKING_NoPositioning && !pllCurrent) || (dwStopHow != AM_SEEKING_NoPositioning && !pllStop))
        return E_POINTER;

    CScopedLock lock(m_pSource->FilterLock());
    uint32_t ulSectors, ulStart, ulCurrent, ulStop;
    m_pSource->GetSectorPositions(&ulSectors, &ulStart, &ulCurrent, &ulStop);
    const LONGLONG llDuration = CTrackRange::TimeOf(ulSectors);

    LONGLONG llNewStart = CTrackRange::TimeOf(ulStart);
    if (dwCurrentHow == AM_SEEKING_AbsolutePositioning)
        llNewStart = *pllCurrent;
    else if (dwCurrentHow == AM_SEEKING_RelativePositioning)
        llNewStart = CTrackRange::TimeOf(ulCurrent) + *pllCurrent;
    llNewStart = Clamp(llNewStart, llDuration);

    LONGLONG llNewStop = CTrackRange::TimeOf(ulStop);
    if (dwStopHow == AM_SEEKING_AbsolutePositioning)
        llNewStop = *pllStop;
    else if (dwStopHow == AM_SEEKING_RelativePositioning)
        llNewStop += *pllStop;
    else if (dwStopHow == AM_SEEKING_IncrementalPositioning)
        llNewStop = llNewStart + *pllStop;
    llNewStop = Clamp(llNewStop, llDuration);

    const uint32_t ulNewStart = CTrackRange::SectorAt(llNewStart);
    const uint32_t ulNewStop = CTrackRange::SectorAt(llNewStop);
    if (ulNewStop < ulNewStart)
        return E_INVALIDARG;
    const HRESULT hr = m_pSource->Reposition(dwCurrentHow != AM_SEEKING_NoPositioning, ulNewStart,
                                             dwStopHow != AM_SEEKING_NoPositioning, ulNewStop);
    if (FAILED(hr))
        return hr;
    if ((dwCurrentFlags & AM_SEEKING_ReturnTime) && pllCurrent)
        *pllCurrent = CTrackRange::TimeOf(ulNewStart);
    if ((dwStopFlags & AM_SEEKING_ReturnTime) && pllStop)
        *pllStop = CTrackRange::TimeOf(ulNewStop);
    return S_OK;
}

STDMETHODIMP CPositionSeeking::GetPositions(LONGLONG* pllCurrent, LONGLONG* pllStop)
{
    if (!pllCurrent && !pllStop)
        return E_POINTER;
    uint32_t ulSectors, ulStart, ulCurrent, ulStop;
    m_pSource->GetSectorPositions(&ulSectors, &ulStart, &ulCurrent, &ulStop);
    if (pllCurrent)
        *pllCurrent = CTrackRange::TimeOf(ulCurrent);
    if (pllStop)
        *pllStop = CTrackRange::TimeOf(ulStop);
    return S_OK;
}

STDMETHODIMP CPositionSeeking::GetAvailable(LONGLONG* pllEarliest, LONGLONG* pllLatest)
{
    if (!pllEarliest && !pllLatest)
        return E_POINTER;
    uint32_t ulSectors, ulStart, ulCurrent, ulStop;
    m_pSource->GetSectorPositions(&ulSectors, &ulStart, &ulCurrent, &ulStop);
    // The whole range is on the disc from the start.
    if (pllEarliest)
        *pllEarliest = 0;
    if (pllLatest)
        *pllLatest = CTrackRange::TimeOf(ulSectors);
    return S_OK;
}

STDMETHODIMP CPositionSeeking::SetRate(double dRate)
{
    return dRate == 1.0 ? S_OK : E_INVALIDARG;
}

STDMETHODIMP CPositionSeeking::GetRate(double* pdRate)
{
    if (!pdRate)
        return E_POINTER;
    *pdRate = 1.0;
    return S_OK;
}

STDMETHODIMP CPositionSeeking::GetPreroll(LONGLONG* pllPreroll)
{
    if (!pllPreroll)
        return E_POINTER;
    *pllPreroll = 0;
    return S_OK;
}
