// The row under the video: buttons that send the main window commands, the progress bar the
// engine's progress events move, and the time beside it.
#pragma once

#include <windows.h>

class CControlBar
{
public:
    enum Command
    {
        IdOpen = 101,
        IdPrevious,
        IdPlayPause,
        IdStop,
        IdBack,
        IdForward,
        IdNext,
    };

    void Create(HWND hParent, HFONT hFont);
    // Places the row at the given top edge across the given width.
    void Layout(int nTop, int nWidth);
    static int Height();

    // Position and length in seconds; a length of 0 leaves the bar empty.
    void ShowProgress(double dPosition, double dDuration);
    void ShowPaused(bool bPaused);

private:
    HWND m_hProgress = nullptr;
    HWND m_hTime = nullptr;
    HWND m_hPlayPause = nullptr;
    HWND m_hButtons[7] = {};
};
