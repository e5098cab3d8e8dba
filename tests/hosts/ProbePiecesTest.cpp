// The probe's pieces: how files and folders become the list it asks about, and its two report
// forms read back the way their readers would, JSON by a strict parser, text by a person.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <sstream>

#include "CJsonValue.h"
#include "CTempFolder.h"
#include "hosts/probe/CFileWalker.h"
#include "hosts/probe/CJsonReport.h"
#include "hosts/probe/CTextReport.h"

namespace {

CProbeResult Answered(const std::wstring& path, double dDuration, unsigned long dwMask, unsigned long dwWidth = 0,
                      unsigned long dwHeight = 0)
{
    CProbeResult result;
    result.path = path;
    result.llBytes = 1234;
    result.hr = S_OK;
    result.info.dwAttributeMask = dwMask;
    result.info.dDuration = dDuration;
    result.info.dwWidth = dwWidth;
    result.info.dwHeight = dwHeight;
    return result;
}

CProbeResult Failed(const std::wstring& path, HRESULT hr)
{
    CProbeResult result;
    result.path = path;
    result.hr = hr;
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
    {
        summary.Add(result);
        report.Add(result);
    }
    summary.SetElapsed(0.5);
    report.End(summary);
    return out;
}

std::vector<std::wstring> PathsOf(const std::vector<CProbeTarget>& targets, HRESULT hrAll = S_OK)
{
    std::vector<std::wstring> paths;
    for (const CProbeTarget& target : targets)
    {
        paths.push_back(target.path);
        EXPECT_EQ(hrAll, target.hrFound) << target.path.c_str();
    }
    return paths;
}

TEST(FileWalker, FoldersAreWalkedRecursivelyInNameOrderIgnoringCaseAndRelativeNamesMadeFull)
{
    CTempFolder temp;
    for (const wchar_t* pwsz : {L"b.wav", L"A.mp3", L"sub\\deeper\\c.wmv", L"sub\\a.wma", L"c.ogg"})
        temp.Write(pwsz, "x");
    temp.MakeFolder(L"empty");
    EXPECT_EQ((std::vector<std::wstring>{temp.Path(L"A.mp3"), temp.Path(L"b.wav"), temp.Path(L"c.ogg"),
                                         temp.Path(L"sub\\a.wma"), temp.Path(L"sub\\deeper\\c.wmv")}),
              PathsOf(CFileWalker::Expand({temp.Path()})));

    wchar_t wszOld[MAX_PATH];
    GetCurrentDirectoryW(MAX_PATH, wszOld);
    SetCurrentDirectoryW(temp.Path(L"sub").c_str());
    const std::vector<CProbeTarget> targets = CFileWalker::Expand({L"a.wma", L"deeper"});
    SetCurrentDirectoryW(wszOld);
    EXPECT_EQ((std::vector<std::wstring>{temp.Path(L"sub\\a.wma"), temp.Path(L"sub\\deeper\\c.wmv")}), PathsOf(targets));
}

TEST(FileWalker, FilesKeepTheOrderGivenAndMissingNamesCarryTheirError)
{
    CTempFolder temp;
    const std::wstring second = temp.Write(L"2.wav", "x"), first = temp.Write(L"1.wav", "x");
    const std::vector<CProbeTarget> targets =
        CFileWalker::Expand({second, temp.Path(L"missing.wav"), first, temp.Path(L"no-folder\\x.wav")});
    ASSERT_EQ(4u, targets.size());
    EXPECT_EQ(second, targets[0].path);
    EXPECT_EQ(S_OK, targets[0].hrFound);
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND), targets[1].hrFound);
    EXPECT_EQ(first, targets[2].path);
    EXPECT_TRUE(FAILED(targets[3].hrFound));
}

