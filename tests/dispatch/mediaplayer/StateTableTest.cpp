// Play, Pause, Stop and SeekTo from every state the dispatcher can be in.
#include "MediaPlayerTest.h"

namespace {

enum class Op { Play, Pause, Stop, Seek };

const HRESULT kNotReady = HRESULT_FROM_WIN32(ERROR_NOT_READY);
const auto kOddState = static_cast<TESSALY_PLAYBACK_STATE>(99);

const char* Name(Op op)
{
    switch (op)
    {
    case Op::Play: return "Play";
    case Op::Pause: return "Pause";
    case Op::Stop: return "Stop";
    default: return "SeekTo";
    }
}

class StateTable : public MediaPlayerTest
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
        if (state != Playback_State_Play && state != Playback_State_Pause && state != Playback_State_Stop)
            player->ForceState(state);
        ASSERT_EQ(player->GetPlayState(), state);
        log.Clear();
    }

    HRESULT Run(Op op)
    {
        switch (op)
        {
        case Op::Play: return player->Play();
        case Op::Pause: return player->Pause();
        case Op::Stop: return player->Stop();
        default: return player->SeekTo(12.75);
        }
    }
};

struct Cell
{
    TESSALY_PLAYBACK_STATE from;
    Op op;
    HRESULT hr;
    const char* pszCall; // the one back-end call, or null
    TESSALY_PLAYBACK_STATE to;
};

const Cell kCells[] = {
    {Playback_State_Stop, Op::Play, S_OK, "DS.Play", Playback_State_Play},
    {Playback_State_Stop, Op::Pause, E_FAIL, nullptr, Playback_State_Stop},
    {Playback_State_Stop, Op::Stop, S_OK, nullptr, Playback_State_Stop},
    {Playback_State_Stop, Op::Seek, E_FAIL, nullptr, Playback_State_Stop},
    {Playback_State_Play, Op::Play, S_OK, nullptr, Playback_State_Play},
    {Playback_State_Play, Op::Pause, S_OK, "DS.Pause", Playback_State_Pause},
    {Playback_State_Play, Op::Stop, S_OK, "DS.Stop", Playback_State_Stop},
    {Playback_State_Play, Op::Seek, S_OK, "DS.SetCurTime(12.75)", Playback_State_Play},
    // Leaving Pause with Play goes through the back-end's Play; a second Pause resumes.
    {Playback_State_Pause, Op::Play, S_OK, "DS.Play", Playback_State_Play},
    {Playback_State_Pause, Op::Pause, S_OK, "DS.Resume", Playback_State_Play},
    {Playback_State_Pause, Op::Stop, S_OK, "DS.Stop", Playback_State_Stop},
    {Playback_State_Pause, Op::Seek, S_OK, "DS.SetCurTime(12.75)", Playback_State_Pause},
    {Playback_State_Busy, Op::Play, E_FAIL, nullptr, Playback_State_Busy},
    {Playback_State_Busy, Op::Pause, E_FAIL, nullptr, Playback_State_Busy},
    {Playback_State_Busy, Op::Stop, E_FAIL, nullptr, Playback_State_Busy},
    {Playback_State_Busy, Op::Seek, S_OK, "DS.SetCurTime(12.75)", Playback_State_Busy},
    {Playback_State_Error, Op::Play, E_FAIL, nullptr, Playback_State_Error},
    {Playback_State_Error, Op::Pause, E_FAIL, nullptr, Playback_State_Error},
    {Playback_State_Error, Op::Stop, E_FAIL, nullptr, Playback_State_Error},
    {Playback_State_Error, Op::Seek, S_OK, "DS.SetCurTime(12.75)", Playback_State_Error},
    {kOddState, Op::Play, E_FAIL, nullptr, kOddState},
    {kOddState, Op::Pause, E_FAIL, nullptr, kOddState},
    {kOddState, Op::Stop, E_FAIL, nullptr, kOddState},
    {kOddState, Op::Seek, S_OK, "DS.SetCurTime(12.75)", kOddState},
};

TEST_F(StateTable, EveryCell)
{
    for (const Cell& cell : kCells)
    {
        SCOPED_TRACE(testing::Message() << "state " << cell.from << ", " << Name(cell.op));
        Enter(cell.from);
        EXPECT_EQ(Run(cell.op), cell.hr);
        EXPECT_EQ(log.Entries(), cell.pszCall ? Entries{cell.pszCall} : Entries{});
        EXPECT_EQ(player->GetPlayState(), cell.to);
    }
}

