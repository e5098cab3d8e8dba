// Play, Pause, Stop and SeekTo from every state, the progress timer over a real message loop,
// and the messages back-ends post to the dispatcher's window.
#include "MediaPlayerTest.h"

#include "base/EngineMessages.h"

namespace {

enum Op { kPlayOp, kPauseOp, kStopOp, kSeekOp };
const TESSALY_PLAYBACK_STATE kPlay = Playback_State_Play, kPause = Playback_State_Pause, kStop = Playback_State_Stop,
                             kBusy = Playback_State_Busy, kError = Playback_State_Error,
                             kOdd = static_cast<TESSALY_PLAYBACK_STATE>(99);

class Playback : public MediaPlayerTest
{
protected:
    void Enter(TESSALY_PLAYBACK_STATE state) // a.mp3 open in that state, a clean log
    {
        ASSERT_EQ(Open(L"a.mp3"), S_OK);
        ASSERT_EQ(state == kPlay || state == kPause ? player->Play() : S_OK, S_OK);
        ASSERT_EQ(state == kPause ? player->Pause() : S_OK, S_OK);
        player->ForceState(state);
        log.clear();
    }
    HRESULT Run(Op op)
    {
        return op == kPlayOp ? player->Play() : op == kPauseOp ? player->Pause() : op == kStopOp ? player->Stop() : player->SeekTo(12.75);
    }
};

TEST_F(Playback, EveryStateAndOperationAndABackEndFailureChangingNothing)
{
    const struct
    {
        TESSALY_PLAYBACK_STATE from;
        Op op;
        HRESULT hr;
        const char* pszCall; // the one back-end call, or null
        TESSALY_PLAYBACK_STATE to;
    } cells[] = {
        {kStop, kPlayOp, S_OK, "Play", kPlay}, {kStop, kPauseOp, E_FAIL, nullptr, kStop},
        {kStop, kStopOp, S_OK, nullptr, kStop}, {kStop, kSeekOp, E_FAIL, nullptr, kStop},
        {kPlay, kPlayOp, S_OK, nullptr, kPlay}, {kPlay, kPauseOp, S_OK, "Pause", kPause},
        {kPlay, kStopOp, S_OK, "Stop", kStop}, {kPlay, kSeekOp, S_OK, "SetCurTime", kPlay},
        // Leaving Pause with Play goes through the back-end's Play; a second Pause resumes.
        {kPause, kPlayOp, S_OK, "Play", kPlay}, {kPause, kPauseOp, S_OK, "Resume", kPlay},
        {kPause, kStopOp, S_OK, "Stop", kStop}, {kPause, kSeekOp, S_OK, "SetCurTime", kPause},
    };
    const HRESULT kNotReady = HRESULT_FROM_WIN32(ERROR_NOT_READY);
    HWND hWndOther = CreateWindowExW(0, L"STATIC", L"", WS_OVERLAPPEDWINDOW, 0, 0, 50, 50, nullptr, nullptr, nullptr, nullptr);
    player->SetParentWindow(hWndParent);
    for (const auto& c : cells)
    {
        SCOPED_TRACE(Str("state ", c.from, ", operation ", c.op));
        const std::string call = c.pszCall ? Str("DS.", c.pszCall, c.op == kSeekOp ? "(12.75)" : "") : "";
        for (HRESULT hrBackEnd : {S_OK, kNotReady})
        {
            Enter(c.from);
            pDS->results[c.pszCall ? c.pszCall : ""] = hrBackEnd;
            SetFocus(hWndOther);
            EXPECT_EQ(Run(c.op), c.pszCall && hrBackEnd != S_OK ? kNotReady : c.hr);
            EXPECT_EQ(log, c.pszCall ? Entries{call} : Entries{});
            EXPECT_EQ(player->GetPlayState(), hrBackEnd == S_OK ? c.to : c.from);
            EXPECT_EQ(GetFocus(), c.op == kPlayOp && c.pszCall && hrBackEnd == S_OK ? hWndParent : hWndOther);
            pDS->results.clear();
        }
    }
    for (TESSALY_PLAYBACK_STATE state : {kBusy, kError, kOdd}) // only a seek goes through
    {
        for (Op op : {kPlayOp, kPauseOp, kStopOp, kSeekOp})
        {
            Enter(state);
            EXPECT_EQ(Run(op), op == kSeekOp ? S_OK : E_FAIL) << state << " " << op;
            EXPECT_EQ(log, op == kSeekOp ? Entries{"DS.SetCurTime(12.75)"} : Entries{});
            EXPECT_EQ(player->GetPlayState(), state);
        }
    }
    DestroyWindow(hWndOther);
}

TEST_F(Playback, SeekRefusalsComeInOrder)
{
    pDS->fileInfo.bSeekable = FALSE;
    Enter(kStop);
    EXPECT_EQ(player->SeekTo(3.0), E_FAIL) << "stopped, before seekability is looked at";
    for (TESSALY_PLAYBACK_STATE state : {kPlay, kPause, kBusy})
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
    pDS->fileInfo.bPicture = FALSE; // and so is no back-end
    Enter(kPlay);
    player->ForgetCurrentPlayer();
    EXPECT_EQ(player->SeekTo(3.0), S_OK);
    EXPECT_TRUE(log.empty());
}

TEST_F(Playback, AboutTenPositionsASecondWhilePlayingAndNoneOtherwise)
{
    pDS->dCurTime = 4.5;
    OpenAndPlay(L"a.mp3");
    const ULONGLONG start = GetTickCount64();
    ASSERT_TRUE(PumpUntilProgressCount(10));
    EXPECT_GE(GetTickCount64() - start, 850u) << "a busy machine can only make a 100 ms timer late";
    Entries expected;
    for (int i = 0; i < 10; ++i)
        expected.insert(expected.end(), {"DS.GetCurTime", "event.progress(4.5)"});
    EXPECT_EQ(Entries(log.begin(), log.begin() + 20), expected);
    for (Op op : {kPauseOp, kStopOp})
    {
        ASSERT_EQ(Run(op), S_OK);
        progress.clear();
        CMessagePump::PumpFor(350);
        EXPECT_TRUE(progress.empty()) << op;
        EXPECT_TRUE(op != kPauseOp || (player->Pause() == S_OK && PumpUntilProgressCount(1))) << "resumed";
    }
}

TEST_F(Playback, OnlyAPositionAnsweredWithSOkIsReportedAndOnlyToACallback)
{
    Enter(kStop);
    pDS->dCurTime = 2.25;
    // S_FALSE is how the CD back-end says it has no position; timer 2 is not the progress timer.
    const std::tuple<HRESULT, WPARAM, bool, Entries> cases[] = {
        {S_OK, 1, true, {"DS.GetCurTime", "event.progress(2.25)"}}, {E_FAIL, 1, true, {"DS.GetCurTime"}},
        {S_FALSE, 1, true, {"DS.GetCurTime"}}, {S_OK, 2, true, {}}, {S_OK, 1, false, {}}};
    for (const auto& [hr, timer, bCallback, expected] : cases)
    {
        log.clear();
        pDS->results["GetCurTime"] = hr;
        player->SetEventCallback(bCallback ? &MediaPlayerTest::OnEvent : nullptr, this);
        EXPECT_EQ(SendMessageW(player->EventWindow(), WM_TIMER, timer, 0), 0);
        EXPECT_EQ(log, expected) << std::hex << hr;
    }
}

TEST_F(Playback, APictureCountsTimerTicksFromEachStartOrSeek)
{
    pPV->fileInfo = {S_OK, FALSE, TRUE, TRUE};
    OpenAndPlay(L"a.png");
    ASSERT_TRUE(PumpUntilProgressCount(3));
    EXPECT_EQ(std::vector<double>(progress.begin(), progress.begin() + 3), (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(Count("PV.GetCurTime"), 0u);
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
    ASSERT_EQ(player->Init(L"b.png"), S_OK); // so does opening over the playing picture after Init
    ASSERT_EQ(player->OpenFile(L"b.png", 0, 1, nullptr), S_OK);
    log.clear();
    SendMessageW(player->EventWindow(), WM_TIMER, 1, 0);
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
        ASSERT_TRUE(pDS->Post(uMsg, 0x80040265));
        ASSERT_TRUE(CMessagePump::PumpUntil([&] { return Count("event.complete") + Count("event.error") == 1; }, 5000));
        EXPECT_EQ(Entries(log.end() - 4, log.end()), tail) << "timer reports may come first";
        EXPECT_EQ(Count("DS.Stop"), tail == complete ? 1u : 0u);
        EXPECT_EQ(player->GetPlayState(), tail == complete ? kStop : kPlay);
        progress.clear();
        CMessagePump::PumpFor(250);
        EXPECT_TRUE(progress.empty()) << "the timer still runs";
    }
    Enter(kPlay);
    player->SetEventCallback(nullptr, nullptr);
    SendMessageW(player->EventWindow(), WM_DSHOW_PLAYBACK_COMPLETE, 0, 0);
    EXPECT_EQ(log, Entries{"DS.Stop"}) << "stopped without a callback too";
}

TEST_F(Playback, TheCDsTrackEndsKeepTheTimerAndItsGraphEventsReachItOnlyWhileCurrent)
{
    Enter(kStop);
    EXPECT_EQ(SendMessageW(player->EventWindow(), WM_CDDA_GRAPH_NOTIFY, 5, 6), 0);
    EXPECT_TRUE(log.empty()) << "the CD is not current";
    ASSERT_EQ(player->OpenCD(L'D', 1, 3), S_OK);
    ASSERT_EQ(player->Play(), S_OK);
    pCD->dCurTime = 0.25;
    log.clear();
    EXPECT_EQ(SendMessageW(player->EventWindow(), WM_CDDA_GRAPH_NOTIFY, 5, 6), 0);
    ASSERT_TRUE(pCD->Post(WM_CDDA_TRACK_COMPLETE));
    ASSERT_TRUE(CMessagePump::PumpUntil([&] { return Count("event.track_complete") == 1; }, 5000));
    EXPECT_EQ(log, (Entries{"CD.OnEngineNotify(5,6)", "CD.GetCurTime", "event.progress(0.25)", "event.track_complete(0)"}));
    EXPECT_EQ(player->GetPlayState(), kPlay);
    progress.clear();
    EXPECT_TRUE(PumpUntilProgressCount(2));
}

} // namespace
