// The caption strip takes room from the picture: the information window tells a real
// dispatcher, whose current back-end here is a scripted picture back-end.
#include <memory>

#include "CScriptedBackEnd.h"
#include "InfoWndTest.h"
#include "backends/cdda/CDDAGraph.h"
#include "dispatch/CMediaPlayer.h"
#include "dispatch/CWindowsMediaRoute.h"

namespace {

using CTestBackEnd = CScriptedBackEnd<CPlayerBase>;

const LPCWSTR PICTURE_EXTENSIONS[] = {L".jpg"};

class InfoWndDispatcher : public InfoWndTest
{
protected:
    void SetUp() override
    {
        InfoWndTest::SetUp();
        log.NameWindow(hWndHost, "host");
        log.NameWindow(hWnd, "info");
        CMediaPlayer::BackEnds backEnds;
        pPicture = new CTestBackEnd(log, "PV", PICTURE_EXTENSIONS, 1);
        pPicture->fileInfo.bPicture = TRUE;
        backEnds.players.emplace_back(pPicture);
        player.reset(new CMediaPlayer(std::move(backEnds)));
        ASSERT_EQ(S_OK, player->Init(L"photo.jpg"));
        player->SetParentWindow(hWndHost);
        ASSERT_EQ(S_OK, player->OpenFile(L"photo.jpg", 0, 1, nullptr));
        info->SetVideoArea(player.get());
        log.Clear();
    }
    void TearDown() override
    {
        InfoWndTest::TearDown();
        player->Destroy();
        player.reset();
    }

    CCallLog log;
    CTestBackEnd* pPicture = nullptr;
    std::unique_ptr<CMediaPlayer> player;
};

using Entries = std::vector<std::string>;

TEST_F(InfoWndDispatcher, ShownCaptionLeavesThePictureTheTopFourFifthsAndHidingGivesAllBack)
{
    EXPECT_EQ(S_OK, info->SetDisplayMode(INFO_MODE_CAPTION, TRUE));
    EXPECT_EQ(Entries{}, log.Entries()); // not shown yet: the picture keeps the window
    info->ShowMediaInfo(TRUE);
    EXPECT_EQ(S_OK, info->SetDisplayMode(INFO_MODE_CAPTION, FALSE)); // unchanged mode, told again
    info->ShowMediaInfo(FALSE);
    EXPECT_EQ((Entries{"PV.SetParentWindowSize(640,383)", "PV.SetParentWindowSize(640,383)",
                       "PV.SetParentWindow(info)"}),
              log.Entries());
}

TEST_F(InfoWndDispatcher, ShowMediaInfoActsOnEveryChangeOfTheValueAndOnlyThen)
{
    info->SetDisplayMode(INFO_MODE_CAPTION, FALSE);
    ValidateRect(hWnd, nullptr);
    info->ShowMediaInfo(TRUE);
    EXPECT_TRUE(NeedsPaint());
    ValidateRect(hWnd, nullptr);
    info->ShowMediaInfo(TRUE);
    EXPECT_FALSE(NeedsPaint());
    info->ShowMediaInfo(-1);
    info->ShowMediaInfo(1);
    EXPECT_TRUE(NeedsPaint());
    EXPECT_EQ(3u, log.Count("PV.SetParentWindowSize(640,383)"));
    EXPECT_EQ(3u, log.Entries().size());
}

TEST_F(InfoWndDispatcher, APanelOrNothingLeavesThePictureAlone)
{
    info->ShowMediaInfo(TRUE);
    EXPECT_EQ(S_OK, info->SetDisplayMode(INFO_MODE_MEDIA, TRUE));
    EXPECT_EQ(S_OK, info->SetDisplayMode(INFO_MODE_NONE, TRUE));
    info->SetVideoArea(nullptr);
    info->ShowMediaInfo(FALSE);
    EXPECT_EQ(Entries{}, log.Entries());
}

} // namespace
