// A host plays a range of audio-CD tracks through the registered library: a disc image stands for
// drive T, and the host hears each track end and then the end of the range.
#include <windows.h>
#include <objbase.h>
#include <ocidl.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "CDiscImageWriter.h"
#include "CImageFolder.h"
#include "cdimage/CDiscImageSetting.h"
#include "engine/CComPtr.h"
#include "engine/TessalyContract.h"
#include "tests/support/CMessagePump.h"
#include "tests/support/CRecordingSink.h"

namespace {

const WCHAR kDrive = L'T';

std::wstring Wide(const std::string& text)
{
    const int cch = MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, nullptr, 0);
    std::wstring result(static_cast<size_t>(cch), L'\0');
    MultiByteToWideChar(CP_UTF8, 0, text.c_str(), -1, &result[0], cch);
    result.resize(static_cast<size_t>(cch - 1));
    return result;
}

class PlayCD : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
        const std::string cue = CDiscImageWriter::Write(m_folder.Path(), "disc", {{440.0, 75}, {660.0, 120}, {880.0, 40}});
        ASSERT_FALSE(cue.empty());
        ASSERT_EQ(ERROR_SUCCESS, CDiscImageSetting::Set(kDrive, Wide(cue)));
        ASSERT_EQ(S_OK, CoCreateInstance(CLSID_Play, nullptr, CLSCTX_INPROC_SERVER, IID_IPlayCD, m_play.Out()));
        CComPtr<IConnectionPointContainer> container;
        ASSERT_EQ(S_OK, m_play.QueryInterface(IID_IConnectionPointContainer, container));
        // Track ends come through the CD point, progress and completion through the common one.
        ASSERT_EQ(S_OK, container->FindConnectionPoint(IID_IPlayCDEvents, &m_cdEvents));
        ASSERT_EQ(S_OK, m_cdEvents->Advise(&m_sink, &m_dwCdCookie));
        ASSERT_EQ(S_OK, container->FindConnectionPoint(IID_IPlayEvents, &m_events));
        ASSERT_EQ(S_OK, m_events->Advise(&m_sink, &m_dwCookie));
    }
    void TearDown() override
    {
        if (m_events)
            m_events->Unadvise(m_dwCookie);
        if (m_cdEvents)
            m_cdEvents->Unadvise(m_dwCdCookie);
        m_events.Reset();
        m_cdEvents.Reset();
        m_play.Reset();
        CDiscImageSetting::Clear(kDrive);
        CoUninitialize();
    }
    std::vector<std::string> Milestones() const
    {
        std::vector<std::string> events;
        for (const auto& e : m_log)
            if (e.event != "progress")
                events.push_back(e.event);
        return events;
    }
    bool Completed() const { return !m_log.empty() && m_log.back().event == "complete"; }
    double Duration()
    {
        double dDuration = -1.0;
        EXPECT_EQ(S_OK, m_play->GetDuration(&dDuration));
        return dDuration;
    }

    CImageFolder m_folder;
    std::vector<CRecordingSink::Entry> m_log;
    CRecordingSink m_sink{"host", &m_log};
    CComPtr<IPlayCD> m_play;
    CComPtr<IConnectionPoint> m_events;
    CComPtr<IConnectionPoint> m_cdEvents;
    DWORD m_dwCookie = 0;
    DWORD m_dwCdCookie = 0;
};

TEST_F(PlayCD, ARangePlaysWithANoticeAtEachTrackEndThenCompletes)
{
    ASSERT_EQ(S_OK, m_play->OpenCD(static_cast<short>(kDrive), 1, 3));
    EXPECT_EQ(1.0, Duration());
    ASSERT_EQ(S_OK, m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr));
    ASSERT_TRUE(CMessagePump::PumpUntil([&] { return Completed(); }, 15000));
    // The last track's own notice depends on a progress reading falling past its end in time.
    std::vector<std::string> milestones = Milestones();
    ASSERT_GE(milestones.size(), 3u);
    EXPECT_EQ("track", milestones[0]);
    EXPECT_EQ("track", milestones[1]);
    EXPECT_EQ("complete", milestones.back());
    EXPECT_LE(milestones.size(), 4u);
}

TEST_F(PlayCD, TheSecondTrackOnwardStartsAtTheSecondTracksLength)
{
    ASSERT_EQ(S_OK, m_play->OpenCD(static_cast<short>(kDrive), 2, 3));
    EXPECT_EQ(2.0, Duration()) << "track 2 lasts 1.6 s";
    ASSERT_EQ(S_OK, m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr));
    ASSERT_TRUE(CMessagePump::PumpUntil([&] { return Completed(); }, 15000));
    EXPECT_EQ("track", Milestones().front());
}

// A reversed range is refused with 1, which a host counts as success: the object is then "open"
// with nothing to play. A drive with no image and no disc is refused the same way.
TEST_F(PlayCD, RefusedRangesAnswerOne)
{
    EXPECT_EQ(S_FALSE, m_play->OpenCD(static_cast<short>(kDrive), 3, 1));
    EXPECT_EQ(S_FALSE, m_play->OpenCD(static_cast<short>(L'Q'), 1, 2));
}

} // namespace
