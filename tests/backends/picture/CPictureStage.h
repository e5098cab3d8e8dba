// A host window of a given client size with the picture back-end parented to it and shown, and
// the host thread's message loop; COM lives as long as the stage.
#pragma once

#include <windows.h>

#include <objbase.h>

#include <string>
#include <vector>

#include "CPictViewerProbe.h"
#include "tests/support/CMessagePump.h"

class CPictureStage
{
public:
    explicit CPictureStage(int nWidth = 200, int nHeight = 200)
    {
        CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
        WNDCLASSW wc = {0, DefWindowProcW, 0, 0, GetModuleHandleW(nullptr), nullptr, nullptr, nullptr, nullptr, L"PictureHost"};
        RegisterClassW(&wc); // a second stage finds it registered
        // A popup has no frame: its client area is the whole window. Never activated, Wine hands
        // it to no window manager (whose absence costs two seconds at every destruction).
        m_hWnd = CreateWindowExW(0, wc.lpszClassName, L"host", WS_POPUP, 0, 0, nWidth, nHeight, nullptr, nullptr,
                                 wc.hInstance, nullptr);
        ShowWindow(m_hWnd, SW_SHOWNOACTIVATE);
        m_viewer.Init();
        m_viewer.SetParentWindow(m_hWnd);
        m_viewer.Activate();
        PumpFor(50);
    }
    ~CPictureStage()
    {
        m_viewer.Destroy();
        DestroyWindow(m_hWnd);
        PumpFor(0);
        CoUninitialize();
    }
    CPictureStage(const CPictureStage&) = delete;
    CPictureStage& operator=(const CPictureStage&) = delete;

    // Opens and lets the window paint what it shows now.
    HRESULT Open(const std::wstring& path, DWORD dwOpenFlags = 0, DWORD dwPlaybackFlags = 0)
    {
        const HRESULT hr = m_viewer.OpenFile(path.c_str(), dwOpenFlags, dwPlaybackFlags);
        UpdateWindow(m_viewer.PictureWindow());
        PumpFor(0);
        return hr;
    }
    // Resizes the host window and tells the back-end, as the Play object does.
    void Resize(int nWidth, int nHeight)
    {
        SetWindowPos(m_hWnd, nullptr, 0, 0, nWidth, nHeight, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
        m_viewer.SetParentWindowSize(static_cast<DWORD>(nWidth), static_cast<DWORD>(nHeight));
        UpdateWindow(m_viewer.PictureWindow());
        PumpFor(0);
    }
    // The messages posted to the host, taken out of its queue in order (none is dispatched).
    std::vector<MSG> PostedToHost()
    {
        std::vector<MSG> posted;
        for (MSG msg; PeekMessageW(&msg, m_hWnd, 0, 0, PM_REMOVE);)
            msg.message == WM_PAINT ? static_cast<void>(ValidateRect(m_hWnd, nullptr)) : posted.push_back(msg);
        return posted;
    }
    bool PumpUntil(const std::function<bool()>& done, DWORD dwMs) { return CMessagePump::PumpUntil(done, dwMs); }
    void PumpFor(DWORD dwMs) { CMessagePump::PumpFor(dwMs); }
    CPictViewerProbe& Viewer() { return m_viewer; }
    HWND Window() const { return m_hWnd; }

private:
    HWND m_hWnd = nullptr;
    CPictViewerProbe m_viewer;
};
