// Hosts act from inside their event handlers: each back-end's first progress report and its
// completion, answered with CloseFile, OpenFile, Stop or the host's last reference released.
// Nothing may deadlock or crash, each call answers as it would outside an event, and an object
// that was closed or released reports nothing more.
#include <windows.h>

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "ServerHost.h"

namespace {

enum class Action { Close, Open, Stop, Release };

struct Reentry
{
    const char* pszFile; // in the QuickTime media folder when bQtMedia
    bool bQtMedia;
    std::string event;   // "progress" (the first one) or "complete"
    Action action;
};

std::string Describe(const Reentry& r)
{
    static const char* const kActions[] = {"Close", "Open", "Stop", "Release"};
    std::string name = std::string(kActions[static_cast<int>(r.action)]) + "On" + r.event + "Of" + r.pszFile;
    name[name.find('.')] = '_';
    return name;
}

void PrintTo(const Reentry& r, std::ostream* pStream)
{
    *pStream << Describe(r);
}

class EventReentry : public CServerHost, public ::testing::WithParamInterface<Reentry>
{
protected:
    HRESULT OpenParam()
    {
        return Open(GetParam().bQtMedia ? CTestMedia::PathIn(TESSALY_QT_MEDIA_DIR, GetParam().pszFile)
                                        : CTestMedia::Path(GetParam().pszFile));
    }
    CRecordingSink m_second{"second", &m_log}; // hears every event after the acting sink
};

TEST_P(EventReentry, TheCallAnswersAsOutsideAnEventAndNothingFollowsAClose)
{
    const Reentry& r = GetParam();
    ASSERT_EQ(S_OK, m_events->Advise(&m_second, &m_dwCookie));
    HRESULT hrAction = E_UNEXPECTED;
    bool bActed = false;
    size_t nAtAction = 0;
    m_sink.onEvent = [&](const char* pszEvent) {
        if (bActed || r.event != pszEvent)
            return;
        bActed = true;
        nAtAction = m_log.size();
        switch (r.action)
        {
        case Action::Close: hrAction = m_play->CloseFile(); break;
        case Action::Open: hrAction = OpenParam(); break;
        case Action::Stop: hrAction = m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_STOP, 0, nullptr); break;
        case Action::Release: // the object must outlive the event it is firing
            m_events.Reset();
            m_play.Reset();
            hrAction = S_OK;
            break;
        }
    };
    ASSERT_EQ(S_OK, OpenParam());
    ASSERT_EQ(S_OK, Play());
    ASSERT_TRUE(PumpUntil([&] { return bActed; }, 15000)) << "the event never came";
    EXPECT_EQ(S_OK, hrAction);
    CMessagePump::PumpFor(600);
    if (r.action == Action::Close || r.action == Action::Release)
    {
        // The second sink still hears the event in which the first acted, then nothing more.
        ASSERT_EQ(nAtAction + 1, m_log.size()) << "reports after the object was closed or released";
        EXPECT_EQ("second", m_log.back().sink);
        EXPECT_EQ(r.event, m_log.back().event);
        if (m_play)
        {
            EXPECT_EQ(E_FAIL, Play()) << "nothing is open";
        }
    }
    else if (r.action == Action::Open)
    {
        EXPECT_EQ(S_OK, Play()) << "the file opened again from inside the event plays from outside it";
    }
    else
    {
        EXPECT_EQ(Playback_State_Stop, State());
    }
}

// DirectShow, the picture back-end, the QuickTime video and audio back-ends, and a looping GIF
// (the QuickTime back-end's picture path); stills and loops never complete, and a completed file
// is already stopped.
std::vector<Reentry> AllReentries()
{
    struct File
    {
        const char* pszName;
        bool bQtMedia, bCompletes;
    } const files[] = {{"clip.avi", false, true}, {"still.png", true, false}, {"clip.mov", true, true},
                       {"tone.m4a", true, true}, {"anim.gif", true, false}};
    std::vector<Reentry> all;
    for (const File& f : files)
        for (const char* pszEvent : {"progress", "complete"})
            for (Action a : {Action::Close, Action::Open, Action::Stop, Action::Release})
                if ((f.bCompletes || pszEvent[0] == 'p') && (a != Action::Stop || pszEvent[0] == 'p'))
                    all.push_back({f.pszName, f.bQtMedia, pszEvent, a});
    return all;
}

INSTANTIATE_TEST_SUITE_P(EachBackEnd, EventReentry, ::testing::ValuesIn(AllReentries()),
                         [](const ::testing::TestParamInfo<Reentry>& param) { return Describe(param.param); });

} // namespace
