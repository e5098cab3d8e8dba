// Lazy start of back-ends, the hand-over between back-ends across files, and the CD.
#include "MediaPlayerTest.h"

namespace {

using LazyInit = MediaPlayerTest;
using Switching = MediaPlayerTest;
using OpeningCD = MediaPlayerTest;

const Entries kEventWindowToAll = {"DS.SetEventHandlerWindow", "PV.SetEventHandlerWindow",
                                   "WMP.SetEventHandlerWindow", "QT.SetEventHandlerWindow",
                                   "QA.SetEventHandlerWindow"};

Entries Joined(Entries first, const Entries& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

TEST_F(LazyInit, OnlyTheBackEndsOfTheFileStartAndAllLearnTheHiddenWindow)
{
    ASSERT_EQ(player->Init(L"C:\\a.MP3"), S_OK);
    EXPECT_EQ(log.Entries(), Joined(Joined({"DS.Init"}, kEventWindowToAll), {"CD.Init", "CD.SetEventHandlerWindow"}));

    HWND hWnd = player->EventWindow();
    ASSERT_TRUE(IsWindow(hWnd));
    for (CTestBackEnd* pPlayer : {pDS, pPV, pWMP, pQT, pQA})
        EXPECT_EQ(pPlayer->EventHandlerWindow(), hWnd);
    EXPECT_EQ(pCD->EventHandlerWindow(), hWnd);
    WCHAR wszText[64] = {};
    GetClassNameW(hWnd, wszText, 64);
    EXPECT_STREQ(wszText, L"MEDIAPLAYER.Event.Handler.WndClass");
    GetWindowTextW(hWnd, wszText, 64);
    EXPECT_STREQ(wszText, L"MEDIAPLAYER.Event.Handler.Window");
    EXPECT_FALSE(IsWindowVisible(hWnd));
    EXPECT_EQ(GetParent(hWnd), nullptr);
}

TEST_F(LazyInit, AStartedBackEndIsNotStartedAgainButAFailedOneIsRetried)
{
    pQT->Script("Init", E_FAIL);
    pCD->Script("Init", E_FAIL);
    ASSERT_EQ(player->Init(L"a.mp3"), S_OK);
    ASSERT_EQ(player->Init(L"b.mov"), S_OK);
    HWND hWnd = player->EventWindow();
    log.Clear();

    // Back-end failures never fail the dispatcher's Init.
    EXPECT_EQ(player->Init(L"c.mp3"), S_OK);
    EXPECT_EQ(player->Init(L"d.mov"), S_OK);
    EXPECT_EQ(log.Matching("DS.Init"), Entries{});
    EXPECT_EQ(log.Matching("QT.Init"), Entries{"QT.Init"});
    EXPECT_EQ(log.Matching("CD.Init"), (Entries{"CD.Init", "CD.Init"}));
    EXPECT_EQ(player->EventWindow(), hWnd);
}

TEST_F(LazyInit, NoExtensionStartsOnlyTheBackEndWithTheEmptyEntry)
{
    // Init does not check the extension: the empty one matches the control back-end's table.
    ASSERT_EQ(player->Init(L"C:\\folder.mp3\\readme"), S_OK);
    EXPECT_EQ(log.Entries(), (Entries{"DS.SetEventHandlerWindow", "PV.SetEventHandlerWindow", "WMP.Init",
                                      "WMP.SetEventHandlerWindow", "QT.SetEventHandlerWindow",
                                      "QA.SetEventHandlerWindow", "CD.Init", "CD.SetEventHandlerWindow"}));
    log.Clear();
    ASSERT_EQ(player->Init(L"C:\\media\\song.xyz"), S_OK);
    EXPECT_EQ(log.Entries(), Joined(kEventWindowToAll, {"CD.SetEventHandlerWindow"}));
}

TEST_F(LazyInit, AWindowsMediaFileOnTheControlRouteStartsEveryBackEndEveryTime)
{
    ASSERT_EQ(player->Init(L"a.mp3"), S_OK);
    log.Clear();
    ASSERT_EQ(player->Init(L"protected.asf"), S_OK);
    EXPECT_EQ(log.Entries(), (Entries{"DS.Init", "DS.SetEventHandlerWindow", "PV.Init", "PV.SetEventHandlerWindow",
                                      "WMP.Init", "WMP.SetEventHandlerWindow", "QT.Init", "QT.SetEventHandlerWindow",
                                      "QA.Init", "QA.SetEventHandlerWindow", "CD.SetEventHandlerWindow"}));
}

TEST_F(LazyInit, IsInitializedAsksTheFiveBackEndsButNotTheCD)
{
    pCD->Script("Init", E_FAIL);
    EXPECT_FALSE(player->IsInitialized());
    ASSERT_EQ(player->Init(L"a.mp3"), S_OK);
    EXPECT_FALSE(player->IsInitialized());
    ASSERT_EQ(player->Init(L"protected.wmv"), S_OK);
    EXPECT_TRUE(player->IsInitialized());
    EXPECT_FALSE(pCD->IsInitialized());
}

TEST_F(Switching, AParentSetBeforeAnyFileReachesTheFirstBackEnd)
{
    EXPECT_EQ(player->SetParentWindow(hWndParent), E_FAIL);
    EXPECT_EQ(player->SetParentWindowSize(640, 480), E_FAIL);
    EXPECT_TRUE(log.Entries().empty());

    ASSERT_EQ(Open(L"a.mp3"), S_OK);
    EXPECT_EQ(log.Entries(), (Entries{"DS.SetParentWindow(parent)", "DS.OpenFile(a.mp3,0,1)", "DS.GetFileInfo"}));

    // Handed over once: the next file of the same back-end does not get it again.
    ASSERT_EQ(player->CloseFile(), S_OK);
    ASSERT_EQ(Open(L"b.mp3"), S_OK);
    EXPECT_EQ(log.Entries(), (Entries{"DS.OpenFile(b.mp3,0,1)", "DS.GetFileInfo"}));
}

TEST_F(Switching, ToAnotherBackEndDetachesAndDeactivatesThePreviousOneFirst)
{
    ASSERT_EQ(Open(L"a.mp3"), S_OK);
    ASSERT_EQ(player->SetParentWindow(hWndParent), S_OK);
    log.Clear();
    ASSERT_EQ(player->CloseFile(), S_OK);
    // The back-end keeps the parent while no other file has been opened.
    EXPECT_EQ(log.Entries(), Entries{"DS.CloseFile"});

    ASSERT_EQ(Open(L"b.mov"), S_OK);
    EXPECT_EQ(log.Entries(), (Entries{"DS.SetParentWindow(null)", "DS.Deactivate", "QT.SetParentWindow(parent)",
                                      "QT.Activate", "QT.OpenFile(b.mov,0,1)", "QT.GetFileInfo"}));

    ASSERT_EQ(player->CloseFile(), S_OK);
    ASSERT_EQ(Open(L"c.mov"), S_OK);
    EXPECT_EQ(log.Entries(), (Entries{"QT.OpenFile(c.mov,0,1)", "QT.GetFileInfo"}));
}

TEST_F(Switching, ParentWindowCallsReachTheCurrentBackEndWithItsResult)
{
    ASSERT_EQ(Open(L"a.png"), S_OK);
    log.Clear();
    pPV->Script("SetParentWindow", E_HANDLE);
    pPV->Script("SetParentWindowSize", E_OUTOFMEMORY);
    EXPECT_EQ(player->SetParentWindow(hWndParent), E_HANDLE);
    EXPECT_EQ(player->SetParentWindowSize(800, 600), E_OUTOFMEMORY);
    EXPECT_EQ(log.Entries(), (Entries{"PV.SetParentWindow(parent)", "PV.SetParentWindowSize(800,600)"}));
}

TEST_F(Switching, InitAfterAnOpenForgetsTheFileWithoutClosingIt)
{
    ASSERT_EQ(Open(L"a.mp3"), S_OK);
    ASSERT_EQ(player->Play(), S_OK);
    ASSERT_EQ(player->Init(L"b.mov"), S_OK);
    EXPECT_EQ(player->GetPlayState(), Playback_State_Stop);
    log.Clear();

    ASSERT_EQ(player->OpenFile(L"b.mov", 0, 1, nullptr), S_OK);
    // No Stop or CloseFile for a.mp3, and DirectShow does not count as the previous back-end.
    EXPECT_EQ(log.Entries(), (Entries{"QT.OpenFile(b.mov,0,1)", "QT.GetFileInfo"}));
}

TEST_F(OpeningCD, DeactivatesTheCurrentBackEndWithoutClosingItsFile)
{
    ASSERT_EQ(Open(L"a.mp3"), S_OK);
    log.Clear();
    EXPECT_EQ(player->OpenCD(L'D', 3, 7), S_OK);
    EXPECT_EQ(log.Entries(), (Entries{"DS.Deactivate", "CD.Activate", "CD.OpenCD(D,3,7)", "CD.GetFileInfo"}));
    log.Clear();

    // The CD is now the back-end that plays; each open activates it again.
    EXPECT_EQ(player->Play(), S_OK);
    EXPECT_EQ(player->OpenCD(L'E', 1, 1), S_OK);
    EXPECT_EQ(player->GetPlayState(), Playback_State_Stop);
    EXPECT_EQ(log.Entries(), (Entries{"CD.Play", "CD.Activate", "CD.OpenCD(E,1,1)", "CD.GetFileInfo"}));
}

TEST_F(OpeningCD, ARefusedRangeAnsweredWithOneCountsAsOpen)
{
    ASSERT_EQ(player->Init(L"x.cda"), S_OK);
    pCD->Script("OpenCD", S_FALSE);
    pCD->fileInfo = {S_OK, true, TRUE, 0.0, TRUE, 0, 0, FALSE};
    EXPECT_EQ(player->OpenCD(L'D', 5, 2), S_FALSE);
    EXPECT_TRUE(player->IsAudioOnly());
    // Pause needs an open file.
    ASSERT_EQ(player->Play(), S_OK);
    EXPECT_EQ(player->Pause(), S_OK);
}

TEST_F(OpeningCD, FailuresOfTheOpenAndOfTheFileInformationAreReturned)
{
    ASSERT_EQ(player->Init(L"x.cda"), S_OK);
    pCD->Script("OpenCD", E_NOTIMPL);
    EXPECT_EQ(player->OpenCD(L'D', 1, 2), E_NOTIMPL);
    BOOL bAudioOnly = 5;
    EXPECT_EQ(player->GetFileInfo(&bAudioOnly, nullptr, nullptr, nullptr, nullptr, nullptr), E_FAIL);
    EXPECT_EQ(bAudioOnly, 5);

    pCD->Script("OpenCD", S_OK);
    pCD->fileInfo.hr = E_UNEXPECTED;
    EXPECT_EQ(player->OpenCD(L'D', 1, 2), E_UNEXPECTED);
    // The range is open all the same: it plays and pauses.
    ASSERT_EQ(player->Play(), S_OK);
    EXPECT_EQ(player->Pause(), S_OK);
    EXPECT_FALSE(player->IsAudioOnly());
}

TEST_F(OpeningCD, DurationComesFromTheCDBackEnd)
{
    pCD->dDuration = 252.0;
    double dDuration = -1.0;
    EXPECT_EQ(player->GetCDDuration(&dDuration), S_OK);
    EXPECT_EQ(dDuration, 252.0);
    pCD->Script("GetDuration", E_PENDING);
    EXPECT_EQ(player->GetCDDuration(&dDuration), E_PENDING);
    EXPECT_EQ(log.Entries(), (Entries{"CD.GetDuration", "CD.GetDuration"}));
}

} // namespace
