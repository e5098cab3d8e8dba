// The generated proxy/stub, used for real: an object lives in one apartment and is called
// from another through the proxies built from the contract.
#include <windows.h>
#include <objbase.h>

#include <gtest/gtest.h>

#include <string>
#include <thread>

#include "engine/ComPtr.h"
#include "engine/TessalyContract.h"

extern "C" HRESULT WINAPI PrxDllGetClassObject(REFCLSID rclsid, REFIID riid, void** ppv);
#if defined(__x86_64__)
extern "C" EXCEPTION_REGISTRATION_RECORD* tessaly_rpc_get_frame(void);
#endif

namespace {

// The newest exception frame the proxy code sees on this thread: the system's chain on 32-bit
// x86, the frames' own list on x86-64.
void* NewestFrame()
{
#if defined(__x86_64__)
    return tessaly_rpc_get_frame();
#else
    void* pFrame = nullptr;
    __asm__ __volatile__("movl %%fs:0,%0" : "=r"(pFrame));
    return pFrame;
#endif
}

// Answers IQueryFileInfo and ITextDisplay, remembering what it was sent.
class RecordingObject : public IQueryFileInfo, public ITextDisplay
{
public:
    std::wstring lastPath;
    LOGFONTW lastFont = {};
    LONG lastForce = -1, refs = 1;
    HRESULT answer = S_OK;

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override
    {
        *ppv = riid == IID_IUnknown || riid == IID_IQueryFileInfo ? static_cast<void*>(static_cast<IQueryFileInfo*>(this))
               : riid == IID_ITextDisplay ? static_cast<ITextDisplay*>(this) : nullptr;
        return *ppv ? (AddRef(), S_OK) : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return InterlockedIncrement(&refs); }
    STDMETHODIMP_(ULONG) Release() override { return InterlockedDecrement(&refs); }
    STDMETHODIMP GetFileInfo(LPWSTR wszFilepath, TESSALY_FILEINFO* pInfo) override
    {
        lastPath = wszFilepath;
        if (SUCCEEDED(answer))
            *pInfo = {TESSALY_FILEINFO_AUDIO_ONLY | TESSALY_FILEINFO_SEEKABLE, 12.5, 640, 480};
        return answer;
    }
    STDMETHODIMP SetGradientBkColor(ULONG, ULONG, LONG) override { return S_OK; }
    STDMETHODIMP SetTextColor(ULONG, LONG) override { return S_OK; }
    STDMETHODIMP SetFont(LOGFONTW* plf, LONG bForceRefresh) override
    {
        lastFont = *plf;
        lastForce = bForceRefresh;
        return S_OK;
    }
    STDMETHODIMP GetGradientBkColor(ULONG* pcrTop, ULONG* pcrBottom) override
    {
        *pcrTop = 0x00112233;
        *pcrBottom = 0x00445566;
        return S_OK;
    }
    STDMETHODIMP GetTextColor(ULONG* pcrColor) override
    {
        *pcrColor = 0x00ABCDEF;
        return S_OK;
    }
};

// Makes the built-in proxy class (named after the first interface of the proxy table) known to
// the calling apartment, without the registry.
struct ProxyRegistration
{
    HRESULT hr = E_FAIL;
    DWORD dwCookie = 0;
    ProxyRegistration()
    {
        ComPtr<IUnknown> factory;
        hr = PrxDllGetClassObject(IID_IPlay2, IID_IUnknown, &factory);
        if (SUCCEEDED(hr))
            hr = CoRegisterClassObject(IID_IPlay2, factory.Get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, &dwCookie);
        for (const IID* iid : {&IID_IPlay, &IID_IPlay2, &IID_IPlayCD, &IID_ITextDisplay, &IID_IPlayEvents,
                               &IID_IPlayCDEvents, &IID_IQueryFileInfo})
            hr = SUCCEEDED(hr) ? CoRegisterPSClsid(*iid, IID_IPlay2) : hr;
    }
    ~ProxyRegistration()
    {
        if (dwCookie)
            CoRevokeClassObject(dwCookie);
    }
};

// The object is served by an apartment of its own thread; the test's apartment holds a proxy.
class ProxyStub : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
        m_registration = new ProxyRegistration;
        ASSERT_EQ(S_OK, m_registration->hr);
        HANDLE hReady = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        m_server = std::thread([this, hReady] {
            CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
            {
                ProxyRegistration registration;
                MSG msg;
                PeekMessageW(&msg, nullptr, 0, 0, PM_NOREMOVE); // the thread needs a queue for WM_QUIT
                m_serverThreadId = GetCurrentThreadId();
                m_serverResult = FAILED(registration.hr) ? registration.hr
                                 : CoMarshalInterThreadInterfaceInStream(IID_IQueryFileInfo, static_cast<IQueryFileInfo*>(&m_object), &m_stream);
                SetEvent(hReady);
                while (GetMessageW(&msg, nullptr, 0, 0) > 0)
                    DispatchMessageW(&msg);
            }
            CoUninitialize();
        });
        WaitForSingleObject(hReady, INFINITE);
        CloseHandle(hReady);
        ASSERT_EQ(S_OK, m_serverResult);
        ASSERT_EQ(S_OK, CoGetInterfaceAndReleaseStream(m_stream, IID_IQueryFileInfo, &m_proxy));
        ASSERT_NE(static_cast<IQueryFileInfo*>(&m_object), m_proxy.Get()) << "a proxy, not the object";
    }
    void TearDown() override
    {
        m_proxy.Reset();
        StopServer();
        EXPECT_EQ(1, m_object.refs) << "the stub let go of the object";
        delete m_registration;
        CoUninitialize();
    }
    void StopServer()
    {
        if (m_server.joinable())
        {
            PostThreadMessageW(m_serverThreadId, WM_QUIT, 0, 0);
            m_server.join();
        }
    }

    RecordingObject m_object;
    ProxyRegistration* m_registration = nullptr;
    std::thread m_server;
    DWORD m_serverThreadId = 0;
    HRESULT m_serverResult = E_FAIL;
    IStream* m_stream = nullptr;
    ComPtr<IQueryFileInfo> m_proxy;
};

