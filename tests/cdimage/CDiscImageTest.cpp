// The disc image reader without Windows: cue sheets as written and as damaged, the layout of
// tracks from a sheet and file sizes, and the sectors of images that CDiscImageWriter wrote.
#include <gtest/gtest.h>

#include <tuple>

#include "CDiscImageWriter.h"
#include "CImageFolder.h"
#include "cdimage/CDiscImage.h"

namespace {

const uint64_t kRaw = CDiscImage::kAudioSectorBytes;

// Skipped commands, pregaps, quoted and bare names with blanks, lower case, data tracks of two
// sector sizes, a track whose INDEX 01 follows the next FILE line, no line end at the end; read
// with each kind of line end and a byte order mark. A damaged sheet: the status and line, and
// nothing kept of it or of the sheet before.
TEST(CueSheet, ReadsRealSheetsWhateverTheLineEndsAndTellsWhereOneIsDamaged)
{
    const std::string sheet = "REM GENRE Test\nFILE \"My Disc (1).bin\" BINARY\n  TRACK 01 AUDIO\n    FLAGS DCP\n"
                              "    INDEX 01 00:00:00\n  TRACK 02 AUDIO\n    INDEX 00 03:10:20\n    INDEX 01 03:12:45\n\n"
                              "  track 03 mode1/2352\n\tINDEX 01 07:00:01\n  TRACK 04 AUDIO\n    INDEX 00 09:00:00\n"
                              "FILE second part.bin   BINARY  \n    INDEX 01 00:00:00\n  TRACK 05 MODE1/2048\n"
                              "    PREGAP 00:02:00\n    INDEX 01 00:02:00\n  TRACK 07 AUDIO\n    INDEX 01 100:00:74";
    const std::string file = "FILE \"a.bin\" BINARY\n", audio = file + "TRACK 01 AUDIO\n";
    const struct { std::string text; CCueSheet::Status status; size_t nLine; } damaged[] = {
        {"TRACK 01 AUDIO\n", CCueSheet::kTrackOutsideFile, 1}, {"FILE \"a.wav\" WAVE\n", CCueSheet::kSyntax, 1},
        {file + "TRACK 00 AUDIO\n", CCueSheet::kTrackOrder, 2}, {audio + "INDEX 01 00:00:00\nTRACK 01 AUDIO\n", CCueSheet::kTrackOrder, 4},
        {audio + "INDEX 01 00:60:00\n", CCueSheet::kSyntax, 3}, {audio + "INDEX 01 00:00:75\n", CCueSheet::kSyntax, 3},
        {audio + "INDEX 01 00:00:00\nINDEX 01 00:00:05\n", CCueSheet::kSyntax, 4},
        {audio + "INDEX 00 00:00:00\nTRACK 02 AUDIO\nINDEX 01 00:01:00\n", CCueSheet::kNoIndex01, 2},
        {audio + "INDEX 01 00:02:00\nTRACK 02 AUDIO\nINDEX 01 00:02:00\n", CCueSheet::kNoIndex01, 5},
        {"REM nothing\n" + file, CCueSheet::kNoTracks, 0},
    };
    for (const char* end : {"\n", "\r\n", "\r"})
    {
        std::string text = "\xEF\xBB\xBF", tracks;  // tracks: number, type, sector size, file:INDEX 01 frame
        for (char c : sheet)
            text += c == '\n' ? end : std::string(1, c);
        CCueSheet cue;
        ASSERT_EQ(CCueSheet::kOk, cue.Parse(text.data(), text.size()));
        EXPECT_EQ((std::vector<std::string>{"My Disc (1).bin", "second part.bin"}), cue.Files());
        for (const CueTrack& t : cue.Tracks())
            tracks += std::to_string(t.nNumber) + (t.bAudio ? " audio " : " data ") + std::to_string(t.ulSectorSize) + " " +
                      std::to_string(t.nFile) + ":" + std::to_string(t.ulIndex01) + "; ";
        EXPECT_EQ("1 audio 2352 0:0; 2 audio 2352 0:14445; 3 data 2352 0:31501; 4 audio 2352 1:0; 5 data 2048 1:150; 7 audio 2352 1:450074; ", tracks);
        for (const auto& c : damaged)
        {
            size_t nLine = 12345;
            EXPECT_EQ(std::make_pair(c.status, c.nLine), std::make_pair(cue.Parse(c.text.data(), c.text.size(), &nLine), nLine)) << c.text;
            EXPECT_TRUE(cue.Tracks().empty() && cue.Files().empty());
            ASSERT_EQ(CCueSheet::kOk, cue.Parse(text.data(), text.size()));
        }
    }
}

// Disc positions count from track 01's INDEX 01 on through the files, gap.bin (a pregap alone)
// too; track 03 has 2048-byte sectors; track 04 leaves b.bin's partial sector out.
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
    std::vector<std::tuple<int, uint32_t, uint32_t, size_t, uint64_t>> layout;  // number, first, count, file, offset
    for (const DiscTrack& t : image.Tracks())
        layout.emplace_back(t.nNumber, t.ulFirstSector, t.ulSectors, t.nFile, t.ullFileOffset);
    EXPECT_EQ((decltype(layout){{1, 0, 50, 0, 150 * kRaw}, {2, 50, 100, 0, 200 * kRaw}, {3, 150, 75, 1, 0},
                                {4, 225, 10, 1, 75 * 2048}, {5, 265, 30, 3, 10 * kRaw}}), layout);
    // Not one whole sector of track 02, of track 04; more sectors than 32 bits count.
    EXPECT_EQ(CDiscImage::kTruncated, image.Build(sheet, {201 * kRaw - 1, sizes[1], sizes[2], sizes[3]}));
    EXPECT_EQ(CDiscImage::kTruncated, image.Build(sheet, {sizes[0], 75 * 2048 + kRaw - 1, sizes[2], sizes[3]}));
    EXPECT_EQ(CDiscImage::kBadSheet, image.Build(sheet, {sizes[0], sizes[1], sizes[2], UINT64_MAX}));
}

