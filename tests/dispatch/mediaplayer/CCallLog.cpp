#include "CCallLog.h"

#include <cstdio>

std::vector<std::string> CCallLog::Tail(size_t n) const
{
    const size_t first = m_entries.size() > n ? m_entries.size() - n : 0;
    return std::vector<std::string>(m_entries.begin() + first, m_entries.end());
}

std::vector<std::string> CCallLog::Matching(const std::string& prefix) const
{
    std::vector<std::string> found;
    for (const auto& entry : m_entries)
    {
        if (entry.compare(0, prefix.size(), prefix) == 0)
            found.push_back(entry);
    }
    return found;
}

std::string CCallLog::WindowName(HWND hWnd) const
{
    if (!hWnd)
        return "null";
    for (const auto& named : m_windowNames)
    {
        if (named.first == hWnd)
            return named.second;
    }
    char buffer[32];
    std::snprintf(buffer, sizeof(buffer), "%p", static_cast<void*>(hWnd));
    return buffer;
}

void CCallLog::NameWindow(HWND hWnd, const std::string& name)
{
    m_windowNames.emplace_back(hWnd, name);
}
