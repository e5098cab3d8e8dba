// The Media Player control back-end against the platform's real control: its event sink, the route
// of a protected file, files it cannot open, its window, an open re-entered or torn down from inside
// its own wait, and playback of unprotected files with the route forced to it.
#include <gtest/gtest.h>

#include <wmpids.h>

#include <algorithm>
#include <cwctype>
#include <functional>

#include "CAsfHeaderBuilder.h"
#include "CControlStage.h"
#include "CTempFolder.h"
#include "CTestMedia.h"
#include "backends/wmp/CWMPEventSink.h"
#include "backends/wmp/CWMPHost.h"
#include "base/EngineMessages.h"
#include "tests/support/CWindowRect.h"

namespace {

TEST(WMPEventSink, PostsStateChangesAndErrorsRefusesMalformedCallsAndCountsItsReferences)
{
    HWND hWnd = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 1, 1, 0, 0, 0, 0);
    auto* pSink = new CWMPEventSink(hWnd);
    auto fire = [&](DISPID id, VARTYPE vt, UINT cArgs = 1, UINT cNamed = 0) {
        VARIANT arg = {};
        arg.vt = vt;
        arg.lVal = vt == VT_DISPATCH ? 0 : 13;
        DISPID named = DISPID_PROPERTYPUT;
        DISPPARAMS params = {&arg, cNamed ? &named : nullptr, cArgs, cNamed};
        return pSink->Invoke(id, IID_NULL, 0, DISPATCH_METHOD, &params, nullptr, nullptr, nullptr);
    };
    auto posted = [] {
        std::vector<std::pair<WPARAM, LPARAM>> messages;
        for (MSG msg; PeekMessageW(&msg, nullptr, WM_WMP_EVENT, WM_WMP_EVENT, PM_REMOVE);)
            messages.emplace_back(msg.wParam, msg.lParam);
        return messages;
    };
    const std::vector<HRESULT> answers = {
        fire(DISPID_WMPCOREEVENT_OPENSTATECHANGE, VT_UI4), fire(DISPID_WMPCOREEVENT_PLAYSTATECHANGE, VT_I4),
        fire(DISPID_WMPCOREEVENT_ERROR, VT_EMPTY, 0), fire(DISPID_WMPCOREEVENT_BUFFERING, VT_I4),
        fire(DISPID_WMPOCXEVENT_MOUSEUP, VT_EMPTY, 0), fire(DISPID_WMPCOREEVENT_PLAYSTATECHANGE, VT_I4, 1, 1),
        fire(4999, VT_I4), fire(DISPID_WMPOCXEVENT_MOUSEUP + 1, VT_I4), fire(DISPID_WMPCOREEVENT_OPENSTATECHANGE, VT_I4, 0),
        fire(DISPID_WMPCOREEVENT_OPENSTATECHANGE, VT_DISPATCH),
        pSink->Invoke(DISPID_WMPCOREEVENT_PLAYSTATECHANGE, IID_NULL, 0, DISPATCH_METHOD, nullptr, nullptr, nullptr,
                      nullptr)};
    EXPECT_EQ((std::vector<HRESULT>{S_OK, S_OK, S_OK, S_OK, S_OK, DISP_E_NONAMEDARGS, DISP_E_MEMBERNOTFOUND,
                                    DISP_E_MEMBERNOTFOUND, DISP_E_BADPARAMCOUNT, DISP_E_TYPEMISMATCH, E_POINTER}),
              answers);
    EXPECT_EQ((std::vector<std::pair<WPARAM, LPARAM>>{
                  {WMP_EVENT_OPENSTATE_CHANGED, 13}, {WMP_EVENT_PLAYSTATE_CHANGED, 13}, {WMP_EVENT_ERROR, 0}}),
              posted());
    DestroyWindow(hWnd);
    pSink->Error(), pSink->PlayStateChange(8);
    EXPECT_TRUE(posted().empty()) << "posted to a window that is gone";

    IUnknown* p[4] = {};
    const IID iids[] = {IID_IUnknown, IID_IDispatch, __uuidof(IWMPEvents), __uuidof(_WMPOCXEvents)};
    for (int i = 0; i < 4; ++i)
        ASSERT_EQ(S_OK, pSink->QueryInterface(iids[i], reinterpret_cast<void**>(&p[i])));
    EXPECT_EQ(std::make_pair(p[0], p[1]), std::make_pair(p[2], p[3]));
    IUnknown* pOther = reinterpret_cast<IUnknown*>(0x1);
    EXPECT_EQ(E_NOINTERFACE, pSink->QueryInterface(IID_IConnectionPoint, reinterpret_cast<void**>(&pOther)));
    EXPECT_EQ(nullptr, pOther);
    EXPECT_EQ(E_POINTER, pSink->QueryInterface(IID_IUnknown, nullptr));
    const std::vector<ULONG> counts = {p[0]->Release(), p[1]->Release(), p[2]->Release(), p[3]->Release(), pSink->Release()};
    EXPECT_EQ((std::vector<ULONG>{4, 3, 2, 1, 0}), counts);
}

