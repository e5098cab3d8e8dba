// The player run as a user runs it, through the registered engine: files it cannot play are
// reported one by one and the playlist still comes to its end.
#include <windows.h>

#include <gtest/gtest.h>

#include "CChildProcess.h"
#include "CHostRun.h"
#include "CTempFolder.h"
#include "HostPaths.h"
#include "hosts/common/CUtf8.h"

namespace {

CChildProcess::Result Player(const std::wstring& arguments)
{
    return CChildProcess::Run(CChildProcess::Quote(kPlayerPath) + L" " + arguments);
}

TEST(PlayerRun, EveryFileThatCannotBeOpenedIsReportedAndTheListStillEnds)
{
    CTempFolder temp;
    const std::wstring notes = temp.Write(L"notes.txt", "x");
    const std::wstring bare = temp.Write(L"noextension", "x");
    const std::wstring shot = temp.Path(L"shot.png");
    const CChildProcess::Result run = Player(L"--log --exit-after-complete --screenshot " + CChildProcess::Quote(shot) + L" " +
                                     CChildProcess::Quote(notes) + L" " + CChildProcess::Quote(bare));
    EXPECT_EQ(1, run.exitCode) << run.output << run.errors;

    const std::vector<std::string> opens = CHostRun::Events(run.output, "open");
    ASSERT_EQ(2u, opens.size()) << run.output;
    EXPECT_EQ("open " + CUtf8::FromWide(notes), opens[0]);
    EXPECT_EQ("open " + CUtf8::FromWide(bare), opens[1]);
    const std::vector<std::string> errors = CHostRun::Events(run.output, "error");
    ASSERT_EQ(2u, errors.size()) << run.output;
    for (const std::string& error : errors)
        EXPECT_EQ(0u, error.find("error 0x8004A000 TESSALY_E_NOTSUPPORTED open ")) << error;
    EXPECT_TRUE(CHostRun::Events(run.output, "play").empty());
    EXPECT_TRUE(CHostRun::Events(run.output, "complete").empty());
    EXPECT_EQ(std::vector<std::string>{"end files=2 errors=2"}, CHostRun::Events(run.output, "end"));

    // Nothing played, so the screenshot came with the end of the list: the window as it was.
    EXPECT_EQ(std::vector<std::string>{"screenshot " + CUtf8::FromWide(shot)}, CHostRun::Events(run.output, "screenshot"));
    EXPECT_NE(INVALID_FILE_ATTRIBUTES, GetFileAttributesW(shot.c_str()));
}

TEST(PlayerRun, WithoutTheLogOptionNothingIsPrinted)
{
    CTempFolder temp;
    const CChildProcess::Result run = Player(L"--exit-after-complete " + CChildProcess::Quote(temp.Write(L"a.txt", "x")));
    EXPECT_EQ(1, run.exitCode);
    EXPECT_TRUE(run.output.empty()) << run.output;
}

TEST(PlayerRun, ABadCommandLineSaysSoWithoutOpeningAWindow)
{
    const CChildProcess::Result run = Player(L"--screenshot-after soon");
    EXPECT_EQ(2, run.exitCode);
    EXPECT_NE(std::string::npos, run.errors.find("--screenshot-after")) << run.errors;
}

} // namespace
