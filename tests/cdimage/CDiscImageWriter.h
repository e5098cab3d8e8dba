// Writes <stem>.bin of raw 2352-byte sectors (44.1 kHz 16-bit stereo, little endian) and <stem>.cue
// naming it, one track after another: a sine tone on both channels (0 Hz: silence), or with
// !bAudio a MODE1/2352 track of 0xA5 bytes. Needs no Windows.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

struct CDiscImageWriter
{
    struct Track { double dFrequency; uint32_t ulSectors; bool bAudio = true; };
    static std::string Write(const std::string& folder, const std::string& stem, const std::vector<Track>& tracks);  // the .cue path, or empty
};
