// Bitrate and frame data of one stream, gathered from the objects that name streams by number.
#pragma once

#include <cstdint>

class CStreamInfo
{
public:
    explicit CStreamInfo(uint16_t wStreamNumber);
    virtual ~CStreamInfo();

    const uint16_t m_wStreamNumber;
    int32_t m_bExtended;          // an Extended Stream Properties object named this stream
    uint32_t m_dwDataBitrate;     // bits per second, from the extended stream properties
    uint32_t m_dwAverageBitrate;  // bits per second, from the stream bitrate properties
    double m_dFrameRate;
    int64_t m_llAvgTimePerFrame;  // 100-nanosecond units
};
