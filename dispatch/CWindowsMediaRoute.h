// Decides, file by file, whether a Windows Media file is played by the Media Player control
// back-end instead of the one its extension would select.
#pragma once

#include <windows.h>

class CWindowsMediaRoute
{
public:
    CWindowsMediaRoute() = default;
    CWindowsMediaRoute(const CWindowsMediaRoute&) = delete;
    CWindowsMediaRoute& operator=(const CWindowsMediaRoute&) = delete;
    virtual ~CWindowsMediaRoute() = default;

    // pwszFile is the full path; only ".wmv", ".wma" and ".asf" files (any case) can take the route.
    bool TakesRoute(LPCWSTR pwszFile) const;

    static bool IsWindowsMediaExtension(LPCWSTR pwszExt);

protected:
    // Asked only for Windows Media files: true for a file whose header declares content
    // protection.
    virtual bool PrefersMediaPlayerControl(LPCWSTR pwszFile) const;
};
