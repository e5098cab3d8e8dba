// Plays QuickTime movies and shows QuickTime pictures: a background child window covers the host
// window, and the movie is drawn in a video child window fitted inside it, whose messages drive
// the movie controller.
#pragma once

#include <windows.h>

#include <memory>

#include "backends/quicktime/CQTBackEnd.h"

class CQTPlayer : public CQTBackEnd
{
public:
    CQTPlayer();
    ~CQTPlayer() override;

    HRESULT Init() override;
    void Destroy() override;
    HRESULT SetParentWindow(HWND hWndParent) override;
    HRESULT SetParentWindowSize(DWORD dwWidth, DWORD dwHeight) override;
    HRESULT OpenFile(LPCWSTR pwszFile, DWORD dwOpenFlags, DWORD dwPlaybackFlags) override;
    HRESULT CloseFile() override;
    HRESULT SetPlaybackFlags(DWORD dwPlaybackFlags) override;

    // Opens pwszFile in qt through its ANSI short path.
    static HRESULT OpenMovieByShortPath(CQuickTime& qt, LPCWSTR pwszFile, DWORD dwOpenFlags);

protected:
    HRESULT CheckQuickTime(bool bNeedsMovieObject) const override;
    HRESULT InitVideoWindow();

    HWND m_hBackgroundWnd = nullptr;
    HWND m_hVideoWnd = nullptr;
    RECT m_rcParent = {0, 0, 0, 0};
    // Module QuickTime references this object took, so that Destroy gives back exactly those.
    LONG m_nQTRefs = 0;

private:
    static LRESULT CALLBACK StaticWindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam);
    LRESULT WindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam);
};
