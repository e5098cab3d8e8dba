// The progress timer, measured over a real message loop.
#include "MediaPlayerTest.h"

#include <cstdio>

namespace {

class Progress : public MediaPlayerTest
{
protected:
    // Plays a still picture until it has reported n ticks.
    void PlayPictureUntil(size_t n)
    {
        pPV->fileInfo = {S_OK, true, FALSE, 0.0, TRUE, 640, 480, TRUE};
        OpenAndPlay(L"a.png");
        ASSERT_TRUE(PumpUntilProgressCount(n));
    }
};

TEST_F(Progress, AboutTenReportsASecondOfPlaying)
{
    pDS->dCurTime = 4.5;
    OpenAndPlay(L"a.mp3");
    const ULONGLONG start = GetTickCount64();
    ASSERT_TRUE(PumpUntilProgressCount(10));
    const ULONGLONG elapsed = GetTickCount64() - start;
    // A busy machine can only make ticks late: ten of a 100 ms timer need about a second.
    EXPECT_GE(elapsed, 850u);
    std::printf("10 progress reports in %llu ms\n", elapsed);
    RecordProperty("ms_for_ten_reports", static_cast<int>(elapsed));

    // Each report carries the position the back-end gave just before it.
    const Entries& entries = log.Entries();
    ASSERT_EQ(entries.size(), 20u);
    for (size_t i = 0; i < entries.size(); i += 2)
    {
        EXPECT_EQ(entries[i], "DS.GetCurTime");
        EXPECT_EQ(entries[i + 1], "event.progress(4.5)");
    }
}

TEST_F(Progress, NoneWhilePausedOrStopped)
{
    OpenAndPlay(L"a.mp3");
    ASSERT_TRUE(PumpUntilProgressCount(1));
    ASSERT_EQ(player->Pause(), S_OK);
    progress.clear();
    PumpFor(350);
    EXPECT_TRUE(progress.empty());

    ASSERT_EQ(player->Pause(), S_OK); // resumes
    EXPECT_TRUE(PumpUntilProgressCount(1));

    ASSERT_EQ(player->Stop(), S_OK);
    progress.clear();
    log.Clear();
    PumpFor(350);
    EXPECT_TRUE(progress.empty());
    EXPECT_EQ(log.Count("DS.GetCurTime"), 0u);
}

TEST_F(Progress, APictureReportsTimerTicks)
{
    PlayPictureUntil(10);
    progress.resize(10);
    EXPECT_EQ(progress, (std::vector<double>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10}));
    EXPECT_EQ(log.Count("PV.GetCurTime"), 0u);
}

TEST_F(Progress, ASeekOnAPausedPictureContinuesFromTheTruncatedValue)
{
    PlayPictureUntil(3);
    ASSERT_EQ(player->Pause(), S_OK);
    progress.clear();
    EXPECT_EQ(player->SeekTo(7.9), S_OK);
    ASSERT_EQ(player->Pause(), S_OK);
    ASSERT_TRUE(PumpUntilProgressCount(1));
    EXPECT_EQ(progress.front(), 8.0);
}

TEST_F(Progress, StopRestartsThePictureCountAndPauseKeepsIt)
{
    PlayPictureUntil(2);
    ASSERT_EQ(player->Pause(), S_OK);
    const double dPaused = progress.back();
    progress.clear();
    ASSERT_EQ(player->Play(), S_OK);
    ASSERT_TRUE(PumpUntilProgressCount(1));
    EXPECT_EQ(progress.front(), dPaused + 1);

    ASSERT_EQ(player->Stop(), S_OK);
    progress.clear();
    ASSERT_EQ(player->Play(), S_OK);
    ASSERT_TRUE(PumpUntilProgressCount(1));
    EXPECT_EQ(progress.front(), 1.0);
}

TEST_F(Progress, PlayAfterInitRestartsThePictureCount)
{
    PlayPictureUntil(2);
    // Init says stopped without stopping anything; the next Play starts counting afresh.
    ASSERT_EQ(player->Init(L"a.png"), S_OK);
    ASSERT_EQ(player->Play(), S_OK);
    progress.clear();
    ASSERT_TRUE(PumpUntilProgressCount(1));
    EXPECT_EQ(progress.front(), 1.0);
}

TEST_F(Progress, OnlyAPositionAnsweredWithSOkIsReported)
{
    ASSERT_EQ(Open(L"a.mp3"), S_OK);
    HWND hWnd = player->EventWindow();
    log.Clear();
    pDS->dCurTime = 2.25;
    SendMessageW(hWnd, WM_TIMER, 1, 0);
    EXPECT_EQ(log.Entries(), (Entries{"DS.GetCurTime", "event.progress(2.25)"}));

    // A failure, and the 1 with which the CD back-end says it has no position.
    for (HRESULT hr : {E_FAIL, S_FALSE})
    {
        log.Clear();
        pDS->Script("GetCurTime", hr);
        SendMessageW(hWnd, WM_TIMER, 1, 0);
        EXPECT_EQ(log.Entries(), Entries{"DS.GetCurTime"});
    }

    log.Clear();
    pDS->Script("GetCurTime", S_OK);
    pDS->bWritesCurTime = false;
    SendMessageW(hWnd, WM_TIMER, 1, 0);
    EXPECT_EQ(log.Entries(), (Entries{"DS.GetCurTime", "event.progress(0)"}));

    // Another timer of the window is not the progress timer.
    log.Clear();
    EXPECT_EQ(SendMessageW(hWnd, WM_TIMER, 2, 0), 0);
    EXPECT_TRUE(log.Entries().empty());
}

TEST_F(Progress, WithoutACallbackThePositionIsNotAsked)
{
    ASSERT_EQ(Open(L"a.mp3"), S_OK);
    player->SetEventCallback(nullptr, nullptr);
    log.Clear();
    SendMessageW(player->EventWindow(), WM_TIMER, 1, 0);
    EXPECT_TRUE(log.Entries().empty());
}

} // namespace
