// The CD audio source filter made from its class (no registry), on disc images written at test
// time that a drive letter stands for, its pin connected to a recording pin of the test's own.
#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>
#include <memory>

#include "CDiscImageWriter.h"
#include "CImageFolder.h"
#include "CRecordingPin.h"
#include "cdimage/CDiscImageSetting.h"
#include "cdsource/CCDAudioSource.h"
#include "cdsource/CDAudioSource.h"
#include "cdsource/CTrackRange.h"
#include "engine/CComCreator.h"

namespace {

const HRESULT kNotFound = HRESULT_FROM_WIN32(ERROR_NOT_FOUND);
const DWORD kAbsolute = AM_SEEKING_AbsolutePositioning;

class CDAudioSource : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
        ASSERT_EQ(S_OK, CComCreator<CCDAudioSource>::CreateInstance(nullptr, IID_IBaseFilter, &m_filter));
        ASSERT_EQ(S_OK, m_filter->FindPin(L"Output", &m_pin));
        ASSERT_EQ(S_OK, QueryTo(m_filter, IID_IFileSourceFilter, m_source));
        ASSERT_EQ(S_OK, QueryTo(m_filter, IID_IMediaSeeking, m_seeking));
    }
    // Stopped and disconnected, as a graph leaves it: every reference a case took is back, and
    // the fixture's release of the filter is the last.
    void TearDown() override
    {
        ASSERT_TRUE(m_filter && m_pin);
        EXPECT_EQ(S_OK, m_filter->Stop());
        m_pin->Disconnect();
        EXPECT_EQ(1, m_recorder ? m_recorder->Refs() : 1);
        m_recorder.Reset(), m_seeking.Reset(), m_source.Reset(), m_pin.Reset();
        EXPECT_EQ(0u, m_filter.Detach()->Release());
        if (m_wcLetter)
            CDiscImageSetting::Clear(m_wcLetter);
        m_image.reset();
        CoUninitialize();
    }
    // Writes disc.cue and disc.bin and sets the letter (each case its own, as cases run side by
    // side) to stand for them until the case ends.
    bool UseImage(WCHAR wcLetter, const std::vector<CDiscImageWriter::Track>& tracks = {{440.0, 75}, {660.0, 90}, {880.0, 60}})
    {
        m_image.reset(new CImageFolder);
        m_wcLetter = wcLetter;
        const std::string cue = CDiscImageWriter::Write(m_image->Path(), "disc", tracks);
        return !cue.empty() && CDiscImageSetting::Set(wcLetter, std::filesystem::u8path(cue).wstring()) == ERROR_SUCCESS;
    }
    std::vector<uint8_t> ImageSectors(uint32_t ulFirst, uint32_t ulCount) const { return m_image->Read("disc.bin", ulFirst * 2352ull, ulCount * 2352u); }
    HRESULT ConnectRecorder(const CRecordingPin::Options& options = CRecordingPin::Options())
    {
        EXPECT_EQ(1, m_recorder ? m_recorder->Refs() : 1) << "the filter holds a pin whose connection it refused";
        Adopt(m_recorder, new CRecordingPin(options));
        return m_pin->Connect(static_cast<IPin*>(m_recorder.Get()), nullptr);
    }
    std::vector<std::string> PlayThrough()  // pauses, waits for the end of the stream, and stops
    {
        m_recorder->ClearRecords();
        EXPECT_EQ(S_OK, m_filter->Pause());
        EXPECT_TRUE(m_recorder->WaitForEndOfStream());
        EXPECT_EQ(S_OK, m_filter->Stop());
        return m_recorder->Calls();
    }

    ComPtr<IBaseFilter> m_filter;
    ComPtr<IPin> m_pin;
    ComPtr<IFileSourceFilter> m_source;
    ComPtr<IMediaSeeking> m_seeking;
    ComPtr<CRecordingPin> m_recorder;
    std::unique_ptr<CImageFolder> m_image;
    WCHAR m_wcLetter = 0;
};

std::string Segment(uint32_t ulStart, uint32_t ulStop)
{
    return "NewSegment " + std::to_string(CTrackRange::TimeOf(ulStart)) + " " + std::to_string(CTrackRange::TimeOf(ulStop));
}

