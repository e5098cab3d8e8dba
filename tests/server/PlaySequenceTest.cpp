// One real file played through the registered library: what a host hears, in order.
#include <windows.h>

#include <gtest/gtest.h>

#include <vector>

#include "ServerHost.h"

namespace {

using PlaySequence = CServerHost;

TEST_F(PlaySequence, ProgressAboutTenTimesASecondWhilePlayingThenOneCompletionThenStop)
{
    ASSERT_EQ(S_OK, Open(CTestMedia::Path("tone.wav")));
    ASSERT_EQ(S_OK, Play());
    ASSERT_TRUE(CMessagePump::PumpUntil([&] { return !m_log.empty() && m_log.back().event == "complete"; }, 15000));
    std::vector<double> progress;
    for (size_t i = 0; i + 1 < m_log.size(); ++i)
    {
        EXPECT_EQ("progress", m_log[i].event) << i;
        EXPECT_EQ(Playback_State_Play, m_log[i].state) << i;
        EXPECT_TRUE(progress.empty() || m_log[i].dProgress >= progress.back()) << "time only moves forward";
        progress.push_back(m_log[i].dProgress);
    }
    // Two seconds at 100 ms a tick; a busy machine makes ticks late, never early.
    EXPECT_GE(progress.size(), 8u);
    EXPECT_LE(progress.size(), 25u);
    ASSERT_FALSE(progress.empty());
    EXPECT_GT(progress.back(), 1.5) << "the last report is near the end";
    TESSALY_PLAYBACK_STATE state = Playback_State_Busy;
    double dTime = -1.0;
    EXPECT_EQ(S_OK, m_play->GetState(&state, &dTime));
    EXPECT_EQ(Playback_State_Stop, state);
    EXPECT_EQ(progress.back(), dTime) << "the last progress time is what GetState keeps";
    CMessagePump::PumpFor(300);
    EXPECT_EQ(progress.size() + 1, m_log.size()) << "nothing after the completion";
}

} // namespace
