// Which back-end a file reaches and starts, the host's window, the CD, file information, flags
// and the end of the dispatcher.
#include "MediaPlayerTest.h"

namespace {

using Routing = MediaPlayerTest;

TEST_F(Routing, EachFileReachesTheBackEndOfItsExtensionOrTheControlRoute)
{
    const std::pair<LPCWSTR, const char*> cases[] = {
        {L"C:\\m\\song.Mp3", "DS"}, {L"C:\\m\\photo.jPeG", "PV"}, {L"C:\\m\\clip.MOV", "QT"},
        {L"C:\\m\\tune.m4a", "QA"}, {L"C:\\m\\anim.gif", "QT"},   {L"C:\\m\\movie.wmv", "DS"},
        {L"C:\\m\\protected.wma", "WMP"}, {L"C:\\protected\\a.ASF", "WMP"}, {L"C:\\m\\protected.mp3", "DS"}};
    for (const auto& c : cases)
    {
        EXPECT_EQ(Open(c.first, nullptr, 2, 1), S_OK);
        EXPECT_EQ(log, (Entries{Str(c.second, ".OpenFile(", Narrow(c.first), ",2,1)"), Str(c.second, ".GetFileInfo")}));
    }
}

TEST_F(Routing, RefusedFilesTouchNoBackEndButCloseTheOpenOneEvenWhenItsStopFails)
{
    EXPECT_EQ(player->OpenFile(L"a.mp3", 0, 1, nullptr), E_FAIL) << "before Init";
    EXPECT_TRUE(log.empty());
    TESSALY_FILEINFO info, untouched;
    memset(&info, 0xCD, sizeof(info));
    untouched = info;
    pDS->fileInfo.bAudioOnly = TRUE;
    pDS->results["Stop"] = E_ABORT;
    for (LPCWSTR pwszFile : {L"C:\\m\\bare.", L"C:\\dir.mp3\\file", L"C:\\m\\a.xyz", (LPCWSTR) nullptr})
    {
        SCOPED_TRACE(Narrow(pwszFile));
        OpenAndPlay(L"a.mp3");
        ASSERT_TRUE(player->IsAudioOnly());
        EXPECT_EQ(player->OpenFile(pwszFile, 0, 0x6, &info), TESSALY_E_NOTSUPPORTED);
        EXPECT_EQ(log, (Entries{"DS.Stop", "DS.CloseFile"}));
        EXPECT_EQ(memcmp(&info, &untouched, sizeof(info)), 0);
        DWORD dwFlags = 0;
        EXPECT_EQ(player->GetPlaybackFlags(&dwFlags), S_OK);
        EXPECT_EQ(dwFlags, 0x6u);
        EXPECT_FALSE(player->IsAudioOnly());
        EXPECT_EQ(player->GetPlayState(), Playback_State_Stop);
        EXPECT_EQ(player->Play(), E_FAIL);
        EXPECT_EQ(player->CloseFile(), S_OK);
        EXPECT_EQ(log.size(), 2u) << "closed once";
    }
}

TEST_F(Routing, AFailedOpenIsNotRetriedElsewhereAndTheNextOpenGetsTheWindowBack)
{
    pQT->results["OpenFile"] = E_ACCESSDENIED;
    ASSERT_EQ(player->SetParentWindow(hWndParent), E_FAIL);
    TESSALY_FILEINFO info;
    memset(&info, 0xCD, sizeof(info));
    EXPECT_EQ(Open(L"clip.mp4", &info, 2, 0), E_ACCESSDENIED);
    EXPECT_EQ(log, (Entries{"QT.SetParentWindow(parent)", "QT.OpenFile(clip.mp4,2,0)", "QT.CloseFile",
                            "QT.SetParentWindow(null)"}));
    EXPECT_EQ(info.dwAttributeMask, 0xCDCDCDCDu);
    BOOL bAudioOnly = 7;
    EXPECT_EQ(player->GetFileInfo(&bAudioOnly, nullptr, nullptr, nullptr, nullptr, nullptr), E_FAIL);
    EXPECT_EQ(bAudioOnly, 7);
    EXPECT_EQ(player->Play(), E_FAIL);
    EXPECT_EQ(player->SetParentWindowSize(10, 10), E_FAIL);
    pQT->results["OpenFile"] = TESSALY_S_PARTIAL_RENDER; // a success code is passed on
    EXPECT_EQ(Open(L"good.mp4", nullptr, 0, 0), TESSALY_S_PARTIAL_RENDER);
    EXPECT_EQ(log, (Entries{"QT.SetParentWindow(parent)", "QT.OpenFile(good.mp4,0,0)", "QT.GetFileInfo"}));
}

TEST_F(Routing, InitStartsOnlyTheBackEndsTheFileNeedsAndRetriesFailedOnes)
{
    pQT->results["Init"] = pCD->results["Init"] = E_FAIL;
    const std::pair<LPCWSTR, std::string> steps[] = {
        {L"C:\\a.MP3", "DS CD"}, {L"b.mp3", "CD"}, {L"c.mov", "QT CD"}, {L"d.mov", "QT CD"},
        {L"C:\\dir.mp3\\readme", "WMP CD"}, // no extension: the control's empty entry
        {L"protected.asf", "DS PV WMP QT QA CD"}}; // the control route starts every one again
    for (const auto& step : steps)
    {
        log.clear();
        EXPECT_EQ(player->Init(step.first), S_OK) << "back-end failures never fail Init";
        Entries expected;
        for (std::string name : {"DS", "PV", "WMP", "QT", "QA", "CD"})
        {
            if ((" " + step.second + " ").find(" " + name + " ") != std::string::npos)
                expected.push_back(name + ".Init");
            expected.push_back(name + ".SetEventHandlerWindow");
        }
        EXPECT_EQ(log, expected) << Narrow(step.first);
        EXPECT_FALSE(player->IsInitialized());
    }
    HWND hWnd = player->EventWindow();
    EXPECT_TRUE(IsWindow(hWnd) && !IsWindowVisible(hWnd));
    for (CScripted* p : {pDS, pPV, pWMP, pQT, pQA, pCD})
        EXPECT_EQ(p->EventHandlerWindow(), hWnd);
    pQT->results["Init"] = S_OK;
    ASSERT_EQ(player->Init(L"protected.wmv"), S_OK);
    EXPECT_TRUE(player->IsInitialized()) << "the five back-ends, whatever the CD";
    EXPECT_EQ(player->EventWindow(), hWnd);
}

TEST_F(Routing, TheHostsWindowGoesToTheBackEndInUseAndLeavesTheOneSwitchedFrom)
{
    EXPECT_EQ(player->SetParentWindow(hWndParent), E_FAIL);
    EXPECT_EQ(player->SetParentWindowSize(640, 480), E_FAIL);
    EXPECT_TRUE(log.empty());
    ASSERT_EQ(Open(L"a.mp3"), S_OK);
    EXPECT_EQ(log, (Entries{"DS.SetParentWindow(parent)", "DS.OpenFile(a.mp3,0,1)", "DS.GetFileInfo"}));
    // Init forgets the open file without closing it, so its back-end is not the one switched from.
    const std::pair<LPCWSTR, Entries> steps[] = {
        {L"b.mp3", {"DS.Stop", "DS.CloseFile", "DS.OpenFile(b.mp3,0,1)", "DS.GetFileInfo"}},
        {L"c.mov", {"DS.Stop", "DS.CloseFile", "DS.SetParentWindow(null)", "DS.Deactivate", "QT.SetParentWindow(parent)",
                    "QT.Activate", "QT.OpenFile(c.mov,0,1)", "QT.GetFileInfo"}},
        {L"d.mp3", {"DS.OpenFile(d.mp3,0,1)", "DS.GetFileInfo"}}};
    for (const auto& step : steps)
    {
        ASSERT_EQ(player->Play(), S_OK);
        ASSERT_EQ(step.first[0] == L'd' ? player->Init(step.first) : S_OK, S_OK);
        log.clear();
        EXPECT_EQ(player->OpenFile(step.first, 0, 1, nullptr), S_OK);
        EXPECT_EQ(log, step.second) << Narrow(step.first);
    }
    log.clear();
    pDS->results = {{"SetParentWindow", E_HANDLE}, {"SetParentWindowSize", E_OUTOFMEMORY}};
    EXPECT_EQ(player->SetParentWindow(hWndParent), E_HANDLE);
    EXPECT_EQ(player->SetParentWindowSize(800, 600), E_OUTOFMEMORY);
    EXPECT_EQ(log, (Entries{"DS.SetParentWindow(parent)", "DS.SetParentWindowSize(800,600)"}));
}

TEST_F(Routing, OpeningTheCDHidesTheCurrentBackEndWithoutClosingItsFile)
{
    ASSERT_EQ(Open(L"a.mp3"), S_OK);
    log.clear();
    pCD->fileInfo.bAudioOnly = TRUE;
    EXPECT_EQ(player->OpenCD(L'D', 3, 7), S_OK);
    EXPECT_TRUE(player->IsAudioOnly());
    ASSERT_EQ(player->Play(), S_OK);
    pCD->results["OpenCD"] = S_FALSE; // a refused range counts as open; so does one without information
    EXPECT_EQ(player->OpenCD(L'E', 5, 2), S_FALSE);
    EXPECT_EQ(player->GetPlayState(), Playback_State_Stop);
    pCD->fileInfo.hr = E_UNEXPECTED;
    pCD->results["OpenCD"] = S_OK;
    EXPECT_EQ(player->OpenCD(L'E', 1, 1), E_UNEXPECTED);
    EXPECT_EQ(log, (Entries{"DS.Deactivate", "CD.Activate", "CD.OpenCD(D,3,7)", "CD.GetFileInfo", "CD.Play",
                            "CD.Activate", "CD.OpenCD(E,5,2)", "CD.GetFileInfo", "CD.Activate", "CD.OpenCD(E,1,1)",
                            "CD.GetFileInfo"}));
    ASSERT_EQ(player->Play(), S_OK);
    EXPECT_EQ(player->Pause(), S_OK) << "Pause needs an open file";
    ASSERT_EQ(player->Init(L"x.cda"), S_OK);
    pCD->results["OpenCD"] = E_NOTIMPL;
    EXPECT_EQ(player->OpenCD(L'D', 1, 2), E_NOTIMPL);
    BOOL bAudioOnly = 5;
    EXPECT_EQ(player->GetFileInfo(&bAudioOnly, nullptr, nullptr, nullptr, nullptr, nullptr), E_FAIL);
    EXPECT_EQ(bAudioOnly, 5);
}

TEST_F(Routing, TheOpenedFilesRecordIsBuiltFromTheBackEndsSixValues)
{
    const std::pair<FileInfoScript, TESSALY_FILEINFO> cases[] = {
        {{S_OK, TRUE, FALSE, TRUE, 12.5, 640, 480}, {0x5, 12.5, 640, 480}},
        {{S_FALSE, TRUE, FALSE, TRUE, 9.0, 1, 1}, {0x2, 0.0, 0, 0}}}; // nothing written: seekable only
    for (const auto& c : cases)
    {
        pQT->fileInfo = c.first;
        TESSALY_FILEINFO info;
        memset(&info, 0xCD, sizeof(info));
        ASSERT_EQ(Open(L"a.mov", &info), S_OK);
        EXPECT_EQ(Str(info.dwAttributeMask, " ", info.dDuration, " ", info.dwWidth, "x", info.dwHeight),
                  Str(c.second.dwAttributeMask, " ", c.second.dDuration, " ", c.second.dwWidth, "x", c.second.dwHeight));
        EXPECT_EQ(player->IsAudioOnly(), c.second.dwAttributeMask & 1);
        EXPECT_EQ(player->IsPictureFile(), (c.second.dwAttributeMask & 4) != 0);
    }
    pQT->fileInfo = {E_POINTER, TRUE}; // a failed query keeps the open, fills nothing in, and is passed on later
    TESSALY_FILEINFO info;
    memset(&info, 0xCD, sizeof(info));
    ASSERT_EQ(Open(L"a.mov", &info), S_OK);
    EXPECT_EQ(info.dwAttributeMask, 0xCDCDCDCDu);
    EXPECT_FALSE(player->IsAudioOnly());
    log.clear();
    BOOL b = 9;
    EXPECT_EQ(player->GetFileInfo(&b, nullptr, nullptr, nullptr, nullptr, nullptr), E_POINTER);
    EXPECT_EQ(log, Entries{"QT.GetFileInfo"});
}

TEST_F(Routing, OnlyAChangeOfTheStretchBitReachesTheBackEnd)
{
    DWORD dwFlags = 0;
    EXPECT_EQ(player->GetPlaybackFlags(&dwFlags), S_OK);
    EXPECT_EQ(dwFlags, 1u);
    EXPECT_EQ(player->SetPlaybackFlags(0), S_OK); // no back-end yet: stored only
    ASSERT_EQ(Open(L"a.jpg", nullptr, 0, 1), S_OK); // stored, not forwarded
    pPV->results["SetPlaybackFlags"] = E_FAIL;      // ignored
    for (DWORD dwSet : {1u, 3u, 2u, 3u})
        EXPECT_EQ(player->SetPlaybackFlags(dwSet), S_OK);
    EXPECT_EQ(log, (Entries{"PV.OpenFile(a.jpg,0,1)", "PV.GetFileInfo", "PV.SetPlaybackFlags(2)", "PV.SetPlaybackFlags(3)"}));
    EXPECT_EQ(player->GetPlaybackFlags(&dwFlags), S_OK);
    EXPECT_EQ(dwFlags, 3u);
}

TEST_F(Routing, DestroyClosesTheFileThenDestroysAndDeletesEveryBackEndInOrder)
{
    EXPECT_EQ(player->GetSupportedFileExt(nullptr), nullptr);
    OpenAndPlay(L"a.mp3");
    HWND hWnd = player->EventWindow();
    player->Destroy();
    Entries destroyed = {"DS.Stop", "DS.CloseFile"};
    for (std::string name : {"DS", "PV", "WMP", "QT", "QA", "CD"})
        destroyed.insert(destroyed.end(), {name + ".Destroy", name + ".deleted"});
    EXPECT_EQ(log, destroyed);
    EXPECT_FALSE(IsWindow(hWnd));
    EXPECT_EQ(player->EventWindow(), nullptr);
    EXPECT_EQ(player->OpenFile(L"a.mp3", 0, 1, nullptr), E_FAIL);
    EXPECT_EQ(player->Play(), E_FAIL);
    DWORD dwCount = 5;
    EXPECT_EQ(player->GetSupportedFileExt(&dwCount), nullptr);
    EXPECT_EQ(dwCount, 0u);
}

} // namespace
