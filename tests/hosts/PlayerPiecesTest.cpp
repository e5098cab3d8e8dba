// The pieces of the two host programs on their own: command lines, result-code names, the
// player's event sink and playlist, and what the information panel says.
#include <windows.h>

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "CTempFolder.h"
#include "engine/ComPtr.h"
#include "hosts/common/CResultCode.h"
#include "hosts/player/CCoverArtFinder.h"
#include "hosts/player/CInfoPanel.h"
#include "hosts/player/CMediaTitle.h"
#include "hosts/player/CPlayerEvents.h"
#include "hosts/player/CPlayerOptions.h"
#include "hosts/player/CPlaylist.h"
#include "hosts/probe/CProbeOptions.h"

namespace {

template <class Options>
bool Parse(Options& options, std::vector<const wchar_t*> args)
{
    args.insert(args.begin(), L"program.exe");
    return options.Parse(static_cast<int>(args.size()), args.data());
}

TEST(Options, ProbeAndPlayerTakeSwitchesAndPathsInAnyOrder)
{
    CProbeOptions probe;
    ASSERT_TRUE(Parse(probe, {L"a.wav", L"--json", L"C:\\music", L"--no-progress", L"-", L"--", L"--json"}));
    EXPECT_EQ((std::vector<std::wstring>{L"a.wav", L"C:\\music", L"-", L"--json"}), probe.Paths()) << "-- ends the switches";
    EXPECT_TRUE(probe.Json());
    EXPECT_FALSE(probe.Progress());
    CProbeOptions help;
    EXPECT_TRUE(Parse(help, {L"--help"}));
    EXPECT_TRUE(help.Help());

    CPlayerOptions player;
    ASSERT_TRUE(Parse(player, {L"--log", L"one.wav", L"--screenshot", L"shot.png", L"--screenshot-after", L"2.5",
                               L"two.wmv", L"--exit-after-complete"}));
    EXPECT_EQ((std::vector<std::wstring>{L"one.wav", L"two.wmv"}), player.Files());
    EXPECT_TRUE(player.Log());
    EXPECT_EQ(L"shot.png", player.Screenshot());
    EXPECT_DOUBLE_EQ(2.5, player.ScreenshotAfter());
    EXPECT_TRUE(player.ExitAfterComplete());
    CPlayerOptions idle;
    ASSERT_TRUE(Parse(idle, {}));
    EXPECT_TRUE(idle.Files().empty() && !idle.Log() && idle.Screenshot().empty() && !idle.ExitAfterComplete());
}

TEST(Options, MistakesAreRefusedWithAMessageNamingThem)
{
    CProbeOptions unknown, nothing;
    EXPECT_FALSE(Parse(unknown, {L"--jsn", L"a.wav"}));
    EXPECT_NE(std::wstring::npos, unknown.Error().find(L"--jsn"));
    EXPECT_FALSE(Parse(nothing, {L"--json"})) << "nothing to probe";
    EXPECT_FALSE(nothing.Error().empty());
    for (const std::vector<const wchar_t*>& args :
         {std::vector<const wchar_t*>{L"--screenshot"}, {L"a.wav", L"--screenshot-after"}, {L"--screenshot-after", L"soon"},
          {L"--screenshot-after", L"-1"}, {L"--screenshot-after", L"2s"}, {L"--loop"}})
    {
        CPlayerOptions options;
        EXPECT_FALSE(Parse(options, args)) << args.back();
        EXPECT_FALSE(options.Error().empty()) << args.back();
    }
}

TEST(ResultCode, EngineCodesHaveDistinctNamesAndSentencesAndOthersAreNamedOrShownAsTheirValue)
{
    const HRESULT engine[] = {TESSALY_E_NOTSUPPORTED,       TESSALY_E_CANNOTPLAY,         TESSALY_E_NOTSEEKABLE,
                              TESSALY_E_QT_NOTINSTALLED,    TESSALY_E_QT_VERSION,         TESSALY_E_GDIPLUS_UNAVAILABLE,
                              TESSALY_S_AUDIO_NOT_RENDERED, TESSALY_S_VIDEO_NOT_RENDERED, TESSALY_S_PARTIAL_RENDER};
    std::set<std::wstring> names, messages;
    for (HRESULT hr : engine)
    {
        EXPECT_EQ(0u, CResultCode::Name(hr).find(L"TESSALY_")) << std::hex << hr;
        names.insert(CResultCode::Name(hr));
        messages.insert(CResultCode::Message(hr));
    }
    EXPECT_EQ(std::size(engine), names.size());
    EXPECT_EQ(std::size(engine), messages.size());
    // The names a table cannot give: the generic form of a Windows error, a well-known name
    // winning over it, and the value of a code nobody named.
    EXPECT_EQ(L"HRESULT_FROM_WIN32(2)", CResultCode::Name(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND)));
    EXPECT_EQ(L"E_ACCESSDENIED", CResultCode::Name(HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED)));
    EXPECT_EQ(L"0x8004A0FF", CResultCode::Name(static_cast<HRESULT>(0x8004A0FF)));
    EXPECT_EQ(L"0x00000001", CResultCode::Hex(S_FALSE));
    EXPECT_FALSE(CResultCode::Message(static_cast<HRESULT>(0x8004A0FF)).empty()) << "never an empty status line";
}

class CListener : public CPlaybackListener
{
public:
    void OnPlaybackProgress(double dSeconds, int nState) override
    {
        calls.push_back("progress " + std::to_string(dSeconds) + " " + std::to_string(nState));
    }
    void OnPlaybackComplete() override { calls.push_back("complete"); }
    void OnPlaybackError(HRESULT hrError) override { calls.push_back("error " + std::to_string(hrError)); }
    std::vector<std::string> calls;
};

