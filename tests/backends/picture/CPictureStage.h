// A host window with the picture back-end parented to it and shown, its state in view; COM as long as it lives.
#pragma once

#include <windows.h>
#include <objbase.h>
#include <string>
#include "backends/picture/CGdiplusPictViewer.h"
#include "tests/support/CMessagePump.h"

struct CPictViewerProbe : CGdiplusPictViewer
{
    HWND PictureWindow() const { return m_hPictWnd; }
    bool Fading() const { return m_bFadePending != 0; }
    bool FadeTimerOn() const { return m_bFadeTimerOn != 0; }
    HBITMAP FadeFrom() const { return m_hbmFadeFrom; }
    HBITMAP FadeTo() const { return m_hbmFadeTo; }
};

class CPictureStage
{
public:
    explicit CPictureStage(int nWidth = 200, int nHeight = 200)
    {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        WNDCLASSW wc = {0, DefWindowProcW, 0, 0, GetModuleHandleW(nullptr), nullptr, nullptr, nullptr, nullptr, L"PictureHost"};
        RegisterClassW(&wc); // a second stage finds it registered
        // A popup: its client area is the whole window. Never activated: Wine hands it to no window manager.
        m_hWnd = CreateWindowExW(0, wc.lpszClassName, L"host", WS_POPUP, 0, 0, nWidth, nHeight, nullptr, nullptr, wc.hInstance, nullptr);
        ShowWindow(m_hWnd, SW_SHOWNOACTIVATE);
        m_viewer.Init();
        m_viewer.SetParentWindow(m_hWnd);
        m_viewer.Activate();
        CMessagePump::PumpFor(50);
    }
    ~CPictureStage()
    {
        m_viewer.Destroy();
        DestroyWindow(m_hWnd);
        CMessagePump::PumpFor(0);
        CoUninitialize();
    }
    HRESULT Open(const std::wstring& path, DWORD dwOpenFlags = 0, DWORD dwPlaybackFlags = 0)
    {
        const HRESULT hr = m_viewer.OpenFile(path.c_str(), dwOpenFlags, dwPlaybackFlags);
        UpdateWindow(m_viewer.PictureWindow());
        CMessagePump::PumpFor(0);
        return hr;
    }
    bool FadeEnds() { return CMessagePump::PumpUntil([&] { return !m_viewer.Fading(); }, 3000); }
    CPictViewerProbe& Viewer() { return m_viewer; }
    HWND Window() const { return m_hWnd; }

private:
    HWND m_hWnd = nullptr;
    CPictViewerProbe m_viewer;
};
