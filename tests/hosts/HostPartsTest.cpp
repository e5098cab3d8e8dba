// The host programs' parts on their own: the probe's file list and its reports read back as their
// readers would (JSON by a strict parser), the options, result names, and the player's event
// sink, playlist, cover art and information panel.
#include <windows.h>

#include <gtest/gtest.h>

#include <limits>
#include <set>
#include <sstream>

#include "CJsonValue.h"
#include "CTempFolder.h"
#include "engine/ComPtr.h"
#include "hosts/common/CResultCode.h"
#include "hosts/player/CCoverArtFinder.h"
#include "hosts/player/CInfoPanel.h"
#include "hosts/player/CMediaTitle.h"
#include "hosts/player/CPlayerEvents.h"
#include "hosts/player/CPlayerOptions.h"
#include "hosts/player/CPlaylist.h"
#include "hosts/probe/CFileWalker.h"
#include "hosts/probe/CJsonReport.h"
#include "hosts/probe/CProbeOptions.h"
#include "hosts/probe/CTextReport.h"

namespace {
typedef std::vector<std::wstring> Paths;
const size_t npos = std::string::npos;

Paths PathsOf(const std::vector<CProbeTarget>& targets)
{
    Paths paths;
    for (const CProbeTarget& target : targets)
        paths.push_back(target.path + (target.hrFound == S_OK ? L"" : L" missing"));
    return paths;
}

TEST(FileWalker, FoldersAreWalkedInNameOrderIgnoringCaseFilesKeepTheirOrderAndMissingNamesAreKept)
{
    CTempFolder temp;
    for (const wchar_t* pwsz : {L"b.wav", L"A.mp3", L"sub\\deeper\\c.wmv", L"sub\\a.wma", L"c.ogg"})
        temp.Write(pwsz, "x");
    temp.MakeFolder(L"empty");
    EXPECT_EQ((Paths{temp.Path(L"A.mp3"), temp.Path(L"b.wav"), temp.Path(L"c.ogg"), temp.Path(L"sub\\a.wma"),
                     temp.Path(L"sub\\deeper\\c.wmv")}),
              PathsOf(CFileWalker::Expand({temp.Path()})));
    EXPECT_EQ((Paths{temp.Path(L"c.ogg"), temp.Path(L"gone.wav") + L" missing", temp.Path(L"b.wav")}),
              PathsOf(CFileWalker::Expand({temp.Path(L"c.ogg"), temp.Path(L"gone.wav"), temp.Path(L"b.wav")})));
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), CFileWalker::Expand({temp.Path(L"gone.wav")})[0].hrFound);

    wchar_t wszOld[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, wszOld);
    SetCurrentDirectoryW(temp.Path(L"sub").c_str());
    const std::vector<CProbeTarget> relative = CFileWalker::Expand({L"a.wma", L"deeper"});
    SetCurrentDirectoryW(wszOld);
    EXPECT_EQ((Paths{temp.Path(L"sub\\a.wma"), temp.Path(L"sub\\deeper\\c.wmv")}), PathsOf(relative));
}

CProbeResult Probed(const std::wstring& path, HRESULT hr, double dDuration = 0.0, unsigned long dwMask = 0, unsigned long dwWidth = 0)
{
    CProbeResult result;
    result.path = path;
    result.hr = hr;
    result.llBytes = SUCCEEDED(hr) ? 1234 : -1;
    result.info.dwAttributeMask = dwMask;
    result.info.dDuration = dDuration;
    result.info.dwWidth = dwWidth;
    result.info.dwHeight = dwWidth * 3 / 4;
    return result;
}

template <class ReportForm>
std::string Report(const std::vector<CProbeResult>& results)
{
    std::string out;
    ReportForm report([&out](const std::string& text) { out += text; });
    CProbeSummary summary;
    report.Begin();
    for (const CProbeResult& result : results)
        summary.Add(result), report.Add(result);
    summary.SetElapsed(0.5);
    report.End(summary);
    return out;
}

