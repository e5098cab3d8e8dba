#include "cdsource/CDriveReader.h"

#include <cstring>

#include "cdsource/CDAudioSource.h"
#include "trace/Trace.h"

namespace {

// A failed call's error as a result code; a call that failed without saying why still fails.
HRESULT LastErrorResult()
{
    const DWORD dwError = GetLastError();
    return dwError != ERROR_SUCCESS ? HRESULT_FROM_WIN32(dwError) : E_FAIL;
}

// The table lists minutes, seconds and frames from the start of the lead-in area; the first
// track's data begins two seconds (150 frames) in.
const uint32_t kLeadInFrames = 150;

} // namespace

CDriveReader::CDriveReader(DWORD dwReadMode) : m_dwReadMode(dwReadMode)
{
}

CDriveReader::~CDriveReader()
{
    if (m_hDevice != INVALID_HANDLE_VALUE)
        CloseHandle(m_hDevice);
}

HRESULT CDriveReader::TracksFromToc(const CDROM_TOC& toc, std::vector<Track>* pTracks)
{
    const int nFirst = toc.FirstTrack;
    const int nLast = toc.LastTrack;
    if (nFirst < 1 || nLast < nFirst || nLast > 99)
        return HRESULT_FROM_WIN32(ERROR_BAD_FORMAT);
    // The length counts the bytes after itself: two of header, eight per entry, and the
    // entries end with the lead-out's.
    const size_t nEntries = static_cast<size_t>(nLast - nFirst) + 2;
    const size_t cbListed = (static_cast<size_t>(toc.Length[0]) << 8 | toc.Length[1]);
    if (cbListed < 2 + nEntries * sizeof(TRACK_DATA))
        return HRESULT_FROM_WIN32(ERROR_BAD_FORMAT);

    std::vector<uint32_t> addresses;
    for (size_t i = 0; i < nEntries; ++i)
    {
        const TRACK_DATA& entry = toc.TrackData[i];
        const uint32_t ulFrames = (entry.Address[1] * 60u + entry.Address[2]) * kSectorsPerSecond + entry.Address[3];
        if (ulFrames < kLeadInFrames || (i > 0 && ulFrames <= addresses.back() + kLeadInFrames))
            return HRESULT_FROM_WIN32(ERROR_BAD_FORMAT);
        addresses.push_back(ulFrames - kLeadInFrames);
    }

    std::vector<Track> tracks;
    for (size_t i = 0; i + 1 < nEntries; ++i)
    {
        Track track;
        track.nNumber = nFirst + static_cast<int>(i);
        // Control bit 2 marks a data track.
        track.bAudio = (toc.TrackData[i].Control & 0x4) == 0;
        track.ulFirstSector = addresses[i];
        track.ulSectors = addresses[i + 1] - addresses[i];
        const bool bNextIsData = i + 2 < nEntries && (toc.TrackData[i + 1].Control & 0x4) != 0;
        if (track.bAudio && bNextIsData && track.ulSectors > kSessionGapSectors)
            track.ulSectors -= kSessionGapSectors;
        tracks.push_back(track);
    }
    pTracks->swap(tracks);
    return S_OK;
}

HRESULT CDriveReader::Open(WCHAR wcDrive)
{
    WCHAR wszDevice[] = L"\\\\.\\?:";
    wszDevice[4] = wcDrive;
    m_hDevice = CreateFileW(wszDevice, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, 0,
                            nullptr);
    if (m_hDevice == INVALID_HANDLE_VALUE)
    {
        const HRESULT hr = LastErrorResult();
        TESSALY_TRACE("E:CDriveReader::Open> CreateFile failed, hr = 0x%08lx", static_cast<unsigned long>(hr));
        return hr;
    }
    CDROM_TOC toc;
    std::memset(&toc, 0, sizeof(toc));
    DWORD cbReturned = 0;
    if (!DeviceIoControl(m_hDevice, IOCTL_CDROM_READ_TOC, nullptr, 0, &toc, sizeof(toc), &cbReturned, nullptr))
    {
        const HRESULT hr = LastErrorResult();
        TESSALY_TRACE("E:CDriveReader::Open> IOCTL_CDROM_READ_TOC failed, hr = 0x%08lx", static_cast<unsigned long>(hr));
        CloseHandle(m_hDevice);
        m_hDevice = INVALID_HANDLE_VALUE;
        return hr;
    }
    return TracksFromToc(toc, &m_tracks);
}

DWORD CDriveReader::RawRead(uint32_t ulAddress, uint32_t ulCount, uint8_t* pBuffer)
{
    RAW_READ_INFO info;
    std::memset(&info, 0, sizeof(info));
    // The request addresses raw sectors by the byte offset they would have as 2048-byte data
    // sectors, whatever the mode read.
    info.DiskOffset.QuadPart = static_cast<LONGLONG>(ulAddress) * 2048;
    info.SectorCount = ulCount;
    info.TrackMode = CDDA;
    const DWORD cbWanted = ulCount * kSectorBytes;
    DWORD cbReturned = 0;
    if (!DeviceIoControl(m_hDevice, IOCTL_CDROM_RAW_READ, &info, sizeof(info), pBuffer, cbWanted, &cbReturned,
                         nullptr))
    {
        const DWORD dwError = GetLastError();
        return dwError != ERROR_SUCCESS ? dwError : ERROR_READ_FAULT;
    }
    return cbReturned == cbWanted ? ERROR_SUCCESS : ERROR_READ_FAULT;
}

DWORD CDriveReader::RetrySectors(uint32_t ulAddress, uint32_t ulCount, uint8_t* pBuffer)
{
    for (uint32_t i = 0; i < ulCount; ++i)
    {
        uint8_t* pSector = pBuffer + static_cast<size_t>(i) * kSectorBytes;
        if (RawRead(ulAddress + i, 1, pSector) == ERROR_SUCCESS)
            continue;
        if (RawRead(ulAddress + i, 1, pSector) == ERROR_SUCCESS)
            continue;
        TESSALY_TRACE("E:CDriveReader::RetrySectors> sector %lu unreadable, played as silence",
                      static_cast<unsigned long>(ulAddress + i));
        std::memset(pSector, 0, kSectorBytes);
    }
    return ERROR_SUCCESS;
}

HRESULT CDriveReader::ReadAudio(size_t nIndex, uint32_t ulSector, uint32_t ulCount, uint8_t* pBuffer)
{
    if (nIndex >= m_tracks.size() || !m_tracks[nIndex].bAudio)
        return E_INVALIDARG;
    const Track& track = m_tracks[nIndex];
    if (ulSector > track.ulSectors || ulCount > track.ulSectors - ulSector)
        return E_INVALIDARG;

    uint32_t ulAddress = track.ulFirstSector + ulSector;
    while (ulCount > 0)
    {
        const uint32_t ulChunk = ulCount < kMaxSectorsPerRead ? ulCount : kMaxSectorsPerRead;
        DWORD dwError = RawRead(ulAddress, ulChunk, pBuffer);
        if (dwError != ERROR_SUCCESS && m_dwReadMode == CDAudioRead_Raw)
            dwError = RetrySectors(ulAddress, ulChunk, pBuffer);
        if (dwError != ERROR_SUCCESS)
            return HRESULT_FROM_WIN32(dwError);
        ulAddress += ulChunk;
        ulCount -= ulChunk;
        pBuffer += static_cast<size_t>(ulChunk) * kSectorBytes;
    }
    return S_OK;
}
