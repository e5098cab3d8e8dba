// What the tests that run the host programs share: where the programs and the media are inside
// Wine, and the lines of the player's event log.
#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "CChildProcess.h"

#define TESSALY_WIDEN2(x) L##x
#define TESSALY_WIDEN(x) TESSALY_WIDEN2(x)

class CHostRun
{
public:
    // Files written by tests/inspect/make-media.sh: tone.wav (1 s), stereo.wma (2 s, stereo),
    // clip.wmv (2 s, 320x240 with sound), empty.wma and one-byte.wma (not media at all).
    static std::wstring Media(const wchar_t* pwszName) { return TESSALY_WIDEN(TESSALY_MEDIA_DIR) L"\\" + std::wstring(pwszName); }
    static std::wstring Probe(const std::wstring& arguments)
    {
        return CChildProcess::Quote(TESSALY_WIDEN(TESSALY_PROBE_PATH)) + L" " + arguments;
    }
    static std::wstring Player(const std::wstring& arguments)
    {
        return CChildProcess::Quote(TESSALY_WIDEN(TESSALY_PLAYER_PATH)) + L" " + arguments;
    }
    // The log's lines, without time stamps, whose event (the first word) is the one given; all
    // of them for an empty event.
    static std::vector<std::string> Events(const std::string& log, const std::string& event)
    {
        std::vector<std::string> lines;
        std::istringstream stream(log);
        for (std::string line; std::getline(stream, line);)
        {
            const size_t nClose = line.find("] ");
            if (line.empty() || line[0] != '[' || nClose == std::string::npos)
                continue;
            const std::string rest = line.substr(nClose + 2);
            if (event.empty() || rest.compare(0, event.size() + 1, event + " ") == 0 || rest == event)
                lines.push_back(rest);
        }
        return lines;
    }
};
