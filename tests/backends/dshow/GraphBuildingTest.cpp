// Which filters the back-end puts into a file's graph: the VMR-9 for Windows Media Video 9 unless
// a device template says otherwise, the companion sources for Ogg and FLAC, the WM ASF Reader for
// MP3, and automatic rendering when one of these paths fails.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "CClassObjectRegistration.h"
#include "CFakeSourceFilter.h"
#include "CPlaybackHost.h"
#include "CTestMedia.h"
#include "backends/dshow/CFilterGraphHelper.h"
#include "backends/dshow/WMFormatInterfaces.h"

namespace {

using Log = std::vector<std::string>;

#define NOT_ASKED(method, params) \
    HRESULT STDMETHODCALLTYPE method params override { return E_NOTIMPL; }

// A metadata editor for headers the platform's stub editor cannot read: it offers the second
// editor interface or not, answers Open as told, holds a number of device templates, and logs
// what it is asked.
class CFakeMetadataEditor : public wmf::IWMMetadataEditor2, public IWMHeaderInfo3
{
public:
    struct Options
    {
        bool bOffersEditor2;
        HRESULT hrOpen;
        WORD wTemplateCount;
    };
    CFakeMetadataEditor(const Options& options, Log* pLog) : m_options(options), m_pLog(pLog) {}

