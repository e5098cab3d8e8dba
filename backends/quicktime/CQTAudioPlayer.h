// Plays the audio formats that QuickTime handles. The window that carries QuickTime's port and
// services the movie controller lives in a worker thread of its own with its own message loop;
// transport calls are made on the host's thread. Window, flags and ready event are process-wide,
// so one audio back-end at a time has a worker.
#pragma once

#include <windows.h>

#include <memory>

#include "backends/quicktime/CQTBackEnd.h"

class CQTAudioPlayer;

struct QTAudioThreadArgs
{
    HWND hBackgroundWnd;
    CQTAudioPlayer* pPlayer;
};

extern HWND g_hQTAudioHandlerWnd;        // made and owned by the worker thread
extern volatile LONG g_bQTAudioQuit;     // host thread asks the worker to end
extern volatile LONG g_bQTAudioDone;     // the worker has left its loop
extern HANDLE g_hQTAudioReady;           // manual reset: the worker's window and port are ready
extern QTAudioThreadArgs g_QTAudioThreadArgs;

class CQTAudioPlayer : public CQTBackEnd
{
public:
    CQTAudioPlayer();
    ~CQTAudioPlayer() override;

    HRESULT Init() override;
    void Destroy() override;
    HRESULT SetParentWindow(HWND hWndParent) override;
    HRESULT SetParentWindowSize(DWORD dwWidth, DWORD dwHeight) override;
    HRESULT OpenFile(LPCWSTR pwszFile, DWORD dwOpenFlags, DWORD dwPlaybackFlags) override;
    HRESULT CloseFile() override;
    HRESULT SetPlaybackFlags(DWORD dwPlaybackFlags) override;

    // Longest wait for the worker to get ready or to end; a stuck worker fails the call instead
    // of hanging the host.
    static const DWORD kWorkerLimitMs = 20000;

protected:
    struct CHandleCloser
    {
        void operator()(HANDLE h) const { CloseHandle(h); }
    };

    HRESULT CheckQuickTime(bool bNeedsMovieObject) const override;
    HRESULT InitVideoWindow();
    bool StartWorker(HWND hWndParent);
    // False when the worker did not end in time.
    bool EndWorker();
    // Attaches (the handler window) or detaches (null) the port in the worker thread.
    void SendAttachPort(HWND hWnd) const;

    HWND m_hBackgroundWnd = nullptr;
    RECT m_rcParent = {0, 0, 0, 0};
    DWORD m_dwThreadId = 0;
    std::unique_ptr<void, CHandleCloser> m_hThread;
    BYTE m_bReleasePort = 0;
    // Module QuickTime references this object took, so that Destroy gives back exactly those.
    LONG m_nQTRefs = 0;

private:
    static DWORD WINAPI QTAudioThreadProc(LPVOID pArgs);
    static LRESULT CALLBACK HandlerWindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam);
    LRESULT OnHandlerMessage(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam);
};
