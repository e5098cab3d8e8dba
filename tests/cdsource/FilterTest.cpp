// The filter as a COM object: its identity and reference counts, Load and GetCurFile with their
// exact codes, seeking in whole sectors, and how its pin connects or refuses to.
#include <cstring>
#include <string>

#include "CFilterFixture.h"
#include "cdimage/CDiscImageSetting.h"

namespace {

const HRESULT kNotFound = HRESULT_FROM_WIN32(ERROR_NOT_FOUND);

using FilterObject = CFilterFixture;

TEST_F(FilterObject, OneIdentityOnePinAndEveryReferenceComesBack)
{
    ComPtr<IUnknown> identity;
    ASSERT_EQ(S_OK, QueryTo(m_filter, IID_IUnknown, identity));
    for (REFIID riid : {IID_IPersist, IID_IMediaFilter, IID_IFileSourceFilter, IID_IMediaSeeking, IID_ICDAudioSourceConfig})
    {
        ComPtr<IUnknown> p, back;
        ASSERT_EQ(S_OK, m_filter->QueryInterface(riid, &p));
        ASSERT_EQ(S_OK, QueryTo(p, IID_IUnknown, back));
        EXPECT_EQ(identity.Get(), back.Get());
    }
    void* pv = &pv;
    EXPECT_EQ(E_NOINTERFACE, m_filter->QueryInterface(IID_IPin, &pv));
    EXPECT_EQ(nullptr, pv);
    // The one pin is counted on the filter's references, and the enumerator lets go of it.
    ComPtr<IEnumPins> pins;
    ASSERT_EQ(S_OK, m_filter->EnumPins(&pins));
    IPin* apPins[2] = {};
    ULONG cFetched = 0;
    EXPECT_EQ(S_FALSE, pins->Next(2, apPins, &cFetched));
    ASSERT_EQ(1u, cFetched);
    EXPECT_EQ(m_pin.Get(), apPins[0]);
    pins.Reset();
    EXPECT_EQ(5u + 2, RefCount(m_filter.Get())); // the fixture's five, the identity, the pin
    apPins[0]->Release();
    identity.Reset();
    EXPECT_EQ(5u, RefCount(m_filter.Get()));
    IPin* pOther = m_pin.Get();
    EXPECT_EQ(VFW_E_NOT_FOUND, m_filter->FindPin(L"Input", &pOther));
    EXPECT_EQ(nullptr, pOther);
}

TEST_F(FilterObject, BadInputGetsExactCodesAndClearedOutParameters)
{
    EXPECT_EQ(E_POINTER, m_source->Load(nullptr, nullptr));
    for (LPCWSTR pwsz : {L"", L"D", L"D:", L"D:\\track03.cda", L"D/0", L"D/100", L"D/003", L"D/3-", L"D/3 - 4", L"4/3"})
        EXPECT_EQ(E_INVALIDARG, m_source->Load(pwsz, nullptr)) << pwsz;
    EXPECT_EQ(kNotFound, m_source->Load(L"D/7-3", nullptr)); // runs backwards: no disc has it
    LPOLESTR pwszRequest = reinterpret_cast<LPOLESTR>(1);
    EXPECT_EQ(E_FAIL, m_source->GetCurFile(&pwszRequest, nullptr));
    EXPECT_EQ(nullptr, pwszRequest);
    EXPECT_EQ(E_POINTER, m_source->GetCurFile(nullptr, nullptr));
    EXPECT_EQ(E_INVALIDARG, m_config->SetReadMode(2));
    // An unconnected filter runs with nothing to deliver; Load waits for Stop.
    EXPECT_EQ(S_OK, m_filter->Run(0));
    EXPECT_EQ(VFW_E_NOT_STOPPED, m_source->Load(L"D/1", nullptr));
    EXPECT_EQ(S_OK, m_filter->Stop());
    EXPECT_EQ(kNotFound, m_source->Load(L"D/2-1", nullptr)); // parsed again once stopped
}

TEST_F(FilterObject, ARefusedLoadDropsTheRangeLoadedBefore)
{
    ASSERT_TRUE(UseImage(L'L'));
    ASSERT_EQ(S_OK, m_source->Load(L"l/2-3", nullptr));
    LPOLESTR pwszRequest = nullptr;
    AM_MEDIA_TYPE mt = {};
    ASSERT_EQ(S_OK, m_source->GetCurFile(&pwszRequest, &mt));
    EXPECT_EQ(std::wstring(L"l/2-3"), pwszRequest);
    CoTaskMemFree(pwszRequest);
    EXPECT_TRUE(mt.majortype == MEDIATYPE_Audio && mt.formattype == FORMAT_WaveFormatEx && mt.pbFormat);
    CoTaskMemFree(mt.pbFormat);
    ASSERT_EQ(S_OK, ConnectRecorder());
    ASSERT_EQ(S_OK, m_filter->Pause());
    ASSERT_TRUE(m_recorder->WaitForCall("EndOfStream", 1));
    ASSERT_EQ(S_OK, m_filter->Stop());

    // A track the disc lacks: the filter is left with no range at all, so a caller that goes on
    // without checking cannot play the tracks it asked for before.
    EXPECT_EQ(kNotFound, m_source->Load(L"L/4", nullptr));
    pwszRequest = reinterpret_cast<LPOLESTR>(1);
    EXPECT_EQ(E_FAIL, m_source->GetCurFile(&pwszRequest, nullptr));
    EXPECT_EQ(nullptr, pwszRequest);
    ULONGLONG cbDelivered = 1;
    ASSERT_EQ(S_OK, m_config->GetDeliveredBytes(&cbDelivered));
    EXPECT_EQ(0u, cbDelivered);
    m_recorder->ClearRecords();
    ASSERT_EQ(S_OK, m_filter->Pause());
    ASSERT_TRUE(m_recorder->WaitForCall("EndOfStream", 1));
    EXPECT_EQ(0u, m_recorder->Count("Receive"));
    ASSERT_EQ(S_OK, m_filter->Stop());

    // A range past the disc's end likewise; the next good one plays whole on the same connection.
    ASSERT_EQ(S_OK, m_source->Load(L"L/1", nullptr));
    EXPECT_EQ(kNotFound, m_source->Load(L"L/2-4", nullptr));
    EXPECT_EQ(E_FAIL, m_source->GetCurFile(&pwszRequest, nullptr));
    ASSERT_EQ(S_OK, m_source->Load(L"L/1", nullptr));
    m_recorder->ClearRecords();
    ASSERT_EQ(S_OK, m_filter->Pause());
    ASSERT_TRUE(m_recorder->WaitForCall("EndOfStream", 1));
    EXPECT_TRUE(m_recorder->Bytes() == ImageSectors(0, 75));
}

TEST_F(FilterObject, DamagedOrMissingImagesFailLoadWithTheirCodes)
{
    ASSERT_TRUE(UseImage(L'M'));
    ImageFolder().Resize("disc.bin", 165ull * 2352); // the last track begins where the file now ends
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_HANDLE_EOF), m_source->Load(L"M/1", nullptr));
    ImageFolder().Remove("disc.bin");
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), m_source->Load(L"M/1", nullptr));
    ImageFolder().Write("disc.cue", "FILE \"disc.bin\" WAVE\r\n  TRACK 01 AUDIO\r\n    INDEX 01 00:00:00\r\n");
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_BAD_FORMAT), m_source->Load(L"M/1", nullptr));
    // A letter whose image is gone does not fall back to a drive of that letter.
    ImageFolder().Remove("disc.cue");
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), m_source->Load(L"M/1", nullptr));
    // No image and no such drive: the drive's own Win32 failure.
    ASSERT_EQ(ERROR_SUCCESS, CDiscImageSetting::Clear(L'B'));
    const HRESULT hr = m_source->Load(L"B/1", nullptr);
    EXPECT_TRUE(FAILED(hr) && HRESULT_FACILITY(hr) == FACILITY_WIN32) << std::hex << hr;
    LPOLESTR pwszRequest = nullptr;
    EXPECT_EQ(E_FAIL, m_source->GetCurFile(&pwszRequest, nullptr));
}

