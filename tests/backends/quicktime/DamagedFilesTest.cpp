// Files cut short, full of noise, empty or missing, of every kind the back-ends take: the open
// fails with E_FAIL in good time and leaves the caller's record alone, and a good file opens next.
#include <gtest/gtest.h>

#include <cstring>

#include "CPlaybackHost.h"
#include "CQTStage.h"

namespace {

class QTDamagedFile : public ::testing::TestWithParam<const char*>
{
};

TEST_P(QTDamagedFile, FailsToOpenAndTheNextGoodFileStillOpens)
{
    CPlaybackHost host;
    TESSALY_FILEINFO info;
    std::memset(&info, 0xCD, sizeof(info));
    EXPECT_EQ(E_FAIL, host.Open(CQTStage::Path(GetParam()), &info));
    EXPECT_EQ(0xCDCDCDCDu, info.dwAttributeMask);
    EXPECT_EQ(0xCDCDCDCDu, info.dwWidth);
    EXPECT_EQ(E_FAIL, host.Player().Play());
    host.PumpFor(300);
    EXPECT_TRUE(host.events.empty());

    ASSERT_EQ(S_OK, host.Open(CQTStage::Path("tone.m4a"), &info));
    EXPECT_EQ(static_cast<DWORD>(TESSALY_FILEINFO_AUDIO_ONLY | TESSALY_FILEINFO_SEEKABLE), info.dwAttributeMask);
}

INSTANTIATE_TEST_SUITE_P(EveryKind, QTDamagedFile,
                         ::testing::Values("cut.mov", "nomoov.mov", "huge.mov", "noise.mov", "empty.mov", "cut.m4a", "empty.m4a", "cut.gif",
                                           "noise.gif", "missing.mov", "missing.m4a"));

} // namespace