std::string Received(uint32_t ulFrom, uint32_t ulTo, bool bDiscontinuity = false)  // sectors of the segment
{
    return "Receive " + std::to_string(CTrackRange::TimeOf(ulFrom)) + " " + std::to_string(CTrackRange::TimeOf(ulTo)) +
           " " + std::to_string((ulTo - ulFrom) * 2352) + (bDiscontinuity ? " discontinuity" : "");
}

TEST_F(CDAudioSource, LoadAndSeekingAnswerExactCodesAndARefusedLoadDropsTheRangeBefore)
{
    EXPECT_EQ(E_POINTER, m_source->Load(nullptr, nullptr));
    for (LPCWSTR pwsz : {L"", L"D", L"D:", L"D:\\track03.cda", L"D/0", L"D/100", L"D/003", L"D/3-", L"D/3 - 4", L"4/3"})
        EXPECT_EQ(E_INVALIDARG, m_source->Load(pwsz, nullptr)) << pwsz;
    EXPECT_EQ(E_POINTER, m_source->GetCurFile(nullptr, nullptr));
    EXPECT_EQ(S_OK, m_filter->Run(0));  // unconnected, it runs with nothing to deliver; Load waits for Stop
    EXPECT_EQ(VFW_E_NOT_STOPPED, m_source->Load(L"D/1", nullptr));
    EXPECT_EQ(S_OK, m_filter->Stop());

    ASSERT_TRUE(UseImage(L'L'));
    ASSERT_EQ(S_OK, m_source->Load(L"l/1-3", nullptr));
    LPOLESTR pwszRequest = nullptr;
    ASSERT_EQ(S_OK, m_source->GetCurFile(&pwszRequest, nullptr));
    EXPECT_EQ(std::wstring(L"l/1-3"), pwszRequest);
    CoTaskMemFree(pwszRequest);
    // 1.5 s falls in sector 112 and 2.5 s in sector 187: both are taken as those sectors' starts.
    // Refusals leave the positions as they were.
    EXPECT_EQ(E_INVALIDARG, m_seeking->SetTimeFormat(&TIME_FORMAT_SAMPLE));
    EXPECT_EQ(E_INVALIDARG, m_seeking->SetRate(2.0));
    LONGLONG llStart = 15000000, llStop = 25000000, llLate = 20000000, llEarly = 10000000, llStep = 75;
    EXPECT_EQ(S_OK, m_seeking->SetPositions(&llStart, kAbsolute | AM_SEEKING_ReturnTime, &llStop, kAbsolute | AM_SEEKING_ReturnTime));
    EXPECT_EQ(E_INVALIDARG, m_seeking->SetPositions(&llLate, kAbsolute, &llEarly, kAbsolute));
    EXPECT_EQ(E_INVALIDARG, m_seeking->SetPositions(&llStep, AM_SEEKING_IncrementalPositioning, nullptr, AM_SEEKING_NoPositioning));
    EXPECT_EQ(E_POINTER, m_seeking->SetPositions(nullptr, kAbsolute, nullptr, AM_SEEKING_NoPositioning));
    llStart = llStop = 0;
    EXPECT_EQ(S_OK, m_seeking->GetPositions(&llStart, &llStop));
    EXPECT_EQ(std::make_pair(14933333LL, 24933333LL), std::make_pair(llStart, llStop));

    // A range the disc lacks leaves no range at all (a caller that goes on without checking cannot
    // play what it asked for before); a new Load plays whole.
    ASSERT_EQ(S_OK, m_source->Load(L"L/2", nullptr));
    EXPECT_EQ(kNotFound, m_source->Load(L"L/2-4", nullptr));  // which ranges a disc has: TrackRange.*
    pwszRequest = reinterpret_cast<LPOLESTR>(1);
    EXPECT_EQ(E_FAIL, m_source->GetCurFile(&pwszRequest, nullptr));
    EXPECT_EQ(nullptr, pwszRequest);
    ASSERT_EQ(S_OK, ConnectRecorder());
    EXPECT_EQ((std::vector<std::string>{Segment(0, 0), "EndOfStream"}), PlayThrough());
    ASSERT_EQ(S_OK, m_source->Load(L"L/3", nullptr));
    EXPECT_EQ(S_OK, m_seeking->GetPositions(&llStart, &llStop));
    EXPECT_EQ(std::make_pair(0LL, 8000000LL), std::make_pair(llStart, llStop));

    // Damaged or missing images; a letter whose image is gone does not fall back to a drive.
    m_image->Resize("disc.bin", 165ull * 2352);  // the last track begins where the file now ends
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_HANDLE_EOF), m_source->Load(L"L/1", nullptr));
    m_image->Remove("disc.bin");
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), m_source->Load(L"L/1", nullptr));
}

