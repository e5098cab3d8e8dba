// What a host sees while a real file plays: progress about ten times a second, completion,
// and the state afterwards; sinks that act from inside their events.
#include <windows.h>
#include <objbase.h>
#include <ocidl.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "CClassObjectRegistration.h"
#include "CFakeSourceFilter.h"
#include "CProtectedMedia.h"
#include "CTempFolder.h"
#include "CTestMedia.h"
#include "engine/ComPtr.h"
#include "engine/TessalyContract.h"
#include "tests/support/CProcessCounts.h"
#include "tests/support/CRecordingSink.h"
#include "CPlayHostTest.h"

namespace {

typedef CPlayHostTest::Log Log;

class PlaySequence : public CPlayHostTest
{
};

TEST_F(PlaySequence, ProgressAboutTenTimesASecondThenCompletionThenStop)
{
    TESSALY_FILEINFO info = {};
    ASSERT_EQ(S_OK, Open("tone.wav", &info));
    ASSERT_EQ(S_OK, m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr));
    ASSERT_TRUE(PumpUntil([&] { return Completed(); }, 15000)) << "a two-second file completes";

    // Two seconds at 100 ms a tick; a busy machine only makes ticks late, never early.
    const int nProgress = Count("progress");
    EXPECT_GE(nProgress, 8);
    EXPECT_LE(nProgress, 25);
    double dLast = -1.0;
    for (const auto& e : m_log)
    {
        if (e.event != "progress")
            continue;
        EXPECT_EQ(Playback_State_Play, e.state);
        EXPECT_GE(e.dProgress, dLast) << "time only moves forward";
        dLast = e.dProgress;
    }
    EXPECT_GT(dLast, 1.5) << "the last report is near the end";
    EXPECT_EQ("complete", m_log.back().event);
    EXPECT_EQ(0, Count("error"));

    TESSALY_PLAYBACK_STATE state = Playback_State_Busy;
    double dTime = -1.0;
    EXPECT_EQ(S_OK, m_play->GetState(&state, &dTime));
    EXPECT_EQ(Playback_State_Stop, state);
    EXPECT_EQ(dLast, dTime) << "the last progress time is what GetState keeps";
}

// Protected content goes to the Media Player control, which this platform has but which never
// plays such a file here: the host gets the back-end's own failure code within the open limit, and the object
// then plays the same file unprotected through DirectShow.
TEST_F(PlaySequence, AProtectedWindowsMediaFileFailsWithTheControlsCodeAndTheObjectPlaysOn)
{
    CTempFolder folder;
    std::wstring path = CProtectedMedia::Copy(folder, "tone.wma", false);
    ASSERT_FALSE(path.empty());
    TESSALY_FILEINFO info = {7, 7.0, 7, 7};
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(TESSALY_E_CANNOTPLAY, m_play->OpenFile(&path[0], 0, TESSALY_PLAYBACK_FLAG_STRETCH, &info));
    // The process's first use of the control loads it and its platform; a busy machine stretches
    // that, but never to the control's open limit of 20 s.
    EXPECT_LT(GetTickCount64() - start, 20000u);
    EXPECT_EQ(7.0, info.dDuration);

    ASSERT_EQ(S_OK, Open("tone.wma", &info));
    EXPECT_NEAR(2.0, info.dDuration, 0.1);
    ASSERT_EQ(S_OK, m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr));
    EXPECT_TRUE(PumpUntil([&] { return !m_log.empty() && m_log.back().event == "complete"; }, 10000));
}

TEST_F(PlaySequence, NothingArrivesAfterCloseFile)
{
    ASSERT_EQ(S_OK, Open("tone.wav"));
    ASSERT_EQ(S_OK, m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr));
    ASSERT_TRUE(PumpUntil([&] { return Count("progress") >= 2; }, 10000));
    EXPECT_EQ(S_OK, m_play->CloseFile());
    const size_t nBefore = m_log.size();
    PumpUntil([] { return false; }, 2500);
    EXPECT_EQ(nBefore, m_log.size());
}

