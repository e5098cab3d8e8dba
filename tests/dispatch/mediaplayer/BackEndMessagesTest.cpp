// Completion, error and track messages that back-ends post to the dispatcher's window.
#include "MediaPlayerTest.h"

#include "base/EngineMessages.h"

namespace {

using BackEndMessages = MediaPlayerTest;

TEST_F(BackEndMessages, CompletionReportsOnceMoreStopsAndCompletes)
{
    for (UINT uMsg : {WM_DSHOW_PLAYBACK_COMPLETE, WM_QT_PLAYBACK_COMPLETE, WM_WMP_PLAYBACK_COMPLETE,
                      WM_CDDA_PLAYBACK_COMPLETE})
    {
        SCOPED_TRACE(testing::Message() << "WM_USER+" << uMsg - WM_USER);
        pDS->dCurTime = 9.5;
        OpenAndPlay(L"a.mp3");
        ASSERT_TRUE(pDS->PostToDispatcher(uMsg));
        ASSERT_TRUE(PumpUntil([&] { return log.Count("event.complete") == 1; }));
        EXPECT_EQ(log.Tail(4), (Entries{"DS.GetCurTime", "event.progress(9.5)", "DS.Stop", "event.complete(0)"}));
        EXPECT_EQ(player->GetPlayState(), Playback_State_Stop);

        progress.clear();
        PumpFor(250);
        EXPECT_TRUE(progress.empty()) << "the timer still runs";
        ASSERT_EQ(player->CloseFile(), S_OK);
    }
}

TEST_F(BackEndMessages, AnErrorReportsOnceMoreStopsTheTimerAndLeavesTheState)
{
    const struct
    {
        UINT uMsg;
        WPARAM wParam;
        const char* pszEvent;
    } cases[] = {
        {WM_DSHOW_PLAYBACK_ERROR, 0x80040265, "event.error(0x80040265)"},
        {WM_WMP_PLAYBACK_ERROR, 2, "event.error(0x00000002)"},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(c.pszEvent);
        pDS->dCurTime = 3.0;
        OpenAndPlay(L"a.mp3");
        ASSERT_TRUE(pDS->PostToDispatcher(c.uMsg, c.wParam));
        ASSERT_TRUE(PumpUntil([&] { return log.Count("event.error") == 1; }));
        EXPECT_EQ(log.Tail(3), (Entries{"DS.GetCurTime", "event.progress(3)", c.pszEvent}));
        EXPECT_EQ(log.Count("DS.Stop"), 0u);
        EXPECT_EQ(player->GetPlayState(), Playback_State_Play);

        progress.clear();
        PumpFor(250);
        EXPECT_TRUE(progress.empty()) << "the timer still runs";
        ASSERT_EQ(player->CloseFile(), S_OK);
    }
}

TEST_F(BackEndMessages, ATrackCompleteKeepsTheTimerRunning)
{
    ASSERT_EQ(player->Init(L"x.cda"), S_OK);
    ASSERT_EQ(player->OpenCD(L'D', 1, 3), S_OK);
    ASSERT_EQ(player->Play(), S_OK);
    pCD->dCurTime = 0.25;
    log.Clear();
    ASSERT_TRUE(pCD->PostToDispatcher(WM_CDDA_TRACK_COMPLETE));
    ASSERT_TRUE(PumpUntil([&] { return log.Count("event.track_complete") == 1; }));
    EXPECT_EQ(log.Tail(3), (Entries{"CD.GetCurTime", "event.progress(0.25)", "event.track_complete(0)"}));
    EXPECT_EQ(player->GetPlayState(), Playback_State_Play);

    progress.clear();
    EXPECT_TRUE(PumpUntilProgressCount(2));
}

TEST_F(BackEndMessages, GraphNotificationsGoToTheCDBackEndOnlyWhileItIsCurrent)
{
    ASSERT_EQ(Open(L"a.mp3"), S_OK);
    HWND hWnd = player->EventWindow();
    log.Clear();
    EXPECT_EQ(SendMessageW(hWnd, WM_CDDA_GRAPH_NOTIFY, 5, 6), 0);
    EXPECT_TRUE(log.Entries().empty());

    ASSERT_EQ(player->OpenCD(L'D', 1, 1), S_OK);
    log.Clear();
    EXPECT_EQ(SendMessageW(hWnd, WM_CDDA_GRAPH_NOTIFY, 5, 6), 0);
    EXPECT_EQ(log.Entries(), Entries{"CD.OnEngineNotify(5,6)"});
}

TEST_F(BackEndMessages, AMessageQueuedBeforeStopCountsThePictureFromZero)
{
    pPV->fileInfo = {S_OK, true, FALSE, 0.0, TRUE, 8, 8, TRUE};
    OpenAndPlay(L"a.bmp");
    ASSERT_TRUE(PumpUntilProgressCount(3));
    ASSERT_EQ(player->Stop(), S_OK);
    log.Clear();
    EXPECT_EQ(SendMessageW(player->EventWindow(), WM_DSHOW_PLAYBACK_ERROR, 1, 0), 0);
    EXPECT_EQ(log.Entries(), (Entries{"event.progress(1)", "event.error(0x00000001)"}));
}

TEST_F(BackEndMessages, CompletionWithoutACallbackStillStops)
{
    OpenAndPlay(L"a.mp3");
    player->SetEventCallback(nullptr, nullptr);
    EXPECT_EQ(SendMessageW(player->EventWindow(), WM_DSHOW_PLAYBACK_COMPLETE, 0, 0), 0);
    EXPECT_EQ(log.Entries(), Entries{"DS.Stop"});
    EXPECT_EQ(player->GetPlayState(), Playback_State_Stop);
}

} // namespace