TEST_F(CDAudioSource, ConnectsOnceWithCDAudioAndTheInputPinsAllocatorAndRefusesTheRest)
{
    ASSERT_EQ(S_OK, ConnectRecorder());
    EXPECT_EQ((std::vector<std::string>{"ReceiveConnection", "GetAllocator", "NotifyAllocator(own)"}), m_recorder->Calls());
    AM_MEDIA_TYPE mt = {};
    ASSERT_EQ(S_OK, m_pin->ConnectionMediaType(&mt));
    const WAVEFORMATEX expected = {WAVE_FORMAT_PCM, 2, 44100, 176400, 4, 16, 0};
    EXPECT_TRUE(mt.majortype == MEDIATYPE_Audio && mt.subtype == MEDIASUBTYPE_PCM && mt.formattype == FORMAT_WaveFormatEx &&
                mt.cbFormat >= sizeof(expected) && std::memcmp(&expected, mt.pbFormat, sizeof(expected)) == 0);
    CoTaskMemFree(mt.pbFormat);
    ComPtr<CRecordingPin> second;
    Adopt(second, new CRecordingPin(CRecordingPin::Options()));
    EXPECT_EQ(VFW_E_ALREADY_CONNECTED, m_pin->Connect(static_cast<IPin*>(second.Get()), nullptr));
    EXPECT_EQ(S_OK, m_filter->Pause());
    EXPECT_EQ(VFW_E_NOT_STOPPED, m_pin->Disconnect());
    EXPECT_EQ(S_OK, m_filter->Stop());
    EXPECT_EQ(S_OK, m_pin->Disconnect());
    IPin* pPeer = m_pin.Get();
    EXPECT_EQ(std::make_pair(VFW_E_NOT_CONNECTED, VFW_E_NOT_CONNECTED), std::make_pair(m_pin->ConnectedTo(&pPeer), m_pin->ConnectionMediaType(&mt)));
    EXPECT_TRUE(pPeer == nullptr && mt.majortype == GUID_NULL && mt.pbFormat == nullptr);
    // The input pin refuses the type: its code, and nothing more is asked of it. No IMemInputPin:
    // the input pin hears that the connection is off.
    EXPECT_EQ(VFW_E_TYPE_NOT_ACCEPTED, ConnectRecorder({VFW_E_TYPE_NOT_ACCEPTED}));
    EXPECT_EQ(1u, m_recorder->Calls().size());
    EXPECT_EQ(VFW_E_NO_TRANSPORT, ConnectRecorder({S_OK, false}));
    EXPECT_EQ("Disconnect", m_recorder->Calls().back());
    EXPECT_EQ(VFW_E_NOT_CONNECTED, m_pin->ConnectedTo(&pPeer));
    // Another type is refused before the input pin is asked; so are an output pin, a null pin,
    // and any pin while the filter is not stopped. The pin refused holds nothing of the filter.
    mt.majortype = MEDIATYPE_Video;
    EXPECT_EQ(VFW_E_TYPE_NOT_ACCEPTED, m_pin->Connect(static_cast<IPin*>(second.Get()), &mt));
    EXPECT_EQ(VFW_E_INVALID_DIRECTION, m_pin->Connect(m_pin.Get(), nullptr));
    EXPECT_EQ(E_POINTER, m_pin->Connect(nullptr, nullptr));
    ASSERT_EQ(S_OK, m_filter->Pause());
    EXPECT_EQ(VFW_E_NOT_STOPPED, m_pin->Connect(static_cast<IPin*>(second.Get()), nullptr));
    EXPECT_TRUE(second->Calls().empty() && second->Refs() == 1);
}

