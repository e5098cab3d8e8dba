// The filter as a COM object, before any sample flows: its interfaces and reference counts, its
// pin and media type, Load and GetCurFile with their exact codes, its states, its seeking
// interface while stopped, and how its pin connects (allocator negotiation and refusals).
#include <windows.h>

#include <dshow.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "CDiscImageWriter.h"
#include "CFilterFixture.h"
#include "CImageDrive.h"
#include "cdimage/CDiscImageSetting.h"
#include "cdsource/CCDMediaType.h"
#include "cdsource/CTrackRange.h"

namespace {

const HRESULT kNotFound = HRESULT_FROM_WIN32(ERROR_NOT_FOUND);

using FilterObject = CFilterFixture;

TEST_F(FilterObject, AnswersItsInterfacesWithOneIdentity)
{
    CComPtr<IUnknown> identity;
    ASSERT_EQ(S_OK, m_filter.QueryInterface(IID_IUnknown, identity));
    for (REFIID riid : {IID_IPersist, IID_IMediaFilter, IID_IBaseFilter, IID_IFileSourceFilter, IID_IMediaSeeking,
                        IID_ICDAudioSourceConfig})
    {
        CComPtr<IUnknown> p;
        ASSERT_EQ(S_OK, m_filter->QueryInterface(riid, p.Out()));
        CComPtr<IUnknown> back;
        ASSERT_EQ(S_OK, p.QueryInterface(IID_IUnknown, back));
        EXPECT_EQ(identity.Get(), back.Get());
    }
    void* pv = reinterpret_cast<void*>(1);
    EXPECT_EQ(E_NOINTERFACE, m_filter->QueryInterface(IID_IPin, &pv));
    EXPECT_EQ(nullptr, pv);
    EXPECT_EQ(E_NOINTERFACE, m_filter->QueryInterface(IID_IAMFilterMiscFlags, &pv));
    EXPECT_EQ(E_POINTER, m_filter->QueryInterface(IID_IBaseFilter, nullptr));

    CLSID clsid = GUID_NULL;
    EXPECT_EQ(S_OK, m_filter->GetClassID(&clsid));
    EXPECT_TRUE(clsid == CLSID_TessalyCDAudioSource);
    EXPECT_EQ(E_POINTER, m_filter->GetClassID(nullptr));
    EXPECT_EQ(E_NOTIMPL, m_filter->QueryVendorInfo(nullptr));

    // The fixture's filter, pin, source and config references, and this case's identity.
    EXPECT_EQ(5u, RefCount(m_filter.Get()));
    identity.Reset();
    EXPECT_EQ(4u, RefCount(m_filter.Get()));
}

TEST_F(FilterObject, HasOneOutputPinThatLivesOnTheFiltersReferences)
{
    CComPtr<IEnumPins> pins;
    ASSERT_EQ(S_OK, m_filter->EnumPins(&pins));
    IPin* apPins[2] = {};
    ULONG cFetched = 0;
    EXPECT_EQ(S_FALSE, pins->Next(2, apPins, &cFetched));
    ASSERT_EQ(1u, cFetched);
    EXPECT_EQ(m_pin.Get(), apPins[0]);
    const ULONG cBefore = RefCount(m_filter.Get());
    apPins[0]->Release();
    EXPECT_EQ(cBefore - 1, RefCount(m_filter.Get()));
    pins.Reset();

    CComPtr<IPin> other;
    EXPECT_EQ(VFW_E_NOT_FOUND, m_filter->FindPin(L"Input", &other));
    EXPECT_FALSE(other);
    EXPECT_EQ(E_POINTER, m_filter->FindPin(L"Output", nullptr));

    PIN_INFO info = {};
    ASSERT_EQ(S_OK, m_pin->QueryPinInfo(&info));
    EXPECT_EQ(std::wstring(L"Output"), info.achName);
    EXPECT_EQ(PINDIR_OUTPUT, info.dir);
    EXPECT_EQ(m_filter.Get(), info.pFilter);
    info.pFilter->Release();
    PIN_DIRECTION direction = PINDIR_INPUT;
    EXPECT_EQ(S_OK, m_pin->QueryDirection(&direction));
    EXPECT_EQ(PINDIR_OUTPUT, direction);
    LPWSTR pwszId = nullptr;
    ASSERT_EQ(S_OK, m_pin->QueryId(&pwszId));
    EXPECT_EQ(std::wstring(L"Output"), pwszId);
    CoTaskMemFree(pwszId);

    // The pin is an object of its own identity whose references are the filter's.
    CComPtr<IUnknown> pinIdentity;
    ASSERT_EQ(S_OK, m_pin.QueryInterface(IID_IUnknown, pinIdentity));
    EXPECT_EQ(static_cast<IUnknown*>(m_pin.Get()), pinIdentity.Get());
    CComPtr<IMediaSeeking> pinSeeking;
    ASSERT_EQ(S_OK, m_pin.QueryInterface(IID_IMediaSeeking, pinSeeking));
    CComPtr<IPin> back;
    ASSERT_EQ(S_OK, pinSeeking.QueryInterface(IID_IPin, back));
    EXPECT_EQ(m_pin.Get(), back.Get());
    CComPtr<IBaseFilter> notThere;
    EXPECT_EQ(E_NOINTERFACE, pinSeeking.QueryInterface(IID_IBaseFilter, notThere));
    EXPECT_EQ(4u + 3, RefCount(m_filter.Get())); // the fixture's four and this case's three
}

TEST_F(FilterObject, OffersAndAcceptsOnlyCDAudio)
{
    CComPtr<IEnumMediaTypes> types;
    ASSERT_EQ(S_OK, m_pin->EnumMediaTypes(&types));
    AM_MEDIA_TYPE* apTypes[2] = {};
    ULONG cFetched = 0;
    ASSERT_EQ(S_FALSE, types->Next(2, apTypes, &cFetched));
    ASSERT_EQ(1u, cFetched);
    AM_MEDIA_TYPE* pmt = apTypes[0];
    EXPECT_TRUE(pmt->majortype == MEDIATYPE_Audio);
    EXPECT_TRUE(pmt->subtype == MEDIASUBTYPE_PCM);
    EXPECT_TRUE(pmt->formattype == FORMAT_WaveFormatEx);
    ASSERT_GE(pmt->cbFormat, sizeof(WAVEFORMATEX));
    const WAVEFORMATEX wfx = *reinterpret_cast<WAVEFORMATEX*>(pmt->pbFormat);
    EXPECT_EQ(WAVE_FORMAT_PCM, wfx.wFormatTag);
    EXPECT_EQ(2, wfx.nChannels);
    EXPECT_EQ(44100u, wfx.nSamplesPerSec);
    EXPECT_EQ(16, wfx.wBitsPerSample);
    EXPECT_EQ(4, wfx.nBlockAlign);
    EXPECT_EQ(176400u, wfx.nAvgBytesPerSec);
    EXPECT_EQ(S_OK, m_pin->QueryAccept(pmt));

    EXPECT_EQ(S_FALSE, types->Next(1, apTypes + 1, nullptr));
    EXPECT_EQ(S_FALSE, types->Skip(1));
    EXPECT_EQ(S_OK, types->Reset());
    EXPECT_EQ(S_OK, types->Skip(1));
    CComPtr<IEnumMediaTypes> clone;
    ASSERT_EQ(S_OK, types->Clone(&clone));
    EXPECT_EQ(S_FALSE, clone->Next(1, apTypes + 1, nullptr)); // the clone is where the original was
    EXPECT_EQ(E_POINTER, types->Next(2, apTypes, nullptr));

    // Anything else is refused: each part of the type in turn.
    auto refused = [&](void (*change)(AM_MEDIA_TYPE&, WAVEFORMATEX&)) {
        AM_MEDIA_TYPE mt = *pmt;
        WAVEFORMATEX format = wfx;
        mt.pbFormat = reinterpret_cast<BYTE*>(&format);
        change(mt, format);
        return m_pin->QueryAccept(&mt) == S_FALSE;
    };
    EXPECT_TRUE(refused([](AM_MEDIA_TYPE& mt, WAVEFORMATEX&) { mt.majortype = MEDIATYPE_Video; }));
    EXPECT_TRUE(refused([](AM_MEDIA_TYPE& mt, WAVEFORMATEX&) { mt.subtype = MEDIASUBTYPE_IEEE_FLOAT; }));
    EXPECT_TRUE(refused([](AM_MEDIA_TYPE& mt, WAVEFORMATEX&) { mt.formattype = FORMAT_None; }));
    EXPECT_TRUE(refused([](AM_MEDIA_TYPE& mt, WAVEFORMATEX&) { mt.cbFormat = 8; }));
    EXPECT_TRUE(refused([](AM_MEDIA_TYPE&, WAVEFORMATEX& f) { f.nSamplesPerSec = 48000; }));
    EXPECT_TRUE(refused([](AM_MEDIA_TYPE&, WAVEFORMATEX& f) { f.nChannels = 1; }));
    EXPECT_TRUE(refused([](AM_MEDIA_TYPE&, WAVEFORMATEX& f) { f.wBitsPerSample = 8; }));
    EXPECT_TRUE(refused([](AM_MEDIA_TYPE&, WAVEFORMATEX& f) { f.wFormatTag = WAVE_FORMAT_IEEE_FLOAT; }));
    EXPECT_EQ(E_POINTER, m_pin->QueryAccept(nullptr));
    CCDMediaType::Delete(pmt);

    AM_MEDIA_TYPE none;
    std::memset(&none, 0xCC, sizeof(none));
    EXPECT_EQ(VFW_E_NOT_CONNECTED, m_pin->ConnectionMediaType(&none));
    EXPECT_TRUE(none.majortype == GUID_NULL && none.pbFormat == nullptr);
    CComPtr<IPin> peer;
    EXPECT_EQ(VFW_E_NOT_CONNECTED, m_pin->ConnectedTo(&peer));
    EXPECT_FALSE(peer);
}

TEST_F(FilterObject, LoadRefusesBadTextWithExactCodesAndKeepsNothing)
{
    EXPECT_EQ(E_POINTER, m_source->Load(nullptr, nullptr));
    for (LPCWSTR pwsz : {L"", L"D", L"D:", L"D:\\track03.cda", L"D/0", L"D/100", L"D/3-", L"D/3 - 4", L"4/3"})
        EXPECT_EQ(E_INVALIDARG, m_source->Load(pwsz, nullptr));
    EXPECT_EQ(kNotFound, m_source->Load(L"D/7-3", nullptr));

    LPOLESTR pwszSpec = reinterpret_cast<LPOLESTR>(1);
    EXPECT_EQ(E_FAIL, m_source->GetCurFile(&pwszSpec, nullptr));
    EXPECT_EQ(nullptr, pwszSpec);
    EXPECT_EQ(E_POINTER, m_source->GetCurFile(nullptr, nullptr));
    ULONGLONG cb = 99;
    EXPECT_EQ(S_OK, m_config->GetDeliveredBytes(&cb));
    EXPECT_EQ(0u, cb);
    EXPECT_EQ(E_POINTER, m_config->GetDeliveredBytes(nullptr));
}

TEST_F(FilterObject, LoadsARangeOfAnImageAndReportsItBack)
{
    CImageDrive drive(L'L', CDiscImageWriter::ThreeTones());
    ASSERT_TRUE(drive.Ready());
    CComPtr<IMediaSeeking> seeking = Get<IMediaSeeking>(IID_IMediaSeeking);

    ASSERT_EQ(S_OK, m_source->Load(L"l/2-3", nullptr));
    LPOLESTR pwszSpec = nullptr;
    AM_MEDIA_TYPE mt = {};
    ASSERT_EQ(S_OK, m_source->GetCurFile(&pwszSpec, &mt));
    EXPECT_EQ(std::wstring(L"l/2-3"), pwszSpec);
    CoTaskMemFree(pwszSpec);
    EXPECT_TRUE(CCDMediaType::Matches(mt));
    CCDMediaType::FreeFormat(&mt);
    LONGLONG llDuration = 0;
    ASSERT_EQ(S_OK, seeking->GetDuration(&llDuration));
    EXPECT_EQ(20000000, llDuration); // 150 sectors: two seconds exactly

    // A track the disc lacks, or a range running past its end, leaves the loaded range alone.
    EXPECT_EQ(kNotFound, m_source->Load(L"L/4", nullptr));
    EXPECT_EQ(kNotFound, m_source->Load(L"L/2-4", nullptr));
    EXPECT_EQ(kNotFound, m_source->Load(L"L/3-2", nullptr));
    ASSERT_EQ(S_OK, m_source->GetCurFile(&pwszSpec, nullptr));
    EXPECT_EQ(std::wstring(L"l/2-3"), pwszSpec);
    CoTaskMemFree(pwszSpec);
    ASSERT_EQ(S_OK, seeking->GetDuration(&llDuration));
    EXPECT_EQ(20000000, llDuration);

    ASSERT_EQ(S_OK, m_source->Load(L"L/1", nullptr));
    ASSERT_EQ(S_OK, seeking->GetDuration(&llDuration));
    EXPECT_EQ(10000000, llDuration);
}

TEST_F(FilterObject, DamagedImagesFailLoadWithTheirCodes)
{
    CImageDrive drive(L'M', CDiscImageWriter::ThreeTones());
    ASSERT_TRUE(drive.Ready());
    drive.Folder().Resize("disc.bin", 120ull * 2352);
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_HANDLE_EOF), m_source->Load(L"M/1", nullptr));
    drive.Folder().Remove("disc.bin");
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), m_source->Load(L"M/1", nullptr));
    drive.Folder().Write("disc.cue", "FILE \"disc.bin\" WAVE\r\n  TRACK 01 AUDIO\r\n    INDEX 01 00:00:00\r\n");
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_BAD_FORMAT), m_source->Load(L"M/1", nullptr));
    LPOLESTR pwszSpec = nullptr;
    EXPECT_EQ(E_FAIL, m_source->GetCurFile(&pwszSpec, nullptr));
}

