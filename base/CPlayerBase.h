// The abstract back-end: what the dispatcher drives every way of playing a file through.
#pragma once

#include <windows.h>

#include "engine/TessalyContract.h"

class CPlayerBase
{
public:
    CPlayerBase() = default;
    CPlayerBase(const CPlayerBase&) = delete;
    CPlayerBase& operator=(const CPlayerBase&) = delete;
    virtual ~CPlayerBase() = default;

    virtual HRESULT Init();
    virtual void Destroy();
    virtual void Activate();
    virtual void Deactivate();
    virtual HRESULT SetParentWindow(HWND hWndParent);
    virtual HRESULT SetParentWindowSize(DWORD dwWidth, DWORD dwHeight);
    virtual HRESULT OpenFile(LPCWSTR pwszFile, DWORD dwOpenFlags, DWORD dwPlaybackFlags);
    virtual HRESULT CloseFile();
    virtual HRESULT GetFileInfo(BOOL* pbAudioOnly, double* pdDuration, BOOL* pbSeekable,
                                DWORD* pdwWidth, DWORD* pdwHeight, BOOL* pbPicture);
    virtual HRESULT Play();
    virtual HRESULT Pause();
    virtual HRESULT Resume();
    virtual HRESULT Stop();
    virtual HRESULT SetCurTime(double dSeconds);
    virtual HRESULT SetPlaybackFlags(DWORD dwPlaybackFlags);
    virtual HRESULT GetCurTime(double* pdSeconds);
    virtual LPCWSTR* GetSupportedFileExt(DWORD* pdwCount);
    virtual void SetEventHandlerWindow(HWND hWnd);
    virtual HRESULT OnEngineNotify(WPARAM wParam, LPARAM lParam);
    // Kept so that the slot order stays as back-ends were built against; nothing calls it.
    virtual HRESULT Reserved(DWORD dwValue);

    bool IsInitialized() const { return m_bInitialized; }
    BOOL IsSupportedFileExt(LPCWSTR pwszExt) const;

    // Places a source of prc's size in a parent of the given size, by the stretch flag.
    void FitVideoRect(DWORD dwParentWidth, DWORD dwParentHeight, RECT* prc) const;

    // Gives a back-end a child window covering hWndParent, re-parents the one it has, or,
    // with a null parent, takes it away.
    static HRESULT CreateBackgroundWindow(HWND* phWnd, HWND hWndParent, LPCWSTR pwszClassName,
                                          LPCWSTR pwszWindowName, WNDPROC pfnWndProc,
                                          void* pUserData);

protected:
    bool m_bInitialized = false;
    HWND m_hEventHandlerWnd = nullptr;
    DWORD m_dwPlaybackFlags = TESSALY_PLAYBACK_FLAG_STRETCH;
    HWND m_hWndParent = nullptr;
    const LPCWSTR* m_ppwszFileExt = nullptr;
    DWORD m_dwFileExtCount = 0;
};
