#include "objects/CPlay.h"

#include <olectl.h>

// The object's identity and interfaces are in place; playback behind them is still to come,
// and until then every method says so instead of pretending to work.

void* CPlay::InternalQueryInterface(REFIID riid)
{
    if (riid == IID_IPlay || riid == IID_IPlay2 || riid == IID_IPlayCD)
        return static_cast<IPlayCD*>(this);
    if (riid == IID_ITextDisplay)
        return static_cast<ITextDisplay*>(this);
    if (riid == IID_IConnectionPointContainer)
        return static_cast<IConnectionPointContainer*>(this);
    return nullptr;
}

STDMETHODIMP CPlay::EnumConnectionPoints(IEnumConnectionPoints** ppEnum)
{
    if (!ppEnum)
        return E_POINTER;
    *ppEnum = nullptr;
    return E_NOTIMPL;
}

STDMETHODIMP CPlay::FindConnectionPoint(REFIID, IConnectionPoint** ppCP)
{
    if (!ppCP)
        return E_POINTER;
    *ppCP = nullptr;
    return CONNECT_E_NOCONNECTION;
}

STDMETHODIMP CPlay::GetSupportedFileExt(ULONG*, LPWSTR**) { return E_NOTIMPL; }
STDMETHODIMP CPlay::OpenFile(LPWSTR, ULONG, ULONG, TESSALY_FILEINFO*) { return E_NOTIMPL; }
STDMETHODIMP CPlay::CloseFile() { return E_NOTIMPL; }
STDMETHODIMP CPlay::GetState(TESSALY_PLAYBACK_STATE*, double*) { return E_NOTIMPL; }
STDMETHODIMP CPlay::GetFileInfo(TESSALY_FILEINFO*) { return E_NOTIMPL; }
STDMETHODIMP CPlay::PlaybackControl(ULONG, ULONG, BYTE*) { return E_NOTIMPL; }
STDMETHODIMP CPlay::SetParentWindow(LONG) { return E_NOTIMPL; }
STDMETHODIMP CPlay::GetParentWindow(LONG*) { return E_NOTIMPL; }
STDMETHODIMP CPlay::SetParentWindowSize(ULONG, ULONG) { return E_NOTIMPL; }
STDMETHODIMP CPlay::GetPlaybackFlags(ULONG*) { return E_NOTIMPL; }
STDMETHODIMP CPlay::SetPlaybackFlags(ULONG) { return E_NOTIMPL; }
STDMETHODIMP CPlay::ShowMediaInfo(LONG) { return E_NOTIMPL; }
STDMETHODIMP CPlay::SetMediaInfo(TESSALY_MEDIA_INFO*) { return E_NOTIMPL; }
STDMETHODIMP CPlay::OpenCD(SHORT, USHORT, USHORT) { return E_NOTIMPL; }
STDMETHODIMP CPlay::GetDuration(double*) { return E_NOTIMPL; }
STDMETHODIMP CPlay::SetGradientBkColor(ULONG, ULONG, LONG) { return E_NOTIMPL; }
STDMETHODIMP CPlay::SetTextColor(ULONG, LONG) { return E_NOTIMPL; }
STDMETHODIMP CPlay::SetFont(LOGFONTW*, LONG) { return E_NOTIMPL; }
STDMETHODIMP CPlay::GetGradientBkColor(ULONG*, ULONG*) { return E_NOTIMPL; }
STDMETHODIMP CPlay::GetTextColor(ULONG*) { return E_NOTIMPL; }