const std::vector<CProbeResult> kRun = {
    Probed(L"C:\\m\\clip.wmv", S_OK, 2.0, TESSALY_FILEINFO_SEEKABLE, 320), Probed(L"C:\\m\\notes.txt", TESSALY_E_NOTSUPPORTED),
    Probed(L"C:\\m\\x.txt", TESSALY_E_NOTSUPPORTED), Probed(L"C:\\m\\tone.wav", S_OK, 1.0, TESSALY_FILEINFO_AUDIO_ONLY | TESSALY_FILEINFO_SEEKABLE)};

TEST(JsonReport, EntriesCarryWhatTheEngineAnsweredFailuresTheirCodeAndTheSummaryTheTotals)
{
    const CJsonValue doc = CJsonValue::Parse(Report<CJsonReport>(kRun));
    const std::vector<CJsonValue>& files = doc["files"].items;
    ASSERT_EQ(4u, files.size());
    const CJsonValue &clip = files[0], &notes = files[1], &summary = doc["summary"];
    EXPECT_EQ("C:\\m\\clip.wmv", clip["path"].text);
    EXPECT_TRUE(clip["ok"].b && clip["seekable"].b);
    EXPECT_FALSE(clip["audioOnly"].b || clip["picture"].b);
    EXPECT_EQ((std::vector<double>{2.0, 320, 240, 1234}),
              (std::vector<double>{clip["duration"].number, clip["width"].number, clip["height"].number, clip["bytes"].number}));
    EXPECT_EQ("0x00000000", clip["result"].text);
    EXPECT_EQ("0x8004A000", notes["result"].text);
    EXPECT_EQ("TESSALY_E_NOTSUPPORTED", notes["resultName"].text);
    EXPECT_FALSE(notes["ok"].b || notes["message"].text.empty());
    EXPECT_FALSE(notes.Has("duration")) << "no answer is not an answer of zero";
    EXPECT_EQ(CJsonValue::Null, notes["bytes"].kind);
    EXPECT_TRUE(files[3]["audioOnly"].b);
    EXPECT_EQ(3, files[3]["mask"].number);
    EXPECT_EQ((std::vector<double>{4, 2, 2, 3.0, 8.0}),
              (std::vector<double>{summary["files"].number, summary["succeeded"].number, summary["failed"].number,
                                   summary["mediaSeconds"].number, summary["queriesPerSecond"].number}));
    ASSERT_EQ(1u, summary["failures"].items.size());
    EXPECT_EQ("TESSALY_E_NOTSUPPORTED", summary["failures"].items[0]["resultName"].text);
}

TEST(JsonReport, AnyPathAnEmptyRunAndAnEndlessDurationMakeValidJson)
{
    const std::wstring awkward = L"C:\\\"quoted\"\\tab\there\\new\nline\\caf\x00E9 \x266B\\x.wav";
    EXPECT_EQ("C:\\\"quoted\"\\tab\there\\new\nline\\caf\xC3\xA9 \xE2\x99\xAB\\x.wav",
              CJsonValue::Parse(Report<CJsonReport>({Probed(awkward, E_FAIL)}))["files"].items[0]["path"].text);
    EXPECT_EQ(0, CJsonValue::Parse(Report<CJsonReport>({}))["summary"]["files"].number);
    const CJsonValue endless = CJsonValue::Parse(Report<CJsonReport>({Probed(L"live.wmv", S_OK, std::numeric_limits<double>::infinity())}));
    EXPECT_EQ(CJsonValue::Null, endless["files"].items[0]["duration"].kind);
    EXPECT_DOUBLE_EQ(0.0, endless["summary"]["mediaSeconds"].number);
}

