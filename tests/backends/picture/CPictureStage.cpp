#include "CPictureStage.h"

#include <objbase.h>

#include "tests/support/CMessagePump.h"

namespace {

const wchar_t kClassName[] = L"Tessaly.Test.PictureHost";

} // namespace

CPictureStage::CPictureStage(int nWidth, int nHeight)
{
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    WNDCLASSW wc = {};
    wc.lpfnWndProc = WindowProc;
    wc.hInstance = GetModuleHandleW(nullptr);
    wc.lpszClassName = kClassName;
    RegisterClassW(&wc); // a second stage finds it registered
    // A popup has no frame: its client area is the whole window.
    m_hWnd = CreateWindowExW(0, kClassName, L"host", WS_POPUP, 0, 0, nWidth, nHeight, nullptr, nullptr,
                             wc.hInstance, nullptr);
    SetWindowLongPtrW(m_hWnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    // Never activated, Wine does not hand the window to a window manager, whose absence would
    // cost two seconds at every destruction.
    ShowWindow(m_hWnd, SW_SHOWNOACTIVATE);
    m_viewer.Init();
    m_viewer.SetParentWindow(m_hWnd);
    m_viewer.Activate();
    PumpFor(50);
}

CPictureStage::~CPictureStage()
{
    m_viewer.Destroy();
    DestroyWindow(m_hWnd);
    PumpFor(0);
    CoUninitialize();
}

LRESULT CALLBACK CPictureStage::WindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    auto pStage = reinterpret_cast<CPictureStage*>(GetWindowLongPtrW(hWnd, GWLP_USERDATA));
    const bool bInput = (uMsg >= WM_KEYFIRST && uMsg <= WM_KEYLAST) || (uMsg >= WM_MOUSEFIRST && uMsg <= WM_MOUSELAST) ||
                        (uMsg >= WM_NCMOUSEMOVE && uMsg <= WM_NCMBUTTONDBLCLK) || uMsg == WM_MOUSEACTIVATE;
    if (!pStage || !bInput)
        return DefWindowProcW(hWnd, uMsg, wParam, lParam);
    // Recorded only: the default handling of a caption click or an Alt key would enter a modal loop.
    pStage->inputs.push_back({uMsg, wParam, lParam});
    return 0;
}

HRESULT CPictureStage::Open(const std::wstring& path, DWORD dwOpenFlags, DWORD dwPlaybackFlags)
{
    const HRESULT hr = m_viewer.OpenFile(path.c_str(), dwOpenFlags, dwPlaybackFlags);
    UpdateWindow(m_viewer.PictureWindow());
    PumpFor(0);
    return hr;
}

void CPictureStage::Resize(int nWidth, int nHeight)
{
    SetWindowPos(m_hWnd, nullptr, 0, 0, nWidth, nHeight, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
    m_viewer.SetParentWindowSize(static_cast<DWORD>(nWidth), static_cast<DWORD>(nHeight));
    UpdateWindow(m_viewer.PictureWindow());
    PumpFor(0);
}

bool CPictureStage::PumpUntil(const std::function<bool()>& done, DWORD dwTimeoutMs)
{
    return CMessagePump::PumpUntil(done, dwTimeoutMs);
}

void CPictureStage::PumpFor(DWORD dwMs)
{
    CMessagePump::PumpFor(dwMs);
}
