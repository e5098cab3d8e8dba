// Hosts act from inside their event handlers: each back-end's first progress report and its
// completion, answered with CloseFile, OpenFile, Stop or the host's last reference released.
// Nothing may deadlock or crash, each call answers as it would outside an event, and an object
// that was closed or released reports nothing more.
#include <windows.h>
#include <objbase.h>
#include <ocidl.h>

#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "CPlayHostTest.h"
#include "CTestMedia.h"
#include "engine/ComPtr.h"
#include "engine/TessalyContract.h"
#include "tests/support/CRecordingSink.h"

namespace {

enum class Action
{
    Close,
    Open,
    Stop,
    Release
};

struct Reentry
{
    const char* pszFile;   // in the QuickTime media folder when bQtMedia
    bool bQtMedia;
    const char* pszEvent;  // "progress" (the first one) or "complete"
    Action action;
};

std::string Describe(const Reentry& r)
{
    static const char* const kActions[] = {"Close", "Open", "Stop", "Release"};
    return std::string(kActions[static_cast<int>(r.action)]) + "On" + r.pszEvent + "Of" + r.pszFile;
}

void PrintTo(const Reentry& r, std::ostream* pStream)
{
    *pStream << Describe(r);
}

std::string NameOf(const ::testing::TestParamInfo<Reentry>& info)
{
    std::string name = Describe(info.param);
    for (char& c : name)
    {
        if (c == '.')
            c = '_';
    }
    return name;
}

class EventReentry : public CPlayHostTest, public ::testing::WithParamInterface<Reentry>
{
protected:
    void SetUp() override
    {
        CPlayHostTest::SetUp();
        ASSERT_EQ(S_OK, m_events->Advise(&m_second, &m_dwCookie));
    }
    std::wstring Path() const
    {
        return GetParam().bQtMedia ? CTestMedia::PathIn(TESSALY_QT_MEDIA_DIR, GetParam().pszFile)
                                   : CTestMedia::Path(GetParam().pszFile);
    }
    HRESULT Open()
    {
        std::wstring path = Path();
        return m_play->OpenFile(&path[0], 0, TESSALY_PLAYBACK_FLAG_STRETCH, nullptr);
    }

    CRecordingSink m_second{"second", &m_log}; // hears every event after the acting sink
};

TEST_P(EventReentry, TheCallAnswersAsOutsideAnEventAndNothingFollowsAClose)
{
    const Reentry& r = GetParam();
    HRESULT hrAction = E_UNEXPECTED;
    bool bActed = false;
    size_t nAtAction = 0;
    m_sink.onEvent = [&](const char* pszEvent) {
        if (bActed || std::string(pszEvent) != r.pszEvent)
            return;
        bActed = true;
        nAtAction = m_log.size();
        switch (r.action)
        {
        case Action::Close:
            hrAction = m_play->CloseFile();
            break;
        case Action::Open:
            hrAction = Open();
            break;
        case Action::Stop:
            hrAction = m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_STOP, 0, nullptr);
            break;
        case Action::Release:
            // The host's last references go: the object must outlive the event it is firing.
            m_events.Reset();
            m_play.Reset();
            hrAction = S_OK;
            break;
        }
    };
    ASSERT_EQ(S_OK, Open());
    ASSERT_EQ(S_OK, m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr));
    ASSERT_TRUE(PumpUntil([&] { return bActed; }, 15000)) << "the event never came";
    EXPECT_EQ(S_OK, hrAction);
    PumpUntil([] { return false; }, 600);

    switch (r.action)
    {
    case Action::Close:
    case Action::Release:
        // The second sink still hears the event in which the first acted, then nothing more.
        ASSERT_EQ(nAtAction + 1, m_log.size()) << "reports after the object was closed or released";
        EXPECT_EQ("second", m_log.back().sink);
        EXPECT_EQ(r.pszEvent, m_log.back().event);
        if (m_play)
        {
            EXPECT_EQ(E_FAIL, m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr)) << "nothing is open";
        }
        break;
    case Action::Open:
        // The file opened again from inside the event plays from outside it.
        EXPECT_EQ(S_OK, m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr));
        break;
    case Action::Stop:
    {
        TESSALY_PLAYBACK_STATE state = Playback_State_Busy;
        EXPECT_EQ(S_OK, m_play->GetState(&state, nullptr));
        EXPECT_EQ(Playback_State_Stop, state);
        break;
    }
    }
}

std::vector<Reentry> AllReentries()
{
    struct File
    {
        const char* pszName;
        bool bQtMedia;
        bool bCompletes;
    };
    // DirectShow, the picture back-end, the QuickTime video and audio back-ends, and a looping GIF
    // (the QuickTime back-end's picture path), which reports progress and never completes.
    const File files[] = {{"clip.avi", false, true},
                          {"still.png", true, false},
                          {"clip.mov", true, true},
                          {"tone.m4a", true, true},
                          {"anim.gif", true, false}};
    std::vector<Reentry> all;
    for (const File& f : files)
    {
        for (const char* pszEvent : {"progress", "complete"})
        {
            if (!f.bCompletes && std::string(pszEvent) == "complete")
                continue;
            for (Action a : {Action::Close, Action::Open, Action::Stop, Action::Release})
            {
                // A completed file is already stopped.
                if (a != Action::Stop || std::string(pszEvent) == "progress")
                    all.push_back({f.pszName, f.bQtMedia, pszEvent, a});
            }
        }
    }
    return all;
}

INSTANTIATE_TEST_SUITE_P(EachBackEnd, EventReentry, ::testing::ValuesIn(AllReentries()), NameOf);

} // namespace
