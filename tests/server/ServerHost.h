// A host of the registered library: an apartment; a Play object made through COM under a parent
// window, with one recording sink advised on its events.
#pragma once

#include <windows.h>
#include <objbase.h>
#include <ocidl.h>

#include <gtest/gtest.h>

#include <string>

#include "CTestMedia.h"
#include "engine/ComPtr.h"
#include "engine/TessalyContract.h"
#include "tests/support/CMessagePump.h"
#include "tests/support/CRecordingSink.h"

inline LONG HandleOf(HWND hWnd) { return static_cast<LONG>(reinterpret_cast<LONG_PTR>(hWnd)); }

class ComApartment : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)); }
    void TearDown() override { CoUninitialize(); }
};

class CServerHost : public ComApartment
{
protected:
    void SetUp() override
    {
        ComApartment::SetUp();
        ASSERT_EQ(S_OK, CoCreateInstance(CLSID_Play, nullptr, CLSCTX_INPROC_SERVER, IID_IPlay2, &m_play));
        m_parent = CreateWindowExW(0, L"STATIC", L"host", WS_POPUP, 0, 0, 320, 240, nullptr, nullptr, nullptr, nullptr);
        ASSERT_EQ(S_OK, m_play->SetParentWindow(HandleOf(m_parent)));
        ComPtr<IConnectionPointContainer> container;
        ASSERT_EQ(S_OK, QueryTo(m_play, IID_IConnectionPointContainer, container));
        ASSERT_EQ(S_OK, container->FindConnectionPoint(IID_IPlayEvents, &m_events));
        ASSERT_EQ(S_OK, m_events->Advise(&m_sink, &m_dwCookie));
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
    HRESULT Open(std::wstring path) { return m_play->OpenFile(&path[0], 0, TESSALY_PLAYBACK_FLAG_STRETCH, nullptr); }
    HRESULT Play() { return m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr); }

    std::vector<CRecordingSink::Entry> m_log;
    CRecordingSink m_sink{"host", &m_log};
    ComPtr<IPlay2> m_play;
    ComPtr<IConnectionPoint> m_events;
    DWORD m_dwCookie = 0;
    HWND m_parent = nullptr;
};
