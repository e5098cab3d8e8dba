// The QuickTime back-ends through the dispatcher, on the layer of our own, with the media tests/qtml
// has ffmpeg write.
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
#include "tests/support/CWindowRect.h"

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
            if (auto pFound = dynamic_cast<TPlayer*>(pPlayer.get()))
                return pFound;
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

// A file with a picture is a movie; a bare AAC stream names no length (ffprobe and the platform each
// estimate their own). Sounds are serviced by the audio back-end's worker. After a seek, progress
// keeps to the clock up to the completion, whose report finds the movie rewound.
class QTPlayback : public ::testing::TestWithParam<const char*>
{
};

TEST_P(QTPlayback, ReportsTheFilePausesResumesStopsAndSeeksThenPlaysInRealTimeToOneCompletion)
{
    CTestMedia::Truth truth;
    ASSERT_TRUE(CTestMedia::ReadIn(TESSALY_QT_MEDIA_DIR, GetParam(), &truth));
    CPlaybackHost host;
    TESSALY_FILEINFO info = {};
    ASSERT_EQ(S_OK, host.Open(Path(GetParam()), &info));
    EXPECT_EQ(TESSALY_FILEINFO_SEEKABLE | (truth.dwWidth ? 0u : TESSALY_FILEINFO_AUDIO_ONLY), info.dwAttributeMask);
    EXPECT_NEAR(truth.dDuration, info.dDuration, std::strstr(GetParam(), ".aac") ? 0.1 : 0.04);
    EXPECT_EQ(std::make_pair(truth.dwWidth, truth.dwHeight), std::make_pair(info.dwWidth, info.dwHeight));

    auto position = [&] { return CStage::Position(host.Player()); };
    ASSERT_EQ(S_OK, host.Player().Play());
    host.PumpFor(600);
    ASSERT_EQ(S_OK, host.Player().Pause());
    const double dPaused = position();
    EXPECT_GT(dPaused, 0.1);
    host.PumpFor(600);
    EXPECT_NEAR(dPaused, position(), 0.05) << "moved while paused";
    ASSERT_EQ(S_OK, host.Player().Pause());
    host.PumpFor(300);
    EXPECT_GT(position(), dPaused + 0.15) << "a second pause resumes";
    ASSERT_EQ(S_OK, host.Player().Stop());
    host.PumpFor(500);
    EXPECT_EQ(0.0, position()) << "stop rewinds and holds";

    ASSERT_EQ(S_OK, host.Player().Play());
    ASSERT_EQ(S_OK, host.Player().Pause());
    ASSERT_EQ(S_OK, host.Player().SeekTo(1.25));
    EXPECT_NEAR(1.25, position(), 0.02);
    host.events.clear();
    const ULONGLONG start = GetTickCount64();
    ASSERT_EQ(S_OK, host.Player().Pause());
    ASSERT_TRUE(host.PumpUntilEnd(10000));
    EXPECT_GT((GetTickCount64() - start) / 1000.0, info.dDuration - 1.25 - 0.2) << "ended before its time";
    host.PumpFor(500);
    EXPECT_EQ(std::make_pair(size_t{1}, size_t{0}),
              std::make_pair(host.Count(STREAMING_EVENT_COMPLETE), host.Count(STREAMING_EVENT_ERROR)));
    const std::vector<double> progress = host.Progress();
    ASSERT_GT(progress.size(), 3u);
    EXPECT_EQ(0.0, progress.back());
    for (size_t i = 0; i + 1 < progress.size(); ++i)
    {
        EXPECT_LE(progress[i], 1.25 + (host.events[i].tick - start) / 1000.0 + 0.1) << "report " << i;
        EXPECT_GE(progress[i], i ? progress[i - 1] : 1.2) << "report " << i;
    }
}

INSTANTIATE_TEST_SUITE_P(EveryKind, QTPlayback,
                         ::testing::Values("clip.mov", "clip.mp4", "clip.m4v", "clip.3gp", "tone.m4a", "tone.aac", "tone.aiff"));

