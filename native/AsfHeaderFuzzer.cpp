// libFuzzer entry point: any bytes at all go through the header walk and the hand-out. The input
// buffer is exactly as long as the input, so AddressSanitizer flags any read past it.
#include <cstddef>
#include <cstdint>

#include "inspect/CASFFileParser.h"
#include "inspect/CByteView.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t cbData)
{
    CByteView view(pData, cbData);
    CASFFileParser parser;
    parser.ParseHeader(view);
    ASF_VIDEO_INFO video{};
    ASF_AUDIO_INFO audio{};
    uint16_t channelType = 0;
    parser.GetAVFileInfo(&video, &audio, &channelType);
    if (view.HighWaterMark() > cbData)
        __builtin_trap();
    return 0;
}
