#include "hosts/probe/CProbeOptions.h"

bool CProbeOptions::Parse(int argc, const wchar_t* const* argv)
{
    bool bOptionsEnded = false;
    for (int i = 1; i < argc; ++i)
    {
        const std::wstring arg = argv[i];
        if (bOptionsEnded || arg.size() < 2 || arg[0] != L'-')
            m_paths.push_back(arg);
        else if (arg == L"--")
            bOptionsEnded = true;
        else if (arg == L"--json")
            m_bJson = true;
        else if (arg == L"--no-progress")
            m_bProgress = false;
        else if (arg == L"--help" || arg == L"-h")
            m_bHelp = true;
        else
        {
            m_error = L"unknown option " + arg;
            return false;
        }
    }
    if (m_paths.empty() && !m_bHelp)
    {
        m_error = L"no file or folder to probe";
        return false;
    }
    return true;
}

const wchar_t* CProbeOptions::Usage()
{
    return L"usage: probe [--json] [--no-progress] PATH...\n"
           L"Asks the Tessaly engine about every file named and every file in the folders named\n"
           L"(recursively): duration, picture size, audio-only, seekable, still picture.\n"
           L"  --json         one JSON document on standard output instead of one line per file\n"
           L"  --no-progress  no progress lines on standard error during long runs\n"
           L"Exit status: 0 when every file was answered, 1 when some failed, 2 for a bad command\n"
           L"line, 3 when the engine could not be created.\n";
}
