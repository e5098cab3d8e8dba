// The CD audio source filter made from its class (no registry), on disc images written at test
// time that a drive letter stands for: its COM identity, Load and seeking with their exact codes,
// its pin against a recording pin of the test's own, and in the platform's real filter graph
// with its DirectSound renderer.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
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
        ASSERT_EQ(S_OK, QueryTo(m_filter, IID_ICDAudioSourceConfig, m_config));
    }
    // Stops the filter and takes the connection down, as a graph does: every reference a case
    // took must be back, the recorder's, and the fixture's release of the filter is the last.
    void TearDown() override
    {
        if (m_recorder)
        {
            EXPECT_EQ(S_OK, m_filter->Stop());
            m_pin->Disconnect();
            m_recorder->ReleaseSamples();
            EXPECT_EQ(1, m_recorder->Refs());
            m_recorder.Reset();
        }
        m_config.Reset(), m_seeking.Reset(), m_source.Reset(), m_pin.Reset();
        EXPECT_EQ(0u, m_filter ? m_filter.Detach()->Release() : 0u);
        if (m_wcLetter)
            CDiscImageSetting::Clear(m_wcLetter);
        m_image.reset();
        CoUninitialize();
    }
    static ULONG RefCount(IUnknown* p) { return p->AddRef(), p->Release(); }
    // Writes disc.cue and disc.bin and sets the letter (one of each case's own, as cases run side
    // by side) to stand for them until the case ends.
    bool UseImage(WCHAR wcLetter, const std::vector<CDiscImageWriter::Track>& tracks = CDiscImageWriter::ThreeTones())
    {
        m_image.reset(new CImageFolder);
        m_wcLetter = wcLetter;
        const std::string cue = CDiscImageWriter::Write(m_image->Path(), "disc", tracks);
        return !cue.empty() && CDiscImageSetting::Set(wcLetter, std::filesystem::u8path(cue).wstring()) == ERROR_SUCCESS;
    }
    std::vector<uint8_t> ImageSectors(uint32_t ulFirst, uint32_t ulCount) const  // of disc.bin as written
    {
        std::vector<uint8_t> bytes(ulCount * 2352ull);
        std::ifstream bin(std::filesystem::u8path(m_image->Path("disc.bin")), std::ios::binary);
        bin.seekg(static_cast<std::streamoff>(ulFirst * 2352ull));
        bin.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
        return bytes;
    }
    HRESULT ConnectRecorder(const CRecordingPin::Options& options = CRecordingPin::Options())
    {
        EXPECT_EQ(1, m_recorder ? m_recorder->Refs() : 1) << "the filter holds a pin whose connection it refused";
        Adopt(m_recorder, new CRecordingPin(options));
        return m_pin->Connect(static_cast<IPin*>(m_recorder.Get()), nullptr);
    }
    // Pauses and waits for the end of the stream.
    void PlayThrough()
    {
        m_recorder->ClearRecords();
        ASSERT_EQ(S_OK, m_filter->Pause());
        ASSERT_TRUE(m_recorder->WaitForCall("EndOfStream", 1));
        ASSERT_EQ(S_OK, m_filter->Stop());
    }

    ComPtr<IBaseFilter> m_filter;
    ComPtr<IPin> m_pin;
    ComPtr<IFileSourceFilter> m_source;
    ComPtr<IMediaSeeking> m_seeking;
    ComPtr<ICDAudioSourceConfig> m_config;
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

