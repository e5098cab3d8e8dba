// Writes a disc image for tests: <stem>.bin of raw 2352-byte sectors (44.1 kHz 16-bit stereo,
// little endian) and <stem>.cue naming it, one track after another. Needs no Windows.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

class CDiscImageWriter
{
public:
    // A sine tone on both channels (0 Hz: silence), or with !bAudio a MODE1/2352 track of 0xA5 bytes.
    struct Track { double dFrequency; uint32_t ulSectors; bool bAudio = true; };
    static std::vector<Track> ThreeTones();  // 440 Hz 75 sectors, 660 Hz 90, 880 Hz 60
    // The .cue path (UTF-8), or empty on failure.
    static std::string Write(const std::string& folder, const std::string& stem, const std::vector<Track>& tracks);
    static int16_t Sample(const Track& track, uint64_t n);  // what an audio track holds at sample n
};
