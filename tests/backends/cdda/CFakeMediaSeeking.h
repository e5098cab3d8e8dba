// The graph's seeking interface as the CD back-end uses it: a position the test sets, the
// available range, and a record of every SetPositions call. A real COM object with its own count.
#pragma once

#include <windows.h>

#include <dshow.h>

#include <vector>

class CFakeMediaSeeking : public IMediaSeeking
{
public:
    struct Seek
    {
        LONGLONG llCurrent;
        DWORD dwCurrentFlags;
        bool bStopGiven;
        DWORD dwStopFlags;
    };

    LONGLONG llPosition = 0;
    HRESULT hrPosition = S_OK;
    LONGLONG llEarliest = 0;
    LONGLONG llLatest = 0;
    HRESULT hrSetPositions = S_OK;
    std::vector<Seek> seeks;

    ULONG References() const { return m_cRef; }

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override;
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_cRef; }
    ULONG STDMETHODCALLTYPE Release() override { return --m_cRef; }  // lives on the test's stack

    HRESULT STDMETHODCALLTYPE GetCurrentPosition(LONGLONG* pllCurrent) override;
    HRESULT STDMETHODCALLTYPE GetAvailable(LONGLONG* pllEarliest, LONGLONG* pllLatest) override;
    HRESULT STDMETHODCALLTYPE SetPositions(LONGLONG* pllCurrent, DWORD dwCurrentFlags, LONGLONG* pllStop,
                                           DWORD dwStopFlags) override;

    HRESULT STDMETHODCALLTYPE GetCapabilities(DWORD*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE CheckCapabilities(DWORD*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IsFormatSupported(const GUID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE QueryPreferredFormat(GUID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetTimeFormat(GUID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE IsUsingTimeFormat(const GUID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetTimeFormat(const GUID*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetDuration(LONGLONG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetStopPosition(LONGLONG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE ConvertTimeFormat(LONGLONG*, const GUID*, LONGLONG, const GUID*) override
    {
        return E_NOTIMPL;
    }
    HRESULT STDMETHODCALLTYPE GetPositions(LONGLONG*, LONGLONG*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE SetRate(double) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetRate(double*) override { return E_NOTIMPL; }
    HRESULT STDMETHODCALLTYPE GetPreroll(LONGLONG*) override { return E_NOTIMPL; }

private:
    ULONG m_cRef = 1;
};
