// The disc image reader without Windows: cue sheets as written and as damaged, the layout of
// tracks from a sheet and file sizes, and the reads an image refuses.
#include <gtest/gtest.h>

#include <tuple>

#include "CDiscImageWriter.h"
#include "CImageFolder.h"
#include "cdimage/CDiscImage.h"

namespace {

const uint64_t kRaw = CDiscImage::kAudioSectorBytes;

// Skipped commands, quoted and bare names with blanks, lower case, tabs, a pregap alone in a file
// (gap.bin), a track whose INDEX 01 follows the next FILE line, no line end at the end, read with
// each kind of line end and a byte order mark. Disc positions count from track 01's INDEX 01 on
// through the files; track 03 has 2048-byte sectors; track 04 leaves b part.bin's partial sector out.
TEST(DiscImage, TracksEndWhereTheNextBeginsOrWithTheirFilesWholeSectors)
{
    const std::string sheet = "REM GENRE Test\nFILE \"My Disc (1).bin\" BINARY\n  TRACK 01 AUDIO\n    FLAGS DCP\n    INDEX 00 00:00:00\n"
                              "    INDEX 01 00:02:00\n\n  track 02 audio\n    INDEX 01 00:02:50\nFILE b part.bin   BINARY  \n"
                              "  TRACK 03 MODE1/2048\n    PREGAP 00:02:00\n    INDEX 01 00:00:00\n\tTRACK 04 AUDIO\n    INDEX 01 00:01:00\n"
                              "FILE \"gap.bin\" BINARY\n  TRACK 07 AUDIO\n    INDEX 00 00:00:00\nFILE \"c.bin\" BINARY\n    INDEX 01 00:00:10";
    const std::vector<uint64_t> sizes = {300 * kRaw, 75 * 2048 + 10 * kRaw + 7, 20 * kRaw, 40 * kRaw};
    for (const char* end : {"\n", "\r\n", "\r"})
    {
        std::string text = "\xEF\xBB\xBF";
        for (char c : sheet)
            text += c == '\n' ? end : std::string(1, c);
        CCueSheet cue;
        CDiscImage image;
        ASSERT_EQ(CCueSheet::kOk, cue.Parse(text.data(), text.size()));
        EXPECT_EQ((std::vector<std::string>{"My Disc (1).bin", "b part.bin", "gap.bin", "c.bin"}), cue.Files());
        ASSERT_EQ(CDiscImage::kOk, image.Build(cue, sizes));
        std::vector<std::tuple<int, bool, uint32_t, uint32_t, size_t, uint64_t>> layout;  // number, audio, first, count, file, offset
        for (const DiscTrack& t : image.Tracks())
            layout.emplace_back(t.nNumber, t.bAudio, t.ulFirstSector, t.ulSectors, t.nFile, t.ullFileOffset);
        EXPECT_EQ((decltype(layout){{1, true, 0, 50, 0, 150 * kRaw}, {2, true, 50, 100, 0, 200 * kRaw}, {3, false, 150, 75, 1, 0},
                                    {4, true, 225, 10, 1, 75 * 2048}, {7, true, 265, 30, 3, 10 * kRaw}}), layout);
        // Not one whole sector of track 02, of track 04; more sectors than 32 bits count.
        EXPECT_EQ(CDiscImage::kTruncated, image.Build(cue, {201 * kRaw - 1, sizes[1], sizes[2], sizes[3]}));
        EXPECT_EQ(CDiscImage::kTruncated, image.Build(cue, {sizes[0], 75 * 2048 + kRaw - 1, sizes[2], sizes[3]}));
        EXPECT_EQ(CDiscImage::kBadSheet, image.Build(cue, {sizes[0], sizes[1], sizes[2], UINT64_MAX}));
    }
}

// The status and line, and nothing kept of the damaged sheet or of the sheet before.
TEST(CueSheet, TellsWhereASheetIsDamaged)
{
    const std::string file = "FILE \"a.bin\" BINARY\n", audio = file + "TRACK 01 AUDIO\n", good = audio + "INDEX 01 00:00:00\n";
    const struct { std::string text; CCueSheet::Status status; size_t nLine; } cases[] = {
        {"TRACK 01 AUDIO\n", CCueSheet::kTrackOutsideFile, 1}, {"FILE \"a.wav\" WAVE\n", CCueSheet::kSyntax, 1},
        {file + "TRACK 00 AUDIO\n", CCueSheet::kTrackOrder, 2}, {good + "TRACK 01 AUDIO\n", CCueSheet::kTrackOrder, 4},
        {audio + "INDEX 01 00:60:00\n", CCueSheet::kSyntax, 3}, {audio + "INDEX 01 00:00:75\n", CCueSheet::kSyntax, 3},
        {good + "INDEX 01 00:00:05\n", CCueSheet::kSyntax, 4}, {"REM nothing\n" + file, CCueSheet::kNoTracks, 0},
        {audio + "INDEX 00 00:00:00\nTRACK 02 AUDIO\nINDEX 01 00:01:00\n", CCueSheet::kNoIndex01, 2},
        {audio + "INDEX 01 00:02:00\nTRACK 02 AUDIO\nINDEX 01 00:02:00\n", CCueSheet::kNoIndex01, 5},
        {good + std::string(64 * 1024, ' '), CCueSheet::kTooLong, 0},
    };
    CCueSheet cue;
    for (const auto& c : cases)
    {
        ASSERT_EQ(CCueSheet::kOk, cue.Parse(good.data(), good.size()));
        size_t nLine = 12345;
        EXPECT_EQ(std::make_pair(c.status, c.nLine), std::make_pair(cue.Parse(c.text.data(), c.text.size(), &nLine), nLine)) << c.text;
        EXPECT_TRUE(cue.Tracks().empty() && cue.Files().empty());
    }
}

// In a folder whose name is not ASCII, with a data track between audio ones. What the sectors
// hold is checked where the CD source delivers them (cdsource_tests CDAudioSource.Delivers...).
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
    // Half a sector short, the last track loses its partial sector; ends where it begins; gone; no sheet.
    folder.Resize(bin, 265 * kRaw - kRaw / 2);
    ASSERT_EQ(CDiscImage::kOk, image.Open(cue.c_str()));
    EXPECT_TRUE(image.Tracks().at(3).ulSectors == 59 && image.ReadAudio(4, 58, 1, buffer) && !image.ReadAudio(4, 59, 1, buffer));
    folder.Resize(bin, 205 * kRaw);
    EXPECT_EQ(CDiscImage::kTruncated, image.Open(cue.c_str()));
    folder.Remove(bin);
    EXPECT_EQ(CDiscImage::kMissingFile, image.Open(cue.c_str()));
    EXPECT_EQ(CDiscImage::kCannotReadSheet, image.Open(folder.Path("none.cue").c_str()));
}

} // namespace
