// The generated proxy/stub used for real: an object served by an apartment of its own thread,
// called from this one through the proxy built from the contract.
#include <windows.h>
#include <objbase.h>

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "engine/ComPtr.h"
#include "engine/TessalyContract.h"

extern "C" HRESULT WINAPI PrxDllGetClassObject(REFCLSID rclsid, REFIID riid, void** ppv);
#if defined(__x86_64__)
extern "C" EXCEPTION_REGISTRATION_RECORD* tessaly_rpc_get_frame(void);
#endif

namespace {

// The newest exception frame of the proxy code on this thread.
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

// Answers a fixed record or the chosen failure, remembering the path it was sent.
class RecordingQuery : public IQueryFileInfo
{
public:
    std::wstring lastPath;
    LONG refs = 1;
    HRESULT answer = S_OK;

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override
    {
        *ppv = riid == IID_IUnknown || riid == IID_IQueryFileInfo ? this : nullptr;
        return *ppv ? (AddRef(), S_OK) : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return InterlockedIncrement(&refs); }
    STDMETHODIMP_(ULONG) Release() override { return InterlockedDecrement(&refs); }
    STDMETHODIMP GetFileInfo(LPWSTR wszFilepath, TESSALY_FILEINFO* pInfo) override
    {
        lastPath = wszFilepath;
        if (SUCCEEDED(answer))
            *pInfo = {TESSALY_FILEINFO_AUDIO_ONLY, 12.5, 640, 480};
        return answer;
    }
};

// The built-in proxy class made known to the calling apartment without the registry.
HRESULT RegisterProxy(DWORD* pdwCookie)
{
    ComPtr<IUnknown> factory;
    HRESULT hr = PrxDllGetClassObject(IID_IPlay2, IID_IUnknown, &factory);
    hr = SUCCEEDED(hr) ? CoRegisterClassObject(IID_IPlay2, factory.Get(), CLSCTX_INPROC_SERVER, REGCLS_MULTIPLEUSE, pdwCookie) : hr;
    return SUCCEEDED(hr) ? CoRegisterPSClsid(IID_IQueryFileInfo, IID_IPlay2) : hr;
}

// The object is served by an apartment of its own thread; this apartment holds a proxy.
class ProxyStub : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
        ASSERT_EQ(S_OK, RegisterProxy(&m_dwCookie));
        HANDLE hReady = CreateEventW(nullptr, TRUE, FALSE, nullptr);
        IStream* pStream = nullptr;
        HRESULT hr = E_FAIL;
        m_server = std::thread([&] {
            CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
            DWORD dwCookie = 0;
            MSG msg;
            PeekMessageW(&msg, nullptr, 0, 0, PM_NOREMOVE); // a queue for WM_QUIT
            m_dwServerThread = GetCurrentThreadId();
            hr = RegisterProxy(&dwCookie);
            hr = SUCCEEDED(hr) ? CoMarshalInterThreadInterfaceInStream(IID_IQueryFileInfo, &m_object, &pStream) : hr;
            SetEvent(hReady);
            while (GetMessageW(&msg, nullptr, 0, 0) > 0)
                DispatchMessageW(&msg);
            CoRevokeClassObject(dwCookie);
            CoUninitialize();
        });
        WaitForSingleObject(hReady, INFINITE);
        CloseHandle(hReady);
        ASSERT_EQ(S_OK, hr);
        ASSERT_EQ(S_OK, CoGetInterfaceAndReleaseStream(pStream, IID_IQueryFileInfo, &m_proxy));
        ASSERT_NE(static_cast<IQueryFileInfo*>(&m_object), m_proxy.Get());
    }
    void TearDown() override
    {
        m_proxy.Reset();
        StopServer();
        EXPECT_EQ(1, m_object.refs) << "the stub let go of the object";
        CoRevokeClassObject(m_dwCookie);
        CoUninitialize();
    }
    void StopServer()
    {
        if (m_server.joinable())
            PostThreadMessageW(m_dwServerThread, WM_QUIT, 0, 0), m_server.join();
    }
    RecordingQuery m_object;
    DWORD m_dwCookie = 0, m_dwServerThread = 0;
    std::thread m_server;
    ComPtr<IQueryFileInfo> m_proxy;
    TESSALY_FILEINFO m_info = {7, 7.0, 7, 7};
    WCHAR m_path[32] = L"C:\\Media\\song.mp3";
};

TEST_F(ProxyStub, NullReferencesAreRefusedLeavingNoFrameBehindAndTheObjectsCodeAndRecordPassUnchanged)
{
    void* const pBefore = NewestFrame();
    for (int i = 0; i < 1000; ++i) // a frame left behind would send a later exception into a dead stack
    {
        m_info.dwAttributeMask = 7;
        ASSERT_EQ(HRESULT_FROM_WIN32(RPC_X_NULL_REF_POINTER), m_proxy->GetFileInfo(i % 2 ? nullptr : m_path, i % 2 ? &m_info : nullptr));
        ASSERT_EQ(pBefore, NewestFrame()) << "after call " << i;
        ASSERT_EQ(i % 2 ? 0u : 7u, m_info.dwAttributeMask) << "a given output is cleared";
    }
    EXPECT_TRUE(m_object.lastPath.empty()) << "nothing reached the object";
    m_object.answer = TESSALY_E_NOTSUPPORTED;
    EXPECT_EQ(TESSALY_E_NOTSUPPORTED, m_proxy->GetFileInfo(m_path, &m_info));
    m_object.answer = S_OK;
    EXPECT_EQ(S_OK, m_proxy->GetFileInfo(m_path, &m_info));
    EXPECT_EQ(L"C:\\Media\\song.mp3", m_object.lastPath);
    EXPECT_EQ((std::vector<double>{TESSALY_FILEINFO_AUDIO_ONLY, 12.5, 640, 480}),
              (std::vector<double>{double(m_info.dwAttributeMask), m_info.dDuration, double(m_info.dwWidth), double(m_info.dwHeight)}));
    EXPECT_EQ(pBefore, NewestFrame());
}

TEST_F(ProxyStub, ACallToAGoneApartmentFailsAndClearsTheOutputs)
{
    StopServer();
    const HRESULT hr = m_proxy->GetFileInfo(m_path, &m_info); // Windows: RPC_E_DISCONNECTED; Wine: RPC_S_UNKNOWN_IF
    EXPECT_TRUE(hr == RPC_E_DISCONNECTED || hr == HRESULT_FROM_WIN32(RPC_S_UNKNOWN_IF)) << std::hex << hr;
    EXPECT_EQ(0u, m_info.dwAttributeMask);
    EXPECT_EQ(0.0, m_info.dDuration);
}

} // namespace
