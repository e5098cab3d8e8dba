// The text of a cue sheet: FILE, TRACK and INDEX lines (others such as TITLE, PERFORMER, REM,
// FLAGS, PREGAP, POSTGAP, CATALOG, ISRC, SONGWRITER are accepted and skipped). Needs no Windows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

struct CueTrack
{
    int nNumber = 0;            // 1 to 99, strictly increasing through the sheet
    bool bAudio = false;        // "AUDIO"; the MODE1/..., MODE2/..., CDG, CDI types are data
    uint32_t ulSectorSize = 0;  // bytes per sector the type stores: AUDIO 2352, MODE1/2048 2048, ...
    size_t nFile = 0;           // index into Files() of the FILE line it follows
                                // (of its INDEX 01 line, where a ripper put its pregap in the file before)
    uint32_t ulIndex01 = 0;     // INDEX 01 position in its file, in frames (mm*60*75 + ss*75 + ff)
};

class CCueSheet
{
public:
    enum Status
    {
        kOk,
        kSyntax,        // a line that is not a cue sheet command, a bad number or time
        kTrackOrder,    // a track number out of 1..99 or not above the one before
        kTrackOutsideFile,  // TRACK before any FILE
        kNoIndex01,     // a track without INDEX 01, or INDEX 01 before the previous track's in the same file
        kNoTracks,
        kTooLong,       // the text is larger than any real sheet (64 KiB)
    };

    // Parses cbText bytes of pText (need not be terminated; a UTF-8 byte order mark, CR LF or LF
    // line ends, quoted or bare file names). On failure pnLine, if given, gets the 1-based line
    // (0 when the failure belongs to the whole text: too long, no tracks).
    Status Parse(const char* pText, size_t cbText, size_t* pnLine = nullptr);

    // File names as written in FILE lines (quotes removed); only BINARY files are accepted:
    // MOTOROLA, WAVE, MP3 and AIFF files are a kSyntax failure.
    const std::vector<std::string>& Files() const { return m_files; }
    const std::vector<CueTrack>& Tracks() const { return m_tracks; }

private:
    std::vector<std::string> m_files;
    std::vector<CueTrack> m_tracks;
};
