// A child window hosting the Windows Media Player control through the system's ATL containment:
// the control's own interface hidden, one item opened at a time (the open blocks, dispatching
// this thread's messages, until the control reports the item open or failed), its kind, size and
// duration read, and its end-of-media and error events relayed to the dispatcher's window.
#pragma once

#include <windows.h>

#include <wmp.h>

#include "engine/ComPtr.h"

class CWMPHost
{
public:
    // How long an open waits for a control that reports neither success nor failure.
    static constexpr DWORD kOpenLimitMs = 20000;

    CWMPHost() = default;
    CWMPHost(const CWMPHost&) = delete;
    CWMPHost& operator=(const CWMPHost&) = delete;
    virtual ~CWMPHost();

    // Makes the window (and, in its creation, the control); null when no window could be made.
    HWND Create(HWND hWndParent, const RECT& rc, DWORD dwStyle, DWORD dwExStyle = 0);
    HWND Window() const { return m_hWnd; }

    HRESULT Open(LPCWSTR pwszPath);
    HRESULT Close();
    HRESULT Play();
    HRESULT Stop();
    HRESULT Pause();
    HRESULT SeekTo(double dSeconds);
    HRESULT GetCurrentPosition(double* pdSeconds);
    HRESULT GetFileInfo(BOOL* pbAudioOnly, double* pdDuration, BOOL* pbSeekable, DWORD* pdwWidth,
                        DWORD* pdwHeight, BOOL* pbPicture);
    bool SetStretchToFit(BOOL bStretch);
    BOOL IsAudioOnly() const { return m_bAudioOnly; }
    void SetNotifyWindow(HWND hWnd) { m_hNotifyWnd = hWnd; }
    BOOL MoveHostWindow(int x, int y, int cx, int cy);

protected:
    virtual LRESULT ProcessMessage(UINT uMsg, WPARAM wParam, LPARAM lParam, bool* pbHandled);
    LRESULT OnCreate();
    void OnDestroy();
    void OnSize();
    LRESULT OnWMPEvent(WPARAM wKind, LPARAM lValue, bool* pbHandled);
    bool WaitWithMessage(HANDLE hEvent);
    bool ReadFileInfo();
    void ClearFileInfo();

    HWND m_hWnd = nullptr;
    HWND m_wndView = nullptr;
    ComPtr<IWMPPlayer> m_spWMPPlayer;
    ComPtr<IWMPControls> m_spWMPControls;
    ComPtr<IConnectionPoint> m_spConnectionPoint;
    DWORD m_dwAdviseCookie = 0;
    bool m_bOpening = false;
    bool m_bFileOpened = false;
    bool m_bOpenFailed = false;
    HANDLE m_hOpenEvent = nullptr;
    HWND m_hNotifyWnd = nullptr;
    BOOL m_bSeekable = FALSE;
    BOOL m_bAudioOnly = FALSE;
    BOOL m_bPicture = FALSE;
    DWORD m_dwWidth = 0;
    DWORD m_dwHeight = 0;
    double m_dDuration = 0.0;
    // The waiting open has seen the control start on the item itself (not only on the playlist
    // around it); only then does a ready or undefined play state speak about the item.
    bool m_bItemOpenBegan = false;

private:
    static LRESULT CALLBACK WindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam);

    // Points at a flag on the stack of a waiting open, cleared if this object goes meanwhile.
    bool* m_pbOpenAlive = nullptr;
};