TEST_F(CDAudioSource, DeliversExactlyTheRangeInTimedWholeSectorsWithDataTracksSilent)
{
    // Tracks 2 to 4 lie at disc sectors 75 to 209: 45 of tone, 30 of data, 60 of another tone.
    ASSERT_TRUE(UseImage(L'N', {{440.0, 75}, {660.0, 45}, {0.0, 30, false}, {880.0, 60}}));
    ASSERT_EQ(S_OK, m_source->Load(L"N/2-4", nullptr));
    ASSERT_EQ(S_OK, ConnectRecorder());
    std::vector<std::string> expected = {Segment(0, 135)};  // 8 sectors a sample
    for (uint32_t i = 0; i < 17; ++i)
        expected.push_back(Received(i * 8, std::min(i * 8 + 8, 135u), i == 0));
    expected.push_back("EndOfStream");
    EXPECT_EQ(expected, PlayThrough());
    std::vector<uint8_t> bytes = ImageSectors(75, 135);
    std::fill(bytes.begin() + 45 * 2352, bytes.begin() + 75 * 2352, 0);
    EXPECT_TRUE(m_recorder->Bytes() == bytes);
    ComPtr<ICDAudioSourceConfig> config;
    ULONGLONG cbDelivered = 0;
    ASSERT_EQ(S_OK, QueryTo(m_filter, IID_ICDAudioSourceConfig, config));
    EXPECT_EQ(E_INVALIDARG, config->SetReadMode(2));
    ASSERT_EQ(S_OK, config->GetDeliveredBytes(&cbDelivered));
    EXPECT_EQ(135u * 2352, cbDelivered);

    // From track 4's start to a stop inside a sample, which cuts it; stream time starts again.
    LONGLONG llStart = CTrackRange::TimeOf(75), llStop = CTrackRange::TimeOf(75 + 45);
    ASSERT_EQ(S_OK, m_seeking->SetPositions(&llStart, kAbsolute, &llStop, kAbsolute));
    const std::vector<std::string> calls = PlayThrough();
    ASSERT_EQ(1u + 6 + 1, calls.size());
    EXPECT_EQ(Segment(75, 120) + Received(0, 8, true) + Received(40, 45), calls[0] + calls[1] + calls[6]);
    EXPECT_TRUE(m_recorder->Bytes() == ImageSectors(150, 45));
}

// The image loses its end after the Load: delivery ends, and the graph hears the read fault.
TEST_F(CDAudioSource, AReadFaultEndsTheStreamAndAbortsTheGraph)
{
    ASSERT_TRUE(UseImage(L'S'));
    ASSERT_EQ(S_OK, m_source->Load(L"S/1-3", nullptr));
    ComPtr<IFilterGraph> graph;
    ComPtr<IMediaEvent> events;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IFilterGraph, &graph));
    ASSERT_EQ(S_OK, QueryTo(graph, IID_IMediaEvent, events));
    ASSERT_EQ(S_OK, m_filter->JoinFilterGraph(graph.Get(), L"source"));
    ASSERT_EQ(S_OK, ConnectRecorder());
    m_image->Resize("disc.bin", 100u * 2352);
    const std::vector<std::string> calls = PlayThrough();
    EXPECT_EQ(Received(88, 96), calls.at(calls.size() - 2)) << "the samples wholly read before the fault";
    long lCode = 0;
    LONG_PTR lParam1 = 0, lParam2 = 0;
    ASSERT_EQ(S_OK, events->GetEvent(&lCode, &lParam1, &lParam2, 5000));
    EXPECT_EQ(std::make_pair(long(EC_ERRORABORT), LONG_PTR(HRESULT_FROM_WIN32(ERROR_READ_FAULT))), std::make_pair(lCode, lParam1));
    events->FreeEventParams(lCode, lParam1, lParam2);
    EXPECT_EQ(S_OK, m_filter->JoinFilterGraph(nullptr, nullptr));
}

// Of the tracks a disc has, only a range it has whole, first to last, is selected; a refusal
// keeps the range before.
TEST(TrackRange, SelectsOnlyARangeOfTracksTheDiscHas)
{
    std::vector<CCDReader::Track> tracks(3);
    for (int i = 0; i < 3; ++i)
        tracks[size_t(i)] = {i + 1, i != 1, 100u * unsigned(i), 75u + unsigned(i)};
    const struct { int nFirst, nLast; HRESULT hr; uint32_t ulSectors; } cases[] = {
        {1, 3, S_OK, 228}, {2, 2, S_OK, 76}, {3, 2, kNotFound, 76}, {0, 1, kNotFound, 76}, {3, 4, kNotFound, 76}};
    CTrackRange range;
    for (const auto& c : cases)
    {
        EXPECT_EQ(c.hr, range.Select(tracks, c.nFirst, c.nLast)) << c.nFirst << "-" << c.nLast;
        EXPECT_EQ(c.ulSectors, range.Sectors());
    }
}

} // namespace
