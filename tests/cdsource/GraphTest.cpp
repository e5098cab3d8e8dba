// The filter in a real filter graph of the platform, connected to its DirectSound renderer as
// the engine connects it: played to completion with every byte accepted, sought through the
// graph (which the renderer passes on to the filter's pin), stopped while it plays, and loaded,
// run and stopped many times without threads or handles piling up.
#include <windows.h>

#include <dshow.h>

#include <gtest/gtest.h>

#include <cstdio>

#include "../support/CProcessCounts.h"
#include "CDiscImageWriter.h"
#include "CFilterFixture.h"
#include "CImageDrive.h"
#include "cdsource/CTrackRange.h"

namespace {

class Graph : public CFilterFixture
{
protected:
    void SetUp() override
    {
        CFilterFixture::SetUp();
        ASSERT_EQ(S_OK, CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder,
                                         m_graph.Out()));
        ASSERT_EQ(S_OK, m_graph.QueryInterface(IID_IMediaControl, m_control));
        ASSERT_EQ(S_OK, m_graph.QueryInterface(IID_IMediaEvent, m_events));
        ASSERT_EQ(S_OK, m_graph.QueryInterface(IID_IMediaSeeking, m_seeking));
    }

    void TearDown() override
    {
        if (m_control)
            m_control->Stop();
        // Leaving the graph disconnects the filter, which then holds nothing of it.
        if (m_graph)
            m_graph->RemoveFilter(m_filter.Get());
        m_seeking.Reset();
        m_events.Reset();
        m_control.Reset();
        m_renderer.Reset();
        m_graph.Reset();
        CFilterFixture::TearDown();
    }

    // The filter and the platform's DirectSound renderer, joined pin to pin.
    void Build()
    {
        ASSERT_EQ(S_OK, m_graph->AddFilter(m_filter.Get(), L"CD Audio Source"));
        ASSERT_EQ(S_OK, CoCreateInstance(CLSID_DSoundRender, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter,
                                         m_renderer.Out()));
        ASSERT_EQ(S_OK, m_graph->AddFilter(m_renderer.Get(), L"Audio Renderer"));
        CComPtr<IEnumPins> pins;
        ASSERT_EQ(S_OK, m_renderer->EnumPins(&pins));
        CComPtr<IPin> input;
        ASSERT_EQ(S_OK, pins->Next(1, &input, nullptr));
        ASSERT_EQ(S_OK, m_graph->ConnectDirect(m_pin.Get(), input.Get(), nullptr)) << "no audio renderer: check the ALSA null device";
    }

    ULONGLONG Delivered()
    {
        ULONGLONG cb = 0;
        EXPECT_EQ(S_OK, m_config->GetDeliveredBytes(&cb));
        return cb;
    }

    bool WaitForDelivered(ULONGLONG cbAtLeast, DWORD dwTimeoutMs)
    {
        const DWORD dwStart = GetTickCount();
        while (Delivered() < cbAtLeast)
        {
            if (GetTickCount() - dwStart > dwTimeoutMs)
                return false;
            Sleep(5);
        }
        return true;
    }

    // The next EC_COMPLETE, EC_ERRORABORT or EC_USERABORT the graph queues, or -1 when none
    // comes in time. (The platform's WaitForCompletion answers at once on every run after the
    // graph's first completion, so it cannot tell one run from the next.)
    long WaitForCompletion(DWORD dwTimeoutMs)
    {
        const DWORD dwStart = GetTickCount();
        for (;;)
        {
            const DWORD dwElapsed = GetTickCount() - dwStart;
            if (dwElapsed >= dwTimeoutMs)
                return -1;
            long lCode = 0;
            LONG_PTR lParam1 = 0, lParam2 = 0;
            if (m_events->GetEvent(&lCode, &lParam1, &lParam2, static_cast<long>(dwTimeoutMs - dwElapsed)) != S_OK)
                continue;
            m_events->FreeEventParams(lCode, lParam1, lParam2);
            if (lCode == EC_COMPLETE || lCode == EC_ERRORABORT || lCode == EC_USERABORT)
                return lCode;
        }
    }

    CComPtr<IGraphBuilder> m_graph;
    CComPtr<IMediaControl> m_control;
    CComPtr<IMediaEvent> m_events;
    CComPtr<IMediaSeeking> m_seeking;
    CComPtr<IBaseFilter> m_renderer;
};

TEST_F(Graph, PlaysTheRangeToCompletionWithEveryByteAccepted)
{
    CImageDrive drive(L'H', CDiscImageWriter::ThreeTones());
    ASSERT_TRUE(drive.Ready());
    ASSERT_EQ(S_OK, m_source->Load(L"H/1-3", nullptr));
    Build();
    AM_MEDIA_TYPE mt = {};
    ASSERT_EQ(S_OK, m_pin->ConnectionMediaType(&mt));
    EXPECT_TRUE(mt.majortype == MEDIATYPE_Audio && mt.subtype == MEDIASUBTYPE_PCM);
    CoTaskMemFree(mt.pbFormat);

    // The graph's seeking is the renderer's, which asks the filter's pin.
    LONGLONG llDuration = 0;
    ASSERT_EQ(S_OK, m_seeking->GetDuration(&llDuration));
    EXPECT_EQ(30000000, llDuration);

    const DWORD dwStart = GetTickCount();
    ASSERT_TRUE(SUCCEEDED(m_control->Run()));
    EXPECT_EQ(EC_COMPLETE, WaitForCompletion(20000));
    std::printf("three seconds of CD audio played in %lu ms\n", GetTickCount() - dwStart);
    EXPECT_EQ(225ull * 2352, Delivered());
    EXPECT_EQ(S_OK, m_control->Stop());
}

