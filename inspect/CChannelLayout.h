// Maps a wave-format channel count to the MTP audio channel-configuration code. No Windows
// dependency: the ASF header parser uses it in its native builds too.
#pragma once

#include <cstdint>

class CChannelLayout
{
public:
    // bPointOne selects the n.1 variant; mono has none. Counts outside 1..9 come back unchanged.
    static uint16_t ToMTPChannelType(uint16_t nChannels, bool bPointOne);
};
