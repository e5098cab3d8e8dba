#include "backends/wmp/CWMPEventSink.h"

#include <wmpids.h>

#include <algorithm>
#include <iterator>

#include "base/EngineMessages.h"

namespace {

// Every member of the control's dispatch event interface; each has a method of the same name.
constexpr DISPID kServedIds[] = {
    DISPID_WMPCOREEVENT_OPENSTATECHANGE, DISPID_WMPCOREEVENT_STATUSCHANGE,
    DISPID_WMPCOREEVENT_PLAYSTATECHANGE, DISPID_WMPCOREEVENT_AUDIOLANGUAGECHANGE,
    DISPID_WMPCOREEVENT_ENDOFSTREAM, DISPID_WMPCOREEVENT_POSITIONCHANGE, DISPID_WMPCOREEVENT_MARKERHIT,
    DISPID_WMPCOREEVENT_DURATIONUNITCHANGE, DISPID_WMPCOREEVENT_SCRIPTCOMMAND,
    DISPID_WMPCOREEVENT_DISCONNECT, DISPID_WMPCOREEVENT_BUFFERING, DISPID_WMPCOREEVENT_NEWSTREAM,
    DISPID_WMPCOREEVENT_ERROR, DISPID_WMPCOREEVENT_WARNING, DISPID_WMPCOREEVENT_CDROMMEDIACHANGE,
    DISPID_WMPCOREEVENT_PLAYLISTCHANGE, DISPID_WMPCOREEVENT_MEDIACHANGE,
    DISPID_WMPCOREEVENT_CURRENTMEDIAITEMAVAILABLE, DISPID_WMPCOREEVENT_CURRENTPLAYLISTCHANGE,
    DISPID_WMPCOREEVENT_CURRENTPLAYLISTITEMAVAILABLE, DISPID_WMPCOREEVENT_CURRENTITEMCHANGE,
    DISPID_WMPCOREEVENT_MEDIACOLLECTIONCHANGE, DISPID_WMPCOREEVENT_MEDIACOLLECTIONATTRIBUTESTRINGADDED,
    DISPID_WMPCOREEVENT_MEDIACOLLECTIONATTRIBUTESTRINGREMOVED, DISPID_WMPCOREEVENT_PLAYLISTCOLLECTIONCHANGE,
    DISPID_WMPCOREEVENT_PLAYLISTCOLLECTIONPLAYLISTADDED, DISPID_WMPCOREEVENT_PLAYLISTCOLLECTIONPLAYLISTREMOVED,
    DISPID_WMPCOREEVENT_PLAYLISTCOLLECTIONPLAYLISTSETASDELETED, DISPID_WMPCOREEVENT_MODECHANGE,
    DISPID_WMPCOREEVENT_MEDIACOLLECTIONATTRIBUTESTRINGCHANGED, DISPID_WMPCOREEVENT_MEDIAERROR,
    DISPID_WMPCOREEVENT_DOMAINCHANGE, DISPID_WMPCOREEVENT_OPENPLAYLISTSWITCH,
    DISPID_WMPOCXEVENT_SWITCHEDTOPLAYERAPPLICATION, DISPID_WMPOCXEVENT_SWITCHEDTOCONTROL,
    DISPID_WMPOCXEVENT_PLAYERDOCKEDSTATECHANGE, DISPID_WMPOCXEVENT_PLAYERRECONNECT, DISPID_WMPOCXEVENT_CLICK,
    DISPID_WMPOCXEVENT_DOUBLECLICK, DISPID_WMPOCXEVENT_KEYDOWN, DISPID_WMPOCXEVENT_KEYPRESS,
    DISPID_WMPOCXEVENT_KEYUP, DISPID_WMPOCXEVENT_MOUSEDOWN, DISPID_WMPOCXEVENT_MOUSEMOVE,
    DISPID_WMPOCXEVENT_MOUSEUP};

// The state argument of the two state events; the control may pass any integer variant type.
HRESULT StateArgument(const DISPPARAMS* pParams, LONG* plState)
{
    if (pParams->cArgs < 1)
        return DISP_E_BADPARAMCOUNT;
    VARIANT value;
    VariantInit(&value);
    const HRESULT hr = VariantChangeType(&value, &pParams->rgvarg[0], 0, VT_I4);
    if (FAILED(hr))
        return DISP_E_TYPEMISMATCH;
    *plState = value.lVal;
    return S_OK;
}

} // namespace

