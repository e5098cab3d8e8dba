// Writes a disc image for tests: a .bin of raw 2352-byte sectors (44.1 kHz 16-bit stereo, little
// endian) and a .cue naming it, one track after another. Needs no Windows.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

class CDiscImageWriter
{
public:
    struct Track
    {
        double dFrequency;   // sine tone, both channels; 0 for digital silence
        uint32_t ulSectors;  // length in CD frames (75 a second)
        bool bAudio = true;  // false: a MODE1/2352 data track, every byte 0xA5 (a level no tone reaches)
    };

    // 440 Hz 75 sectors, 660 Hz 90 sectors, 880 Hz 60 sectors.
    static std::vector<Track> ThreeTones();
    // Writes <folder>/<stem>.bin and .cue (UTF-8 paths); the .cue path, or empty on failure.
    static std::string Write(const std::string& folder, const std::string& stem, const std::vector<Track>& tracks);
    // The 16-bit sample (both channels) an audio track holds at sample index n.
    static int16_t Sample(const Track& track, uint64_t n);
};
