// The probe run as a user runs it, through the registered engine, on a folder tree of real,
// corrupt and unsupported files: its answers match what the files are.
#include <windows.h>

#include <gtest/gtest.h>

#include "CHostRun.h"
#include "CJsonValue.h"
#include "CTempFolder.h"
#include "hosts/common/CUtf8.h"

namespace {

TEST(ProbeRun, JsonForAFolderTreeMatchesTheFilesAndListsEachFailureWithItsCode)
{
    const struct
    {
        const wchar_t* pwszSource;
        const wchar_t* pwszPlaced; // where it goes in the folder tree the probe walks
        double dDuration;
        unsigned uWidth, uHeight; // what tests/inspect/make-media.sh asks ffmpeg for
    } media[] = {{L"tone.wav", L"tone.wav", 1.0, 0, 0},
                 {L"stereo.wma", L"sub\\deeper\\stereo.wma", 2.0, 0, 0},
                 {L"clip.wmv", L"sub\\clip.wmv", 2.0, 320, 240}};
    CTempFolder temp;
    for (const auto& file : media)
        temp.CopyIn(CHostRun::Media(file.pwszSource), file.pwszPlaced);
    const std::wstring unsupported[] = {temp.Write(L"notes.txt", "not media\n"), temp.Write(L"README", "no extension\n")};
    const std::wstring corrupt[] = {temp.CopyIn(CHostRun::Media(L"empty.wma"), L"broken\\empty.wma"),
                                    temp.CopyIn(CHostRun::Media(L"one-byte.wma"), L"broken\\one-byte.wma"),
                                    temp.Write(L"broken\\garbage.wav", std::string(4096, '\x5A'))};

    const CChildProcess::Result run = CChildProcess::Run(CHostRun::Probe(L"--json " + CChildProcess::Quote(temp.Path())));
    EXPECT_EQ(1, run.exitCode) << run.errors; // some files failed, and the run still finished
    const CJsonValue doc = CJsonValue::Parse(run.output);
    ASSERT_EQ(8u, doc["files"].items.size()) << run.output;
    auto entry = [&](const std::wstring& path) -> const CJsonValue& {
        for (const CJsonValue& file : doc["files"].items)
            if (file["path"].text == CUtf8::FromWide(path))
                return file;
        ADD_FAILURE() << "no entry in " << run.output;
        return doc;
    };
    for (const auto& file : media)
    {
        SCOPED_TRACE(CUtf8::FromWide(file.pwszPlaced));
        const CJsonValue& e = entry(temp.Path(file.pwszPlaced));
        ASSERT_TRUE(e.Has("ok"));
        EXPECT_TRUE(e["ok"].b);
        EXPECT_EQ("S_OK", e["resultName"].text);
        EXPECT_NEAR(file.dDuration, e["duration"].number, 0.15);
        EXPECT_EQ(file.uWidth == 0, e["audioOnly"].b);
        EXPECT_TRUE(e["seekable"].b);
        EXPECT_FALSE(e["picture"].b);
        if (file.uWidth)
        {
            EXPECT_EQ(file.uWidth, e["width"].number);
            EXPECT_EQ(file.uHeight, e["height"].number);
        }
        WIN32_FILE_ATTRIBUTE_DATA data;
        ASSERT_TRUE(GetFileAttributesExW(temp.Path(file.pwszPlaced).c_str(), GetFileExInfoStandard, &data));
        EXPECT_EQ(data.nFileSizeLow, e["bytes"].number);
    }
    for (const std::wstring& path : unsupported)
    {
        const CJsonValue& e = entry(path);
        ASSERT_TRUE(e.Has("ok"));
        EXPECT_FALSE(e["ok"].b);
        EXPECT_EQ("0x8004A000", e["result"].text);
        EXPECT_EQ("TESSALY_E_NOTSUPPORTED", e["resultName"].text);
    }
    for (const std::wstring& path : corrupt)
    {
        const CJsonValue& e = entry(path);
        ASSERT_TRUE(e.Has("ok"));
        EXPECT_FALSE(e["ok"].b);
        const unsigned long ulCode = strtoul(e["result"].text.c_str(), nullptr, 16);
        EXPECT_TRUE(FAILED(static_cast<HRESULT>(ulCode))) << e["result"].text;
        EXPECT_NE(0x8004A000ul, ulCode) << "a known extension is not an unsupported file";
        EXPECT_FALSE(e["resultName"].text.empty());
        EXPECT_FALSE(e["message"].text.empty());
    }
    EXPECT_EQ(3, doc["summary"]["succeeded"].number);
    EXPECT_EQ(5, doc["summary"]["failed"].number);
    EXPECT_NEAR(5.0, doc["summary"]["mediaSeconds"].number, 0.45);
}

TEST(ProbeRun, TextNamesEachFileAMissingNameDoesNotStopTheRunAndTheExitCodeTellsTheOutcome)
{
    CTempFolder temp;
    const std::wstring notes = temp.Write(L"notes.txt", "x");
    const CChildProcess::Result run = CChildProcess::Run(CHostRun::Probe(
        L"--no-progress " + CChildProcess::Quote(temp.Path(L"gone.wav")) + L" " + CChildProcess::Quote(notes)));
    EXPECT_EQ(1, run.exitCode);
    EXPECT_NE(std::string::npos, run.output.find("0x80070002 HRESULT_FROM_WIN32(2)")) << run.output;
    EXPECT_NE(std::string::npos, run.output.find("0x8004A000 TESSALY_E_NOTSUPPORTED")) << run.output;
    EXPECT_NE(std::string::npos, run.output.find(CUtf8::FromWide(notes)));
    EXPECT_NE(std::string::npos, run.output.find("2 files: 0 answered, 2 failed")) << run.output;

    EXPECT_EQ(0, CChildProcess::Run(CHostRun::Probe(CChildProcess::Quote(CHostRun::Media(L"tone.wav")))).exitCode)
        << "every file answered";
    const CChildProcess::Result bad = CChildProcess::Run(CHostRun::Probe(L"--no-such-option"));
    EXPECT_EQ(2, bad.exitCode);
    EXPECT_NE(std::string::npos, bad.errors.find("--no-such-option"));
    EXPECT_TRUE(bad.output.empty());
}

} // namespace
