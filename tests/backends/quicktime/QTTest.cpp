// The QuickTime back-ends through the dispatcher as the engine builds it, on the layer of our own,
// with the media tests/qtml has ffmpeg write: what an open reports, playback to one completion,
// the transport, the video's place in the host's window, the audio back-end's worker thread,
// damaged files, and one start of the layer for all its users.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <cwchar>
#include <memory>

#include "CPlaybackHost.h"
#include "CTestMedia.h"
#include "backends/quicktime/CQTAudioPlayer.h"
#include "backends/quicktime/CQTPlayer.h"
#include "qtml/QTML.h"
#include "tests/support/CMessagePump.h"
#include "tests/support/CProcessCounts.h"

namespace {

int g_nInitializeQTML, g_nEnterMovies, g_nExitMovies, g_nTerminateQTML;

} // namespace

// The layer's start-up and shut-down by their linker names, counted on their way from the module.
#define TESSALY_COUNTED(result, name, counter, params, args) \
    extern "C" result __real_##name params;                  \
    extern "C" result __wrap_##name params;                  \
    result __wrap_##name params                              \
    {                                                        \
        ++counter;                                           \
        return __real_##name args;                           \
    }
TESSALY_COUNTED(OSErr, _Z14InitializeQTMLl, g_nInitializeQTML, (long flags), (flags))
TESSALY_COUNTED(OSErr, _Z11EnterMoviesv, g_nEnterMovies, (), ())
TESSALY_COUNTED(void, _Z10ExitMoviesv, g_nExitMovies, (), ())
TESSALY_COUNTED(void, _Z13TerminateQTMLv, g_nTerminateQTML, (), ())

