#include "CScriptedBackEnd.h"

#include <cstdarg>
#include <cstdio>

std::string Narrow(LPCWSTR pwsz)
{
    std::string text;
    for (; pwsz && *pwsz; ++pwsz)
        text += *pwsz < 0x80 ? static_cast<char>(*pwsz) : '?';
    return text;
}

std::string Format(const char* pszFormat, ...)
{
    char buffer[256];
    va_list args;
    va_start(args, pszFormat);
    std::vsnprintf(buffer, sizeof(buffer), pszFormat, args);
    va_end(args);
    return buffer;
}
