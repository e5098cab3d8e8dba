#include "hosts/common/CUtf8.h"

#include <windows.h>

std::string CUtf8::FromWide(const std::wstring& text)
{
    if (text.empty())
        return {};
    const int cchText = static_cast<int>(text.size());
    const int cb = WideCharToMultiByte(CP_UTF8, 0, text.data(), cchText, nullptr, 0, nullptr, nullptr);
    std::string out(static_cast<size_t>(cb), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text.data(), cchText, &out[0], cb, nullptr, nullptr);
    return out;
}

std::wstring CUtf8::ToWide(const std::string& text)
{
    if (text.empty())
        return {};
    const int cbText = static_cast<int>(text.size());
    const int cch = MultiByteToWideChar(CP_UTF8, 0, text.data(), cbText, nullptr, 0);
    std::wstring out(static_cast<size_t>(cch), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.data(), cbText, &out[0], cch);
    return out;
}
