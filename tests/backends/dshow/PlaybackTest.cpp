// Real files played through the dispatcher with a parent window and message loop: every format
// this platform decodes, the transport, graph events other than the end, and damaged files.
#include <gtest/gtest.h>

#include <string>

#include "CPlaybackHost.h"
#include "CTestMedia.h"

namespace {

// A frame of the fixtures' 25 frames a second, and a millisecond for the 100-ns rounding.
constexpr double kFrame = 1.0 / 25 + 0.001;

std::string FileTestName(const ::testing::TestParamInfo<const char*>& info)
{
    std::string name = info.param;
    for (char& c : name)
        c = c == '.' || c == '-' ? '_' : c;
    return name;
}

double Position(CPlaybackHost& host)
{
    double dSeconds = -1.0;
    EXPECT_EQ(S_OK, host.DShow().GetCurTime(&dSeconds));
    return dSeconds;
}

OAFilterState GraphState(CPlaybackHost& host)
{
    OAFilterState state = -1;
    EXPECT_EQ(S_OK, host.DShow().MediaControl()->GetState(5000, &state));
    return state;
}

class PlaysEndToEnd : public ::testing::TestWithParam<const char*>
{
};

TEST_P(PlaysEndToEnd, OpensWithTheTrueInformationAndPlaysInRealTimeToCompletion)
{
    CTestMedia::Truth truth;
    ASSERT_TRUE(CTestMedia::Read(GetParam(), &truth));
    CPlaybackHost host;
    TESSALY_FILEINFO info = {};
    ASSERT_EQ(S_OK, host.OpenWhole(CTestMedia::Path(GetParam()), &info));
    EXPECT_NEAR(truth.dDuration, info.dDuration, kFrame);
    EXPECT_EQ(truth.dwWidth, info.dwWidth);
    EXPECT_EQ(truth.dwHeight, info.dwHeight);
    EXPECT_EQ(TESSALY_FILEINFO_SEEKABLE | (truth.dwWidth ? 0u : TESSALY_FILEINFO_AUDIO_ONLY), info.dwAttributeMask);
    EXPECT_EQ(Playback_State_Stop, host.Player().GetPlayState());

    const ULONGLONG start = GetTickCount64();
    ASSERT_EQ(S_OK, host.Player().Play());
    ASSERT_TRUE(host.PumpUntilEnd(15000)) << "no completion event";
    EXPECT_GT((GetTickCount64() - start) / 1000.0, truth.dDuration - 0.3) << "the null devices run in real time";
    ASSERT_EQ(1u, host.Count(STREAMING_EVENT_COMPLETE));
    EXPECT_EQ(0u, host.Count(STREAMING_EVENT_ERROR));
    EXPECT_EQ(STREAMING_EVENT_COMPLETE, host.events.back().dwCode);
    EXPECT_EQ(Playback_State_Stop, host.Player().GetPlayState());

    // About one report every 100 ms, none further on than the time since Play, rising; the clock
    // may run a little past the end, and the last report, made on completion, is the end itself.
    const std::vector<double> progress = host.Progress();
    ASSERT_GE(progress.size(), 5u);
    EXPECT_LE(progress.size(), 30u);
    for (const CPlaybackHost::Event& event : host.events)
    {
        if (event.dwCode == STREAMING_EVENT_PROGRESS)
        {
            EXPECT_LE(event.dProgress, (event.tick - start) / 1000.0 + 0.25);
        }
    }
    for (size_t i = 1; i + 1 < progress.size(); ++i)
        EXPECT_GE(progress[i], progress[i - 1]) << "report " << i;
    EXPECT_NEAR(truth.dDuration, progress.back(), kFrame);
    EXPECT_EQ(0.0, Position(host)) << "completion leaves the back-end at the start, as Stop does";
}

INSTANTIATE_TEST_SUITE_P(DShowFormats, PlaysEndToEnd,
                         ::testing::Values("tone.wav", "tone.mp3", "tone.wma", "tone.ogg", "tone.flac", "tone.mpa",
                                           "clip.wmv", "clip.asf", "clip.avi", "clip.divx", "clip.mpg"),
                         FileTestName);

TEST(DShowTransport, PauseHoldsSeeksLandOnWholeSecondsStopRewindsAndPlayStartsOver)
{
    CPlaybackHost host;
    ASSERT_EQ(S_OK, host.Open(CTestMedia::Path("tone.wav"), nullptr));
    ASSERT_EQ(S_OK, host.Player().Play());
    host.PumpFor(600);
    ASSERT_EQ(S_OK, host.Player().Pause());
    EXPECT_EQ(Playback_State_Pause, host.Player().GetPlayState());
    EXPECT_EQ(State_Paused, GraphState(host));
    const double dPaused = Position(host);
    EXPECT_GT(dPaused, 0.2);
    EXPECT_LT(dPaused, 1.5);
    size_t nReports = host.Progress().size();
    host.PumpFor(700);
    EXPECT_NEAR(dPaused, Position(host), 0.05);
    EXPECT_EQ(nReports, host.Progress().size()) << "progress went on while paused";

    EXPECT_EQ(S_OK, host.Player().SeekTo(0.9));
    EXPECT_EQ(0.0, Position(host));
    EXPECT_EQ(S_OK, host.Player().SeekTo(1.9));
    EXPECT_EQ(1.0, Position(host));
    ASSERT_EQ(S_OK, host.Player().Pause()); // a second pause resumes from there
    EXPECT_EQ(Playback_State_Play, host.Player().GetPlayState());
    ASSERT_TRUE(host.PumpUntil([&] { return host.Progress().size() > nReports; }, 5000));
    EXPECT_GE(host.Progress()[nReports], 1.0);

    ASSERT_EQ(S_OK, host.Player().Stop());
    EXPECT_EQ(Playback_State_Stop, host.Player().GetPlayState());
    EXPECT_EQ(0.0, Position(host));
    EXPECT_EQ(State_Paused, GraphState(host)) << "a stopped video shows its first frame";
    const size_t nEvents = host.events.size();
    host.PumpFor(500);
    EXPECT_EQ(nEvents, host.events.size());
    nReports = host.Progress().size();
    ASSERT_EQ(S_OK, host.Player().Play());
    ASSERT_TRUE(host.PumpUntilEnd(10000));
    ASSERT_GT(host.Progress().size(), nReports + 3);
    EXPECT_LT(host.Progress()[nReports], 0.5);
    EXPECT_EQ(1u, host.Count(STREAMING_EVENT_COMPLETE));
}

// Events sent into a playing graph the way its filters send them.
class DShowGraphEvents : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(S_OK, host.Open(CTestMedia::Path("tone.wav"), nullptr));
        ASSERT_EQ(S_OK, host.DShow().Graph()->QueryInterface(IID_IMediaEventSink, &sink));
        ASSERT_EQ(S_OK, host.Player().Play());
        ASSERT_TRUE(host.PumpUntil([&] { return host.Progress().size() >= 2; }, 5000));
    }

    CPlaybackHost host;
    ComPtr<IMediaEventSink> sink;
};

