// What the ASF header parser hands out about a file's video and audio streams. Plain records
// with fixed-width fields, so the Windows build and the native builds share one layout.
#pragma once

#include <cstdint>

struct ASF_VIDEO_INFO
{
    double dFrameRate;          // frames per second, from the extended stream properties
    double dDuration;           // whole seconds; kept here even when the file has no video
    uint32_t dwFourCC;          // first character in the lowest byte
    uint32_t dwBitrate;         // bits per second
    int64_t llAvgTimePerFrame;  // 100-nanosecond units
    int32_t lWidth;
    int32_t lHeight;
    uint16_t wBitDepth;
    int32_t bPresent;
};

// The first sixteen bytes of the stream's WAVEFORMATEX, then the presence flag.
struct ASF_AUDIO_INFO
{
    uint16_t wFormatTag;
    uint16_t nChannels;
    uint32_t nSamplesPerSec;
    uint32_t nAvgBytesPerSec;
    uint16_t nBlockAlign;
    uint16_t wBitsPerSample;
    int32_t bPresent;
};
