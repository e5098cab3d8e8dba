// The Play object hosts create to play media.
#pragma once

#include <windows.h>
#include <ocidl.h>

#include "engine/CComObjectRoot.h"
#include "engine/TessalyContract.h"

class CPlay : public IConnectionPointContainer, public IPlayCD, public ITextDisplay, public CComObjectRoot
{
public:
    IUnknown* GetUnknown() { return static_cast<IConnectionPointContainer*>(this); }
    void* InternalQueryInterface(REFIID riid);

    // IConnectionPointContainer
    STDMETHODIMP EnumConnectionPoints(IEnumConnectionPoints** ppEnum) override;
    STDMETHODIMP FindConnectionPoint(REFIID riid, IConnectionPoint** ppCP) override;

    // IPlay
    STDMETHODIMP GetSupportedFileExt(ULONG* pdwCount, LPWSTR** pppwszFileExtList) override;
    STDMETHODIMP OpenFile(LPWSTR wszFilepath, ULONG dwOpenFlags, ULONG dwPlaybackFlags,
                          TESSALY_FILEINFO* pOpenedFileInfo) override;
    STDMETHODIMP CloseFile() override;
    STDMETHODIMP GetState(TESSALY_PLAYBACK_STATE* pCurPlayState, double* pdCurElapseTime) override;
    STDMETHODIMP GetFileInfo(TESSALY_FILEINFO* pFileInfo) override;
    STDMETHODIMP PlaybackControl(ULONG dwControlFlag, ULONG dwParamSize, BYTE* pParam) override;
    STDMETHODIMP SetParentWindow(LONG hWndParent) override;
    STDMETHODIMP GetParentWindow(LONG* phWndParent) override;
    STDMETHODIMP SetParentWindowSize(ULONG dwWidth, ULONG dwHeight) override;
    STDMETHODIMP GetPlaybackFlags(ULONG* pdwPlaybackFlags) override;
    STDMETHODIMP SetPlaybackFlags(ULONG dwPlaybackFlags) override;

    // IPlay2
    STDMETHODIMP ShowMediaInfo(LONG bShow) override;
    STDMETHODIMP SetMediaInfo(TESSALY_MEDIA_INFO* pPMI) override;

    // IPlayCD
    STDMETHODIMP OpenCD(SHORT wszDrive, USHORT wStartTrack, USHORT wEndTrack) override;
    STDMETHODIMP GetDuration(double* dbDuration) override;

    // ITextDisplay
    STDMETHODIMP SetGradientBkColor(ULONG crTop, ULONG crBottom, LONG bForceRefresh) override;
    STDMETHODIMP SetTextColor(ULONG crColor, LONG bForceRefresh) override;
    STDMETHODIMP SetFont(LOGFONTW* plf, LONG bForceRefresh) override;
    STDMETHODIMP GetGradientBkColor(ULONG* pcrTop, ULONG* pcrBottom) override;
    STDMETHODIMP GetTextColor(ULONG* pcrColor) override;
};
