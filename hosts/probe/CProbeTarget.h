// One file the probe is to ask about, or a name given on the command line that could not be
// found: that one is reported with the Windows error rather than dropped.
#pragma once

#include <windows.h>

#include <string>

struct CProbeTarget
{
    std::wstring path;
    HRESULT hrFound = S_OK;
};
