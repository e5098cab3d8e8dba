// The files that make-media.sh wrote when the tests were built, and what ffprobe read from them.
#pragma once

#include <windows.h>

#include <string>

class CTestMedia
{
public:
    struct Truth
    {
        double dDuration = 0.0; // the longest stream, in seconds
        DWORD dwWidth = 0;      // 0 for sound only
        DWORD dwHeight = 0;
    };

    static std::wstring Path(const char* pszName);
    static bool Read(const char* pszName, Truth* pTruth); // false when the file is not in the table
    // The same for another folder of media with its own truth.txt (the QuickTime layer's).
    static std::wstring PathIn(const std::string& folder, const char* pszName); // a Windows path
    static bool ReadIn(const std::string& folder, const char* pszName, Truth* pTruth);
    static std::string Narrow(LPCWSTR pwsz); // as logs show it (the media's names are ASCII)
};
