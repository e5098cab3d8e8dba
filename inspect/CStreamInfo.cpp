#include "inspect/CStreamInfo.h"

CStreamInfo::CStreamInfo(uint16_t wStreamNumber)
    : m_wStreamNumber(wStreamNumber),
      m_bExtended(0),
      m_dwDataBitrate(0),
      m_dwAverageBitrate(0),
      m_dFrameRate(0.0),
      m_llAvgTimePerFrame(0)
{
}

CStreamInfo::~CStreamInfo() = default;