TEST_F(FilterObject, ALetterWithNoImageAndNoDriveFailsAndTheFilterStaysUsable)
{
    ASSERT_EQ(ERROR_SUCCESS, CDiscImageSetting::Clear(L'B'));
    const HRESULT hr = m_source->Load(L"B/1", nullptr);
    std::printf("Load(B/1) without a drive: hr = 0x%08lx\n", static_cast<unsigned long>(hr));
    EXPECT_TRUE(FAILED(hr));
    EXPECT_EQ(FACILITY_WIN32, HRESULT_FACILITY(hr));

    CImageDrive drive(L'A', CDiscImageWriter::ThreeTones());
    ASSERT_TRUE(drive.Ready());
    EXPECT_EQ(S_OK, m_source->Load(L"A/1-3", nullptr));
    EXPECT_EQ(S_OK, ConnectRecorder());
    EXPECT_EQ(S_OK, m_filter->Pause());
    EXPECT_TRUE(m_recorder->WaitForCall("EndOfStream", 1, 10000));
    EXPECT_EQ(225ull * 2352, m_recorder->AcceptedBytes());
}

TEST_F(FilterObject, ReadModeTakesTheTwoModesOnly)
{
    EXPECT_EQ(S_OK, m_config->SetReadMode(CDAudioRead_Raw));
    EXPECT_EQ(S_OK, m_config->SetReadMode(CDAudioRead_Default));
    EXPECT_EQ(E_INVALIDARG, m_config->SetReadMode(2));
    EXPECT_EQ(E_INVALIDARG, m_config->SetReadMode(0xFFFFFFFF));
}