TEST_F(DShowGraphEvents, AnAbortStopsTheGraphAndReachesTheHostWithItsCode)
{
    ASSERT_EQ(S_OK, sink->Notify(EC_ERRORABORT, VFW_E_SAMPLE_TIME_NOT_SET, 0));
    ASSERT_TRUE(host.PumpUntilEnd(5000));
    ASSERT_EQ(1u, host.Count(STREAMING_EVENT_ERROR));
    EXPECT_EQ(static_cast<ULONG_PTR>(VFW_E_SAMPLE_TIME_NOT_SET), host.events.back().ulParam);
    EXPECT_EQ(State_Stopped, GraphState(host));
    const size_t nEvents = host.events.size();
    host.PumpFor(2500);
    EXPECT_EQ(nEvents, host.events.size()) << "progress or completion after the abort";
}

TEST_F(DShowGraphEvents, OtherEventsLeavePlaybackAlone)
{
    ASSERT_EQ(S_OK, sink->Notify(EC_USER + 7, 1, 2));
    ASSERT_EQ(S_OK, sink->Notify(EC_STREAM_ERROR_STILLPLAYING, E_FAIL, 0));
    ASSERT_TRUE(host.PumpUntilEnd(10000));
    EXPECT_EQ(1u, host.Count(STREAMING_EVENT_COMPLETE));
    EXPECT_EQ(0u, host.Count(STREAMING_EVENT_ERROR));
}

