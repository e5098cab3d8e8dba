// The table of contents from a sheet and the sizes of its files alone (CDiscImage::Build): where
// tracks begin and end, on the disc and in their files, and which images are refused.
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "cdimage/CDiscImage.h"

namespace {

const uint64_t kRaw = CDiscImage::kAudioSectorBytes;

CCueSheet Sheet(const std::string& text)
{
    CCueSheet sheet;
    EXPECT_EQ(CCueSheet::kOk, sheet.Parse(text.data(), text.size()));
    return sheet;
}

// Tracks at 0, 100 and 250 frames of one file.
const char kOneFile[] =
    "FILE \"disc.bin\" BINARY\n"
    "  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n"
    "  TRACK 02 AUDIO\n    INDEX 00 00:01:20\n    INDEX 01 00:01:25\n"
    "  TRACK 03 AUDIO\n    INDEX 01 00:03:25\n";

TEST(DiscImageLayout, TrackEndsWhereTheNextBeginsAndTheLastWithItsFilesWholeSectors)
{
    const CCueSheet sheet = Sheet(kOneFile);
    struct Case
    {
        uint64_t cbFile;
        uint32_t ulLastSectors;
    };
    // Exactly 400 sectors, a partial sector more (left out), one byte short of 400.
    for (const Case& c : {Case{400 * kRaw, 150}, Case{400 * kRaw + 1000, 150}, Case{400 * kRaw - 1, 149}})
    {
        SCOPED_TRACE(c.cbFile);
        CDiscImage image;
        ASSERT_EQ(CDiscImage::kOk, image.Build(sheet, {c.cbFile}));
        const std::vector<DiscTrack>& tracks = image.Tracks();
        ASSERT_EQ(3u, tracks.size());
        const uint32_t first[] = {0, 100, 250};
        const uint32_t sectors[] = {100, 150, c.ulLastSectors};
        for (size_t i = 0; i < 3; ++i)
        {
            EXPECT_EQ(static_cast<int>(i + 1), tracks[i].nNumber);
            EXPECT_TRUE(tracks[i].bAudio);
            EXPECT_EQ(first[i], tracks[i].ulFirstSector);
            EXPECT_EQ(sectors[i], tracks[i].ulSectors);
            EXPECT_EQ(first[i] * kRaw, tracks[i].ullFileOffset);
            EXPECT_EQ(0u, tracks[i].nFile);
            EXPECT_EQ(kRaw, tracks[i].ulSectorSize);
        }
        EXPECT_EQ(&tracks[1], image.FindTrack(2));
        EXPECT_EQ(nullptr, image.FindTrack(4));
        EXPECT_DOUBLE_EQ(2.0, CDiscImage::Seconds(tracks[1]));
        // Built from sizes alone, the image has nothing to read from.
        uint8_t sector[2352];
        EXPECT_FALSE(image.ReadAudio(1, 0, 1, sector));
    }
}

// Positions count from the first track's INDEX 01 (its pregap in the file lies before the disc's
// first sector) and run on through the files in order.
TEST(DiscImageLayout, DiscPositionsAddUpAcrossFiles)
{
    const CCueSheet sheet = Sheet(
        "FILE \"a.bin\" BINARY\n"
        "  TRACK 01 AUDIO\n    INDEX 00 00:00:00\n    INDEX 01 00:02:00\n"
        "  TRACK 02 AUDIO\n    INDEX 01 00:02:50\n"
        "FILE \"b.bin\" BINARY\n"
        "  TRACK 03 AUDIO\n    INDEX 01 00:00:00\n"
        "  TRACK 04 AUDIO\n    INDEX 01 00:01:00\n"
        "FILE \"c.bin\" BINARY\n"
        "  TRACK 05 AUDIO\n    INDEX 01 00:00:10\n");
    CDiscImage image;
    ASSERT_EQ(CDiscImage::kOk, image.Build(sheet, {300 * kRaw, 200 * kRaw + 7, 40 * kRaw}));
    const std::vector<DiscTrack>& tracks = image.Tracks();
    ASSERT_EQ(5u, tracks.size());
    struct Expected
    {
        uint32_t ulFirstSector;
        uint32_t ulSectors;
        size_t nFile;
        uint64_t ullFileOffset;
    };
    const Expected expected[] = {
        {0, 50, 0, 150 * kRaw},
        {50, 100, 0, 200 * kRaw},
        {150, 75, 1, 0},
        {225, 125, 1, 75 * kRaw},
        {350 + 10, 30, 2, 10 * kRaw},
    };
    for (size_t i = 0; i < 5; ++i)
    {
        SCOPED_TRACE(i);
        EXPECT_EQ(expected[i].ulFirstSector, tracks[i].ulFirstSector);
        EXPECT_EQ(expected[i].ulSectors, tracks[i].ulSectors);
        EXPECT_EQ(expected[i].nFile, tracks[i].nFile);
        EXPECT_EQ(expected[i].ullFileOffset, tracks[i].ullFileOffset);
    }
}

// Sectors of a data track take their own size in the file, so the audio after them begins where
// those sectors end, not where raw frames would.
TEST(DiscImageLayout, DataTrackOfAnotherSectorSizeMovesLaterTracksInTheFile)
{
    const CCueSheet sheet = Sheet(
        "FILE \"mixed.bin\" BINARY\n"
        "  TRACK 01 MODE1/2048\n    INDEX 01 00:00:00\n"
        "  TRACK 02 AUDIO\n    INDEX 01 00:01:00\n");
    CDiscImage image;
    ASSERT_EQ(CDiscImage::kOk, image.Build(sheet, {75 * 2048 + 10 * kRaw}));
    ASSERT_EQ(2u, image.Tracks().size());
    const DiscTrack& data = image.Tracks()[0];
    const DiscTrack& audio = image.Tracks()[1];
    EXPECT_FALSE(data.bAudio);
    EXPECT_EQ(2048u, data.ulSectorSize);
    EXPECT_EQ(75u, data.ulSectors);
    EXPECT_TRUE(audio.bAudio);
    EXPECT_EQ(75u * 2048, audio.ullFileOffset);
    EXPECT_EQ(75u, audio.ulFirstSector);
    EXPECT_EQ(10u, audio.ulSectors);
}

TEST(DiscImageLayout, RefusedImagesLeaveNoTracks)
{
    const CCueSheet sheet = Sheet(kOneFile);
    struct Case
    {
        std::vector<uint64_t> sizes;
        CDiscImage::Status status;
    };
    const Case cases[] = {
        // Track 3 begins at sector 250: the file must hold all of that sector.
        {{250 * kRaw}, CDiscImage::kTruncated},
        {{251 * kRaw - 1}, CDiscImage::kTruncated},
        {{100 * kRaw}, CDiscImage::kTruncated},
        {{0}, CDiscImage::kTruncated},
        {{}, CDiscImage::kMissingFile},
        // More sectors than 32 bits count: no disc at all, and never a count cut short.
        {{(uint64_t(1) << 32) * kRaw + 250 * kRaw}, CDiscImage::kBadSheet},
        {{std::numeric_limits<uint64_t>::max()}, CDiscImage::kBadSheet},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.sizes.empty() ? 0 : c.sizes[0]);
        CDiscImage image;
        ASSERT_EQ(CDiscImage::kOk, image.Build(sheet, {400 * kRaw}));
        EXPECT_EQ(c.status, image.Build(sheet, c.sizes));
        EXPECT_TRUE(image.Tracks().empty());
        EXPECT_EQ(nullptr, image.FindTrack(1));
    }

    // The largest disc 32 bits of sectors hold is still one; a sector more is not.
    const CCueSheet single = Sheet("FILE a.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\n");
    CDiscImage largest;
    ASSERT_EQ(CDiscImage::kOk, largest.Build(single, {(uint64_t(1) << 32) * kRaw - kRaw}));
    EXPECT_EQ(std::numeric_limits<uint32_t>::max(), largest.Tracks()[0].ulSectors);
    EXPECT_EQ(CDiscImage::kBadSheet, largest.Build(single, {(uint64_t(1) << 32) * kRaw}));

    // A sheet that never parsed describes nothing.
    CDiscImage image;
    EXPECT_EQ(CDiscImage::kBadSheet, image.Build(CCueSheet(), {}));
}

} // namespace