// A header declaring content protection sends the file to the control, which cannot open it here.
TEST(WMPRoute, AProtectedFileIsHostedInTheControlAndFailsWithTheBackEndsCode)
{
    CTempFolder folder;
    const std::vector<uint8_t> header = CAsfHeaderBuilder().ContentEncryption(true).Build();
    const std::wstring path = folder.Write(L"protected.wmv", std::string(header.begin(), header.end()));
    CPlaybackHost host;
    TESSALY_FILEINFO info = {7, 7.0, 7, 7};
    const ULONGLONG start = GetTickCount64();
    EXPECT_EQ(TESSALY_E_CANNOTPLAY, host.Open(path, &info));
    EXPECT_LT(GetTickCount64() - start, CWMPHost::kOpenLimitMs + 2000);
    EXPECT_NE(nullptr, CControlStage::FindContainer(host.Window())) << "the control was not hosted";
    EXPECT_EQ(nullptr, host.DShow().Graph()) << "DirectShow was asked as well";
    EXPECT_EQ(7.0, info.dDuration) << "a failed open wrote the caller's record";
    EXPECT_EQ(0u, host.events.size());
}

TEST(WMPLifecycle, FilesTheControlCannotOpenFailWithinTheLimitAndLeaveTheBackEndUsable)
{
    CTempFolder folder;
    std::string noise(20000, 'n');
    std::generate(noise.begin(), noise.end(), [i = 0u]() mutable { return static_cast<char>((i++ * 7919) >> 3); });
    auto host = CControlStage::ControlHost();
    for (const std::wstring& path :
         {folder.Write(L"noise.wmv", noise), folder.Write(L"empty.wma", ""), folder.Path(L"missing.wma")})
    {
        SCOPED_TRACE(CTestMedia::Narrow(path.c_str()));
        const ULONGLONG start = GetTickCount64();
        EXPECT_EQ(TESSALY_E_CANNOTPLAY, host->Open(path, nullptr));
        EXPECT_LT(GetTickCount64() - start, CWMPHost::kOpenLimitMs + 2000);
    }
    TESSALY_FILEINFO info = {};
    EXPECT_EQ(S_OK, host->Open(CTestMedia::Path("tone.wma"), &info));
    EXPECT_GT(info.dDuration, 1.5);
}

TEST(WMPLifecycle, TheControlFillsTheParentFollowsItsSizeAndIsHiddenOnClose)
{
    auto host = CControlStage::ControlHost(320, 240);
    ASSERT_EQ(S_OK, host->Open(CTestMedia::Path("clip.wmv"), nullptr));
    HWND hContainer = CControlStage::FindContainer(host->Window());
    ASSERT_NE(nullptr, hContainer);
    HWND hHostWindow = GetParent(hContainer);
    ASSERT_EQ(host->Window(), GetParent(hHostWindow));
    const auto placed = &CWindowRect::Edges;
    EXPECT_EQ((std::vector<long>{0, 0, 320, 240}), placed(hHostWindow));
    EXPECT_TRUE(IsWindowVisible(hHostWindow));
    ASSERT_EQ(S_OK, host->Player().SetParentWindowSize(640, 360));
    EXPECT_EQ((std::vector<long>{0, 0, 640, 360}), placed(hHostWindow));
    EXPECT_EQ((std::vector<long>{0, 0, 640, 360}), placed(hContainer));
    ASSERT_EQ(S_OK, host->Player().CloseFile());
    EXPECT_FALSE(IsWindowVisible(hHostWindow));
}

// A host of the control on a window of its own; a posted WM_APP runs a step inside the host's wait
// for the open: another open, which is refused while the first goes on, or the host torn down
// (its window destroyed, or the host deleted), which ends the open as failed.
std::function<void()> s_step;
WNDPROC s_pfnStatic;

LRESULT CALLBACK RunStepOnApp(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    if (uMsg != WM_APP)
        return CallWindowProcW(s_pfnStatic, hWnd, uMsg, wParam, lParam);
    s_step();
    return 0;
}

