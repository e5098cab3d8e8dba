// What the Media Player control tests share: the dispatcher routed to the control for every
// Windows Media file, protected or not; opens and plays made again (up to four times, printed)
// when the busy platform's graph behind the control renders nothing, as the DirectShow tests do
// for the same platform fault (13 % of bare renders of a WMV with three processes at once); and
// what the control itself says about its item.
#pragma once

#include <windows.h>

#include <memory>
#include <string>

#include "CPlaybackHost.h"
#include "dispatch/CWindowsMediaRoute.h"

class CControlStage
{
public:
    class CEveryFileRoute : public CWindowsMediaRoute
    {
    protected:
        bool PrefersMediaPlayerControl(LPCWSTR) const override { return true; }
    };

    static std::unique_ptr<CPlaybackHost> ControlHost(int nWidth = 320, int nHeight = 240)
    {
        return std::make_unique<CPlaybackHost>(nWidth, nHeight, std::make_unique<CEveryFileRoute>());
    }
    // Opened again while the control reports the item open with no duration.
    static HRESULT OpenRendered(CPlaybackHost& host, const char* pszName, TESSALY_FILEINFO* pInfo = nullptr);
    // Plays the open item, opened and played again while the position does not move in 400 ms.
    // Returns the tick at which the play that moved was asked for; 0 when none moved.
    static ULONGLONG PlayRendered(CPlaybackHost& host, const char* pszName);
    // The control's container window under hWnd, or null when no control is hosted there.
    static HWND FindContainer(HWND hWnd);
    // The media type the hosted control names for its current item ("" when it names none).
    static std::wstring ControlMediaType(HWND hWnd);
};
