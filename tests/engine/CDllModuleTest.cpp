// The module's process-wide QuickTime and GDI+ start-up counting, against recorded framework calls.
#include <windows.h>

#include <gtest/gtest.h>

#include <vector>

#include "engine/CDllModule.h"

namespace {

struct Calls
{
    int initializeQTML = 0, enterMovies = 0, exitMovies = 0, terminateQTML = 0, gestalt = 0;
    int startGdiplus = 0, shutdownGdiplus = 0;
    ULONG_PTR shutdownToken = 0;
    OSErr initializeQTMLResult = 0, enterMoviesResult = 0; // scripted answers
    long version = 0x07208000;
    int gdiplusFailuresLeft = 0;
} g_calls;

const CFrameworkStartup kRecorder = {
    [](long) { ++g_calls.initializeQTML; return g_calls.initializeQTMLResult; },
    [] { ++g_calls.enterMovies; return g_calls.enterMoviesResult; },
    [] { ++g_calls.exitMovies; },
    [] { ++g_calls.terminateQTML; },
    [](OSType selector, long* pResponse) -> OSErr {
        ++g_calls.gestalt;
        if (selector != gestaltQuickTime || g_calls.initializeQTMLResult != 0) // as QuickTime: nothing answers then
            return gestaltUndefSelectorErr;
        *pResponse = g_calls.version;
        return 0;
    },
    [](ULONG_PTR* pToken) {
        ++g_calls.startGdiplus;
        const bool bFail = g_calls.gdiplusFailuresLeft > 0 && g_calls.gdiplusFailuresLeft--;
        *pToken = bFail ? 0xBAD : 0x1234; // a failed start-up may leave garbage behind
        return !bFail;
    },
    [](ULONG_PTR token) { ++g_calls.shutdownGdiplus; g_calls.shutdownToken = token; },
};

TEST(ModuleStartup, QuickTimeStartsOnceStopsAfterTheLastUserAndReportsWhatItsStartUpAnswered)
{
    const struct
    {
        const char* pszWhat;
        OSErr initializeQTML, enterMovies;
        long version;
        bool bInstalled, bSupported;
        int nEnterMovies, nGestalt;
    } scenarios[] = {{"7.2", 0, 0, 0x07208000, true, true, 1, 1}, {"older than 7", 0, 0, 0x06508000, true, false, 1, 1},
                     {"EnterMovies fails", 0, -1, 0x07208000, false, false, 1, 0},
                     {"QTML does not load", qtmlDllLoadErr, 0, 0x07208000, false, false, 0, 0}};
    for (const auto& sc : scenarios)
    {
        SCOPED_TRACE(sc.pszWhat);
        g_calls = Calls();
        g_calls.initializeQTMLResult = sc.initializeQTML;
        g_calls.enterMoviesResult = sc.enterMovies;
        g_calls.version = sc.version;
        CDllModule module{kRecorder};
        module.InitQT();
        module.InitQT();
        EXPECT_EQ((std::vector<int>{1, sc.nEnterMovies, sc.nGestalt}),
                  (std::vector<int>{g_calls.initializeQTML, g_calls.enterMovies, g_calls.gestalt}));
        EXPECT_EQ(sc.bInstalled, module.IsQTInstalled());
        EXPECT_EQ(sc.bSupported, module.IsQTVersionSupported());
        module.DeInitQT();
        EXPECT_EQ(0, g_calls.exitMovies);
        module.DeInitQT();
        module.DeInitQT(); // nothing left to stop
        EXPECT_EQ((std::vector<int>{1, 1}), (std::vector<int>{g_calls.exitMovies, g_calls.terminateQTML}));
        // Once started it stays installed; a later failed start-up leaves the version unknown.
        g_calls.initializeQTMLResult = qtmlDllLoadErr;
        module.InitQT();
        EXPECT_EQ(2, g_calls.initializeQTML);
        EXPECT_EQ(sc.bInstalled, module.IsQTInstalled());
        EXPECT_FALSE(module.IsQTVersionSupported());
    }
}

TEST(ModuleStartup, GdiplusFailuresAreRetriedThenItIsSharedAndShutDownOnceWithItsToken)
{
    g_calls = Calls();
    g_calls.gdiplusFailuresLeft = 2;
    CDllModule module{kRecorder};
    for (bool bStarted : {false, false, true, true})
    {
        module.InitGdiplus();
        EXPECT_EQ(bStarted, module.IsGdiplusStarted());
    }
    EXPECT_EQ(3, g_calls.startGdiplus) << "two failures, one success, then shared";
    module.DeInitGdiplus();
    EXPECT_EQ(0, g_calls.shutdownGdiplus);
    EXPECT_TRUE(module.IsGdiplusStarted());
    module.DeInitGdiplus();
    module.DeInitGdiplus(); // more shut-downs than start-ups change nothing
    EXPECT_EQ(1, g_calls.shutdownGdiplus);
    EXPECT_EQ(0x1234u, g_calls.shutdownToken);
    EXPECT_FALSE(module.IsGdiplusStarted());
}

} // namespace
