#include "CTestMedia.h"

#include <algorithm>
#include <fstream>

std::wstring CTestMedia::Path(const char* pszName) { return PathIn(TESSALY_DSHOW_MEDIA_DIR, pszName); }
bool CTestMedia::Read(const char* pszName, Truth* pTruth) { return ReadIn(TESSALY_DSHOW_MEDIA_DIR, pszName, pTruth); }

std::wstring CTestMedia::PathIn(const std::string& folder, const char* pszName)
{
    const std::string path = folder + "/" + pszName;
    std::wstring wide(path.begin(), path.end());
    std::replace(wide.begin(), wide.end(), L'/', L'\\');
    return wide;
}

std::string CTestMedia::Narrow(LPCWSTR pwsz)
{
    std::string text;
    for (; pwsz && *pwsz; ++pwsz)
        text += static_cast<char>(*pwsz);
    return text;
}

bool CTestMedia::ReadIn(const std::string& folder, const char* pszName, Truth* pTruth)
{
    std::ifstream table(folder + "/truth.txt");
    std::string name;
    for (Truth truth; table >> name >> truth.dDuration >> truth.dwWidth >> truth.dwHeight;)
    {
        if (name == pszName)
        {
            *pTruth = truth;
            return true;
        }
    }
    return false;
}
