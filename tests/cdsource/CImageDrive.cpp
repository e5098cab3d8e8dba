#include "CImageDrive.h"

#include "cdimage/CDiscImageSetting.h"

namespace {

const uint64_t kSamplesPerSector = 2352 / 4;

std::wstring Wide(const std::string& utf8)
{
    const int cch = MultiByteToWideChar(CP_UTF8, 0, utf8.c_str(), -1, nullptr, 0);
    std::wstring wide(static_cast<size_t>(cch > 0 ? cch : 1), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, utf8.c_str(), -1, &wide[0], cch);
    wide.resize(wide.size() - 1);
    return wide;
}

} // namespace

CImageDrive::CImageDrive(WCHAR wcLetter, const std::vector<CDiscImageWriter::Track>& tracks)
    : m_wcLetter(wcLetter), m_tracks(tracks)
{
    const std::string cue = CDiscImageWriter::Write(m_folder.Path(), Stem(), m_tracks);
    m_bReady = !cue.empty() && CDiscImageSetting::Set(m_wcLetter, Wide(cue)) == ERROR_SUCCESS;
}

CImageDrive::~CImageDrive()
{
    CDiscImageSetting::Clear(m_wcLetter);
}

std::wstring CImageDrive::Spec(int nFirst, int nLast) const
{
    std::wstring spec(1, m_wcLetter);
    spec += L"/" + std::to_wstring(nFirst);
    if (nLast != nFirst)
        spec += L"-" + std::to_wstring(nLast);
    return spec;
}

uint32_t CImageDrive::Sectors(int nFirst, int nLast) const
{
    uint32_t ulSectors = 0;
    for (int n = nFirst; n <= nLast; ++n)
        ulSectors += m_tracks[static_cast<size_t>(n - 1)].ulSectors;
    return ulSectors;
}

std::vector<int16_t> CImageDrive::ExpectedLeft(int nFirst, int nLast, uint64_t nFrom, size_t nCount) const
{
    std::vector<int16_t> left;
    uint64_t nTrackStart = 0;
    for (int n = nFirst; n <= nLast && left.size() < nCount; ++n)
    {
        const CDiscImageWriter::Track& track = m_tracks[static_cast<size_t>(n - 1)];
        const uint64_t nTrackSamples = track.ulSectors * kSamplesPerSector;
        for (uint64_t i = nFrom > nTrackStart ? nFrom - nTrackStart : 0; i < nTrackSamples && left.size() < nCount; ++i)
            left.push_back(track.bAudio ? CDiscImageWriter::Sample(track, i) : 0);
        nTrackStart += nTrackSamples;
    }
    return left;
}
