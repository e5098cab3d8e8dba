// One ordered record of everything the dispatcher did to the test back-ends and of every event
// it raised, so that a test can check the order across back-ends and events.
#pragma once

#include <windows.h>

#include <string>
#include <vector>

class CCallLog
{
public:
    void Add(const std::string& entry) { m_entries.push_back(entry); }
    void Clear() { m_entries.clear(); }
    const std::vector<std::string>& Entries() const { return m_entries; }

    // The last n entries (all of them when there are fewer).
    std::vector<std::string> Tail(size_t n) const;
    // Entries that begin with prefix, e.g. "DS." or "event.progress".
    std::vector<std::string> Matching(const std::string& prefix) const;
    size_t Count(const std::string& prefix) const { return Matching(prefix).size(); }

    // Names a window handle in entries: "null", a name given with NameWindow, or its value.
    std::string WindowName(HWND hWnd) const;
    void NameWindow(HWND hWnd, const std::string& name);

private:
    std::vector<std::string> m_entries;
    std::vector<std::pair<HWND, std::string>> m_windowNames;
};
