// The player's main window: the video area the engine draws into, the control row and the status
// line; it owns the engine's Play object and plays the playlist through it, moving on to the next
// file when one completes or fails.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "engine/ComPtr.h"
#include "engine/TessalyContract.h"
#include "hosts/player/CControlBar.h"
#include "hosts/player/CEventConnection.h"
#include "hosts/player/CEventLog.h"
#include "hosts/player/CInfoPanel.h"
#include "hosts/player/CPlaybackListener.h"
#include "hosts/player/CPlayerEvents.h"
#include "hosts/player/CPlayerOptions.h"
#include "hosts/player/CPlaylist.h"

class CPlayerWindow : public CPlaybackListener
{
public:
    CPlayerWindow(const CPlayerOptions& options, const CEventLog& log);
    ~CPlayerWindow();
    CPlayerWindow(const CPlayerWindow&) = delete;
    CPlayerWindow& operator=(const CPlayerWindow&) = delete;

    // Makes the window and the engine's Play object, and starts the playlist.
    HRESULT Create(int nShow);
    // The player's keys, answered wherever the focus is; false for other keys.
    bool HandleKey(WPARAM vk);
    int ExitCode() const { return m_nErrors ? 1 : 0; }

    void OnPlaybackProgress(double dSeconds, int nState) override;
    void OnPlaybackComplete() override;
    void OnPlaybackError(HRESULT hrError) override;

private:
    static LRESULT CALLBACK WndProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam);
    LRESULT OnMessage(UINT uMsg, WPARAM wParam, LPARAM lParam);
    bool OnCreate();
    void OnDestroy();
    void Layout();
    void OnCommand(int nId);

    HRESULT CreateEngine();
    void AddFiles(const std::vector<std::wstring>& files);
    void PlayCurrent();
    void MoveOn(bool bForward);
    void FinishPlaylist();
    void TogglePause();
    void Stop();
    void SeekTo(double dPosition);
    void TakeScreenshot();
    void ReportError(const wchar_t* pwszStep, HRESULT hr);
    void SetStatus(const std::wstring& text);

    const CPlayerOptions& m_options;
    const CEventLog& m_log;
    HWND m_hWnd = nullptr;
    HWND m_hVideo = nullptr;
    HWND m_hStatus = nullptr;
    HFONT m_hFont = nullptr;
    CControlBar m_controls;
    CInfoPanel m_panel;
    CPlaylist m_playlist;

    ComPtr<IPlay> m_play;
    ComPtr<CPlayerEvents> m_events;
    CEventConnection m_connection;
    HRESULT m_hrEngine = S_OK;

    double m_dDuration = 0.0;
    double m_dPosition = 0.0;
    bool m_bOpen = false;
    bool m_bScreenshotTimed = false;
    bool m_bScreenshotDone = false;
    unsigned m_nErrors = 0;
};