TEST_F(CDAudioSource, OneIdentityOnePinAndEveryReferenceComesBack)
{
    ComPtr<IUnknown> identity, p, back;
    ASSERT_EQ(S_OK, QueryTo(m_filter, IID_IUnknown, identity));
    for (REFIID riid : {IID_IPersist, IID_IMediaFilter, IID_IFileSourceFilter, IID_IMediaSeeking, IID_ICDAudioSourceConfig})
    {
        ASSERT_EQ(S_OK, m_filter->QueryInterface(riid, &p));
        ASSERT_EQ(S_OK, QueryTo(p, IID_IUnknown, back));
        EXPECT_EQ(identity.Get(), back.Get());
    }
    p.Reset(), back.Reset();
    void* pv = &pv;
    EXPECT_EQ(E_NOINTERFACE, m_filter->QueryInterface(IID_IPin, &pv));
    EXPECT_EQ(nullptr, pv);
    ComPtr<IEnumPins> pins;  // the pin is counted on the filter, and the enumerator lets go of it
    ASSERT_EQ(S_OK, m_filter->EnumPins(&pins));
    IPin* apPins[2] = {};
    ULONG cFetched = 0;
    EXPECT_EQ(S_FALSE, pins->Next(2, apPins, &cFetched));
    ASSERT_EQ(1u, cFetched);
    EXPECT_EQ(m_pin.Get(), apPins[0]);
    pins.Reset();
    EXPECT_EQ(5u + 2, RefCount(m_filter.Get()));  // the fixture's five, the identity, the pin
    apPins[0]->Release();
    identity.Reset();
    EXPECT_EQ(5u, RefCount(m_filter.Get()));
    IPin* pOther = m_pin.Get();
    EXPECT_EQ(VFW_E_NOT_FOUND, m_filter->FindPin(L"Input", &pOther));
    EXPECT_EQ(nullptr, pOther);
}

TEST_F(CDAudioSource, LoadAndSeekingAnswerExactCodesAndARefusedLoadDropsTheRangeBefore)
{
    EXPECT_EQ(E_POINTER, m_source->Load(nullptr, nullptr));
    for (LPCWSTR pwsz : {L"", L"D", L"D:", L"D:\\track03.cda", L"D/0", L"D/100", L"D/003", L"D/3-", L"D/3 - 4", L"4/3"})
        EXPECT_EQ(E_INVALIDARG, m_source->Load(pwsz, nullptr)) << pwsz;
    EXPECT_EQ(kNotFound, m_source->Load(L"D/7-3", nullptr));  // runs backwards: no disc has it
    EXPECT_EQ(E_POINTER, m_source->GetCurFile(nullptr, nullptr));
    EXPECT_EQ(E_INVALIDARG, m_config->SetReadMode(2));
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
    EXPECT_EQ(14933333, llStart);
    EXPECT_EQ(24933333, llStop);
    EXPECT_EQ(E_INVALIDARG, m_seeking->SetPositions(&llLate, kAbsolute, &llEarly, kAbsolute));
    EXPECT_EQ(E_INVALIDARG, m_seeking->SetPositions(&llStep, AM_SEEKING_IncrementalPositioning, nullptr, AM_SEEKING_NoPositioning));
    EXPECT_EQ(E_POINTER, m_seeking->SetPositions(nullptr, kAbsolute, nullptr, AM_SEEKING_NoPositioning));
    EXPECT_EQ(S_OK, m_seeking->GetPositions(&llStart, &llStop));
    EXPECT_EQ(14933333, llStart);
    EXPECT_EQ(24933333, llStop);

    // A range the disc lacks, running backwards or past its end, leaves no range at all (a caller
    // that goes on without checking cannot play what it asked for before); a new Load plays whole.
    for (LPCWSTR pwsz : {L"L/4", L"L/3-2", L"L/2-4"})
    {
        ASSERT_EQ(S_OK, m_source->Load(L"L/2", nullptr));
        EXPECT_EQ(kNotFound, m_source->Load(pwsz, nullptr)) << pwsz;
        pwszRequest = reinterpret_cast<LPOLESTR>(1);
        EXPECT_EQ(E_FAIL, m_source->GetCurFile(&pwszRequest, nullptr));
        EXPECT_EQ(nullptr, pwszRequest);
    }
    ASSERT_EQ(S_OK, ConnectRecorder());
    PlayThrough();
    EXPECT_EQ(0u, m_recorder->Count("Receive"));
    ASSERT_EQ(S_OK, m_source->Load(L"L/3", nullptr));
    EXPECT_EQ(S_OK, m_seeking->GetPositions(&llStart, &llStop));
    EXPECT_EQ(0, llStart);
    EXPECT_EQ(8000000, llStop);
    PlayThrough();
    EXPECT_TRUE(m_recorder->Bytes() == ImageSectors(165, 60));

    // Damaged or missing images; a letter whose image is gone does not fall back to a drive.
    m_image->Resize("disc.bin", 165ull * 2352);  // the last track begins where the file now ends
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_HANDLE_EOF), m_source->Load(L"L/1", nullptr));
    m_image->Remove("disc.bin");
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), m_source->Load(L"L/1", nullptr));
    m_image->Write("disc.cue", "FILE \"disc.bin\" WAVE\r\n  TRACK 01 AUDIO\r\n    INDEX 01 00:00:00\r\n");
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_BAD_FORMAT), m_source->Load(L"L/1", nullptr));
    m_image->Remove("disc.cue");
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), m_source->Load(L"L/1", nullptr));
}

