// Plays Windows Media files through the Windows Media Player control: the common back-end
// operations forwarded to a control host window placed in the host application's window.
#pragma once

#include <memory>

#include "base/CPlayerBase.h"

class CWMPHost;

class CWMPPlayer : public CPlayerBase
{
public:
    CWMPPlayer();
    ~CWMPPlayer() override;

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
    void SetEventHandlerWindow(HWND hWnd) override;
    HRESULT Reserved(DWORD dwValue) override;

    virtual HRESULT UpdateHostWindow();

protected:
    // Made by Init, so tests can hand in a host of their own.
    virtual CWMPHost* CreateHost();
    bool IsHostUsable() const;

    std::unique_ptr<CWMPHost> m_pWMPHost;
    RECT m_rcHost = {};
};