namespace {

std::wstring Path(const char* pszName)
{
    return CTestMedia::PathIn(TESSALY_QT_MEDIA_DIR, pszName);
}

// What the dispatcher keeps to itself: its back-ends, and the position the current one reports.
struct CStage : CMediaPlayer
{
    template <class TPlayer>
    static TPlayer* Find(CMediaPlayer& player)
    {
        for (const auto& pPlayer : player.*(&CStage::m_Players))
        {
            if (auto pFound = dynamic_cast<TPlayer*>(pPlayer.get()))
                return pFound;
        }
        return nullptr;
    }
    static double Position(CMediaPlayer& player)
    {
        double dSeconds = -1.0;
        CPlayerBase* pCurrent = player.*(&CStage::m_pCurPlayer);
        EXPECT_EQ(S_OK, pCurrent ? pCurrent->GetCurTime(&dSeconds) : E_FAIL);
        return dSeconds;
    }
};

const DWORD kSound = TESSALY_FILEINFO_AUDIO_ONLY | TESSALY_FILEINFO_SEEKABLE;

class QTPlayback : public ::testing::TestWithParam<const char*>
{
};

// A file with a picture is a movie; the length within a frame of 25 a second, but a bare AAC
// stream names none, and ffprobe and the platform each estimate their own.
TEST_P(QTPlayback, ReportsTheFilePlaysInRealTimeAndCompletesOnceAtItsStart)
{
    CTestMedia::Truth truth;
    ASSERT_TRUE(CTestMedia::ReadIn(TESSALY_QT_MEDIA_DIR, GetParam(), &truth));
    CPlaybackHost host;
    TESSALY_FILEINFO info = {};
    ASSERT_EQ(S_OK, host.Open(Path(GetParam()), &info));
    EXPECT_EQ(truth.dwWidth ? TESSALY_FILEINFO_SEEKABLE : kSound, info.dwAttributeMask);
    EXPECT_NEAR(truth.dDuration, info.dDuration, std::strstr(GetParam(), ".aac") ? 0.1 : 0.04);
    EXPECT_EQ(truth.dwWidth, info.dwWidth);
    EXPECT_EQ(truth.dwHeight, info.dwHeight);

    const ULONGLONG start = GetTickCount64();
    ASSERT_EQ(S_OK, host.Player().Play());
    ASSERT_TRUE(host.PumpUntilEnd(15000));
    EXPECT_GT((GetTickCount64() - start) / 1000.0, info.dDuration - 0.2) << "ended before its time";
    host.PumpFor(500);
    EXPECT_EQ(0u, host.Count(STREAMING_EVENT_ERROR));
    EXPECT_EQ(1u, host.Count(STREAMING_EVENT_COMPLETE));
    ASSERT_EQ(STREAMING_EVENT_COMPLETE, host.events.back().dwCode);
    // The report made with the completion finds the movie rewound; the ones before keep to the
    // clock since Play and never go back.
    const std::vector<double> progress = host.Progress();
    ASSERT_GT(progress.size(), 5u);
    EXPECT_EQ(0.0, progress.back());
    EXPECT_GT(progress[progress.size() - 2], info.dDuration / 2);
    for (size_t i = 0; i + 1 < progress.size(); ++i)
    {
        EXPECT_LE(progress[i], (host.events[i].tick - start) / 1000.0 + 0.1) << "report " << i;
        EXPECT_GE(progress[i], i ? progress[i - 1] : 0.0) << "report " << i;
    }
    EXPECT_EQ(Playback_State_Stop, host.Player().GetPlayState());
}

INSTANTIATE_TEST_SUITE_P(EveryKind, QTPlayback,
                         ::testing::Values("clip.mov", "clip.mp4", "clip.m4v", "clip.3gp", "tone.m4a", "tone.aac", "tone.aiff"));

// A movie's controller is serviced on the host's thread, a sound's by the audio back-end's worker.
class QTTransport : public ::testing::TestWithParam<const char*>
{
protected:
    double Position() { return CStage::Position(host.Player()); }
    CPlaybackHost host;
};

TEST_P(QTTransport, PauseHoldsStopRewindsAndASeekLandsAndPlaysOnToOneCompletion)
{
    ASSERT_EQ(S_OK, host.Open(Path(GetParam()), nullptr));
    ASSERT_EQ(S_OK, host.Player().Play());
    host.PumpFor(600);
    ASSERT_EQ(S_OK, host.Player().Pause());
    const double dPaused = Position();
    EXPECT_GT(dPaused, 0.1);
    const size_t nEvents = host.events.size();
    host.PumpFor(600);
    EXPECT_NEAR(dPaused, Position(), 0.05);
    EXPECT_EQ(nEvents, host.events.size()) << "progress went on while paused";
    ASSERT_EQ(S_OK, host.Player().Pause());
    EXPECT_EQ(Playback_State_Play, host.Player().GetPlayState());
    host.PumpFor(300);
    EXPECT_GT(Position(), dPaused + 0.15) << "a second pause resumes";

    ASSERT_EQ(S_OK, host.Player().Stop());
    EXPECT_EQ(0.0, Position());
    host.PumpFor(500);
    EXPECT_EQ(0.0, Position()) << "a stopped movie does not move";
    EXPECT_EQ(0u, host.Count(STREAMING_EVENT_COMPLETE));
    ASSERT_EQ(S_OK, host.Player().Play());
    ASSERT_EQ(S_OK, host.Player().Pause());
    ASSERT_EQ(S_OK, host.Player().SeekTo(1.25));
    EXPECT_NEAR(1.25, Position(), 0.02);
    const size_t nBefore = host.Progress().size();
    ASSERT_EQ(S_OK, host.Player().Pause());
    ASSERT_TRUE(host.PumpUntilEnd(10000));
    const std::vector<double> progress = host.Progress();
    for (size_t i = nBefore; i + 1 < progress.size(); ++i) // the last report is made after the end, rewound
        EXPECT_GE(progress[i], 1.2) << "report " << i;
    EXPECT_EQ(1u, host.Count(STREAMING_EVENT_COMPLETE));
    EXPECT_EQ(0u, host.Count(STREAMING_EVENT_ERROR));
}

INSTANTIATE_TEST_SUITE_P(MovieAndSound, QTTransport, ::testing::Values("clip.mov", "tone.m4a"));

// Pictures only pretend to follow the transport and have no time line; an animated GIF reports
// one loop's length and loops for ever.
TEST(QTPicture, TransportIsPretendedSeekingRefusedAndAnAnimationNeverCompletes)
{
    const struct
    {
        const char* pszName;
        double dDuration;
        DWORD dwWidth, dwHeight;
    } kPictures[] = {{"still.pict", 0.0, 64, 48}, {"still.gif", 0.0, 80, 60}, {"anim.gif", 1.0, 80, 60}};
    for (const auto& picture : kPictures)
    {
        SCOPED_TRACE(picture.pszName);
        CPlaybackHost host;
        TESSALY_FILEINFO info = {};
        info.dDuration = -1.0;
        ASSERT_EQ(S_OK, host.Open(Path(picture.pszName), &info));
        EXPECT_EQ(static_cast<DWORD>(TESSALY_FILEINFO_PICTURE), info.dwAttributeMask);
        EXPECT_EQ(picture.dDuration, info.dDuration);
        EXPECT_EQ(picture.dwWidth, info.dwWidth);
        EXPECT_EQ(picture.dwHeight, info.dwHeight);
        CQTPlayer& qt = *CStage::Find<CQTPlayer>(host.Player());
        EXPECT_EQ((std::vector<HRESULT>{S_OK, S_OK, S_OK, S_OK, E_FAIL}),
                  (std::vector<HRESULT>{qt.Play(), qt.Pause(), qt.Resume(), qt.Stop(), qt.SetCurTime(0.5)}));
        EXPECT_EQ(0.0, CStage::Position(host.Player()));
        if (picture.dDuration > 0)
        {
            ASSERT_EQ(S_OK, host.Player().Play());
            EXPECT_FALSE(host.PumpUntilEnd(3000)) << "a looping GIF has no end";
            EXPECT_GT(host.Progress().size(), 10u) << "a picture's progress counts the timer's ticks";
            EXPECT_EQ(host.Progress().size(), host.events.size());
        }
    }
}

// The video back-end's windows in a host window of 320x240: the movie of 160x120 fitted by the
// stretch flag and refitted when the parent is resized; input over them handed on to the host.
class QTLayout : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(S_OK, host.Open(Path("clip.mov"), nullptr));
        hBackground = FindWindowExW(host.Window(), nullptr, L"QTPlayer.Background.WndClass", nullptr);
        ASSERT_NE(nullptr, hVideo = FindWindowExW(hBackground, nullptr, L"QTPlayer.Handler.WndClass", nullptr));
    }
    // Each window's left, top, right and bottom in its parent's client area.
    std::vector<long> Placed()
    {
        std::vector<long> placed;
        for (HWND hWnd : {hBackground, hVideo})
        {
            RECT rc = {};
            GetWindowRect(hWnd, &rc);
            MapWindowPoints(HWND_DESKTOP, GetParent(hWnd), reinterpret_cast<POINT*>(&rc), 2);
            placed.insert(placed.end(), {rc.left, rc.top, rc.right, rc.bottom});
        }
        return placed;
    }

    CPlaybackHost host{320, 240};
    HWND hBackground = nullptr, hVideo = nullptr;
};

