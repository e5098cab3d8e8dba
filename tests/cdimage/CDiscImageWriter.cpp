#include "CDiscImageWriter.h"

#include <cmath>
#include <cstdio>

#include "cdimage/CBinaryFile.h"

std::string CDiscImageWriter::Write(const std::string& folder, const std::string& stem, const std::vector<Track>& tracks)
{
    CBinaryFile bin, cue;
    if (!bin.Create(folder + "/" + stem + ".bin"))
        return std::string();
    std::string sheet = "FILE \"" + stem + ".bin\" BINARY\r\n";
    uint8_t sector[2352];
    unsigned position = 0;
    for (size_t t = 0; t < tracks.size(); position += tracks[t++].ulSectors)
    {
        char lines[96];
        std::snprintf(lines, sizeof(lines), "  TRACK %02u %s\r\n    INDEX 01 %02u:%02u:%02u\r\n", unsigned(t + 1),
                      tracks[t].bAudio ? "AUDIO" : "MODE1/2352", position / 75 / 60, position / 75 % 60, position % 75);
        sheet += lines;
        for (uint32_t n = 0; n < tracks[t].ulSectors * 588; ++n)  // loud enough that every sample differs from its neighbours
        {
            const double dPhase = 2.0 * 3.14159265358979323846 * tracks[t].dFrequency * double(n) / 44100.0;
            const uint16_t v = tracks[t].bAudio ? uint16_t(int16_t(std::lround(12000.0 * std::sin(dPhase)))) : 0xA5A5;
            sector[n % 588 * 4] = sector[n % 588 * 4 + 2] = uint8_t(v & 0xFF);
            sector[n % 588 * 4 + 1] = sector[n % 588 * 4 + 3] = uint8_t(v >> 8);
            if (n % 588 == 587 && !bin.Write(sector, sizeof(sector)))
                return std::string();
        }
    }
    const std::string path = folder + "/" + stem + ".cue";
    return bin.Close() && cue.Create(path) && cue.Write(sheet.data(), sheet.size()) && cue.Close() ? path : std::string();
}
