// What the filter's test cases share: COM on the test's thread, a filter made from its class (no
// registry) with its interfaces, a recording pin to connect it to, and a disc image that a drive
// letter stands for.
#pragma once

#include <windows.h>

#include <dshow.h>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "CDiscImageWriter.h"
#include "CImageFolder.h"
#include "CRecordingPin.h"
#include "cdsource/CDAudioSource.h"
#include "engine/ComPtr.h"

class CFilterFixture : public ::testing::Test
{
protected:
    void SetUp() override;
    // Stops the filter and takes the connection down, as a graph does. Every reference a case
    // took must be back then: the recorder's, and the fixture's release of the filter is the last.
    void TearDown() override;

    static ULONG RefCount(IUnknown* p) { p->AddRef(); return p->Release(); }

    // Writes "disc.cue" and "disc.bin" of these tracks to ImageFolder() and sets the letter to
    // stand for them until the case ends. Cases run side by side in separate processes, so each
    // case uses a letter of its own.
    bool UseImage(WCHAR wcLetter, const std::vector<CDiscImageWriter::Track>& tracks = CDiscImageWriter::ThreeTones());
    const CImageFolder& ImageFolder() const { return *m_pImage; }
    // Sectors of disc.bin as written, from sector ulFirst of the disc on; empty if it cannot be read.
    std::vector<uint8_t> ImageSectors(uint32_t ulFirst, uint32_t ulCount) const;

    // A new recording pin for the filter's pin; the one before must be free of the filter.
    HRESULT ConnectRecorder(const CRecordingPin::Options& options = CRecordingPin::Options());

    ComPtr<IBaseFilter> m_filter;
    ComPtr<IPin> m_pin;
    ComPtr<IFileSourceFilter> m_source;
    ComPtr<IMediaSeeking> m_seeking;
    ComPtr<ICDAudioSourceConfig> m_config;
    ComPtr<CRecordingPin> m_recorder;

private:
    std::unique_ptr<CImageFolder> m_pImage;
    WCHAR m_wcImageLetter = 0;
};
