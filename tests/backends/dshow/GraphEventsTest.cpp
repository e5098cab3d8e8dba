// Graph events other than the end of the media, sent into a playing graph the way its filters
// send them.
#include <gtest/gtest.h>

#include "CPlaybackHost.h"
#include "CTestMedia.h"

namespace {

class DShowGraphEvents : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(S_OK, host.Open(CTestMedia::Path("tone.wav"), nullptr));
        ASSERT_EQ(S_OK, host.DShow().Graph()->QueryInterface(IID_IMediaEventSink, &sink));
        ASSERT_EQ(S_OK, host.Player().Play());
        ASSERT_TRUE(host.PumpUntil([&] { return host.Progress().size() >= 2; }, 5000));
    }

    CPlaybackHost host;
    ComPtr<IMediaEventSink> sink;
};

TEST_F(DShowGraphEvents, AnAbortStopsTheGraphAndReachesTheHostWithItsCode)
{
    ASSERT_EQ(S_OK, sink->Notify(EC_ERRORABORT, VFW_E_SAMPLE_TIME_NOT_SET, 0));
    ASSERT_TRUE(host.PumpUntilEnd(5000));
    ASSERT_EQ(1u, host.Count(STREAMING_EVENT_ERROR));
    EXPECT_EQ(static_cast<ULONG_PTR>(VFW_E_SAMPLE_TIME_NOT_SET), host.events.back().ulParam);
    OAFilterState state = -1;
    EXPECT_EQ(S_OK, host.DShow().MediaControl()->GetState(5000, &state));
    EXPECT_EQ(State_Stopped, state);

    // The progress timer went with it, and the stopped graph never completes.
    const size_t nEvents = host.events.size();
    host.PumpFor(2500);
    EXPECT_EQ(nEvents, host.events.size());
}

TEST_F(DShowGraphEvents, OtherEventsLeavePlaybackAlone)
{
    ASSERT_EQ(S_OK, sink->Notify(EC_USER + 7, 1, 2));
    ASSERT_EQ(S_OK, sink->Notify(EC_STREAM_ERROR_STILLPLAYING, E_FAIL, 0));
    ASSERT_TRUE(host.PumpUntilEnd(10000));
    EXPECT_EQ(1u, host.Count(STREAMING_EVENT_COMPLETE));
    EXPECT_EQ(0u, host.Count(STREAMING_EVENT_ERROR));
}

} // namespace
