#include "hosts/common/CFullPath.h"

#include <windows.h>

std::wstring CFullPath::Of(const std::wstring& path)
{
    const DWORD cch = GetFullPathNameW(path.c_str(), 0, nullptr, nullptr);
    if (cch == 0)
        return path;
    std::wstring full(cch, L'\0');
    full.resize(GetFullPathNameW(path.c_str(), cch, &full[0], nullptr));
    return full;
}
