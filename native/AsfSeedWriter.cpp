// Writes well-formed headers of the kinds ffmpeg cannot make (WMV9 FourCCs, extended stream
// properties, bitrate records, several streams) as the fuzzer's starting corpus.
#include <string>
#include <vector>

#include "CAsfHeaderBuilder.h"
#include "CSeedFolder.h"

int main(int argc, char** argv)
{
    using Builder = CAsfHeaderBuilder;
    const Builder::AudioFormat stereo{0x161, 2, 44100, 16000, 1487, 16, 10};
    const Builder::AudioFormat surround{0x162, 6, 48000, 24000, 4096, 24, 0};
    const std::vector<std::vector<uint8_t>> seeds = {
        Builder()
            .FileProperties(123456789000ULL, 3000, 500000)
            .UnknownObject(14)
            .AudioStream(1, stereo, std::vector<uint8_t>(10, 0x11))
            .VideoStream(2, 640, 480, 24, "WMV3")
            .HeaderExtension({{2, 800000, 333667}, {1, 64000, 0}})
            .UnknownObject(2)
            .StreamBitrates({{1, 128000}, {2, 900000}})
            .Build(),
        Builder()
            .FileProperties(40000000, 1000, 1)
            .VideoStream(0x0085, 1920, 1080, 24, "WVP2")
            .VideoStream(127, 1280, 720, 32, "WMVA")
            .AudioStream(3, surround)
            .HeaderExtension({{127, 4000000, 417083}, {5, 1, 0}})
            .Build(),
        Builder().FileProperties(30000000, 0, 64000).AudioStream(1, stereo).Build(false),
        Builder().VideoStream(1, 176, 144, 12, "WMVP").StreamBitrates({{1, 250000}}).Build(),
    };
    return CSeedFolder::Write(argc, argv, "built", ".asf", seeds);
}
