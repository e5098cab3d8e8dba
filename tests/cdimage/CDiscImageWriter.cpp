#include "CDiscImageWriter.h"

#include <cmath>
#include <cstdio>

#include "cdimage/CBinaryFile.h"

std::vector<CDiscImageWriter::Track> CDiscImageWriter::ThreeTones() { return {{440.0, 75}, {660.0, 90}, {880.0, 60}}; }

// Loud enough that every sample differs from its neighbours, well clear of clipping.
int16_t CDiscImageWriter::Sample(const Track& track, uint64_t n)
{
    return static_cast<int16_t>(std::lround(12000.0 * std::sin(2.0 * 3.14159265358979323846 * track.dFrequency * double(n) / 44100.0)));
}

std::string CDiscImageWriter::Write(const std::string& folder, const std::string& stem, const std::vector<Track>& tracks)
{
    const std::string base = folder + "/" + stem;
    CBinaryFile bin, cue;
    if (!bin.Create(base + ".bin"))
        return std::string();
    std::string sheet = "FILE \"" + stem + ".bin\" BINARY\r\n";
    unsigned position = 0;
    std::vector<uint8_t> sector(2352);
    for (size_t t = 0; t < tracks.size(); position += tracks[t++].ulSectors)
    {
        char lines[96];
        std::snprintf(lines, sizeof(lines), "  TRACK %02u %s\r\n    INDEX 01 %02u:%02u:%02u\r\n", unsigned(t + 1),
                      tracks[t].bAudio ? "AUDIO" : "MODE1/2352", position / 75 / 60, position / 75 % 60, position % 75);
        sheet += lines;
        for (uint32_t s = 0; s < tracks[t].ulSectors; ++s)
        {
            for (uint32_t i = 0; i < 588; ++i)
            {
                const uint16_t v = tracks[t].bAudio ? static_cast<uint16_t>(Sample(tracks[t], uint64_t(s) * 588 + i)) : 0xA5A5;
                sector[i * 4] = sector[i * 4 + 2] = static_cast<uint8_t>(v & 0xFF);
                sector[i * 4 + 1] = sector[i * 4 + 3] = static_cast<uint8_t>(v >> 8);
            }
            if (!bin.Write(sector.data(), sector.size()))
                return std::string();
        }
    }
    const bool bOk = bin.Close() && cue.Create(base + ".cue") && cue.Write(sheet.data(), sheet.size()) && cue.Close();
    return bOk ? base + ".cue" : std::string();
}
