#include "trace/Trace.h"

#include <cstdarg>
#include <cstdio>

#if defined(_WIN32)
#include <windows.h>
#endif

namespace tessaly {

void TraceLine(const char* pszFormat, ...)
{
    char szLine[1024];
    va_list args;
    va_start(args, pszFormat);
    int n = std::vsnprintf(szLine, sizeof(szLine) - 1, pszFormat, args);
    va_end(args);
    if (n < 0)
        return;
    size_t len = static_cast<size_t>(n) < sizeof(szLine) - 1 ? static_cast<size_t>(n) : sizeof(szLine) - 2;
    if (len == 0 || szLine[len - 1] != '\n')
    {
        szLine[len++] = '\n';
        szLine[len] = '\0';
    }
#if defined(_WIN32)
    OutputDebugStringA(szLine);
#else
    std::fputs(szLine, stderr);
#endif
}

} // namespace tessaly
