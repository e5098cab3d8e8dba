#include "dispatch/CWindowsMediaRoute.h"

#include <shlwapi.h>

#include <cwchar>
#include <initializer_list>

#include "inspect/CASFFileParser.h"

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

// Licensed content plays only through the control (it alone talks to the licence store); the
// file's header says whether it is such content. Anything unreadable stays with DirectShow, which
// reports the failure in its own words.
bool CWindowsMediaRoute::PrefersMediaPlayerControl(LPCWSTR pwszFile) const
{
    CASFFileParser parser;
    return parser.Open(pwszFile) == CASFFileParser::kOk && parser.IsContentProtected();
}
