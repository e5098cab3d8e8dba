// A drive letter standing for a disc image written for the test: the image goes to a folder of
// its own (CDiscImageWriter), the letter's setting names its sheet, and both go again at the end.
// Cases run side by side in separate processes, so each case uses a letter of its own.
#pragma once

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

#include "CDiscImageWriter.h"
#include "CImageFolder.h"

class CImageDrive
{
public:
    CImageDrive(WCHAR wcLetter, const std::vector<CDiscImageWriter::Track>& tracks);
    ~CImageDrive();
    CImageDrive(const CImageDrive&) = delete;
    CImageDrive& operator=(const CImageDrive&) = delete;

    // The image was written and the setting made.
    bool Ready() const { return m_bReady; }
    WCHAR Letter() const { return m_wcLetter; }
    const CImageFolder& Folder() const { return m_folder; }
    static const char* Stem() { return "disc"; }
    // "K/2-3"; one number when first and last are the same.
    std::wstring Spec(int nFirst, int nLast) const;

    uint32_t Sectors(int nFirst, int nLast) const;
    // The left channel the range holds from sample nFrom on, nCount samples: each track's tone,
    // and silence for a data track.
    std::vector<int16_t> ExpectedLeft(int nFirst, int nLast, uint64_t nFrom, size_t nCount) const;

private:
    WCHAR m_wcLetter;
    std::vector<CDiscImageWriter::Track> m_tracks;
    CImageFolder m_folder;
    bool m_bReady = false;
};
