// Which filters the back-end puts into a file's graph: the VMR-9 for Windows Media Video 9, the
// companion sources for Ogg and FLAC, the WM ASF Reader for MP3, and automatic rendering when
// one of these paths fails.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "CClassObjectRegistration.h"
#include "CFakeMetadataEditor.h"
#include "CFakeSourceFilter.h"
#include "CPlaybackHost.h"
#include "CTestMedia.h"
#include "backends/dshow/CFilterGraphHelper.h"

namespace {

using Log = std::vector<std::string>;

ComPtr<IBaseFilter> FilterOfClass(IGraphBuilder* pGraph, REFCLSID clsid)
{
    ComPtr<IEnumFilters> filters;
    EXPECT_EQ(S_OK, pGraph->EnumFilters(&filters));
    for (ComPtr<IBaseFilter> filter; filters->Next(1, &filter, nullptr) == S_OK;)
    {
        CLSID filterClsid;
        if (SUCCEEDED(filter->GetClassID(&filterClsid)) && IsEqualCLSID(clsid, filterClsid))
            return filter;
    }
    return ComPtr<IBaseFilter>();
}

bool IsInputConnected(IBaseFilter* pFilter)
{
    ComPtr<IPin> input;
    ComPtr<IPin> peer;
    return CFilterGraphHelper::FindInputPin(pFilter, &input) == S_OK && input->ConnectedTo(&peer) == S_OK;
}

bool HasFilterNamed(IGraphBuilder* pGraph, LPCWSTR pwszName)
{
    ComPtr<IBaseFilter> filter;
    return SUCCEEDED(pGraph->FindFilterByName(pwszName, &filter));
}

TEST(DShowGraph, AWindowsMediaVideo9HeaderBringsTheVMR9WhichTakesTheVideo)
{
    // The platform's editor is a stub that cannot answer, which counts as no template.
    CPlaybackHost host;
    TESSALY_FILEINFO info = {};
    ASSERT_EQ(S_OK, host.OpenWhole(CTestMedia::Path("wmv9.wmv"), &info));
    const ComPtr<IBaseFilter> vmr = FilterOfClass(host.DShow().Graph(), CLSID_VideoMixingRenderer9);
    ASSERT_TRUE(vmr);
    EXPECT_TRUE(IsInputConnected(vmr.Get()));
    EXPECT_EQ(0u, info.dwAttributeMask & TESSALY_FILEINFO_AUDIO_ONLY);

    ASSERT_EQ(S_OK, host.OpenWhole(CTestMedia::Path("clip.wmv"), &info));
    EXPECT_FALSE(FilterOfClass(host.DShow().Graph(), CLSID_VideoMixingRenderer9)) << "WMV2 has no use for it";
}

TEST(DShowGraph, AVMR9ThatGotNoVideoLeavesTheGraphAgain)
{
    CPlaybackHost host;
    TESSALY_FILEINFO info = {};
    // The header claims WMV9, but no decoder here accepts the stream, so only the sound renders.
    ASSERT_EQ(S_OK, host.OpenWhole(CTestMedia::Path("wmv9-undecodable.wmv"), &info));
    EXPECT_FALSE(FilterOfClass(host.DShow().Graph(), CLSID_VideoMixingRenderer9));
    EXPECT_EQ(TESSALY_FILEINFO_AUDIO_ONLY, info.dwAttributeMask & TESSALY_FILEINFO_AUDIO_ONLY);
}

struct EditorCase
{
    const char* pszName;
    CFakeMetadataEditor::Options options;
    bool bVMR9;
    Log log;
};

TEST(DShowGraph, TheDeviceConformanceTemplateDecidesBetweenVMR9AndTheDefaultRenderer)
{
    const std::string path = CTestMedia::Narrow(CTestMedia::Path("wmv9.wmv").c_str());
    const std::string asked = "GetAttributeIndices(65535, DeviceConformanceTemplate)";
    const EditorCase cases[] = {
        {"template present", {true, S_OK, 1}, false,
         {"OpenEx(" + path + ", GENERIC_READ, FILE_SHARE_READ)", asked, "Close"}},
        {"template absent", {true, S_OK, 0}, true,
         {"OpenEx(" + path + ", GENERIC_READ, FILE_SHARE_READ)", asked, "Close"}},
        {"first editor interface only", {false, S_OK, 2}, false, {"Open(" + path + ")", asked, "Close"}},
        {"file refused", {true, HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION), 1}, true,
         {"OpenEx(" + path + ", GENERIC_READ, FILE_SHARE_READ)"}},
    };
    CPlaybackHost host;
    for (const EditorCase& test : cases)
    {
        SCOPED_TRACE(test.pszName);
        Log log;
        host.DShow().editorFactory = [&](IWMMetadataEditor** ppEditor) {
            return CFakeMetadataEditor::Create(test.options, &log, ppEditor);
        };
        ASSERT_EQ(S_OK, host.OpenWhole(CTestMedia::Path("wmv9.wmv"), nullptr, [&] { log.clear(); }));
        EXPECT_EQ(test.bVMR9, static_cast<bool>(FilterOfClass(host.DShow().Graph(), CLSID_VideoMixingRenderer9)));
        EXPECT_EQ(test.log, log);
        ASSERT_EQ(S_OK, host.Player().CloseFile());
    }
}

