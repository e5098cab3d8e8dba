// Runs one of the host programs as a user would and collects what it printed and its exit code.
#pragma once

#include <windows.h>

#include <string>

class CChildProcess
{
public:
    struct Result
    {
        int exitCode = -1;
        std::string output; // standard output
        std::string errors; // standard error
    };

    // Starts the program; it runs while the test goes on.
    explicit CChildProcess(const std::wstring& commandLine);
    // A program still running is killed.
    ~CChildProcess();
    CChildProcess(const CChildProcess&) = delete;
    CChildProcess& operator=(const CChildProcess&) = delete;

    bool Started() const { return m_pi.hProcess != nullptr; }
    DWORD Id() const { return m_pi.dwProcessId; }
    // Waits for the end and collects the output. A program still running after the guard time
    // is killed and reported with exit code -1: that is a hang, not slowness.
    Result Finish(DWORD dwGuardMs = 120000);

    static Result Run(const std::wstring& commandLine, DWORD dwGuardMs = 120000);
    // One argument of a command line, quoted as CommandLineToArgvW reads it back.
    static std::wstring Quote(const std::wstring& argument);

private:
    PROCESS_INFORMATION m_pi = {};
    HANDLE m_hOutRead = nullptr;
    HANDLE m_hErrRead = nullptr;
    Result m_result;
};
