// The player's pieces that decide what plays next and what the information panel says.
#include <windows.h>
#include <shlobj.h>

#include <gtest/gtest.h>

#include <cstring>

#include <string>

#include "CTempFolder.h"
#include "hosts/player/CCoverArtFinder.h"
#include "hosts/player/CFileChooser.h"
#include "hosts/player/CInfoPanel.h"
#include "hosts/player/CMediaTitle.h"
#include "hosts/player/CPlaylist.h"

namespace {

template <size_t N>
std::wstring Text(const short (&field)[N])
{
    std::wstring text;
    for (size_t i = 0; i < N && field[i]; ++i)
        text += static_cast<wchar_t>(field[i]);
    return text;
}

TEST(Playlist, PlaysThroughToTheEndThenTakesNewFilesInTurn)
{
    CPlaylist playlist;
    EXPECT_FALSE(playlist.HasCurrent());
    EXPECT_FALSE(playlist.MovePrevious());
    playlist.Add(L"a");
    playlist.Add(L"b");
    ASSERT_TRUE(playlist.HasCurrent());
    EXPECT_EQ(L"a", playlist.Current());
    EXPECT_TRUE(playlist.MoveNext());
    EXPECT_EQ(L"b", playlist.Current());
    EXPECT_FALSE(playlist.MoveNext()); // the end
    EXPECT_FALSE(playlist.HasCurrent());
    EXPECT_FALSE(playlist.MoveNext());
    playlist.Add(L"c"); // dropped in after the end
    ASSERT_TRUE(playlist.HasCurrent());
    EXPECT_EQ(L"c", playlist.Current());
    EXPECT_EQ(2u, playlist.CurrentIndex());
}

TEST(Playlist, PreviousStopsAtTheFirstFileAndComesBackFromTheEnd)
{
    CPlaylist playlist;
    playlist.Add(L"a");
    playlist.Add(L"b");
    EXPECT_TRUE(playlist.MovePrevious());
    EXPECT_EQ(L"a", playlist.Current());
    playlist.MoveNext();
    playlist.MoveNext();
    EXPECT_TRUE(playlist.MovePrevious());
    EXPECT_EQ(L"b", playlist.Current());
}

TEST(CoverArt, APictureOfTheSameNameWinsOverTheFolderPicture)
{
    CTempFolder temp;
    const std::wstring song = temp.Write(L"song.mp3", "x");
    EXPECT_EQ(L"", CCoverArtFinder::Find(song));
    const std::wstring folder = temp.Write(L"folder.jpg", "x");
    EXPECT_EQ(folder, CCoverArtFinder::Find(song));
    const std::wstring own = temp.Write(L"song.png", "x");
    EXPECT_EQ(own, CCoverArtFinder::Find(song));
    EXPECT_EQ(folder, CCoverArtFinder::Find(temp.Write(L"other.wav", "x")));
}

TEST(CoverArt, FoldersNamedLikePicturesAndDotsInFolderNamesAreNotMistaken)
{
    CTempFolder temp;
    temp.MakeFolder(L"song.jpg");
    temp.MakeFolder(L"folder.jpg");
    EXPECT_EQ(L"", CCoverArtFinder::Find(temp.Write(L"song.mp3", "x")));
    // "album.2020" is a folder, not an extension: the file has none.
    const std::wstring bare = temp.Write(L"album.2020\\track", "x");
    const std::wstring picture = temp.Write(L"album.2020\\track.jpg", "x");
    EXPECT_EQ(picture, CCoverArtFinder::Find(bare));
}

TEST(MediaTitle, FallsBackToTheFileNameWithoutFolderOrExtension)
{
    EXPECT_EQ(L"My Song", CMediaTitle::FromName(L"C:\\music\\My Song.mp3"));
    EXPECT_EQ(L"a.b", CMediaTitle::FromName(L"C:/x/a.b.wav"));
    EXPECT_EQ(L".hidden", CMediaTitle::FromName(L"C:\\x\\.hidden"));
    EXPECT_EQ(L"plain", CMediaTitle::FromName(L"plain"));
    CTempFolder temp;
    // A file with no tags at all: the name is the title.
    EXPECT_EQ(L"untagged tone", CMediaTitle::Of(temp.Write(L"untagged tone.wav", std::string(64, '\0'))));
}

TEST(InfoPanel, DescribesTheFileWithItsTitleCoverFolderAndPlace)
{
    CTempFolder temp;
    const std::wstring song = temp.Write(L"Album\\Night Drive.mp3", "x");
    const std::wstring cover = temp.Write(L"Album\\folder.jpg", "x");
    const TESSALY_MEDIA_INFO info = CInfoPanel::Describe({song, 125.4, 1, 3});
    EXPECT_EQ(L"Night Drive", Text(info.wszTitle));
    EXPECT_EQ(L"Album", Text(info.wszChannelName));
    EXPECT_EQ(cover, Text(info.wszCoverArtPath));
    EXPECT_EQ(10u, Text(info.wszReleaseDate).size()); // the file's date, yyyy-mm-dd
    const std::wstring description = Text(info.wszDescript);
    EXPECT_EQ(0u, description.find(L"2:05 \x2014 file 2 of 3\n")) << description.c_str();
    EXPECT_NE(std::wstring::npos, description.find(song));
}

TEST(InfoPanel, LongTextIsCutToItsFieldAndStaysTerminated)
{
    const std::wstring longName(300, L'n');
    const TESSALY_MEDIA_INFO info = CInfoPanel::Describe({L"C:\\" + longName + L".mp3", 0.0, 0, 1});
    EXPECT_EQ(std::size(info.wszTitle) - 1, Text(info.wszTitle).size());
    EXPECT_EQ(0, info.wszTitle[std::size(info.wszTitle) - 1]);
    EXPECT_EQ(0, info.wszCoverArtPath[0]);
}

// What the shell hands a window when files are dropped on it: the header, then the names one
// after the other, each terminated, and an empty name at the end.
HDROP MakeDrop(const std::vector<std::wstring>& names)
{
    size_t cb = sizeof(DROPFILES) + sizeof(wchar_t);
    for (const std::wstring& name : names)
        cb += (name.size() + 1) * sizeof(wchar_t);
    HGLOBAL hMem = GlobalAlloc(GHND, cb);
    auto* pDrop = static_cast<DROPFILES*>(GlobalLock(hMem));
    pDrop->pFiles = sizeof(DROPFILES);
    pDrop->fWide = TRUE;
    auto* pwsz = reinterpret_cast<wchar_t*>(pDrop + 1);
    for (const std::wstring& name : names)
    {
        memcpy(pwsz, name.c_str(), (name.size() + 1) * sizeof(wchar_t));
        pwsz += name.size() + 1;
    }
    GlobalUnlock(hMem);
    return static_cast<HDROP>(hMem);
}

TEST(FileChooser, DroppedFilesArriveInTheOrderDropped)
{
    const std::vector<std::wstring> names = {L"C:\\music\\b side.mp3", L"C:\\a.wav", L"D:\\video\\clip.wmv"};
    EXPECT_EQ(names, CFileChooser::Dropped(MakeDrop(names)));
}

} // namespace
