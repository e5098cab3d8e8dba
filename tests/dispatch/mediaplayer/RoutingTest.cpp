// Which back-end a file reaches, and what happens to back-ends on the way.
#include "MediaPlayerTest.h"

namespace {

using Routing = MediaPlayerTest;

TEST_F(Routing, ExtensionsMatchWithoutRegardToCase)
{
    const struct
    {
        LPCWSTR pwszFile;
        std::string backEnd;
    } cases[] = {
        {L"C:\\media\\song.Mp3", "DS"},  {L"C:\\media\\photo.jPeG", "PV"},
        {L"C:\\media\\clip.MOV", "QT"},  {L"C:\\media\\tune.m4a", "QA"},
        {L"C:\\media\\movie.wmv", "DS"}, {L"C:\\media\\still.tiff", "PV"},
    };
    for (const auto& c : cases)
    {
        const std::string path = Narrow(c.pwszFile);
        SCOPED_TRACE(path);
        ASSERT_EQ(Open(c.pwszFile), S_OK);
        // Before these two only the switch away from the previous file's back-end is logged.
        EXPECT_EQ(log.Tail(2), (Entries{c.backEnd + ".OpenFile(" + path + ",0,1)", c.backEnd + ".GetFileInfo"}));
        // From now on the dispatcher drives the chosen back-end.
        log.Clear();
        EXPECT_EQ(player->Play(), S_OK);
        EXPECT_EQ(log.Entries(), Entries{c.backEnd + ".Play"});
        EXPECT_EQ(player->CloseFile(), S_OK);
    }
}

TEST_F(Routing, GifGoesToTheQuickTimeBackEndNotToThePictureViewer)
{
    ASSERT_EQ(Open(L"anim.gif"), S_OK);
    EXPECT_EQ(log.Entries(), (Entries{"QT.OpenFile(anim.gif,0,1)", "QT.GetFileInfo"}));
}

TEST_F(Routing, MalformedOrUnknownExtensionsAreRefusedWithoutTouchingABackEnd)
{
    TESSALY_FILEINFO info;
    memset(&info, 0xCD, sizeof(info));
    TESSALY_FILEINFO untouched = info;
    for (LPCWSTR pwszFile : {L"C:\\media\\noextension", L"C:\\media\\bare.", L"C:\\dir.mp3\\file",
                             L"C:\\media\\song.xyz", L".", L"", static_cast<LPCWSTR>(nullptr)})
    {
        SCOPED_TRACE(Narrow(pwszFile));
        EXPECT_EQ(Open(pwszFile, &info), TESSALY_E_NOTSUPPORTED);
        EXPECT_TRUE(log.Entries().empty());
        EXPECT_EQ(memcmp(&info, &untouched, sizeof(info)), 0);
        EXPECT_EQ(player->Play(), E_FAIL);
    }
}

TEST_F(Routing, ARefusedFileStillClosesTheOpenOneAndKeepsTheFlags)
{
    ASSERT_EQ(Open(L"a.mp3"), S_OK);
    ASSERT_EQ(player->Play(), S_OK);
    log.Clear();
    EXPECT_EQ(player->OpenFile(L"b.", 0, 0x6, nullptr), TESSALY_E_NOTSUPPORTED);
    EXPECT_EQ(log.Entries(), (Entries{"DS.Stop", "DS.CloseFile"}));
    DWORD dwFlags = 0;
    EXPECT_EQ(player->GetPlaybackFlags(&dwFlags), S_OK);
    EXPECT_EQ(dwFlags, 0x6u);
    EXPECT_EQ(player->GetPlayState(), Playback_State_Stop);
}

TEST_F(Routing, OpenBeforeInitIsRefused)
{
    EXPECT_EQ(player->OpenFile(L"a.mp3", 0, 1, nullptr), E_FAIL);
    EXPECT_TRUE(log.Entries().empty());
}

TEST_F(Routing, AFailedOpenIsNotRetriedElsewhereAndTheBackEndIsClosedAndDetached)
{
    pQT->Script("OpenFile", E_ACCESSDENIED);
    ASSERT_EQ(player->SetParentWindow(hWndParent), E_FAIL);
    TESSALY_FILEINFO info;
    memset(&info, 0xCD, sizeof(info));
    EXPECT_EQ(Open(L"clip.mp4", &info, 2, 0), E_ACCESSDENIED);
    EXPECT_EQ(log.Entries(), (Entries{"QT.SetParentWindow(parent)", "QT.OpenFile(clip.mp4,2,0)",
                                      "QT.CloseFile", "QT.SetParentWindow(null)"}));
    EXPECT_EQ(info.dwAttributeMask, 0xCDCDCDCDu);
    // Nothing is open and no back-end is current.
    BOOL bAudioOnly = 7;
    EXPECT_EQ(player->GetFileInfo(&bAudioOnly, nullptr, nullptr, nullptr, nullptr, nullptr), E_FAIL);
    EXPECT_EQ(bAudioOnly, 7);
    EXPECT_EQ(player->Play(), E_FAIL);
    EXPECT_EQ(player->SetParentWindowSize(10, 10), E_FAIL);

    // The same back-end opening the next file gets the host's window back.
    pQT->Script("OpenFile", S_OK);
    log.Clear();
    EXPECT_EQ(Open(L"good.mp4", nullptr, 0, 0), S_OK);
    EXPECT_EQ(log.Entries().at(0), "QT.SetParentWindow(parent)");
}

TEST_F(Routing, TheOpenResultOfTheBackEndIsPassedOn)
{
    pDS->Script("OpenFile", TESSALY_S_PARTIAL_RENDER);
    EXPECT_EQ(Open(L"a.avi"), TESSALY_S_PARTIAL_RENDER);
    EXPECT_EQ(player->Play(), S_OK);
}

TEST_F(Routing, WindowsMediaFilesTakeTheControlRouteWhenThePredicateSaysSo)
{
    EXPECT_EQ(Open(L"C:\\protected.wma"), S_OK);
    EXPECT_EQ(log.Entries(), (Entries{"WMP.OpenFile(C:\\protected.wma,0,1)", "WMP.GetFileInfo"}));
    EXPECT_EQ(player->CloseFile(), S_OK);

    EXPECT_EQ(Open(L"C:\\plain.wma"), S_OK);
    EXPECT_EQ(log.Entries(), (Entries{"WMP.SetParentWindow(null)", "WMP.Deactivate",
                                      "DS.SetParentWindow(null)", "DS.Activate",
                                      "DS.OpenFile(C:\\plain.wma,0,1)", "DS.GetFileInfo"}));
    EXPECT_EQ(player->CloseFile(), S_OK);

    // The route is only for Windows Media extensions, whatever the path says.
    EXPECT_EQ(Open(L"C:\\protected.mp3"), S_OK);
    EXPECT_EQ(log.Entries().front(), "DS.OpenFile(C:\\protected.mp3,0,1)");
}

} // namespace
