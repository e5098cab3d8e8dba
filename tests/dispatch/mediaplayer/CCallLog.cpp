#include "CCallLog.h"

#include <cstdio>

std::string CCallLog::WindowName(HWND hWnd) const
{
    if (!hWnd)
        return "null";
    for (const auto& named : m_names)
    {
        if (named.first == hWnd)
            return named.second;
    }
    char buffer[32];
    std::snprintf(buffer, sizeof(buffer), "%p", static_cast<void*>(hWnd));
    return buffer;
}