TEST_F(CDAudioSource, ConnectsOnceWithCDAudioAndTheInputPinsAllocatorAndRefusesTheRest)
{
    ASSERT_EQ(S_OK, ConnectRecorder());
    EXPECT_EQ((std::vector<std::string>{"ReceiveConnection", "GetAllocator", "NotifyAllocator(own)"}), m_recorder->Calls());
    AM_MEDIA_TYPE mt = {};
    ASSERT_EQ(S_OK, m_pin->ConnectionMediaType(&mt));
    EXPECT_TRUE(mt.majortype == MEDIATYPE_Audio && mt.subtype == MEDIASUBTYPE_PCM && mt.formattype == FORMAT_WaveFormatEx);
    const WAVEFORMATEX expected = {WAVE_FORMAT_PCM, 2, 44100, 176400, 4, 16, 0};
    EXPECT_TRUE(mt.cbFormat >= sizeof(expected) && std::memcmp(&expected, mt.pbFormat, sizeof(expected)) == 0);
    CoTaskMemFree(mt.pbFormat);
    ComPtr<CRecordingPin> second;
    Adopt(second, new CRecordingPin(CRecordingPin::Options()));
    EXPECT_EQ(VFW_E_ALREADY_CONNECTED, m_pin->Connect(static_cast<IPin*>(second.Get()), nullptr));
    EXPECT_EQ(S_OK, m_filter->Pause());
    EXPECT_EQ(VFW_E_NOT_STOPPED, m_pin->Disconnect());
    EXPECT_EQ(S_OK, m_filter->Stop());
    EXPECT_EQ(S_OK, m_pin->Disconnect());
    IPin* pPeer = m_pin.Get();
    EXPECT_EQ(VFW_E_NOT_CONNECTED, m_pin->ConnectedTo(&pPeer));
    EXPECT_EQ(nullptr, pPeer);
    EXPECT_EQ(VFW_E_NOT_CONNECTED, m_pin->ConnectionMediaType(&mt));
    EXPECT_TRUE(mt.majortype == GUID_NULL && mt.pbFormat == nullptr);

    // The input pin refuses the type: its code, and nothing more is asked of it. No IMemInputPin:
    // the input pin hears that the connection is off.
    CRecordingPin::Options options;
    options.hrReceiveConnection = VFW_E_TYPE_NOT_ACCEPTED;
    EXPECT_EQ(VFW_E_TYPE_NOT_ACCEPTED, ConnectRecorder(options));
    EXPECT_EQ(1u, m_recorder->Calls().size());
    options.hrReceiveConnection = S_OK;
    options.bMemInput = false;
    EXPECT_EQ(VFW_E_NO_TRANSPORT, ConnectRecorder(options));
    EXPECT_EQ("Disconnect", m_recorder->Calls().back());
    EXPECT_EQ(VFW_E_NOT_CONNECTED, m_pin->ConnectedTo(&pPeer));
    // Another type is refused before the input pin is asked; so are an output pin, a null pin,
    // and any pin while the filter is not stopped. The pin refused holds nothing of the filter.
    mt = AM_MEDIA_TYPE();
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
    PlayThrough();
    std::vector<std::string> calls = m_recorder->Calls();
    ASSERT_EQ(1u + 17 + 1, calls.size());  // 135 sectors, 8 a sample
    EXPECT_EQ(Segment(0, 135), calls[0]);
    for (uint32_t i = 0; i < 17; ++i)
        EXPECT_EQ(Received(i * 8, std::min(i * 8 + 8, 135u), i == 0), calls[1 + i]);
    EXPECT_EQ("EndOfStream", calls.back());
    std::vector<uint8_t> expected = ImageSectors(75, 135);
    std::fill(expected.begin() + 45 * 2352, expected.begin() + 75 * 2352, 0);
    EXPECT_TRUE(m_recorder->Bytes() == expected);
    ULONGLONG cbDelivered = 0;
    ASSERT_EQ(S_OK, m_config->GetDeliveredBytes(&cbDelivered));
    EXPECT_EQ(135u * 2352, cbDelivered);

    // From track 4's start to a stop inside a sample, which cuts it; stream time starts again.
    LONGLONG llStart = CTrackRange::TimeOf(75), llStop = CTrackRange::TimeOf(75 + 45);
    ASSERT_EQ(S_OK, m_seeking->SetPositions(&llStart, kAbsolute, &llStop, kAbsolute));
    PlayThrough();
    calls = m_recorder->Calls();
    ASSERT_EQ(1u + 6 + 1, calls.size());
    EXPECT_EQ(Segment(75, 120), calls[0]);
    EXPECT_EQ(Received(0, 8, true), calls[1]);
    EXPECT_EQ(Received(40, 45), calls[6]);
    EXPECT_TRUE(m_recorder->Bytes() == ImageSectors(150, 45));
}

