// The disc image reader without Windows: cue sheets as written and as damaged, the table of
// contents from a sheet and file sizes, and the sectors of images that CDiscImageWriter wrote.
#include <gtest/gtest.h>

#include <string>
#include <tuple>
#include <vector>

#include "CDiscImageWriter.h"
#include "CImageFolder.h"
#include "cdimage/CDiscImage.h"

namespace {

std::string WithLineEnds(std::string text, const std::string& lineEnd)
{
    for (size_t at = 0; (at = text.find('\n', at)) != std::string::npos; at += lineEnd.size())
        text.replace(at, 1, lineEnd);
    return text;
}

// Skipped commands, INDEX 00 pregaps, a quoted name with blanks, a bare one with blanks, lower
// case, data tracks of two sector sizes, no line end at the end. Track 04's pregap ends its
// file and its INDEX 01 follows the next FILE line, as rippers writing a file per track do.
const char kSheet[] =
    "REM GENRE Test\nCATALOG 0000000000000\nPERFORMER \"Someone\"\n"
    "FILE \"My Disc (1).bin\" BINARY\n"
    "  TRACK 01 AUDIO\n    FLAGS DCP\n    INDEX 01 00:00:00\n"
    "  TRACK 02 AUDIO\n    TITLE \"Second\"\n    INDEX 00 03:10:20\n    INDEX 01 03:12:45\n\n"
    "  track 03 mode1/2352\n\tINDEX 01 07:00:01\n"
    "  TRACK 04 AUDIO\n    INDEX 00 09:00:00\n"
    "FILE second part.bin   BINARY  \n    INDEX 01 00:00:00\n"
    "  TRACK 05 MODE1/2048\n    PREGAP 00:02:00\n    INDEX 01 00:02:00\n"
    "  TRACK 07 AUDIO\n    INDEX 01 100:00:74";

TEST(CueSheet, ReadsRealSheetsWhateverTheLineEndsAndByteOrderMark)
{
    for (const std::string& text :
         {std::string(kSheet), "\xEF\xBB\xBF" + WithLineEnds(kSheet, "\r\n"), WithLineEnds(kSheet, "\r")})
    {
        CCueSheet sheet;
        ASSERT_EQ(CCueSheet::kOk, sheet.Parse(text.data(), text.size()));
        EXPECT_EQ((std::vector<std::string>{"My Disc (1).bin", "second part.bin"}), sheet.Files());
        std::string tracks;  // number, type, sector size, file:INDEX 01 frame
        for (const CueTrack& t : sheet.Tracks())
            tracks += std::to_string(t.nNumber) + (t.bAudio ? " audio " : " data ") + std::to_string(t.ulSectorSize) +
                      " " + std::to_string(t.nFile) + ":" + std::to_string(t.ulIndex01) + "; ";
        // 03:12:45 is frame 14445, 07:00:01 frame 31501, 100:00:74 frame 450074.
        EXPECT_EQ("1 audio 2352 0:0; 2 audio 2352 0:14445; 3 data 2352 0:31501; 4 audio 2352 1:0; "
                  "5 data 2048 1:150; 7 audio 2352 1:450074; ",
                  tracks);
    }
}

TEST(CueSheet, DamagedSheetsFailWithTheirStatusAndLineAndKeepNothing)
{
    const std::string file = "FILE \"a.bin\" BINARY\n", track1 = "TRACK 01 AUDIO\nINDEX 01 00:00:00\n";
    const std::string audio = file + "TRACK 01 AUDIO\n";
    const struct { std::string text; CCueSheet::Status status; size_t nLine; } cases[] = {
        {track1, CCueSheet::kTrackOutsideFile, 1},
        {"FILE \"a.wav\" WAVE\n" + track1, CCueSheet::kSyntax, 1},
        {"FILE \"a.bin BINARY\n" + track1, CCueSheet::kSyntax, 1},
        {file + "TRACK 00 AUDIO\nINDEX 01 00:00:00\n", CCueSheet::kTrackOrder, 2},
        {file + track1 + "TRACK 100 AUDIO\n", CCueSheet::kTrackOrder, 4},
        {file + track1 + "TRACK 01 AUDIO\n", CCueSheet::kTrackOrder, 4},
        {file + "TRACK 01 VIDEO\n", CCueSheet::kSyntax, 2},
        {audio + "INDEX 01 00:60:00\n", CCueSheet::kSyntax, 3},
        {audio + "INDEX 01 00:00:75\n", CCueSheet::kSyntax, 3},
        {audio + "INDEX 01 00:00:1\n", CCueSheet::kSyntax, 3},
        {audio + "INDEX 01 1000:00:00\n", CCueSheet::kSyntax, 3},
        {audio + "INDEX 01 00:00:00\nINDEX 01 00:00:05\n", CCueSheet::kSyntax, 4},
        {audio + "INDEX 00 00:00:00\nTRACK 02 AUDIO\nINDEX 01 00:01:00\n", CCueSheet::kNoIndex01, 2},
        {file + track1 + "TRACK 02 AUDIO\nINDEX 00 00:01:00\n", CCueSheet::kNoIndex01, 4},
        {audio + "INDEX 01 00:02:00\nTRACK 02 AUDIO\nINDEX 01 00:02:00\n", CCueSheet::kNoIndex01, 5},
        {"REM nothing\n" + file, CCueSheet::kNoTracks, 0},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.text);
        CCueSheet sheet;
        ASSERT_EQ(CCueSheet::kOk, sheet.Parse(kSheet, sizeof(kSheet) - 1));
        size_t nLine = 12345;
        EXPECT_EQ(c.status, sheet.Parse(c.text.data(), c.text.size(), &nLine));
        EXPECT_EQ(c.nLine, nLine);
        // Neither the failed text nor the sheet parsed before leaves anything behind.
        EXPECT_TRUE(sheet.Tracks().empty() && sheet.Files().empty());
    }
}

