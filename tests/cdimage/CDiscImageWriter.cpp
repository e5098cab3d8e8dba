#include "CDiscImageWriter.h"

#include <cmath>
#include <cstdio>

#include "cdimage/CBinaryFile.h"

namespace {

const uint32_t kSectorBytes = 2352;
const uint32_t kSamplesPerSector = kSectorBytes / 4;  // 16-bit stereo
const double kSampleRate = 44100.0;
// Loud enough that every sample differs from its neighbours, well clear of clipping.
const double kAmplitude = 12000.0;
const double kPi = 3.14159265358979323846;

// The data track's byte at an offset into the track: it changes with every byte and every
// sector, so a read from the wrong place cannot match.
uint8_t DataByte(uint64_t offset)
{
    return static_cast<uint8_t>((offset ^ (offset >> 8) ^ (offset >> 16)) + 0x5A);
}

std::string Time(uint64_t sectors)
{
    char text[32];
    std::snprintf(text, sizeof(text), "%02u:%02u:%02u", static_cast<unsigned>(sectors / 75 / 60),
                  static_cast<unsigned>(sectors / 75 % 60), static_cast<unsigned>(sectors % 75));
    return text;
}

} // namespace

std::vector<CDiscImageWriter::Track> CDiscImageWriter::ThreeTones()
{
    return {{440.0, 75, true}, {660.0, 90, true}, {880.0, 60, true}};
}

int16_t CDiscImageWriter::Sample(const Track& track, uint64_t n)
{
    if (!track.bAudio)
        return static_cast<int16_t>(DataByte(n * 4) | (DataByte(n * 4 + 1) << 8));
    if (track.dFrequency == 0.0)
        return 0;
    return static_cast<int16_t>(std::lround(kAmplitude * std::sin(2.0 * kPi * track.dFrequency * double(n) / kSampleRate)));
}

std::string CDiscImageWriter::Write(const std::string& folder, const std::string& stem, const std::vector<Track>& tracks)
{
    const std::string base = folder + "/" + stem;
    CBinaryFile bin;
    if (!bin.Create(base + ".bin"))
        return std::string();
    std::string sheet = "REM written by CDiscImageWriter\r\nFILE \"" + stem + ".bin\" BINARY\r\n";
    uint64_t position = 0;
    std::vector<uint8_t> sector(kSectorBytes);
    for (size_t t = 0; t < tracks.size(); ++t)
    {
        const Track& track = tracks[t];
        char line[64];
        std::snprintf(line, sizeof(line), "  TRACK %02u %s\r\n", static_cast<unsigned>(t + 1),
                      track.bAudio ? "AUDIO" : "MODE1/2352");
        sheet += line;
        sheet += "    INDEX 01 " + Time(position) + "\r\n";
        for (uint32_t s = 0; s < track.ulSectors; ++s)
        {
            if (track.bAudio)
            {
                for (uint32_t i = 0; i < kSamplesPerSector; ++i)
                {
                    const uint16_t v = static_cast<uint16_t>(Sample(track, uint64_t(s) * kSamplesPerSector + i));
                    sector[i * 4 + 0] = sector[i * 4 + 2] = static_cast<uint8_t>(v & 0xFF);
                    sector[i * 4 + 1] = sector[i * 4 + 3] = static_cast<uint8_t>(v >> 8);
                }
            }
            else
            {
                for (uint32_t i = 0; i < kSectorBytes; ++i)
                    sector[i] = DataByte(uint64_t(s) * kSectorBytes + i);
            }
            if (!bin.Write(sector.data(), sector.size()))
                return std::string();
        }
        position += track.ulSectors;
    }
    if (!bin.Close())
        return std::string();

    CBinaryFile cue;
    if (!cue.Create(base + ".cue") || !cue.Write(sheet.data(), sheet.size()) || !cue.Close())
        return std::string();
    return base + ".cue";
}