TEST_F(FilterObject, StatesClockAndGraphMembership)
{
    FILTER_STATE state = State_Running;
    EXPECT_EQ(S_OK, m_filter->GetState(0, &state));
    EXPECT_EQ(State_Stopped, state);
    EXPECT_EQ(E_POINTER, m_filter->GetState(0, nullptr));

    // An unconnected filter changes state with nothing to deliver; Load waits for Stop.
    EXPECT_EQ(S_OK, m_filter->Pause());
    EXPECT_EQ(S_OK, m_filter->GetState(0, &state));
    EXPECT_EQ(State_Paused, state);
    EXPECT_EQ(VFW_E_NOT_STOPPED, m_source->Load(L"D/1", nullptr));
    EXPECT_EQ(S_OK, m_filter->Run(0));
    EXPECT_EQ(S_OK, m_filter->GetState(0, &state));
    EXPECT_EQ(State_Running, state);
    EXPECT_EQ(VFW_E_NOT_STOPPED, m_source->Load(L"D/1", nullptr));
    EXPECT_EQ(S_OK, m_filter->Stop());
    EXPECT_EQ(kNotFound, m_source->Load(L"D/2-1", nullptr)); // parsed again once stopped
    EXPECT_EQ(S_OK, m_filter->Run(0));                      // straight from stopped
    EXPECT_EQ(S_OK, m_filter->Stop());

    CComPtr<IReferenceClock> clock;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_SystemClock, nullptr, CLSCTX_INPROC_SERVER, IID_IReferenceClock, clock.Out()));
    const ULONG cClock = RefCount(clock.Get());
    EXPECT_EQ(S_OK, m_filter->SetSyncSource(clock.Get()));
    EXPECT_EQ(cClock + 1, RefCount(clock.Get()));
    CComPtr<IReferenceClock> got;
    EXPECT_EQ(S_OK, m_filter->GetSyncSource(&got));
    EXPECT_EQ(clock.Get(), got.Get());
    got.Reset();
    EXPECT_EQ(S_OK, m_filter->SetSyncSource(nullptr));
    EXPECT_EQ(cClock, RefCount(clock.Get()));
    EXPECT_EQ(S_OK, m_filter->GetSyncSource(&got));
    EXPECT_FALSE(got);

    CComPtr<IFilterGraph> graph;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IFilterGraph, graph.Out()));
    const ULONG cGraph = RefCount(graph.Get());
    EXPECT_EQ(S_OK, m_filter->JoinFilterGraph(graph.Get(), L"CD source"));
    EXPECT_EQ(cGraph, RefCount(graph.Get())); // the graph holds the filter, not the other way round
    FILTER_INFO info = {};
    ASSERT_EQ(S_OK, m_filter->QueryFilterInfo(&info));
    EXPECT_EQ(std::wstring(L"CD source"), info.achName);
    EXPECT_EQ(graph.Get(), info.pGraph);
    info.pGraph->Release();
    EXPECT_EQ(S_OK, m_filter->JoinFilterGraph(nullptr, nullptr));
    ASSERT_EQ(S_OK, m_filter->QueryFilterInfo(&info));
    EXPECT_EQ(nullptr, info.pGraph);
    EXPECT_EQ(std::wstring(), info.achName);
}

