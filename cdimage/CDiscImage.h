// An audio CD as a cue sheet and the raw image files it names (.cue with its .bin): the table of
// contents and raw 2352-byte audio sectors, read from outside input with no trust in it. Needs no
// Windows, so it also builds natively for sanitizers and fuzzing.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "cdimage/CCueSheet.h"

// One track of the disc as the image holds it.
struct DiscTrack
{
    int nNumber = 0;             // as the cue sheet numbers it, 1 to 99
    bool bAudio = false;         // AUDIO tracks; every MODE track is data
    uint32_t ulFirstSector = 0;  // where the track begins on the disc (frames of 1/75 s from the first track)
    uint32_t ulSectors = 0;      // its length in sectors of the image (a CD frame each)
    size_t nFile = 0;            // which of the sheet's files holds it
    uint64_t ullFileOffset = 0;  // where its first sector begins in that file
    uint32_t ulSectorSize = 0;   // bytes per sector in that file (2352 for audio)
};

class CDiscImage
{
public:
    static const uint32_t kAudioSectorBytes = 2352;
    static const uint32_t kSectorsPerSecond = 75;

    enum Status
    {
        kOk,
        kCannotReadSheet,  // the .cue itself cannot be read
        kBadSheet,         // the sheet does not parse (CCueSheet's status says why)
        kMissingFile,      // a file the sheet names cannot be opened
        kTruncated,        // a track begins at or beyond the end of its file
    };

    // Reads the sheet at pszCuePath (UTF-8; files it names are relative to its folder) and
    // measures the files it names. A track ends where the next one in the same file begins, the
    // last one in a file where the file ends (a partial last sector is left out).
    Status Open(const char* pszCuePath);
    // The same from a sheet's text and the sizes of its files, for callers that read them
    // themselves (and for fuzzing): ReadAudio is not available on an image built this way.
    Status Build(const CCueSheet& sheet, const std::vector<uint64_t>& fileSizes);

    const std::vector<DiscTrack>& Tracks() const { return m_tracks; }
    // The track with this number, or null.
    const DiscTrack* FindTrack(int nNumber) const;
    // Length of a track in seconds (sectors / 75).
    static double Seconds(const DiscTrack& track) { return track.ulSectors / double(kSectorsPerSecond); }

    // Copies ulCount raw audio sectors of the numbered audio track, beginning ulSector sectors
    // into it, to pBuffer (ulCount * 2352 bytes). False, with nothing promised about pBuffer, when
    // the track is not an audio track of this image, the sectors lie outside it, or the file
    // cannot be read there (it may have shrunk since Open).
    bool ReadAudio(int nTrack, uint32_t ulSector, uint32_t ulCount, uint8_t* pBuffer) const;

private:
    // The table of contents from a parsed sheet and its files' sizes (Open and Build share it).
    Status Layout(const CCueSheet& sheet, const std::vector<uint64_t>& fileSizes);

    std::vector<DiscTrack> m_tracks;
    std::vector<std::string> m_paths;  // the sheet's files, resolved against the sheet's folder
};
