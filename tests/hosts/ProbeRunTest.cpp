// The probe run as a user runs it, on folders of real files, through the registered engine.
#include <windows.h>

#include <gtest/gtest.h>

#include "CChildProcess.h"
#include "CHostRun.h"
#include "CJsonValue.h"
#include "CTempFolder.h"
#include "HostPaths.h"
#include "hosts/common/CUtf8.h"

namespace {

CChildProcess::Result Probe(const std::wstring& arguments)
{
    return CChildProcess::Run(CChildProcess::Quote(kProbePath) + L" " + arguments);
}

const CJsonValue* Entry(const CJsonValue& doc, const std::wstring& path)
{
    for (const CJsonValue& file : doc["files"].items)
        if (file["path"].text == CUtf8::FromWide(path))
            return &file;
    return nullptr;
}

TEST(ProbeRun, CorruptAndUnsupportedFilesAreEachListedWithTheirError)
{
    CTempFolder temp;
    const std::wstring notes = temp.Write(L"notes.txt", "not media\n");
    const std::wstring bare = temp.Write(L"README", "no extension at all\n");
    const std::wstring empty = temp.CopyIn(CHostRun::Media(L"empty.wma"), L"broken\\empty.wma");
    const std::wstring oneByte = temp.CopyIn(CHostRun::Media(L"one-byte.wma"), L"broken\\one-byte.wma");
    const std::wstring garbage = temp.Write(L"broken\\garbage.wav", std::string(4096, '\x5A'));

    const CChildProcess::Result run = Probe(L"--json " + CChildProcess::Quote(temp.Path()));
    EXPECT_EQ(1, run.exitCode) << run.errors; // some files failed, and the run still finished
    const CJsonValue doc = CJsonValue::Parse(run.output);
    ASSERT_EQ(5u, doc["files"].items.size()) << run.output;

    for (const std::wstring& unsupported : {notes, bare})
    {
        const CJsonValue* pEntry = Entry(doc, unsupported);
        ASSERT_NE(nullptr, pEntry) << run.output;
        EXPECT_FALSE((*pEntry)["ok"].b);
        EXPECT_EQ("0x8004A000", (*pEntry)["result"].text);
        EXPECT_EQ("TESSALY_E_NOTSUPPORTED", (*pEntry)["resultName"].text);
    }
    for (const std::wstring& corrupt : {empty, oneByte, garbage})
    {
        const CJsonValue* pEntry = Entry(doc, corrupt);
        ASSERT_NE(nullptr, pEntry) << run.output;
        EXPECT_FALSE((*pEntry)["ok"].b);
        const unsigned long ulCode = strtoul((*pEntry)["result"].text.c_str(), nullptr, 16);
        EXPECT_TRUE(FAILED(static_cast<HRESULT>(ulCode))) << (*pEntry)["result"].text;
        EXPECT_NE(ulCode, 0x8004A000ul) << "a known extension is not an unsupported file";
        EXPECT_FALSE((*pEntry)["resultName"].text.empty());
        EXPECT_FALSE((*pEntry)["message"].text.empty());
    }
    EXPECT_EQ(5, doc["summary"]["failed"].number);
    EXPECT_EQ(0, doc["summary"]["succeeded"].number);
}

TEST(ProbeRun, TextLinesNameEachFileAndAMissingNameDoesNotStopTheRun)
{
    CTempFolder temp;
    const std::wstring notes = temp.Write(L"notes.txt", "x");
    const CChildProcess::Result run = Probe(L"--no-progress " + CChildProcess::Quote(temp.Path(L"gone.wav")) + L" " +
                                    CChildProcess::Quote(notes));
    EXPECT_EQ(1, run.exitCode);
    EXPECT_NE(std::string::npos, run.output.find("0x80070002 HRESULT_FROM_WIN32(2)")) << run.output;
    EXPECT_NE(std::string::npos, run.output.find("0x8004A000 TESSALY_E_NOTSUPPORTED")) << run.output;
    EXPECT_NE(std::string::npos, run.output.find(CUtf8::FromWide(notes)));
    EXPECT_NE(std::string::npos, run.output.find("2 files: 0 answered, 2 failed")) << run.output;
}

TEST(ProbeRun, ABadCommandLineSaysSoAndProbesNothing)
{
    const CChildProcess::Result run = Probe(L"--no-such-option");
    EXPECT_EQ(2, run.exitCode);
    EXPECT_NE(std::string::npos, run.errors.find("--no-such-option"));
    EXPECT_TRUE(run.output.empty());
}

} // namespace
