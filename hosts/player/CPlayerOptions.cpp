#include "hosts/player/CPlayerOptions.h"

#include <cmath>
#include <cwchar>

bool CPlayerOptions::TakeValue(int argc, const wchar_t* const* argv, int& i, std::wstring& value)
{
    if (i + 1 >= argc)
    {
        m_error = std::wstring(argv[i]) + L" needs a value";
        return false;
    }
    value = argv[++i];
    return true;
}

bool CPlayerOptions::Parse(int argc, const wchar_t* const* argv)
{
    bool bOptionsEnded = false;
    for (int i = 1; i < argc; ++i)
    {
        const std::wstring arg = argv[i];
        std::wstring value;
        if (bOptionsEnded || arg.size() < 2 || arg[0] != L'-')
            m_files.push_back(arg);
        else if (arg == L"--")
            bOptionsEnded = true;
        else if (arg == L"--log")
            m_bLog = true;
        else if (arg == L"--exit-after-complete")
            m_bExitAfterComplete = true;
        else if (arg == L"--help" || arg == L"-h")
            m_bHelp = true;
        else if (arg == L"--screenshot")
        {
            if (!TakeValue(argc, argv, i, m_screenshot))
                return false;
        }
        else if (arg == L"--screenshot-after")
        {
            if (!TakeValue(argc, argv, i, value))
                return false;
            wchar_t* pwszEnd = nullptr;
            m_dScreenshotAfter = wcstod(value.c_str(), &pwszEnd);
            if (value.empty() || *pwszEnd != L'\0' || !std::isfinite(m_dScreenshotAfter) || m_dScreenshotAfter < 0.0 ||
                m_dScreenshotAfter > 86400.0)
            {
                m_error = L"--screenshot-after needs a number of seconds, not " + value;
                return false;
            }
        }
        else
        {
            m_error = L"unknown option " + arg;
            return false;
        }
    }
    return true;
}

const wchar_t* CPlayerOptions::Usage()
{
    return L"usage: player [options] [FILE...]\n"
           L"Plays the files one after the other through the Tessaly engine.\n"
           L"  --log                   print every engine event with a timestamp on standard output\n"
           L"  --screenshot FILE.png   write what the window shows to FILE.png ...\n"
           L"  --screenshot-after SEC  ... this many seconds after the first file started playing\n"
           L"                          (default 1.5), or when the playlist ends if that is sooner\n"
           L"  --exit-after-complete   close the player when the last file has finished\n"
           L"Keys: space play/pause, left/right seek 5 s, home start, escape stop,\n"
           L"      page up/page down previous/next file, ctrl+O open.\n"
           L"Exit status: 0 when everything played, 1 when the engine reported an error, 2 for a bad\n"
           L"command line, 3 when the engine could not be created.\n";
}
