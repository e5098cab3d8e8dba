// The one object through which the engine plays anything: it picks a back-end by extension,
// keeps the playback state the host sees, runs the progress timer and turns back-end messages
// into calls of its owner's event callback. Everything runs on the thread of its hidden window.
#pragma once

#include <windows.h>

#include <memory>
#include <vector>

#include "display/IVideoArea.h"
#include "engine/TessalyContract.h"

class CDDAGraph;
class CPlayerBase;
class CWindowsMediaRoute;

enum : DWORD
{
    STREAMING_EVENT_COMPLETE = 1,
    STREAMING_EVENT_ERROR = 2,       // parameter: the back-end's error code
    STREAMING_EVENT_PROGRESS = 3,    // parameter: address of the elapsed time, valid during the call
    STREAMING_EVENT_TRACK_COMPLETE = 4
};

// The result is ignored.
typedef HRESULT (*StreamingPlayerEventCallback)(DWORD dwEvent, ULONG_PTR ulParam, void* pContext);

class CMediaPlayer : public IVideoArea
{
public:
    // Everything the dispatcher plays with. pWMPPlayer is one of players (the target of the
    // Windows Media route); the CD back-end is reached only through OpenCD.
    struct BackEnds
    {
        std::vector<std::unique_ptr<CPlayerBase>> players;
        CPlayerBase* pWMPPlayer = nullptr;
        std::unique_ptr<CDDAGraph> pCDDAGraph;
        std::unique_ptr<CWindowsMediaRoute> pWindowsMediaRoute;
    };

    // The engine's own back-ends, in search order.
    static BackEnds CreateBackEnds();

    CMediaPlayer();
    explicit CMediaPlayer(BackEnds backEnds);
    CMediaPlayer(const CMediaPlayer&) = delete;
    CMediaPlayer& operator=(const CMediaPlayer&) = delete;
    // Destroy must have run first; what is left is only freed.
    virtual ~CMediaPlayer();

    HRESULT Init(LPCWSTR pwszFile);
    bool IsInitialized() const;
    void Destroy();
    HRESULT SetEventCallback(StreamingPlayerEventCallback pfn, void* pContext);
    HRESULT SetParentWindow(HWND hWnd) override;
    HRESULT SetParentWindowSize(DWORD dwWidth, DWORD dwHeight) override;
    HRESULT OpenFile(LPCWSTR pwszFile, DWORD dwOpenFlags, DWORD dwPlaybackFlags,
                     TESSALY_FILEINFO* pOpenedFileInfo);
    HRESULT OpenCD(WCHAR wcDrive, WORD wStartTrack, WORD wEndTrack);
    HRESULT GetCDDuration(double* pdDuration);
    HRESULT CloseFile();
    HRESULT Play();
    HRESULT Pause();
    HRESULT Stop();
    HRESULT SeekTo(double dSeconds);
    HRESULT GetFileInfo(BOOL* pbAudioOnly, double* pdDuration, BOOL* pbSeekable, DWORD* pdwWidth,
                        DWORD* pdwHeight, BOOL* pbPicture);
    // The array is the caller's, to be freed with CoTaskMemFree; the strings stay the
    // back-ends' own.
    LPCWSTR* GetSupportedFileExt(DWORD* pnCount);
    HRESULT GetPlaybackFlags(DWORD* pdwFlags);
    HRESULT SetPlaybackFlags(DWORD dwFlags);
    TESSALY_PLAYBACK_STATE GetPlayState() const { return m_PlayState; }
    BOOL IsAudioOnly() const { return m_bAudioOnly; }
    BOOL IsPictureFile() const { return m_bPicture; }

protected:
    HRESULT ProgressTimer(BOOL bStart);
    LRESULT OnTimerPlaybackProgress();
    BOOL ValidateFileExt(LPCWSTR pwszExt);
    LRESULT WindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam);

    std::vector<std::unique_ptr<CPlayerBase>> m_Players;
    CPlayerBase* m_pCurPlayer = nullptr;
    CPlayerBase* m_pPrevPlayer = nullptr;
    CPlayerBase* m_pWMPPlayer = nullptr;
    std::unique_ptr<CDDAGraph> m_pCDDAGraph;
    HWND m_hWndParent = nullptr;
    bool m_bParentWindowPending = false;
    HWND m_hEventWnd = nullptr;
    bool m_bFileOpened = false;
    BOOL m_bAudioOnly = FALSE;
    BOOL m_bPicture = FALSE;
    BOOL m_bSeekable = FALSE;
    TESSALY_PLAYBACK_STATE m_PlayState = Playback_State_Stop;
    DWORD m_dwPlaybackFlags = TESSALY_PLAYBACK_FLAG_STRETCH;
    DWORD m_dwPictureTicks = 0;
    StreamingPlayerEventCallback m_pfnEventCallback = nullptr;
    void* m_pCallbackContext = nullptr;
    UINT_PTR m_nProgressTimerId = 0;
    std::unique_ptr<CWindowsMediaRoute> m_pWindowsMediaRoute;

private:
    static LRESULT CALLBACK StaticWindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam);

    bool TakesWindowsMediaRoute(LPCWSTR pwszFile) const;
    CPlayerBase* ChoosePlayer(LPCWSTR pwszFile, LPCWSTR pwszExt) const;
    // Reads the open file's flags through GetFileInfo; fills pInfo when given.
    HRESULT RefreshFileInfo(TESSALY_FILEINFO* pInfo);
    void OnBackEndMessage(UINT uMsg, WPARAM wParam);
    void Notify(DWORD dwEvent, ULONG_PTR ulParam);
    // Set by the destructor when it runs while a back-end's message is being handled.
    bool* m_pbGone = nullptr;
};