TEST_F(CDAudioSource, SeekingOrStoppingWhileDeliveryWaitsForABufferReturnsAtOnce)
{
    ASSERT_TRUE(UseImage(L'S'));
    ASSERT_EQ(S_OK, m_source->Load(L"S/1-3", nullptr));
    // Downstream keeps every sample, as a renderer queues them: the buffers run out and delivery
    // waits for one. A seek through the pin, as a renderer passes a graph's on, flushes them.
    CRecordingPin::Options options;
    options.bKeepSamples = true;
    ASSERT_EQ(S_OK, ConnectRecorder(options));
    ASSERT_EQ(S_OK, m_filter->Run(0));
    ASSERT_TRUE(m_recorder->WaitForCall("Receive", 4));
    m_recorder->ClearRecords();
    LONGLONG llStart = CTrackRange::TimeOf(1), llStop = CTrackRange::TimeOf(200), llCurrent = 0;
    ComPtr<IMediaSeeking> pinSeeking;
    ASSERT_EQ(S_OK, QueryTo(m_pin, IID_IMediaSeeking, pinSeeking));
    DWORD dwStart = GetTickCount();
    ASSERT_EQ(S_OK, pinSeeking->SetPositions(&llStart, kAbsolute, &llStop, kAbsolute));
    EXPECT_LT(GetTickCount() - dwStart, 2000u);
    ASSERT_TRUE(m_recorder->WaitForCall("Receive", 4));
    Sleep(100);
    EXPECT_EQ((std::vector<std::string>{"BeginFlush", "EndFlush", Segment(1, 200), Received(0, 8, true), Received(8, 16),
                                        Received(16, 24), Received(24, 32)}), m_recorder->Calls()) << "four buffers";
    EXPECT_TRUE(m_recorder->Bytes() == ImageSectors(1, 32));
    ASSERT_EQ(S_OK, m_seeking->GetCurrentPosition(&llCurrent));  // where delivery has got to
    EXPECT_EQ(CTrackRange::TimeOf(1 + 32), llCurrent);
    dwStart = GetTickCount();
    ASSERT_EQ(S_OK, m_filter->Stop());
    EXPECT_LT(GetTickCount() - dwStart, 2000u);
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

// Connected to the DirectSound renderer as the engine connects it: stopped while the renderer
// holds a sample in Receive, played to completion, and aborted by a read fault.
TEST_F(CDAudioSource, PlaysInARealGraphToCompletionAndAbortsOnAReadFault)
{
    ASSERT_TRUE(UseImage(L'H'));
    ASSERT_EQ(S_OK, m_source->Load(L"H/1-3", nullptr));
    ComPtr<IGraphBuilder> graph;
    ComPtr<IMediaControl> control;
    ComPtr<IMediaEvent> events;
    ComPtr<IMediaSeeking> seeking;
    ComPtr<IBaseFilter> renderer;
    ComPtr<IEnumPins> pins;
    ComPtr<IPin> input;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder, &graph));
    ASSERT_EQ(S_OK, QueryTo(graph, IID_IMediaControl, control));
    ASSERT_EQ(S_OK, QueryTo(graph, IID_IMediaEvent, events));
    ASSERT_EQ(S_OK, QueryTo(graph, IID_IMediaSeeking, seeking));
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_DSoundRender, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter, &renderer));
    ASSERT_EQ(S_OK, renderer->EnumPins(&pins));
    ASSERT_EQ(S_OK, pins->Next(1, &input, nullptr));
    ASSERT_EQ(S_OK, graph->AddFilter(m_filter.Get(), L"CD Audio Source"));
    ASSERT_EQ(S_OK, graph->AddFilter(renderer.Get(), L"Audio Renderer"));
    ASSERT_EQ(S_OK, graph->ConnectDirect(m_pin.Get(), input.Get(), nullptr)) << "check the ALSA null device";
    ULONGLONG cbDelivered = 0;
    LONG_PTR lParam1 = 0, lParam2 = 0;
    auto waitForEnd = [&] {  // the next completion or abort, its first parameter, what was delivered
        long lCode = 0;
        for (const DWORD dwStart = GetTickCount(); GetTickCount() - dwStart < 20000;)
            if (events->GetEvent(&lCode, &lParam1, &lParam2, 100) == S_OK && S_OK == events->FreeEventParams(lCode, lParam1, lParam2) &&
                (lCode == EC_COMPLETE || lCode == EC_ERRORABORT || lCode == EC_USERABORT))
                break;
        EXPECT_EQ(S_OK, m_config->GetDeliveredBytes(&cbDelivered));
        return lCode;
    };
    ASSERT_TRUE(SUCCEEDED(control->Pause()));
    OAFilterState state = State_Stopped;
    ASSERT_EQ(S_OK, control->GetState(10000, &state));
    const DWORD dwStart = GetTickCount();
    ASSERT_EQ(S_OK, control->Stop());
    EXPECT_LT(GetTickCount() - dwStart, 2000u);

    ASSERT_EQ(S_OK, m_source->Load(L"H/1-3", nullptr));
    ASSERT_TRUE(SUCCEEDED(control->Run()));
    EXPECT_EQ(EC_COMPLETE, waitForEnd());
    EXPECT_EQ(225u * 2352, cbDelivered);
    ASSERT_EQ(S_OK, control->Stop());
    // The image loses its end after the Load: the graph hears the read fault, and the renderer
    // gets no more than the whole sectors before it.
    ASSERT_EQ(S_OK, m_source->Load(L"H/1-3", nullptr));
    LONGLONG llStart = 0;
    ASSERT_EQ(S_OK, seeking->SetPositions(&llStart, kAbsolute, nullptr, AM_SEEKING_NoPositioning));
    m_image->Resize("disc.bin", 100u * 2352);
    ASSERT_TRUE(SUCCEEDED(control->Run()));
    EXPECT_EQ(EC_ERRORABORT, waitForEnd());
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_READ_FAULT), static_cast<HRESULT>(lParam1));
    EXPECT_TRUE(cbDelivered % 2352 == 0 && cbDelivered <= 100u * 2352) << cbDelivered;
    ASSERT_EQ(S_OK, control->Stop());
    ASSERT_EQ(S_OK, graph->RemoveFilter(m_filter.Get()));  // leaving the graph disconnects the filter
}

} // namespace
