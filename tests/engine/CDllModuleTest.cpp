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

TEST_F(ModuleStartup, QuickTimeStartsOnceAndStopsAfterTheLastUser)
{
    m_module.InitQT();
    m_module.InitQT();
    EXPECT_EQ(1, g_calls.initializeQTML);
    EXPECT_EQ(1, g_calls.enterMovies);
    EXPECT_TRUE(m_module.IsQTInstalled());
    EXPECT_TRUE(m_module.IsQTVersionSupported()) << "7.2";

    m_module.DeInitQT();
    EXPECT_EQ(0, g_calls.exitMovies);
    m_module.DeInitQT();
    EXPECT_EQ(1, g_calls.exitMovies);
    EXPECT_EQ(1, g_calls.terminateQTML);
    m_module.DeInitQT(); // nothing left to stop
    EXPECT_EQ(1, g_calls.exitMovies);
}

TEST_F(ModuleStartup, FailedQuickTimeStartUpsAreStillCountedAndShutDownOnce)
{
    g_calls.initializeQTMLResult = qtmlDllLoadErr;
    m_module.InitQT();
    m_module.InitQT();
    EXPECT_EQ(1, g_calls.initializeQTML);
    EXPECT_EQ(0, g_calls.enterMovies);
    EXPECT_EQ(0, g_calls.gestalt);
    EXPECT_FALSE(m_module.IsQTInstalled());
    EXPECT_FALSE(m_module.IsQTVersionSupported());

    m_module.DeInitQT();
    EXPECT_EQ(0, g_calls.exitMovies);
    m_module.DeInitQT();
    EXPECT_EQ(1, g_calls.exitMovies);
    EXPECT_EQ(1, g_calls.terminateQTML);
}

TEST_F(ModuleStartup, AnEnterMoviesFailureMeansNotInstalled)
{
    g_calls.enterMoviesResult = -1;
    m_module.InitQT();
    EXPECT_FALSE(m_module.IsQTInstalled());
    EXPECT_EQ(0, g_calls.gestalt);
}

TEST_F(ModuleStartup, QuickTimeOlderThanSevenIsInstalledButNotSupported)
{
    g_calls.version = 0x06508000;
    m_module.InitQT();
    EXPECT_TRUE(m_module.IsQTInstalled());
    EXPECT_FALSE(m_module.IsQTVersionSupported());
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