TEST_F(FilterObject, SeekingWhileStoppedInMediaTimeOnly)
{
    CImageDrive drive(L'E', CDiscImageWriter::ThreeTones());
    ASSERT_TRUE(drive.Ready());
    CComPtr<IMediaSeeking> seeking = Get<IMediaSeeking>(IID_IMediaSeeking);
    CComPtr<IMediaSeeking> pinSeeking;
    ASSERT_EQ(S_OK, m_pin.QueryInterface(IID_IMediaSeeking, pinSeeking));

    LONGLONG llDuration = -1, llCurrent = -1, llStop = -1, llEarliest = -1, llLatest = -1;
    EXPECT_EQ(S_OK, seeking->GetDuration(&llDuration));
    EXPECT_EQ(0, llDuration); // nothing loaded
    ASSERT_EQ(S_OK, m_source->Load(L"E/1-3", nullptr));
    EXPECT_EQ(S_OK, pinSeeking->GetDuration(&llDuration));
    EXPECT_EQ(30000000, llDuration);
    EXPECT_EQ(S_OK, seeking->GetAvailable(&llEarliest, &llLatest));
    EXPECT_EQ(0, llEarliest);
    EXPECT_EQ(30000000, llLatest);
    EXPECT_EQ(S_OK, seeking->GetPositions(&llCurrent, &llStop));
    EXPECT_EQ(0, llCurrent);
    EXPECT_EQ(30000000, llStop);

    DWORD dwCaps = 0;
    EXPECT_EQ(S_OK, seeking->GetCapabilities(&dwCaps));
    EXPECT_EQ(static_cast<DWORD>(AM_SEEKING_CanSeekAbsolute | AM_SEEKING_CanSeekForwards | AM_SEEKING_CanSeekBackwards |
                                 AM_SEEKING_CanGetCurrentPos | AM_SEEKING_CanGetStopPos | AM_SEEKING_CanGetDuration),
              dwCaps);
    dwCaps = AM_SEEKING_CanSeekAbsolute | AM_SEEKING_CanPlayBackwards;
    EXPECT_EQ(S_FALSE, seeking->CheckCapabilities(&dwCaps));
    EXPECT_EQ(static_cast<DWORD>(AM_SEEKING_CanSeekAbsolute), dwCaps);
    dwCaps = AM_SEEKING_CanPlayBackwards;
    EXPECT_EQ(E_FAIL, seeking->CheckCapabilities(&dwCaps));

    GUID format = GUID_NULL;
    EXPECT_EQ(S_OK, seeking->GetTimeFormat(&format));
    EXPECT_TRUE(format == TIME_FORMAT_MEDIA_TIME);
    EXPECT_EQ(S_OK, seeking->IsFormatSupported(&TIME_FORMAT_MEDIA_TIME));
    EXPECT_EQ(S_FALSE, seeking->IsFormatSupported(&TIME_FORMAT_SAMPLE));
    EXPECT_EQ(S_OK, seeking->SetTimeFormat(&TIME_FORMAT_MEDIA_TIME));
    EXPECT_EQ(E_INVALIDARG, seeking->SetTimeFormat(&TIME_FORMAT_FRAME));
    EXPECT_EQ(S_FALSE, seeking->IsUsingTimeFormat(&TIME_FORMAT_BYTE));
    LONGLONG llTarget = 0;
    EXPECT_EQ(S_OK, seeking->ConvertTimeFormat(&llTarget, nullptr, 1234, &TIME_FORMAT_MEDIA_TIME));
    EXPECT_EQ(1234, llTarget);
    EXPECT_EQ(E_INVALIDARG, seeking->ConvertTimeFormat(&llTarget, &TIME_FORMAT_SAMPLE, 1234, nullptr));
    double dRate = 0;
    EXPECT_EQ(S_OK, seeking->GetRate(&dRate));
    EXPECT_EQ(1.0, dRate);
    EXPECT_EQ(S_OK, seeking->SetRate(1.0));
    EXPECT_EQ(E_INVALIDARG, seeking->SetRate(2.0));

    // Absolute, in whole sectors: 1.5 s is sector 112.5 and 2.5 s sector 187.5, so the start is
    // sector 112, the stop sector 187, and both say so.
    LONGLONG llStart = 15000000;
    llStop = 25000000;
    EXPECT_EQ(S_OK, seeking->SetPositions(&llStart, AM_SEEKING_AbsolutePositioning | AM_SEEKING_ReturnTime, &llStop,
                                          AM_SEEKING_AbsolutePositioning | AM_SEEKING_ReturnTime));
    EXPECT_EQ(14933333, llStart);
    EXPECT_EQ(24933333, llStop);
    EXPECT_EQ(S_OK, pinSeeking->GetCurrentPosition(&llCurrent)); // the pin sees the same positions
    EXPECT_EQ(14933333, llCurrent);
    EXPECT_EQ(S_OK, pinSeeking->GetStopPosition(&llStop));
    EXPECT_EQ(24933333, llStop);

    // Relative to where it is; the stop is left alone without positioning.
    llStart = -10000000;
    EXPECT_EQ(S_OK, pinSeeking->SetPositions(&llStart, AM_SEEKING_RelativePositioning, nullptr, AM_SEEKING_NoPositioning));
    EXPECT_EQ(S_OK, seeking->GetPositions(&llCurrent, &llStop));
    EXPECT_EQ(CTrackRange::TimeOf(37), llCurrent);
    EXPECT_EQ(24933333, llStop);
    // Incremental stop: from the new start.
    llStart = 0;
    llStop = 10000000;
    EXPECT_EQ(S_OK, seeking->SetPositions(&llStart, AM_SEEKING_AbsolutePositioning, &llStop,
                                          AM_SEEKING_IncrementalPositioning | AM_SEEKING_ReturnTime));
    EXPECT_EQ(10000000, llStop);
    // Relative stop: from the stop (1 s + 0.5 s: sector 112 again).
    llStop = 5000000;
    EXPECT_EQ(S_OK, seeking->SetPositions(nullptr, AM_SEEKING_NoPositioning, &llStop,
                                          AM_SEEKING_RelativePositioning | AM_SEEKING_ReturnTime));
    EXPECT_EQ(14933333, llStop);

    // Beyond the ends: taken as the ends.
    llStart = -5;
    llStop = 99000000000LL;
    EXPECT_EQ(S_OK, seeking->SetPositions(&llStart, AM_SEEKING_AbsolutePositioning | AM_SEEKING_ReturnTime, &llStop,
                                          AM_SEEKING_AbsolutePositioning | AM_SEEKING_ReturnTime));
    EXPECT_EQ(0, llStart);
    EXPECT_EQ(30000000, llStop);

    // Refusals leave the positions as they were.
    llStart = 20000000;
    llStop = 10000000;
    EXPECT_EQ(E_INVALIDARG, seeking->SetPositions(&llStart, AM_SEEKING_AbsolutePositioning, &llStop,
                                                  AM_SEEKING_AbsolutePositioning));
    EXPECT_EQ(E_INVALIDARG, seeking->SetPositions(&llStart, AM_SEEKING_IncrementalPositioning, nullptr,
                                                  AM_SEEKING_NoPositioning));
    EXPECT_EQ(E_POINTER, seeking->SetPositions(nullptr, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning));
    EXPECT_EQ(E_POINTER, seeking->GetDuration(nullptr));
    EXPECT_EQ(E_POINTER, seeking->GetPositions(nullptr, nullptr));
    EXPECT_EQ(S_OK, seeking->GetPositions(&llCurrent, &llStop));
    EXPECT_EQ(0, llCurrent);
    EXPECT_EQ(30000000, llStop);

    // A new Load goes back to the whole of its range.
    llStart = 10000000;
    EXPECT_EQ(S_OK, seeking->SetPositions(&llStart, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning));
    ASSERT_EQ(S_OK, m_source->Load(L"E/3", nullptr));
    EXPECT_EQ(S_OK, seeking->GetPositions(&llCurrent, &llStop));
    EXPECT_EQ(0, llCurrent);
    EXPECT_EQ(8000000, llStop);
}

