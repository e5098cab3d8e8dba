// A host of the registered library as the server's cases need it: an apartment, a Play object
// created through COM under a parent window, one recording sink advised on its events; plus the
// library's path and the engine's information windows as a host that knows only the contract finds them.
#pragma once

#include <windows.h>
#include <objbase.h>
#include <ocidl.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "CTestMedia.h"
#include "engine/ComPtr.h"
#include "engine/TessalyContract.h"
#include "tests/support/CMessagePump.h"
#include "tests/support/CRecordingSink.h"

#define TESSALY_WIDEN2(x) L##x
#define TESSALY_WIDEN(x) TESSALY_WIDEN2(x)
const wchar_t* const kServerPath = TESSALY_WIDEN(TESSALY_DLL_PATH);

inline LONG HandleOf(HWND hWnd)
{
    return static_cast<LONG>(reinterpret_cast<LONG_PTR>(hWnd));
}

// The information windows among hParent's children: how many, and the last one found.
inline std::pair<HWND, int> InfoWindowsOf(HWND hParent)
{
    std::pair<HWND, int> found(nullptr, 0);
    EnumChildWindows(hParent, [](HWND hWnd, LPARAM lParam) -> BOOL {
        WCHAR wsz[64];
        auto* pFound = reinterpret_cast<std::pair<HWND, int>*>(lParam);
        if (GetClassNameW(hWnd, wsz, 64) && lstrcmpW(wsz, L"INFOWND.Display.WndClass") == 0)
            *pFound = {hWnd, pFound->second + 1};
        return TRUE;
    }, reinterpret_cast<LPARAM>(&found));
    return found;
}

class ComApartment : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)); }
    void TearDown() override { CoUninitialize(); }
};

class CServerHost : public ComApartment
{
public:
    typedef std::vector<CRecordingSink::Entry> Log;

protected:
    void SetUp() override
    {
        ComApartment::SetUp();
        ASSERT_EQ(S_OK, CoCreateInstance(CLSID_Play, nullptr, CLSCTX_INPROC_SERVER, IID_IPlay2, &m_play));
        m_parent = CreateWindowExW(0, L"STATIC", L"host", WS_POPUP, 0, 0, 320, 240, nullptr, nullptr, nullptr, nullptr);
        ASSERT_EQ(S_OK, m_play->SetParentWindow(HandleOf(m_parent)));
        ASSERT_EQ(S_OK, Advise(m_play.Get(), IID_IPlayEvents, &m_sink, &m_events, &m_dwCookie));
    }
    void TearDown() override
    {
        ReleasePlay();
        DestroyWindow(m_parent);
        ComApartment::TearDown();
    }
    void ReleasePlay() // the host's last references: the connection point holds the object too
    {
        m_events.Reset();
        m_play.Reset();
    }
    static HRESULT Advise(IUnknown* pObject, REFIID riid, IUnknown* pSink, ComPtr<IConnectionPoint>* pPoint, DWORD* pdwCookie)
    {
        ComPtr<IConnectionPointContainer> container;
        HRESULT hr = pObject->QueryInterface(IID_IConnectionPointContainer, reinterpret_cast<void**>(container.GetAddressOf()));
        if (SUCCEEDED(hr))
            hr = container->FindConnectionPoint(riid, pPoint->ReleaseAndGetAddressOf());
        return SUCCEEDED(hr) ? (*pPoint)->Advise(pSink, pdwCookie) : hr;
    }
    HRESULT Open(std::wstring path, TESSALY_FILEINFO* pInfo = nullptr)
    {
        return m_play->OpenFile(&path[0], 0, TESSALY_PLAYBACK_FLAG_STRETCH, pInfo);
    }
    HRESULT Open(const char* pszName, TESSALY_FILEINFO* pInfo = nullptr) { return Open(CTestMedia::Path(pszName), pInfo); }
    HRESULT Play() { return m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr); }
    TESSALY_PLAYBACK_STATE State()
    {
        TESSALY_PLAYBACK_STATE state = Playback_State_Error;
        EXPECT_EQ(S_OK, m_play->GetState(&state, nullptr));
        return state;
    }
    static int Count(const Log& log, const char* pszEvent)
    {
        int n = 0;
        for (const auto& e : log)
            n += e.event == pszEvent;
        return n;
    }
    int Count(const char* pszEvent) const { return Count(m_log, pszEvent); }
    std::vector<double> Progress() const
    {
        std::vector<double> progress;
        for (const auto& e : m_log)
            if (e.event == "progress")
                progress.push_back(e.dProgress);
        return progress;
    }
    bool PumpUntil(const std::function<bool()>& done, DWORD dwMs) { return CMessagePump::PumpUntil(done, dwMs); }
    bool PumpUntilCompleted(DWORD dwMs = 15000)
    {
        return PumpUntil([&] { return Count("complete") > 0; }, dwMs);
    }

    Log m_log;
    CRecordingSink m_sink{"host", &m_log};
    ComPtr<IPlay2> m_play;
    ComPtr<IConnectionPoint> m_events;
    DWORD m_dwCookie = 0;
    HWND m_parent = nullptr;
};