TEST_F(StateTable, ABackEndFailureIsReturnedAndChangesNothing)
{
    for (const Cell& cell : kCells)
    {
        if (!cell.pszCall)
            continue;
        SCOPED_TRACE(testing::Message() << "state " << cell.from << ", " << Name(cell.op));
        Enter(cell.from);
        std::string operation = std::string(cell.pszCall + 3);
        operation = operation.substr(0, operation.find('('));
        pDS->Script(operation, kNotReady);
        EXPECT_EQ(Run(cell.op), kNotReady);
        EXPECT_EQ(log.Entries(), Entries{cell.pszCall});
        EXPECT_EQ(player->GetPlayState(), cell.from);
        pDS->Script(operation, S_OK);
    }
}

TEST_F(StateTable, WithoutACurrentBackEndNothingIsAsked)
{
    EXPECT_EQ(player->Play(), E_FAIL);
    EXPECT_EQ(player->Pause(), E_FAIL);
    EXPECT_EQ(player->Stop(), E_FAIL);
    EXPECT_EQ(player->SeekTo(1.0), E_FAIL);
    Enter(Playback_State_Play);
    ASSERT_EQ(player->CloseFile(), S_OK);
    log.Clear();
    EXPECT_EQ(player->Play(), E_FAIL);
    EXPECT_EQ(player->Pause(), E_FAIL);
    EXPECT_EQ(player->Stop(), E_FAIL);
    EXPECT_TRUE(log.Entries().empty());
}

TEST_F(StateTable, PauseNeedsAnOpenFileWherePlayNeedsOnlyABackEnd)
{
    Enter(Playback_State_Stop);
    // Init forgets the file but leaves the back-end current.
    ASSERT_EQ(player->Init(L"a.mp3"), S_OK);
    log.Clear();
    EXPECT_EQ(player->Pause(), E_FAIL);
    EXPECT_EQ(player->SeekTo(1.0), E_FAIL);
    EXPECT_EQ(player->Play(), S_OK);
    EXPECT_EQ(player->Pause(), E_FAIL);
    EXPECT_EQ(log.Entries(), Entries{"DS.Play"});
}

TEST_F(StateTable, SeekRefusalsComeInOrder)
{
    // Not open: refused even for a non-seekable file.
    pDS->fileInfo.bSeekable = FALSE;
    EXPECT_EQ(player->SeekTo(3.0), E_FAIL);

    // Stopped: refused before seekability is looked at.
    Enter(Playback_State_Stop);
    EXPECT_EQ(player->SeekTo(3.0), E_FAIL);

    for (TESSALY_PLAYBACK_STATE state : {Playback_State_Play, Playback_State_Pause, Playback_State_Busy})
    {
        Enter(state);
        EXPECT_EQ(player->SeekTo(3.0), TESSALY_E_NOTSEEKABLE) << "state " << state;
        EXPECT_TRUE(log.Entries().empty());
    }

    // A seekable picture is "sought" without asking the back-end.
    pDS->fileInfo = {S_OK, true, FALSE, 0.0, TRUE, 64, 64, TRUE};
    Enter(Playback_State_Pause);
    EXPECT_EQ(player->SeekTo(3.0), S_OK);
    EXPECT_TRUE(log.Entries().empty());

    pDS->fileInfo.bPicture = FALSE;
    Enter(Playback_State_Play);
    player->ForgetCurrentPlayer();
    EXPECT_EQ(player->SeekTo(3.0), S_OK);
    EXPECT_TRUE(log.Entries().empty());
}

TEST_F(StateTable, PlayFocusesTheHostWindow)
{
    HWND hWndOther = CreateWindowExW(0, L"STATIC", L"other", WS_OVERLAPPEDWINDOW, 0, 0, 50, 50,
                                     nullptr, nullptr, nullptr, nullptr);
    ASSERT_NE(hWndOther, nullptr);
    player->SetParentWindow(hWndParent);
    Enter(Playback_State_Pause);
    SetFocus(hWndOther);
    ASSERT_EQ(GetFocus(), hWndOther);
    ASSERT_EQ(player->Play(), S_OK);
    EXPECT_EQ(GetFocus(), hWndParent);

    ASSERT_EQ(player->Stop(), S_OK);
    SetFocus(hWndOther);
    ASSERT_EQ(player->Play(), S_OK);
    EXPECT_EQ(GetFocus(), hWndParent);
    DestroyWindow(hWndOther);
}

} // namespace