using PinConnection = CFilterFixture;

TEST_F(PinConnection, TakesTheInputPinsAllocatorSizedForWholeSectors)
{
    CRecordingPin::Options options;
    options.bHasRequirements = true;
    options.requirements.cBuffers = 6;
    options.requirements.cbBuffer = 4000;
    options.requirements.cbAlign = 16;
    ASSERT_EQ(S_OK, ConnectRecorder(options));
    const std::vector<std::string> calls = m_recorder->Calls();
    ASSERT_EQ(3u, calls.size());
    EXPECT_EQ("ReceiveConnection", calls[0]);
    EXPECT_EQ("GetAllocator", calls[1]);
    EXPECT_EQ("NotifyAllocator(own)", calls[2]);
    const ALLOCATOR_PROPERTIES props = m_recorder->NotifiedProperties();
    EXPECT_EQ(6, props.cBuffers);
    EXPECT_EQ(8 * 2352, props.cbBuffer); // a little more than a tenth of a second
    EXPECT_EQ(16, props.cbAlign);

    const AM_MEDIA_TYPE offered = m_recorder->ConnectedType();
    EXPECT_TRUE(offered.majortype == MEDIATYPE_Audio && offered.subtype == MEDIASUBTYPE_PCM &&
                offered.formattype == FORMAT_WaveFormatEx);
    EXPECT_EQ(44100u, m_recorder->ConnectedFormat().nSamplesPerSec);
    EXPECT_EQ(2, m_recorder->ConnectedFormat().nChannels);
    CComPtr<IPin> peer;
    ASSERT_EQ(S_OK, m_pin->ConnectedTo(&peer));
    EXPECT_EQ(static_cast<IPin*>(m_recorder.Get()), peer.Get());
    peer.Reset();
    AM_MEDIA_TYPE mt = {};
    ASSERT_EQ(S_OK, m_pin->ConnectionMediaType(&mt));
    EXPECT_TRUE(CCDMediaType::Matches(mt));
    CCDMediaType::FreeFormat(&mt);

    CComPtr<CRecordingPin> second;
    second.Attach(new CRecordingPin(CRecordingPin::Options()));
    EXPECT_EQ(VFW_E_ALREADY_CONNECTED, m_pin->Connect(static_cast<IPin*>(second.Get()), nullptr));
    EXPECT_TRUE(second->Calls().empty());

    EXPECT_EQ(S_OK, m_filter->Pause());
    EXPECT_EQ(VFW_E_NOT_STOPPED, m_pin->Disconnect());
    EXPECT_EQ(S_OK, m_filter->Stop());
    EXPECT_EQ(S_OK, m_pin->Disconnect());
    EXPECT_EQ(S_FALSE, m_pin->Disconnect());
    EXPECT_EQ(VFW_E_NOT_CONNECTED, m_pin->ConnectedTo(&peer));
}

