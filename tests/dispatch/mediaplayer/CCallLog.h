// One ordered record of what the dispatcher did to the test back-ends and of the events it
// raised, so that a test checks the order across back-ends and events.
#pragma once

#include <windows.h>

#include <string>
#include <utility>
#include <vector>

class CCallLog
{
public:
    void Add(const std::string& entry) { m_entries.push_back(entry); }
    void Clear() { m_entries.clear(); }
    const std::vector<std::string>& Entries() const { return m_entries; }
    // Entries that begin with prefix, e.g. "DS.Stop" or "event.progress".
    size_t Count(const std::string& prefix) const
    {
        size_t n = 0;
        for (const auto& entry : m_entries)
            n += entry.compare(0, prefix.size(), prefix) == 0;
        return n;
    }
    // "null", the name given with NameWindow, or the handle's value.
    std::string WindowName(HWND hWnd) const;
    void NameWindow(HWND hWnd, const std::string& name) { m_names.emplace_back(hWnd, name); }

private:
    std::vector<std::string> m_entries;
    std::vector<std::pair<HWND, std::string>> m_names;
};
