// The host programs' parts on their own: the probe's file list and its reports read back as their
// readers would (JSON by a strict parser), options, the player's playlist and panel.
#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <sstream>

#include "CJsonValue.h"
#include "CTempFolder.h"
#include "hosts/player/CCoverArtFinder.h"
#include "hosts/player/CInfoPanel.h"
#include "hosts/player/CMediaTitle.h"
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

TEST(FileWalker, FoldersAreWalkedInNameOrderIgnoringCaseAndRelativeNamesMadeFull)
{
    CTempFolder temp;
    for (const wchar_t* pwsz : {L"b.wav", L"A.mp3", L"sub\\deeper\\c.wmv", L"sub\\a.wma", L"c.ogg"})
        temp.Write(pwsz, "x");
    temp.MakeFolder(L"empty");
    EXPECT_EQ((Paths{temp.Path(L"A.mp3"), temp.Path(L"b.wav"), temp.Path(L"c.ogg"), temp.Path(L"sub\\a.wma"),
                     temp.Path(L"sub\\deeper\\c.wmv")}),
              PathsOf(CFileWalker::Expand({temp.Path()})));

    wchar_t wszOld[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, wszOld);
    SetCurrentDirectoryW(temp.Path(L"sub").c_str());
    const std::vector<CProbeTarget> relative = CFileWalker::Expand({L"a.wma", L"deeper"});
    SetCurrentDirectoryW(wszOld);
    EXPECT_EQ((Paths{temp.Path(L"sub\\a.wma"), temp.Path(L"sub\\deeper\\c.wmv")}), PathsOf(relative));
}

CProbeResult Probed(const std::wstring& path, HRESULT hr, double dDuration = 0.0, ULONG dwMask = 0, ULONG dwWidth = 0)
{
    return {path, SUCCEEDED(hr) ? 1234 : -1, hr, {dwMask, dDuration, dwWidth, dwWidth * 3 / 4}};
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
    Probed(L"C:\\m\\clip.wmv", S_OK, 2.0, TESSALY_FILEINFO_SEEKABLE, 320), Probed(L"C:\\\"quoted\"\\tab\there\\new\nline\\caf\x00E9 \x266B.txt", TESSALY_E_NOTSUPPORTED),
    Probed(L"C:\\m\\x.txt", TESSALY_E_NOTSUPPORTED), Probed(L"C:\\m\\tone.wav", S_OK, 1.0, TESSALY_FILEINFO_AUDIO_ONLY | TESSALY_FILEINFO_SEEKABLE)};

TEST(JsonReport, EntriesCarryAnyPathWhatTheEngineAnsweredFailuresTheirCodeAndTheSummaryTheTotals)
{
    const CJsonValue doc = CJsonValue::Parse(Report<CJsonReport>(kRun));
    const std::vector<CJsonValue>& files = doc["files"].items;
    ASSERT_EQ(4u, files.size());
    const CJsonValue &clip = files[0], &notes = files[1], &summary = doc["summary"];
    EXPECT_EQ((std::vector<std::string>{"C:\\m\\clip.wmv", "0x00000000", "C:\\\"quoted\"\\tab\there\\new\nline\\caf\xC3\xA9 \xE2\x99\xAB.txt",
                                        "0x8004A000", "TESSALY_E_NOTSUPPORTED"}),
              (std::vector<std::string>{clip["path"].text, clip["result"].text, notes["path"].text, notes["result"].text, notes["resultName"].text}));
    EXPECT_TRUE(clip["ok"].b && clip["seekable"].b && !clip["audioOnly"].b && !clip["picture"].b && files[3]["audioOnly"].b);
    EXPECT_EQ((std::vector<double>{2.0, 320, 240, 1234, 3}), (std::vector<double>{clip["duration"].number, clip["width"].number,
                                                                                  clip["height"].number, clip["bytes"].number, files[3]["mask"].number}));
    EXPECT_FALSE(notes["ok"].b || notes["message"].text.empty());
    EXPECT_TRUE(!notes.Has("duration") && notes["bytes"].kind == CJsonValue::Null) << "no answer is not an answer of zero";
    EXPECT_EQ((std::vector<double>{4, 2, 2, 3.0, 8.0}),
              (std::vector<double>{summary["files"].number, summary["succeeded"].number, summary["failed"].number,
                                   summary["mediaSeconds"].number, summary["queriesPerSecond"].number}));
    ASSERT_EQ(1u, summary["failures"].items.size());
    EXPECT_EQ("TESSALY_E_NOTSUPPORTED", summary["failures"].items[0]["resultName"].text);
}