TEST_F(QTLayout, TheMovieFollowsTheStretchFlagAndAChangedFlagIsAnsweredWithEFail)
{
    CQTPlayer& qt = *CStage::Find<CQTPlayer>(host.Player());
    EXPECT_EQ((std::vector<long>{0, 0, 320, 240, 0, 0, 320, 240}), Placed());
    EXPECT_EQ(S_OK, qt.SetPlaybackFlags(TESSALY_PLAYBACK_FLAG_STRETCH));
    EXPECT_EQ(E_FAIL, qt.SetPlaybackFlags(0));
    EXPECT_EQ((std::vector<long>{0, 0, 320, 240, 80, 60, 240, 180}), Placed()) << "centred at its own size";
    EXPECT_EQ(S_OK, qt.SetPlaybackFlags(0)) << "the refused change was kept all the same";
}

TEST_F(QTLayout, AParentResizeRefitsBothWindowsAndSetsAPausedMoviePlaying)
{
    ASSERT_EQ(S_OK, host.Player().Play());
    host.PumpFor(300);
    ASSERT_EQ(S_OK, host.Player().Pause());
    const double dPaused = CStage::Position(host.Player());
    host.Resize(400, 200);
    ASSERT_EQ(S_OK, host.Player().SetParentWindowSize(400, 200));
    EXPECT_EQ((std::vector<long>{0, 0, 400, 200, 67, 0, 333, 200}), Placed()) << "stretched to the height, centred";
    host.PumpFor(800);
    EXPECT_GT(CStage::Position(host.Player()), dPaused + 0.2) << "a resize resumes, whatever the dispatcher's state";
    EXPECT_EQ(Playback_State_Pause, host.Player().GetPlayState());
}