TEST_F(FilterObject, SeeksInWholeSectorsOfTheRangeInMediaTimeOnly)
{
    ASSERT_TRUE(UseImage(L'E'));
    ASSERT_EQ(S_OK, m_source->Load(L"E/1-3", nullptr));
    EXPECT_EQ(E_INVALIDARG, m_seeking->SetTimeFormat(&TIME_FORMAT_SAMPLE));
    EXPECT_EQ(E_INVALIDARG, m_seeking->SetRate(2.0));

    // 1.5 s falls in sector 112 and 2.5 s in sector 187: both are taken as those sectors' starts.
    LONGLONG llStart = 15000000, llStop = 25000000, llCurrent = -1;
    const DWORD dwAbsolute = AM_SEEKING_AbsolutePositioning | AM_SEEKING_ReturnTime;
    EXPECT_EQ(S_OK, m_seeking->SetPositions(&llStart, dwAbsolute, &llStop, dwAbsolute));
    EXPECT_EQ(14933333, llStart);
    EXPECT_EQ(24933333, llStop);
    // Refusals leave the positions as they were; a new Load goes back to the whole of its range.
    LONGLONG llLate = 20000000, llEarly = 10000000;
    EXPECT_EQ(E_INVALIDARG, m_seeking->SetPositions(&llLate, dwAbsolute, &llEarly, dwAbsolute));
    EXPECT_EQ(E_POINTER, m_seeking->SetPositions(nullptr, dwAbsolute, nullptr, AM_SEEKING_NoPositioning));
    EXPECT_EQ(S_OK, m_seeking->GetPositions(&llCurrent, &llStop));
    EXPECT_EQ(14933333, llCurrent);
    EXPECT_EQ(24933333, llStop);
    ASSERT_EQ(S_OK, m_source->Load(L"E/3", nullptr));
    EXPECT_EQ(S_OK, m_seeking->GetPositions(&llCurrent, &llStop));
    EXPECT_EQ(0, llCurrent);
    EXPECT_EQ(8000000, llStop);
}

using PinConnection = CFilterFixture;

TEST_F(PinConnection, ConnectsOnceWithCDAudioAndTheInputPinsAllocatorAndRefusesTheRest)
{
    ASSERT_EQ(S_OK, ConnectRecorder());
    EXPECT_EQ((std::vector<std::string>{"ReceiveConnection", "GetAllocator", "NotifyAllocator(own)"}),
              m_recorder->Calls());
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

    // The input pin refuses the type: its code, and nothing more is asked of it.
    CRecordingPin::Options options;
    options.hrReceiveConnection = VFW_E_TYPE_NOT_ACCEPTED;
    EXPECT_EQ(VFW_E_TYPE_NOT_ACCEPTED, ConnectRecorder(options));
    EXPECT_EQ(1u, m_recorder->Calls().size());
    // No IMemInputPin: the input pin hears that the connection is off.
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

} // namespace
