// Play, Pause, Stop and SeekTo from each state, the progress timer, the messages back-ends post.
#include "MediaPlayerTest.h"

#include "base/EngineMessages.h"

namespace {

const TESSALY_PLAYBACK_STATE kPlay = Playback_State_Play, kPause = Playback_State_Pause, kStop = Playback_State_Stop;

class Playback : public MediaPlayerTest
{
protected:
    void Enter(TESSALY_PLAYBACK_STATE state) // a.mp3 open in that state, a clean log
    {
        ASSERT_EQ(Open(L"a.mp3"), S_OK);
        ASSERT_EQ(state == kPlay || state == kPause ? player->Play() : S_OK, S_OK);
        ASSERT_EQ(state == kPause ? player->Pause() : S_OK, S_OK);
        log.clear();
    }
    HRESULT Run(int op) { return op == 0 ? player->Play() : op == 1 ? player->Pause() : op == 2 ? player->Stop() : player->SeekTo(12.75); }
};

TEST_F(Playback, EveryStateAndOperationAndABackEndFailureChangingNothing)
{
    // Play, Pause, Stop, SeekTo: the one back-end call, the result, the state after. Play leaves Pause through the
    // back-end's Play; a second Pause resumes.
    const struct { TESSALY_PLAYBACK_STATE from; const char* call[4]; HRESULT hr[4]; TESSALY_PLAYBACK_STATE to[4]; } rows[] = {
        {kStop, {"Play", "", "", ""}, {S_OK, E_FAIL, S_OK, E_FAIL}, {kPlay, kStop, kStop, kStop}},
        {kPlay, {"", "Pause", "Stop", "SetCurTime"}, {S_OK, S_OK, S_OK, S_OK}, {kPlay, kPause, kStop, kPlay}},
        {kPause, {"Play", "Resume", "Stop", "SetCurTime"}, {S_OK, S_OK, S_OK, S_OK}, {kPlay, kPlay, kStop, kPause}}};
    const HRESULT kNotReady = HRESULT_FROM_WIN32(ERROR_NOT_READY);
    HWND hWndOther = CreateWindowExW(0, L"STATIC", L"", WS_OVERLAPPEDWINDOW, 0, 0, 50, 50, nullptr, nullptr, nullptr, nullptr);
    player->SetParentWindow(hWndParent);
    for (int i = 0; i < 24; ++i)
    {
        const auto& row = rows[i / 8];
        const int op = i % 4;
        const bool bCall = *row.call[op];
        const HRESULT hrBackEnd = i % 8 < 4 ? S_OK : kNotReady;
        SCOPED_TRACE(Str("state ", row.from, ", operation ", op, ", back-end 0x", std::hex, hrBackEnd));
        Enter(row.from);
        pDS->results[row.call[op]] = hrBackEnd;
        SetFocus(hWndOther);
        EXPECT_EQ(Run(op), bCall && hrBackEnd != S_OK ? kNotReady : row.hr[op]);
        EXPECT_EQ(log, bCall ? Entries{Str("DS.", row.call[op], op == 3 ? "(12.75)" : "")} : Entries{});
        EXPECT_EQ(player->GetPlayState(), hrBackEnd == S_OK ? row.to[op] : row.from);
        EXPECT_EQ(GetFocus(), op == 0 && bCall && hrBackEnd == S_OK ? hWndParent : hWndOther);
        pDS->results.clear();
    }
    DestroyWindow(hWndOther);
}

TEST_F(Playback, SeekRefusalsComeInOrder)
{
    pDS->fileInfo.bSeekable = FALSE;
    Enter(kStop);
    EXPECT_EQ(player->SeekTo(3.0), E_FAIL) << "stopped, before seekability is looked at";
    for (TESSALY_PLAYBACK_STATE state : {kPlay, kPause})
    {
        Enter(state);
        EXPECT_EQ(player->SeekTo(3.0), TESSALY_E_NOTSEEKABLE) << "state " << state;
    }
    pDS->fileInfo = {E_UNEXPECTED}; // a failed information query leaves a file unseekable
    Enter(kPlay);
    EXPECT_EQ(player->SeekTo(3.0), TESSALY_E_NOTSEEKABLE);
    pDS->fileInfo = {S_OK, FALSE, TRUE, TRUE}; // a seekable picture is "sought" without the back-end
    Enter(kPause);
    EXPECT_EQ(player->SeekTo(3.0), S_OK);
    EXPECT_TRUE(log.empty());
}

TEST_F(Playback, AboutTenPositionsASecondOnlyWhilePlayingOnlyWithSOkAndOnlyToACallback)
{
    pDS->dCurTime = 4.5;
    Enter(kPlay);
    const ULONGLONG start = GetTickCount64();
    ASSERT_TRUE(PumpUntilProgressCount(10));
    EXPECT_GE(GetTickCount64() - start, 850u) << "a busy machine can only make a 100 ms timer late";
    for (int op : {1, 2}) // Pause, Stop
    {
        ASSERT_EQ(Run(op), S_OK);
        progress.clear();
        CMessagePump::PumpFor(350);
        EXPECT_TRUE(progress.empty()) << op;
        EXPECT_TRUE(op != 1 || (player->Pause() == S_OK && PumpUntilProgressCount(1))) << "resumed";
    }
    // S_FALSE is how the CD back-end says it has no position; timer 2 is not the progress timer.
    const std::tuple<HRESULT, WPARAM, bool, Entries> cases[] = {
        {S_OK, 1, true, {"DS.GetCurTime", "event.progress(4.5)"}}, {S_FALSE, 1, true, {"DS.GetCurTime"}},
        {S_OK, 2, true, {}}, {S_OK, 1, false, {}}};
    for (const auto& [hr, timer, bCallback, expectedNow] : cases)
    {
        log.clear();
        pDS->results["GetCurTime"] = hr;
        player->SetEventCallback(bCallback ? &MediaPlayerTest::OnEvent : nullptr, this);
        EXPECT_EQ(SendMessageW(pDS->EventHandlerWindow(), WM_TIMER, timer, 0), 0);
        EXPECT_EQ(log, expectedNow) << std::hex << hr;
    }
}

TEST_F(Playback, APictureCountsTimerTicksFromEachStartOrSeek)
{
    pDS->fileInfo = {S_OK, FALSE, TRUE, TRUE};
    Enter(kPlay);
    ASSERT_TRUE(PumpUntilProgressCount(3));
    EXPECT_EQ(std::vector<double>(progress.begin(), progress.begin() + 3), (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(Count("DS.GetCurTime"), 0u) << "a picture's position is not asked for";
    ASSERT_EQ(player->Pause(), S_OK);
    EXPECT_EQ(player->SeekTo(7.9), S_OK);
    progress.clear();
    ASSERT_EQ(player->Play(), S_OK); // leaving Pause keeps the count
    ASSERT_TRUE(PumpUntilProgressCount(1));
    EXPECT_EQ(progress.front(), 8.0);
    ASSERT_EQ(player->Stop(), S_OK);
    progress.clear();
    ASSERT_EQ(player->Play(), S_OK);
    ASSERT_TRUE(PumpUntilProgressCount(2));
    EXPECT_EQ(progress.front(), 1.0) << "Stop starts the count again";
    ASSERT_EQ(player->Init(L"b.mp3"), S_OK); // so does opening over the playing picture after Init
    ASSERT_EQ(player->OpenFile(L"b.mp3", 0, 1, nullptr), S_OK);
    log.clear();
    SendMessageW(pDS->EventHandlerWindow(), WM_TIMER, 1, 0);
    EXPECT_EQ(log, Entries{"event.progress(1)"});
}

TEST_F(Playback, AnEndReportsOnceMoreThenStopsAndCompletesWhileAnErrorLeavesTheStopToTheOwner)
{
    const Entries complete = {"DS.GetCurTime", "event.progress(9.5)", "DS.Stop", "event.complete(0)"};
    const Entries error = {"DS.Play", "DS.GetCurTime", "event.progress(9.5)", "event.error(80040265)"};
    const std::pair<UINT, const Entries&> cases[] = {
        {WM_DSHOW_PLAYBACK_COMPLETE, complete}, {WM_QT_PLAYBACK_COMPLETE, complete}, {WM_WMP_PLAYBACK_COMPLETE, complete},
        {WM_CDDA_PLAYBACK_COMPLETE, complete},  {WM_DSHOW_PLAYBACK_ERROR, error},    {WM_WMP_PLAYBACK_ERROR, error}};
    pDS->dCurTime = 9.5;
    for (const auto& [uMsg, tail] : cases)
    {
        SCOPED_TRACE(Str("WM_USER+", uMsg - WM_USER));
        Enter(kStop);
        ASSERT_EQ(player->Play(), S_OK);
        ASSERT_TRUE(PostMessageW(pDS->EventHandlerWindow(), uMsg, 0x80040265, 0));
        ASSERT_TRUE(CMessagePump::PumpUntil([&] { return Count(tail.back()) == 1; }, 5000));
        EXPECT_EQ(Entries(log.end() - 4, log.end()), tail) << "timer reports may come first";
        EXPECT_EQ(player->GetPlayState(), tail == complete ? kStop : kPlay);
        progress.clear();
        CMessagePump::PumpFor(250);
        EXPECT_TRUE(progress.empty()) << "the timer still runs";
    }
}

TEST_F(Playback, TheCDsTrackEndsKeepTheTimerAndItsGraphEventsReachItOnlyWhileCurrent)
{
    Enter(kStop);
    EXPECT_EQ(SendMessageW(pDS->EventHandlerWindow(), WM_CDDA_GRAPH_NOTIFY, 5, 6), 0);
    EXPECT_TRUE(log.empty()) << "the CD is not current";
    ASSERT_EQ(player->OpenCD(L'D', 1, 3), S_OK);
    ASSERT_EQ(player->Play(), S_OK);
    pCD->dCurTime = 0.25;
    log.clear();
    EXPECT_EQ(SendMessageW(pDS->EventHandlerWindow(), WM_CDDA_GRAPH_NOTIFY, 5, 6), 0);
    ASSERT_TRUE(PostMessageW(pCD->EventHandlerWindow(), WM_CDDA_TRACK_COMPLETE, 0, 0));
    ASSERT_TRUE(CMessagePump::PumpUntil([&] { return Count("event.track_complete(0)") == 1; }, 5000));
    EXPECT_EQ(log, (Entries{"CD.OnEngineNotify(5,6)", "CD.GetCurTime", "event.progress(0.25)", "event.track_complete(0)"}));
    EXPECT_EQ(player->GetPlayState(), kPlay);
    progress.clear();
    EXPECT_TRUE(PumpUntilProgressCount(2));
}

} // namespace
