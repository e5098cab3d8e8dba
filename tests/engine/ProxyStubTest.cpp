// The proxy/stub built from the contract, used between two apartments of this process.
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

// Writes a fixed record, answers with a failure of its own, and remembers the path it was sent.
struct RecordingQuery : public IQueryFileInfo
{
    std::wstring lastPath;
    LONG refs = 1;
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
        *pInfo = {TESSALY_FILEINFO_AUDIO_ONLY, 12.5, 640, 480};
        return TESSALY_E_NOTSUPPORTED;
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

TEST(ProxyStub, NullReferencesAreRefusedLeavingNoFrameBehindAndTheObjectsCodeAndRecordComeBackUnchanged)
{
    ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    DWORD dwCookie = 0, dwServerThread = 0;
    RecordingQuery object;
    IStream* pStream = nullptr;
    HRESULT hr = RegisterProxy(&dwCookie);
    HANDLE hReady = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::thread server([&] { // the object's apartment
        DWORD dwServerCookie = 0;
        MSG msg;
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        PeekMessageW(&msg, nullptr, 0, 0, PM_NOREMOVE); // a queue for WM_QUIT
        dwServerThread = GetCurrentThreadId();
        hr = SUCCEEDED(hr) ? RegisterProxy(&dwServerCookie) : hr;
        hr = SUCCEEDED(hr) ? CoMarshalInterThreadInterfaceInStream(IID_IQueryFileInfo, &object, &pStream) : hr;
        SetEvent(hReady);
        while (GetMessageW(&msg, nullptr, 0, 0) > 0)
            DispatchMessageW(&msg);
        CoRevokeClassObject(dwServerCookie);
        CoUninitialize();
    });
    WaitForSingleObject(hReady, INFINITE);
    CloseHandle(hReady);
    ComPtr<IQueryFileInfo> proxy;
    EXPECT_EQ(S_OK, hr);
    EXPECT_EQ(S_OK, SUCCEEDED(hr) ? CoGetInterfaceAndReleaseStream(pStream, IID_IQueryFileInfo, &proxy) : hr);
    EXPECT_NE(static_cast<IQueryFileInfo*>(&object), proxy.Get());
    TESSALY_FILEINFO info = {7, 7.0, 7, 7};
    WCHAR path[] = L"C:\\Media\\song.mp3";
    void* const pBefore = NewestFrame();
    for (int i = 0; proxy && i < 1000 && !HasFailure(); ++i) // a frame left behind sends a later exception into a dead stack
    {
        info.dwAttributeMask = 7;
        EXPECT_EQ(HRESULT_FROM_WIN32(RPC_X_NULL_REF_POINTER), proxy->GetFileInfo(i % 2 ? nullptr : path, i % 2 ? &info : nullptr));
        EXPECT_EQ(pBefore, NewestFrame()) << "after call " << i;
        EXPECT_EQ(i % 2 ? 0u : 7u, info.dwAttributeMask) << "a given output is cleared";
    }
    EXPECT_TRUE(object.lastPath.empty()) << "nothing reached the object";
    EXPECT_EQ(TESSALY_E_NOTSUPPORTED, proxy ? proxy->GetFileInfo(path, &info) : E_UNEXPECTED);
    EXPECT_EQ(L"C:\\Media\\song.mp3", object.lastPath);
    EXPECT_EQ(12.5, info.dDuration) << "the record written comes back with the object's code";
    proxy.Reset();
    PostThreadMessageW(dwServerThread, WM_QUIT, 0, 0);
    server.join();
    EXPECT_EQ(1, object.refs) << "the stub let go of the object";
    CoRevokeClassObject(dwCookie);
    CoUninitialize();
}

} // namespace