    HRESULT STDMETHODCALLTYPE QueryInterface(REFIID riid, void** ppv) override
    {
        *ppv = nullptr;
        if (IsEqualIID(riid, IID_IUnknown) || IsEqualIID(riid, wmf::IID_IWMMetadataEditor))
            *ppv = static_cast<IWMMetadataEditor*>(this);
        else if (IsEqualIID(riid, wmf::IID_IWMMetadataEditor2) && m_options.bOffersEditor2)
            *ppv = static_cast<wmf::IWMMetadataEditor2*>(this);
        else if (IsEqualIID(riid, wmf::IID_IWMHeaderInfo) || IsEqualIID(riid, wmf::IID_IWMHeaderInfo3))
            *ppv = static_cast<IWMHeaderInfo3*>(this);
        return *ppv ? (AddRef(), S_OK) : E_NOINTERFACE;
    }
    ULONG STDMETHODCALLTYPE AddRef() override { return ++m_cRef; }
    ULONG STDMETHODCALLTYPE Release() override
    {
        const ULONG cRef = --m_cRef;
        if (cRef == 0)
            delete this;
        return cRef;
    }
    HRESULT STDMETHODCALLTYPE Open(const WCHAR* pwszFile) override
    {
        m_pLog->push_back("Open(" + CTestMedia::Narrow(pwszFile) + ")");
        return m_options.hrOpen;
    }
    HRESULT STDMETHODCALLTYPE OpenEx(LPCWSTR pwszFile, DWORD dwAccess, DWORD dwShare) override
    {
        m_pLog->push_back("OpenEx(" + CTestMedia::Narrow(pwszFile) + ", " + std::to_string(dwAccess) + ", " +
                          std::to_string(dwShare) + ")");
        return m_options.hrOpen;
    }
    HRESULT STDMETHODCALLTYPE Close() override
    {
        m_pLog->push_back("Close");
        return S_OK;
    }
    HRESULT STDMETHODCALLTYPE GetAttributeIndices(WORD wStream, LPCWSTR pwszName, WORD* pwLanguage, WORD* pwIndices,
                                                  WORD* pwCount) override
    {
        m_pLog->push_back("GetAttributeIndices(" + std::to_string(wStream) + ", " + CTestMedia::Narrow(pwszName) +
                          (pwLanguage || pwIndices ? ", with buffers)" : ")"));
        *pwCount = m_options.wTemplateCount;
        return S_OK;
    }
    NOT_ASKED(Flush, ()) NOT_ASKED(GetAttributeCount, (WORD, WORD*))
    NOT_ASKED(GetAttributeByIndex, (WORD, WORD*, WCHAR*, WORD*, WMT_ATTR_DATATYPE*, BYTE*, WORD*))
    NOT_ASKED(GetAttributeByName, (WORD*, LPCWSTR, WMT_ATTR_DATATYPE*, BYTE*, WORD*))
    NOT_ASKED(SetAttribute, (WORD, LPCWSTR, WMT_ATTR_DATATYPE, const BYTE*, WORD))
    NOT_ASKED(GetMarkerCount, (WORD*)) NOT_ASKED(GetMarker, (WORD, WCHAR*, WORD*, QWORD*))
    NOT_ASKED(AddMarker, (LPCWSTR_WMSDK_TYPE_SAFE, QWORD)) NOT_ASKED(RemoveMarker, (WORD))
    NOT_ASKED(GetScriptCount, (WORD*)) NOT_ASKED(GetScript, (WORD, WCHAR*, WORD*, WCHAR*, WORD*, QWORD*))
    NOT_ASKED(AddScript, (LPCWSTR_WMSDK_TYPE_SAFE, LPCWSTR_WMSDK_TYPE_SAFE, QWORD)) NOT_ASKED(RemoveScript, (WORD))
    NOT_ASKED(GetCodecInfoCount, (DWORD*))
    NOT_ASKED(GetCodecInfo, (DWORD, WORD*, WCHAR*, WORD*, WCHAR*, WMT_CODEC_INFO_TYPE*, WORD*, BYTE*))
    NOT_ASKED(GetAttributeCountEx, (WORD, WORD*))
    NOT_ASKED(GetAttributeByIndexEx, (WORD, WORD, LPWSTR, WORD*, WMT_ATTR_DATATYPE*, WORD*, BYTE*, DWORD*))
    NOT_ASKED(ModifyAttribute, (WORD, WORD, WMT_ATTR_DATATYPE, WORD, const BYTE*, DWORD))
    NOT_ASKED(AddAttribute, (WORD, LPCWSTR, WORD*, WMT_ATTR_DATATYPE, WORD, const BYTE*, DWORD))
    NOT_ASKED(DeleteAttribute, (WORD, WORD))
    NOT_ASKED(AddCodecInfo, (LPCWSTR_WMSDK_TYPE_SAFE, LPCWSTR_WMSDK_TYPE_SAFE, WMT_CODEC_INFO_TYPE, WORD, BYTE*))

private:
    virtual ~CFakeMetadataEditor() = default;
    ULONG m_cRef = 1;
    Options m_options;
    Log* m_pLog;
};

ComPtr<IBaseFilter> FilterOfClass(IGraphBuilder* pGraph, REFCLSID clsid)
{
    ComPtr<IEnumFilters> filters;
    EXPECT_EQ(S_OK, pGraph->EnumFilters(&filters));
    CLSID filterClsid;
    for (ComPtr<IBaseFilter> filter; filters->Next(1, &filter, nullptr) == S_OK;)
        if (SUCCEEDED(filter->GetClassID(&filterClsid)) && IsEqualCLSID(clsid, filterClsid))
            return filter;
    return ComPtr<IBaseFilter>();
}

bool HasFilter(IGraphBuilder* pGraph, REFCLSID clsid) { return static_cast<bool>(FilterOfClass(pGraph, clsid)); }

bool HasFilterNamed(IGraphBuilder* pGraph, LPCWSTR pwszName)
{
    ComPtr<IBaseFilter> filter;
    return SUCCEEDED(pGraph->FindFilterByName(pwszName, &filter));
}

// Rendered to the end, the VMR-9 has its input connected: pins are found by direction, and a
// filter without a pin of the direction asked answers S_FALSE with the pin null.
TEST(DShowGraph, AWindowsMediaVideo9HeaderBringsTheVMR9WhichTakesTheVideo)
{
    CPlaybackHost host; // the platform's editor is a stub that cannot answer: no template
    TESSALY_FILEINFO info = {};
    ASSERT_EQ(S_OK, host.OpenWhole(CTestMedia::Path("wmv9.wmv"), &info));
    EXPECT_EQ(0u, info.dwAttributeMask & TESSALY_FILEINFO_AUDIO_ONLY);
    {
        const ComPtr<IBaseFilter> vmr = FilterOfClass(host.DShow().Graph(), CLSID_VideoMixingRenderer9);
        ASSERT_TRUE(vmr);
        ComPtr<IPin> input, peer;
        ASSERT_EQ(S_OK, CFilterGraphHelper::FindInputPin(vmr.Get(), &input));
        EXPECT_EQ(S_OK, input->ConnectedTo(&peer));
        IPin* pNoPin = reinterpret_cast<IPin*>(1);
        EXPECT_EQ(S_FALSE, CFilterGraphHelper::FindOutputPin(vmr.Get(), &pNoPin));
        EXPECT_EQ(nullptr, pNoPin);
    } // none of the graph's filters or pins outlives it

    ASSERT_EQ(S_OK, host.OpenWhole(CTestMedia::Path("clip.wmv"), &info));
    EXPECT_FALSE(HasFilter(host.DShow().Graph(), CLSID_VideoMixingRenderer9)) << "WMV2 has no use for it";
    // The header claims WMV9 but no decoder here takes the stream: only the sound renders.
    ASSERT_EQ(S_OK, host.OpenWhole(CTestMedia::Path("wmv9-undecodable.wmv"), &info));
    EXPECT_FALSE(HasFilter(host.DShow().Graph(), CLSID_VideoMixingRenderer9)) << "left without video";
    EXPECT_EQ(TESSALY_FILEINFO_AUDIO_ONLY, info.dwAttributeMask & TESSALY_FILEINFO_AUDIO_ONLY);
}

TEST(DShowGraph, TheDeviceConformanceTemplateDecidesBetweenVMR9AndTheDefaultRenderer)
{
    const std::string path = CTestMedia::Narrow(CTestMedia::Path("wmv9.wmv").c_str());
    const std::string openEx = "OpenEx(" + path + ", " + std::to_string(GENERIC_READ) + ", " +
                               std::to_string(FILE_SHARE_READ) + ")";
    const std::string asked = "GetAttributeIndices(65535, DeviceConformanceTemplate)";
    const struct
    {
        const char* pszName;
        CFakeMetadataEditor::Options options;
        bool bVMR9;
        Log log;
    } cases[] = {
        {"template present", {true, S_OK, 1}, false, {openEx, asked, "Close"}},
        {"template absent", {true, S_OK, 0}, true, {openEx, asked, "Close"}},
        {"first editor interface only", {false, S_OK, 2}, false, {"Open(" + path + ")", asked, "Close"}},
        {"file refused", {true, HRESULT_FROM_WIN32(ERROR_SHARING_VIOLATION), 1}, true, {openEx}},
    };
    CPlaybackHost host;
    for (const auto& test : cases)
    {
        SCOPED_TRACE(test.pszName);
        Log log;
        host.DShow().editorFactory = [&](IWMMetadataEditor** ppEditor) {
            *ppEditor = new CFakeMetadataEditor(test.options, &log);
            return S_OK;
        };
        ASSERT_EQ(S_OK, host.OpenWhole(CTestMedia::Path("wmv9.wmv"), nullptr, [&] { log.clear(); }));
        EXPECT_EQ(test.bVMR9, HasFilter(host.DShow().Graph(), CLSID_VideoMixingRenderer9));
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
        ASSERT_EQ(S_OK, CoCreateInstance(CLSID_WMAsfReader, nullptr, CLSCTX_INPROC_SERVER, IID_IBaseFilter, &reader));
        ComPtr<IFileSourceFilter> source;
        ASSERT_EQ(S_OK, QueryTo(reader, IID_IFileSourceFilter, source));
        ASSERT_EQ(S_OK, source->Load(path.c_str(), nullptr));
        ComPtr<IPin> pin;
        ComPtr<IMediaSeeking> seeking;
        LONGLONG llDuration = 0;
        ASSERT_EQ(S_OK, CFilterGraphHelper::FindOutputPin(reader.Get(), &pin));
        if (SUCCEEDED(pin->QueryInterface(IID_IMediaSeeking, &seeking)) && seeking->GetDuration(&llDuration) == S_OK)
            bReaderKnowsLength = llDuration > 0;
    }
    // The reader's own route can fail on a busy platform, and the ordinary one then takes the file.
    const auto readerAsExpected = [&] { return bReaderKnowsLength == HasFilter(host.DShow().Graph(), CLSID_WMAsfReader); };
    TESSALY_FILEINFO info = {};
    ASSERT_EQ(S_OK, host.OpenWhole(path, &info, [] {}, readerAsExpected));
    EXPECT_TRUE(readerAsExpected()) << "the reader knows the length: " << bReaderKnowsLength;
    EXPECT_GT(info.dDuration, 2.0);
    EXPECT_EQ(TESSALY_FILEINFO_SEEKABLE | TESSALY_FILEINFO_AUDIO_ONLY, info.dwAttributeMask);
}

// The companion source is set up before it loads, joins the graph under its name and plays; one
// that fails leaves the file to automatic rendering, which finds the same length.
TEST(DShowGraph, OggAndFlacPlayThroughTheirCompanionSourceOrWithoutIt)
{
    CFakeSourceFilter::Options works, noSetup, loadFails, noOutputPin;
    noSetup.bOffersSetup = false;
    loadFails.hrLoad = VFW_E_INVALID_FILE_FORMAT;
    noOutputPin.inner = CLSID_DSoundRender;
    const std::string ogg = "Load(" + CTestMedia::Narrow(CTestMedia::Path("tone.ogg").c_str()) + ", no media type)";
    const std::string flac = "Load(" + CTestMedia::Narrow(CTestMedia::Path("tone.flac").c_str()) + ", no media type)";
    const struct
    {
        const char* pszFile;
        CLSID clsid;
        LPCWSTR pwszName;
        CFakeSourceFilter::Options options;
        Log log;
        bool bUsed;
    } cases[] = {
        {"tone.ogg", CLSID_OggSourceFilter, L"OGG Reader", works, {"Setup(1)", ogg, "JoinFilterGraph(OGG Reader)"}, true},
        {"tone.flac", CLSID_FlacSourceFilter, L"FLAC Reader", works, {"Setup(1)", flac, "JoinFilterGraph(FLAC Reader)"}, true},
        {"tone.ogg", CLSID_OggSourceFilter, L"OGG Reader", noSetup, {}, false},
        {"tone.ogg", CLSID_OggSourceFilter, L"OGG Reader", loadFails, {"Setup(1)", ogg}, false},
        {"tone.ogg", CLSID_OggSourceFilter, L"OGG Reader", noOutputPin,
         {"Setup(1)", ogg, "JoinFilterGraph(OGG Reader)", "LeaveFilterGraph"}, false},
    };
    for (const auto& test : cases)
    {
        SCOPED_TRACE(CTestMedia::Narrow(test.pwszName) + ", " + std::to_string(test.log.size()) + " calls");
        CTestMedia::Truth truth;
        ASSERT_TRUE(CTestMedia::Read(test.pszFile, &truth));
        CPlaybackHost host;
        Log log;
        CClassObjectRegistration installed(test.clsid, [&](REFIID riid, void** ppv) {
            return CFakeSourceFilter::Create(test.options, &log, riid, ppv);
        });
        ASSERT_EQ(S_OK, installed.Registered());
        TESSALY_FILEINFO info = {};
        ASSERT_EQ(S_OK, host.Open(CTestMedia::Path(test.pszFile), &info));
        EXPECT_EQ(test.bUsed, HasFilterNamed(host.DShow().Graph(), test.pwszName));
        EXPECT_EQ(test.log, log);
        EXPECT_NEAR(truth.dDuration, info.dDuration, 0.05);
        ASSERT_EQ(S_OK, host.Player().Play());
        ASSERT_TRUE(host.PumpUntilEnd(15000));
        EXPECT_EQ(1u, host.Count(STREAMING_EVENT_COMPLETE));
    }
}

} // namespace
