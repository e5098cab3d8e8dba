#include "CHostRun.h"

#include <sstream>

#include "HostPaths.h"

std::wstring CHostRun::Media(const wchar_t* pwszName)
{
    return std::wstring(kMediaDir) + L"\\" + pwszName;
}

std::vector<std::string> CHostRun::Events(const std::string& log, const std::string& event)
{
    std::vector<std::string> lines;
    std::istringstream stream(log);
    for (std::string line; std::getline(stream, line);)
    {
        const size_t nClose = line.find("] ");
        if (line.empty() || line[0] != '[' || nClose == std::string::npos)
            continue;
        const std::string rest = line.substr(nClose + 2);
        if (event.empty() ||
            (rest.compare(0, event.size(), event) == 0 && (rest.size() == event.size() || rest[event.size()] == ' ')))
            lines.push_back(rest);
    }
    return lines;
}
