// The filter in a real filter graph of the platform, connected to its DirectSound renderer as the
// engine connects it: stopped while paused, played to completion, sought while running through
// the graph (which the renderer passes on to the filter's pin), and aborted by a read fault.
#include "CFilterFixture.h"

namespace {

using Graph = CFilterFixture;

TEST_F(Graph, PlaysTheRangeToCompletionFromTheStartOrASeekAndAbortsOnAReadFault)
{
    ASSERT_TRUE(UseImage(L'H'));
    ASSERT_EQ(S_OK, m_source->Load(L"H/1-3", nullptr));
    ComPtr<IGraphBuilder> graph;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder, &graph));
    ComPtr<IMediaControl> control;
    ComPtr<IMediaEvent> events;
    ComPtr<IMediaSeeking> seeking;
    ASSERT_EQ(S_OK, QueryTo(graph, IID_IMediaControl, control));
    ASSERT_EQ(S_OK, QueryTo(graph, IID_IMediaEvent, events));
    ASSERT_EQ(S_OK, QueryTo(graph, IID_IMediaSeeking, seeking));
    ComPtr<IBaseFilter> renderer;
    ASSERT_EQ(S_OK, CoCreateInstance(CLSID_DSoundRender, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter, &renderer));
    ComPtr<IEnumPins> pins;
    ComPtr<IPin> input;
    ASSERT_EQ(S_OK, renderer->EnumPins(&pins));
    ASSERT_EQ(S_OK, pins->Next(1, &input, nullptr));
    ASSERT_EQ(S_OK, graph->AddFilter(m_filter.Get(), L"CD Audio Source"));
    ASSERT_EQ(S_OK, graph->AddFilter(renderer.Get(), L"Audio Renderer"));
    ASSERT_EQ(S_OK, graph->ConnectDirect(m_pin.Get(), input.Get(), nullptr)) << "check the ALSA null device";
    auto delivered = [&] {
        ULONGLONG cb = 0;
        EXPECT_EQ(S_OK, m_config->GetDeliveredBytes(&cb));
        return cb;
    };
    // The next completion or abort the graph queues, and its first parameter. (The platform's
    // WaitForCompletion answers at once on every run after the graph's first completion.)
    LONG_PTR lParam1 = 0, lParam2 = 0;
    auto waitForCompletion = [&] {
        long lCode = 0;
        for (const DWORD dwStart = GetTickCount(); GetTickCount() - dwStart < 20000;)
        {
            if (events->GetEvent(&lCode, &lParam1, &lParam2, 100) != S_OK)
                continue;
            events->FreeEventParams(lCode, lParam1, lParam2);
            if (lCode == EC_COMPLETE || lCode == EC_ERRORABORT || lCode == EC_USERABORT)
                return lCode;
        }
        return -1L;
    };
    LONGLONG llDuration = 0; // the graph's seeking is the renderer's, which asks the filter's pin
    ASSERT_EQ(S_OK, seeking->GetDuration(&llDuration));
    EXPECT_EQ(30000000, llDuration);

    // Paused, the renderer holds the first sample in its Receive until the graph stops it: the
    // stop must not wait for the rest of the range, or forever.
    ASSERT_TRUE(SUCCEEDED(control->Pause()));
    OAFilterState state = State_Stopped;
    ASSERT_EQ(S_OK, control->GetState(10000, &state));
    DWORD dwStart = GetTickCount();
    ASSERT_EQ(S_OK, control->Stop());
    EXPECT_LT(GetTickCount() - dwStart, 2000u);

    ASSERT_EQ(S_OK, m_source->Load(L"H/1-3", nullptr));
    ASSERT_TRUE(SUCCEEDED(control->Run()));
    EXPECT_EQ(EC_COMPLETE, waitForCompletion());
    EXPECT_EQ(225u * 2352, delivered());
    ASSERT_EQ(S_OK, control->Stop());

    // From the start, then on to the last half second (sector 187) before much has played:
    // everything from there came after the seek, and nothing of the skipped middle did.
    ASSERT_EQ(S_OK, m_source->Load(L"H/1-3", nullptr));
    LONGLONG llStart = 0;
    ASSERT_EQ(S_OK, seeking->SetPositions(&llStart, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning));
    ASSERT_TRUE(SUCCEEDED(control->Run()));
    for (dwStart = GetTickCount(); delivered() == 0 && GetTickCount() - dwStart < 10000;)
        Sleep(5);
    llStart = 25000000;
    ASSERT_EQ(S_OK, seeking->SetPositions(&llStart, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning));
    const ULONGLONG cbAtSeek = delivered();
    EXPECT_EQ(EC_COMPLETE, waitForCompletion());
    EXPECT_EQ(cbAtSeek + (225u - 187) * 2352, delivered());
    EXPECT_LT(delivered(), 225u * 2352);
    ASSERT_EQ(S_OK, control->Stop());

    // The image loses its end after the Load: the graph hears the read fault, and the renderer
    // gets no more than the whole sectors before it.
    ASSERT_EQ(S_OK, m_source->Load(L"H/1-3", nullptr));
    llStart = 0;
    ASSERT_EQ(S_OK, seeking->SetPositions(&llStart, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning));
    ImageFolder().Resize("disc.bin", 100u * 2352);
    ASSERT_TRUE(SUCCEEDED(control->Run()));
    EXPECT_EQ(EC_ERRORABORT, waitForCompletion());
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_READ_FAULT), static_cast<HRESULT>(lParam1));
    EXPECT_EQ(0u, delivered() % 2352);
    EXPECT_LE(delivered(), 100u * 2352);
    ASSERT_EQ(S_OK, control->Stop());
    // Leaving the graph disconnects the filter, which then holds nothing of it.
    ASSERT_EQ(S_OK, graph->RemoveFilter(m_filter.Get()));
}

} // namespace
