// The files a user hands the player: chosen in the open dialog, which offers the extensions the
// engine says it plays, or dropped onto the window.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

#include "engine/TessalyContract.h"

class CFileChooser
{
public:
    // Empty when the user cancels.
    static std::vector<std::wstring> Choose(HWND hOwner, IPlay* pPlay);
    // Takes over the drop handle and releases it.
    static std::vector<std::wstring> Dropped(HDROP hDrop);

private:
    static std::wstring Filter(IPlay* pPlay);
};