TEST_F(PlaySequence, ASinkMayCloseTheFileFromInsideOnPlayComplete)
{
    HRESULT hrClose = E_FAIL;
    m_sink.onEvent = [&](const char* pszEvent) {
        if (std::string(pszEvent) == "complete")
            hrClose = m_play->CloseFile();
    };
    ASSERT_EQ(S_OK, Open("tone.wav"));
    ASSERT_EQ(S_OK, m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr));
    ASSERT_TRUE(PumpUntil([&] { return Completed(); }, 15000));
    EXPECT_EQ(S_OK, hrClose);
    EXPECT_EQ(E_FAIL, m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr)) << "nothing is open";
    // And the object can go on with another file.
    ASSERT_EQ(S_OK, Open("tone.mp3"));
}

TEST_F(PlaySequence, ASinkMayUnadviseItselfFromInsideOnPlayComplete)
{
    HRESULT hrUnadvise = E_FAIL;
    m_sink.onEvent = [&](const char* pszEvent) {
        if (std::string(pszEvent) == "complete")
            hrUnadvise = m_events->Unadvise(m_dwCookie);
    };
    ASSERT_EQ(S_OK, Open("tone.wav"));
    ASSERT_EQ(S_OK, m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr));
    ASSERT_TRUE(PumpUntil([&] { return Completed(); }, 15000));
    EXPECT_EQ(S_OK, hrUnadvise);
    EXPECT_EQ(0, m_sink.OutsideRefs());

    const size_t nBefore = m_log.size();
    ASSERT_EQ(S_OK, m_play->CloseFile());
    ASSERT_EQ(S_OK, Open("tone.wav"));
    ASSERT_EQ(S_OK, m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr));
    PumpUntil([] { return false; }, 600);
    EXPECT_EQ(nBefore, m_log.size()) << "no longer connected";
}

TEST_F(PlaySequence, PausedPlaybackReportsNoProgress)
{
    ASSERT_EQ(S_OK, Open("tone.wav"));
    ASSERT_EQ(S_OK, m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr));
    ASSERT_TRUE(PumpUntil([&] { return Count("progress") >= 2; }, 10000));
    ASSERT_EQ(S_OK, m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PAUSE, 0, nullptr));
    TESSALY_PLAYBACK_STATE state = Playback_State_Busy;
    EXPECT_EQ(S_OK, m_play->GetState(&state, nullptr));
    EXPECT_EQ(Playback_State_Pause, state);
    const int nBefore = Count("progress");
    PumpUntil([] { return false; }, 600);
    EXPECT_EQ(nBefore, Count("progress"));
    EXPECT_EQ(S_OK, m_play->CloseFile());
}