// Found by content (a PNG named .pict) or by an importer of the layer's own (a Targa).
TEST(QTPicture, TransportIsPretendedSeekingRefusedAndAnAnimationLoopsForEver)
{
    const std::pair<const char*, std::vector<double>> kPictures[] = {
        {"still.pict", {0.0, 64, 48}}, {"still.tga", {0.0, 64, 48}}, {"still.gif", {0.0, 80, 60}},
        {"anim.gif", {1.0, 80, 60}}};
    for (const auto& picture : kPictures) // length, width, height
    {
        SCOPED_TRACE(picture.first);
        CPlaybackHost host;
        TESSALY_FILEINFO info = {0, -1.0, 0, 0};
        ASSERT_EQ(S_OK, host.Open(Path(picture.first), &info));
        EXPECT_EQ(static_cast<DWORD>(TESSALY_FILEINFO_PICTURE), info.dwAttributeMask);
        EXPECT_EQ(picture.second, (std::vector<double>{info.dDuration, 1.0 * info.dwWidth, 1.0 * info.dwHeight}));
        CQTPlayer& qt = *CStage::Find<CQTPlayer>(host.Player());
        EXPECT_EQ((std::vector<HRESULT>{S_OK, S_OK, S_OK, S_OK, E_FAIL}),
                  (std::vector<HRESULT>{qt.Play(), qt.Pause(), qt.Resume(), qt.Stop(), qt.SetCurTime(0.5)}));
        EXPECT_EQ(0.0, CStage::Position(host.Player()));
        if (picture.second[0] > 0)
        {
            EXPECT_FALSE(host.Player().Play() != S_OK || host.PumpUntilEnd(3000)) << "a looping GIF has no end";
        }
    }
}

// The video back-end's windows placed by the stretch flag and refitted with the parent; input over
// them reaches the host and the click is no play or pause; the audio worker's window passes keys.
TEST(QTWindows, TheMovieFollowsTheStretchFlagAndTheParentAndInputReachesTheHost)
{
    CPlaybackHost host{320, 240};
    ASSERT_EQ(S_OK, host.Open(Path("clip.mov"), nullptr));
    HWND hBackground = FindWindowExW(host.Window(), nullptr, L"QTPlayer.Background.WndClass", nullptr);
    HWND hVideo = FindWindowExW(hBackground, nullptr, L"QTPlayer.Handler.WndClass", nullptr);
    ASSERT_NE(nullptr, hVideo);
    auto placed = [&] {
        std::vector<long> rects;
        for (HWND hWnd : {hBackground, hVideo})
        {
            const std::vector<long> edges = CWindowRect::Edges(hWnd);
            rects.insert(rects.end(), edges.begin(), edges.end());
        }
        return rects;
    };
    CQTPlayer& qt = *CStage::Find<CQTPlayer>(host.Player());
    EXPECT_EQ((std::vector<long>{0, 0, 320, 240, 0, 0, 320, 240}), placed());
    EXPECT_EQ(S_OK, qt.SetPlaybackFlags(TESSALY_PLAYBACK_FLAG_STRETCH));
    EXPECT_EQ(E_FAIL, qt.SetPlaybackFlags(0));
    EXPECT_EQ((std::vector<long>{0, 0, 320, 240, 80, 60, 240, 180}), placed()) << "centred at its own size";
    EXPECT_EQ(S_OK, qt.SetPlaybackFlags(0)) << "the refused change was kept all the same";
    EXPECT_EQ(E_FAIL, qt.SetPlaybackFlags(TESSALY_PLAYBACK_FLAG_STRETCH));

    ASSERT_EQ(S_OK, host.Player().Play());
    SetCursorPos(100, 100); // over the movie, which fills the host window at the screen's corner
    PostMessageW(hVideo, WM_LBUTTONDOWN, MK_LBUTTON, MAKELPARAM(100, 100));
    host.PumpFor(500);
    ASSERT_EQ(S_OK, host.Player().Pause());
    const double dPaused = CStage::Position(host.Player());
    EXPECT_GT(dPaused, 0.2) << "the click paused the movie";
    EXPECT_TRUE(std::any_of(host.inputs.begin(), host.inputs.end(),
                            [](const CPlaybackHost::Input& input) { return input.uMsg == WM_LBUTTONDOWN; }));
    host.Resize(400, 200);
    ASSERT_EQ(S_OK, host.Player().SetParentWindowSize(400, 200));
    EXPECT_EQ((std::vector<long>{0, 0, 400, 200, 67, 0, 333, 200}), placed()) << "stretched to the height, centred";
    host.PumpFor(800);
    EXPECT_GT(CStage::Position(host.Player()), dPaused + 0.2) << "a resize resumes, whatever the dispatcher's state";

    CPlaybackHost sound;
    ASSERT_EQ(S_OK, sound.Open(Path("tone.m4a"), nullptr));
    PostMessageW(g_hQTAudioHandlerWnd, WM_KEYDOWN, VK_RETURN, 0);
    ASSERT_TRUE(sound.PumpUntil([&] { return !sound.inputs.empty(); }, 2000));
    EXPECT_EQ(std::make_pair(static_cast<UINT>(WM_KEYDOWN), static_cast<WPARAM>(VK_RETURN)),
              std::make_pair(sound.inputs[0].uMsg, sound.inputs[0].wParam));
}

