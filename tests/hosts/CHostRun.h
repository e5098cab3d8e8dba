// Helpers shared by the tests that run the host programs: the media folder's files and the lines
// of the player's event log.
#pragma once

#include <string>
#include <vector>

class CHostRun
{
public:
    static std::wstring Media(const wchar_t* pwszName);
    // The log's lines, without time stamps, whose event (the first word) is the one given; all
    // of them for an empty event.
    static std::vector<std::string> Events(const std::string& log, const std::string& event);
};
