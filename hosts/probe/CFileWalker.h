// Turns the files and folders named on the command line into the list of files to probe: folders
// are walked recursively, in name order so that runs compare line by line.
#pragma once

#include <string>
#include <vector>

#include "hosts/probe/CProbeTarget.h"

class CFileWalker
{
public:
    static std::vector<CProbeTarget> Expand(const std::vector<std::wstring>& paths);

private:
    static void AddFolder(const std::wstring& folder, std::vector<CProbeTarget>& targets);
};
