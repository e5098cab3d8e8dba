// What the probe learnt about one file.
#pragma once

#include <string>

#include "engine/TessalyContract.h"

struct CProbeResult
{
    std::wstring path;
    long long llBytes = -1; // -1: the file's size could not be read
    HRESULT hr = E_FAIL;
    TESSALY_FILEINFO info = {};

    bool Succeeded() const { return SUCCEEDED(hr); }
    bool Has(unsigned long dwBit) const { return (info.dwAttributeMask & dwBit) != 0; }
};
