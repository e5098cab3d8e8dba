// The process-wide QuickTime and GDI+ start-up counting, with the framework calls replaced by
// recorders so that every call can be counted.
#include <windows.h>

#include <gtest/gtest.h>

#include "engine/CDllModule.h"

namespace {

struct Calls
{
    int initializeQTML = 0;
    int enterMovies = 0;
    int exitMovies = 0;
    int terminateQTML = 0;
    int gestalt = 0;
    int startGdiplus = 0;
    int shutdownGdiplus = 0;
    ULONG_PTR shutdownToken = 0;

    // Scripted answers.
    OSErr initializeQTMLResult = 0;
    OSErr enterMoviesResult = 0;
    long version = 0x07208000;
    int gdiplusFailuresLeft = 0;
};

Calls g_calls;

const CFrameworkStartup kRecorder = {
    [](long) { ++g_calls.initializeQTML; return g_calls.initializeQTMLResult; },
    [] { ++g_calls.enterMovies; return g_calls.enterMoviesResult; },
    [] { ++g_calls.exitMovies; },
    [] { ++g_calls.terminateQTML; },
    [](OSType selector, long* pResponse) -> OSErr {
        ++g_calls.gestalt;
        // As QuickTime does: nothing answers while its start-up has failed.
        if (selector != gestaltQuickTime || g_calls.initializeQTMLResult != 0)
            return gestaltUndefSelectorErr;
        *pResponse = g_calls.version;
        return 0;
    },
    [](ULONG_PTR* pToken) {
        ++g_calls.startGdiplus;
        if (g_calls.gdiplusFailuresLeft > 0)
        {
            --g_calls.gdiplusFailuresLeft;
            *pToken = 0xBAD; // a failed start-up may leave garbage behind
            return false;
        }
        *pToken = 0x1234;
        return true;
    },
    [](ULONG_PTR token) {
        ++g_calls.shutdownGdiplus;
        g_calls.shutdownToken = token;
    },
};

class ModuleStartup : public ::testing::Test
{
protected:
    void SetUp() override { g_calls = Calls(); }
    CDllModule m_module{kRecorder};
};

// Whatever the start-up answers, QuickTime is started once for its users and stopped once after
// the last; what the module then reports depends on the answers.
TEST_F(ModuleStartup, QuickTimeStartsOnceStopsAfterTheLastUserAndReportsWhatItsStartUpAnswered)
{
    struct Scenario
    {
        const char* pszWhat;
        OSErr initializeQTML, enterMovies;
        long version;
        bool bInstalled, bSupported;
        int nEnterMovies, nGestalt;
    } const scenarios[] = {
        {"7.2", 0, 0, 0x07208000, true, true, 1, 1},
        {"older than 7", 0, 0, 0x06508000, true, false, 1, 1},
        {"EnterMovies fails", 0, -1, 0x07208000, false, false, 1, 0},
        {"QTML does not load", qtmlDllLoadErr, 0, 0x07208000, false, false, 0, 0},
    };
    for (const Scenario& sc : scenarios)
    {
        SCOPED_TRACE(sc.pszWhat);
        g_calls = Calls();
        g_calls.initializeQTMLResult = sc.initializeQTML;
        g_calls.enterMoviesResult = sc.enterMovies;
        g_calls.version = sc.version;
        CDllModule module{kRecorder};
        module.InitQT();
        module.InitQT();
        EXPECT_EQ(1, g_calls.initializeQTML);
        EXPECT_EQ(sc.nEnterMovies, g_calls.enterMovies);
        EXPECT_EQ(sc.nGestalt, g_calls.gestalt);
        EXPECT_EQ(sc.bInstalled, module.IsQTInstalled());
        EXPECT_EQ(sc.bSupported, module.IsQTVersionSupported());
        module.DeInitQT();
        EXPECT_EQ(0, g_calls.exitMovies);
        module.DeInitQT();
        EXPECT_EQ(1, g_calls.exitMovies);
        EXPECT_EQ(1, g_calls.terminateQTML);
        module.DeInitQT(); // nothing left to stop
        EXPECT_EQ(1, g_calls.exitMovies);
    }
}

TEST_F(ModuleStartup, OnceStartedQuickTimeStaysInstalledEvenIfALaterStartUpFails)
{
    m_module.InitQT();
    m_module.DeInitQT();
    g_calls.initializeQTMLResult = qtmlDllLoadErr;
    m_module.InitQT();
    EXPECT_EQ(2, g_calls.initializeQTML);
    EXPECT_TRUE(m_module.IsQTInstalled());
    EXPECT_FALSE(m_module.IsQTVersionSupported()) << "the version of the failed start-up is unknown";
}

TEST_F(ModuleStartup, GdiplusFailuresAreRetriedAndOneShutDownFollowsTheSuccess)
{
    g_calls.gdiplusFailuresLeft = 2;
    m_module.InitGdiplus();
    EXPECT_FALSE(m_module.IsGdiplusStarted());
    m_module.InitGdiplus();
    EXPECT_FALSE(m_module.IsGdiplusStarted());
    m_module.InitGdiplus();
    EXPECT_TRUE(m_module.IsGdiplusStarted());
    EXPECT_EQ(3, g_calls.startGdiplus);

    m_module.DeInitGdiplus();
    EXPECT_EQ(1, g_calls.shutdownGdiplus);
    EXPECT_EQ(0x1234u, g_calls.shutdownToken);
    EXPECT_FALSE(m_module.IsGdiplusStarted());
    m_module.DeInitGdiplus(); // more shut-downs than start-ups change nothing
    EXPECT_EQ(1, g_calls.shutdownGdiplus);
}

TEST_F(ModuleStartup, GdiplusIsSharedUntilTheLastUserStops)
{
    m_module.InitGdiplus();
    m_module.InitGdiplus();
    EXPECT_EQ(1, g_calls.startGdiplus);
    m_module.DeInitGdiplus();
    EXPECT_EQ(0, g_calls.shutdownGdiplus);
    EXPECT_TRUE(m_module.IsGdiplusStarted());
    m_module.DeInitGdiplus();
    EXPECT_EQ(1, g_calls.shutdownGdiplus);
}

TEST(ModulePlatformStartup, WithoutQuickTimeTheModuleReportsItMissingAndGdiplusStarts)
{
    CDllModule module;
    module.InitQT();
    EXPECT_FALSE(module.IsQTInstalled());
    EXPECT_FALSE(module.IsQTVersionSupported());
    module.DeInitQT();
    module.InitGdiplus();
    EXPECT_TRUE(module.IsGdiplusStarted());
    module.DeInitGdiplus();
    EXPECT_FALSE(module.IsGdiplusStarted());
}

} // namespace
