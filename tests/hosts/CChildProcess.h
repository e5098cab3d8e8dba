// Runs one of the host programs as a user would and collects what it printed and its exit code.
#pragma once

#include <windows.h>

#include <string>

class CChildProcess
{
public:
    // Runs to the end. A program still running after the guard time is killed and reported with
    // exit code -1: that is a hang, not slowness.
    static CChildProcess Run(const std::wstring& commandLine, DWORD dwGuardMs = 120000);

    // One argument of a command line, quoted as CommandLineToArgvW reads it back.
    static std::wstring Quote(const std::wstring& argument);

    int exitCode = -1;
    std::string output; // standard output
    std::string errors; // standard error
};