// The sink list as a host meets it while a real file plays: slots in advise order, a freed slot
// taken by the next sink, failing sinks kept, and a sink on the CD point alone hearing nothing of
// a file.
TEST_F(PlaySequence, SinksHearAFileInSlotOrderWhateverTheyAnswer)
{
    std::vector<std::unique_ptr<CRecordingSink>> sinks;
    std::vector<DWORD> cookies;
    for (const char* pszName : {"s1", "s2", "s3", "s4", "s5"})
    {
        sinks.push_back(std::make_unique<CRecordingSink>(pszName, &m_log));
        cookies.push_back(0);
        ASSERT_EQ(S_OK, m_events->Advise(sinks.back().get(), &cookies.back()));
    }
    sinks[2]->answer = E_FAIL;
    ASSERT_EQ(S_OK, m_events->Unadvise(cookies[1]));
    CRecordingSink late("late", &m_log);
    DWORD dwLate = 0;
    ASSERT_EQ(S_OK, m_events->Advise(&late, &dwLate));

    ComPtr<IConnectionPointContainer> container;
    ASSERT_EQ(S_OK, QueryTo(m_play, IID_IConnectionPointContainer, container));
    ComPtr<IConnectionPoint> cdEvents;
    ASSERT_EQ(S_OK, container->FindConnectionPoint(IID_IPlayCDEvents, &cdEvents));
    CRecordingSink cdOnly("cd", &m_log);
    DWORD dwCD = 0;
    ASSERT_EQ(S_OK, cdEvents->Advise(&cdOnly, &dwCD));
    CRecordingSink deaf("deaf", &m_log);
    deaf.bAnswersPlayEvents = false;
    DWORD dwDeaf = 0xDEAD;
    EXPECT_EQ(CONNECT_E_CANNOTCONNECT, m_events->Advise(&deaf, &dwDeaf));
    EXPECT_EQ(0u, dwDeaf);
    EXPECT_EQ(0, deaf.OutsideRefs());

    ASSERT_EQ(S_OK, Open("tone.wav"));
    ASSERT_EQ(S_OK, m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr));
    ASSERT_TRUE(PumpUntil([&] { return Count("complete") == 6; }, 15000));

    std::vector<std::string> completed;
    int nHostProgress = 0, nFailingProgress = 0;
    for (const auto& e : m_log)
    {
        if (e.event == "complete")
            completed.push_back(e.sink);
        nHostProgress += e.sink == "host" && e.event == "progress";
        nFailingProgress += e.sink == "s3" && e.event == "progress";
        EXPECT_NE("cd", e.sink) << "a file has no tracks to complete";
        EXPECT_NE("s2", e.sink) << "unadvised before the file";
    }
    EXPECT_EQ((std::vector<std::string>{"host", "s1", "late", "s3", "s4", "s5"}), completed);
    EXPECT_GE(nHostProgress, 8);
    EXPECT_EQ(nHostProgress, nFailingProgress) << "a sink's failures do not cut it off";

    EXPECT_EQ(S_OK, cdEvents->Unadvise(dwCD));
    EXPECT_EQ(S_OK, m_events->Unadvise(dwLate));
    for (size_t i = 0; i < sinks.size(); ++i)
    {
        if (i != 1)
        {
            EXPECT_EQ(S_OK, m_events->Unadvise(cookies[i]));
        }
        EXPECT_EQ(0, sinks[i]->OutsideRefs());
    }
}

// Every file here plays to its end, so the error comes the way a failing filter raises it: an Ogg
// source of the test's own, which the engine creates by its class identifier, lends the test the
// graph it joined, and the test aborts that graph while the file plays.
TEST_F(PlaySequence, AnErrorWhilePlayingArrivesOnceAfterTheStopAndLaterOnesAreDropped)
{
    std::vector<std::string> filterLog;
    ComPtr<IMediaEventSink> graphEvents;
    CFakeSourceFilter::Options options;
    options.onJoin = [&](IFilterGraph* pGraph) {
        if (pGraph)
            pGraph->QueryInterface(IID_IMediaEventSink, &graphEvents);
    };
    CClassObjectRegistration installed(CLSID_OggSourceFilter, [&](REFIID riid, void** ppv) {
        return CFakeSourceFilter::Create(options, &filterLog, riid, ppv);
    });
    ASSERT_EQ(S_OK, installed.Registered());
    ASSERT_EQ(S_OK, Open("tone.ogg"));
    ASSERT_TRUE(graphEvents) << "the engine built its graph on the test's source";
    ASSERT_EQ(S_OK, m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr));
    ASSERT_TRUE(PumpUntil([&] { return Count("progress") >= 2; }, 10000));

    TESSALY_PLAYBACK_STATE stateHeard = Playback_State_Busy;
    m_sink.onEvent = [&](const char* pszEvent) {
        if (std::string(pszEvent) == "error")
        {
            EXPECT_EQ(S_OK, m_play->GetState(&stateHeard, nullptr));
        }
    };
    ASSERT_EQ(S_OK, graphEvents->Notify(EC_ERRORABORT, VFW_E_SAMPLE_TIME_NOT_SET, 0));
    ASSERT_TRUE(PumpUntil([&] { return Count("error") > 0; }, 5000));
    EXPECT_EQ(Playback_State_Stop, stateHeard) << "the engine stops before the host hears of it";
    ASSERT_GE(m_log.size(), 2u);
    EXPECT_EQ("error", m_log.back().event);
    EXPECT_EQ(VFW_E_SAMPLE_TIME_NOT_SET, m_log.back().hrError);
    const CRecordingSink::Entry& last = m_log[m_log.size() - 2];
    EXPECT_EQ("progress", last.event) << "the last position comes first";
    EXPECT_EQ(Playback_State_Play, last.state);

    // Stopped, the engine drops a further error, and the aborted file never completes.
    const size_t nBefore = m_log.size();
    ASSERT_EQ(S_OK, graphEvents->Notify(EC_ERRORABORT, E_FAIL, 0));
    PumpUntil([] { return false; }, 2500);
    EXPECT_EQ(nBefore, m_log.size());
    EXPECT_EQ(1, Count("error"));
    EXPECT_EQ(0, Count("complete"));
    graphEvents.Reset();
    EXPECT_EQ(S_OK, m_play->CloseFile());
}

} // namespace