TEST(TextReport, OneLinePerFileBetweenAHeadingAndTheTotalsThenOneLinePerFailureCode)
{
    std::istringstream stream(Report<CTextReport>(kRun));
    std::vector<std::string> lines;
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    ASSERT_EQ(7u, lines.size()) << stream.str();
    for (const char* psz : {"2.000 s", "320x240", "seekable ", "0x00000000 S_OK", "C:\\m\\clip.wmv"})
        EXPECT_NE(npos, lines[1].find(psz)) << psz;
    EXPECT_NE(npos, lines[2].find("0x8004A000 TESSALY_E_NOTSUPPORTED"));
    EXPECT_NE(npos, lines[4].find("audio-only,seekable "));
    EXPECT_NE(npos, lines[5].find("4 files: 2 answered, 2 failed"));
    EXPECT_NE(npos, lines[6].find("2 x 0x8004A000 TESSALY_E_NOTSUPPORTED"));
    EXPECT_EQ("picture", CTextReport::Flags(Probed(L"p", S_OK, 0.0, TESSALY_FILEINFO_PICTURE)));
    EXPECT_EQ("-", CTextReport::Flags(Probed(L"v", S_OK, 1.0)));
}

template <class Options>
bool Parse(Options& options, std::vector<const wchar_t*> args)
{
    args.insert(args.begin(), L"program.exe");
    return options.Parse(static_cast<int>(args.size()), args.data());
}

TEST(Options, SwitchesAndPathsComeInAnyOrderAndMistakesAreRefusedWithAMessage)
{
    CProbeOptions probe, unknown, nothing;
    ASSERT_TRUE(Parse(probe, {L"a.wav", L"--json", L"C:\\music", L"--no-progress", L"-", L"--", L"--json"}));
    EXPECT_EQ((Paths{L"a.wav", L"C:\\music", L"-", L"--json"}), probe.Paths()) << "-- ends the switches";
    EXPECT_TRUE(probe.Json() && !probe.Progress());
    EXPECT_FALSE(Parse(unknown, {L"--jsn", L"a.wav"}));
    EXPECT_NE(std::wstring::npos, unknown.Error().find(L"--jsn"));
    EXPECT_FALSE(Parse(nothing, {L"--json"})) << "nothing to probe";
    CPlayerOptions player, idle;
    ASSERT_TRUE(Parse(player, {L"--log", L"one.wav", L"--screenshot", L"shot.png", L"--screenshot-after", L"2.5", L"two.wmv",
                               L"--exit-after-complete"}));
    EXPECT_EQ((Paths{L"one.wav", L"two.wmv"}), player.Files());
    EXPECT_TRUE(player.Log() && player.ExitAfterComplete());
    EXPECT_EQ(L"shot.png", player.Screenshot());
    EXPECT_DOUBLE_EQ(2.5, player.ScreenshotAfter());
    EXPECT_TRUE(Parse(idle, {}) && idle.Files().empty() && !idle.Log() && idle.Screenshot().empty());
    for (const std::vector<const wchar_t*>& args : {std::vector<const wchar_t*>{L"--screenshot"}, {L"a.wav", L"--screenshot-after"},
                                                    {L"--screenshot-after", L"-1"}, {L"--screenshot-after", L"2s"}, {L"--loop"}})
    {
        CPlayerOptions options;
        EXPECT_FALSE(Parse(options, args)) << args.back();
        EXPECT_FALSE(options.Error().empty()) << args.back();
    }
}

TEST(ResultCode, EngineCodesHaveDistinctNamesAndSentencesAndOthersAreNamedOrShownAsTheirValue)
{
    std::set<std::wstring> names, messages;
    for (HRESULT hr : {TESSALY_E_NOTSUPPORTED, TESSALY_E_CANNOTPLAY, TESSALY_E_NOTSEEKABLE, TESSALY_E_QT_NOTINSTALLED,
                       TESSALY_E_QT_VERSION, TESSALY_E_GDIPLUS_UNAVAILABLE, TESSALY_S_AUDIO_NOT_RENDERED,
                       TESSALY_S_VIDEO_NOT_RENDERED, TESSALY_S_PARTIAL_RENDER})
    {
        EXPECT_EQ(0u, CResultCode::Name(hr).find(L"TESSALY_")) << std::hex << hr;
        names.insert(CResultCode::Name(hr));
        messages.insert(CResultCode::Message(hr));
    }
    EXPECT_EQ(9u, names.size());
    EXPECT_EQ(9u, messages.size());
    EXPECT_EQ(L"E_ACCESSDENIED", CResultCode::Name(HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED))) << "a well-known name wins";
    EXPECT_EQ(L"0x8004A0FF", CResultCode::Name(static_cast<HRESULT>(0x8004A0FF)));
    EXPECT_FALSE(CResultCode::Message(static_cast<HRESULT>(0x8004A0FF)).empty()) << "never an empty status line";
}

