// The tracks a Load picked, laid end to end as one stream of sectors: what the filter delivers,
// seeks in and measures. A data track inside the range keeps its length but plays as digital
// silence, so every later track still begins where the disc's table says.
#pragma once

#include <windows.h>

#include <cstdint>
#include <vector>

#include "cdsource/CCDReader.h"

class CTrackRange
{
public:
    // Takes the tracks numbered nFirst to nLast (any the disc skips between them are simply not
    // there). HRESULT_FROM_WIN32(ERROR_NOT_FOUND), leaving the range as it was, when either end
    // is not on the disc or nFirst comes after nLast.
    HRESULT Select(const std::vector<CCDReader::Track>& tracks, int nFirst, int nLast);

    uint32_t Sectors() const { return m_ulSectors; }
    uint64_t Bytes() const { return static_cast<uint64_t>(m_ulSectors) * CCDReader::kSectorBytes; }

    // Copies ulCount sectors, beginning ulSector sectors into the range, to pBuffer: audio
    // tracks from the reader, data tracks as zeros. E_INVALIDARG past the range's end; the
    // reader's failure as it is.
    HRESULT Read(CCDReader& reader, uint32_t ulSector, uint32_t ulCount, uint8_t* pBuffer) const;

    // Stream time (100 ns units) of a count of sectors, rounded down.
    static LONGLONG TimeOf(uint32_t ulSectors);
    // The sector a stream time falls in. A time that TimeOf made of a sector count gives that
    // count back, although TimeOf rounded it down.
    static uint32_t SectorAt(LONGLONG llTime);

private:
    struct Part
    {
        size_t nTrack;     // index into the reader's tracks
        bool bAudio;
        uint32_t ulStart;  // where it begins in the range
        uint32_t ulSectors;
    };

    std::vector<Part> m_parts;
    uint32_t m_ulSectors = 0;
};
