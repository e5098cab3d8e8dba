// Which back-end a file reaches and starts, the host's window, the CD, file information, the end.
#include "MediaPlayerTest.h"

namespace {

using Routing = MediaPlayerTest;

TEST_F(Routing, EachFileReachesTheBackEndOfItsExtensionOrTheControlRoute)
{
    const std::pair<LPCWSTR, const char*> cases[] = {
        {L"C:\\m\\song.Mp3", "DS"}, {L"C:\\m\\photo.jPeG", "PV"}, {L"C:\\m\\clip.MOV", "QT"},
        {L"C:\\m\\tune.m4a", "QA"}, {L"C:\\m\\anim.gif", "QT"},   {L"C:\\m\\movie.wmv", "DS"},
        {L"C:\\m\\protected.wma", "WMP"}, {L"C:\\protected\\a.ASF", "WMP"}, {L"C:\\m\\protected.mp3", "DS"}};
    for (const auto& [pwszFile, pszName] : cases)
    {
        EXPECT_EQ(Open(pwszFile, nullptr, 2, 1), S_OK);
        EXPECT_EQ(log, (Entries{Str(pszName, ".OpenFile(", Narrow(pwszFile), ",2,1)"), Str(pszName, ".GetFileInfo")}));
    }
}

TEST_F(Routing, RefusedFilesTouchNoBackEndButCloseTheOpenOneOnceEvenWhenItsStopFails)
{
    EXPECT_EQ(player->OpenFile(L"a.mp3", 0, 1, nullptr), E_FAIL) << "before Init";
    EXPECT_TRUE(log.empty());
    pDS->results["Stop"] = E_ABORT;
    for (LPCWSTR pwszFile : {L"C:\\m\\bare.", L"C:\\dir.mp3\\file", L"C:\\m\\a.xyz", (LPCWSTR) nullptr})
    {
        ASSERT_EQ(Open(L"a.mp3"), S_OK);
        ASSERT_EQ(player->Play(), S_OK);
        log.clear();
        EXPECT_EQ(player->OpenFile(pwszFile, 0, 0x6, nullptr), TESSALY_E_NOTSUPPORTED);
        DWORD dwFlags = 0;
        EXPECT_TRUE(player->CloseFile() == S_OK && player->GetPlaybackFlags(&dwFlags) == S_OK && dwFlags == 0x6);
        EXPECT_EQ(log, (Entries{"DS.Stop", "DS.CloseFile"})) << Narrow(pwszFile);
    }
}

TEST_F(Routing, AFailedOpenIsNotRetriedElsewhereAndTheNextOpenGetsTheWindowBack)
{
    pQT->results["OpenFile"] = E_ACCESSDENIED;
    ASSERT_EQ(player->SetParentWindow(hWndParent), E_FAIL);
    TESSALY_FILEINFO info = {0xCDCDCDCD, 7.0, 7, 7};
    EXPECT_EQ(Open(L"clip.mp4", &info, 2, 0), E_ACCESSDENIED);
    EXPECT_EQ(log, (Entries{"QT.SetParentWindow(parent)", "QT.OpenFile(clip.mp4,2,0)", "QT.CloseFile",
                            "QT.SetParentWindow(null)"}));
    EXPECT_EQ(info.dwAttributeMask, 0xCDCDCDCDu);
    BOOL bAudioOnly = 7;
    EXPECT_EQ(player->GetFileInfo(&bAudioOnly, nullptr, nullptr, nullptr, nullptr, nullptr), E_FAIL);
    EXPECT_EQ(bAudioOnly, 7);
    EXPECT_EQ(player->Play(), E_FAIL);
    pQT->results["OpenFile"] = TESSALY_S_PARTIAL_RENDER; // a success code is passed on
    EXPECT_EQ(Open(L"good.mp4", nullptr, 0, 0), TESSALY_S_PARTIAL_RENDER);
    EXPECT_EQ(log, (Entries{"QT.SetParentWindow(parent)", "QT.OpenFile(good.mp4,0,0)", "QT.GetFileInfo"}));
}

TEST_F(Routing, InitStartsOnlyTheBackEndsTheFileNeedsAndRetriesFailedOnes)
{
    pQT->results["Init"] = pCD->results["Init"] = E_FAIL;
    const std::pair<LPCWSTR, std::string> steps[] = {
        {L"C:\\a.MP3", " DS CD "}, {L"b.mp3", " CD "}, {L"c.mov", " QT CD "}, {L"d.mov", " QT CD "},
        {L"C:\\dir.mp3\\readme", " WMP CD "},          // no extension: the control's empty entry
        {L"protected.asf", " DS PV WMP QT QA CD "}}; // the control route starts every one again
    for (const auto& [pwszFile, started] : steps)
    {
        log.clear();
        EXPECT_EQ(player->Init(pwszFile), S_OK) << "back-end failures never fail Init";
        Entries expected;
        for (std::string name : {"DS", "PV", "WMP", "QT", "QA", "CD"})
            for (std::string call : {".Init", ".SetEventHandlerWindow"})
                if (call != ".Init" || started.find(" " + name + " ") != std::string::npos)
                    expected.push_back(name + call);
        EXPECT_EQ(log, expected) << Narrow(pwszFile);
        EXPECT_FALSE(player->IsInitialized());
    }
    for (CScripted* p : {pPV, pWMP, pQT, pQA, pCD})
        EXPECT_TRUE(IsWindow(pDS->EventHandlerWindow()) && p->EventHandlerWindow() == pDS->EventHandlerWindow());
    pQT->results["Init"] = S_OK;
    ASSERT_EQ(player->Init(L"protected.wmv"), S_OK);
    EXPECT_TRUE(player->IsInitialized()) << "the five back-ends, whatever the CD";
}

TEST_F(Routing, TheHostsWindowGoesToTheBackEndInUseAndLeavesTheOneSwitchedFromAsDoesAChangedStretchBit)
{
    EXPECT_EQ(player->SetParentWindow(hWndParent), E_FAIL);
    EXPECT_EQ(player->SetParentWindowSize(640, 480), E_FAIL) << "no back-end";
    ASSERT_EQ(Open(L"a.mp3"), S_OK);
    EXPECT_EQ(log, (Entries{"DS.SetParentWindow(parent)", "DS.OpenFile(a.mp3,0,1)", "DS.GetFileInfo"}));
    // Init forgets the open file without closing it, so its back-end is not the one switched from.
    const std::pair<LPCWSTR, Entries> steps[] = {
        {L"b.mp3", {"DS.Stop", "DS.CloseFile", "DS.OpenFile(b.mp3,0,1)", "DS.GetFileInfo"}},
        {L"c.mov", {"DS.Stop", "DS.CloseFile", "DS.SetParentWindow(null)", "DS.Deactivate", "QT.SetParentWindow(parent)",
                    "QT.Activate", "QT.OpenFile(c.mov,0,1)", "QT.GetFileInfo"}},
        {L"d.mp3", {"DS.OpenFile(d.mp3,0,1)", "DS.GetFileInfo"}}};
    for (const auto& [pwszFile, expected] : steps)
    {
        ASSERT_EQ(player->Play(), S_OK);
        ASSERT_EQ(pwszFile[0] == L'd' ? player->Init(pwszFile) : S_OK, S_OK);
        log.clear();
        EXPECT_EQ(player->OpenFile(pwszFile, 0, 1, nullptr), S_OK);
        EXPECT_EQ(log, expected) << Narrow(pwszFile);
    }
    log.clear();
    pDS->results["SetPlaybackFlags"] = E_FAIL;
    for (DWORD dwSet : {1u, 3u, 2u, 3u})
        EXPECT_EQ(player->SetPlaybackFlags(dwSet), S_OK) << "a back-end's refusal is not passed on";
    EXPECT_EQ(log, (Entries{"DS.SetPlaybackFlags(2)", "DS.SetPlaybackFlags(3)"})) << "only a change of the stretch bit";
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
    EXPECT_EQ(player->Play(), S_OK);
    EXPECT_EQ(log, (Entries{"DS.Deactivate", "CD.Activate", "CD.OpenCD(D,3,7)", "CD.GetFileInfo", "CD.Play",
                            "CD.Activate", "CD.OpenCD(E,5,2)", "CD.GetFileInfo", "CD.Activate", "CD.OpenCD(E,1,1)",
                            "CD.GetFileInfo", "CD.Play"}));
}

TEST_F(Routing, TheOpenedFilesRecordIsBuiltFromTheBackEndsSixValues)
{
    // Nothing written with S_FALSE: the defaults, seekable only. A failure keeps the open, fills nothing in.
    const std::pair<FileInfoScript, std::string> cases[] = {{{S_OK, TRUE, FALSE, TRUE, 12.5, 640, 480}, "5 12.5 640x480 11"},
                                                            {{S_FALSE, TRUE, FALSE, TRUE, 9, 1, 1}, "2 0 0x0 00"},
                                                            {{E_POINTER, TRUE}, "cdcdcdcd -1 7x7 00"}};
    for (const auto& [script, expected] : cases)
    {
        pQT->fileInfo = script;
        TESSALY_FILEINFO info = {0xCDCDCDCD, -1.0, 7, 7};
        ASSERT_EQ(Open(L"a.mov", &info), S_OK);
        EXPECT_EQ(Str(std::hex, info.dwAttributeMask, std::dec, " ", info.dDuration, " ", info.dwWidth, "x",
                      info.dwHeight, " ", player->IsAudioOnly(), player->IsPictureFile()), expected);
    }
}

TEST_F(Routing, DestroyClosesTheFileThenDestroysAndDeletesEveryBackEndInOrder)
{
    ASSERT_EQ(Open(L"a.mp3"), S_OK);
    ASSERT_EQ(player->Play(), S_OK);
    log.clear();
    HWND hWnd = pDS->EventHandlerWindow();
    player->Destroy();
    Entries destroyed = {"DS.Stop", "DS.CloseFile"};
    for (std::string name : {"DS", "PV", "WMP", "QT", "QA", "CD"})
        destroyed.insert(destroyed.end(), {name + ".Destroy", name + ".deleted"});
    EXPECT_EQ(log, destroyed);
    EXPECT_FALSE(IsWindow(hWnd));
    EXPECT_EQ(player->OpenFile(L"a.mp3", 0, 1, nullptr), E_FAIL);
}

} // namespace
