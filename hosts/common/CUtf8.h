// Conversions between the UTF-16 of Windows and the UTF-8 the hosts write to their output, so
// logs and JSON survive any path a user has.
#pragma once

#include <string>

class CUtf8
{
public:
    static std::string FromWide(const std::wstring& text);
    static std::wstring ToWide(const std::string& text);
};