// A parent counts the audio workers' windows destroyed under it (the platform's clean-up at a
// thread's end tells no parent). Handles are counted by asking about every small value (the count
// the process reports does not move here), with the layer kept started (each start keeps one).
int g_nHandlersDestroyed = 0;

long OpenHandles()
{
    long nHandles = 0;
    DWORD dwFlags = 0;
    for (ULONG_PTR value = 4; value < 0x10000; value += 4)
        nHandles += GetHandleInformation(reinterpret_cast<HANDLE>(value), &dwFlags) != FALSE;
    return nHandles;
}

LRESULT CALLBACK CountHandlerDestroys(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    wchar_t szClass[64] = {};
    g_nHandlersDestroyed += uMsg == WM_PARENTNOTIFY && LOWORD(wParam) == WM_DESTROY &&
                            GetClassNameW(reinterpret_cast<HWND>(lParam), szClass, 64) &&
                            !wcscmp(szClass, L"QTAudioPlayer.Handler.WndClass");
    return DefWindowProcW(hWnd, uMsg, wParam, lParam);
}

TEST(QTAudioWorkers, AHundredLeaveNoWindowOrHandleBehind)
{
    WNDCLASSW wc = {0, CountHandlerDestroys,
                    0, 0, nullptr, nullptr, nullptr, nullptr, nullptr, L"QTTestCountingParent"};
    RegisterClassW(&wc);
    HWND hParent = CreateWindowExW(0, wc.lpszClassName, L"", WS_POPUP | WS_VISIBLE, 0, 0, 320, 240, 0, 0, 0, 0);
    CQTPlayer holder;
    ASSERT_EQ(S_OK, holder.Init());
    auto player = [&] {
        CQTAudioPlayer qa;
        EXPECT_EQ((std::vector<HRESULT>{S_OK, S_OK}), (std::vector<HRESULT>{qa.Init(), qa.SetParentWindow(hParent)}));
        qa.Destroy();
    };
    player(); // the platform's first-use caches
    const long nHandles = OpenHandles();
    g_nHandlersDestroyed = 0;
    for (int i = 0; i < 100; ++i)
        player();
    EXPECT_EQ(100, g_nHandlersDestroyed);
    EXPECT_LT(OpenHandles() - nHandles, 10);
    holder.Destroy();
    DestroyWindow(hParent);
}

// Files cut short, full of noise, empty or missing, of every kind the back-ends take: E_FAIL, the
// caller's record left alone, no event, and a good file opens next.
class QTDamagedFile : public ::testing::TestWithParam<const char*>
{
};

TEST_P(QTDamagedFile, FailsToOpenAndTheNextGoodFileStillOpens)
{
    CPlaybackHost host;
    TESSALY_FILEINFO info;
    std::memset(&info, 0xCD, sizeof(info));
    EXPECT_EQ(E_FAIL, host.Open(Path(GetParam()), &info));
    EXPECT_EQ(std::make_pair(DWORD{0xCDCDCDCD}, DWORD{0xCDCDCDCD}), std::make_pair(info.dwAttributeMask, info.dwWidth));
    host.PumpFor(300);
    EXPECT_TRUE(host.events.empty());
    EXPECT_EQ(S_OK, host.Open(Path("tone.m4a"), &info));
}

INSTANTIATE_TEST_SUITE_P(EveryKind, QTDamagedFile,
                         ::testing::Values("cut.mov", "nomoov.mov", "huge.mov", "noise.mov", "empty.mov", "cut.m4a",
                                           "empty.m4a", "cut.gif", "noise.gif", "missing.mov", "missing.m4a"));

// Started while any back-end needs it, stopped after the last (the count is engine_tests').
TEST(QTStartup, TheLayerRunsWhileAnyBackEndNeedsItAndStopsAfterTheLastOne)
{
    long response = 0;
    auto pFirst = std::make_unique<CPlaybackHost>();
    auto pSecond = std::make_unique<CPlaybackHost>();
    ASSERT_EQ(S_OK, pFirst->Open(Path("tone.m4a"), nullptr));
    ASSERT_EQ(S_OK, pSecond->Open(Path("anim.gif"), nullptr));
    pFirst.reset();
    EXPECT_EQ(noErr, Gestalt(gestaltQuickTime, &response)) << "the second still shows its GIF";
    pSecond.reset();
    EXPECT_EQ(gestaltUndefSelectorErr, Gestalt(gestaltQuickTime, &response));
}

} // namespace
