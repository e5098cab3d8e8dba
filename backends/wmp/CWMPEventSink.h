// The Media Player control's event sink: three of its events become WM_WMP_EVENT messages posted
// to the control host's window; every other event is taken and ignored.
#pragma once

#include <windows.h>

#include <ole2.h>
#include <wmp.h>

enum : WPARAM
{
    WMP_EVENT_OPENSTATE_CHANGED = 0,
    WMP_EVENT_PLAYSTATE_CHANGED = 1,
    WMP_EVENT_ERROR = 2
};

class CWMPEventSink : public IWMPEvents, public IDispatch
{
public:
    // The creator holds the first reference.
    explicit CWMPEventSink(HWND hWndHost) : m_hWndHost(hWndHost) {}
    CWMPEventSink(const CWMPEventSink&) = delete;
    CWMPEventSink& operator=(const CWMPEventSink&) = delete;

    // IUnknown
    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override;
    ULONG STDMETHODCALLTYPE AddRef() override;
    ULONG STDMETHODCALLTYPE Release() override;

    // IDispatch, serving the control's dispatch event interface
    HRESULT STDMETHODCALLTYPE GetTypeInfoCount(UINT* pctinfo) override;
    HRESULT STDMETHODCALLTYPE GetTypeInfo(UINT iTInfo, LCID lcid, ITypeInfo** ppTInfo) override;
    HRESULT STDMETHODCALLTYPE GetIDsOfNames(REFIID riid, LPOLESTR* rgszNames, UINT cNames, LCID lcid,
                                            DISPID* rgDispId) override;
    HRESULT STDMETHODCALLTYPE Invoke(DISPID dispIdMember, REFIID riid, LCID lcid, WORD wFlags,
                                     DISPPARAMS* pDispParams, VARIANT* pVarResult, EXCEPINFO* pExcepInfo,
                                     UINT* puArgErr) override;

    // The events that reach the host
    void STDMETHODCALLTYPE OpenStateChange(LONG NewState) override;
    void STDMETHODCALLTYPE PlayStateChange(LONG NewState) override;
    void STDMETHODCALLTYPE Error() override;

    // The events nobody here acts on
    void STDMETHODCALLTYPE AudioLanguageChange(LONG) override {}
    void STDMETHODCALLTYPE StatusChange() override {}
    void STDMETHODCALLTYPE ScriptCommand(BSTR, BSTR) override {}
    void STDMETHODCALLTYPE NewStream() override {}
    void STDMETHODCALLTYPE Disconnect(LONG) override {}
    void STDMETHODCALLTYPE Buffering(VARIANT_BOOL) override {}
    void STDMETHODCALLTYPE Warning(LONG, LONG, BSTR) override {}
    void STDMETHODCALLTYPE EndOfStream(LONG) override {}
    void STDMETHODCALLTYPE PositionChange(double, double) override {}
    void STDMETHODCALLTYPE MarkerHit(LONG) override {}
    void STDMETHODCALLTYPE DurationUnitChange(LONG) override {}
    void STDMETHODCALLTYPE CdromMediaChange(LONG) override {}
    void STDMETHODCALLTYPE PlaylistChange(IDispatch*, WMPPlaylistChangeEventType) override {}
    void STDMETHODCALLTYPE CurrentPlaylistChange(WMPPlaylistChangeEventType) override {}
    void STDMETHODCALLTYPE CurrentPlaylistItemAvailable(BSTR) override {}
    void STDMETHODCALLTYPE MediaChange(IDispatch*) override {}
    void STDMETHODCALLTYPE CurrentMediaItemAvailable(BSTR) override {}
    void STDMETHODCALLTYPE CurrentItemChange(IDispatch*) override {}
    void STDMETHODCALLTYPE MediaCollectionChange() override {}
    void STDMETHODCALLTYPE MediaCollectionAttributeStringAdded(BSTR, BSTR) override {}
    void STDMETHODCALLTYPE MediaCollectionAttributeStringRemoved(BSTR, BSTR) override {}
    void STDMETHODCALLTYPE MediaCollectionAttributeStringChanged(BSTR, BSTR, BSTR) override {}
    void STDMETHODCALLTYPE PlaylistCollectionChange() override {}
    void STDMETHODCALLTYPE PlaylistCollectionPlaylistAdded(BSTR) override {}
    void STDMETHODCALLTYPE PlaylistCollectionPlaylistRemoved(BSTR) override {}
    void STDMETHODCALLTYPE PlaylistCollectionPlaylistSetAsDeleted(BSTR, VARIANT_BOOL) override {}
    void STDMETHODCALLTYPE ModeChange(BSTR, VARIANT_BOOL) override {}
    void STDMETHODCALLTYPE MediaError(IDispatch*) override {}
    void STDMETHODCALLTYPE OpenPlaylistSwitch(IDispatch*) override {}
    void STDMETHODCALLTYPE DomainChange(BSTR) override {}
    void STDMETHODCALLTYPE SwitchedToPlayerApplication() override {}
    void STDMETHODCALLTYPE SwitchedToControl() override {}
    void STDMETHODCALLTYPE PlayerDockedStateChange() override {}
    void STDMETHODCALLTYPE PlayerReconnect() override {}
    void STDMETHODCALLTYPE Click(short, short, LONG, LONG) override {}
    void STDMETHODCALLTYPE DoubleClick(short, short, LONG, LONG) override {}
    void STDMETHODCALLTYPE KeyDown(short, short) override {}
    void STDMETHODCALLTYPE KeyPress(short) override {}
    void STDMETHODCALLTYPE KeyUp(short, short) override {}
    void STDMETHODCALLTYPE MouseDown(short, short, LONG, LONG) override {}
    void STDMETHODCALLTYPE MouseMove(short, short, LONG, LONG) override {}
    void STDMETHODCALLTYPE MouseUp(short, short, LONG, LONG) override {}

private:
    virtual ~CWMPEventSink() = default;
    void Post(WPARAM wKind, LPARAM lValue) const;

    LONG m_cRef = 1;
    HWND m_hWndHost;
};
