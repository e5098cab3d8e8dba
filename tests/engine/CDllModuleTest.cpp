// The module's process-wide QuickTime and GDI+ start-up, against recorded framework calls.
#include <windows.h>

#include <gtest/gtest.h>

#include <vector>

#include "engine/CDllModule.h"

namespace {

struct Calls
{
    int initializeQTML = 0, enterMovies = 0, exitMovies = 0, terminateQTML = 0, gestalt = 0, startGdiplus = 0, shutdownGdiplus = 0;
    ULONG_PTR shutdownToken = 0;
    OSErr initializeQTMLResult = 0, enterMoviesResult = 0; // scripted answers
    long version = 0, gdiplusFailuresLeft = 0;
} g_calls;

const CFrameworkStartup kRecorder = {
    [](long) { ++g_calls.initializeQTML; return g_calls.initializeQTMLResult; },
    [] { ++g_calls.enterMovies; return g_calls.enterMoviesResult; },
    [] { ++g_calls.exitMovies; },
    [] { ++g_calls.terminateQTML; },
    [](OSType selector, long* pResponse) -> OSErr { // as QuickTime: nothing answers after a failed start-up
        ++g_calls.gestalt;
        const bool bAnswers = selector == gestaltQuickTime && g_calls.initializeQTMLResult == 0;
        *pResponse = bAnswers ? g_calls.version : *pResponse;
        return bAnswers ? 0 : gestaltUndefSelectorErr;
    },
    [](ULONG_PTR* pToken) {
        ++g_calls.startGdiplus;
        const bool bFail = g_calls.gdiplusFailuresLeft > 0 && g_calls.gdiplusFailuresLeft--;
        *pToken = bFail ? 0xBAD : 0x1234; // a failed start-up may leave garbage behind
        return !bFail;
    },
    [](ULONG_PTR token) { ++g_calls.shutdownGdiplus; g_calls.shutdownToken = token; },
};

TEST(ModuleStartup, QuickTimeStartsOnceForItsUsersStopsAfterTheLastAndReportsWhatItsStartUpAnswered)
{
    const struct
    {
        OSErr initializeQTML, enterMovies;
        long version;
        std::vector<int> calls; // initialize, enter, gestalt; installed, supported
    } scenarios[] = {{0, 0, 0x07208000, {1, 1, 1, 1, 1}}, {0, 0, 0x06508000, {1, 1, 1, 1, 0}},
                     {0, -1, 0x07208000, {1, 1, 0, 0, 0}}, {qtmlDllLoadErr, 0, 0x07208000, {1, 0, 0, 0, 0}}};
    for (const auto& sc : scenarios)
    {
        g_calls = {};
        g_calls.initializeQTMLResult = sc.initializeQTML;
        g_calls.enterMoviesResult = sc.enterMovies;
        g_calls.version = sc.version;
        CDllModule module{kRecorder};
        module.InitQT();
        module.InitQT();
        EXPECT_EQ(sc.calls, (std::vector<int>{g_calls.initializeQTML, g_calls.enterMovies, g_calls.gestalt,
                                              module.IsQTInstalled(), module.IsQTVersionSupported()}));
        module.DeInitQT();
        EXPECT_EQ(0, g_calls.exitMovies) << "a user is left";
        module.DeInitQT();
        module.DeInitQT(); // nothing left to stop
        EXPECT_EQ((std::vector<int>{1, 1}), (std::vector<int>{g_calls.exitMovies, g_calls.terminateQTML}));
    }
}

TEST(ModuleStartup, GdiplusFailuresAreRetriedThenItIsSharedAndShutDownOnceWithItsToken)
{
    g_calls = {};
    g_calls.gdiplusFailuresLeft = 2;
    CDllModule module{kRecorder};
    std::vector<int> started;
    for (int i = 0; i < 4; ++i)
        module.InitGdiplus(), started.push_back(module.IsGdiplusStarted());
    for (int i = 0; i < 3; ++i) // one more shut-down than start-ups
        module.DeInitGdiplus(), started.push_back(module.IsGdiplusStarted() * 10 + g_calls.shutdownGdiplus);
    EXPECT_EQ((std::vector<int>{0, 0, 1, 1, 10, 1, 1}), started) << "started; then started * 10 + shut-downs";
    EXPECT_EQ(3, g_calls.startGdiplus) << "two failures, one success, then shared";
    EXPECT_EQ(0x1234u, g_calls.shutdownToken);
}

} // namespace
