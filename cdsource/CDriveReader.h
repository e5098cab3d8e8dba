// Sectors of a real CD drive: the table of contents through IOCTL_CDROM_READ_TOC and CD-DA
// sectors through IOCTL_CDROM_RAW_READ. Drive reads can fail on a scratched disc; the read mode
// decides whether such a sector ends the read or plays as silence.
#pragma once

#include <windows.h>

#include <winioctl.h>
// mingw-w64's ntddcdrm.h leans on the storage declarations without including them itself.
#include <ntddstor.h>
#include <ntddcdrm.h>

#include "cdsource/CCDReader.h"

class CDriveReader : public CCDReader
{
public:
    // Sectors per IOCTL_CDROM_RAW_READ: drives and their drivers take at most 64 KiB at a time.
    static const uint32_t kMaxSectorsPerRead = 27;
    // A data track in a second session (an enhanced CD) begins this far past the end of the
    // first session's last audio track: lead-out, lead-in and pre-gap lie between them, and
    // none of it can be read as audio.
    static const uint32_t kSessionGapSectors = 11400;

    explicit CDriveReader(DWORD dwReadMode);
    ~CDriveReader() override;

    // Opens \\.\X: and reads its table of contents. HRESULT_FROM_WIN32 of the failing call's
    // error (a letter with no drive, a drive with no disc, a device that is no CD drive), or
    // HRESULT_FROM_WIN32(ERROR_BAD_FORMAT) for a table that makes no sense.
    HRESULT Open(WCHAR wcDrive);

    // CDAudioRead_Default: the first failing read's error as HRESULT_FROM_WIN32.
    // CDAudioRead_Raw: each sector of a failing read is read again on its own, retried once
    // if that fails too, and played as silence if the retry fails; never an error.
    // E_INVALIDARG for a data track or sectors outside the track.
    HRESULT ReadAudio(size_t nIndex, uint32_t ulSector, uint32_t ulCount, uint8_t* pBuffer) override;

    // The tracks a table of contents lists, lengths measured to the next track or the lead-out.
    static HRESULT TracksFromToc(const CDROM_TOC& toc, std::vector<Track>* pTracks);

protected:
    // One raw read of ulCount CD-DA sectors from disc address ulAddress: ERROR_SUCCESS or a
    // Win32 error code. Virtual so that a test can stand in for a drive.
    virtual DWORD RawRead(uint32_t ulAddress, uint32_t ulCount, uint8_t* pBuffer);

private:
    DWORD RetrySectors(uint32_t ulAddress, uint32_t ulCount, uint8_t* pBuffer);

    HANDLE m_hDevice = INVALID_HANDLE_VALUE;
    DWORD m_dwReadMode;
};
