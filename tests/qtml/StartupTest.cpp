// Start-up: the layer starts only where DirectShow can serve movies, and its start-ups nest.
#include <windows.h>
#include <dshow.h>
#include <wrl/client.h>

#include <gtest/gtest.h>

#include <cstdlib>

#include "CQtmlTestSupport.h"

namespace {

bool CanMakeFilterGraph()
{
    Microsoft::WRL::ComPtr<IGraphBuilder> pGraph;
    return SUCCEEDED(CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder,
                                         reinterpret_cast<void**>(pGraph.GetAddressOf())));
}

class StartupTest : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED))); }
    void TearDown() override { CoUninitialize(); }
};

TEST_F(StartupTest, StartsReportsVersionSevenAndNests)
{
    long response = -1;
    EXPECT_EQ(gestaltUndefSelectorErr, Gestalt(gestaltQuickTime, &response));
    EXPECT_EQ(0, response);
    EXPECT_EQ(qtmlDllLoadErr, EnterMovies());

    ASSERT_EQ(noErr, InitializeQTML(0));
    ASSERT_EQ(noErr, EnterMovies());
    ASSERT_EQ(noErr, Gestalt(gestaltQuickTime, &response));
    EXPECT_EQ(0x0700, (response >> 16) & 0xFFFF);
    EXPECT_EQ(gestaltUndefSelectorErr, Gestalt(0x73797376 /* 'sysv' */, &response));
    EXPECT_EQ(0, response);

    // A second user keeps the layer started after the first one leaves.
    ASSERT_EQ(noErr, InitializeQTML(0));
    ASSERT_EQ(noErr, EnterMovies());
    ExitMovies();
    TerminateQTML();
    EXPECT_EQ(noErr, Gestalt(gestaltQuickTime, &response));
    ExitMovies();
    TerminateQTML();
    EXPECT_EQ(gestaltUndefSelectorErr, Gestalt(gestaltQuickTime, &response));
    EXPECT_EQ(qtmlDllLoadErr, EnterMovies());
    // More shut-downs than start-ups leave the count at zero, so the next start-up starts again.
    TerminateQTML();
    ASSERT_EQ(noErr, InitializeQTML(0));
    EXPECT_EQ(noErr, Gestalt(gestaltQuickTime, &response));
    TerminateQTML();
}

// Runs in a ctest entry of its own with Wine's quartz disabled (TESSALY_QTML_NO_DIRECTSHOW set
// there); anywhere else DirectShow works and there is nothing to check.
TEST_F(StartupTest, FailsWithoutDirectShowAndLeavesNothingStarted)
{
    if (!std::getenv("TESSALY_QTML_NO_DIRECTSHOW"))
        GTEST_SKIP() << "needs DirectShow disabled; runs in the qtml_tests.StartupWithoutDirectShow entry";
    ASSERT_FALSE(CanMakeFilterGraph());

    EXPECT_EQ(qtmlDllLoadErr, InitializeQTML(0));
    EXPECT_EQ(qtmlDllLoadErr, EnterMovies());
    long response = -1;
    EXPECT_EQ(gestaltUndefSelectorErr, Gestalt(gestaltQuickTime, &response));
    EXPECT_EQ(0, response);
    // The engine shuts down once for every start-up, failed or not.
    ExitMovies();
    TerminateQTML();
    EXPECT_EQ(qtmlDllLoadErr, InitializeQTML(0));
    Movie movie = reinterpret_cast<Movie>(1);
    EXPECT_EQ(qtmlDllLoadErr, OpenMovie(MediaPath("tone.m4a"), &movie));
    EXPECT_EQ(nullptr, movie);
    TerminateQTML();
    TerminateQTML();
    EXPECT_EQ(gestaltUndefSelectorErr, Gestalt(gestaltQuickTime, &response));
}

} // namespace
