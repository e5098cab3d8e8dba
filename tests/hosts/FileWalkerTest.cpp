// How the probe turns files and folders into the list it asks about.
#include <gtest/gtest.h>

#include "CTempFolder.h"
#include "hosts/probe/CFileWalker.h"

namespace {

std::vector<std::wstring> PathsOf(const std::vector<CProbeTarget>& targets)
{
    std::vector<std::wstring> paths;
    for (const CProbeTarget& target : targets)
        paths.push_back(target.path);
    return paths;
}

TEST(FileWalker, FoldersAreWalkedRecursivelyInNameOrderIgnoringCase)
{
    CTempFolder temp;
    temp.Write(L"b.wav", "x");
    temp.Write(L"A.mp3", "x");
    temp.Write(L"sub\\deeper\\c.wmv", "x");
    temp.Write(L"sub\\a.wma", "x");
    temp.Write(L"c.ogg", "x");
    temp.MakeFolder(L"empty");

    const std::vector<CProbeTarget> targets = CFileWalker::Expand({temp.Path()});
    EXPECT_EQ((std::vector<std::wstring>{temp.Path(L"A.mp3"), temp.Path(L"b.wav"), temp.Path(L"c.ogg"),
                                         temp.Path(L"sub\\a.wma"), temp.Path(L"sub\\deeper\\c.wmv")}),
              PathsOf(targets));
    for (const CProbeTarget& target : targets)
        EXPECT_EQ(S_OK, target.hrFound);
}

TEST(FileWalker, FilesKeepTheOrderGivenAndMissingNamesCarryTheirError)
{
    CTempFolder temp;
    const std::wstring second = temp.Write(L"2.wav", "x");
    const std::wstring first = temp.Write(L"1.wav", "x");
    const std::vector<CProbeTarget> targets =
        CFileWalker::Expand({second, temp.Path(L"missing.wav"), first, temp.Path(L"no-folder\\x.wav")});
    ASSERT_EQ(4u, targets.size());
    EXPECT_EQ(second, targets[0].path);
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), targets[1].hrFound);
    EXPECT_EQ(first, targets[2].path);
    EXPECT_TRUE(FAILED(targets[3].hrFound));
}

TEST(FileWalker, RelativeNamesBecomeFullPaths)
{
    CTempFolder temp;
    temp.Write(L"here.wav", "x");
    wchar_t wszOld[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, wszOld);
    SetCurrentDirectoryW(temp.Path().c_str());
    const std::vector<CProbeTarget> targets = CFileWalker::Expand({L"here.wav", L"."});
    SetCurrentDirectoryW(wszOld);
    EXPECT_EQ((std::vector<std::wstring>{temp.Path(L"here.wav"), temp.Path(L"here.wav")}), PathsOf(targets));
}

} // namespace
