// Writes cue sheets of the kinds rippers and people write (one file or several, pregaps in the
// file before, data tracks, CR LF with a byte order mark, bare names) as the fuzzer's starting
// corpus.
#include <string>
#include <vector>

#include "CSeedFolder.h"

int main(int argc, char** argv)
{
    const std::vector<std::string> seeds = {
        "REM GENRE Rock\nPERFORMER \"Band\"\nTITLE \"Album\"\nFILE \"Album.bin\" BINARY\n"
        "  TRACK 01 AUDIO\n    TITLE \"One\"\n    INDEX 01 00:00:00\n"
        "  TRACK 02 AUDIO\n    INDEX 00 04:01:20\n    INDEX 01 04:03:20\n"
        "  TRACK 03 AUDIO\n    FLAGS DCP\n    INDEX 01 08:30:74\n",

        "\xEF\xBB\xBF" "CATALOG 1234567890123\r\nFILE disc image.bin BINARY\r\n"
        "  TRACK 01 MODE1/2352\r\n    INDEX 01 00:00:00\r\n"
        "  TRACK 02 AUDIO\r\n    PREGAP 00:02:00\r\n    INDEX 01 12:00:00\r\n"
        "  TRACK 03 AUDIO\r\n    INDEX 01 15:10:05\r\n",

        "FILE \"01.bin\" BINARY\n  TRACK 01 AUDIO\n    INDEX 01 00:00:00\n"
        "  TRACK 02 AUDIO\n    INDEX 00 03:00:00\nFILE \"02.bin\" BINARY\n    INDEX 01 00:00:00\n"
        "FILE \"03.bin\" BINARY\n  TRACK 03 AUDIO\n    INDEX 01 00:00:00\n    INDEX 02 01:00:00\n",

        "FILE \"game.bin\" BINARY\n  TRACK 01 MODE1/2048\n    INDEX 01 00:00:00\n"
        "  TRACK 02 AUDIO\n    INDEX 00 20:00:00\n    INDEX 01 20:02:00\n"
        "FILE \"extra.bin\" BINARY\n  TRACK 03 MODE2/2352\n    INDEX 01 00:00:00\n"
        "  TRACK 04 CDG\n    INDEX 01 00:10:00\n  TRACK 99 CDI/2336\n    INDEX 01 00:20:00\n",

        "FILE \"a.bin\" BINARY\rTRACK 1 AUDIO\rINDEX 1 0:00:00\rPOSTGAP 00:02:00\r"
        "FILE C:\\Music\\b.bin BINARY\rTRACK 2 AUDIO\rINDEX 01 999:59:74\r",
    };
    return CSeedFolder::Write(argc, argv, "sheet", ".cue", seeds);
}