// What the sectors hold is checked where the CD source delivers them (cdsource_tests
// CDAudioSource.DeliversExactlyTheRange...); here, which reads and images are refused, in a
// folder whose name is not ASCII, with a data track between audio ones.
TEST(DiscImage, RefusesReadsOutsideAnAudioTrackAndBrokenImages)
{
    CImageFolder folder("-\xC3\x9C" "ber M\xC3\xBCsik \xE2\x99\xAB");
    const std::string cue = CDiscImageWriter::Write(folder.Path(), "t\xC3\xB6nes", {{440.0, 75}, {660.0, 90}, {0.0, 40, false}, {880.0, 60}});
    const std::string bin = "t\xC3\xB6nes.bin";
    CDiscImage image;
    ASSERT_EQ(CDiscImage::kOk, image.Open(cue.c_str()));
    // Data, no such track, past a track's end (into the next one's sectors; sums that would wrap).
    uint8_t buffer[3 * kRaw];
    EXPECT_TRUE(image.ReadAudio(1, 72, 3, buffer) && image.ReadAudio(4, 59, 1, buffer));
    for (const auto& read : {std::make_tuple(3, 0u, 1u), std::make_tuple(0, 0u, 1u), std::make_tuple(5, 0u, 1u),
                             std::make_tuple(1, 73u, 3u), std::make_tuple(1, 76u, 1u), std::make_tuple(4, 1u, UINT32_MAX),
                             std::make_tuple(4, UINT32_MAX, 2u)})
        EXPECT_FALSE(image.ReadAudio(std::get<0>(read), std::get<1>(read), std::get<2>(read), buffer)) << std::get<1>(read);
    // Half a sector short, the last track loses its partial sector. (A file cut after Open is the
    // CD source's read fault, cdsource_tests CDAudioSource.AReadFaultEndsTheStreamAndAbortsTheGraph.)
    folder.Resize(bin, 265 * kRaw - kRaw / 2);
    ASSERT_EQ(CDiscImage::kOk, image.Open(cue.c_str()));
    EXPECT_TRUE(image.Tracks().at(3).ulSectors == 59 && image.ReadAudio(4, 58, 1, buffer) && !image.ReadAudio(4, 59, 1, buffer));
    // Ends where the last track begins; gone; no sheet; a sheet over 64 KiB.
    folder.Resize(bin, 205 * kRaw);
    EXPECT_EQ(CDiscImage::kTruncated, image.Open(cue.c_str()));
    folder.Remove(bin);
    EXPECT_EQ(CDiscImage::kMissingFile, image.Open(cue.c_str()));
    EXPECT_EQ(CDiscImage::kCannotReadSheet, image.Open(folder.Path("none.cue").c_str()));
    std::string text = "FILE \"a.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\nREM ";
    text.resize(64 * 1024 + 1, 'x');
    EXPECT_EQ(CDiscImage::kBadSheet, image.Open(folder.Write("long.cue", text).c_str()));
}

} // namespace
