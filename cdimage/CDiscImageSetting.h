// Which drive letters stand for a disc image instead of a drive: the setting is the registry value
// named by the drive letter (upper case, e.g. "D") under HKEY_CURRENT_USER\Software\Tessaly\CD
// Audio\Images, a REG_SZ holding the full path of the image's .cue sheet. The CD source filter
// reads the image where the setting names one, and the engine measures its tracks from it.
// Windows only (not part of the native build).
#pragma once

#include <windows.h>

#include <string>

class CDiscImageSetting
{
public:
    // The .cue path set for the drive letter (either case), or empty when the letter means a drive.
    static std::wstring ImageFor(WCHAR wcDrive);
    // Sets or removes the setting; a Win32 error code, ERROR_SUCCESS when done.
    static LONG Set(WCHAR wcDrive, const std::wstring& cuePath);
    static LONG Clear(WCHAR wcDrive);
};