// The controller does not take the click as play or pause; the audio worker's window passes keys.
TEST_F(QTLayout, InputOverTheBackEndsWindowsReachesTheHostAndTheMovieGoesOn)
{
    ASSERT_EQ(S_OK, host.Player().Play());
    SetCursorPos(100, 100); // over the movie, which fills the host window at the screen's corner
    PostMessageW(hVideo, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(100, 100));
    host.PumpFor(200);
    const double dBefore = CStage::Position(host.Player());
    host.PumpFor(500);
    EXPECT_GT(CStage::Position(host.Player()), dBefore + 0.2);
    EXPECT_TRUE(std::any_of(host.inputs.begin(), host.inputs.end(),
                            [](const CPlaybackHost::Input& input) { return input.uMsg == WM_LBUTTONDOWN; }));

    CPlaybackHost sound;
    ASSERT_EQ(S_OK, sound.Open(Path("tone.m4a"), nullptr));
    PostMessageW(g_hQTAudioHandlerWnd, WM_KEYDOWN, VK_RETURN, 0);
    ASSERT_TRUE(sound.PumpUntil([&] { return !sound.inputs.empty(); }, 2000));
    EXPECT_EQ(std::make_pair(static_cast<UINT>(WM_KEYDOWN), static_cast<WPARAM>(VK_RETURN)),
              std::make_pair(sound.inputs[0].uMsg, sound.inputs[0].wParam));
}

// The audio back-end's worker is gone by the time Destroy returns, even when that is called from
// inside one of the dispatcher's events, and what was still posted finds nothing to reach.
class QTAudioDestroyedInAnEvent : public ::testing::TestWithParam<DWORD>
{
protected:
    static HRESULT OnEvent(DWORD dwEvent, ULONG_PTR, void* pContext)
    {
        auto pThis = static_cast<QTAudioDestroyedInAnEvent*>(pContext);
        if (dwEvent == pThis->GetParam() && pThis->dwWorkerAfterDestroy == WAIT_FAILED)
        {
            pThis->host.Player().Destroy();
            pThis->dwWorkerAfterDestroy = WaitForSingleObject(pThis->hWorker, 0);
        }
        return S_OK;
    }

    CPlaybackHost host;
    HANDLE hWorker = nullptr;
    DWORD dwWorkerAfterDestroy = WAIT_FAILED;
};

