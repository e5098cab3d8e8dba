// The Play object hosts create to play media: argument checks at the boundary, the dispatcher
// that does the playing, the information window, and the two outgoing event interfaces.
#pragma once

#include <windows.h>
#include <ocidl.h>

#include <memory>

#include "engine/CComObjectRoot.h"
#include "engine/TessalyContract.h"
#include "objects/CConnectionPoint.h"

class CInfoWnd;
class CMediaPlayer;

class CPlay : public IConnectionPointContainer, public IPlayCD, public ITextDisplay, public CComObjectRoot
{
public:
    CPlay();
    ~CPlay() override;

    void FinalRelease();
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

    // What the dispatcher reports, turned into host events.
    static HRESULT OnMediaPlayerEvent(DWORD dwEvent, ULONG_PTR ulParam, void* pContext);
    HRESULT NotifyStreamingPlayerEvent(WORD wEvent, ULONG_PTR ulParam);

private:
    HRESULT InitPlaybackEngine(LPCWSTR pwszFile);
    HRESULT UpdateInfoWindow();
    HRESULT PlaybackError(HRESULT hrError);
    HRESULT OnPlaybackProgress(double dProgress);
    HRESULT Fire_OnPlayComplete();
    HRESULT Fire_OnPlayError(HRESULT hrError);
    HRESULT Fire_OnPlayProgress(double dProgress, TESSALY_PLAYBACK_STATE state);
    HRESULT Fire_OnPlayTrackComplete();
    void ResetMediaInfo();
    bool HasInfoWindow() const { return m_pInfoWnd != nullptr; }

    CConnectionPoint m_cpPlayEvents;
    CConnectionPoint m_cpPlayCDEvents;
    HWND m_hWndParent = nullptr;
    RECT m_rcParent = {0, 0, 0, 0};
    std::unique_ptr<CMediaPlayer> m_pMediaPlayer;
    double m_dCurElapseTime = 0.0;
    std::unique_ptr<CInfoWnd> m_pInfoWnd;
    TESSALY_MEDIA_INFO m_MediaInfo;
};