TEST(WMPHostOpen, AnOpenReenteredFromItsWaitIsRefusedAndTearingTheHostDownThereFailsIt)
{
    ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    HWND hParent = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 320, 240, 0, 0, 0, 0);
    HWND hStep = CreateWindowExW(0, L"STATIC", L"", WS_POPUP, 0, 0, 1, 1, 0, 0, 0, 0);
    s_pfnStatic = reinterpret_cast<WNDPROC>(SetWindowLongPtrW(hStep, GWLP_WNDPROC, reinterpret_cast<LONG_PTR>(RunStepOnApp)));
    for (int nStep = 0; nStep < 3; ++nStep)
    {
        auto pHost = std::make_unique<CWMPHost>();
        const RECT rc = {0, 0, 320, 240};
        ASSERT_NE(nullptr, pHost->Create(hParent, rc, WS_CHILD | WS_VISIBLE));
        CWMPHost* pOpening = pHost.get();
        HRESULT hrInner = S_FALSE;
        s_step = [&] {
            nStep == 0 ? (void)(hrInner = pHost->Open(CTestMedia::Path("clip.wmv").c_str()))
                       : nStep == 1 ? (void)DestroyWindow(pHost->Window()) : pHost.reset();
        };
        PostMessageW(hStep, WM_APP, 0, 0);
        EXPECT_EQ(nStep ? E_FAIL : S_OK, pOpening->Open(CTestMedia::Path("tone.wma").c_str())) << nStep;
        EXPECT_EQ(nStep == 2 ? nullptr : pOpening, pHost.get());
        if (nStep == 0)
        {
            EXPECT_EQ(E_FAIL, hrInner);
            BOOL bAudio = -1, bSeekable = -1, bPicture = -1;
            double dDuration = -1.0;
            DWORD dwWidth = 7, dwHeight = 7;
            ASSERT_EQ(S_OK, pHost->GetFileInfo(&bAudio, &dDuration, &bSeekable, &dwWidth, &dwHeight, &bPicture));
            EXPECT_NEAR(2.0, dDuration, 0.1) << "the item opened is the first one asked for";
        }
        else if (nStep == 1)
        {
            EXPECT_EQ(E_FAIL, pHost->Play()) << "nothing is open in a host without its window";
        }
    }
    DestroyWindow(hStep), DestroyWindow(hParent);
    CoUninitialize();
    EXPECT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) << "the host left COM initialised";
    CoUninitialize();
}

// Unprotected files played through the control (the route forced to it).
class WMPPlayback : public ::testing::TestWithParam<const char*>
{
protected:
    void SetUp() override
    {
        ASSERT_TRUE(CTestMedia::Read(GetParam(), &truth));
        ASSERT_EQ(S_OK, CControlStage::OpenRendered(*host, GetParam(), &info));
    }
    CTestMedia::Truth truth;
    TESSALY_FILEINFO info = {};
    std::unique_ptr<CPlaybackHost> host = CControlStage::ControlHost();
};

// The kind the control names for the item (this platform's names none), the size only for video;
// still until played, then in real time to one completion; a stop halts it.
TEST_P(WMPPlayback, OpensStillWithItsDurationPlaysInRealTimeToOneCompletionAndStopHalts)
{
    EXPECT_NEAR(truth.dDuration, info.dDuration, 0.1);
    std::wstring type = CControlStage::ControlMediaType(host->Window());
    std::transform(type.begin(), type.end(), type.begin(), ::towlower);
    const bool bSized = type == L"video" || type == L"photo";
    EXPECT_EQ(TESSALY_FILEINFO_SEEKABLE | (type == L"audio" ? TESSALY_FILEINFO_AUDIO_ONLY : 0u), info.dwAttributeMask);
    EXPECT_EQ(std::make_pair(bSized ? truth.dwWidth : 0u, bSized ? truth.dwHeight : 0u),
              std::make_pair(info.dwWidth, info.dwHeight));
    host->PumpFor(300);
    EXPECT_TRUE(host->Progress().empty()) << "the item moved before play";

    const ULONGLONG start = CControlStage::PlayRendered(*host, GetParam());
    ASSERT_NE(0u, start);
    host->PumpFor(600);
    const std::vector<double> progress = host->Progress();
    ASSERT_GE(progress.size(), 5u);
    EXPECT_GT(progress.back(), 0.5);
    EXPECT_LT(progress.back(), 1.3);
    EXPECT_TRUE(std::is_sorted(progress.begin(), progress.end()));
    ASSERT_TRUE(host->PumpUntilEnd(10000));
    EXPECT_EQ(1u, host->Count(STREAMING_EVENT_COMPLETE));
    EXPECT_EQ(0u, host->Count(STREAMING_EVENT_ERROR));
    EXPECT_GT((GetTickCount64() - start) / 1000.0, truth.dDuration - 0.3);

    host->events.clear();
    ASSERT_NE(0u, CControlStage::PlayRendered(*host, GetParam()));
    ASSERT_EQ(S_OK, host->Player().Stop());
    const size_t nReports = host->Progress().size();
    host->PumpFor(500);
    EXPECT_EQ(nReports, host->Progress().size()) << "progress went on after stop";
}

INSTANTIATE_TEST_SUITE_P(Media, WMPPlayback, ::testing::Values("tone.wma", "clip.wmv"));

// Sound only: this platform's control stalls a video seeked while playing.
TEST(WMPSeek, ASeekWhilePlayingMovesTheProgressThere)
{
    auto host = CControlStage::ControlHost();
    ASSERT_EQ(S_OK, CControlStage::OpenRendered(*host, "tone.wma"));
    ASSERT_NE(0u, CControlStage::PlayRendered(*host, "tone.wma"));
    ASSERT_EQ(S_OK, host->Player().SeekTo(1.2));
    host->PumpFor(300);
    ASSERT_FALSE(host->Progress().empty());
    EXPECT_GE(host->Progress().back(), 1.2);
    ASSERT_TRUE(host->PumpUntilEnd(10000));
    EXPECT_EQ(1u, host->Count(STREAMING_EVENT_COMPLETE));
}

} // namespace
