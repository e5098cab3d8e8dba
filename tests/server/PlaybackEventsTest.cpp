// Real files through the registered library: what a host hears, in order, and what it may do from
// inside its events on each back-end.
#include <windows.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
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
        progress.push_back(m_log[i].dProgress);
    }
    EXPECT_GE(progress.size(), 8u) << "two seconds at 100 ms a tick; a busy machine makes ticks late, never early";
    EXPECT_LE(progress.size(), 25u);
    EXPECT_GT(progress.empty() ? 0.0 : progress.back(), 1.5) << "the last report is near the end";
    TESSALY_PLAYBACK_STATE state = Playback_State_Busy;
    double dTime = -1.0;
    EXPECT_EQ(S_OK, m_play->GetState(&state, &dTime));
    EXPECT_EQ(Playback_State_Stop, state);
    EXPECT_EQ(progress.empty() ? -2.0 : progress.back(), dTime) << "the last progress time is what GetState keeps";
    CMessagePump::PumpFor(300);
    EXPECT_EQ(progress.size() + 1, m_log.size()) << "nothing after the completion";
}

enum class Action { Close, Open, Stop, Release };
const char* const kActions[] = {"Close", "Open", "Stop", "Release"};

struct Reentry
{
    const char* pszFile; // clip.avi plays through DirectShow, the others are the QuickTime folder's
    std::string event;   // "progress" (the first one) or "complete"
    Action action;
};

class EventReentry : public CServerHost, public ::testing::WithParamInterface<Reentry>
{
protected:
    HRESULT OpenParam()
    {
        const char* pszFile = GetParam().pszFile;
        return CServerHost::Open(pszFile == std::string("clip.avi") ? CTestMedia::Path(pszFile)
                                                                    : CTestMedia::PathIn(TESSALY_QT_MEDIA_DIR, pszFile));
    }
    CRecordingSink m_second{"second", &m_log}; // hears every event after the acting sink
};

TEST_P(EventReentry, TheCallAnswersAsOutsideAnEventAndNothingFollowsAClose)
{
    const Reentry& r = GetParam();
    ASSERT_EQ(S_OK, m_events->Advise(&m_second, &m_dwCookie));
    HRESULT hrAction = E_UNEXPECTED;
    size_t nAtAction = 0;
    m_sink.onEvent = [&](const char* pszEvent) {
        if (nAtAction || r.event != pszEvent)
            return;
        nAtAction = m_log.size();
        hrAction = r.action == Action::Close  ? m_play->CloseFile()
                   : r.action == Action::Open ? OpenParam()
                   : r.action == Action::Stop ? m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_STOP, 0, nullptr)
                                              : (ReleasePlay(), S_OK); // the object outlives the event it fires
    };
    ASSERT_EQ(S_OK, OpenParam());
    ASSERT_EQ(S_OK, Play());
    ASSERT_TRUE(CMessagePump::PumpUntil([&] { return nAtAction > 0; }, 15000)) << "the event never came";
    EXPECT_EQ(S_OK, hrAction);
    CMessagePump::PumpFor(600);
    if (r.action == Action::Close || r.action == Action::Release)
    {
        ASSERT_EQ(nAtAction + 1, m_log.size()) << "the second sink hears the event, then nothing comes";
        EXPECT_EQ("second", m_log.back().sink);
        EXPECT_EQ(r.event, m_log.back().event);
    }
    if (r.action == Action::Close || r.action == Action::Open)
    {
        EXPECT_EQ(r.action == Action::Close ? E_FAIL : S_OK, Play()) << "nothing open, or the file opened inside the event";
    }
    TESSALY_PLAYBACK_STATE state = Playback_State_Error;
    if (r.action == Action::Stop)
    {
        EXPECT_EQ(S_OK, m_play->GetState(&state, nullptr));
        EXPECT_EQ(Playback_State_Stop, state);
    }
}

// DirectShow, the picture back-end, QuickTime video and sound, and a looping GIF through QuickTime.
// Stills and loops never complete; a completed file is already stopped.
std::vector<Reentry> AllReentries()
{
    std::vector<Reentry> all;
    for (const char* pszFile : {"clip.avi", "still.png", "clip.mov", "tone.m4a", "anim.gif"})
        for (const char* pszEvent : {"progress", "complete"})
            for (Action a : {Action::Close, Action::Open, Action::Stop, Action::Release})
                if ((pszEvent[0] == 'p' || !strstr("still.png anim.gif", pszFile)) && (a != Action::Stop || pszEvent[0] == 'p'))
                    all.push_back({pszFile, pszEvent, a});
    return all;
}

INSTANTIATE_TEST_SUITE_P(EachBackEnd, EventReentry, ::testing::ValuesIn(AllReentries()),
                         [](const ::testing::TestParamInfo<Reentry>& p) {
                             std::string name = kActions[static_cast<int>(p.param.action)] + ("On" + p.param.event) + "Of" + p.param.pszFile;
                             name[name.find('.')] = '_';
                             return name;
                         });

} // namespace
