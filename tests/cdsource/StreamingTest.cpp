// Samples as a downstream pin receives them: the bytes of the range in order, their times and
// flags, the end of the stream, seeking while paused and running (flush, new segment, the audio
// of the new position), stopping a delivery that waits, a second Load, and failures on the way.
#include <windows.h>

#include <dshow.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <cstdio>
#include <string>
#include <thread>

#include "CDiscImageWriter.h"
#include "CEventGraph.h"
#include "CFilterFixture.h"
#include "CImageDrive.h"
#include "cdsource/CTrackRange.h"

namespace {

const size_t kSamplesPerSector = 588;

class Streaming : public CFilterFixture
{
protected:
    // The samples recorded from index nFrom on hold exactly the range's audio from nFromSector.
    void ExpectAudio(const CImageDrive& drive, int nFirst, int nLast, uint32_t ulFromSector, size_t nFromSample = 0)
    {
        const std::vector<int16_t> left = m_recorder->LeftChannel(nFromSample);
        const std::vector<int16_t> expected =
            drive.ExpectedLeft(nFirst, nLast, ulFromSector * kSamplesPerSector, left.size());
        ASSERT_EQ(expected.size(), left.size());
        for (size_t n = 0; n < left.size(); ++n)
            ASSERT_EQ(expected[n], left[n]) << "sample " << n << " from sector " << ulFromSector;
    }

    // Where the last flush ended in the recorded calls, and how many samples came before it.
    size_t SamplesBeforeLastFlush() const
    {
        size_t nSamples = 0, nAtFlush = 0;
        for (const std::string& call : m_recorder->Calls())
        {
            if (call == "Receive")
                ++nSamples;
            else if (call == "EndFlush")
                nAtFlush = nSamples;
        }
        return nAtFlush;
    }

    // Makes a call that must not wait for downstream on a thread of its own, so that one that
    // never returns fails the case instead of hanging it: after the time is up, the recorder lets
    // go of what it holds, which ends any wait, and false comes back.
    bool CallWithin(const std::function<HRESULT()>& call, DWORD dwTimeoutMs, DWORD* pdwTook)
    {
        std::atomic<bool> bReturned{false};
        HRESULT hr = E_FAIL;
        const DWORD dwStart = GetTickCount();
        std::thread caller([&] {
            hr = call();
            bReturned = true;
        });
        while (!bReturned && GetTickCount() - dwStart < dwTimeoutMs)
            Sleep(1);
        const bool bInTime = bReturned;
        *pdwTook = GetTickCount() - dwStart;
        if (!bInTime)
        {
            m_recorder->ReleaseSamples();
            m_recorder->Unblock();
        }
        caller.join();
        return bInTime && hr == S_OK;
    }

    bool StopWithin(DWORD dwTimeoutMs, DWORD* pdwTook)
    {
        return CallWithin([this] { return m_filter->Stop(); }, dwTimeoutMs, pdwTook);
    }

