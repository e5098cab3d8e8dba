// One QuickTime movie with its invisible movie controller, shared by both QuickTime back-ends:
// opens a file by its ANSI short path, tells still pictures from movies, drives the transport,
// answers duration, size and position, feeds window messages to the controller and tells the
// dispatcher when the movie has finished.
#pragma once

#include <windows.h>

#include <atomic>

#include "qtml/QTML.h"

class CQuickTime
{
public:
    CQuickTime() = default;
    CQuickTime(const CQuickTime&) = delete;
    CQuickTime& operator=(const CQuickTime&) = delete;
    // Closes the movie and drops the port association this object made.
    virtual ~CQuickTime();

    HRESULT OpenMovie(LPCSTR pszPath, DWORD dwFlags);
    void CloseMovie();
    bool HasMovie() const { return m_movie.load() != nullptr; }

    HRESULT SetPortWindow(HWND hWnd);
    void SetNotifyWindow(HWND hWnd) { m_hNotifyWnd = hWnd; }
    HRESULT SetParentWindowSize(DWORD dwWidth, DWORD dwHeight);
    HRESULT GetMovieSize(LONG* plWidth, LONG* plHeight) const;

    HRESULT Play();
    HRESULT Pause();
    HRESULT Resume();
    HRESULT Stop();
    HRESULT SetCurTime(double dSeconds);
    HRESULT GetCurTime(double* pdSeconds) const;
    HRESULT GetFileInfo(BOOL* pbAudioOnly, double* pdDuration, BOOL* pbSeekable, DWORD* pdwWidth,
                        DWORD* pdwHeight, BOOL* pbPicture) const;

    void OnWindowMessage(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam);
    void DoPlaybackComplete();

private:
    void CreateController();
    static Boolean ActionFilter(MovieController mc, int16_t action, void* params, intptr_t refCon);

    HWND m_hPortWnd = nullptr;
    // The audio back-end's worker services the controller and may finish the movie while the
    // host's thread closes it: what both threads read is atomic.
    std::atomic<HWND> m_hNotifyWnd{nullptr};
    std::atomic<MovieController> m_controller{nullptr};
    MCActionFilterWithRefConUPP m_actionFilter = nullptr;
    std::atomic<Movie> m_movie{nullptr};
    LONG m_nMovieWidth = 0;
    LONG m_nMovieHeight = 0;
    BOOL m_bAudioOnly = FALSE;
    BOOL m_bIsPicture = FALSE;
    BYTE m_bIsGif = 0;
};