TEST(JsonReport, AnEmptyRunAndAnEndlessDurationMakeValidJson)
{
    EXPECT_EQ(0, CJsonValue::Parse(Report<CJsonReport>({}))["summary"]["files"].number);
    const CJsonValue endless = CJsonValue::Parse(Report<CJsonReport>({Probed(L"live.wmv", S_OK, std::numeric_limits<double>::infinity())}));
    EXPECT_EQ(CJsonValue::Null, endless["files"].items[0]["duration"].kind);
    EXPECT_DOUBLE_EQ(0.0, endless["summary"]["mediaSeconds"].number);
}

TEST(TextReport, OneLinePerFileBetweenAHeadingAndTheTotalsThenOneLinePerFailureCode)
{
    std::vector<CProbeResult> run = kRun;
    run[1].path = L"C:\\m\\notes.txt"; // one line each
    std::istringstream stream(Report<CTextReport>(run));
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
    CProbeOptions probe, nothing;
    ASSERT_TRUE(Parse(probe, {L"a.wav", L"--json", L"C:\\music", L"--no-progress", L"-", L"--", L"--json"}));
    EXPECT_EQ((Paths{L"a.wav", L"C:\\music", L"-", L"--json"}), probe.Paths()) << "-- ends the switches";
    EXPECT_TRUE(probe.Json() && !probe.Progress());
    EXPECT_FALSE(Parse(nothing, {L"--json"})) << "nothing to probe";
    CPlayerOptions player;
    ASSERT_TRUE(Parse(player, {L"one.wav", L"--screenshot-after", L"2.5", L"two.wmv", L"--log"}));
    EXPECT_EQ((Paths{L"one.wav", L"two.wmv"}), player.Files());
    EXPECT_DOUBLE_EQ(2.5, player.ScreenshotAfter());
    for (const std::vector<const wchar_t*>& args : {std::vector<const wchar_t*>{L"--screenshot"}, {L"a.wav", L"--screenshot-after"},
                                                    {L"--screenshot-after", L"-1"}, {L"--screenshot-after", L"2s"}, {L"--loop"}})
    {
        CPlayerOptions options;
        EXPECT_FALSE(Parse(options, args)) << args.back();
        EXPECT_FALSE(options.Error().empty()) << args.back();
    }
}

TEST(Playlist, PlaysToTheEndTakesFilesAddedAfterItAndPreviousStopsAtTheFirstOrComesBackFromTheEnd)
{
    CPlaylist playlist;
    EXPECT_FALSE(playlist.HasCurrent() || playlist.MovePrevious());
    playlist.Add(L"a"), playlist.Add(L"b");
    EXPECT_TRUE(playlist.MovePrevious());
    EXPECT_EQ(L"a", playlist.Current());
    EXPECT_TRUE(playlist.MoveNext());
    EXPECT_FALSE(playlist.MoveNext() || playlist.HasCurrent() || !playlist.Current().empty()) << "the end";
    EXPECT_TRUE(playlist.MovePrevious());
    EXPECT_EQ(L"b", playlist.Current());
    playlist.MoveNext(), playlist.Add(L"c"); // dropped in after the end
    EXPECT_EQ(L"c", playlist.Current());
    EXPECT_EQ(2u, playlist.CurrentIndex());
}

template <size_t N>
std::wstring Text(const short (&field)[N]) { return std::wstring(field, std::find(field, field + N, 0)); }

TEST(InfoPanel, TitleCoverPictureFolderAndPlaceOfTheFileAndLongTextCutToItsField)
{
    for (const auto& names : {std::pair<const wchar_t*, const wchar_t*>{L"C:\\music\\My Song.mp3", L"My Song"},
                              {L"C:/x/a.b.wav", L"a.b"}, {L"C:\\x\\.hidden", L".hidden"}, {L"plain", L"plain"}})
        EXPECT_EQ(names.second, CMediaTitle::FromName(names.first));
    CTempFolder temp;
    const std::wstring song = temp.Write(L"Album\\Night Drive.mp3", std::string(64, '\0'));
    temp.MakeFolder(L"Album\\Night Drive.jpg");
    EXPECT_EQ(L"", CCoverArtFinder::Find(song)) << "a folder is no picture";
    const std::wstring folder = temp.Write(L"Album\\folder.jpg", "x"), other = temp.Write(L"Album\\other.wav", "x");
    EXPECT_EQ(folder, CCoverArtFinder::Find(song));
    const std::wstring cover = temp.Write(L"Album\\Night Drive.png", "x");
    EXPECT_EQ(folder, CCoverArtFinder::Find(other));
    const std::wstring picture = temp.Write(L"album.2020\\track.jpg", "x"); // a folder's "extension"
    EXPECT_EQ(picture, CCoverArtFinder::Find(temp.Write(L"album.2020\\track", "x")));
    const TESSALY_MEDIA_INFO info = CInfoPanel::Describe({song, 125.4, 1, 3}); // its own picture wins
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
