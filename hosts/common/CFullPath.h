// Absolute paths for what users type: the engine, the logs and the reports all get the same
// unambiguous name whatever the current folder was.
#pragma once

#include <string>

class CFullPath
{
public:
    static std::wstring Of(const std::wstring& path);
};
