// Which back-end a file reaches, which back-ends start, and the hand-over of the host's window.
#include "MediaPlayerTest.h"

namespace {

using Routing = MediaPlayerTest;

TEST_F(Routing, EachFileReachesTheBackEndOfItsExtensionOrTheControlRoute)
{
    const struct
    {
        LPCWSTR pwszFile;
        const char* pszBackEnd;
    } cases[] = {{L"C:\\m\\song.Mp3", "DS"}, {L"C:\\m\\photo.jPeG", "PV"}, {L"C:\\m\\clip.MOV", "QT"},
                 {L"C:\\m\\tune.m4a", "QA"}, {L"C:\\m\\anim.gif", "QT"}, {L"C:\\m\\movie.wmv", "DS"},
                 {L"C:\\m\\protected.wma", "WMP"}, {L"C:\\protected\\a.ASF", "WMP"}, {L"C:\\m\\protected.mp3", "DS"}};
    for (const auto& c : cases)
    {
        const std::string path = Narrow(c.pwszFile), name = c.pszBackEnd;
        SCOPED_TRACE(path);
        ASSERT_EQ(Open(c.pwszFile, nullptr, 2, 1), S_OK);
        // Before these two only the switch away from the previous file's back-end is logged.
        const Entries& e = log.Entries();
        ASSERT_GE(e.size(), 2u);
        EXPECT_EQ(Entries(e.end() - 2, e.end()), (Entries{name + ".OpenFile(" + path + ",2,1)", name + ".GetFileInfo"}));
        log.Clear();
        EXPECT_EQ(player->Play(), S_OK);
        EXPECT_EQ(log.Entries(), Entries{name + ".Play"});
        EXPECT_EQ(player->CloseFile(), S_OK);
    }
}

TEST_F(Routing, RefusedFilesTouchNoBackEndButCloseTheOpenOne)
{
    EXPECT_EQ(player->OpenFile(L"a.mp3", 0, 1, nullptr), E_FAIL) << "before Init";
    EXPECT_TRUE(log.Entries().empty());
    TESSALY_FILEINFO info, untouched;
    memset(&info, 0xCD, sizeof(info));
    untouched = info;
    for (LPCWSTR pwszFile : {L"C:\\m\\noextension", L"C:\\m\\bare.", L"C:\\dir.mp3\\file", L"C:\\m\\song.xyz",
                             L".", L"", static_cast<LPCWSTR>(nullptr)})
    {
        SCOPED_TRACE(Narrow(pwszFile));
        OpenAndPlay(L"a.mp3");
        EXPECT_EQ(player->OpenFile(pwszFile, 0, 0x6, &info), TESSALY_E_NOTSUPPORTED);
        EXPECT_EQ(log.Entries(), (Entries{"DS.Stop", "DS.CloseFile"}));
        EXPECT_EQ(memcmp(&info, &untouched, sizeof(info)), 0);
        DWORD dwFlags = 0;
        EXPECT_EQ(player->GetPlaybackFlags(&dwFlags), S_OK);
        EXPECT_EQ(dwFlags, 0x6u);
        EXPECT_EQ(player->Play(), E_FAIL);
    }
}

TEST_F(Routing, AFailedOpenIsNotRetriedElsewhereAndTheNextOpenGetsTheWindowBack)
{
    pQT->Script("OpenFile", E_ACCESSDENIED);
    ASSERT_EQ(player->SetParentWindow(hWndParent), E_FAIL);
    TESSALY_FILEINFO info;
    memset(&info, 0xCD, sizeof(info));
    EXPECT_EQ(Open(L"clip.mp4", &info, 2, 0), E_ACCESSDENIED);
    EXPECT_EQ(log.Entries(), (Entries{"QT.SetParentWindow(parent)", "QT.OpenFile(clip.mp4,2,0)", "QT.CloseFile",
                                      "QT.SetParentWindow(null)"}));
    EXPECT_EQ(info.dwAttributeMask, 0xCDCDCDCDu);
    BOOL bAudioOnly = 7;
    EXPECT_EQ(player->GetFileInfo(&bAudioOnly, nullptr, nullptr, nullptr, nullptr, nullptr), E_FAIL);
    EXPECT_EQ(bAudioOnly, 7);
    EXPECT_EQ(player->Play(), E_FAIL);
    EXPECT_EQ(player->SetParentWindowSize(10, 10), E_FAIL);

    pQT->Script("OpenFile", TESSALY_S_PARTIAL_RENDER); // a success code is passed on
    EXPECT_EQ(Open(L"good.mp4", nullptr, 0, 0), TESSALY_S_PARTIAL_RENDER);
    EXPECT_EQ(log.Entries(), (Entries{"QT.SetParentWindow(parent)", "QT.OpenFile(good.mp4,0,0)", "QT.GetFileInfo"}));
}

// The calls Init makes when the named back-ends start: each back-end in order, then the CD.
Entries InitCalls(const std::string& started)
{
    Entries e;
    for (const char* name : {"DS", "PV", "WMP", "QT", "QA", "CD"})
    {
        if (started.find(std::string(name) + " ") != std::string::npos)
            e.push_back(std::string(name) + ".Init");
        e.push_back(std::string(name) + ".SetEventHandlerWindow");
    }
    return e;
}

TEST_F(Routing, InitStartsOnlyTheBackEndsTheFileNeedsAndRetriesFailedOnes)
{
    pQT->Script("Init", E_FAIL);
    pCD->Script("Init", E_FAIL);
    const struct
    {
        LPCWSTR pwszFile;
        const char* pszStarted;
    } steps[] = {
        {L"C:\\a.MP3", "DS CD "}, {L"b.mp3", "CD "}, {L"c.mov", "QT CD "}, {L"d.mov", "QT CD "},
        {L"C:\\dir.mp3\\readme", "WMP CD "},              // no extension: the control's empty entry
        {L"protected.asf", "DS PV WMP QT QA CD "}, // the control route starts every one again
    };
    for (const auto& step : steps)
    {
        SCOPED_TRACE(Narrow(step.pwszFile));
        log.Clear();
        EXPECT_EQ(player->Init(step.pwszFile), S_OK) << "back-end failures never fail Init";
        EXPECT_EQ(log.Entries(), InitCalls(step.pszStarted));
        EXPECT_FALSE(player->IsInitialized());
    }
    HWND hWnd = player->EventWindow();
    ASSERT_TRUE(IsWindow(hWnd));
    EXPECT_FALSE(IsWindowVisible(hWnd));
    for (CTestBackEnd* p : {pDS, pPV, pWMP, pQT, pQA})
        EXPECT_EQ(p->EventHandlerWindow(), hWnd);
    EXPECT_EQ(pCD->EventHandlerWindow(), hWnd);
    pQT->Script("Init", S_OK);
    ASSERT_EQ(player->Init(L"protected.wmv"), S_OK);
    EXPECT_TRUE(player->IsInitialized()) << "the five back-ends, whatever the CD";
    EXPECT_EQ(player->EventWindow(), hWnd);
}

TEST_F(Routing, TheHostsWindowGoesToTheBackEndInUseAndLeavesTheOneSwitchedFrom)
{
    EXPECT_EQ(player->SetParentWindow(hWndParent), E_FAIL);
    EXPECT_EQ(player->SetParentWindowSize(640, 480), E_FAIL);
    EXPECT_TRUE(log.Entries().empty());
    ASSERT_EQ(Open(L"a.mp3"), S_OK);
    const struct
    {
        LPCWSTR pwszFile;
        bool bInitFirst;
        Entries expected;
    } steps[] = {
        {L"b.mp3", false, {"DS.Stop", "DS.CloseFile", "DS.OpenFile(b.mp3,0,1)", "DS.GetFileInfo"}}, // handed over once
        {L"c.mov", false, {"DS.Stop", "DS.CloseFile", "DS.SetParentWindow(null)", "DS.Deactivate",
                           "QT.SetParentWindow(parent)", "QT.Activate", "QT.OpenFile(c.mov,0,1)", "QT.GetFileInfo"}},
        // Init forgets the open file without closing it, and its back-end does not count as
        // the one switched from.
        {L"d.mp3", true, {"DS.OpenFile(d.mp3,0,1)", "DS.GetFileInfo"}},
    };
    EXPECT_EQ(log.Entries(), (Entries{"DS.SetParentWindow(parent)", "DS.OpenFile(a.mp3,0,1)", "DS.GetFileInfo"}));
    for (const auto& step : steps)
    {
        SCOPED_TRACE(Narrow(step.pwszFile));
        ASSERT_EQ(player->Play(), S_OK);
        if (step.bInitFirst)
        {
            ASSERT_EQ(player->Init(step.pwszFile), S_OK);
        }
        log.Clear();
        EXPECT_EQ(player->OpenFile(step.pwszFile, 0, 1, nullptr), S_OK);
        EXPECT_EQ(log.Entries(), step.expected);
    }
    log.Clear();
    pDS->Script("SetParentWindow", E_HANDLE);
    pDS->Script("SetParentWindowSize", E_OUTOFMEMORY);
    EXPECT_EQ(player->SetParentWindow(hWndParent), E_HANDLE);
    EXPECT_EQ(player->SetParentWindowSize(800, 600), E_OUTOFMEMORY);
    EXPECT_EQ(log.Entries(), (Entries{"DS.SetParentWindow(parent)", "DS.SetParentWindowSize(800,600)"}));
}

TEST_F(Routing, OpeningTheCDHidesTheCurrentBackEndWithoutClosingItsFile)
{
    ASSERT_EQ(Open(L"a.mp3"), S_OK);
    log.Clear();
    pCD->fileInfo.bAudioOnly = TRUE;
    EXPECT_EQ(player->OpenCD(L'D', 3, 7), S_OK);
    EXPECT_EQ(log.Entries(), (Entries{"DS.Deactivate", "CD.Activate", "CD.OpenCD(D,3,7)", "CD.GetFileInfo"}));
    EXPECT_TRUE(player->IsAudioOnly());
    ASSERT_EQ(player->Play(), S_OK);
    log.Clear();
    // A refused range, answered with 1, counts as open; so does a range without information.
    pCD->Script("OpenCD", S_FALSE);
    EXPECT_EQ(player->OpenCD(L'E', 5, 2), S_FALSE);
    EXPECT_EQ(player->GetPlayState(), Playback_State_Stop);
    pCD->fileInfo.hr = E_UNEXPECTED;
    pCD->Script("OpenCD", S_OK);
    EXPECT_EQ(player->OpenCD(L'E', 1, 1), E_UNEXPECTED);
    EXPECT_EQ(log.Entries(), (Entries{"CD.Activate", "CD.OpenCD(E,5,2)", "CD.GetFileInfo", "CD.Activate",
                                      "CD.OpenCD(E,1,1)", "CD.GetFileInfo"}));
    ASSERT_EQ(player->Play(), S_OK);
    EXPECT_EQ(player->Pause(), S_OK) << "Pause needs an open file";

    ASSERT_EQ(player->Init(L"x.cda"), S_OK);
    pCD->Script("OpenCD", E_NOTIMPL);
    EXPECT_EQ(player->OpenCD(L'D', 1, 2), E_NOTIMPL);
    BOOL bAudioOnly = 5;
    EXPECT_EQ(player->GetFileInfo(&bAudioOnly, nullptr, nullptr, nullptr, nullptr, nullptr), E_FAIL);
    EXPECT_EQ(bAudioOnly, 5);

    pCD->dDuration = 252.0;
    pCD->Script("GetDuration", E_PENDING);
    double dDuration = -1.0;
    EXPECT_EQ(player->GetCDDuration(&dDuration), E_PENDING);
    EXPECT_EQ(dDuration, 252.0);
}

} // namespace
