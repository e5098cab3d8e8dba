// Where the filter's sectors come from: a disc image or a real drive, behind one interface so
// the filter and its streaming thread need not know which. A reader is used by one thread at a
// time (the filter loads only while stopped, and its streaming thread is the only reader after).
#pragma once

#include <windows.h>

#include <cstdint>
#include <memory>
#include <vector>

class CCDReader
{
public:
    static const uint32_t kSectorBytes = 2352;   // one CD-DA frame: 588 stereo 16-bit samples
    static const uint32_t kSectorsPerSecond = 75;

    struct Track
    {
        int nNumber = 0;            // 1 to 99, increasing through Tracks()
        bool bAudio = false;        // data tracks are never read, only measured
        uint32_t ulFirstSector = 0; // where it begins on the disc
        uint32_t ulSectors = 0;     // its length
    };

    CCDReader() = default;
    CCDReader(const CCDReader&) = delete;
    CCDReader& operator=(const CCDReader&) = delete;
    virtual ~CCDReader() = default;

    // The reader for a drive letter: the disc image the letter is set to stand for, else the
    // drive itself (read with dwReadMode, a CDAudioReadMode). Null and a failure code when
    // neither can be opened; the codes are those of CDiscImageReader::Open and CDriveReader::Open.
    static HRESULT Open(WCHAR wcDrive, DWORD dwReadMode, std::unique_ptr<CCDReader>* ppReader);

    const std::vector<Track>& Tracks() const { return m_tracks; }

    // Copies ulCount raw sectors of the audio track at nIndex in Tracks(), beginning ulSector
    // sectors into it, to pBuffer (ulCount * kSectorBytes bytes).
    virtual HRESULT ReadAudio(size_t nIndex, uint32_t ulSector, uint32_t ulCount, uint8_t* pBuffer) = 0;

protected:
    std::vector<Track> m_tracks;
};