TEST_F(PinConnection, BringsItsOwnAllocatorWhenTheInputPinHasNone)
{
    CRecordingPin::Options options;
    options.bOffersAllocator = false;
    options.bHasRequirements = true;
    options.requirements.cbBuffer = 3000; // room for one sector only
    ASSERT_EQ(S_OK, ConnectRecorder(options));
    EXPECT_EQ("NotifyAllocator(other)", m_recorder->Calls().back());
    const ALLOCATOR_PROPERTIES props = m_recorder->NotifiedProperties();
    EXPECT_EQ(4, props.cBuffers);
    EXPECT_EQ(8 * 2352, props.cbBuffer);
}

TEST_F(PinConnection, RefusalsLeaveBothPinsUnconnected)
{
    // The input pin refuses the type: its code, and nothing more is asked of it.
    CRecordingPin::Options refusing;
    refusing.hrReceiveConnection = VFW_E_TYPE_NOT_ACCEPTED;
    EXPECT_EQ(VFW_E_TYPE_NOT_ACCEPTED, ConnectRecorder(refusing));
    EXPECT_EQ(1u, m_recorder->Calls().size());
    DisconnectRecorder();

    // No IMemInputPin: no transport, and the input pin hears the connection is off.
    CRecordingPin::Options noTransport;
    noTransport.bMemInput = false;
    EXPECT_EQ(VFW_E_NO_TRANSPORT, ConnectRecorder(noTransport));
    EXPECT_EQ("Disconnect", m_recorder->Calls().back());
    DisconnectRecorder();

    // Every allocator refused: the refusal, after trying the input's and one of our own.
    CRecordingPin::Options noAllocator;
    noAllocator.hrNotifyAllocator = E_NOTIMPL;
    EXPECT_EQ(E_NOTIMPL, ConnectRecorder(noAllocator));
    EXPECT_EQ(1u, m_recorder->Count("NotifyAllocator(own)"));
    EXPECT_EQ(1u, m_recorder->Count("NotifyAllocator(other)"));
    EXPECT_EQ("Disconnect", m_recorder->Calls().back());
    CComPtr<IPin> peer;
    EXPECT_EQ(VFW_E_NOT_CONNECTED, m_pin->ConnectedTo(&peer));
    DisconnectRecorder();

    // A type other than ours is refused before the input pin is asked; a partial one of ours is not.
    m_recorder.Attach(new CRecordingPin(CRecordingPin::Options()));
    AM_MEDIA_TYPE mt = {};
    mt.majortype = MEDIATYPE_Video;
    EXPECT_EQ(VFW_E_TYPE_NOT_ACCEPTED, m_pin->Connect(static_cast<IPin*>(m_recorder.Get()), &mt));
    EXPECT_TRUE(m_recorder->Calls().empty());
    mt.majortype = MEDIATYPE_Audio;
    mt.subtype = MEDIASUBTYPE_PCM;
    EXPECT_EQ(S_OK, m_pin->Connect(static_cast<IPin*>(m_recorder.Get()), &mt));
    DisconnectRecorder();

    // Another output pin, a null pin, a paused filter.
    CComPtr<IBaseFilter> other = CreateFilter();
    CComPtr<IPin> otherOutput;
    ASSERT_EQ(S_OK, other->FindPin(L"Output", &otherOutput));
    EXPECT_EQ(VFW_E_INVALID_DIRECTION, m_pin->Connect(otherOutput.Get(), nullptr));
    EXPECT_EQ(E_POINTER, m_pin->Connect(nullptr, nullptr));
    EXPECT_EQ(E_UNEXPECTED, otherOutput->ReceiveConnection(m_pin.Get(), nullptr));
    ASSERT_EQ(S_OK, m_filter->Pause());
    m_recorder.Attach(new CRecordingPin(CRecordingPin::Options()));
    EXPECT_EQ(VFW_E_NOT_STOPPED, m_pin->Connect(static_cast<IPin*>(m_recorder.Get()), nullptr));
    DisconnectRecorder();

    // Stream control never flows into an output pin.
    EXPECT_EQ(E_UNEXPECTED, m_pin->EndOfStream());
    EXPECT_EQ(E_UNEXPECTED, m_pin->BeginFlush());
    EXPECT_EQ(E_UNEXPECTED, m_pin->EndFlush());
    EXPECT_EQ(E_UNEXPECTED, m_pin->NewSegment(0, 0, 1.0));
}

} // namespace