class CListener : public CPlaybackListener
{
public:
    void OnPlaybackProgress(double dSeconds, int nState) override { calls.push_back("progress " + std::to_string(dSeconds) + " " + std::to_string(nState)); }
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
    ComPtr<IPlayCDEvents> cdEvents;
    EXPECT_EQ(S_OK, QueryTo(sink, IID_IPlayEvents, events));
    EXPECT_EQ(E_NOINTERFACE, QueryTo(sink, IID_IPlayCDEvents, cdEvents));
    EXPECT_FALSE(cdEvents);
    EXPECT_EQ(3u, events->AddRef());
    EXPECT_EQ(2u, events->Release());
    EXPECT_EQ(S_OK, events->OnPlayProgress(0.5, Playback_State_Play));
    EXPECT_EQ(S_OK, events->OnPlayComplete());
    EXPECT_EQ(S_OK, events->OnPlayError(E_FAIL));
    sink->Detach();
    EXPECT_EQ(S_OK, events->OnPlayComplete()); // the engine may still call; nothing reaches the player
    EXPECT_EQ((std::vector<std::string>{"progress 0.500000 1", "complete", "error " + std::to_string(E_FAIL)}), listener.calls);
}

TEST(Playlist, PlaysToTheEndTakesFilesAddedAfterItAndPreviousStopsAtTheFirstOrComesBackFromTheEnd)
{
    CPlaylist playlist;
    EXPECT_FALSE(playlist.HasCurrent() || playlist.MovePrevious());
    playlist.Add(L"a");
    playlist.Add(L"b");
    EXPECT_TRUE(playlist.MovePrevious());
    EXPECT_EQ(L"a", playlist.Current());
    EXPECT_TRUE(playlist.MoveNext());
    EXPECT_FALSE(playlist.MoveNext()); // the end
    EXPECT_FALSE(playlist.HasCurrent());
    EXPECT_EQ(L"", playlist.Current());
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
    EXPECT_EQ(temp.Write(L"song.png", "x"), CCoverArtFinder::Find(song));
    EXPECT_EQ(folder, CCoverArtFinder::Find(temp.Write(L"other.wav", "x")));
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
    const std::wstring song = temp.Write(L"Album\\Night Drive.mp3", std::string(64, '\0'));
    const std::wstring cover = temp.Write(L"Album\\folder.jpg", "x");
    EXPECT_EQ(L"Night Drive", CMediaTitle::Of(song)) << "untagged: the file's name";
    const TESSALY_MEDIA_INFO info = CInfoPanel::Describe({song, 125.4, 1, 3});
    EXPECT_EQ(L"Night Drive", Text(info.wszTitle));
    EXPECT_EQ(L"Album", Text(info.wszChannelName));
    EXPECT_EQ(cover, Text(info.wszCoverArtPath));
    EXPECT_EQ(10u, Text(info.wszReleaseDate).size()); // the file's date, yyyy-mm-dd
    EXPECT_EQ(0u, Text(info.wszDescript).find(L"2:05 \x2014 file 2 of 3\n" + song));
    const TESSALY_MEDIA_INFO cut = CInfoPanel::Describe({L"C:\\" + std::wstring(300, L'n') + L".mp3", 0.0, 0, 1});
    EXPECT_EQ(std::size(cut.wszTitle) - 1, Text(cut.wszTitle).size());
    EXPECT_EQ(0, cut.wszCoverArtPath[0]);
}

} // namespace
