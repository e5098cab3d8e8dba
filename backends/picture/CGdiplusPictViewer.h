// Shows still pictures inside the host's window through GDI+: composed once per change into a
// back buffer of the window's size, copied to the screen on every paint, and cross-faded from
// the previous picture when the host asks for it.
#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <memory>

#include "backends/picture/PictureSlot.h"
#include "base/CPlayerBase.h"

class CGdiplusPictViewer : public CPlayerBase
{
public:
    CGdiplusPictViewer();
    ~CGdiplusPictViewer() override;

    HRESULT Init() override;
    void Destroy() override;
    void Activate() override;
    void Deactivate() override;
    HRESULT SetParentWindow(HWND hWndParent) override;
    HRESULT SetParentWindowSize(DWORD dwWidth, DWORD dwHeight) override;
    HRESULT OpenFile(LPCWSTR pwszFile, DWORD dwOpenFlags, DWORD dwPlaybackFlags) override;
    HRESULT CloseFile() override;
    HRESULT GetFileInfo(BOOL* pbAudioOnly, double* pdDuration, BOOL* pbSeekable, DWORD* pdwWidth,
                        DWORD* pdwHeight, BOOL* pbPicture) override;
    HRESULT SetPlaybackFlags(DWORD dwPlaybackFlags) override;
    HRESULT GetCurTime(double* pdSeconds) override;

    static const UINT_PTR FADE_TIMER_ID = 1;

protected:
    static LRESULT CALLBACK StaticWindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam);
    LRESULT WindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam);

    HRESULT InitVideoWindow();
    void RecreateBackBuffer();
    void InvalidateParent();
    void FitPicture();

    void OnPaint(HDC hdc);
    void ComposeBackBuffer();
    void BeginFade(HDC hdc);
    void DrawFadeFrame(HDC hdc);
    void EndFade();
    void StartFadeTimer();
    void StopFadeTimer();
    void OnFadeTimer();


    HWND m_hPictWnd = nullptr;
    Gdiplus::Rect m_rcVideo;
    std::unique_ptr<Gdiplus::Bitmap> m_pBackBuffer;
    BYTE m_bRedraw = 0;
    BYTE m_bFadePending = 0;
    PictureSlot m_curPicture;
    PictureSlot m_prevPicture;
    BYTE m_bFadeTimerOn = 0;
    LONG m_dwFadeDuration = 500;
    DWORD m_dwFadeStart = 0;
    DWORD m_dwFadeLast = 0;
    BLENDFUNCTION m_blendFunc = {AC_SRC_OVER, 0, 0, 0};
    std::unique_ptr<Gdiplus::Bitmap> m_pFadeTarget;
    HBITMAP m_hbmFadeFrom = nullptr;
    HBITMAP m_hbmFadeTo = nullptr;
    // Module GDI+ references this object took, so that Destroy gives back exactly those.
    LONG m_nGdiplusRefs = 0;
};
