// The CD back-end's own arithmetic and its conversation with the CD audio device: what it sends
// to measure a range, how it reads the packed lengths, how stream positions become positions
// inside a track, and when a track end is posted. The device and the graph's seeking are test
// doubles; the source filter is a recording one.
#include <windows.h>

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "CClassObjectRegistration.h"
#include "CFakeMediaSeeking.h"
#include "CFakeSourceFilter.h"
#include "CRecordingCDAudioDevice.h"
#include "backends/cdda/CDDAGraph.h"
#include "cdsource/CDAudioSource.h"
#include "dispatch/EngineMessages.h"

namespace {

typedef std::vector<std::string> Log;

class CDDAGraphProbe : public CDDAGraph
{
public:
    using CDDAGraph::CDDAGraph;
    void UseSeeking(IMediaSeeking* pSeeking) { m_pMediaSeek = CComPtr<IMediaSeeking>(pSeeking); }
};

const LONGLONG kUnitsPerSecond = 10000000;

LONGLONG At(double dSeconds)
{
    return static_cast<LONGLONG>(dSeconds * kUnitsPerSecond);
}

class CDDAGraphTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
        m_hWnd = CreateWindowExW(0, L"STATIC", L"events", 0, 0, 0, 0, 0, HWND_MESSAGE, nullptr, nullptr, nullptr);
        m_pSource.reset(new CClassObjectRegistration(CLSID_TessalyCDAudioSource, [this](REFIID riid, void** ppv) {
            return CFakeSourceFilter::Create(CFakeSourceFilter::Options(), &m_sourceLog, riid, ppv);
        }));
        ASSERT_EQ(S_OK, m_pSource->Registered());
        m_pGraph.reset(new CDDAGraphProbe([this](WCHAR wcDrive) {
            m_deviceLog.push_back(std::string("device for ") + static_cast<char>(wcDrive));
            return std::unique_ptr<CCDAudioDevice>(new CRecordingCDAudioDevice(m_script, &m_deviceLog));
        }));
        ASSERT_EQ(S_OK, m_pGraph->Init());
        m_pGraph->SetEventHandlerWindow(m_hWnd);
    }
    void TearDown() override
    {
        m_pGraph->Destroy();
        m_pGraph.reset();
        m_pSource.reset();
        DestroyWindow(m_hWnd);
        CoUninitialize();
    }
    // The track-complete notices posted since the last call.
    int TakeTrackCompletes()
    {
        int n = 0;
        MSG msg;
        while (PeekMessageW(&msg, m_hWnd, WM_CDDA_TRACK_COMPLETE, WM_CDDA_TRACK_COMPLETE, PM_REMOVE))
            n += msg.wParam == 0 && msg.lParam == 0;
        return n;
    }
    double CurTime(LONGLONG llPosition)
    {
        m_seeking.llPosition = llPosition;
        double dSeconds = -1.0;
        EXPECT_EQ(0, m_pGraph->GetCurTime(&dSeconds));
        return dSeconds;
    }
    double Duration()
    {
        double dDuration = -1.0;
        EXPECT_EQ(S_OK, m_pGraph->GetDuration(&dDuration));
        return dDuration;
    }

    HWND m_hWnd = nullptr;
    CRecordingCDAudioDevice::Script m_script;
    Log m_deviceLog;
    Log m_sourceLog;
    std::unique_ptr<CClassObjectRegistration> m_pSource;
    std::unique_ptr<CDDAGraphProbe> m_pGraph;
    CFakeMediaSeeking m_seeking;
};

TEST_F(CDDAGraphTest, ARangeIsMeasuredTrackByTrackThenLoadedByItsSpecification)
{
    for (DWORD dwTrack = 3; dwTrack <= 7; ++dwTrack)
        m_script.packedLengths[dwTrack] = CRecordingCDAudioDevice::Packed(1, 0, 0);
    EXPECT_EQ(S_OK, m_pGraph->OpenCD(L'D', 3, 7));
    const Log expected = {"device for D",      "open 0 0x1200 516 D:", "set 7 0x400 10", "status 7 0x112 1 3",
                          "status 7 0x112 1 4", "status 7 0x112 1 5",  "status 7 0x112 1 6", "status 7 0x112 1 7",
                          "close 7 0x2 "};
    EXPECT_EQ(expected, m_deviceLog);
    ASSERT_FALSE(m_sourceLog.empty());
    EXPECT_EQ("Load(D/3-7, no media type)", m_sourceLog.front());

    m_deviceLog.clear();
    m_sourceLog.clear();
    EXPECT_EQ(S_OK, m_pGraph->OpenCD(L'e', 4, 4));
    EXPECT_EQ((Log{"device for e", "open 0 0x1200 516 e:", "set 7 0x400 10", "status 7 0x112 1 4", "close 7 0x2 "}),
              m_deviceLog);
    ASSERT_LE(2u, m_sourceLog.size());
    EXPECT_EQ("LeaveFilterGraph", m_sourceLog[0]) << "the earlier range leaves the graph first";
    EXPECT_EQ("Load(e/4, no media type)", m_sourceLog[1]) << "the source filter is made once and loaded again";
}

