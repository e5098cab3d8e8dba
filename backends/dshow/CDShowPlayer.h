// Plays the common audio and video formats through DirectShow filter graphs: one graph per open
// file, video shown inside a black child window that covers the host window, graph events turned
// into the dispatcher's completion and error messages.
#pragma once

#include <windows.h>

#include <dshow.h>
#include <wmsdkidl.h>

#include "backends/dshow/CWMVCoreLibrary.h"
#include "base/CPlayerBase.h"
#include "engine/ComPtr.h"

class CDShowPlayer : public CPlayerBase
{
public:
    CDShowPlayer();

    HRESULT Init() override;
    void Destroy() override;
    HRESULT SetParentWindow(HWND hWndParent) override;
    HRESULT SetParentWindowSize(DWORD dwWidth, DWORD dwHeight) override;
    HRESULT OpenFile(LPCWSTR pwszFile, DWORD dwOpenFlags, DWORD dwPlaybackFlags) override;
    HRESULT CloseFile() override;
    HRESULT GetFileInfo(BOOL* pbAudioOnly, double* pdDuration, BOOL* pbSeekable, DWORD* pdwWidth,
                        DWORD* pdwHeight, BOOL* pbPicture) override;
    HRESULT Play() override;
    HRESULT Pause() override;
    HRESULT Resume() override;
    HRESULT Stop() override;
    HRESULT SetCurTime(double dSeconds) override;
    HRESULT SetPlaybackFlags(DWORD dwPlaybackFlags) override;
    HRESULT GetCurTime(double* pdSeconds) override;

protected:
    HRESULT OpenInterfaces();
    void CloseInterfaces();

    // Whether the file carries a device-conformance template, asked of a metadata editor.
    HRESULT HasDeviceConformanceMetaData(LPCWSTR pwszFile, BOOL* pbHas);
    // Where the editor comes from; the engine asks wmvcore.dll.
    virtual HRESULT CreateMetadataEditor(IWMMetadataEditor** ppEditor);

    void DetectAudioOnly();
    HRESULT CheckSeekable();
    HRESULT AttachVideoWindow();
    HRESULT InitVideoWindow();
    HRESULT SetMessageDrain(HWND hDrain);
    LRESULT HandleGraphEvent();

    static BOOL IsMP3File(LPCWSTR pwszExt);
    static BOOL IsOGGFile(LPCWSTR pwszExt);
    static BOOL IsFLACFile(LPCWSTR pwszExt);

    ComPtr<IBasicAudio> m_pBA;
    ComPtr<IBasicVideo> m_pBV;
    ComPtr<IGraphBuilder> m_pGB;
    ComPtr<IMediaControl> m_pMC;
    ComPtr<IMediaEventEx> m_pME;
    ComPtr<IMediaSeeking> m_pMS;
    ComPtr<IVideoWindow> m_pVideoWindow;
    HWND m_hOldMessageDrain = nullptr;
    HWND m_hEventWnd = nullptr;
    HWND m_hBackgroundWnd = nullptr;
    BOOL m_bAudioOnly = FALSE;
    BOOL m_bSeekable = FALSE;
    RECT m_rcParent = {0, 0, 0, 0};

private:
    static LRESULT CALLBACK StaticWindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam);

    CWMVCoreLibrary m_WMVCore;
};