TEST_F(Graph, SeekingThroughTheGraphChangesWhatIsDelivered)
{
    CImageDrive drive(L'I', CDiscImageWriter::ThreeTones());
    ASSERT_TRUE(drive.Ready());
    ASSERT_EQ(S_OK, m_source->Load(L"I/1-3", nullptr));
    Build();

    // Stopped: from the middle of track 2 (sector 112) to the end, and no more.
    LONGLONG llStart = 15000000;
    ASSERT_EQ(S_OK, m_seeking->SetPositions(&llStart, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning));
    ASSERT_TRUE(SUCCEEDED(m_control->Run()));
    EXPECT_EQ(EC_COMPLETE, WaitForCompletion(20000));
    EXPECT_EQ((225ull - 112) * 2352, Delivered());
    ASSERT_EQ(S_OK, m_control->Stop());

    // Running: from the start, then on to the last half second before much has played.
    ASSERT_EQ(S_OK, m_source->Load(L"I/1-3", nullptr));
    llStart = 0;
    ASSERT_EQ(S_OK, m_seeking->SetPositions(&llStart, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning));
    const DWORD dwStart = GetTickCount();
    ASSERT_TRUE(SUCCEEDED(m_control->Run()));
    ASSERT_TRUE(WaitForDelivered(1, 10000));
    const ULONGLONG cbBefore = Delivered();
    llStart = 25000000;
    ASSERT_EQ(S_OK, m_seeking->SetPositions(&llStart, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning));
    const ULONGLONG cbAtSeek = Delivered();
    EXPECT_EQ(EC_COMPLETE, WaitForCompletion(20000));
    const ULONGLONG cbTotal = Delivered();
    std::printf("seek while running: %llu bytes before the seek call, %llu when it returned, %llu in all; "
                "complete after %lu ms\n",
                static_cast<unsigned long long>(cbBefore), static_cast<unsigned long long>(cbAtSeek),
                static_cast<unsigned long long>(cbTotal), GetTickCount() - dwStart);
    // Everything from sector 187 on came after the seek, and what came before it was no more
    // than had been delivered when the seek returned: the skipped middle never came.
    EXPECT_EQ(cbAtSeek + (225ull - 187) * 2352, cbTotal);
    EXPECT_LT(cbTotal, 225ull * 2352);
}

TEST_F(Graph, StopIsPromptAndHundredLoadRunStopCyclesLeaveThreadsAndHandlesFlat)
{
    CImageDrive drive(L'J', CDiscImageWriter::ThreeTones());
    ASSERT_TRUE(drive.Ready());
    ASSERT_EQ(S_OK, m_source->Load(L"J/1-3", nullptr));
    Build();

    // Paused, the renderer holds the first sample in its Receive (the pause completes with it)
    // until the graph stops it: nothing is accepted yet.
    ASSERT_TRUE(SUCCEEDED(m_control->Pause()));
    OAFilterState state = State_Stopped;
    ASSERT_EQ(S_OK, m_control->GetState(10000, &state));
    EXPECT_EQ(State_Paused, state);
    Sleep(200);
    EXPECT_EQ(0u, Delivered());
    DWORD dwStart = GetTickCount();
    EXPECT_EQ(S_OK, m_control->Stop());
    const DWORD dwPaused = GetTickCount() - dwStart;

    // A cycle as the engine makes one: a new range on the stopped, connected filter, played a
    // little, stopped. The first few let the platform make what it keeps for the process.
    DWORD dwMaxStop = 0;
    DWORD dwTotalStop = 0;
    auto cycle = [&](int nCycle) {
        const int nFirst = 1 + nCycle % 3;
        ASSERT_EQ(S_OK, m_source->Load(drive.Spec(nFirst, 3).c_str(), nullptr));
        ASSERT_TRUE(SUCCEEDED(m_control->Run()));
        ASSERT_TRUE(WaitForDelivered(16 * 2352, 10000)) << "cycle " << nCycle;
        const DWORD dwStop = GetTickCount();
        ASSERT_EQ(S_OK, m_control->Stop());
        const DWORD dwTook = GetTickCount() - dwStop;
        dwMaxStop = dwTook > dwMaxStop ? dwTook : dwMaxStop;
        dwTotalStop += dwTook;
    };
    for (int n = 0; n < 5; ++n)
        cycle(n);
    dwMaxStop = dwTotalStop = 0;
    Sleep(200);
    const CProcessCounts before = CProcessCounts::Take();
    dwStart = GetTickCount();
    for (int n = 0; n < 100 && !HasFatalFailure(); ++n)
        cycle(n);
    const DWORD dwCycles = GetTickCount() - dwStart;
    Sleep(200);
    const CProcessCounts change = CProcessCounts::Take() - before;
    change.Print("after 100 Load/Run/Stop cycles");
    std::printf("stop while paused: %lu ms; stop while running: %lu ms at most, %.1f ms on average; "
                "100 cycles in %lu ms\n",
                dwPaused, dwMaxStop, dwTotalStop / 100.0, dwCycles);

    EXPECT_EQ(0, change.lThreads);
    EXPECT_LE(change.lHandles, 2);
    // Generous: a stop that waits for the rest of the range (seconds) or forever fails here.
    EXPECT_LT(dwPaused, 2000u);
    EXPECT_LT(dwMaxStop, 2000u);
    FILTER_STATE filterState = State_Running;
    EXPECT_EQ(S_OK, m_filter->GetState(0, &filterState));
    EXPECT_EQ(State_Stopped, filterState);
}

} // namespace