TEST_F(CDDAGraphTest, RefusedRangesAnswerOneWithoutLoadingAnything)
{
    EXPECT_EQ(1, m_pGraph->OpenCD(L'D', 5, 2));
    EXPECT_TRUE(m_deviceLog.empty()) << "a reversed range never reaches the device";

    m_script.openError = MCIERR_DEVICE_NOT_READY;
    EXPECT_EQ(1, m_pGraph->OpenCD(L'D', 1, 2));
    EXPECT_EQ((Log{"device for D", "open 0 0x1200 516 D:"}), m_deviceLog) << "nothing more once the open failed";
    EXPECT_TRUE(m_sourceLog.empty());
    EXPECT_EQ(0.0, Duration());
}

TEST_F(CDDAGraphTest, PackedLengthsAreMinutesSecondsAndFramesAndTheDurationRoundsHalfUp)
{
    const struct
    {
        DWORD dwPacked;
        double dSeconds;
    } cases[] = {
        {CRecordingCDAudioDevice::Packed(4, 12, 30), 252.0},  // 252.4
        {CRecordingCDAudioDevice::Packed(4, 12, 37), 252.0},  // 252.493
        {CRecordingCDAudioDevice::Packed(4, 12, 38), 253.0},  // 252.507
        {CRecordingCDAudioDevice::Packed(0, 0, 74), 1.0},
    };
    for (const auto& c : cases)
    {
        m_script.packedLengths[2] = c.dwPacked;
        ASSERT_EQ(S_OK, m_pGraph->OpenCD(L'D', 2, 2));
        EXPECT_EQ(c.dSeconds, Duration()) << std::hex << c.dwPacked;
    }
    // A track the device cannot measure counts 0 s and the range still opens.
    EXPECT_EQ(S_OK, m_pGraph->OpenCD(L'D', 9, 9));
    EXPECT_EQ(0.0, Duration());
}

// Range 1-3 of 100 s, 200 s and 50 s played straight through.
TEST_F(CDDAGraphTest, StreamPositionsBecomeTrackPositionsAndEachTrackEndIsPostedOnce)
{
    m_script.packedLengths = {{1, CRecordingCDAudioDevice::Packed(1, 40, 0)},
                              {2, CRecordingCDAudioDevice::Packed(3, 20, 0)},
                              {3, CRecordingCDAudioDevice::Packed(0, 50, 0)}};
    ASSERT_EQ(S_OK, m_pGraph->OpenCD(L'D', 1, 3));
    m_pGraph->UseSeeking(&m_seeking);

    EXPECT_EQ(60.0, CurTime(At(60.0)));
    EXPECT_EQ(100.0, CurTime(At(100.0))) << "exactly at the end is not past it";
    EXPECT_EQ(0, TakeTrackCompletes());
    EXPECT_EQ(0.0, CurTime(At(100.5)));
    EXPECT_EQ(1, TakeTrackCompletes());
    EXPECT_EQ(200.0, Duration());
    EXPECT_EQ(50.0, CurTime(At(150.0)));
    EXPECT_EQ(0, TakeTrackCompletes());
    EXPECT_EQ(0.0, CurTime(At(300.5)));
    EXPECT_EQ(1, TakeTrackCompletes());
    EXPECT_EQ(50.0, Duration());
    EXPECT_NEAR(40.0, CurTime(At(340.0)), 1e-9);
    EXPECT_EQ(0.0, CurTime(At(350.5))) << "the last track's end is posted like the others";
    EXPECT_EQ(1, TakeTrackCompletes());
    EXPECT_EQ(0.0, Duration()) << "past the range there is no current track";
    CurTime(At(360.0));
    EXPECT_EQ(0, TakeTrackCompletes()) << "nothing after the range";
}

