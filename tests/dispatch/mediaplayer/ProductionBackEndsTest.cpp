// The dispatcher as the engine builds it, with its own back-ends.
#include <windows.h>

#include <objbase.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "CScriptedBackEnd.h"
#include "dispatch/CMediaPlayer.h"
#include "dispatch/CWindowsMediaRoute.h"

namespace {

const std::vector<std::string> kAllExtensions = {
    ".MP3", ".WAV", ".WMA", ".AVI", ".MPEG", ".MPG", ".MPA", ".MPE", ".M1V", ".M1A", ".MPV", ".ASF",
    ".DAT", ".WMV", ".DIVX", ".VOB", ".OGG", ".FLAC", ".KMV",
    ".BMP", ".DIB", ".JPG", ".JPEG", ".JPE", ".JFIF", ".PNG", ".TIF", ".TIFF", ".ICO", ".WMF", ".EMF",
    "",
    ".MOV", ".QT", ".MQV", ".DV", ".DIF", ".MP4", ".MP4V", ".3GPP", ".3GP", ".3G2", ".3GP2", ".M4V",
    ".PNTG", ".PNT", ".MAC", ".PICT", ".PIC", ".PCT", ".QTIF", ".QTI", ".SGI", ".RGB", ".TARGA", ".TGA",
    ".PSD", ".GIF",
    ".AIFF", ".AIF", ".AIFC", ".CDDA", ".AMR", ".AU", ".SND", ".ULW", ".M4A", ".M4B", ".M4P", ".GSM",
    ".AAC", ".ADTS"};

class ProductionDispatcher : public ::testing::Test
{
protected:
    void TearDown() override { player.Destroy(); }
    CMediaPlayer player;
};

TEST_F(ProductionDispatcher, ListsTheSeventyTwoExtensionsInSearchOrder)
{
    DWORD dwCount = 0;
    LPCWSTR* ppList = player.GetSupportedFileExt(&dwCount);
    ASSERT_NE(ppList, nullptr);
    ASSERT_EQ(dwCount, 72u);
    std::vector<std::string> listed;
    for (DWORD i = 0; i < dwCount; ++i)
        listed.push_back(Narrow(ppList[i]));
    EXPECT_EQ(listed, kAllExtensions);
    EXPECT_STREQ(ppList[31], L"");
    CoTaskMemFree(ppList);

    EXPECT_EQ(player.GetSupportedFileExt(nullptr), nullptr);
}

// This thread has no COM, so the movie toolbox can make no filter graph and does not start: both
// QuickTime back-ends report it as not installed.
TEST_F(ProductionDispatcher, RoutesToTheQuickTimeBackEndsWhichReportQuickTimeMissingWithoutCOM)
{
    for (LPCWSTR pwszFile : {L"a.gif", L"a.m4a"})
    {
        SCOPED_TRACE(Narrow(pwszFile));
        ASSERT_EQ(player.Init(pwszFile), S_OK);
        TESSALY_FILEINFO info;
        memset(&info, 0xCD, sizeof(info));
        EXPECT_EQ(player.OpenFile(pwszFile, 0, 1, &info), TESSALY_E_QT_NOTINSTALLED);
        EXPECT_EQ(info.dwAttributeMask, 0xCDCDCDCDu);
        EXPECT_EQ(player.Play(), E_FAIL);
    }
    // Those start-ups failed; drive D has no disc here (and no image is set for it), so the CD
    // device cannot measure the range and refuses it.
    EXPECT_FALSE(player.IsInitialized());
    EXPECT_EQ(player.OpenCD(L'D', 1, 2), S_FALSE);
    double dDuration = -1.0;
    EXPECT_EQ(player.GetCDDuration(&dDuration), S_OK);
    EXPECT_EQ(dDuration, 0.0);
}

class RecordingRoute : public CWindowsMediaRoute
{
public:
    mutable std::vector<std::string> asked;

protected:
    bool PrefersMediaPlayerControl(LPCWSTR pwszFile) const override
    {
        asked.push_back(Narrow(pwszFile));
        return true;
    }
};

TEST(WindowsMediaRoute, OnlyWindowsMediaExtensionsAreEverAsked)
{
    RecordingRoute route;
    EXPECT_TRUE(route.TakesRoute(L"C:\\m\\a.wmv"));
    EXPECT_TRUE(route.TakesRoute(L"C:\\m\\b.WMA"));
    EXPECT_TRUE(route.TakesRoute(L"C:\\m\\c.AsF"));
    EXPECT_FALSE(route.TakesRoute(L"C:\\m\\d.mp3"));
    EXPECT_FALSE(route.TakesRoute(L"C:\\m.wma\\noext"));
    EXPECT_FALSE(route.TakesRoute(L"C:\\m\\e.wmvx"));
    EXPECT_FALSE(route.TakesRoute(nullptr));
    EXPECT_EQ(route.asked, (std::vector<std::string>{"C:\\m\\a.wmv", "C:\\m\\b.WMA", "C:\\m\\c.AsF"}));
}

TEST(WindowsMediaRoute, TheEngineSendsEveryWindowsMediaFileToDirectShowForNow)
{
    CWindowsMediaRoute route;
    for (LPCWSTR pwszFile : {L"C:\\protected.wma", L"x.WMV", L"y.asf"})
        EXPECT_FALSE(route.TakesRoute(pwszFile)) << Narrow(pwszFile);
}

} // namespace
