// What the Media Player control tests share: the dispatcher routed to the control for every
// Windows Media file (or left with the engine's own route), the control's windows under the host,
// protected copies of the test media, and what the control itself says about its item.
#pragma once

#include <windows.h>

#include <memory>
#include <string>

#include "CPlaybackHost.h"
#include "dispatch/CWindowsMediaRoute.h"

class CControlStage
{
public:
    // A route that sends every Windows Media file to the control, protected or not.
    class CEveryFileRoute : public CWindowsMediaRoute
    {
    protected:
        bool PrefersMediaPlayerControl(LPCWSTR) const override { return true; }
    };

    static std::unique_ptr<CPlaybackHost> ControlHost(int nWidth = 320, int nHeight = 240)
    {
        return std::make_unique<CPlaybackHost>(nWidth, nHeight, std::make_unique<CEveryFileRoute>());
    }

    // Opens a test medium; when the busy platform's graph behind the control renders nothing of
    // it (the control then still reports the item open, with no duration), opens it again, as
    // the DirectShow tests do for the same platform fault (13 % of bare renders of a WMV with
    // three processes at once), up to four times.
    static HRESULT OpenRendered(CPlaybackHost& host, const char* pszName, TESSALY_FILEINFO* pInfo = nullptr);

    // Plays the open item. This platform's control builds its graph again on every play, and the
    // busy platform now and then renders nothing, so that the position never moves: then the
    // medium is opened and played again, up to four times. Returns the tick at which the play
    // that moved was asked for, after 400 ms of it; 0 when none moved.
    static ULONGLONG PlayRendered(CPlaybackHost& host, const char* pszName);

    // The control's container window under hWnd, or null when no control is hosted there.
    static HWND FindContainer(HWND hWnd);
    // The media type the hosted control names for its current item ("" when it names none).
    static std::wstring ControlMediaType(HWND hWnd);
};
