// Hosts act from inside their events: on each back-end's first progress report and on its
// completion, CloseFile, OpenFile, Stop or the host's last reference. Each call answers as it
// would outside an event; an object closed or released reports nothing more.
#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ServerHost.h"

namespace {

enum class Action { Close, Open, Stop, Release };
const char* const kActions[] = {"Close", "Open", "Stop", "Release"};

struct Reentry
{
    const char* pszFile; // in the QuickTime media folder when bQtMedia
    bool bQtMedia;
    std::string event;   // "progress" (the first one) or "complete"
    Action action;
};

class EventReentry : public CServerHost, public ::testing::WithParamInterface<Reentry>
{
protected:
    HRESULT OpenParam()
    {
        const Reentry& r = GetParam();
        return Open(r.bQtMedia ? CTestMedia::PathIn(TESSALY_QT_MEDIA_DIR, r.pszFile) : CTestMedia::Path(r.pszFile));
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
        switch (r.action)
        {
        case Action::Close: hrAction = m_play->CloseFile(); break;
        case Action::Open: hrAction = OpenParam(); break;
        case Action::Stop: hrAction = m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_STOP, 0, nullptr); break;
        case Action::Release: hrAction = S_OK, ReleasePlay(); break; // the object outlives the event it fires
        }
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
        if (r.action == Action::Close)
        {
            EXPECT_EQ(E_FAIL, Play()) << "nothing is open";
        }
    }
    else if (r.action == Action::Open)
        EXPECT_EQ(S_OK, Play()) << "the file opened inside the event plays";
    else
        EXPECT_EQ(Playback_State_Stop, State());
}

// DirectShow, the picture back-end, QuickTime video and sound, and a looping GIF through QuickTime;
// stills and loops never complete, and a completed file is already stopped.
std::vector<Reentry> AllReentries()
{
    const struct
    {
        const char* pszName;
        bool bQtMedia, bCompletes;
    } files[] = {{"clip.avi", false, true}, {"still.png", true, false}, {"clip.mov", true, true},
                 {"tone.m4a", true, true}, {"anim.gif", true, false}};
    std::vector<Reentry> all;
    for (const auto& f : files)
        for (const char* pszEvent : {"progress", "complete"})
            for (Action a : {Action::Close, Action::Open, Action::Stop, Action::Release})
                if ((f.bCompletes || pszEvent[0] == 'p') && (a != Action::Stop || pszEvent[0] == 'p'))
                    all.push_back({f.pszName, f.bQtMedia, pszEvent, a});
    return all;
}

INSTANTIATE_TEST_SUITE_P(EachBackEnd, EventReentry, ::testing::ValuesIn(AllReentries()),
                         [](const ::testing::TestParamInfo<Reentry>& param) {
                             std::string name = std::string(kActions[static_cast<int>(param.param.action)]) + "On" +
                                                param.param.event + "Of" + param.param.pszFile;
                             name[name.find('.')] = '_';
                             return name;
                         });

} // namespace
