#include "CFilterFixture.h"

#include <filesystem>
#include <fstream>
#include <string>

#include "cdimage/CDiscImageSetting.h"
#include "cdsource/CCDAudioSource.h"
#include "engine/CComCreator.h"

void CFilterFixture::SetUp()
{
    ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    ASSERT_EQ(S_OK, CComCreator<CCDAudioSource>::CreateInstance(nullptr, IID_IBaseFilter, &m_filter));
    ASSERT_EQ(S_OK, m_filter->FindPin(L"Output", &m_pin));
    ASSERT_EQ(S_OK, QueryTo(m_filter, IID_IFileSourceFilter, m_source));
    ASSERT_EQ(S_OK, QueryTo(m_filter, IID_IMediaSeeking, m_seeking));
    ASSERT_EQ(S_OK, QueryTo(m_filter, IID_ICDAudioSourceConfig, m_config));
}

void CFilterFixture::TearDown()
{
    if (m_recorder)
    {
        EXPECT_EQ(S_OK, m_filter->Stop());
        m_pin->Disconnect();
        m_recorder->ReleaseSamples();
        EXPECT_EQ(1, m_recorder->Refs());
        m_recorder.Reset();
    }
    m_config.Reset();
    m_seeking.Reset();
    m_source.Reset();
    m_pin.Reset();
    EXPECT_EQ(0u, m_filter ? m_filter.Detach()->Release() : 0u);
    if (m_wcImageLetter)
        CDiscImageSetting::Clear(m_wcImageLetter);
    m_pImage.reset();
    CoUninitialize();
}

bool CFilterFixture::UseImage(WCHAR wcLetter, const std::vector<CDiscImageWriter::Track>& tracks)
{
    m_pImage.reset(new CImageFolder);
    m_wcImageLetter = wcLetter;
    const std::string cue = CDiscImageWriter::Write(m_pImage->Path(), "disc", tracks);
    std::wstring wide(cue.size() + 1, L'\0');
    const int cch = MultiByteToWideChar(CP_UTF8, 0, cue.c_str(), -1, &wide[0], static_cast<int>(wide.size()));
    wide.resize(cch > 1 ? static_cast<size_t>(cch - 1) : 0);
    return !wide.empty() && CDiscImageSetting::Set(wcLetter, wide) == ERROR_SUCCESS;
}

std::vector<uint8_t> CFilterFixture::ImageSectors(uint32_t ulFirst, uint32_t ulCount) const
{
    std::vector<uint8_t> bytes(ulCount * 2352ull);
    std::ifstream bin(std::filesystem::u8path(m_pImage->Path("disc.bin")), std::ios::binary);
    bin.seekg(static_cast<std::streamoff>(ulFirst * 2352ull));
    bin.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    if (bin.gcount() != static_cast<std::streamsize>(bytes.size()))
        bytes.clear();
    return bytes;
}

HRESULT CFilterFixture::ConnectRecorder(const CRecordingPin::Options& options)
{
    EXPECT_EQ(1, m_recorder ? m_recorder->Refs() : 1) << "the filter holds a pin whose connection it refused";
    Adopt(m_recorder, new CRecordingPin(options));
    return m_pin->Connect(static_cast<IPin*>(m_recorder.Get()), nullptr);
}
