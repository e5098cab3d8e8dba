// File information, closing, playback flags and the end of the dispatcher.
#include "MediaPlayerTest.h"

namespace {

using FileInformation = MediaPlayerTest;
using Closing = MediaPlayerTest;
using PlaybackFlags = MediaPlayerTest;
using Destroying = MediaPlayerTest;

TEST_F(FileInformation, TheRecordIsBuiltFromTheBackEndsSixValues)
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
        // A back-end that writes nothing leaves the dispatcher's defaults: seekable only.
        {{S_OK, false}, {0x2, 0.0, 0, 0}},
    };
    for (const auto& c : cases)
    {
        SCOPED_TRACE(testing::Message() << "mask " << c.expected.dwAttributeMask);
        pDS->fileInfo = c.script;
        TESSALY_FILEINFO info;
        memset(&info, 0xCD, sizeof(info));
        ASSERT_EQ(Open(L"a.avi", &info), S_OK);
        EXPECT_EQ(info.dwAttributeMask, c.expected.dwAttributeMask);
        EXPECT_EQ(info.dDuration, c.expected.dDuration);
        EXPECT_EQ(info.dwWidth, c.expected.dwWidth);
        EXPECT_EQ(info.dwHeight, c.expected.dwHeight);
        EXPECT_EQ(player->IsAudioOnly(), c.script.bWrites ? c.script.bAudioOnly : FALSE);
        EXPECT_EQ(player->IsPictureFile(), c.script.bWrites ? c.script.bPicture : FALSE);
        // The back-end found the defaults in its outputs.
        const FileInfoScript& seen = pDS->seenByGetFileInfo;
        EXPECT_EQ(seen.bAudioOnly, FALSE);
        EXPECT_EQ(seen.dDuration, 0.0);
        EXPECT_EQ(seen.bSeekable, TRUE);
        EXPECT_EQ(seen.dwWidth, 0u);
        EXPECT_EQ(seen.dwHeight, 0u);
        EXPECT_EQ(seen.bPicture, FALSE);
        ASSERT_EQ(player->CloseFile(), S_OK);
    }
}

TEST_F(FileInformation, AFailedQueryKeepsTheOpenButLeavesTheFileUnseekable)
{
    pDS->fileInfo = {E_UNEXPECTED, true, TRUE, 5.0, TRUE, 0, 0, FALSE};
    TESSALY_FILEINFO info;
    memset(&info, 0xCD, sizeof(info));
    ASSERT_EQ(Open(L"a.mp3", &info), S_OK);
    EXPECT_EQ(info.dwAttributeMask, 0xCDCDCDCDu);
    EXPECT_EQ(info.dwWidth, 0xCDCDCDCDu);
    EXPECT_FALSE(player->IsAudioOnly());
    ASSERT_EQ(player->Play(), S_OK);
    EXPECT_EQ(player->SeekTo(1.0), TESSALY_E_NOTSEEKABLE);
}

TEST_F(FileInformation, QueriesNeedAnOpenFileAndReachItsBackEnd)
{
    BOOL bAudioOnly = 9, bSeekable = 9, bPicture = 9;
    double dDuration = -1.0;
    DWORD dwWidth = 9, dwHeight = 9;
    EXPECT_EQ(player->GetFileInfo(&bAudioOnly, &dDuration, &bSeekable, &dwWidth, &dwHeight, &bPicture), E_FAIL);
    EXPECT_EQ(bAudioOnly, 9);
    EXPECT_EQ(dDuration, -1.0);
    EXPECT_EQ(dwWidth, 9u);

    pQT->fileInfo = {S_OK, true, FALSE, 30.0, TRUE, 320, 200, FALSE};
    ASSERT_EQ(Open(L"a.mov"), S_OK);
    log.Clear();
    EXPECT_EQ(player->GetFileInfo(&bAudioOnly, &dDuration, &bSeekable, &dwWidth, &dwHeight, &bPicture), S_OK);
    EXPECT_EQ(log.Entries(), Entries{"QT.GetFileInfo"});
    EXPECT_EQ(dDuration, 30.0);
    EXPECT_EQ(dwWidth, 320u);
    EXPECT_EQ(dwHeight, 200u);
    EXPECT_EQ(bSeekable, TRUE);

    pQT->fileInfo.hr = E_POINTER;
    EXPECT_EQ(player->GetFileInfo(&bAudioOnly, &dDuration, &bSeekable, &dwWidth, &dwHeight, &bPicture), E_POINTER);
}