TEST_P(QTAudioDestroyedInAnEvent, ReturnsOnlyAfterTheWorkerAndItsWindowHaveEnded)
{
    ASSERT_EQ(S_OK, host.Open(Path("tone.m4a"), nullptr));
    const HWND hHandler = g_hQTAudioHandlerWnd;
    ASSERT_NE(GetCurrentThreadId(), GetWindowThreadProcessId(hHandler, nullptr));
    hWorker = OpenThread(SYNCHRONIZE, FALSE, GetWindowThreadProcessId(hHandler, nullptr));
    host.Player().SetEventCallback(OnEvent, this);
    ASSERT_EQ(S_OK, host.Player().Play());
    ASSERT_TRUE(host.PumpUntil([&] { return dwWorkerAfterDestroy != WAIT_FAILED; }, 10000));
    EXPECT_EQ(WAIT_OBJECT_0, dwWorkerAfterDestroy);
    EXPECT_FALSE(IsWindow(hHandler));
    host.PumpFor(300);
    CloseHandle(hWorker);
}

INSTANTIATE_TEST_SUITE_P(ProgressAndCompletion, QTAudioDestroyedInAnEvent,
                         ::testing::Values(STREAMING_EVENT_PROGRESS, STREAMING_EVENT_COMPLETE));

TEST(QTAudioWorker, ASoundClosedWhilePlayingIsGoneAndStaysQuiet)
{
    CPlaybackHost host;
    ASSERT_EQ(S_OK, host.Open(Path("tone.m4a"), nullptr));
    ASSERT_EQ(S_OK, host.Player().Play());
    host.PumpFor(300);
    ASSERT_EQ(S_OK, host.Player().CloseFile());
    EXPECT_EQ(E_FAIL, CStage::Find<CQTAudioPlayer>(host.Player())->Play()) << "nothing left to play";
    const size_t nEvents = host.events.size();
    host.PumpFor(2500);
    EXPECT_EQ(nEvents, host.events.size()) << "the closed sound still reported";
}

// A parent that counts the audio workers' windows destroyed under it: only the worker can destroy
// its window, and must before it ends, or the platform's clean-up at the thread's end (which
// tells no parent) takes it.
int g_nHandlersDestroyed = 0;

LRESULT CALLBACK CountingParentProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    wchar_t szClass[64] = {};
    if (uMsg == WM_PARENTNOTIFY && LOWORD(wParam) == WM_DESTROY &&
        GetClassNameW(reinterpret_cast<HWND>(lParam), szClass, 64) && !wcscmp(szClass, L"QTAudioPlayer.Handler.WndClass"))
        ++g_nHandlersDestroyed;
    return DefWindowProcW(hWnd, uMsg, wParam, lParam);
}

// Open kernel handles are found by asking about every small handle value: this platform's process
// handle count does not move whatever is opened. QuickTime is kept started meanwhile (each start
// and stop of the layer leaves a handle of its own); the limits catch a leak per player.
TEST(QTAudioWorker, AHundredPlayersLeaveNoThreadWindowOrHandleBehind)
{
    auto openHandles = [] {
        long nHandles = 0;
        for (ULONG_PTR value = 4; value < 0x10000; value += 4)
        {
            DWORD dwFlags = 0;
            nHandles += GetHandleInformation(reinterpret_cast<HANDLE>(value), &dwFlags) != FALSE;
        }
        return nHandles;
    };
    WNDCLASSW wc = {0, CountingParentProc, 0, 0, nullptr, nullptr, nullptr, nullptr, nullptr, L"QTTestCountingParent"};
    RegisterClassW(&wc);
    HWND hParent = CreateWindowExW(0, wc.lpszClassName, L"", WS_POPUP | WS_VISIBLE, 0, 0, 320, 240, 0, 0, 0, 0);
    CQTPlayer holder;
    ASSERT_EQ(S_OK, holder.Init());
    auto player = [&] {
        CQTAudioPlayer qa;
        EXPECT_EQ((std::vector<HRESULT>{S_OK, S_OK}), (std::vector<HRESULT>{qa.Init(), qa.SetParentWindow(hParent)}));
        qa.Destroy();
    };
    for (int i = 0; i < 3; ++i) // the platform's first-use caches
        player();
    CMessagePump::PumpFor(100);
    const CProcessCounts before = CProcessCounts::Take();
    const long nHandles = openHandles();
    g_nHandlersDestroyed = 0;
    for (int i = 0; i < 100; ++i)
        player();
    EXPECT_EQ(100, g_nHandlersDestroyed);
    CProcessCounts growth;
    for (int nWait = 0; nWait < 25 && (nWait == 0 || growth.lThreads >= 3); ++nWait)
    {
        CMessagePump::PumpFor(200); // the platform's threads end a little later
        growth = CProcessCounts::Take() - before;
    }
    growth.lHandles = openHandles() - nHandles;
    growth.Print("100 players parented and destroyed");
    EXPECT_LT(growth.lThreads, 3);
    EXPECT_LT(growth.lUserObjects, 10);
    EXPECT_LT(growth.lGdiObjects, 10);
    EXPECT_LT(growth.lHandles, 10);
    holder.Destroy();
    DestroyWindow(hParent);
}