TEST_F(CDDAGraphTest, ASeekGoesToWholeSecondsOfTheStreamClampedToWhatIsAvailable)
{
    m_script.packedLengths = {{1, CRecordingCDAudioDevice::Packed(1, 40, 0)},
                              {2, CRecordingCDAudioDevice::Packed(3, 20, 0)}};
    ASSERT_EQ(S_OK, m_pGraph->OpenCD(L'D', 1, 2));
    m_pGraph->UseSeeking(&m_seeking);
    m_seeking.llEarliest = At(1.0);
    m_seeking.llLatest = At(300.0);

    EXPECT_EQ(S_OK, m_pGraph->SetCurTime(12.9));
    EXPECT_EQ(S_OK, m_pGraph->SetCurTime(0.5));
    EXPECT_EQ(S_OK, m_pGraph->SetCurTime(1000.0));
    ASSERT_EQ(3u, m_seeking.seeks.size());
    EXPECT_EQ(At(12.0), m_seeking.seeks[0].llCurrent);
    EXPECT_EQ(static_cast<DWORD>(AM_SEEKING_AbsolutePositioning), m_seeking.seeks[0].dwCurrentFlags);
    EXPECT_EQ(static_cast<DWORD>(AM_SEEKING_NoPositioning), m_seeking.seeks[0].dwStopFlags);
    EXPECT_EQ(At(1.0), m_seeking.seeks[1].llCurrent);
    EXPECT_EQ(At(300.0), m_seeking.seeks[2].llCurrent);

    m_seeking.hrSetPositions = VFW_E_WRONG_STATE;
    EXPECT_EQ(VFW_E_WRONG_STATE, m_pGraph->SetCurTime(5.0));
}

// A seek switches the subtraction of the track's start off until the next track change, which
// then starts the new track at the length of the one that ended, not where it ended.
TEST_F(CDDAGraphTest, AfterASeekTheNextTrackStartsAtTheEndedTracksLength)
{
    m_script.packedLengths = {{1, CRecordingCDAudioDevice::Packed(1, 40, 0)},
                              {2, CRecordingCDAudioDevice::Packed(3, 20, 0)},
                              {3, CRecordingCDAudioDevice::Packed(0, 50, 0)}};
    ASSERT_EQ(S_OK, m_pGraph->OpenCD(L'D', 1, 3));
    m_pGraph->UseSeeking(&m_seeking);
    m_seeking.llLatest = At(350.0);
    EXPECT_EQ(0.0, CurTime(At(100.5)));
    EXPECT_EQ(1, TakeTrackCompletes());
    ASSERT_EQ(S_OK, m_pGraph->SetCurTime(150.0));
    EXPECT_EQ(150.0, CurTime(At(150.0))) << "no offset while seeked";
    EXPECT_EQ(0.0, CurTime(At(200.5))) << "the stream position is held against the track's length";
    EXPECT_EQ(1, TakeTrackCompletes());
    EXPECT_EQ(40.0, CurTime(At(240.0))) << "track 3 starts at 200 s, the length of track 2";
}

TEST_F(CDDAGraphTest, AnUnavailablePositionAnswersOneAndWritesNothing)
{
    m_script.packedLengths[1] = CRecordingCDAudioDevice::Packed(1, 0, 0);
    ASSERT_EQ(S_OK, m_pGraph->OpenCD(L'D', 1, 1));
    m_pGraph->UseSeeking(&m_seeking);
    m_seeking.hrPosition = E_FAIL;
    double dSeconds = 7.0;
    EXPECT_EQ(1, m_pGraph->GetCurTime(&dSeconds));
    EXPECT_EQ(7.0, dSeconds);
}

// The system's CD audio device is the default; with no drive (and no image set for the letter)
// it cannot open, and the range is refused.
TEST(CDDASystemDevice, WithoutADriveTheRangeIsRefused)
{
    ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    {
        CDDAGraph graph;
        ASSERT_EQ(S_OK, graph.Init());
        EXPECT_EQ(1, graph.OpenCD(L'Q', 1, 2));
        double dDuration = -1.0;
        EXPECT_EQ(S_OK, graph.GetDuration(&dDuration));
        EXPECT_EQ(0.0, dDuration);
        graph.Destroy();
    }
    CoUninitialize();
}

} // namespace
