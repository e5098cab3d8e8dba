// Cue sheet text as rippers and people write it, and as it arrives damaged.
#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "CGuardedBuffer.h"
#include "cdimage/CCueSheet.h"

namespace {

uint32_t Frames(uint32_t mm, uint32_t ss, uint32_t ff)
{
    return (mm * 60 + ss) * 75 + ff;
}

CCueSheet::Status Parse(CCueSheet& sheet, const std::string& text, size_t* pnLine = nullptr)
{
    return sheet.Parse(text.data(), text.size(), pnLine);
}

std::string WithLineEnds(const std::string& text, const std::string& lineEnd)
{
    std::string out;
    for (char c : text)
    {
        if (c == '\n')
            out += lineEnd;
        else
            out += c;
    }
    return out;
}

// Everything a sheet may hold: skipped commands, pregaps, a quoted name with blanks, an unquoted
// one with blanks, lower-case commands, data tracks of two sector sizes, no line end at the end.
const char kFullSheet[] =
    "REM GENRE Test\n"
    "CATALOG 0000000000000\n"
    "PERFORMER \"Someone\"\n"
    "TITLE \"A Disc\"\n"
    "FILE \"My Disc (1).bin\" BINARY\n"
    "  TRACK 01 AUDIO\n"
    "    FLAGS DCP\n"
    "    INDEX 01 00:00:00\n"
    "  TRACK 02 AUDIO\n"
    "    TITLE \"Second\"\n"
    "    ISRC ABCDE1234567\n"
    "    INDEX 00 03:10:20\n"
    "    INDEX 01 03:12:45\n"
    "\n"
    "  track 03 mode1/2352\n"
    "\tINDEX 01 07:00:01\n"
    "  POSTGAP 00:02:00\n"
    "FILE second part.bin   BINARY  \n"
    "  TRACK 05 MODE1/2048\n"
    "    PREGAP 00:02:00\n"
    "    INDEX 01 00:02:00\n"
    "  TRACK 07 AUDIO\n"
    "    SONGWRITER \"x\"\n"
    "    INDEX 01 100:00:74";

struct Expected
{
    int nNumber;
    bool bAudio;
    uint32_t ulSectorSize;
    size_t nFile;
    uint32_t ulIndex01;
};

void ExpectTracks(const CCueSheet& sheet, const std::vector<Expected>& expected)
{
    ASSERT_EQ(expected.size(), sheet.Tracks().size());
    for (size_t i = 0; i < expected.size(); ++i)
    {
        SCOPED_TRACE(i);
        const CueTrack& track = sheet.Tracks()[i];
        EXPECT_EQ(expected[i].nNumber, track.nNumber);
        EXPECT_EQ(expected[i].bAudio, track.bAudio);
        EXPECT_EQ(expected[i].ulSectorSize, track.ulSectorSize);
        EXPECT_EQ(expected[i].nFile, track.nFile);
        EXPECT_EQ(expected[i].ulIndex01, track.ulIndex01);
    }
}

TEST(CueSheet, ReadsFilesAndTracksWhateverTheLineEndsAndByteOrderMark)
{
    const std::vector<Expected> expected = {
        {1, true, 2352, 0, 0},
        {2, true, 2352, 0, Frames(3, 12, 45)},
        {3, false, 2352, 0, Frames(7, 0, 1)},
        {5, false, 2048, 1, Frames(0, 2, 0)},
        {7, true, 2352, 1, Frames(100, 0, 74)},
    };
    const std::string lf = kFullSheet;
    for (const std::string& text : {lf, WithLineEnds(lf, "\r\n"), "\xEF\xBB\xBF" + WithLineEnds(lf, "\r\n"),
                                    WithLineEnds(lf, "\r"), lf + "\n"})
    {
        SCOPED_TRACE(text.substr(0, 8));
        CCueSheet sheet;
        ASSERT_EQ(CCueSheet::kOk, Parse(sheet, text));
        EXPECT_EQ((std::vector<std::string>{"My Disc (1).bin", "second part.bin"}), sheet.Files());
        ExpectTracks(sheet, expected);
    }
}

// A ripper that writes one file per track puts a track's pregap at the end of the file before:
// the track's own sectors begin in the file of its INDEX 01.
TEST(CueSheet, TrackWhoseIndex01FollowsANewFileBelongsToThatFile)
{
    CCueSheet sheet;
    ASSERT_EQ(CCueSheet::kOk, Parse(sheet,
                                    "FILE \"01.bin\" BINARY\n"
                                    "  TRACK 01 AUDIO\n"
                                    "    INDEX 01 00:00:00\n"
                                    "  TRACK 02 AUDIO\n"
                                    "    INDEX 00 04:00:00\n"
                                    "FILE \"02.bin\" BINARY\n"
                                    "    INDEX 01 00:00:00\n"));
    ExpectTracks(sheet, {{1, true, 2352, 0, 0}, {2, true, 2352, 1, 0}});
}

TEST(CueSheet, DamagedSheetsFailWithTheirStatusAndLine)
{
    const std::string file = "FILE \"a.bin\" BINARY\n";
    const std::string track1 = "TRACK 01 AUDIO\nINDEX 01 00:00:00\n";
    struct Case
    {
        std::string text;
        CCueSheet::Status status;
        size_t nLine;
    };
    const Case cases[] = {
        {"TRACK 01 AUDIO\nINDEX 01 00:00:00\n", CCueSheet::kTrackOutsideFile, 1},
        {"FILE \"a.wav\" WAVE\n" + track1, CCueSheet::kSyntax, 1},
        {"FILE \"a.bin BINARY\n" + track1, CCueSheet::kSyntax, 1},
        {"FILE \"a.bin\"BINARY\n" + track1, CCueSheet::kSyntax, 1},
        {"FILE \"\" BINARY\n" + track1, CCueSheet::kSyntax, 1},
        {"FILE \"a\tb.bin\" BINARY\n" + track1, CCueSheet::kSyntax, 1},
        {file + "TRACK 00 AUDIO\nINDEX 01 00:00:00\n", CCueSheet::kTrackOrder, 2},
        {file + track1 + "TRACK 100 AUDIO\nINDEX 01 00:01:00\n", CCueSheet::kTrackOrder, 4},
        {file + track1 + "TRACK 01 AUDIO\nINDEX 01 00:01:00\n", CCueSheet::kTrackOrder, 4},
        {file + "TRACK 1x AUDIO\n", CCueSheet::kSyntax, 2},
        {file + "TRACK 01 VIDEO\n", CCueSheet::kSyntax, 2},
        {file + "TRACK 01 AUDIO AUDIO\n", CCueSheet::kSyntax, 2},
        {file + "TRACK 01 AUDIO\nINDEX 01 00:60:00\n", CCueSheet::kSyntax, 3},
        {file + "TRACK 01 AUDIO\nINDEX 01 00:00:75\n", CCueSheet::kSyntax, 3},
        {file + "TRACK 01 AUDIO\nINDEX 01 00:00:1\n", CCueSheet::kSyntax, 3},
        {file + "TRACK 01 AUDIO\nINDEX 01 00:00\n", CCueSheet::kSyntax, 3},
        {file + "TRACK 01 AUDIO\nINDEX 01 1000:00:00\n", CCueSheet::kSyntax, 3},
        {file + "TRACK 01 AUDIO\nINDEX 01 00:00:00 x\n", CCueSheet::kSyntax, 3},
        {file + "TRACK 01 AUDIO\nINDEX 01 00:00:00\nINDEX 01 00:00:05\n", CCueSheet::kSyntax, 4},
        {file + "INDEX 01 00:00:00\n", CCueSheet::kSyntax, 2},
        {file + track1 + "HIDDEN TRACK\n", CCueSheet::kSyntax, 4},
        {file + "TRACK 01 AUDIO\nINDEX 00 00:00:00\nTRACK 02 AUDIO\nINDEX 01 00:01:00\n", CCueSheet::kNoIndex01, 2},
        {file + track1 + "TRACK 02 AUDIO\nINDEX 00 00:01:00\n", CCueSheet::kNoIndex01, 4},
        {file + "TRACK 01 AUDIO\nINDEX 01 00:02:00\nTRACK 02 AUDIO\nINDEX 01 00:01:74\n", CCueSheet::kNoIndex01, 5},
        {file + "TRACK 01 AUDIO\nINDEX 01 00:02:00\nTRACK 02 AUDIO\nINDEX 01 00:02:00\n", CCueSheet::kNoIndex01, 5},
        {"REM nothing\n" + file, CCueSheet::kNoTracks, 0},
        {"", CCueSheet::kNoTracks, 0},
    };
    for (const Case& c : cases)
    {
        SCOPED_TRACE(c.text);
        CCueSheet sheet;
        ASSERT_EQ(CCueSheet::kOk, Parse(sheet, kFullSheet));
        size_t nLine = 12345;
        EXPECT_EQ(c.status, Parse(sheet, c.text, &nLine));
        EXPECT_EQ(c.nLine, nLine);
        // Nothing of the failed text nor of the sheet parsed before stays behind.
        EXPECT_TRUE(sheet.Tracks().empty());
        EXPECT_TRUE(sheet.Files().empty());
    }
}

TEST(CueSheet, TextEndsAtItsLengthAndAt64KiB)
{
    // Filled up to exactly 64 KiB with a comment it parses; one byte more is too long.
    std::string text = std::string(kFullSheet) + "\nREM ";
    text.resize(64 * 1024, 'x');
    CCueSheet sheet;
    EXPECT_EQ(CCueSheet::kOk, Parse(sheet, text));
    text += 'x';
    EXPECT_EQ(CCueSheet::kTooLong, Parse(sheet, text));

    // Every prefix ends at an inaccessible page, so reading a byte beyond the length given
    // crashes; what parses is the full sheet's tracks up to some point, never a misread one.
    const std::string whole = "\xEF\xBB\xBF" + WithLineEnds(kFullSheet, "\r\n");
    CCueSheet full;
    ASSERT_EQ(CCueSheet::kOk, Parse(full, whole));
    size_t nParsed = 0;
    for (size_t length = 0; length <= whole.size(); ++length)
    {
        SCOPED_TRACE(length);
        const CGuardedBuffer bytes(std::vector<uint8_t>(whole.data(), whole.data() + length));
        CCueSheet prefix;
        if (prefix.Parse(reinterpret_cast<const char*>(bytes.Data()), bytes.Size()) != CCueSheet::kOk)
            continue;
        ++nParsed;
        ASSERT_LE(prefix.Tracks().size(), full.Tracks().size());
        for (size_t i = 0; i < prefix.Tracks().size(); ++i)
        {
            EXPECT_EQ(full.Tracks()[i].nNumber, prefix.Tracks()[i].nNumber);
            EXPECT_EQ(full.Tracks()[i].ulIndex01, prefix.Tracks()[i].ulIndex01);
        }
    }
    EXPECT_GT(nParsed, 0u);
}

} // namespace