// Files cut short, full of noise, empty or missing, of every kind the back-ends take: the open
// fails with E_FAIL in good time and leaves the caller's record alone, and a good file opens next.
class QTDamagedFile : public ::testing::TestWithParam<const char*>
{
};

TEST_P(QTDamagedFile, FailsToOpenAndTheNextGoodFileStillOpens)
{
    CPlaybackHost host;
    TESSALY_FILEINFO info;
    std::memset(&info, 0xCD, sizeof(info));
    EXPECT_EQ(E_FAIL, host.Open(Path(GetParam()), &info));
    EXPECT_EQ(0xCDCDCDCDu, info.dwAttributeMask);
    EXPECT_EQ(0xCDCDCDCDu, info.dwWidth);
    EXPECT_EQ(E_FAIL, host.Player().Play());
    host.PumpFor(300);
    EXPECT_TRUE(host.events.empty());
    ASSERT_EQ(S_OK, host.Open(Path("tone.m4a"), &info));
    EXPECT_EQ(kSound, info.dwAttributeMask);
}

INSTANTIATE_TEST_SUITE_P(EveryKind, QTDamagedFile,
                         ::testing::Values("cut.mov", "nomoov.mov", "huge.mov", "noise.mov", "empty.mov", "cut.m4a",
                                           "empty.m4a", "cut.gif", "noise.gif", "missing.mov", "missing.m4a"));

TEST(QTStartup, StartsOnceForSeveralBackEndsAndDispatchersAndStopsAfterTheLastOne)
{
    g_nInitializeQTML = g_nEnterMovies = g_nExitMovies = g_nTerminateQTML = 0;
    auto pFirst = std::make_unique<CPlaybackHost>();
    auto pSecond = std::make_unique<CPlaybackHost>();
    ASSERT_EQ(S_OK, pFirst->Open(Path("clip.mov"), nullptr));
    ASSERT_EQ(S_OK, pFirst->Player().CloseFile());
    ASSERT_EQ(S_OK, pFirst->Open(Path("tone.m4a"), nullptr)); // the audio back-end too
    ASSERT_EQ(S_OK, pSecond->Open(Path("anim.gif"), nullptr));
    EXPECT_EQ(std::make_pair(1, 1), std::make_pair(g_nInitializeQTML, g_nEnterMovies));
    pFirst.reset();
    EXPECT_EQ(std::make_pair(0, 0), std::make_pair(g_nExitMovies, g_nTerminateQTML)) << "the second still shows its GIF";
    pSecond.reset();
    EXPECT_EQ(std::make_pair(1, 1), std::make_pair(g_nExitMovies, g_nTerminateQTML));
    CPlaybackHost third;
    ASSERT_EQ(S_OK, third.Open(Path("clip.mp4"), nullptr));
    EXPECT_EQ(2, g_nInitializeQTML) << "a new user starts it afresh";
}

} // namespace
