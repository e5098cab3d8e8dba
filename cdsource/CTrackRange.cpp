#include "cdsource/CTrackRange.h"

#include <cstring>

namespace {

const LONGLONG kUnitsPerSecond = 10000000;

} // namespace

HRESULT CTrackRange::Select(const std::vector<CCDReader::Track>& tracks, int nFirst, int nLast)
{
    bool bHasFirst = false;
    bool bHasLast = false;
    std::vector<Part> parts;
    uint32_t ulSectors = 0;
    for (size_t i = 0; i < tracks.size(); ++i)
    {
        const CCDReader::Track& track = tracks[i];
        bHasFirst = bHasFirst || track.nNumber == nFirst;
        bHasLast = bHasLast || track.nNumber == nLast;
        if (track.nNumber < nFirst || track.nNumber > nLast)
            continue;
        parts.push_back({i, track.bAudio, ulSectors, track.ulSectors});
        ulSectors += track.ulSectors;
    }
    if (!bHasFirst || !bHasLast || nFirst > nLast)
        return HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
    m_parts.swap(parts);
    m_ulSectors = ulSectors;
    return S_OK;
}

HRESULT CTrackRange::Read(CCDReader& reader, uint32_t ulSector, uint32_t ulCount, uint8_t* pBuffer) const
{
    if (ulSector > m_ulSectors || ulCount > m_ulSectors - ulSector)
        return E_INVALIDARG;
    for (const Part& part : m_parts)
    {
        if (ulCount == 0)
            break;
        if (ulSector >= part.ulStart + part.ulSectors)
            continue;
        const uint32_t ulOffset = ulSector - part.ulStart;
        const uint32_t ulLeft = part.ulSectors - ulOffset;
        const uint32_t ulChunk = ulCount < ulLeft ? ulCount : ulLeft;
        const size_t cbChunk = static_cast<size_t>(ulChunk) * CCDReader::kSectorBytes;
        if (part.bAudio)
        {
            const HRESULT hr = reader.ReadAudio(part.nTrack, ulOffset, ulChunk, pBuffer);
            if (FAILED(hr))
                return hr;
        }
        else
        {
            // A data track's bytes would play as loud noise.
            std::memset(pBuffer, 0, cbChunk);
        }
        pBuffer += cbChunk;
        ulSector += ulChunk;
        ulCount -= ulChunk;
    }
    return S_OK;
}

LONGLONG CTrackRange::TimeOf(uint32_t ulSectors)
{
    return static_cast<LONGLONG>(ulSectors) * kUnitsPerSecond / CCDReader::kSectorsPerSecond;
}

uint32_t CTrackRange::SectorAt(LONGLONG llTime)
{
    if (llTime <= 0)
        return 0;
    // Far beyond any disc (callers pass huge values to mean "the end"); keeps the product below in range.
    if (llTime >= TimeOf(0xFFFFFFFFu))
        return 0xFFFFFFFFu;
    // TimeOf loses less than one unit, which is less than 75 units once multiplied back; adding
    // 74 restores a rounded-down boundary without moving any time that lies inside a sector.
    const LONGLONG llSector = (llTime * CCDReader::kSectorsPerSecond + (CCDReader::kSectorsPerSecond - 1)) /
                              kUnitsPerSecond;
    return static_cast<uint32_t>(llSector);
}
