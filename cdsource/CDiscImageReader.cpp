#include "cdsource/CDiscImageReader.h"

#include <windows.h>

HRESULT CDiscImageReader::ResultOf(CDiscImage::Status status)
{
    switch (status)
    {
    case CDiscImage::kOk:
        return S_OK;
    case CDiscImage::kCannotReadSheet:
    case CDiscImage::kMissingFile:
        return HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
    case CDiscImage::kBadSheet:
        return HRESULT_FROM_WIN32(ERROR_BAD_FORMAT);
    case CDiscImage::kTruncated:
        return HRESULT_FROM_WIN32(ERROR_HANDLE_EOF);
    }
    return E_FAIL;
}

HRESULT CDiscImageReader::Open(const std::wstring& cuePath)
{
    // The image library takes UTF-8 paths, so names outside the ANSI code page survive.
    std::string utf8;
    const int cb = WideCharToMultiByte(CP_UTF8, 0, cuePath.c_str(), -1, nullptr, 0, nullptr, nullptr);
    if (cb <= 0)
        return HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND);
    utf8.resize(static_cast<size_t>(cb));
    WideCharToMultiByte(CP_UTF8, 0, cuePath.c_str(), -1, &utf8[0], cb, nullptr, nullptr);

    const HRESULT hr = ResultOf(m_image.Open(utf8.c_str()));
    if (FAILED(hr))
        return hr;
    m_tracks.clear();
    for (const DiscTrack& disc : m_image.Tracks())
    {
        Track track;
        track.nNumber = disc.nNumber;
        track.bAudio = disc.bAudio;
        track.ulFirstSector = disc.ulFirstSector;
        track.ulSectors = disc.ulSectors;
        m_tracks.push_back(track);
    }
    return S_OK;
}

HRESULT CDiscImageReader::ReadAudio(size_t nIndex, uint32_t ulSector, uint32_t ulCount, uint8_t* pBuffer)
{
    if (nIndex >= m_tracks.size())
        return E_INVALIDARG;
    return m_image.ReadAudio(m_tracks[nIndex].nNumber, ulSector, ulCount, pBuffer)
               ? S_OK
               : HRESULT_FROM_WIN32(ERROR_READ_FAULT);
}