TEST_F(ProxyStub, CarriesTheFontRecordAndColourOutputsOfTheTextInterface)
{
    ComPtr<ITextDisplay> pText;
    ASSERT_EQ(S_OK, QueryTo(m_proxy, IID_ITextDisplay, pText));
    LOGFONTW lf = {};
    lf.lfHeight = -24;
    lf.lfWeight = FW_BOLD;
    lf.lfItalic = 1;
    lf.lfPitchAndFamily = 0x22;
    lstrcpyW(lf.lfFaceName, L"Tahoma");
    EXPECT_EQ(S_OK, pText->SetFont(&lf, 1));
    EXPECT_EQ(0, memcmp(&lf, &m_object.lastFont, sizeof(lf)));
    EXPECT_EQ(1, m_object.lastForce);

    ULONG top = 0, bottom = 0, text = 0;
    EXPECT_EQ(S_OK, pText->GetGradientBkColor(&top, &bottom));
    EXPECT_EQ(0x00112233u, top);
    EXPECT_EQ(0x00445566u, bottom);
    EXPECT_EQ(S_OK, pText->GetTextColor(&text));
    EXPECT_EQ(0x00ABCDEFu, text);
}

// The proxy raises for a null reference before anything is sent; its exception frame must turn
// that into a result code and leave the thread's frame chain as it found it: a frame left behind
// would point into a dead stack and take the next exception anywhere.
TEST_F(ProxyStub, NullReferencesAreRefusedByTheProxyAndLeaveNoExceptionFrameBehind)
{
    void* const pBefore = NewestFrame();
    TESSALY_FILEINFO info = {7, 7.0, 7, 7};
    WCHAR path[] = L"C:\\Media\\song.mp3";
    EXPECT_EQ(HRESULT_FROM_WIN32(RPC_X_NULL_REF_POINTER), m_proxy->GetFileInfo(nullptr, &info));
    EXPECT_EQ(0u, info.dwAttributeMask) << "outputs are cleared";
    EXPECT_EQ(0.0, info.dDuration);
    EXPECT_TRUE(m_object.lastPath.empty()) << "nothing reached the object";
    for (int i = 0; i < 1000; ++i)
    {
        ASSERT_EQ(HRESULT_FROM_WIN32(RPC_X_NULL_REF_POINTER), m_proxy->GetFileInfo(i % 2 ? nullptr : path, i % 2 ? &info : nullptr));
        ASSERT_EQ(pBefore, NewestFrame()) << "after call " << i;
    }
    m_object.answer = TESSALY_E_NOTSUPPORTED;
    EXPECT_EQ(TESSALY_E_NOTSUPPORTED, m_proxy->GetFileInfo(path, &info)) << "the object's code, unchanged";
    m_object.answer = S_OK;
    EXPECT_EQ(S_OK, m_proxy->GetFileInfo(path, &info));
    EXPECT_EQ(L"C:\\Media\\song.mp3", m_object.lastPath);
    EXPECT_EQ(TESSALY_FILEINFO_AUDIO_ONLY | TESSALY_FILEINFO_SEEKABLE, info.dwAttributeMask);
    EXPECT_EQ(12.5, info.dDuration);
    EXPECT_EQ(480u, info.dwHeight);
    EXPECT_EQ(pBefore, NewestFrame());
}

TEST_F(ProxyStub, ACallToAVanishedApartmentFailsInsteadOfCrashing)
{
    StopServer(); // the object's apartment is gone; the channel reports it inside the proxy
    TESSALY_FILEINFO info = {7, 7.0, 7, 7};
    WCHAR path[] = L"C:\\Media\\song.mp3";
    const HRESULT hr = m_proxy->GetFileInfo(path, &info);
    // Which code depends on the platform's channel (Wine answers RPC_S_UNKNOWN_IF, Windows
    // RPC_E_DISCONNECTED); what matters is a failure the caller can see.
    EXPECT_TRUE(hr == RPC_E_DISCONNECTED || hr == HRESULT_FROM_WIN32(RPC_S_UNKNOWN_IF)) << std::hex << hr;
    EXPECT_EQ(0u, info.dwAttributeMask) << "outputs are cleared";
    EXPECT_EQ(0.0, info.dDuration);
}

} // namespace
