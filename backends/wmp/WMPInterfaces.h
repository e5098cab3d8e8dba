// What the Media Player back-end needs beyond mingw-w64's headers: ATL's control-site interface
// (mingw has no ATL) and the control's second player interface, which its wmp.h leaves out.
#pragma once

#include <windows.h>

#include <ole2.h>
#include <wmp.h>

namespace wmp {

// {B6EA2050-048A-11D1-82B9-00C04FB9942E}
inline constexpr IID IID_IAxWinHostWindow = {
    0xb6ea2050, 0x048a, 0x11d1, {0x82, 0xb9, 0x00, 0xc0, 0x4f, 0xb9, 0x94, 0x2e}};

struct IAxWinHostWindow : public IUnknown
{
    virtual HRESULT STDMETHODCALLTYPE CreateControl(LPCOLESTR lpTricsData, HWND hWnd, IStream* pStream) = 0;
    virtual HRESULT STDMETHODCALLTYPE CreateControlEx(LPCOLESTR lpTricsData, HWND hWnd, IStream* pStream,
                                                      IUnknown** ppUnk, REFIID riidAdvise, IUnknown* punkAdvise) = 0;
    virtual HRESULT STDMETHODCALLTYPE AttachControl(IUnknown* pControl, HWND hWnd) = 0;
    virtual HRESULT STDMETHODCALLTYPE QueryControl(REFIID riid, void** ppvObject) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetExternalDispatch(IDispatch* pDisp) = 0;
    virtual HRESULT STDMETHODCALLTYPE SetExternalUIHandler(IUnknown* pDisp) = 0;
};

// {0E6B01D1-D407-4C85-BF5F-1C01F6150280}
inline constexpr IID IID_IWMPPlayer2 = {
    0x0e6b01d1, 0xd407, 0x4c85, {0xbf, 0x5f, 0x1c, 0x01, 0xf6, 0x15, 0x02, 0x80}};

struct IWMPPlayer2 : public IWMPCore
{
    virtual HRESULT STDMETHODCALLTYPE get_enabled(VARIANT_BOOL* pbEnabled) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_enabled(VARIANT_BOOL bEnabled) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_fullScreen(VARIANT_BOOL* pbFullScreen) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_fullScreen(VARIANT_BOOL bFullScreen) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_enableContextMenu(VARIANT_BOOL* pbEnableContextMenu) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_enableContextMenu(VARIANT_BOOL bEnableContextMenu) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_uiMode(BSTR bstrMode) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_uiMode(BSTR* pbstrMode) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_stretchToFit(VARIANT_BOOL* pbEnabled) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_stretchToFit(VARIANT_BOOL bEnabled) = 0;
    virtual HRESULT STDMETHODCALLTYPE get_windowlessVideo(VARIANT_BOOL* pbEnabled) = 0;
    virtual HRESULT STDMETHODCALLTYPE put_windowlessVideo(VARIANT_BOOL bEnabled) = 0;
};

// The control's class, as the containment functions take it.
inline constexpr wchar_t kControlClassId[] = L"{6BF52A52-394A-11d3-B153-00C04F79FAA6}";

// Open and play states the host acts on.
enum : long
{
    kOpenStateMediaOpen = 13,
    kPlayStateUndefined = 0,
    kPlayStateMediaEnded = 8,
    kPlayStateReady = 10,
    // Open states from here up belong to the item itself, not to the playlist around it.
    kOpenStateFirstMediaState = 8,
};

} // namespace wmp