TEST(JsonReport, EntriesCarryWhatTheEngineAnsweredAndFailuresTheirCode)
{
    const CJsonValue doc = CJsonValue::Parse(Report<CJsonReport>(
        {Answered(L"C:\\m\\clip.wmv", 2.0, TESSALY_FILEINFO_SEEKABLE, 320, 240),
         Failed(L"C:\\m\\notes.txt", TESSALY_E_NOTSUPPORTED),
         Answered(L"C:\\m\\tone.wav", 1.0, TESSALY_FILEINFO_AUDIO_ONLY | TESSALY_FILEINFO_SEEKABLE)}));
    const std::vector<CJsonValue>& files = doc["files"].items;
    ASSERT_EQ(3u, files.size());

    EXPECT_EQ("C:\\m\\clip.wmv", files[0]["path"].text);
    EXPECT_TRUE(files[0]["ok"].b);
    EXPECT_DOUBLE_EQ(2.0, files[0]["duration"].number);
    EXPECT_EQ(320, files[0]["width"].number);
    EXPECT_EQ(240, files[0]["height"].number);
    EXPECT_FALSE(files[0]["audioOnly"].b);
    EXPECT_TRUE(files[0]["seekable"].b);
    EXPECT_FALSE(files[0]["picture"].b);
    EXPECT_EQ("0x00000000", files[0]["result"].text);
    EXPECT_EQ(1234, files[0]["bytes"].number);

    EXPECT_FALSE(files[1]["ok"].b);
    EXPECT_EQ("0x8004A000", files[1]["result"].text);
    EXPECT_EQ("TESSALY_E_NOTSUPPORTED", files[1]["resultName"].text);
    EXPECT_FALSE(files[1]["message"].text.empty());
    EXPECT_FALSE(files[1].Has("duration")); // no answer is not an answer of zero
    EXPECT_EQ(CJsonValue::Null, files[1]["bytes"].kind);

    EXPECT_TRUE(files[2]["audioOnly"].b);
    EXPECT_EQ(3, files[2]["mask"].number);

    const CJsonValue& summary = doc["summary"];
    EXPECT_EQ(3, summary["files"].number);
    EXPECT_EQ(2, summary["succeeded"].number);
    EXPECT_EQ(1, summary["failed"].number);
    EXPECT_DOUBLE_EQ(3.0, summary["mediaSeconds"].number);
    EXPECT_DOUBLE_EQ(6.0, summary["queriesPerSecond"].number);
    ASSERT_EQ(1u, summary["failures"].items.size());
    EXPECT_EQ("TESSALY_E_NOTSUPPORTED", summary["failures"].items[0]["resultName"].text);
}

TEST(JsonReport, AnyPathAnEmptyRunAndAnEndlessDurationMakeValidJson)
{
    const std::wstring awkward = L"C:\\\"quoted\"\\tab\there\\new\nline\\caf\x00E9 \x266B\\x.wav";
    const CJsonValue doc = CJsonValue::Parse(Report<CJsonReport>({Failed(awkward, E_FAIL)}));
    EXPECT_EQ("C:\\\"quoted\"\\tab\there\\new\nline\\caf\xC3\xA9 \xE2\x99\xAB\\x.wav", doc["files"].items[0]["path"].text);

    const CJsonValue empty = CJsonValue::Parse(Report<CJsonReport>({}));
    EXPECT_TRUE(empty["files"].items.empty());
    EXPECT_EQ(0, empty["summary"]["files"].number);
    const CJsonValue endless =
        CJsonValue::Parse(Report<CJsonReport>({Answered(L"live.wmv", std::numeric_limits<double>::infinity(), 0)}));
    EXPECT_EQ(CJsonValue::Null, endless["files"].items[0]["duration"].kind);
    EXPECT_DOUBLE_EQ(0.0, endless["summary"]["mediaSeconds"].number);
}

TEST(TextReport, OneLinePerFileBetweenAHeadingAndTheSummaryWithTheKindsNamed)
{
    const std::string text = Report<CTextReport>({Answered(L"C:\\m\\clip.wmv", 2.0, TESSALY_FILEINFO_SEEKABLE, 320, 240),
                                               Failed(L"C:\\m\\notes.txt", TESSALY_E_NOTSUPPORTED),
                                               Failed(L"C:\\m\\x.txt", TESSALY_E_NOTSUPPORTED)});
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);)
        lines.push_back(line);
    ASSERT_EQ(6u, lines.size()) << text; // heading, 3 files, totals, one line per failure code
    EXPECT_NE(std::string::npos, lines[1].find("2.000 s"));
    EXPECT_NE(std::string::npos, lines[1].find("320x240"));
    EXPECT_NE(std::string::npos, lines[1].find("0x00000000 S_OK"));
    EXPECT_NE(std::string::npos, lines[1].find("C:\\m\\clip.wmv"));
    EXPECT_NE(std::string::npos, lines[2].find("0x8004A000 TESSALY_E_NOTSUPPORTED"));
    EXPECT_NE(std::string::npos, lines[4].find("3 files: 1 answered, 2 failed"));
    EXPECT_NE(std::string::npos, lines[5].find("2 x 0x8004A000 TESSALY_E_NOTSUPPORTED"));
    EXPECT_EQ("audio-only,seekable",
              CTextReport::Flags(Answered(L"a", 1.0, TESSALY_FILEINFO_AUDIO_ONLY | TESSALY_FILEINFO_SEEKABLE)));
    EXPECT_EQ("picture", CTextReport::Flags(Answered(L"p", 0.0, TESSALY_FILEINFO_PICTURE)));
    EXPECT_EQ("-", CTextReport::Flags(Answered(L"v", 1.0, 0)));
}

} // namespace