    CComPtr<IMediaSeeking> PinSeeking()
    {
        CComPtr<IMediaSeeking> seeking;
        m_pin.QueryInterface(IID_IMediaSeeking, seeking);
        return seeking;
    }
};

TEST_F(Streaming, DeliversTheWholeRangeInTimedWholeSectorsThenEndsTheStream)
{
    CImageDrive drive(L'N', CDiscImageWriter::ThreeTones());
    ASSERT_TRUE(drive.Ready());
    ASSERT_EQ(S_OK, m_source->Load(L"N/1-3", nullptr));
    ASSERT_EQ(S_OK, ConnectRecorder());
    ASSERT_EQ(S_OK, m_filter->Pause());
    ASSERT_TRUE(m_recorder->WaitForCall("EndOfStream", 1, 10000));

    const std::vector<std::string> calls = m_recorder->Calls();
    ASSERT_GE(calls.size(), 6u);
    EXPECT_EQ("NewSegment 0 30000000", calls[3]); // after the connection's three
    EXPECT_EQ("EndOfStream", calls.back());
    const std::vector<CRecordingPin::Sample> samples = m_recorder->Samples();
    ASSERT_EQ(29u, samples.size()); // 225 sectors, 8 a sample
    REFERENCE_TIME tExpected = 0;
    uint32_t ulSectors = 0;
    for (size_t i = 0; i < samples.size(); ++i)
    {
        const CRecordingPin::Sample& sample = samples[i];
        ASSERT_EQ(0u, sample.data.size() % 2352) << i;
        EXPECT_EQ(i + 1 < samples.size() ? 8u * 2352 : 1u * 2352, sample.data.size()) << i;
        ulSectors += static_cast<uint32_t>(sample.data.size() / 2352);
        EXPECT_TRUE(sample.bTimeValid);
        EXPECT_EQ(tExpected, sample.tStart) << i;
        EXPECT_EQ(CTrackRange::TimeOf(ulSectors), sample.tEnd) << i;
        tExpected = sample.tEnd;
        EXPECT_EQ(i == 0, sample.bDiscontinuity) << i;
        EXPECT_TRUE(sample.bSyncPoint);
    }
    EXPECT_EQ(30000000, tExpected);
    ExpectAudio(drive, 1, 3, 0);

    ULONGLONG cbDelivered = 0;
    ASSERT_EQ(S_OK, m_config->GetDeliveredBytes(&cbDelivered));
    EXPECT_EQ(225ull * 2352, cbDelivered);
    LONGLONG llCurrent = 0;
    ASSERT_EQ(S_OK, PinSeeking()->GetCurrentPosition(&llCurrent));
    EXPECT_EQ(30000000, llCurrent);

    // Running changes nothing more; stopping keeps the count until the next Load.
    EXPECT_EQ(S_OK, m_filter->Run(0));
    EXPECT_EQ(S_OK, m_filter->Stop());
    EXPECT_EQ(1u, m_recorder->Count("EndOfStream"));
    ASSERT_EQ(S_OK, m_config->GetDeliveredBytes(&cbDelivered));
    EXPECT_EQ(225ull * 2352, cbDelivered);
}

TEST_F(Streaming, ARangeOfLaterTracksStartsWithItsFirstTracksTone)
{
    CImageDrive drive(L'O', CDiscImageWriter::ThreeTones());
    ASSERT_TRUE(drive.Ready());
    ASSERT_EQ(S_OK, m_source->Load(L"O/2-3", nullptr));
    ASSERT_EQ(S_OK, ConnectRecorder());
    ASSERT_EQ(S_OK, m_filter->Run(0));
    ASSERT_TRUE(m_recorder->WaitForCall("EndOfStream", 1, 10000));
    EXPECT_EQ(1u, m_recorder->Count("NewSegment 0 20000000"));
    EXPECT_EQ(150ull * 2352, m_recorder->AcceptedBytes());

    // The first samples are the 660 Hz tone of track 2 from its first sample, not track 1's.
    const std::vector<int16_t> left = m_recorder->LeftChannel();
    const CDiscImageWriter::Track track2 = CDiscImageWriter::ThreeTones()[1];
    for (size_t n = 0; n < 2 * kSamplesPerSector; ++n)
        ASSERT_EQ(CDiscImageWriter::Sample(track2, n), left[n]) << n;
    ExpectAudio(drive, 2, 3, 0);
}

TEST_F(Streaming, ADataTrackInsideTheRangeIsSilenceOfItsLength)
{
    std::vector<CDiscImageWriter::Track> tracks = {{440.0, 75}, {0.0, 30, false}, {880.0, 60}};
    CImageDrive drive(L'P', tracks);
    ASSERT_TRUE(drive.Ready());
    ASSERT_EQ(S_OK, m_source->Load(L"P/1-3", nullptr));
    ASSERT_EQ(S_OK, ConnectRecorder());
    ASSERT_EQ(S_OK, m_filter->Pause());
    ASSERT_TRUE(m_recorder->WaitForCall("EndOfStream", 1, 10000));
    EXPECT_EQ(165ull * 2352, m_recorder->AcceptedBytes());

    std::vector<uint8_t> bytes;
    for (const CRecordingPin::Sample& sample : m_recorder->Samples())
        bytes.insert(bytes.end(), sample.data.begin(), sample.data.end());
    // Both channels of the data track's sectors are zero; the tone before and after is intact.
    for (size_t b = 75 * 2352; b < 105 * 2352; ++b)
        ASSERT_EQ(0, bytes[b]) << "byte " << b;
    ExpectAudio(drive, 1, 3, 0);

    // The data track alone plays as its length of silence.
    EXPECT_EQ(S_OK, m_filter->Stop());
    ASSERT_EQ(S_OK, m_source->Load(L"P/2", nullptr));
    m_recorder->ClearRecords();
    ASSERT_EQ(S_OK, m_filter->Pause());
    ASSERT_TRUE(m_recorder->WaitForCall("EndOfStream", 1, 10000));
    EXPECT_EQ(30ull * 2352, m_recorder->AcceptedBytes());
    for (const CRecordingPin::Sample& sample : m_recorder->Samples())
        for (uint8_t byte : sample.data)
            ASSERT_EQ(0, byte);
}

TEST_F(Streaming, SeekingWhilePausedFlushesAndDeliversFromTheNewPosition)
{
    CImageDrive drive(L'R', CDiscImageWriter::ThreeTones());
    ASSERT_TRUE(drive.Ready());
    ASSERT_EQ(S_OK, m_source->Load(L"R/1-3", nullptr));
    // A paused renderer holds the first sample it gets until it runs or is flushed.
    CRecordingPin::Options options;
    options.bBlockReceive = true;
    ASSERT_EQ(S_OK, ConnectRecorder(options));
    ASSERT_EQ(S_OK, m_filter->Pause());
    ASSERT_TRUE(m_recorder->WaitForCall("Receive", 1, 10000));

    // To the middle of track 2: sector 112 of the range (1.5 s falls inside it).
    LONGLONG llStart = 15000000;
    CComPtr<IMediaSeeking> seeking = PinSeeking();
    DWORD dwTook = 0;
    ASSERT_TRUE(CallWithin(
        [&] { return seeking->SetPositions(&llStart, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning); },
        10000, &dwTook));
    std::printf("seek while paused took %lu ms\n", dwTook);
    // The same seek again on the filter (the platform's graph seeks both it and the renderer)
    // does not flush or begin again: nothing has been accepted since the first.
    llStart = 15000000;
    ASSERT_EQ(S_OK, Get<IMediaSeeking>(IID_IMediaSeeking)->SetPositions(&llStart, AM_SEEKING_AbsolutePositioning, nullptr,
                                                                         AM_SEEKING_NoPositioning));
    ASSERT_TRUE(m_recorder->WaitForCall("Receive", 2, 10000));
    m_recorder->Unblock();
    ASSERT_TRUE(m_recorder->WaitForCall("EndOfStream", 1, 10000));

    const std::vector<std::string> calls = m_recorder->Calls();
    size_t nFlush = 0;
    while (nFlush < calls.size() && calls[nFlush] != "BeginFlush")
        ++nFlush;
    ASSERT_LT(nFlush + 2, calls.size());
    EXPECT_EQ("EndFlush", calls[nFlush + 1]);
    EXPECT_EQ("NewSegment " + std::to_string(CTrackRange::TimeOf(112)) + " 30000000", calls[nFlush + 2]);
    EXPECT_EQ(1u, m_recorder->Count("BeginFlush"));
    const size_t nBefore = SamplesBeforeLastFlush();
    EXPECT_EQ(1u, nBefore);
    const std::vector<CRecordingPin::Sample> samples = m_recorder->Samples();
    ASSERT_GT(samples.size(), nBefore);
    EXPECT_TRUE(samples[nBefore].bDiscontinuity);
    EXPECT_EQ(0, samples[nBefore].tStart); // stream time starts again with the segment
    uint64_t cbAfter = 0;
    for (size_t i = nBefore; i < samples.size(); ++i)
        cbAfter += samples[i].data.size();
    EXPECT_EQ((225ull - 112) * 2352, cbAfter);
    ExpectAudio(drive, 1, 3, 112, nBefore);

    // What downstream accepted, before and after: the first (held, then let go) sample too.
    ULONGLONG cbDelivered = 0;
    ASSERT_EQ(S_OK, m_config->GetDeliveredBytes(&cbDelivered));
    EXPECT_EQ(8ull * 2352 + cbAfter, cbDelivered);
}

TEST_F(Streaming, SeekingWhileRunningReleasesAWaitForBuffersAndChangesWhatComes)
{
    CImageDrive drive(L'S', CDiscImageWriter::ThreeTones());
    ASSERT_TRUE(drive.Ready());
    ASSERT_EQ(S_OK, m_source->Load(L"S/1-3", nullptr));
    // Downstream keeps every sample, as a renderer queues them: the four buffers run out and
    // delivery waits in GetBuffer.
    CRecordingPin::Options options;
    options.bKeepSamples = true;
    ASSERT_EQ(S_OK, ConnectRecorder(options));
    ASSERT_EQ(S_OK, m_filter->Run(0));
    ASSERT_TRUE(m_recorder->WaitForCall("Receive", 4, 10000));
    Sleep(100);
    EXPECT_EQ(4u, m_recorder->Count("Receive"));

    // Back to track 1's second sector: the flush lets the queued samples go.
    LONGLONG llStart = CTrackRange::TimeOf(1);
    LONGLONG llStop = CTrackRange::TimeOf(200);
    CComPtr<IMediaSeeking> seeking = PinSeeking();
    DWORD dwTook = 0;
    ASSERT_TRUE(CallWithin(
        [&] {
            return seeking->SetPositions(&llStart, AM_SEEKING_AbsolutePositioning, &llStop, AM_SEEKING_AbsolutePositioning);
        },
        10000, &dwTook));
    ASSERT_TRUE(m_recorder->WaitForCall("Receive", 8, 10000));
    EXPECT_EQ(1u, m_recorder->Count("NewSegment " + std::to_string(CTrackRange::TimeOf(1)) + " " +
                                     std::to_string(CTrackRange::TimeOf(200))));
    const std::vector<CRecordingPin::Sample> samples = m_recorder->Samples();
    ASSERT_EQ(8u, samples.size());
    EXPECT_TRUE(samples[4].bDiscontinuity);
    ExpectAudio(drive, 1, 3, 1, 4);
    LONGLONG llCurrent = 0;
    ASSERT_EQ(S_OK, PinSeeking()->GetCurrentPosition(&llCurrent));
    EXPECT_EQ(CTrackRange::TimeOf(1 + 32), llCurrent);

    // Stopping while delivery waits for a buffer again returns at once.
    EXPECT_TRUE(StopWithin(10000, &dwTook)) << "Stop did not return while delivery waited for a buffer";
    std::printf("stop with delivery waiting for a buffer took %lu ms\n", dwTook);
}

TEST_F(Streaming, StopEndsADeliveryWaitingForBuffersAndTheNextPauseStartsAgain)
{
    CImageDrive drive(L'U', CDiscImageWriter::ThreeTones());
    ASSERT_TRUE(drive.Ready());
    ASSERT_EQ(S_OK, m_source->Load(L"U/1-3", nullptr));
    CRecordingPin::Options options;
    options.bKeepSamples = true;
    ASSERT_EQ(S_OK, ConnectRecorder(options));
    for (int nRound = 0; nRound < 3; ++nRound)
    {
        ASSERT_EQ(S_OK, m_filter->Pause());
        ASSERT_TRUE(m_recorder->WaitForCall("Receive", 4u * (nRound + 1), 10000));
        DWORD dwTook = 0;
        ASSERT_TRUE(StopWithin(10000, &dwTook)) << "Stop did not return while delivery waited for a buffer";
        std::printf("round %d: stop took %lu ms\n", nRound, dwTook);
        m_recorder->ReleaseSamples();
        // Each delivery begins at the start of the range again.
        EXPECT_EQ(static_cast<size_t>(nRound + 1), m_recorder->Count("NewSegment 0 30000000"));
    }
    const std::vector<CRecordingPin::Sample> samples = m_recorder->Samples();
    ASSERT_EQ(12u, samples.size());
    EXPECT_TRUE(samples[8].bDiscontinuity);
    EXPECT_EQ(0, samples[8].tStart);
    EXPECT_EQ(samples[0].data, samples[8].data);
    EXPECT_EQ(0u, m_recorder->Count("EndOfStream"));
}

TEST_F(Streaming, AStopPositionEndsTheStreamThere)
{
    CImageDrive drive(L'F', CDiscImageWriter::ThreeTones());
    ASSERT_TRUE(drive.Ready());
    ASSERT_EQ(S_OK, m_source->Load(L"F/1-3", nullptr));
    ASSERT_EQ(S_OK, ConnectRecorder());
    // Track 3 only, by positions: from 2.2 s (sector 165) to the end.
    LONGLONG llStart = 22000000;
    LONGLONG llStop = 30000000;
    ASSERT_EQ(S_OK, Get<IMediaSeeking>(IID_IMediaSeeking)->SetPositions(&llStart, AM_SEEKING_AbsolutePositioning, &llStop,
                                                                         AM_SEEKING_AbsolutePositioning));
    ASSERT_EQ(S_OK, m_filter->Pause());
    ASSERT_TRUE(m_recorder->WaitForCall("EndOfStream", 1, 10000));
    EXPECT_EQ(1u, m_recorder->Count("NewSegment 22000000 30000000"));
    EXPECT_EQ(60ull * 2352, m_recorder->AcceptedBytes());
    ExpectAudio(drive, 3, 3, 0);
    ASSERT_EQ(S_OK, m_filter->Stop());

    // The first second of track 2, stopping inside a sample: the last sample is cut to it.
    m_recorder->ClearRecords();
    llStart = CTrackRange::TimeOf(75);
    llStop = CTrackRange::TimeOf(75 + 75);
    ASSERT_EQ(S_OK, PinSeeking()->SetPositions(&llStart, AM_SEEKING_AbsolutePositioning, &llStop,
                                               AM_SEEKING_AbsolutePositioning));
    ASSERT_EQ(S_OK, m_filter->Pause());
    ASSERT_TRUE(m_recorder->WaitForCall("EndOfStream", 1, 10000));
    EXPECT_EQ(75ull * 2352, m_recorder->AcceptedBytes());
    EXPECT_EQ(3u * 2352, m_recorder->Samples().back().data.size());
    ExpectAudio(drive, 2, 3, 0);
}

TEST_F(Streaming, ASecondLoadWhileConnectedReplacesTheRange)
{
    CImageDrive drive(L'W', CDiscImageWriter::ThreeTones());
    ASSERT_TRUE(drive.Ready());
    ASSERT_EQ(S_OK, m_source->Load(L"W/1", nullptr));
    ASSERT_EQ(S_OK, ConnectRecorder());
    ASSERT_EQ(S_OK, m_filter->Run(0));
    ASSERT_TRUE(m_recorder->WaitForCall("EndOfStream", 1, 10000));
    EXPECT_EQ(VFW_E_NOT_STOPPED, m_source->Load(L"W/3", nullptr));
    ASSERT_EQ(S_OK, m_filter->Stop());

    ASSERT_EQ(S_OK, m_source->Load(L"W/3", nullptr));
    ULONGLONG cbDelivered = 1;
    ASSERT_EQ(S_OK, m_config->GetDeliveredBytes(&cbDelivered));
    EXPECT_EQ(0u, cbDelivered); // counted afresh for each Load
    CComPtr<IPin> peer;
    ASSERT_EQ(S_OK, m_pin->ConnectedTo(&peer)); // the connection stays
    m_recorder->ClearRecords();
    ASSERT_EQ(S_OK, m_filter->Run(0));
    ASSERT_TRUE(m_recorder->WaitForCall("EndOfStream", 1, 10000));
    EXPECT_EQ("NewSegment 0 8000000", m_recorder->Calls().front());
    ExpectAudio(drive, 3, 3, 0);
    ASSERT_EQ(S_OK, m_config->GetDeliveredBytes(&cbDelivered));
    EXPECT_EQ(60ull * 2352, cbDelivered);
}

TEST_F(Streaming, AnImageThatShrinksWhilePlayingAbortsWithTheReadFault)
{
    CImageDrive drive(L'V', CDiscImageWriter::ThreeTones());
    ASSERT_TRUE(drive.Ready());
    ASSERT_EQ(S_OK, m_source->Load(L"V/1-3", nullptr));
    CComPtr<CEventGraph> graph;
    graph.Attach(new CEventGraph);
    ASSERT_EQ(S_OK, m_filter->JoinFilterGraph(graph.Get(), L"CD"));
    ASSERT_EQ(S_OK, ConnectRecorder());
    drive.Folder().Resize("disc.bin", 100ull * 2352);
    ASSERT_EQ(S_OK, m_filter->Pause());
    ASSERT_TRUE(m_recorder->WaitForCall("EndOfStream", 1, 10000));

    // Twelve whole samples (96 sectors); the read of sectors 96 to 103 fails.
    EXPECT_EQ(96ull * 2352, m_recorder->AcceptedBytes());
    const std::vector<CEventGraph::Event> events = graph->Events();
    ASSERT_EQ(1u, events.size());
    EXPECT_EQ(EC_ERRORABORT, events[0].lCode);
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_READ_FAULT), static_cast<HRESULT>(events[0].lParam1));
    ASSERT_EQ(S_OK, m_filter->Stop());
    ASSERT_EQ(S_OK, m_filter->JoinFilterGraph(nullptr, nullptr));
    EXPECT_EQ(1, graph->Refs());
}

