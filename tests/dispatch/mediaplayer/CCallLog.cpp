#include "CCallLog.h"

#include <cstdio>

size_t CCallLog::Count(const std::string& prefix) const
{
    size_t n = 0;
    for (const auto& entry : m_entries)
        n += entry.compare(0, prefix.size(), prefix) == 0;
    return n;
}

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
