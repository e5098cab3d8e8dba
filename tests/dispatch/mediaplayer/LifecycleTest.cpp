// File information, closing, playback flags, the extension list and the end of the dispatcher.
#include "MediaPlayerTest.h"

#include <objbase.h>

namespace {

using Lifecycle = MediaPlayerTest;

TEST_F(Lifecycle, TheOpenedFilesRecordIsBuiltFromTheBackEndsSixValues)
{
    const struct
    {
        FileInfoScript script;
        TESSALY_FILEINFO expected;
    } cases[] = {
        {{S_OK, true, TRUE, 12.5, TRUE, 0, 0, FALSE}, {0x3, 12.5, 0, 0}},
        {{S_OK, true, FALSE, 61.0, TRUE, 640, 480, FALSE}, {0x2, 61.0, 640, 480}},
        {{S_OK, true, FALSE, 0.0, FALSE, 1024, 768, TRUE}, {0x4, 0.0, 1024, 768}},
        {{S_OK, true, TRUE, 1.0, FALSE, 0, 0, FALSE}, {0x1, 1.0, 0, 0}},
        {{S_OK, false}, {0x2, 0.0, 0, 0}}, // nothing written: the dispatcher's defaults, seekable only
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(testing::Message() << "mask " << c.expected.dwAttributeMask);
        pQT->fileInfo = c.script;
        TESSALY_FILEINFO info;
        memset(&info, 0xCD, sizeof(info));
        ASSERT_EQ(Open(L"a.mov", &info), S_OK);
        EXPECT_EQ(info.dwAttributeMask, c.expected.dwAttributeMask);
        EXPECT_EQ(info.dDuration, c.expected.dDuration);
        EXPECT_EQ(info.dwWidth, c.expected.dwWidth);
        EXPECT_EQ(info.dwHeight, c.expected.dwHeight);
        EXPECT_EQ(player->IsAudioOnly(), c.script.bWrites && c.script.bAudioOnly);
        EXPECT_EQ(player->IsPictureFile(), c.script.bWrites && c.script.bPicture);
    }
    // A failed query keeps the open but fills nothing in; a later query's failure is passed on.
    pQT->fileInfo = {E_POINTER, true, TRUE, 5.0, TRUE, 0, 0, FALSE};
    TESSALY_FILEINFO info;
    memset(&info, 0xCD, sizeof(info));
    ASSERT_EQ(Open(L"a.mov", &info), S_OK);
    EXPECT_EQ(info.dwAttributeMask, 0xCDCDCDCDu);
    EXPECT_EQ(info.dwWidth, 0xCDCDCDCDu);
    EXPECT_FALSE(player->IsAudioOnly());
    BOOL bAudioOnly = 9, bSeekable = 9, bPicture = 9;
    double dDuration = -1.0;
    DWORD dwWidth = 9, dwHeight = 9;
    log.Clear();
    EXPECT_EQ(player->GetFileInfo(&bAudioOnly, &dDuration, &bSeekable, &dwWidth, &dwHeight, &bPicture), E_POINTER);
    EXPECT_EQ(log.Entries(), Entries{"QT.GetFileInfo"});
}

TEST_F(Lifecycle, CloseStopsClosesAndForgetsTheFileEvenWhenStopFails)
{
    pDS->fileInfo = {S_OK, true, TRUE, 5.0, TRUE, 0, 0, FALSE};
    OpenAndPlay(L"a.mp3");
    ASSERT_TRUE(player->IsAudioOnly());
    pDS->Script("Stop", E_ABORT);
    EXPECT_EQ(player->CloseFile(), S_OK);
    EXPECT_EQ(log.Entries(), (Entries{"DS.Stop", "DS.CloseFile"}));
    EXPECT_EQ(player->GetPlayState(), Playback_State_Stop);
    EXPECT_FALSE(player->IsAudioOnly());
    EXPECT_EQ(player->Play(), E_FAIL);
    log.Clear();
    EXPECT_EQ(player->CloseFile(), S_OK);
    EXPECT_TRUE(log.Entries().empty());
}

TEST_F(Lifecycle, OnlyAChangeOfTheStretchBitReachesTheBackEnd)
{
    DWORD dwFlags = 0;
    EXPECT_EQ(player->GetPlaybackFlags(&dwFlags), S_OK);
    EXPECT_EQ(dwFlags, 1u);
    EXPECT_EQ(player->SetPlaybackFlags(0), S_OK); // no back-end yet: stored only
    EXPECT_EQ(player->GetPlaybackFlags(&dwFlags), S_OK);
    EXPECT_EQ(dwFlags, 0u);
    ASSERT_EQ(Open(L"a.jpg", nullptr, 0, 1), S_OK); // stored, not forwarded
    for (DWORD dwSet : {1u, 3u, 2u, 3u})
    {
        pPV->Script("SetPlaybackFlags", E_FAIL); // ignored
        EXPECT_EQ(player->SetPlaybackFlags(dwSet), S_OK);
    }
    EXPECT_EQ(log.Entries(), (Entries{"PV.OpenFile(a.jpg,0,1)", "PV.GetFileInfo", "PV.SetPlaybackFlags(0x2)",
                                      "PV.SetPlaybackFlags(0x3)"}));
    EXPECT_EQ(player->GetPlaybackFlags(&dwFlags), S_OK);
    EXPECT_EQ(dwFlags, 3u);
}

TEST_F(Lifecycle, TheExtensionListJoinsTheBackEndsTablesInSearchOrder)
{
    EXPECT_EQ(player->GetSupportedFileExt(nullptr), nullptr);
    DWORD dwCount = 0;
    LPCWSTR* ppList = player->GetSupportedFileExt(&dwCount);
    ASSERT_NE(ppList, nullptr);
    std::vector<LPCWSTR> expected;
    for (CTestBackEnd* p : {pDS, pPV, pWMP, pQT, pQA})
    {
        DWORD n = 0;
        LPCWSTR* ppTable = p->GetSupportedFileExt(&n);
        ASSERT_GT(n, 0u);
        expected.insert(expected.end(), ppTable, ppTable + n);
    }
    EXPECT_EQ(std::vector<LPCWSTR>(ppList, ppList + dwCount), expected);
    CoTaskMemFree(ppList);
}

TEST_F(Lifecycle, DestroyClosesTheFileThenDestroysAndDeletesEveryBackEndInOrder)
{
    OpenAndPlay(L"a.mp3");
    HWND hWnd = player->EventWindow();
    player->Destroy();
    Entries expected = {"DS.Stop", "DS.CloseFile"};
    for (const char* name : {"DS", "PV", "WMP", "QT", "QA", "CD"})
        expected.insert(expected.end(), {std::string(name) + ".Destroy", std::string(name) + ".deleted"});
    EXPECT_EQ(log.Entries(), expected);
    EXPECT_FALSE(IsWindow(hWnd));
    EXPECT_EQ(player->EventWindow(), nullptr);
    EXPECT_EQ(player->OpenFile(L"a.mp3", 0, 1, nullptr), E_FAIL);
    EXPECT_EQ(player->Play(), E_FAIL);
    DWORD dwCount = 5;
    EXPECT_EQ(player->GetSupportedFileExt(&dwCount), nullptr);
    EXPECT_EQ(dwCount, 0u);
}

class RecordingRoute : public CWindowsMediaRoute
{
public:
    mutable Entries asked;

protected:
    bool PrefersMediaPlayerControl(LPCWSTR pwszFile) const override
    {
        asked.push_back(Narrow(pwszFile));
        return true;
    }
};

TEST(WindowsMediaRoute, OnlyWindowsMediaExtensionsAreAskedAndTheEnginesRouteReadsTheFile)
{
    RecordingRoute route;
    for (LPCWSTR pwszFile : {L"C:\\m\\a.wmv", L"C:\\m\\b.WMA", L"C:\\m\\c.AsF"})
        EXPECT_TRUE(route.TakesRoute(pwszFile));
    for (LPCWSTR pwszFile : {L"C:\\m\\d.mp3", L"C:\\m.wma\\noext", L"C:\\m\\e.wmvx", static_cast<LPCWSTR>(nullptr)})
        EXPECT_FALSE(route.TakesRoute(pwszFile));
    EXPECT_EQ(route.asked, (Entries{"C:\\m\\a.wmv", "C:\\m\\b.WMA", "C:\\m\\c.AsF"}));
    EXPECT_FALSE(CWindowsMediaRoute().TakesRoute(L"C:\\no such\\protected.wma")) << "unreadable: DirectShow";
}

} // namespace
