// Runs the parser over bytes that end where an inaccessible page begins, so that a read of even
// one byte past them faults at once (under Wine and natively, sanitizers or not), and keeps what
// it handed out. The records start filled with a pattern: "left untouched" reads as "none".
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "inspect/ASFInfo.h"

class CASFFileParser;

class CGuardedBuffer
{
public:
    explicit CGuardedBuffer(const std::vector<uint8_t>& bytes);
    ~CGuardedBuffer();
    CGuardedBuffer(const CGuardedBuffer&) = delete;
    CGuardedBuffer& operator=(const CGuardedBuffer&) = delete;
    const uint8_t* Data() const { return m_pData; }
    size_t Size() const { return m_cbData; }

private:
    void* m_pBase = nullptr;
    size_t m_cbMapped = 0;
    const uint8_t* m_pData = nullptr;
    size_t m_cbData;
};

struct CParseProbe
{
    CParseProbe() = default;
    explicit CParseProbe(const std::vector<uint8_t>& bytes);
    CParseProbe(CASFFileParser& parser, const std::vector<uint8_t>& bytes);
    void Collect(CASFFileParser& parser);  // what an already loaded parser hands out
    // Every field as text: "WMV3 640x-480x24 12342s 29.97fps 333667 800000bps" or "none";
    // "0x161 2ch 44100Hz 16000B/s 1487 16bit type 2" or "none".
    std::string Video() const;
    std::string Audio() const;

    int32_t hr = 0, infoResult = 0;  // of ParseHeader, of GetAVFileInfo
    bool bVideo = false, bAudio = false, bChannelType = false;
    ASF_VIDEO_INFO video{};
    ASF_AUDIO_INFO audio{};
    uint16_t channelType = 0;
};
