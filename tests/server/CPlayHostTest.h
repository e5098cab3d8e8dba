// A host's side of a Play object for the server's end-to-end cases: a parent window, the object
// created through COM and one recording sink advised on its events, in this thread's apartment.
#pragma once

#include <windows.h>
#include <objbase.h>
#include <ocidl.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "CTestMedia.h"
#include "engine/ComPtr.h"
#include "engine/TessalyContract.h"
#include "tests/support/CRecordingSink.h"

class CPlayHostTest : public ::testing::Test
{
public:
    typedef std::vector<CRecordingSink::Entry> Log;

protected:
    void SetUp() override
    {
        ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
        ASSERT_EQ(S_OK, CoCreateInstance(CLSID_Play, nullptr, CLSCTX_INPROC_SERVER, IID_IPlay2, &m_play));
        m_parent = CreateWindowExW(0, L"STATIC", L"host", WS_POPUP, 0, 0, 320, 240, nullptr, nullptr, nullptr, nullptr);
        ASSERT_EQ(S_OK, m_play->SetParentWindow(static_cast<LONG>(reinterpret_cast<LONG_PTR>(m_parent))));
        ComPtr<IConnectionPointContainer> container;
        ASSERT_EQ(S_OK, QueryTo(m_play, IID_IConnectionPointContainer, container));
        ASSERT_EQ(S_OK, container->FindConnectionPoint(IID_IPlayEvents, &m_events));
        ASSERT_EQ(S_OK, m_events->Advise(&m_sink, &m_dwCookie));
    }
    void TearDown() override
    {
        m_events.Reset();
        m_play.Reset();
        DestroyWindow(m_parent);
        CoUninitialize();
    }
    HRESULT Open(const char* pszName, TESSALY_FILEINFO* pInfo = nullptr)
    {
        std::wstring path = CTestMedia::Path(pszName);
        return m_play->OpenFile(&path[0], 0, TESSALY_PLAYBACK_FLAG_STRETCH, pInfo);
    }
    // Pumps the thread's messages, as a host's loop does, until done() or the time is up.
    bool PumpUntil(const std::function<bool()>& done, DWORD dwMilliseconds)
    {
        const DWORD dwEnd = GetTickCount() + dwMilliseconds;
        while (!done())
        {
            const LONG lLeft = static_cast<LONG>(dwEnd - GetTickCount());
            if (lLeft <= 0)
                return false;
            MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(lLeft), QS_ALLINPUT);
            MSG msg;
            while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE))
            {
                TranslateMessage(&msg);
                DispatchMessageW(&msg);
            }
        }
        return true;
    }
    int Count(const char* pszEvent) const
    {
        int n = 0;
        for (const auto& e : m_log)
            n += e.event == pszEvent;
        return n;
    }
    bool Completed() const { return Count("complete") > 0; }

    Log m_log;
    CRecordingSink m_sink{"host", &m_log};
    ComPtr<IPlay2> m_play;
    ComPtr<IConnectionPoint> m_events;
    DWORD m_dwCookie = 0;
    HWND m_parent = nullptr;
};
