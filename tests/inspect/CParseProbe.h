// Runs the parser over bytes that end at a guard page and keeps what it handed out. The caller's
// records start filled with a pattern, so "left untouched" can be told from "written".
#pragma once

#include <cstdint>
#include <vector>

#include "inspect/ASFInfo.h"

class CASFFileParser;

class CParseProbe
{
public:
    CParseProbe() = default;
    explicit CParseProbe(const std::vector<uint8_t>& bytes);
    CParseProbe(CASFFileParser& parser, const std::vector<uint8_t>& bytes);

    // Reads what an already loaded parser hands out.
    void Collect(CASFFileParser& parser);

    int32_t hr = 0;          // of ParseHeader
    int32_t infoResult = 0;  // of GetAVFileInfo
    uint64_t cbTouched = 0;
    bool bVideo = false;
    bool bAudio = false;
    bool bChannelType = false;
    ASF_VIDEO_INFO video{};
    ASF_AUDIO_INFO audio{};
    uint16_t channelType = 0;

private:
    void Parse(CASFFileParser& parser, const std::vector<uint8_t>& bytes);
};