const uint64_t kRaw = CDiscImage::kAudioSectorBytes;

// Reads into a buffer one sector longer than asked for, which must stay untouched, and compares
// every sample (both channels) with what the writer put there.
::testing::AssertionResult ReadsWritten(const CDiscImage& image, int nTrack, const CDiscImageWriter::Track& track,
                                        uint32_t ulSector, uint32_t ulCount)
{
    std::vector<uint8_t> bytes((ulCount + 1) * kRaw, 0xEE);
    bool bSame = image.ReadAudio(nTrack, ulSector, ulCount, bytes.data());
    for (size_t i = 0; bSame && i < bytes.size(); i += 2)
        bSame = static_cast<int16_t>(bytes[i] | bytes[i + 1] << 8) ==
                (i < ulCount * kRaw ? CDiscImageWriter::Sample(track, (ulSector * kRaw + i) / 4) : int16_t(0xEEEE));
    return bSame ? ::testing::AssertionSuccess()
                 : ::testing::AssertionFailure() << "track " << nTrack << ", " << ulCount << " sectors from " << ulSector;
}

// Disc positions count from track 01's INDEX 01 (its pregap in a.bin lies before the disc) on
// through the files, gap.bin (track 05's pregap alone) too; track 03 has 2048-byte sectors;
// track 04 leaves b.bin's partial sector out.
TEST(DiscImage, TracksEndWhereTheNextBeginsOrWithTheirFilesWholeSectors)
{
    const std::string text = "FILE \"a.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 00 00:00:00\nINDEX 01 00:02:00\n"
                             "TRACK 02 AUDIO\nINDEX 01 00:02:50\nFILE \"b.bin\" BINARY\nTRACK 03 MODE1/2048\n"
                             "INDEX 01 00:00:00\nTRACK 04 AUDIO\nINDEX 01 00:01:00\nFILE \"gap.bin\" BINARY\n"
                             "TRACK 05 AUDIO\nINDEX 00 00:00:00\nFILE \"c.bin\" BINARY\nINDEX 01 00:00:10\n";
    CCueSheet sheet;
    ASSERT_EQ(CCueSheet::kOk, sheet.Parse(text.data(), text.size()));
    const std::vector<uint64_t> sizes = {300 * kRaw, 75 * 2048 + 10 * kRaw + 7, 20 * kRaw, 40 * kRaw};
    CDiscImage image;
    ASSERT_EQ(CDiscImage::kOk, image.Build(sheet, sizes));
    // Number, first sector on the disc, sectors, file, offset in the file.
    std::vector<std::tuple<int, uint32_t, uint32_t, size_t, uint64_t>> layout;
    for (const DiscTrack& t : image.Tracks())
        layout.emplace_back(t.nNumber, t.ulFirstSector, t.ulSectors, t.nFile, t.ullFileOffset);
    EXPECT_EQ((decltype(layout){{1, 0, 50, 0, 150 * kRaw}, {2, 50, 100, 0, 200 * kRaw}, {3, 150, 75, 1, 0},
                      {4, 225, 10, 1, 75 * 2048}, {5, 265, 30, 3, 10 * kRaw}}),
              layout);

    // Not one whole sector of track 02, of track 04; more sectors than 32 bits count.
    EXPECT_EQ(CDiscImage::kTruncated, image.Build(sheet, {201 * kRaw - 1, sizes[1], sizes[2], sizes[3]}));
    EXPECT_EQ(CDiscImage::kTruncated, image.Build(sheet, {sizes[0], 75 * 2048 + kRaw - 1, sizes[2], sizes[3]}));
    EXPECT_EQ(CDiscImage::kBadSheet, image.Build(sheet, {sizes[0], sizes[1], sizes[2], UINT64_MAX}));
}

