// Samples as a downstream pin receives them: exactly the range's bytes in timed whole sectors,
// a data track as silence, positions inside the range, and seeking or stopping while delivery
// waits for a buffer that downstream keeps.
#include <algorithm>
#include <string>

#include "CFilterFixture.h"
#include "cdsource/CTrackRange.h"

namespace {

using Streaming = CFilterFixture;

std::string Segment(uint32_t ulStart, uint32_t ulStop)
{
    return "NewSegment " + std::to_string(CTrackRange::TimeOf(ulStart)) + " " + std::to_string(CTrackRange::TimeOf(ulStop));
}

// A sample of sectors ulFrom to ulTo of its segment.
std::string Received(uint32_t ulFrom, uint32_t ulTo, bool bDiscontinuity = false)
{
    return "Receive " + std::to_string(CTrackRange::TimeOf(ulFrom)) + " " + std::to_string(CTrackRange::TimeOf(ulTo)) +
           " " + std::to_string((ulTo - ulFrom) * 2352) + (bDiscontinuity ? " discontinuity" : "");
}

TEST_F(Streaming, DeliversExactlyTheRangeInTimedWholeSectorsAndThenFromInsideIt)
{
    // Tracks 2 to 4 lie at disc sectors 75 to 209: 45 of tone, 30 of data, 60 of another tone.
    ASSERT_TRUE(UseImage(L'N', {{440.0, 75}, {660.0, 45}, {0.0, 30, false}, {880.0, 60}}));
    ASSERT_EQ(S_OK, m_source->Load(L"N/2-4", nullptr));
    ASSERT_EQ(S_OK, ConnectRecorder());
    ASSERT_EQ(S_OK, m_filter->Pause());
    ASSERT_TRUE(m_recorder->WaitForCall("EndOfStream", 1));
    std::vector<std::string> calls = m_recorder->Calls();
    ASSERT_EQ(3u + 1 + 17 + 1, calls.size()); // the connection's three, 135 sectors 8 a sample
    EXPECT_EQ(Segment(0, 135), calls[3]);
    for (uint32_t i = 0; i < 17; ++i)
        EXPECT_EQ(Received(i * 8, std::min(i * 8 + 8, 135u), i == 0), calls[4 + i]);
    EXPECT_EQ("EndOfStream", calls.back());
    // Track 2 from its first byte, not track 1; the data track silent in both channels though the
    // image holds data there; track 4 in its place after it.
    const std::vector<uint8_t> bytes = m_recorder->Bytes();
    ASSERT_EQ(135u * 2352, bytes.size());
    EXPECT_TRUE(std::vector<uint8_t>(bytes.begin(), bytes.begin() + 45 * 2352) == ImageSectors(75, 45));
    EXPECT_TRUE(std::all_of(bytes.begin() + 45 * 2352, bytes.begin() + 75 * 2352, [](uint8_t b) { return b == 0; }));
    EXPECT_TRUE(std::vector<uint8_t>(bytes.begin() + 75 * 2352, bytes.end()) == ImageSectors(150, 60));
    ULONGLONG cbDelivered = 0;
    ASSERT_EQ(S_OK, m_config->GetDeliveredBytes(&cbDelivered));
    EXPECT_EQ(135u * 2352, cbDelivered);
    ASSERT_EQ(S_OK, m_filter->Stop());

    // Positions inside the range: from track 4's start to a stop inside a sample, which cuts it;
    // stream time starts again with the segment.
    m_recorder->ClearRecords();
    LONGLONG llStart = CTrackRange::TimeOf(75), llStop = CTrackRange::TimeOf(75 + 45);
    ASSERT_EQ(S_OK, m_seeking->SetPositions(&llStart, AM_SEEKING_AbsolutePositioning, &llStop,
                                            AM_SEEKING_AbsolutePositioning));
    ASSERT_EQ(S_OK, m_filter->Pause());
    ASSERT_TRUE(m_recorder->WaitForCall("EndOfStream", 1));
    calls = m_recorder->Calls();
    ASSERT_EQ(1u + 6 + 1, calls.size());
    EXPECT_EQ(Segment(75, 120), calls[0]);
    EXPECT_EQ(Received(0, 8, true), calls[1]);
    EXPECT_EQ(Received(40, 45), calls[6]);
    EXPECT_TRUE(m_recorder->Bytes() == ImageSectors(150, 45));
}

TEST_F(Streaming, SeekingOrStoppingWhileDeliveryWaitsForABufferReturnsAtOnce)
{
    ASSERT_TRUE(UseImage(L'S'));
    ASSERT_EQ(S_OK, m_source->Load(L"S/1-3", nullptr));
    // Downstream keeps every sample, as a renderer queues them: the four buffers run out and
    // delivery waits in GetBuffer.
    CRecordingPin::Options options;
    options.bKeepSamples = true;
    ASSERT_EQ(S_OK, ConnectRecorder(options));
    ASSERT_EQ(S_OK, m_filter->Run(0));
    ASSERT_TRUE(m_recorder->WaitForCall("Receive", 4));
    m_recorder->ClearRecords();

    // To disc sector 1 through the pin, as the renderer passes a graph's seek on: the flush lets
    // the queued samples go, and delivery begins again there.
    LONGLONG llStart = CTrackRange::TimeOf(1), llStop = CTrackRange::TimeOf(200);
    ComPtr<IMediaSeeking> pinSeeking;
    ASSERT_EQ(S_OK, QueryTo(m_pin, IID_IMediaSeeking, pinSeeking));
    DWORD dwStart = GetTickCount();
    ASSERT_EQ(S_OK, pinSeeking->SetPositions(&llStart, AM_SEEKING_AbsolutePositioning, &llStop,
                                             AM_SEEKING_AbsolutePositioning));
    EXPECT_LT(GetTickCount() - dwStart, 2000u);
    ASSERT_TRUE(m_recorder->WaitForCall("Receive", 4));
    Sleep(100);
    const std::vector<std::string> calls = m_recorder->Calls();
    ASSERT_EQ(3u + 4, calls.size()) << "no more than four buffers";
    EXPECT_EQ("BeginFlush", calls[0]);
    EXPECT_EQ("EndFlush", calls[1]);
    EXPECT_EQ(Segment(1, 200), calls[2]);
    EXPECT_EQ(Received(0, 8, true), calls[3]);
    EXPECT_TRUE(m_recorder->Bytes() == ImageSectors(1, 32));
    LONGLONG llCurrent = 0; // where delivery has got to
    ASSERT_EQ(S_OK, m_seeking->GetCurrentPosition(&llCurrent));
    EXPECT_EQ(CTrackRange::TimeOf(1 + 32), llCurrent);

    // Stop while delivery waits again.
    dwStart = GetTickCount();
    ASSERT_EQ(S_OK, m_filter->Stop());
    EXPECT_LT(GetTickCount() - dwStart, 2000u);
}

} // namespace
