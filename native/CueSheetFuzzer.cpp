// libFuzzer entry point: any bytes go through the cue sheet parser, and a sheet that parses is
// laid out against file sizes taken from the same bytes (some near the sheet's own positions,
// some of any 64-bit size). The input buffer is exactly as long as the input, so
// AddressSanitizer flags any read past it; a table of contents that breaks its own promises
// stops the run.
#include <cstddef>
#include <cstdint>
#include <vector>

#include "cdimage/CDiscImage.h"

namespace {

uint64_t Word(const uint8_t* pData, size_t cbData, size_t nAt)
{
    uint64_t value = 0;
    for (size_t i = 0; i < 8; ++i)
        value = (value << 8) | pData[(nAt + i) % cbData];
    return value;
}

// A size for each file: mostly a whole number of sectors past the file's last INDEX 01 with a
// partial sector now and then, sometimes one that ends before it, sometimes any size at all.
std::vector<uint64_t> FileSizes(const CCueSheet& sheet, const uint8_t* pData, size_t cbData)
{
    std::vector<uint64_t> sizes;
    for (size_t f = 0; f < sheet.Files().size(); ++f)
    {
        const uint64_t word = Word(pData, cbData, f * 8);
        uint64_t lastIndex = 0;
        uint64_t sectorSize = CDiscImage::kAudioSectorBytes;
        for (const CueTrack& track : sheet.Tracks())
        {
            if (track.nFile == f)
            {
                lastIndex = track.ulIndex01;
                sectorSize = track.ulSectorSize;
            }
        }
        switch (word & 3)
        {
        case 0:
            sizes.push_back(word >> 2);
            break;
        case 1:
            sizes.push_back((word >> 2) % (lastIndex * sectorSize + 1));
            break;
        default:
            sizes.push_back((lastIndex + ((word >> 2) & 0xFFFF)) * sectorSize + ((word >> 18) % 4) * (sectorSize / 3));
            break;
        }
    }
    return sizes;
}

void Check(bool bHolds)
{
    if (!bHolds)
        __builtin_trap();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t cbData)
{
    CCueSheet sheet;
    if (sheet.Parse(reinterpret_cast<const char*>(pData), cbData) != CCueSheet::kOk)
        return 0;
    const std::vector<uint64_t> sizes = FileSizes(sheet, pData, cbData);
    CDiscImage image;
    const CDiscImage::Status status = image.Build(sheet, sizes);
    if (status != CDiscImage::kOk)
    {
        Check(image.Tracks().empty());
        return 0;
    }

    // Every track of the sheet, each a whole part of its file, one after another on the disc.
    Check(image.Tracks().size() == sheet.Tracks().size());
    uint64_t ullDiscEnd = 0;
    for (const DiscTrack& track : image.Tracks())
    {
        Check(track.ulSectors > 0 && track.nFile < sizes.size() && track.ulSectorSize > 0);
        Check(track.ulFirstSector >= ullDiscEnd);
        ullDiscEnd = uint64_t(track.ulFirstSector) + track.ulSectors;
        Check(ullDiscEnd <= UINT32_MAX);
        Check(track.ullFileOffset + uint64_t(track.ulSectors) * track.ulSectorSize <= sizes[track.nFile]);
        Check(image.FindTrack(track.nNumber) == &track);
    }
    Check(image.Tracks().front().ulFirstSector == 0);
    uint8_t sector[CDiscImage::kAudioSectorBytes];
    Check(!image.ReadAudio(image.Tracks().front().nNumber, 0, 1, sector));

    // One size fewer than files: never a table of contents.
    std::vector<uint64_t> fewer = sizes;
    fewer.pop_back();
    Check(image.Build(sheet, fewer) == CDiscImage::kMissingFile && image.Tracks().empty());
    return 0;
}