TEST(PlayerEvents, TheSinkAnswersForPlayEventsOnlyAndHandsEventsOnUntilDetached)
{
    CListener listener;
    ComPtr<CPlayerEvents> sink;
    Adopt(sink, new CPlayerEvents(&listener));
    ComPtr<IPlayEvents> events;
    EXPECT_EQ(S_OK, QueryTo(sink, IID_IPlayEvents, events));
    ComPtr<IUnknown> unknown;
    EXPECT_EQ(S_OK, QueryTo(sink, IID_IUnknown, unknown));
    ComPtr<IPlayCDEvents> cdEvents;
    EXPECT_EQ(E_NOINTERFACE, QueryTo(sink, IID_IPlayCDEvents, cdEvents));
    EXPECT_FALSE(cdEvents);
    EXPECT_EQ(E_POINTER, sink->QueryInterface(IID_IPlayEvents, nullptr));
    EXPECT_EQ(4u, events->AddRef());
    EXPECT_EQ(3u, events->Release());

    EXPECT_EQ(S_OK, events->OnPlayProgress(0.5, Playback_State_Play));
    EXPECT_EQ(S_OK, events->OnPlayComplete());
    EXPECT_EQ(S_OK, events->OnPlayError(E_FAIL));
    sink->Detach();
    EXPECT_EQ(S_OK, events->OnPlayComplete()); // the engine may still call; nothing reaches the player
    EXPECT_EQ((std::vector<std::string>{"progress 0.500000 1", "complete", "error " + std::to_string(E_FAIL)}),
              listener.calls);
}

TEST(Playlist, PlaysToTheEndTakesFilesAddedAfterItAndPreviousStopsAtTheFirstOrComesBackFromTheEnd)
{
    CPlaylist playlist;
    EXPECT_FALSE(playlist.HasCurrent());
    EXPECT_FALSE(playlist.MovePrevious());
    playlist.Add(L"a");
    playlist.Add(L"b");
    EXPECT_TRUE(playlist.MovePrevious());
    EXPECT_EQ(L"a", playlist.Current());
    EXPECT_TRUE(playlist.MoveNext());
    EXPECT_EQ(L"b", playlist.Current());
    EXPECT_FALSE(playlist.MoveNext()); // the end
    EXPECT_FALSE(playlist.HasCurrent());
    EXPECT_EQ(L"", playlist.Current());
    EXPECT_FALSE(playlist.MoveNext());
    EXPECT_TRUE(playlist.MovePrevious());
    EXPECT_EQ(L"b", playlist.Current());
    playlist.MoveNext();
    playlist.Add(L"c"); // dropped in after the end
    ASSERT_TRUE(playlist.HasCurrent());
    EXPECT_EQ(L"c", playlist.Current());
    EXPECT_EQ(2u, playlist.CurrentIndex());
}

TEST(CoverArt, APictureOfTheSameNameWinsOverTheFolderPictureAndFoldersAreNotPictures)
{
    CTempFolder temp;
    const std::wstring song = temp.Write(L"song.mp3", "x");
    temp.MakeFolder(L"song.jpg");
    EXPECT_EQ(L"", CCoverArtFinder::Find(song));
    const std::wstring folder = temp.Write(L"folder.jpg", "x");
    EXPECT_EQ(folder, CCoverArtFinder::Find(song));
    const std::wstring own = temp.Write(L"song.png", "x");
    EXPECT_EQ(own, CCoverArtFinder::Find(song));
    EXPECT_EQ(folder, CCoverArtFinder::Find(temp.Write(L"other.wav", "x")));
    temp.MakeFolder(L"sub\\folder.jpg");
    EXPECT_EQ(L"", CCoverArtFinder::Find(temp.Write(L"sub\\x.mp3", "x")));
    // "album.2020" is a folder, not an extension: the file has none.
    const std::wstring picture = temp.Write(L"album.2020\\track.jpg", "x");
    EXPECT_EQ(picture, CCoverArtFinder::Find(temp.Write(L"album.2020\\track", "x")));
}

template <size_t N>
std::wstring Text(const short (&field)[N])
{
    std::wstring text;
    for (size_t i = 0; i < N && field[i]; ++i)
        text += static_cast<wchar_t>(field[i]);
    return text;
}

TEST(InfoPanel, TitleCoverFolderAndPlaceOfTheFileAndLongTextCutToItsField)
{
    for (const auto& names : {std::pair<const wchar_t*, const wchar_t*>{L"C:\\music\\My Song.mp3", L"My Song"},
                              {L"C:/x/a.b.wav", L"a.b"}, {L"C:\\x\\.hidden", L".hidden"}, {L"plain", L"plain"}})
        EXPECT_EQ(names.second, CMediaTitle::FromName(names.first));
    CTempFolder temp;
    EXPECT_EQ(L"untagged tone", CMediaTitle::Of(temp.Write(L"untagged tone.wav", std::string(64, '\0'))));

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

    const TESSALY_MEDIA_INFO cut = CInfoPanel::Describe({L"C:\\" + std::wstring(300, L'n') + L".mp3", 0.0, 0, 1});
    EXPECT_EQ(std::size(cut.wszTitle) - 1, Text(cut.wszTitle).size());
    EXPECT_EQ(0, cut.wszTitle[std::size(cut.wszTitle) - 1]);
    EXPECT_EQ(0, cut.wszCoverArtPath[0]);
}

} // namespace
