#include "dispatch/CWindowsMediaRoute.h"

#include <shlwapi.h>

#include <cwchar>
#include <initializer_list>

bool CWindowsMediaRoute::TakesRoute(LPCWSTR pwszFile) const
{
    if (!pwszFile || !IsWindowsMediaExtension(PathFindExtensionW(pwszFile)))
        return false;
    return PrefersMediaPlayerControl(pwszFile);
}

bool CWindowsMediaRoute::IsWindowsMediaExtension(LPCWSTR pwszExt)
{
    for (LPCWSTR pwszCandidate : {L".WMV", L".WMA", L".ASF"})
    {
        if (_wcsicmp(pwszExt, pwszCandidate) == 0)
            return true;
    }
    return false;
}

bool CWindowsMediaRoute::PrefersMediaPlayerControl(LPCWSTR) const
{
    return false;
}