TEST_F(Closing, StopsClosesAndForgetsTheFile)
{
    pDS->fileInfo = {S_OK, true, TRUE, 5.0, TRUE, 0, 0, FALSE};
    OpenAndPlay(L"a.mp3");
    ASSERT_TRUE(player->IsAudioOnly());
    EXPECT_EQ(player->CloseFile(), S_OK);
    EXPECT_EQ(log.Entries(), (Entries{"DS.Stop", "DS.CloseFile"}));
    EXPECT_EQ(player->GetPlayState(), Playback_State_Stop);
    EXPECT_FALSE(player->IsAudioOnly());
    progress.clear();
    PumpFor(250);
    EXPECT_TRUE(progress.empty());

    log.Clear();
    EXPECT_EQ(player->CloseFile(), S_OK);
    EXPECT_TRUE(log.Entries().empty());
}

TEST_F(Closing, AFailingStopDoesNotPreventTheClose)
{
    OpenAndPlay(L"a.mp3");
    pDS->Script("Stop", E_ABORT);
    EXPECT_EQ(player->CloseFile(), S_OK);
    EXPECT_EQ(log.Entries(), (Entries{"DS.Stop", "DS.CloseFile"}));
    EXPECT_EQ(player->GetPlayState(), Playback_State_Stop);
    EXPECT_EQ(player->Play(), E_FAIL);
}

TEST_F(PlaybackFlags, OnlyAChangeOfTheStretchBitReachesTheBackEnd)
{
    DWORD dwFlags = 0;
    EXPECT_EQ(player->GetPlaybackFlags(&dwFlags), S_OK);
    EXPECT_EQ(dwFlags, 1u);
    // No back-end yet: stored only.
    EXPECT_EQ(player->SetPlaybackFlags(0), S_OK);
    EXPECT_EQ(player->GetPlaybackFlags(&dwFlags), S_OK);
    EXPECT_EQ(dwFlags, 0u);

    // OpenFile stores the flags without forwarding them.
    ASSERT_EQ(Open(L"a.jpg", nullptr, 0, 1), S_OK);
    EXPECT_EQ(player->GetPlaybackFlags(&dwFlags), S_OK);
    EXPECT_EQ(dwFlags, 1u);
    log.Clear();

    EXPECT_EQ(player->SetPlaybackFlags(1), S_OK);
    EXPECT_EQ(player->SetPlaybackFlags(3), S_OK);
    pPV->Script("SetPlaybackFlags", E_FAIL); // ignored
    EXPECT_EQ(player->SetPlaybackFlags(2), S_OK);
    EXPECT_EQ(player->SetPlaybackFlags(3), S_OK);
    EXPECT_EQ(log.Entries(), (Entries{"PV.SetPlaybackFlags(0x2)", "PV.SetPlaybackFlags(0x3)"}));
    EXPECT_EQ(player->GetPlaybackFlags(&dwFlags), S_OK);
    EXPECT_EQ(dwFlags, 3u);
}

TEST_F(Destroying, ClosesTheFileThenDestroysAndDeletesEveryBackEndInOrder)
{
    OpenAndPlay(L"a.mp3");
    HWND hWnd = player->EventWindow();
    player->Destroy();
    EXPECT_EQ(log.Entries(),
              (Entries{"DS.Stop", "DS.CloseFile", "DS.Destroy", "DS.deleted", "PV.Destroy", "PV.deleted",
                       "WMP.Destroy", "WMP.deleted", "QT.Destroy", "QT.deleted", "QA.Destroy", "QA.deleted",
                       "CD.Destroy", "CD.deleted"}));
    EXPECT_FALSE(IsWindow(hWnd));
    EXPECT_EQ(player->EventWindow(), nullptr);
    EXPECT_EQ(player->GetPlayState(), Playback_State_Stop);

    // Nothing is left to play with.
    EXPECT_EQ(player->OpenFile(L"a.mp3", 0, 1, nullptr), E_FAIL);
    EXPECT_EQ(player->Play(), E_FAIL);
    DWORD dwCount = 5;
    EXPECT_EQ(player->GetSupportedFileExt(&dwCount), nullptr);
    EXPECT_EQ(dwCount, 0u);
}

TEST_F(Destroying, WithoutAnyFileOnlyDestroysTheBackEnds)
{
    player->Destroy();
    EXPECT_EQ(log.Entries(),
              (Entries{"DS.Destroy", "DS.deleted", "PV.Destroy", "PV.deleted", "WMP.Destroy", "WMP.deleted",
                       "QT.Destroy", "QT.deleted", "QA.Destroy", "QA.deleted", "CD.Destroy", "CD.deleted"}));
}

} // namespace
