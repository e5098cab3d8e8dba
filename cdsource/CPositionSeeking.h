// IMediaSeeking as the filter answers it, on the filter itself and on its output pin (which is
// where the audio renderer passes the graph's seeking on to). Both instances act on the same
// positions; each answers IUnknown calls for the object it belongs to.
//
// Only TIME_FORMAT_MEDIA_TIME, at rate 1.0. The duration is the loaded range's length; positions
// are whole sectors (1/75 s): a time inside a sector stands for the start of that sector. Times
// beyond either end of the range are taken as the end they passed; a stop before the start is
// E_INVALIDARG. While the filter streams, a new start flushes downstream and delivery begins
// again there with a new segment; a new stop alone is taken up by the running delivery.
#pragma once

#include <windows.h>

#include <dshow.h>

class CCDAudioSource;

class CPositionSeeking final : public IMediaSeeking
{
public:
    static const DWORD kCapabilities = AM_SEEKING_CanSeekAbsolute | AM_SEEKING_CanSeekForwards |
                                       AM_SEEKING_CanSeekBackwards | AM_SEEKING_CanGetCurrentPos |
                                       AM_SEEKING_CanGetStopPos | AM_SEEKING_CanGetDuration;

    // pOwner: the object whose interface this is (not counted: it contains this one).
    CPositionSeeking(IUnknown* pOwner, CCDAudioSource* pSource);
    CPositionSeeking(const CPositionSeeking&) = delete;
    CPositionSeeking& operator=(const CPositionSeeking&) = delete;
    virtual ~CPositionSeeking() = default;

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override { return m_pOwner->QueryInterface(riid, ppv); }
    STDMETHODIMP_(ULONG) AddRef() override { return m_pOwner->AddRef(); }
    STDMETHODIMP_(ULONG) Release() override { return m_pOwner->Release(); }

    STDMETHODIMP GetCapabilities(DWORD* pdwCapabilities) override;
    STDMETHODIMP CheckCapabilities(DWORD* pdwCapabilities) override;
    STDMETHODIMP IsFormatSupported(const GUID* pFormat) override;
    STDMETHODIMP QueryPreferredFormat(GUID* pFormat) override;
    STDMETHODIMP GetTimeFormat(GUID* pFormat) override;
    STDMETHODIMP IsUsingTimeFormat(const GUID* pFormat) override;
    STDMETHODIMP SetTimeFormat(const GUID* pFormat) override;
    STDMETHODIMP GetDuration(LONGLONG* pllDuration) override;
    STDMETHODIMP GetStopPosition(LONGLONG* pllStop) override;
    STDMETHODIMP GetCurrentPosition(LONGLONG* pllCurrent) override;
    STDMETHODIMP ConvertTimeFormat(LONGLONG* pllTarget, const GUID* pTargetFormat, LONGLONG llSource,
                                   const GUID* pSourceFormat) override;
    STDMETHODIMP SetPositions(LONGLONG* pllCurrent, DWORD dwCurrentFlags, LONGLONG* pllStop,
                              DWORD dwStopFlags) override;
    STDMETHODIMP GetPositions(LONGLONG* pllCurrent, LONGLONG* pllStop) override;
    STDMETHODIMP GetAvailable(LONGLONG* pllEarliest, LONGLONG* pllLatest) override;
    STDMETHODIMP SetRate(double dRate) override;
    STDMETHODIMP GetRate(double* pdRate) override;
    STDMETHODIMP GetPreroll(LONGLONG* pllPreroll) override;

private:
    IUnknown* m_pOwner;
    CCDAudioSource* m_pSource;
};