TEST(DShowGraph, MP3GoesThroughTheWMAsfReaderOnlyWhenTheReaderKnowsTheLength)
{
    CPlaybackHost host;
    const std::wstring path = CTestMedia::Path("tone.mp3");
    bool bReaderKnowsLength = true;
    {
        ComPtr<IBaseFilter> reader;
        ASSERT_EQ(S_OK, CoCreateInstance(CLSID_WMAsfReader, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter,
                                         &reader));
        ComPtr<IFileSourceFilter> source;
        ASSERT_EQ(S_OK, QueryTo(reader, IID_IFileSourceFilter, source));
        ASSERT_EQ(S_OK, source->Load(path.c_str(), nullptr));
        ComPtr<IPin> pin;
        ComPtr<IMediaSeeking> seeking;
        LONGLONG llDuration = 0;
        ASSERT_EQ(S_OK, CFilterGraphHelper::FindOutputPin(reader.Get(), &pin));
        if (SUCCEEDED(pin->QueryInterface(IID_IMediaSeeking, &seeking)) &&
            seeking->GetDuration(&llDuration) == S_OK)
            bReaderKnowsLength = llDuration > 0;
    }
    // The reader's own route can fail on a busy platform, and the ordinary one then takes the file.
    const auto readerAsExpected = [&] {
        return bReaderKnowsLength == static_cast<bool>(FilterOfClass(host.DShow().Graph(), CLSID_WMAsfReader));
    };
    TESSALY_FILEINFO info = {};
    ASSERT_EQ(S_OK, host.OpenWhole(CTestMedia::Path("tone.mp3"), &info, [] {}, readerAsExpected));
    EXPECT_TRUE(readerAsExpected()) << "the reader knows the length: " << bReaderKnowsLength;
    EXPECT_GT(info.dDuration, 2.0);
    EXPECT_EQ(TESSALY_FILEINFO_SEEKABLE | TESSALY_FILEINFO_AUDIO_ONLY, info.dwAttributeMask);
}

struct CompanionCase
{
    const char* pszFile;
    CLSID clsid;
    LPCWSTR pwszFilterName;
    const char* pszJoined;
};

const CompanionCase kCompanions[] = {
    {"tone.ogg", CLSID_OggSourceFilter, L"OGG Reader", "JoinFilterGraph(OGG Reader)"},
    {"tone.flac", CLSID_FlacSourceFilter, L"FLAC Reader", "JoinFilterGraph(FLAC Reader)"},
};

TEST(DShowGraph, OggAndFlacPlayThroughTheirCompanionSourceSetUpBeforeLoading)
{
    for (const CompanionCase& test : kCompanions)
    {
        SCOPED_TRACE(test.pszFile);
        CPlaybackHost host;
        Log log;
        CClassObjectRegistration installed(test.clsid, [&](REFIID riid, void** ppv) {
            return CFakeSourceFilter::Create(CFakeSourceFilter::Options(), &log, riid, ppv);
        });
        ASSERT_EQ(S_OK, installed.Registered());
        const std::wstring path = CTestMedia::Path(test.pszFile);
        ASSERT_EQ(S_OK, host.Open(path, nullptr));
        EXPECT_TRUE(HasFilterNamed(host.DShow().Graph(), test.pwszFilterName));
        EXPECT_EQ((Log{"Setup(1)", "Load(" + CTestMedia::Narrow(path.c_str()) + ", no media type)", test.pszJoined}),
                  log);
        ASSERT_EQ(S_OK, host.Player().Play());
        ASSERT_TRUE(host.PumpUntilEnd(15000));
        EXPECT_EQ(1u, host.Count(STREAMING_EVENT_COMPLETE));
    }
}

TEST(DShowGraph, ACompanionSourceThatFailsLeavesTheFileToAutomaticRendering)
{
    CFakeSourceFilter::Options noSetup;
    noSetup.bOffersSetup = false;
    CFakeSourceFilter::Options loadFails;
    loadFails.hrLoad = VFW_E_INVALID_FILE_FORMAT;
    CFakeSourceFilter::Options noOutputPin;
    noOutputPin.inner = CLSID_DSoundRender;
    const std::string load = "Load(" + CTestMedia::Narrow(CTestMedia::Path("tone.ogg").c_str()) + ", no media type)";
    const struct
    {
        const char* pszName;
        CFakeSourceFilter::Options options;
        Log log;
    } cases[] = {
        {"no setup interface", noSetup, {}},
        {"load fails", loadFails, {"Setup(1)", load}},
        {"no output pin", noOutputPin, {"Setup(1)", load, "JoinFilterGraph(OGG Reader)", "LeaveFilterGraph"}},
    };
    CTestMedia::Truth truth;
    ASSERT_TRUE(CTestMedia::Read("tone.ogg", &truth));
    for (const auto& test : cases)
    {
        SCOPED_TRACE(test.pszName);
        CPlaybackHost host;
        Log log;
        CClassObjectRegistration installed(CLSID_OggSourceFilter, [&](REFIID riid, void** ppv) {
            return CFakeSourceFilter::Create(test.options, &log, riid, ppv);
        });
        ASSERT_EQ(S_OK, installed.Registered());
        TESSALY_FILEINFO info = {};
        ASSERT_EQ(S_OK, host.Open(CTestMedia::Path("tone.ogg"), &info));
        EXPECT_FALSE(HasFilterNamed(host.DShow().Graph(), L"OGG Reader"));
        EXPECT_EQ(test.log, log);
        EXPECT_NEAR(truth.dDuration, info.dDuration, 0.05);
    }
}

} // namespace
