// Play, Pause, Stop and SeekTo from every state, the progress timer over a real message loop,
// and the messages back-ends post to the dispatcher's window.
#include "MediaPlayerTest.h"

#include "base/EngineMessages.h"

namespace {

enum class Op { Play, Pause, Stop, Seek };

class Playback : public MediaPlayerTest
{
protected:
    // Opens a.mp3 (seekable) and brings the dispatcher into state, with a clean log.
    void Enter(TESSALY_PLAYBACK_STATE state)
    {
        player->CloseFile();
        ASSERT_EQ(Open(L"a.mp3"), S_OK);
        if (state == Playback_State_Play || state == Playback_State_Pause)
        {
            ASSERT_EQ(player->Play(), S_OK);
        }
        if (state == Playback_State_Pause)
        {
            ASSERT_EQ(player->Pause(), S_OK);
        }
        player->ForceState(state);
        log.Clear();
    }
    HRESULT Run(Op op)
    {
        return op == Op::Play ? player->Play() : op == Op::Pause ? player->Pause() : op == Op::Stop ? player->Stop()
                                                                                                    : player->SeekTo(12.75);
    }
    // Plays a still picture until it has reported n ticks.
    void PlayPictureUntil(size_t n)
    {
        pPV->fileInfo = {S_OK, true, FALSE, 0.0, TRUE, 640, 480, TRUE};
        OpenAndPlay(L"a.png");
        ASSERT_TRUE(PumpUntilProgressCount(n));
    }
};

const auto kOdd = static_cast<TESSALY_PLAYBACK_STATE>(99);
const TESSALY_PLAYBACK_STATE kPlay = Playback_State_Play, kPause = Playback_State_Pause, kStop = Playback_State_Stop,
                             kBusy = Playback_State_Busy, kError = Playback_State_Error;

const struct Cell
{
    TESSALY_PLAYBACK_STATE from;
    Op op;
    HRESULT hr;
    const char* pszCall; // the one back-end call, or null
    TESSALY_PLAYBACK_STATE to;
} kCells[] = {
    {kStop, Op::Play, S_OK, "DS.Play", kPlay}, {kStop, Op::Pause, E_FAIL, nullptr, kStop},
    {kStop, Op::Stop, S_OK, nullptr, kStop}, {kStop, Op::Seek, E_FAIL, nullptr, kStop},
    {kPlay, Op::Play, S_OK, nullptr, kPlay}, {kPlay, Op::Pause, S_OK, "DS.Pause", kPause},
    {kPlay, Op::Stop, S_OK, "DS.Stop", kStop}, {kPlay, Op::Seek, S_OK, "DS.SetCurTime(12.75)", kPlay},
    // Leaving Pause with Play goes through the back-end's Play; a second Pause resumes.
    {kPause, Op::Play, S_OK, "DS.Play", kPlay}, {kPause, Op::Pause, S_OK, "DS.Resume", kPlay},
    {kPause, Op::Stop, S_OK, "DS.Stop", kStop}, {kPause, Op::Seek, S_OK, "DS.SetCurTime(12.75)", kPause},
    {kBusy, Op::Play, E_FAIL, nullptr, kBusy}, {kBusy, Op::Pause, E_FAIL, nullptr, kBusy},
    {kBusy, Op::Stop, E_FAIL, nullptr, kBusy}, {kBusy, Op::Seek, S_OK, "DS.SetCurTime(12.75)", kBusy},
    {kError, Op::Play, E_FAIL, nullptr, kError}, {kError, Op::Pause, E_FAIL, nullptr, kError},
    {kError, Op::Stop, E_FAIL, nullptr, kError}, {kError, Op::Seek, S_OK, "DS.SetCurTime(12.75)", kError},
    {kOdd, Op::Play, E_FAIL, nullptr, kOdd}, {kOdd, Op::Pause, E_FAIL, nullptr, kOdd},
    {kOdd, Op::Stop, E_FAIL, nullptr, kOdd}, {kOdd, Op::Seek, S_OK, "DS.SetCurTime(12.75)", kOdd},
};

TEST_F(Playback, EveryStateAndOperationAndABackEndFailureChangingNothing)
{
    const HRESULT kNotReady = HRESULT_FROM_WIN32(ERROR_NOT_READY);
    for (const Cell& cell : kCells)
    {
        SCOPED_TRACE(testing::Message() << "state " << cell.from << ", operation " << static_cast<int>(cell.op));
        Enter(cell.from);
        EXPECT_EQ(Run(cell.op), cell.hr);
        EXPECT_EQ(log.Entries(), cell.pszCall ? Entries{cell.pszCall} : Entries{});
        EXPECT_EQ(player->GetPlayState(), cell.to);
        if (!cell.pszCall)
            continue;
        Enter(cell.from);
        const std::string operation = std::string(cell.pszCall + 3).substr(0, std::string(cell.pszCall + 3).find('('));
        pDS->Script(operation, kNotReady);
        EXPECT_EQ(Run(cell.op), kNotReady);
        EXPECT_EQ(log.Entries(), Entries{cell.pszCall});
        EXPECT_EQ(player->GetPlayState(), cell.from);
        pDS->Script(operation, S_OK);
    }
}

TEST_F(Playback, WithoutAFileOrABackEndNothingIsAsked)
{
    for (bool bClosed : {false, true})
    {
        if (bClosed)
        {
            Enter(kPlay);
            ASSERT_EQ(player->CloseFile(), S_OK);
            log.Clear();
        }
        for (Op op : {Op::Play, Op::Pause, Op::Stop, Op::Seek})
            EXPECT_EQ(Run(op), E_FAIL);
        EXPECT_TRUE(log.Entries().empty());
    }
    // Init forgets the file but leaves the back-end current: Play works, Pause and SeekTo do not.
    Enter(kStop);
    ASSERT_EQ(player->Init(L"a.mp3"), S_OK);
    log.Clear();
    EXPECT_EQ(player->Play(), S_OK);
    EXPECT_EQ(player->Pause(), E_FAIL);
    EXPECT_EQ(player->SeekTo(1.0), E_FAIL);
    EXPECT_EQ(log.Entries(), Entries{"DS.Play"});
}

TEST_F(Playback, SeekRefusalsComeInOrder)
{
    pDS->fileInfo.bSeekable = FALSE;
    EXPECT_EQ(player->SeekTo(3.0), E_FAIL) << "nothing open";
    Enter(kStop);
    EXPECT_EQ(player->SeekTo(3.0), E_FAIL) << "stopped, before seekability is looked at";
    for (TESSALY_PLAYBACK_STATE state : {kPlay, kPause, kBusy})
    {
        Enter(state);
        EXPECT_EQ(player->SeekTo(3.0), TESSALY_E_NOTSEEKABLE) << "state " << state;
        EXPECT_TRUE(log.Entries().empty());
    }
    // A failed information query leaves a file unseekable.
    pDS->fileInfo = {E_UNEXPECTED, true, FALSE, 5.0, TRUE, 0, 0, FALSE};
    Enter(kPlay);
    EXPECT_EQ(player->SeekTo(3.0), TESSALY_E_NOTSEEKABLE);
    // A seekable picture is "sought" without asking the back-end, and so is no back-end.
    pDS->fileInfo = {S_OK, true, FALSE, 0.0, TRUE, 64, 64, TRUE};
    Enter(kPause);
    EXPECT_EQ(player->SeekTo(3.0), S_OK);
    pDS->fileInfo.bPicture = FALSE;
    Enter(kPlay);
    player->ForgetCurrentPlayer();
    EXPECT_EQ(player->SeekTo(3.0), S_OK);
    EXPECT_TRUE(log.Entries().empty());
}

TEST_F(Playback, PlayFocusesTheHostWindow)
{
    HWND hWndOther = CreateWindowExW(0, L"STATIC", L"other", WS_OVERLAPPEDWINDOW, 0, 0, 50, 50, nullptr, nullptr,
                                     nullptr, nullptr);
    player->SetParentWindow(hWndParent);
    for (TESSALY_PLAYBACK_STATE state : {kPause, kStop})
    {
        Enter(state);
        SetFocus(hWndOther);
        ASSERT_EQ(GetFocus(), hWndOther);
        ASSERT_EQ(player->Play(), S_OK);
        EXPECT_EQ(GetFocus(), hWndParent);
    }
    DestroyWindow(hWndOther);
}

TEST_F(Playback, AboutTenPositionsASecondWhilePlayingAndNoneOtherwise)
{
    pDS->dCurTime = 4.5;
    OpenAndPlay(L"a.mp3");
    const ULONGLONG start = GetTickCount64();
    ASSERT_TRUE(PumpUntilProgressCount(10));
    const ULONGLONG elapsed = GetTickCount64() - start;
    EXPECT_GE(elapsed, 850u) << "a busy machine can only make a 100 ms timer late";
    RecordProperty("ms_for_ten_reports", static_cast<int>(elapsed));
    Entries expected, first(log.Entries().begin(), log.Entries().begin() + 20);
    for (int i = 0; i < 10; ++i)
        expected.insert(expected.end(), {"DS.GetCurTime", "event.progress(4.5)"});
    EXPECT_EQ(first, expected);

    ASSERT_EQ(player->Pause(), S_OK);
    progress.clear();
    CMessagePump::PumpFor(350);
    EXPECT_TRUE(progress.empty()) << "paused";
    ASSERT_EQ(player->Pause(), S_OK); // resumes
    EXPECT_TRUE(PumpUntilProgressCount(1));
    ASSERT_EQ(player->Stop(), S_OK);
    progress.clear();
    CMessagePump::PumpFor(350);
    EXPECT_TRUE(progress.empty()) << "stopped";
}

TEST_F(Playback, OnlyAPositionAnsweredWithSOkIsReportedAndOnlyToACallback)
{
    ASSERT_EQ(Open(L"a.mp3"), S_OK);
    pDS->dCurTime = 2.25;
    // S_FALSE is how the CD back-end says it has no position; timer 2 is not the progress timer.
    const struct
    {
        HRESULT hr;
        WPARAM timer;
        Entries expected;
    } cases[] = {{S_OK, 1, {"DS.GetCurTime", "event.progress(2.25)"}}, {E_FAIL, 1, {"DS.GetCurTime"}},
                 {S_FALSE, 1, {"DS.GetCurTime"}}, {S_OK, 2, {}}};
    for (const auto& c : cases)
    {
        log.Clear();
        pDS->Script("GetCurTime", c.hr);
        EXPECT_EQ(SendMessageW(player->EventWindow(), WM_TIMER, c.timer, 0), 0);
        EXPECT_EQ(log.Entries(), c.expected) << std::hex << c.hr;
    }
    player->SetEventCallback(nullptr, nullptr);
    log.Clear();
    SendMessageW(player->EventWindow(), WM_TIMER, 1, 0);
    EXPECT_TRUE(log.Entries().empty());
}

TEST_F(Playback, APictureCountsTimerTicksFromEachStartOrSeek)
{
    PlayPictureUntil(3);
    EXPECT_EQ(std::vector<double>(progress.begin(), progress.begin() + 3), (std::vector<double>{1, 2, 3}));
    EXPECT_EQ(log.Count("PV.GetCurTime"), 0u);
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
    // So does opening over the playing picture after Init.
    ASSERT_EQ(player->Init(L"b.png"), S_OK);
    ASSERT_EQ(player->OpenFile(L"b.png", 0, 1, nullptr), S_OK);
    log.Clear();
    SendMessageW(player->EventWindow(), WM_TIMER, 1, 0);
    EXPECT_EQ(log.Entries(), Entries{"event.progress(1)"});
}

TEST_F(Playback, AnEndReportsOnceMoreThenStopsAndCompletesWhileAnErrorLeavesTheStopToTheOwner)
{
    const Entries complete = {"DS.GetCurTime", "event.progress(9.5)", "DS.Stop", "event.complete(0x0)"};
    const Entries error = {"DS.Play", "DS.GetCurTime", "event.progress(9.5)", "event.error(0x80040265)"};
    const struct
    {
        UINT uMsg;
        const Entries& tail;
    } cases[] = {{WM_DSHOW_PLAYBACK_COMPLETE, complete}, {WM_QT_PLAYBACK_COMPLETE, complete},
                 {WM_WMP_PLAYBACK_COMPLETE, complete},   {WM_CDDA_PLAYBACK_COMPLETE, complete},
                 {WM_DSHOW_PLAYBACK_ERROR, error},       {WM_WMP_PLAYBACK_ERROR, error}};
    pDS->dCurTime = 9.5;
    for (const auto& c : cases)
    {
        SCOPED_TRACE(testing::Message() << "WM_USER+" << c.uMsg - WM_USER);
        ASSERT_EQ(Open(L"a.mp3"), S_OK);
        ASSERT_EQ(player->Play(), S_OK);
        ASSERT_TRUE(pDS->PostToDispatcher(c.uMsg, 0x80040265));
        ASSERT_TRUE(PumpUntil([&] { return log.Count("event.complete") + log.Count("event.error") == 1; }));
        const Entries& e = log.Entries();
        // Timer reports may come first; the end of the log is what the message did.
        EXPECT_EQ(Entries(e.end() - 4, e.end()), c.tail);
        EXPECT_EQ(log.Count("DS.Stop"), c.tail[2] == "DS.Stop" ? 1u : 0u);
        EXPECT_EQ(player->GetPlayState(), c.tail[2] == "DS.Stop" ? kStop : kPlay);
        progress.clear();
        CMessagePump::PumpFor(250);
        EXPECT_TRUE(progress.empty()) << "the timer still runs";
        ASSERT_EQ(player->CloseFile(), S_OK);
    }
    OpenAndPlay(L"a.mp3");
    player->SetEventCallback(nullptr, nullptr);
    SendMessageW(player->EventWindow(), WM_DSHOW_PLAYBACK_COMPLETE, 0, 0);
    EXPECT_EQ(log.Entries(), Entries{"DS.Stop"}) << "stopped without a callback too";
}

TEST_F(Playback, TheCDsTrackEndsKeepTheTimerAndItsGraphEventsReachItOnlyWhileCurrent)
{
    ASSERT_EQ(Open(L"a.mp3"), S_OK);
    HWND hWnd = player->EventWindow();
    log.Clear();
    EXPECT_EQ(SendMessageW(hWnd, WM_CDDA_GRAPH_NOTIFY, 5, 6), 0);
    EXPECT_TRUE(log.Entries().empty());
    ASSERT_EQ(player->OpenCD(L'D', 1, 3), S_OK);
    ASSERT_EQ(player->Play(), S_OK);
    pCD->dCurTime = 0.25;
    log.Clear();
    EXPECT_EQ(SendMessageW(hWnd, WM_CDDA_GRAPH_NOTIFY, 5, 6), 0);
    ASSERT_TRUE(pCD->PostToDispatcher(WM_CDDA_TRACK_COMPLETE));
    ASSERT_TRUE(PumpUntil([&] { return log.Count("event.track_complete") == 1; }));
    EXPECT_EQ(log.Entries(), (Entries{"CD.OnEngineNotify(5,6)", "CD.GetCurTime", "event.progress(0.25)",
                                      "event.track_complete(0x0)"}));
    EXPECT_EQ(player->GetPlayState(), kPlay);
    progress.clear();
    EXPECT_TRUE(PumpUntilProgressCount(2));
}

} // namespace