// Files cut short, overwritten with noise, empty or missing: refused with the code DirectShow
// itself gives in a graph of its own, the record untouched; or played until an end or an error.
class DamagedFile : public ::testing::TestWithParam<const char*>
{
};

TEST_P(DamagedFile, IsRefusedWithThePlatformsCodeOrEndsWithAnEvent)
{
    CPlaybackHost host;
    const std::wstring path = CTestMedia::Path(GetParam());
    ComPtr<IGraphBuilder> graph;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder, &graph));
    const HRESULT hrPlatform = graph->RenderFile(path.c_str(), nullptr);
    graph.Reset();

    TESSALY_FILEINFO info;
    memset(&info, 0xCD, sizeof(info));
    const HRESULT hr = host.Open(path, &info);
    if (FAILED(hrPlatform))
    {
        EXPECT_EQ(hrPlatform, hr);
        EXPECT_EQ(0xCDCDCDCDu, info.dwAttributeMask) << "the record was written for a refused file";
        EXPECT_EQ(E_FAIL, host.Player().Play());
        return;
    }
    ASSERT_TRUE(SUCCEEDED(hr)) << std::hex << hr;
    ASSERT_EQ(S_OK, host.Player().Play());
    ASSERT_TRUE(host.PumpUntilEnd(15000)) << "neither an end nor an error";
    EXPECT_EQ(1u, host.Count(STREAMING_EVENT_COMPLETE) + host.Count(STREAMING_EVENT_ERROR));
    if (host.Count(STREAMING_EVENT_ERROR))
    {
        EXPECT_TRUE(FAILED(static_cast<HRESULT>(host.events.back().ulParam)));
    }
}

INSTANTIATE_TEST_SUITE_P(DShowDamage, DamagedFile,
                         ::testing::Values("cut.wmv", "cut.avi", "cut.mp3", "noisy.avi", "noise.avi", "noise.mp3",
                                           "empty.wav", "missing.wav"),
                         FileTestName);

// The platform may never return from rendering such a file, so the engine answers for it: a
// header claiming 2 GiB, or ten bytes more than the file holds.
TEST(DamagedHeader, AnAsfHeaderClaimingMoreThanTheFileHoldsIsInvalidData)
{
    CPlaybackHost host;
    for (const char* pszFile : {"huge.wma", "short-header.wma"})
    {
        SCOPED_TRACE(pszFile);
        TESSALY_FILEINFO info;
        memset(&info, 0xCD, sizeof(info));
        EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_INVALID_DATA), host.Open(CTestMedia::Path(pszFile), &info));
        EXPECT_EQ(0xCDCDCDCDu, info.dwAttributeMask);
        EXPECT_EQ(E_FAIL, host.Player().Play());
        EXPECT_EQ(S_OK, host.OpenWhole(CTestMedia::Path("tone.wma"), &info)) << "the next file opens as usual";
        EXPECT_EQ(TESSALY_FILEINFO_AUDIO_ONLY | TESSALY_FILEINFO_SEEKABLE, info.dwAttributeMask);
    }
}

} // namespace