// An image in a folder whose name is not ASCII, with a data track between audio ones.
TEST(DiscImage, ReadsTheSectorsOfAudioTracksAndRefusesBrokenImages)
{
    CImageFolder folder("-\xC3\x9C" "ber M\xC3\xBCsik \xE2\x99\xAB");
    const std::vector<CDiscImageWriter::Track> tracks = {{440.0, 75}, {660.0, 90}, {0.0, 40, false}, {880.0, 60}};
    const std::string cue = CDiscImageWriter::Write(folder.Path(), "t\xC3\xB6nes", tracks);
    CDiscImage image;
    ASSERT_EQ(CDiscImage::kOk, image.Open(cue.c_str()));
    for (int n : {1, 2, 4})
        EXPECT_TRUE(ReadsWritten(image, n, tracks[n - 1], 0, tracks[n - 1].ulSectors));
    // Data, no such track, past a track's end (into the next one's sectors; sums that would wrap).
    uint8_t buffer[3 * kRaw];
    for (const auto& read : {std::make_tuple(3, 0u, 1u), std::make_tuple(0, 0u, 1u), std::make_tuple(5, 0u, 1u),
                             std::make_tuple(1, 73u, 3u), std::make_tuple(1, 76u, 1u), std::make_tuple(4, 1u, UINT32_MAX),
                             std::make_tuple(4, UINT32_MAX, 2u)})
        EXPECT_FALSE(image.ReadAudio(std::get<0>(read), std::get<1>(read), std::get<2>(read), buffer)) << std::get<0>(read);

    // A sheet of 64 KiB is read whole; no real one is longer, so a longer one is refused.
    const std::string bin = "t\xC3\xB6nes.bin";
    std::string text = "FILE \"" + bin + "\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\nREM ";
    text.resize(64 * 1024, 'x');
    EXPECT_EQ(CDiscImage::kOk, image.Open(folder.Write("long.cue", text).c_str()));
    EXPECT_EQ(CDiscImage::kBadSheet, image.Open(folder.Write("long.cue", text + "x").c_str()));

    // Half a sector short: the last track loses its partial sector and reads up to it.
    folder.Resize(bin, 265 * kRaw - kRaw / 2);
    ASSERT_EQ(CDiscImage::kOk, image.Open(cue.c_str()));
    ASSERT_EQ(59u, image.Tracks().at(3).ulSectors);
    EXPECT_TRUE(ReadsWritten(image, 4, tracks[3], 58, 1));
    // Cut since Open: what is gone cannot be read, what is left can.
    folder.Resize(bin, (205 + 30) * kRaw);
    EXPECT_FALSE(image.ReadAudio(4, 30, 1, buffer));
    EXPECT_TRUE(ReadsWritten(image, 4, tracks[3], 29, 1));
    // Ends where the last track begins; gone; a folder by its name; no sheet.
    folder.Resize(bin, 205 * kRaw);
    EXPECT_EQ(CDiscImage::kTruncated, image.Open(cue.c_str()));
    folder.Remove(bin);
    EXPECT_EQ(CDiscImage::kMissingFile, image.Open(cue.c_str()));
    folder.Write(bin + "/inside", "");
    EXPECT_EQ(CDiscImage::kMissingFile, image.Open(cue.c_str()));
    EXPECT_EQ(CDiscImage::kCannotReadSheet, image.Open(folder.Path("none.cue").c_str()));
}

} // namespace
