// Command lines of the two host programs as users type them, and the mistakes they make.
#include <gtest/gtest.h>

#include <vector>

#include "hosts/player/CPlayerOptions.h"
#include "hosts/probe/CProbeOptions.h"

namespace {

template <class Options>
bool Parse(Options& options, std::vector<const wchar_t*> args)
{
    args.insert(args.begin(), L"program.exe");
    return options.Parse(static_cast<int>(args.size()), args.data());
}

TEST(ProbeOptions, PathsAndSwitchesInAnyOrder)
{
    CProbeOptions options;
    ASSERT_TRUE(Parse(options, {L"a.wav", L"--json", L"C:\\music", L"--no-progress", L"-"}));
    EXPECT_EQ((std::vector<std::wstring>{L"a.wav", L"C:\\music", L"-"}), options.Paths());
    EXPECT_TRUE(options.Json());
    EXPECT_FALSE(options.Progress());
}

TEST(ProbeOptions, DoubleDashMakesTheRestPaths)
{
    CProbeOptions options;
    ASSERT_TRUE(Parse(options, {L"--", L"--json"}));
    EXPECT_EQ(std::vector<std::wstring>{L"--json"}, options.Paths());
    EXPECT_FALSE(options.Json());
}

TEST(ProbeOptions, RefusesUnknownOptionsAndNothingToProbe)
{
    CProbeOptions unknown;
    EXPECT_FALSE(Parse(unknown, {L"--jsn", L"a.wav"}));
    EXPECT_NE(std::wstring::npos, unknown.Error().find(L"--jsn"));
    CProbeOptions empty;
    EXPECT_FALSE(Parse(empty, {L"--json"}));
    EXPECT_FALSE(empty.Error().empty());
    CProbeOptions help;
    EXPECT_TRUE(Parse(help, {L"--help"}));
    EXPECT_TRUE(help.Help());
}

TEST(PlayerOptions, FilesLogScreenshotAndExit)
{
    CPlayerOptions options;
    ASSERT_TRUE(Parse(options, {L"--log", L"one.wav", L"--screenshot", L"shot.png", L"--screenshot-after", L"2.5",
                                L"two.wmv", L"--exit-after-complete"}));
    EXPECT_EQ((std::vector<std::wstring>{L"one.wav", L"two.wmv"}), options.Files());
    EXPECT_TRUE(options.Log());
    EXPECT_EQ(L"shot.png", options.Screenshot());
    EXPECT_DOUBLE_EQ(2.5, options.ScreenshotAfter());
    EXPECT_TRUE(options.ExitAfterComplete());
}

TEST(PlayerOptions, NothingAskedMeansAnIdleWindowThatStaysOpen)
{
    CPlayerOptions options;
    ASSERT_TRUE(Parse(options, {}));
    EXPECT_TRUE(options.Files().empty());
    EXPECT_FALSE(options.Log());
    EXPECT_TRUE(options.Screenshot().empty());
    EXPECT_FALSE(options.ExitAfterComplete());
}

TEST(PlayerOptions, RefusesMissingAndBadValues)
{
    for (std::vector<const wchar_t*> args :
         {std::vector<const wchar_t*>{L"--screenshot"}, {L"a.wav", L"--screenshot-after"},
          {L"--screenshot-after", L"soon"}, {L"--screenshot-after", L"-1"}, {L"--screenshot-after", L"2s"},
          {L"--loop"}})
    {
        CPlayerOptions options;
        EXPECT_FALSE(Parse(options, args)) << args.front();
        EXPECT_FALSE(options.Error().empty());
    }
}

} // namespace
