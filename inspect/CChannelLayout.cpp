#include "inspect/CChannelLayout.h"

#include "trace/Trace.h"

uint16_t CChannelLayout::ToMTPChannelType(uint16_t nChannels, bool bPointOne)
{
    if (nChannels == 1)
        return 1;
    if (nChannels >= 2 && nChannels <= 9)
        return static_cast<uint16_t>(2 * (nChannels - 1) + (bPointOne ? 1 : 0));
    TESSALY_TRACE("E:CUtility::WfxAudioChannelsToMTPAudioChannelType> Undefined Wfx Channels type, returning the same value...");
    return nChannels;
}