namespace {

TEST_F(PlaySequence, TwoPlayObjectsPlayInOneProcess)
{
    ComPtr<IPlay2> second;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_Play, nullptr, CLSCTX_INPROC_SERVER, IID_IPlay2, &second));
    Log secondLog;
    CRecordingSink secondSink("second", &secondLog);
    ComPtr<IConnectionPointContainer> container;
    ASSERT_EQ(S_OK, QueryTo(second, IID_IConnectionPointContainer, container));
    ComPtr<IConnectionPoint> point;
    ASSERT_EQ(S_OK, container->FindConnectionPoint(IID_IPlayEvents, &point));
    DWORD dwCookie = 0;
    ASSERT_EQ(S_OK, point->Advise(&secondSink, &dwCookie));

    std::wstring path = CTestMedia::Path("tone.mp3");
    ASSERT_EQ(S_OK, Open("tone.wav"));
    ASSERT_EQ(S_OK, second->OpenFile(&path[0], 0, 1, nullptr));
    ASSERT_EQ(S_OK, m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr));
    ASSERT_EQ(S_OK, second->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr));
    auto completed = [](const Log& log) {
        return !log.empty() && log.back().event == "complete";
    };
    EXPECT_TRUE(PumpUntil([&] { return completed(m_log) && completed(secondLog); }, 20000));
    EXPECT_GE(Count("progress"), 8);
    int nSecondProgress = 0;
    for (const auto& e : secondLog)
        nSecondProgress += e.event == "progress";
    EXPECT_GE(nSecondProgress, 8) << "each object reports its own file";
    point->Unadvise(dwCookie);
}

// Figures are printed; the limits are generous on purpose: they catch a leak per cycle, not noise.
TEST_F(PlaySequence, TwoHundredOpenPlayCloseCyclesLeaveNoGrowth)
{
    auto cycle = [&] {
        EXPECT_EQ(S_OK, Open("tone.wav"));
        EXPECT_EQ(S_OK, m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr));
        PumpUntil([] { return false; }, 5);
        EXPECT_EQ(S_OK, m_play->CloseFile());
    };
    for (int i = 0; i < 10; ++i) // warm-up: back-end start-up and the platform's caches
        cycle();
    const CProcessCounts before = CProcessCounts::Take();
    for (int i = 0; i < 200; ++i)
        cycle();
    PumpUntil([] { return false; }, 200);
    const CProcessCounts growth = CProcessCounts::Take() - before;
    growth.Print("after 200 cycles");
    EXPECT_LT(growth.lHandles, 50);
    EXPECT_LT(growth.lGdiObjects, 50);
    EXPECT_LT(growth.lPrivateKb, 16 * 1024);
}

// Files of the QuickTime back-ends, played by a host through Play: the record the open fills, the
// same record from QueryFileInfo, progress that moves with the clock, one completion. An animated
// GIF loops: it counts ticks and never completes.
class QuickTimeSequence : public PlaySequence, public ::testing::WithParamInterface<const char*>
{
protected:
    static std::wstring QtPath(const char* pszName) { return CTestMedia::PathIn(TESSALY_QT_MEDIA_DIR, pszName); }
};

