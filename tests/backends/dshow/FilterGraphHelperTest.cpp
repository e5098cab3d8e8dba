// The hand-building helpers over the platform's own filters: a file source, the WAVE parser and
// the DirectSound renderer joined pin by pin into a graph that plays.
#include <gtest/gtest.h>

#include <dshow.h>

#include "CTestMedia.h"
#include "backends/dshow/CFilterGraphHelper.h"
#include "engine/ComPtr.h"

namespace {

// {D51BD5A1-7548-11CF-A520-0080C77EF58A}; the import libraries do not carry it.
const CLSID kCLSID_WAVEParser = {0xd51bd5a1, 0x7548, 0x11cf, {0xa5, 0x20, 0x00, 0x80, 0xc7, 0x7e, 0xf5, 0x8a}};

class FilterGraphHelper : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
        ASSERT_EQ(S_OK, Create(CLSID_FilterGraph, IID_IGraphBuilder, &graph));
        ASSERT_EQ(S_OK, Create(CLSID_AsyncReader, IID_IBaseFilter, &source));
        ASSERT_EQ(S_OK, Create(kCLSID_WAVEParser, IID_IBaseFilter, &parser));
        ASSERT_EQ(S_OK, Create(CLSID_DSoundRender, IID_IBaseFilter, &renderer));
        ComPtr<IFileSourceFilter> file;
        ASSERT_EQ(S_OK, QueryTo(source, IID_IFileSourceFilter, file));
        ASSERT_EQ(S_OK, file->Load(CTestMedia::Path("tone.wav").c_str(), nullptr));
    }
    void TearDown() override
    {
        graph.Reset();
        source.Reset();
        parser.Reset();
        renderer.Reset();
        CoUninitialize();
    }

    static HRESULT Create(REFCLSID clsid, REFIID riid, void** ppv)
    {
        return CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, riid, ppv);
    }

    ComPtr<IGraphBuilder> graph;
    ComPtr<IBaseFilter> source;
    ComPtr<IBaseFilter> parser;
    ComPtr<IBaseFilter> renderer;
};

TEST_F(FilterGraphHelper, FindsTheFirstPinOfADirectionOrAnswersFalseWithNoPin)
{
    ComPtr<IPin> pin;
    ASSERT_EQ(S_OK, CFilterGraphHelper::FindInputPin(renderer.Get(), &pin));
    PIN_DIRECTION direction;
    ASSERT_EQ(S_OK, pin->QueryDirection(&direction));
    EXPECT_EQ(PINDIR_INPUT, direction);

    IPin* pNoPin = reinterpret_cast<IPin*>(1);
    EXPECT_EQ(S_FALSE, CFilterGraphHelper::FindOutputPin(renderer.Get(), &pNoPin));
    EXPECT_EQ(nullptr, pNoPin);
    ASSERT_EQ(S_OK, CFilterGraphHelper::FindPinByDirection(source.Get(), PINDIR_OUTPUT, &pin));
    ASSERT_EQ(S_OK, pin->QueryDirection(&direction));
    EXPECT_EQ(PINDIR_OUTPUT, direction);
}

TEST_F(FilterGraphHelper, RefusesMissingGraphsFiltersAndPins)
{
    ComPtr<IPin> output;
    ASSERT_EQ(S_OK, CFilterGraphHelper::FindOutputPin(source.Get(), &output));
    EXPECT_EQ(E_POINTER, CFilterGraphHelper::AddFilterToGraph(nullptr, source.Get()));
    EXPECT_EQ(E_POINTER, CFilterGraphHelper::AddFilterToGraph(graph.Get(), nullptr));
    EXPECT_EQ(E_POINTER, CFilterGraphHelper::ConnectPins(nullptr, output.Get(), output.Get(), nullptr, nullptr));
    EXPECT_EQ(E_POINTER, CFilterGraphHelper::ConnectPins(graph.Get(), nullptr, output.Get(), nullptr, nullptr));
    EXPECT_EQ(E_POINTER, CFilterGraphHelper::ConnectPins(graph.Get(), output.Get(), nullptr, nullptr, nullptr));
    EXPECT_EQ(E_POINTER, CFilterGraphHelper::ConnectFilters(graph.Get(), nullptr, parser.Get(), nullptr, nullptr));
    EXPECT_EQ(E_POINTER, CFilterGraphHelper::ConnectFilters(graph.Get(), source.Get(), nullptr, nullptr, nullptr));
    // The renderer has no output pin to start from.
    ASSERT_EQ(S_OK, CFilterGraphHelper::AddFilterToGraph(graph.Get(), renderer.Get()));
    ASSERT_EQ(S_OK, CFilterGraphHelper::AddFilterToGraph(graph.Get(), parser.Get()));
    EXPECT_EQ(E_POINTER, CFilterGraphHelper::ConnectFilters(graph.Get(), renderer.Get(), parser.Get(), nullptr, nullptr));
}

TEST_F(FilterGraphHelper, JoinsFiltersIntoAGraphThatPlaysToTheEnd)
{
    for (IBaseFilter* pFilter : {source.Get(), parser.Get(), renderer.Get()})
        ASSERT_EQ(S_OK, CFilterGraphHelper::AddFilterToGraph(graph.Get(), pFilter));
    ALLOCATOR_PROPERTIES properties = {8, 16384, 1, 0};
    ASSERT_EQ(S_OK, CFilterGraphHelper::ConnectFilters(graph.Get(), source.Get(), parser.Get(), nullptr, &properties));
    ASSERT_EQ(S_OK, CFilterGraphHelper::ConnectFilters(graph.Get(), parser.Get(), renderer.Get(), nullptr, nullptr));

    ComPtr<IMediaControl> control;
    ComPtr<IMediaEvent> events;
    ASSERT_EQ(S_OK, QueryTo(graph, IID_IMediaControl, control));
    ASSERT_EQ(S_OK, QueryTo(graph, IID_IMediaEvent, events));
    ASSERT_TRUE(SUCCEEDED(control->Run()));
    long lCode = 0;
    EXPECT_EQ(S_OK, events->WaitForCompletion(15000, &lCode));
    EXPECT_EQ(EC_COMPLETE, lCode);
    control->Stop();
}

} // namespace