HRESULT STDMETHODCALLTYPE CWMPEventSink::QueryInterface(REFIID riid, void** ppv)
{
    if (!ppv)
        return E_POINTER;
    if (riid == IID_IUnknown || riid == __uuidof(IWMPEvents))
        *ppv = static_cast<IWMPEvents*>(this);
    else if (riid == IID_IDispatch || riid == __uuidof(_WMPOCXEvents))
        *ppv = static_cast<IDispatch*>(this);
    else
    {
        *ppv = nullptr;
        return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
}

ULONG STDMETHODCALLTYPE CWMPEventSink::AddRef()
{
    return static_cast<ULONG>(InterlockedIncrement(&m_cRef));
}

ULONG STDMETHODCALLTYPE CWMPEventSink::Release()
{
    const LONG cRef = InterlockedDecrement(&m_cRef);
    if (cRef == 0)
        delete this;
    return static_cast<ULONG>(cRef);
}

HRESULT STDMETHODCALLTYPE CWMPEventSink::GetTypeInfoCount(UINT* pctinfo)
{
    if (!pctinfo)
        return E_POINTER;
    *pctinfo = 0;
    return S_OK;
}

HRESULT STDMETHODCALLTYPE CWMPEventSink::GetTypeInfo(UINT, LCID, ITypeInfo** ppTInfo)
{
    if (ppTInfo)
        *ppTInfo = nullptr;
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE CWMPEventSink::GetIDsOfNames(REFIID, LPOLESTR*, UINT, LCID, DISPID*)
{
    return E_NOTIMPL;
}

HRESULT STDMETHODCALLTYPE CWMPEventSink::Invoke(DISPID dispIdMember, REFIID, LCID, WORD, DISPPARAMS* pDispParams,
                                                VARIANT*, EXCEPINFO*, UINT*)
{
    if (!pDispParams)
        return E_POINTER;
    if (pDispParams->cNamedArgs > 0)
        return DISP_E_NONAMEDARGS;
    if (std::find(std::begin(kServedIds), std::end(kServedIds), dispIdMember) == std::end(kServedIds))
        return DISP_E_MEMBERNOTFOUND;

    LONG lState = 0;
    HRESULT hr = S_OK;
    switch (dispIdMember)
    {
    case DISPID_WMPCOREEVENT_OPENSTATECHANGE:
        if (SUCCEEDED(hr = StateArgument(pDispParams, &lState)))
            OpenStateChange(lState);
        break;
    case DISPID_WMPCOREEVENT_PLAYSTATECHANGE:
        if (SUCCEEDED(hr = StateArgument(pDispParams, &lState)))
            PlayStateChange(lState);
        break;
    case DISPID_WMPCOREEVENT_ERROR:
        Error();
        break;
    default:
        break; // the method of that name does nothing
    }
    return hr;
}

void STDMETHODCALLTYPE CWMPEventSink::OpenStateChange(LONG NewState)
{
    Post(WMP_EVENT_OPENSTATE_CHANGED, NewState);
}

void STDMETHODCALLTYPE CWMPEventSink::PlayStateChange(LONG NewState)
{
    Post(WMP_EVENT_PLAYSTATE_CHANGED, NewState);
}

void STDMETHODCALLTYPE CWMPEventSink::Error()
{
    Post(WMP_EVENT_ERROR, 0);
}

// Posted, never sent: the control's call returns at once, whatever the host does with it.
void CWMPEventSink::Post(WPARAM wKind, LPARAM lValue) const
{
    if (IsWindow(m_hWndHost))
        PostMessageW(m_hWndHost, WM_WMP_EVENT, wKind, lValue);
}
