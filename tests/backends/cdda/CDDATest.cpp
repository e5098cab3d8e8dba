// The CD back-end. Against test doubles: the MCI commands that measure a range, how stream
// positions become track positions and where a seek goes. End to end: ranges of a disc image
// standing for drive T, played through the dispatcher, our source filter and the platform's renderer.
#include <gtest/gtest.h>

#include <cstdio>
#include <map>
#include <memory>

#include "CClassObjectRegistration.h"
#include "CDiscImageWriter.h"
#include "CImageFolder.h"
#include "CPlaybackHost.h"
#include "backends/cdda/CDDAGraph.h"
#include "base/EngineMessages.h"
#include "cdimage/CDiscImageSetting.h"
#include "cdsource/CCDSourceServer.h"
#include "cdsource/CDAudioSource.h"
#include "tests/support/CProcessCounts.h"

namespace {

typedef std::vector<std::string> Log;
const ULONGLONG kSectorBytes = 2352;
const ULONG kFrames[] = {75, 120, 40}; // the image's tracks: 1 s, 1.6 s and 0.53 s, rounding to 1, 2 and 1 s

// The CD audio device: the open fails as scripted, a track's packed length is known or out of
// range, and every command is logged as "<command> <device> <flags> <what it names>".
struct Script { MCIERROR openError = 0; std::map<DWORD, DWORD> lengths; Log log; };
struct CRecordingCDAudioDevice : CCDAudioDevice
{
    explicit CRecordingCDAudioDevice(Script* pScript) : m_pScript(pScript) {}
    MCIERROR SendCommand(MCIDEVICEID wDeviceId, UINT uMsg, DWORD_PTR dwFlags, DWORD_PTR dwParam) override
    {
        auto* pOpen = reinterpret_cast<MCI_OPEN_PARMSW*>(dwParam);
        auto* pStatus = reinterpret_cast<MCI_STATUS_PARMS*>(dwParam);
        char sz[96];
        int n = std::snprintf(sz, sizeof sz, "%s %u 0x%lx", uMsg == MCI_OPEN ? "open" : uMsg == MCI_SET ? "set"
                              : uMsg == MCI_STATUS ? "status" : uMsg == MCI_CLOSE ? "close" : "other",
                              wDeviceId, static_cast<unsigned long>(dwFlags));
        if (uMsg == MCI_OPEN)
            std::snprintf(sz + n, sizeof sz - n, " %u %ls", LOWORD(pOpen->lpstrDeviceType), pOpen->lpstrElementName);
        else if (uMsg == MCI_SET)
            std::snprintf(sz + n, sizeof sz - n, " %lu", reinterpret_cast<MCI_SET_PARMS*>(dwParam)->dwTimeFormat);
        else if (uMsg == MCI_STATUS)
            std::snprintf(sz + n, sizeof sz - n, " %lu %lu", pStatus->dwItem, pStatus->dwTrack);
        m_pScript->log.push_back(sz);
        if (uMsg == MCI_OPEN && m_pScript->openError)
            return m_pScript->openError;
        if (uMsg == MCI_OPEN)
        {
            pOpen->wDeviceID = 7;
            return 0;
        }
        const auto found = uMsg == MCI_STATUS ? m_pScript->lengths.find(pStatus->dwTrack) : m_pScript->lengths.end();
        if (found != m_pScript->lengths.end())
            pStatus->dwReturn = found->second;
        return uMsg == MCI_STATUS && found == m_pScript->lengths.end() ? MCIERR_OUTOFRANGE : 0;
    }
    Script* m_pScript;
};

#define NOT_USED(method, params) \
    HRESULT STDMETHODCALLTYPE method params override { return E_NOTIMPL; }

// The graph's seeking as the back-end uses it: a position and available range the test sets, and a
// record of every SetPositions call as "<start in 100 ns> <its flags> <stop flags>".
class CFakeMediaSeeking : public IMediaSeeking
{
public:
    LONGLONG llPosition = 0, llEarliest = 0, llLatest = 0, llDuration = 0;
    HRESULT hrPosition = S_OK, hrAvailable = S_OK;
    Log seeks;

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override
    {
        *ppv = riid == IID_IUnknown || riid == IID_IMediaSeeking ? static_cast<IMediaSeeking*>(this) : nullptr;
        return *ppv ? (AddRef(), S_OK) : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_cRef; }
    ULONG STDMETHODCALLTYPE Release() override { return --m_cRef; } // lives in the fixture
    HRESULT STDMETHODCALLTYPE GetCurrentPosition(LONGLONG* pll) override
    {
        if (SUCCEEDED(hrPosition))
            *pll = llPosition;
        return hrPosition;
    }
    HRESULT STDMETHODCALLTYPE GetAvailable(LONGLONG* pllEarliest, LONGLONG* pllLatest) override
    {
        *pllEarliest = llEarliest;
        *pllLatest = llLatest;
        return hrAvailable;
    }
    HRESULT STDMETHODCALLTYPE GetDuration(LONGLONG* pll) override
    {
        *pll = llDuration;
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE SetPositions(LONGLONG* pllCurrent, DWORD dwFlags, LONGLONG*, DWORD dwStopFlags) override
    {
        seeks.push_back(std::to_string(*pllCurrent) + " " + std::to_string(dwFlags) + " " + std::to_string(dwStopFlags));
        return S_OK;
    }
    NOT_USED(GetCapabilities, (DWORD*)) NOT_USED(CheckCapabilities, (DWORD*)) NOT_USED(IsFormatSupported, (const GUID*))
    NOT_USED(QueryPreferredFormat, (GUID*)) NOT_USED(GetTimeFormat, (GUID*)) NOT_USED(IsUsingTimeFormat, (const GUID*))
    NOT_USED(SetTimeFormat, (const GUID*)) NOT_USED(GetStopPosition, (LONGLONG*)) NOT_USED(SetRate, (double))
    NOT_USED(ConvertTimeFormat, (LONGLONG*, const GUID*, LONGLONG, const GUID*)) NOT_USED(GetRate, (double*))
    NOT_USED(GetPositions, (LONGLONG*, LONGLONG*)) NOT_USED(GetPreroll, (LONGLONG*))
    ULONG m_cRef = 1;
};

struct CDDAGraphProbe : CDDAGraph
{
    using CDDAGraph::CDDAGraph;
    void UseSeeking(IMediaSeeking* pSeeking) { m_pMediaSeek = ComPtr<IMediaSeeking>(pSeeking); }
};

// Our CD audio source filter registered in-process, each one made kept to ask it what reached the
// renderer. A case drives either the back-end alone with its doubles, posting to a message-only
// window of the test's, or hosts: a range opened after another on the same player starts its
// second track where the earlier range's tracks ended, so each range played has a host of its own.
class CDDATest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
        m_pRegistration.reset(new CClassObjectRegistration(CLSID_TessalyCDAudioSource, [this](REFIID riid, void** ppv) {
            ComPtr<IClassFactory> factory;
            HRESULT hr = CCDSourceServer::GetClassObject(CLSID_TessalyCDAudioSource, IID_IClassFactory, &factory);
            if (SUCCEEDED(hr) && SUCCEEDED(hr = factory->CreateInstance(nullptr, riid, ppv)))
                m_filters.push_back(ComPtr<IUnknown>(static_cast<IUnknown*>(*ppv)));
            return hr;
        }));
        ASSERT_EQ(S_OK, m_pRegistration->Registered());
    }
    void TearDown() override
    {
        m_pHost.reset();
        if (m_pGraph)
            m_pGraph->Destroy();
        m_pGraph.reset();
        EXPECT_EQ(1u, m_seeking.m_cRef) << "the back-end kept the graph's seeking";
        m_filters.clear();
        m_pRegistration.reset();
        DestroyWindow(m_hWnd);
        CDiscImageSetting::Clear(L'T');
        CoUninitialize();
    }
    void NewGraph()
    {
        m_hWnd = CreateWindowExW(0, L"STATIC", L"events", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
        m_pGraph.reset(new CDDAGraphProbe([this](WCHAR wcDrive) {
            m_script.log.push_back(std::string("device for ") + static_cast<char>(wcDrive));
            return std::unique_ptr<CCDAudioDevice>(new CRecordingCDAudioDevice(&m_script));
        }));
        ASSERT_EQ(S_OK, m_pGraph->Init());
        m_pGraph->SetEventHandlerWindow(m_hWnd);
    }
    int TakeTrackCompletes() // the track-complete notices posted since the last call
    {
        int n = 0;
        for (MSG msg; PeekMessageW(&msg, m_hWnd, WM_CDDA_TRACK_COMPLETE, WM_CDDA_TRACK_COMPLETE, PM_REMOVE);)
            n += msg.wParam == 0 && msg.lParam == 0;
        return n;
    }
    double CurTime(double dStreamSeconds)
    {
        m_seeking.llPosition = static_cast<LONGLONG>(dStreamSeconds * 10000000);
        double dSeconds = -1.0;
        EXPECT_EQ(0, m_pGraph->GetCurTime(&dSeconds));
        return dSeconds;
    }
    double Duration() // the current track's, from the back-end alone or through the host's player
    {
        double dDuration = -1.0;
        EXPECT_EQ(S_OK, m_pGraph ? m_pGraph->GetDuration(&dDuration) : m_pHost->Player().GetCDDuration(&dDuration));
        return dDuration;
    }
    void NewHost()
    {
        m_filters.clear();
        m_pHost.reset(new CPlaybackHost);
        ASSERT_EQ(S_OK, m_pHost->Player().Init(L""));
    }
    // Drive T becomes a new image (the source filter may still hold the one before open).
    void UseImage(const std::string& stem, bool bDataTrack2 = false)
    {
        std::vector<CDiscImageWriter::Track> tracks = {{440.0, kFrames[0]}, {660.0, kFrames[1]}, {880.0, kFrames[2]}};
        tracks[1].bAudio = !bDataTrack2;
        const std::string cue = CDiscImageWriter::Write(m_folder.Path(), stem, tracks);
        std::wstring wide(cue.size(), L'\0'); // the folder's path is UTF-8
        wide.resize(static_cast<size_t>(MultiByteToWideChar(CP_UTF8, 0, cue.c_str(), static_cast<int>(cue.size()),
                                                            &wide[0], static_cast<int>(wide.size()))));
        ASSERT_EQ(ERROR_SUCCESS, wide.empty() ? ERROR_FILE_NOT_FOUND : CDiscImageSetting::Set(L'T', wide));
    }
    ULONGLONG Delivered()
    {
        ComPtr<ICDAudioSourceConfig> config;
        ULONGLONG cb = 0;
        if (m_filters.size() != 1 || FAILED(QueryTo(m_filters.front(), IID_ICDAudioSourceConfig, config)) ||
            FAILED(config->GetDeliveredBytes(&cb)))
            ADD_FAILURE() << "one source filter, asked " << m_filters.size();
        return cb;
    }
    std::vector<ULONGLONG> After(ULONGLONG start, DWORD dwCode) const // when each event of a kind arrived
    {
        std::vector<ULONGLONG> ticks;
        for (const CPlaybackHost::Event& e : m_pHost->events)
            if (e.dwCode == dwCode)
                ticks.push_back(e.tick - start);
        return ticks;
    }
    // A notice for each track, then completion. The last track's own notice comes only when a
    // progress reading sees the stream past its end before the renderer reports the end of the range.
    void ExpectTracksThenCompletion(size_t nTracks)
    {
        ASSERT_TRUE(m_pHost->PumpUntil([&] { return m_pHost->Count(STREAMING_EVENT_COMPLETE) > 0; }, 15000));
        std::string milestones;
        for (const CPlaybackHost::Event& e : m_pHost->events)
            milestones += e.dwCode == STREAMING_EVENT_PROGRESS ? "" : e.dwCode == STREAMING_EVENT_COMPLETE ? "c"
                          : e.dwCode == STREAMING_EVENT_TRACK_COMPLETE ? "t" : "e";
        EXPECT_TRUE(milestones == std::string(nTracks - 1, 't') + "c" || milestones == std::string(nTracks, 't') + "c")
            << milestones;
    }

    std::unique_ptr<CClassObjectRegistration> m_pRegistration;
    std::vector<ComPtr<IUnknown>> m_filters;
    HWND m_hWnd = nullptr;
    Script m_script;
    CFakeMediaSeeking m_seeking;
    std::unique_ptr<CDDAGraphProbe> m_pGraph;
    CImageFolder m_folder;
    std::unique_ptr<CPlaybackHost> m_pHost;
};

// Tracks 3 and 4 are one frame apart across the point where the whole-second duration rounds up;
// track 5 cannot be measured and counts 0 s.
TEST_F(CDDATest, ARangeIsMeasuredTrackByTrackToTheFrameAndARefusedOneIsNot)
{
    NewGraph();
    m_script.lengths = {{3, MCI_MAKE_MSF(4, 12, 37)}, {4, MCI_MAKE_MSF(4, 12, 38)}};
    EXPECT_EQ(S_OK, m_pGraph->OpenCD(L'D', 3, 5));
    EXPECT_EQ((Log{"device for D", "open 0 0x1200 516 D:", "set 7 0x400 10", "status 7 0x112 1 3",
                   "status 7 0x112 1 4", "status 7 0x112 1 5", "close 7 0x2"}),
              m_script.log);
    m_pGraph->UseSeeking(&m_seeking);
    EXPECT_EQ(252.0, Duration()) << "252 s and 37 frames";
    EXPECT_EQ(0.0, CurTime(253.0));
    EXPECT_EQ(253.0, Duration()) << "252 s and 38 frames";
    EXPECT_EQ(0.0, CurTime(506.0));
    EXPECT_EQ(0.0, Duration());

    m_script.log.clear();
    EXPECT_EQ(1, m_pGraph->OpenCD(L'D', 5, 2));
    EXPECT_TRUE(m_script.log.empty()) << "a reversed range never reaches the device";
    m_script.openError = MCIERR_DEVICE_NOT_READY;
    EXPECT_EQ(1, m_pGraph->OpenCD(L'D', 1, 2));
    EXPECT_EQ((Log{"device for D", "open 0 0x1200 516 D:"}), m_script.log) << "nothing more once the open failed";
}

// Range 1-3 of 100 s, 200 s and 50 s. A seek names whole seconds of the range's stream, clamped to
// what is available or else to the duration. It switches the subtraction of the track's start off
// until the next track change, which then starts the new track at the length of the one that ended.
TEST_F(CDDATest, SeeksGoToWholeSecondsOfTheStreamAndPositionsBecomeTrackPositions)
{
    NewGraph();
    m_script.lengths = {{1, MCI_MAKE_MSF(1, 40, 0)}, {2, MCI_MAKE_MSF(3, 20, 0)}, {3, MCI_MAKE_MSF(0, 50, 0)}};
    ASSERT_EQ(S_OK, m_pGraph->OpenCD(L'D', 1, 3));
    m_pGraph->UseSeeking(&m_seeking);
    m_seeking.llEarliest = 10000000;
    m_seeking.llLatest = 3500000000;
    for (double d : {12.9, 0.5, 1000.0})
        EXPECT_EQ(S_OK, m_pGraph->SetCurTime(d));
    m_seeking.llDuration = 2500000000;
    m_seeking.hrAvailable = E_NOTIMPL;
    for (double d : {120.0, 1000.0})
        EXPECT_EQ(S_OK, m_pGraph->SetCurTime(d));
    m_seeking.hrAvailable = S_OK;
    m_seeking.llEarliest = m_seeking.llLatest = 0; // answered, but nothing
    EXPECT_EQ(S_OK, m_pGraph->SetCurTime(90.0));
    EXPECT_EQ((Log{"120000000 1 0", "10000000 1 0", "3500000000 1 0", "1200000000 1 0", "2500000000 1 0",
                   "900000000 1 0"}),
              m_seeking.seeks);
    const struct { double dStream, dTrack; int nTrackCompletes; const char* pszWhy; } positions[] = {
        {100.5, 0.0, 1, "past track 1, seeked: track 2 starts where track 1 ended"},
        {130.0, 30.0, 0, "in track 2"},
        {150.0, 150.0, 0, "no offset while seeked"},
        {200.5, 0.0, 1, "the stream position is held against track 2's length"},
        {240.0, 40.0, 0, "track 3 starts at 200 s, the length of track 2"},
        {250.0, 50.0, 0, "exactly at the end is not past it"},
        {250.5, 0.0, 1, "the last track's end is posted like the others"},
        {260.0, 10.0, 0, "counted on from the last track's end, with nothing after the range"},
    };
    EXPECT_EQ(0, TakeTrackCompletes());
    for (const auto& p : positions)
    {
        if (p.dStream == 150.0)
        {
            ASSERT_EQ(S_OK, m_pGraph->SetCurTime(150.0));
        }
        EXPECT_EQ(p.dTrack, CurTime(p.dStream)) << p.pszWhy;
        EXPECT_EQ(p.nTrackCompletes, TakeTrackCompletes()) << p.pszWhy;
    }
    EXPECT_EQ(0.0, Duration()) << "past the range there is no current track";
    m_seeking.hrPosition = E_FAIL;
    double dSeconds = 7.0;
    EXPECT_EQ(1, m_pGraph->GetCurTime(&dSeconds)) << "an unavailable position";
    EXPECT_EQ(7.0, dSeconds);
}


// Image, whether track 2 is a data track (it plays as silence of its length), the range.
TEST_F(CDDATest, RangesPlayTrackAfterTrackInRealTimeAndEveryByteReachesTheRenderer)
{
    const struct { const char* pszImage; bool bDataTrack2; WORD wFirst, wLast; } ranges[] = {
        {"disc", false, 1, 3}, {"from2", false, 2, 3}, {"data", true, 1, 3}, {"single", false, 3, 3}};
    const double kRounded[] = {1.0, 2.0, 1.0};
    for (const auto& r : ranges)
    {
        SCOPED_TRACE(r.pszImage);
        NewHost();
        UseImage(r.pszImage, r.bDataTrack2);
        ASSERT_EQ(S_OK, m_pHost->Player().OpenCD(L'T', r.wFirst, r.wLast));
        const ULONGLONG start = GetTickCount64();
        ASSERT_EQ(S_OK, m_pHost->Player().Play());
        ULONGLONG ullFrames = 0;
        for (WORD wTrack = r.wFirst; wTrack <= r.wLast; ++wTrack)
        {
            EXPECT_EQ(kRounded[wTrack - 1], Duration()) << "the current track is " << wTrack;
            ullFrames += kFrames[wTrack - 1];
            const size_t nEnded = wTrack - r.wFirst + 1u;
            if (wTrack == r.wLast)
                break;
            ASSERT_TRUE(m_pHost->PumpUntil([&] { return m_pHost->Count(STREAMING_EVENT_TRACK_COMPLETE) >= nEnded; }, 15000));
            EXPECT_GE(After(start, STREAMING_EVENT_TRACK_COMPLETE)[nEnded - 1], ullFrames * 1000 / 75 - 100)
                << "track " << wTrack << " ends no sooner than its sound";
        }
        ExpectTracksThenCompletion(r.wLast - r.wFirst + 1u);
        const std::vector<ULONGLONG> ends = After(start, STREAMING_EVENT_COMPLETE);
        ASSERT_FALSE(ends.empty());
        // The platform's renderer reports the end with up to half a second of sound still queued.
        EXPECT_GE(ends.front(), ullFrames * 1000 / 75 - 500);
        for (double dProgress : m_pHost->Progress())
            ASSERT_LE(dProgress, 1.65) << "a position inside the current track, not the range";
        EXPECT_EQ(ullFrames * kSectorBytes, Delivered());
    }
}

TEST_F(CDDATest, PauseHoldsASecondPauseResumesASeekMovesAndStopSilences)
{
    NewHost();
    UseImage("disc");
    ASSERT_EQ(S_OK, m_pHost->Player().OpenCD(L'T', 1, 3));
    ASSERT_EQ(S_OK, m_pHost->Player().Play());
    ASSERT_TRUE(m_pHost->PumpUntil([&] { return m_pHost->Progress().size() >= 3; }, 5000));
    ASSERT_EQ(S_OK, m_pHost->Player().Pause());
    const double dPaused = m_pHost->Progress().back();
    size_t nBefore = m_pHost->Progress().size();
    m_pHost->PumpFor(600);
    ASSERT_EQ(S_OK, m_pHost->Player().Pause());
    ASSERT_TRUE(m_pHost->PumpUntil([&] { return m_pHost->Progress().size() > nBefore + 1; }, 5000));
    EXPECT_NEAR(dPaused, m_pHost->Progress()[nBefore], 0.3) << "the 600 ms paused did not pass";

    const double dSeekedFrom = m_pHost->Progress().back();
    nBefore = m_pHost->Progress().size();
    ASSERT_EQ(S_OK, m_pHost->Player().SeekTo(0.0));
    ASSERT_TRUE(m_pHost->PumpUntil([&] { return m_pHost->Progress().size() > nBefore; }, 5000));
    EXPECT_LT(m_pHost->Progress()[nBefore], dSeekedFrom - 0.1) << "back at the start";
    ASSERT_EQ(S_OK, m_pHost->Player().Stop());
    m_pHost->events.clear();
    m_pHost->PumpFor(3000);
    EXPECT_EQ(0u, m_pHost->events.size()) << "no progress, track end or completion once stopped";
    const ULONGLONG start = GetTickCount64();
    ASSERT_EQ(S_OK, m_pHost->Player().Play());
    ExpectTracksThenCompletion(3);
    const std::vector<ULONGLONG> trackEnds = After(start, STREAMING_EVENT_TRACK_COMPLETE);
    ASSERT_FALSE(trackEnds.empty());
    EXPECT_GE(trackEnds.front(), 900u) << "track 1 plays again from its start";

    // A seek forward skips what lies before it: only the range's last 85 frames are still to come,
    // where a seek clamped to the start would deliver the whole range (235 frames) again.
    NewHost();
    UseImage("seek");
    ASSERT_EQ(S_OK, m_pHost->Player().OpenCD(L'T', 1, 3));
    ASSERT_EQ(S_OK, m_pHost->Player().Play());
    ASSERT_TRUE(m_pHost->PumpUntil([&] { return m_pHost->Progress().size() >= 2; }, 5000));
    const ULONGLONG cbBeforeSeek = Delivered();
    m_pHost->events.clear();
    ASSERT_EQ(S_OK, m_pHost->Player().SeekTo(2.0));
    ASSERT_TRUE(m_pHost->PumpUntil([&] { return m_pHost->Count(STREAMING_EVENT_COMPLETE) > 0; }, 15000));
    EXPECT_GE(m_pHost->Count(STREAMING_EVENT_TRACK_COMPLETE), 1u) << "the seek left track 1 behind";
    EXPECT_LT(Delivered() - cbBeforeSeek, (85 + 75) * kSectorBytes);
}

TEST_F(CDDATest, RangesAndImagesThatCannotPlay)
{
    NewHost();
    UseImage("disc");
    EXPECT_EQ(S_FALSE, m_pHost->Player().OpenCD(L'T', 3, 1)) << "reversed";
    m_folder.Resize("disc.bin", 100 * kSectorBytes);
    EXPECT_EQ(S_FALSE, m_pHost->Player().OpenCD(L'T', 1, 3)) << "truncated inside track 2";
    m_folder.Remove("disc.bin");
    EXPECT_EQ(S_FALSE, m_pHost->Player().OpenCD(L'T', 1, 1)) << "the cue sheet names a missing .bin";
    EXPECT_TRUE(m_filters.empty()) << "no source filter for a refused range";
    UseImage("whole"); // tracks the disc does not have measure 0 s; the range opens and plays nothing
    for (WORD wTrack : {0, 4})
    {
        SCOPED_TRACE(wTrack);
        EXPECT_EQ(S_OK, m_pHost->Player().OpenCD(L'T', wTrack, wTrack));
        EXPECT_EQ(0.0, Duration());
        EXPECT_EQ(S_OK, m_pHost->Player().Play());
        m_pHost->PumpFor(1000);
        EXPECT_EQ(0u, Delivered());
    }
}

// Figures are printed; the limits catch a leak per cycle, not the platform's noise.
TEST_F(CDDATest, AHundredOpensOfARangeLeaveHandlesAndMemoryFlat)
{
    NewHost();
    UseImage("disc");
    for (int i = 0; i < 5; ++i)
        ASSERT_EQ(S_OK, m_pHost->Player().OpenCD(L'T', 1, 3));
    m_pHost->PumpFor(100);
    const CProcessCounts before = CProcessCounts::Take();
    for (int i = 0; i < 100; ++i)
    {
        ASSERT_EQ(S_OK, m_pHost->Player().OpenCD(L'T', 1 + i % 2, 3)) << "cycle " << i;
        ASSERT_EQ(S_OK, m_pHost->Player().CloseFile());
    }
    m_pHost->PumpFor(200);
    const CProcessCounts growth = CProcessCounts::Take() - before;
    growth.Print("after 100 range opens and closes");
    EXPECT_LT(growth.lHandles, 30);
    EXPECT_LT(growth.lThreads, 3);
    EXPECT_LT(growth.lPrivateKb, 8 * 1024);
}

} // namespace