TEST_P(QuickTimeSequence, OpensWithTheFilesRecordPlaysInRealTimeAndCompletesOnce)
{
    CTestMedia::Truth truth;
    ASSERT_TRUE(CTestMedia::ReadIn(TESSALY_QT_MEDIA_DIR, GetParam(), &truth));
    std::wstring path = QtPath(GetParam());
    TESSALY_FILEINFO info = {};
    ASSERT_EQ(S_OK, m_play->OpenFile(&path[0], 0, TESSALY_PLAYBACK_FLAG_STRETCH, &info));
    const DWORD dwKind = truth.dwWidth ? 0u : static_cast<DWORD>(TESSALY_FILEINFO_AUDIO_ONLY);
    EXPECT_EQ(TESSALY_FILEINFO_SEEKABLE | dwKind, info.dwAttributeMask);
    EXPECT_NEAR(truth.dDuration, info.dDuration, 0.1) << "a bare AAC stream's length is an estimate";
    EXPECT_EQ(truth.dwWidth, info.dwWidth);
    EXPECT_EQ(truth.dwHeight, info.dwHeight);

    ComPtr<IQueryFileInfo> query;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_QueryFileInfo, nullptr, CLSCTX_INPROC_SERVER, IID_IQueryFileInfo, &query));
    TESSALY_FILEINFO queried = {};
    ASSERT_EQ(S_OK, query->GetFileInfo(&path[0], &queried));
    EXPECT_EQ(0, memcmp(&info, &queried, sizeof(info))) << "a query answers what an open answers";

    const ULONGLONG start = GetTickCount64();
    ASSERT_EQ(S_OK, m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr));
    ASSERT_TRUE(PumpUntil([&] { return Completed(); }, 15000));
    EXPECT_GT((GetTickCount64() - start) / 1000.0, info.dDuration - 0.2) << "ended before its time";
    PumpUntil([] { return false; }, 300);
    EXPECT_EQ(1, Count("complete"));
    EXPECT_EQ(0, Count("error"));
    // The report made with the completion finds the movie rewound; the ones before never go back.
    std::vector<double> progress;
    for (const auto& e : m_log)
    {
        if (e.event == "progress")
            progress.push_back(e.dProgress);
    }
    ASSERT_GE(progress.size(), 8u);
    EXPECT_EQ(0.0, progress.back());
    EXPECT_GT(progress[progress.size() - 2], info.dDuration / 2);
    for (size_t i = 1; i + 1 < progress.size(); ++i)
        EXPECT_GE(progress[i], progress[i - 1]) << "report " << i;
}

INSTANTIATE_TEST_SUITE_P(MoviesAndSounds, QuickTimeSequence,
                         ::testing::Values("clip.mov", "clip.mp4", "clip.m4v", "clip.3gp", "tone.m4a", "tone.aac"),
                         [](const ::testing::TestParamInfo<const char*>& param) {
                             std::string name = param.param;
                             std::replace(name.begin(), name.end(), '.', '_');
                             return name;
                         });

TEST_F(PlaySequence, AnAnimatedGifThroughPlayLoopsAndAStillGifLastsNoTime)
{
    std::wstring path = CTestMedia::PathIn(TESSALY_QT_MEDIA_DIR, "anim.gif");
    TESSALY_FILEINFO info = {};
    ASSERT_EQ(S_OK, m_play->OpenFile(&path[0], 0, TESSALY_PLAYBACK_FLAG_STRETCH, &info));
    EXPECT_EQ(static_cast<DWORD>(TESSALY_FILEINFO_PICTURE), info.dwAttributeMask);
    EXPECT_EQ(1.0, info.dDuration);
    EXPECT_EQ(80u, info.dwWidth);
    EXPECT_EQ(60u, info.dwHeight);
    ASSERT_EQ(S_OK, m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr));
    EXPECT_FALSE(PumpUntil([&] { return Completed(); }, 2500)) << "a looping GIF has no end";
    EXPECT_GE(Count("progress"), 10);
    EXPECT_EQ(0, Count("error"));

    path = CTestMedia::PathIn(TESSALY_QT_MEDIA_DIR, "still.gif");
    ASSERT_EQ(S_OK, m_play->OpenFile(&path[0], 0, TESSALY_PLAYBACK_FLAG_STRETCH, &info));
    EXPECT_EQ(static_cast<DWORD>(TESSALY_FILEINFO_PICTURE), info.dwAttributeMask);
    EXPECT_EQ(0.0, info.dDuration);
    EXPECT_EQ(80u, info.dwWidth);
}

} // namespace
