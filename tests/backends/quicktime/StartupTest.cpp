// QuickTime is started once for all its users in the process, back-ends of several dispatchers
// alike, and stopped when the last of them is destroyed. The layer's start-up and shut-down calls
// are counted on their way from the module to the layer (the program links them wrapped).
#include <gtest/gtest.h>

#include <memory>

#include "CPlaybackHost.h"
#include "CQTStage.h"
#include "qtml/QTML.h"

namespace {

int g_nInitializeQTML, g_nEnterMovies, g_nExitMovies, g_nTerminateQTML;

} // namespace

// The toolbox's functions by their linker names.
#define TESSALY_COUNTED(result, name, counter, params, args) \
    extern "C" result __real_##name params;                  \
    extern "C" result __wrap_##name params;                  \
    result __wrap_##name params                              \
    {                                                        \
        ++counter;                                           \
        return __real_##name args;                           \
    }
TESSALY_COUNTED(OSErr, _Z14InitializeQTMLl, g_nInitializeQTML, (long flags), (flags))
TESSALY_COUNTED(OSErr, _Z11EnterMoviesv, g_nEnterMovies, (), ())
TESSALY_COUNTED(void, _Z10ExitMoviesv, g_nExitMovies, (), ())
TESSALY_COUNTED(void, _Z13TerminateQTMLv, g_nTerminateQTML, (), ())

namespace {

TEST(QTStartup, StartsOnceForSeveralBackEndsAndDispatchersAndStopsAfterTheLastOne)
{
    g_nInitializeQTML = g_nEnterMovies = g_nExitMovies = g_nTerminateQTML = 0;
    auto pFirst = std::make_unique<CPlaybackHost>();
    auto pSecond = std::make_unique<CPlaybackHost>();
    ASSERT_EQ(S_OK, pFirst->Open(CQTStage::Path("clip.mov"), nullptr));
    ASSERT_EQ(S_OK, pFirst->Player().CloseFile());
    ASSERT_EQ(S_OK, pFirst->Open(CQTStage::Path("tone.m4a"), nullptr)); // the audio back-end too
    ASSERT_EQ(S_OK, pSecond->Open(CQTStage::Path("anim.gif"), nullptr));
    EXPECT_EQ(1, g_nInitializeQTML);
    EXPECT_EQ(1, g_nEnterMovies);

    pFirst.reset();
    EXPECT_EQ(0, g_nExitMovies) << "the second dispatcher still shows its GIF";
    EXPECT_EQ(0, g_nTerminateQTML);
    pSecond.reset();
    EXPECT_EQ(1, g_nExitMovies);
    EXPECT_EQ(1, g_nTerminateQTML);

    CPlaybackHost third;
    ASSERT_EQ(S_OK, third.Open(CQTStage::Path("clip.mp4"), nullptr));
    EXPECT_EQ(2, g_nInitializeQTML) << "a new user starts it afresh";
}

} // namespace
