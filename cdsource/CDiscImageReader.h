// Sectors of a disc image (a .cue and the raw files it names), as cdimage/ reads them. An image
// is always read raw: a sector the image cannot give is an error, never silence.
#pragma once

#include <string>

#include "cdimage/CDiscImage.h"
#include "cdsource/CCDReader.h"

class CDiscImageReader final : public CCDReader
{
public:
    // S_OK, or: HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND) when the sheet or a file it names
    // cannot be opened, HRESULT_FROM_WIN32(ERROR_BAD_FORMAT) for a sheet that does not parse,
    // HRESULT_FROM_WIN32(ERROR_HANDLE_EOF) when a track begins beyond the end of its file.
    HRESULT Open(const std::wstring& cuePath);

    // HRESULT_FROM_WIN32(ERROR_READ_FAULT) when the image no longer holds the sectors (its file
    // shrank since Open) or they lie outside the track.
    HRESULT ReadAudio(size_t nIndex, uint32_t ulSector, uint32_t ulCount, uint8_t* pBuffer) override;

    static HRESULT ResultOf(CDiscImage::Status status);

private:
    CDiscImage m_image;
};
