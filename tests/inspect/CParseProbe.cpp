#include "CParseProbe.h"

#include <cstdio>
#include <algorithm>
#include <cstring>
#include <memory>

#include "inspect/CASFFileParser.h"
#include "inspect/CByteView.h"

std::string Parse(const std::vector<uint8_t>& bytes, CASFFileParser* pParser)
{
    const std::unique_ptr<uint8_t[]> pCopy(new uint8_t[bytes.size()]);
    std::copy(bytes.begin(), bytes.end(), pCopy.get());
    CASFFileParser own;
    CASFFileParser& parser = pParser ? *pParser : own;
    return Describe(parser, parser.ParseHeader(CByteView(pCopy.get(), bytes.size())));
}

// The records start filled with a pattern, so that one left untouched reads as "none".
std::string Describe(CASFFileParser& parser, int32_t hrParse)
{
    ASF_VIDEO_INFO v, untouchedVideo;
    ASF_AUDIO_INFO a, untouchedAudio;
    std::memset(static_cast<void*>(&v), 0xA5, sizeof(v)), std::memset(static_cast<void*>(&untouchedVideo), 0xA5, sizeof(v));
    std::memset(static_cast<void*>(&a), 0xA5, sizeof(a)), std::memset(static_cast<void*>(&untouchedAudio), 0xA5, sizeof(a));
    uint16_t channelType = 0xA5A5;
    const int32_t hrInfo = parser.GetAVFileInfo(&v, &a, &channelType);
    char video[100] = "none", audio[100] = "none";
    const char fourCC[5] = {char(v.dwFourCC), char(v.dwFourCC >> 8), char(v.dwFourCC >> 16), char(v.dwFourCC >> 24), 0};
    if (std::memcmp(&v, &untouchedVideo, sizeof(v)))
        std::snprintf(video, sizeof(video), "%s %dx%dx%u %.10gs %.9gfps %lld %ubps%s", fourCC, int(v.lWidth), int(v.lHeight), unsigned(v.wBitDepth), v.dDuration, v.dFrameRate,
                      static_cast<long long>(v.llAvgTimePerFrame), unsigned(v.dwBitrate), v.bPresent == 1 ? "" : " absent?");
    if (std::memcmp(&a, &untouchedAudio, sizeof(a)) || channelType != 0xA5A5)
        std::snprintf(audio, sizeof(audio), "0x%x %uch %uHz %uB/s %u %ubit type %d%s", unsigned(a.wFormatTag), unsigned(a.nChannels),
                      unsigned(a.nSamplesPerSec), unsigned(a.nAvgBytesPerSec), unsigned(a.nBlockAlign), unsigned(a.wBitsPerSample),
                      channelType == 0xA5A5 ? -1 : int(channelType), a.bPresent == 1 ? "" : " absent?");
    return (hrParse ? "rejected " : "") + std::string(hrInfo ? "info failed " : "") + video + " | " + audio;
}
