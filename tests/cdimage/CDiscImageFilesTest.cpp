// Images on disk, written by CDiscImageWriter: the table of contents Open measures, the sectors
// ReadAudio hands out, where the files are looked for and what a broken image answers.
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <limits>
#include <string>
#include <vector>

#include "CDiscImageWriter.h"
#include "CImageFolder.h"
#include "cdimage/CDiscImage.h"

namespace {

const uint32_t kRaw = CDiscImage::kAudioSectorBytes;
const uint32_t kSamplesPerSector = kRaw / 4;

// Compares ulCount sectors read from ulSector on with what the writer put there, both channels
// of every sample.
::testing::AssertionResult HoldsWrittenSamples(const std::vector<uint8_t>& bytes, const CDiscImageWriter::Track& track,
                                               uint32_t ulSector, uint32_t ulCount)
{
    for (uint64_t i = 0; i < uint64_t(ulCount) * kSamplesPerSector; ++i)
    {
        const int16_t left = static_cast<int16_t>(bytes[i * 4] | (bytes[i * 4 + 1] << 8));
        const int16_t right = static_cast<int16_t>(bytes[i * 4 + 2] | (bytes[i * 4 + 3] << 8));
        const int16_t expected = CDiscImageWriter::Sample(track, uint64_t(ulSector) * kSamplesPerSector + i);
        if (left != expected || right != expected)
            return ::testing::AssertionFailure() << "sample " << i << ": " << left << "/" << right << ", wrote " << expected;
    }
    return ::testing::AssertionSuccess();
}

// Reads into a buffer one sector longer than asked for: that sector must come back untouched.
::testing::AssertionResult ReadsWrittenSamples(const CDiscImage& image, int nTrack, const CDiscImageWriter::Track& track,
                                               uint32_t ulSector, uint32_t ulCount)
{
    std::vector<uint8_t> bytes((ulCount + 1) * kRaw, 0xEE);
    if (!image.ReadAudio(nTrack, ulSector, ulCount, bytes.data()))
        return ::testing::AssertionFailure() << "ReadAudio(" << nTrack << ", " << ulSector << ", " << ulCount << ") failed";
    for (size_t i = ulCount * kRaw; i < bytes.size(); ++i)
    {
        if (bytes[i] != 0xEE)
            return ::testing::AssertionFailure() << "wrote past the sectors asked for";
    }
    return HoldsWrittenSamples(bytes, track, ulSector, ulCount);
}

TEST(DiscImageFiles, TableOfContentsAndSamplesOfThreeTones)
{
    CImageFolder folder;
    const auto tones = CDiscImageWriter::ThreeTones();
    const std::string cue = CDiscImageWriter::Write(folder.Path(), "three tones", tones);
    ASSERT_FALSE(cue.empty());
    CDiscImage image;
    ASSERT_EQ(CDiscImage::kOk, image.Open(cue.c_str()));
    ASSERT_EQ(tones.size(), image.Tracks().size());

    uint32_t ulFirst = 0;
    for (size_t i = 0; i < tones.size(); ++i)
    {
        SCOPED_TRACE(i);
        const DiscTrack& track = image.Tracks()[i];
        const uint32_t n = tones[i].ulSectors;
        EXPECT_EQ(static_cast<int>(i + 1), track.nNumber);
        EXPECT_TRUE(track.bAudio);
        EXPECT_EQ(ulFirst, track.ulFirstSector);
        EXPECT_EQ(n, track.ulSectors);
        EXPECT_EQ(uint64_t(ulFirst) * kRaw, track.ullFileOffset);
        EXPECT_DOUBLE_EQ(n / 75.0, CDiscImage::Seconds(track));
        ulFirst += n;

        // The first sector, a run across the middle, the last one.
        EXPECT_TRUE(ReadsWrittenSamples(image, track.nNumber, tones[i], 0, 1));
        EXPECT_TRUE(ReadsWrittenSamples(image, track.nNumber, tones[i], n / 2 - 1, 3));
        EXPECT_TRUE(ReadsWrittenSamples(image, track.nNumber, tones[i], n - 1, 1));
        EXPECT_TRUE(ReadsWrittenSamples(image, track.nNumber, tones[i], 0, n));
    }
}

TEST(DiscImageFiles, ReadAudioStaysInsideAudioTracks)
{
    CImageFolder folder;
    const std::vector<CDiscImageWriter::Track> tracks = {{440.0, 50}, {0.0, 40, false}, {660.0, 30}};
    CDiscImage image;
    ASSERT_EQ(CDiscImage::kOk, image.Open(CDiscImageWriter::Write(folder.Path(), "mixed", tracks).c_str()));
    ASSERT_EQ(3u, image.Tracks().size());
    EXPECT_TRUE(image.Tracks()[0].bAudio);
    EXPECT_FALSE(image.Tracks()[1].bAudio);
    EXPECT_EQ(40u, image.Tracks()[1].ulSectors);
    // The track after the data reads its own samples.
    EXPECT_TRUE(ReadsWrittenSamples(image, 3, tracks[2], 0, 30));

    std::vector<uint8_t> buffer(3 * kRaw);
    EXPECT_FALSE(image.ReadAudio(2, 0, 1, buffer.data()));  // data
    EXPECT_FALSE(image.ReadAudio(0, 0, 1, buffer.data()));
    EXPECT_FALSE(image.ReadAudio(4, 0, 1, buffer.data()));
    EXPECT_TRUE(image.ReadAudio(1, 49, 1, buffer.data()));
    EXPECT_FALSE(image.ReadAudio(1, 50, 1, buffer.data()));
    EXPECT_FALSE(image.ReadAudio(1, 48, 3, buffer.data()));
    // Past the track but inside the file (the data track's sectors): no wrapped difference lets it by.
    EXPECT_FALSE(image.ReadAudio(1, 51, 1, buffer.data()));
    EXPECT_FALSE(image.ReadAudio(3, 1, std::numeric_limits<uint32_t>::max(), buffer.data()));
    EXPECT_FALSE(image.ReadAudio(3, std::numeric_limits<uint32_t>::max(), 2, buffer.data()));
}

// Works in another folder for a while; back before the folder is removed, since Windows removes
// no working folder.
class CWorkingFolder
{
public:
    explicit CWorkingFolder(const std::string& path) : m_saved(std::filesystem::current_path())
    {
        std::filesystem::current_path(std::filesystem::u8path(path));
    }
    ~CWorkingFolder() { std::filesystem::current_path(m_saved); }
    CWorkingFolder(const CWorkingFolder&) = delete;
    CWorkingFolder& operator=(const CWorkingFolder&) = delete;

private:
    std::filesystem::path m_saved;
};

// The working folder holds a decoy image of the same name: only the sheet's folder counts.
TEST(DiscImageFiles, FileNamesAreFoundFromTheSheetsFolder)
{
    CImageFolder folder;
    const auto tones = CDiscImageWriter::ThreeTones();
    ASSERT_FALSE(CDiscImageWriter::Write(folder.Path(), "tones", tones).empty());
    folder.Move("tones.bin", "disc one/tones.bin");
    ASSERT_FALSE(CDiscImageWriter::Write(folder.Path(), "tones", {{1000.0, 300}}).empty());
    const std::string bin = folder.Path("disc one/tones.bin");
    const std::string trackLines = "  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n  TRACK 02 AUDIO\n    INDEX 01 00:01:00\n";
    const std::string sheets[] = {
        folder.Write("back.cue", "FILE \"disc one\\tones.bin\" BINARY\n" + trackLines),
        folder.Write("forward.cue", "FILE \"disc one/tones.bin\" BINARY\n" + trackLines),
        folder.Write("disc one/bare.cue", "FILE tones.bin BINARY\n" + trackLines),
        folder.Write("elsewhere/up.cue", "FILE \"../disc one/tones.bin\" BINARY\n" + trackLines),
        folder.Write("elsewhere/absolute.cue", "FILE \"" + bin + "\" BINARY\n" + trackLines),
    };
    const CWorkingFolder working(folder.Path());
    for (const std::string& cue : sheets)
    {
        SCOPED_TRACE(cue);
        CDiscImage image;
        ASSERT_EQ(CDiscImage::kOk, image.Open(cue.c_str()));
        ASSERT_EQ(2u, image.Tracks().size());
        EXPECT_EQ(tones[1].ulSectors + tones[2].ulSectors, image.Tracks()[1].ulSectors);
        EXPECT_TRUE(ReadsWrittenSamples(image, 1, tones[0], 74, 1));
        EXPECT_TRUE(ReadsWrittenSamples(image, 2, tones[1], 0, 1));
    }
    CDiscImage image;
    const std::string near = folder.Write("elsewhere/near.cue", "FILE tones.bin BINARY\n" + trackLines);
    EXPECT_EQ(CDiscImage::kMissingFile, image.Open(near.c_str()));
}

TEST(DiscImageFiles, PathsOutsideAsciiOpenAndRead)
{
    CImageFolder folder("-\xC3\x9C" "ber M\xC3\xBCsik \xE2\x99\xAB \xF0\x9F\x8E\xB5");
    const auto tones = CDiscImageWriter::ThreeTones();
    const std::string cue = CDiscImageWriter::Write(folder.Path(), "t\xC3\xB6ne", tones);
    ASSERT_FALSE(cue.empty());
    CDiscImage image;
    ASSERT_EQ(CDiscImage::kOk, image.Open(cue.c_str()));
    EXPECT_TRUE(ReadsWrittenSamples(image, 3, tones[2], 59, 1));
}

TEST(DiscImageFiles, BrokenImagesFailWithTheirStatus)
{
    CImageFolder folder;
    const auto tones = CDiscImageWriter::ThreeTones();
    const std::string cue = CDiscImageWriter::Write(folder.Path(), "tones", tones);
    ASSERT_FALSE(cue.empty());
    CDiscImage image;
    ASSERT_EQ(CDiscImage::kOk, image.Open(cue.c_str()));

    // Half a sector less: the last track loses its partial last sector and reads up to it.
    folder.Resize("tones.bin", (75 + 90 + 60) * uint64_t(kRaw) - kRaw / 2);
    ASSERT_EQ(CDiscImage::kOk, image.Open(cue.c_str()));
    EXPECT_EQ(59u, image.Tracks()[2].ulSectors);
    EXPECT_TRUE(ReadsWrittenSamples(image, 3, tones[2], 58, 1));

    // Cut since Open: the sectors that are gone cannot be read, those still there can.
    folder.Resize("tones.bin", (75 + 90 + 30) * uint64_t(kRaw));
    std::vector<uint8_t> buffer(kRaw);
    EXPECT_FALSE(image.ReadAudio(3, 58, 1, buffer.data()));
    EXPECT_TRUE(ReadsWrittenSamples(image, 3, tones[2], 29, 1));

    // Cut to end exactly where the last track would begin, and one sector into it.
    folder.Resize("tones.bin", (75 + 90) * uint64_t(kRaw));
    EXPECT_EQ(CDiscImage::kTruncated, image.Open(cue.c_str()));
    EXPECT_TRUE(image.Tracks().empty());
    EXPECT_FALSE(image.ReadAudio(1, 0, 1, buffer.data()));
    folder.Resize("tones.bin", (75 + 90 + 1) * uint64_t(kRaw));
    ASSERT_EQ(CDiscImage::kOk, image.Open(cue.c_str()));
    EXPECT_EQ(1u, image.Tracks()[2].ulSectors);

    folder.Remove("tones.bin");
    EXPECT_EQ(CDiscImage::kMissingFile, image.Open(cue.c_str()));
    EXPECT_TRUE(image.Tracks().empty());
    // A folder by the file's name is no image either.
    folder.Write("tones.bin/inside", "x");
    EXPECT_EQ(CDiscImage::kMissingFile, image.Open(cue.c_str()));

    EXPECT_EQ(CDiscImage::kCannotReadSheet, image.Open(folder.Path("none.cue").c_str()));
    EXPECT_EQ(CDiscImage::kCannotReadSheet, image.Open(folder.Path().c_str()));
    EXPECT_EQ(CDiscImage::kBadSheet, image.Open(folder.Write("text.cue", "just some text\n").c_str()));
    // A real sheet with a comment that takes it past 64 KiB is not read.
    folder.Write("long.bin", std::string(kRaw * 10, '\0'));
    const std::string small = "FILE long.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\nREM ";
    EXPECT_EQ(CDiscImage::kOk, image.Open(folder.Write("long.cue", small + std::string(64 * 1024 - small.size(), 'x')).c_str()));
    EXPECT_EQ(CDiscImage::kBadSheet, image.Open(folder.Write("long.cue", small + std::string(64 * 1024, 'x')).c_str()));
}

} // namespace