TEST_F(Streaming, ADownstreamRefusalEndsTheSegmentQuietlyAndCountsNothing)
{
    CImageDrive drive(L'G', CDiscImageWriter::ThreeTones());
    ASSERT_TRUE(drive.Ready());
    ASSERT_EQ(S_OK, m_source->Load(L"G/1-3", nullptr));
    CComPtr<CEventGraph> graph;
    graph.Attach(new CEventGraph);
    ASSERT_EQ(S_OK, m_filter->JoinFilterGraph(graph.Get(), L"CD"));
    for (HRESULT hrRefusal : {S_FALSE, VFW_E_WRONG_STATE})
    {
        CRecordingPin::Options options;
        options.hrReceive = hrRefusal;
        ASSERT_EQ(S_OK, ConnectRecorder(options));
        ASSERT_EQ(S_OK, m_filter->Pause());
        ASSERT_TRUE(m_recorder->WaitForCall("Receive", 1, 10000));
        Sleep(200);
        EXPECT_EQ(1u, m_recorder->Count("Receive"));
        EXPECT_EQ(0u, m_recorder->Count("EndOfStream"));
        ULONGLONG cbDelivered = 1;
        ASSERT_EQ(S_OK, m_config->GetDeliveredBytes(&cbDelivered));
        EXPECT_EQ(0u, cbDelivered);
        DisconnectRecorder();
    }
    // Downstream reports its own errors; the source adds none.
    EXPECT_TRUE(graph->Events().empty());
    ASSERT_EQ(S_OK, m_filter->JoinFilterGraph(nullptr, nullptr));
}

} // namespace
