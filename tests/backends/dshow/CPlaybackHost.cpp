#include "CPlaybackHost.h"

#include <objbase.h>
#include <vfwmsgs.h>

#include <cstdio>

#include "backends/cdda/CDDAGraph.h"
#include "tests/support/CMessagePump.h"

namespace {

const wchar_t kClassName[] = L"Tessaly.Test.DShowHost";

} // namespace

CPlaybackHost::CPlaybackHost(int nWidth, int nHeight, std::unique_ptr<CWindowsMediaRoute> pRoute)
{
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    WNDCLASSW wc = {};
    wc.lpfnWndProc = WindowProc;
    wc.hInstance = GetModuleHandleW(nullptr);
    wc.lpszClassName = kClassName;
    RegisterClassW(&wc); // a second host finds it registered
    // A popup has no frame: its client area is the whole window.
    m_hWnd = CreateWindowExW(0, kClassName, L"host", WS_POPUP, 0, 0, nWidth, nHeight, nullptr, nullptr,
                             wc.hInstance, nullptr);
    SetWindowLongPtrW(m_hWnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    // Never activated, Wine does not hand the window to a window manager, whose absence would
    // cost two seconds at every destruction.
    ShowWindow(m_hWnd, SW_SHOWNOACTIVATE);

    CMediaPlayer::BackEnds backEnds = CMediaPlayer::CreateBackEnds();
    m_pDShow = new CDShowPlayerProbe;
    backEnds.players[0].reset(m_pDShow);
    if (pRoute)
        backEnds.pWindowsMediaRoute = std::move(pRoute);
    m_pPlayer.reset(new CMediaPlayer(std::move(backEnds)));
    m_pPlayer->SetEventCallback(&CPlaybackHost::OnEvent, this);
    // No back-end is current yet: the window waits for the first OpenFile.
    m_pPlayer->SetParentWindow(m_hWnd);
}

CPlaybackHost::~CPlaybackHost()
{
    m_pPlayer->Destroy();
    m_pPlayer.reset();
    DestroyWindow(m_hWnd);
    PumpFor(0);
    CoUninitialize();
}

LRESULT CALLBACK CPlaybackHost::WindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    auto pHost = reinterpret_cast<CPlaybackHost*>(GetWindowLongPtrW(hWnd, GWLP_USERDATA));
    const bool bInput = (uMsg >= WM_KEYFIRST && uMsg <= WM_KEYLAST) ||
                        (uMsg >= WM_MOUSEFIRST && uMsg <= WM_MOUSELAST);
    if (pHost && bInput)
        pHost->inputs.push_back({uMsg, wParam, lParam});
    return DefWindowProcW(hWnd, uMsg, wParam, lParam);
}

HRESULT CPlaybackHost::OnEvent(DWORD dwEvent, ULONG_PTR ulParam, void* pContext)
{
    auto pHost = static_cast<CPlaybackHost*>(pContext);
    const double dProgress = dwEvent == STREAMING_EVENT_PROGRESS ? *reinterpret_cast<double*>(ulParam) : 0.0;
    pHost->events.push_back({dwEvent, dwEvent == STREAMING_EVENT_PROGRESS ? 0 : ulParam, dProgress,
                             GetTickCount64()});
    return S_OK;
}

HRESULT CPlaybackHost::Open(const std::wstring& path, TESSALY_FILEINFO* pInfo, DWORD dwPlaybackFlags)
{
    const HRESULT hr = m_pPlayer->Init(path.c_str());
    if (FAILED(hr))
        return hr;
    return m_pPlayer->OpenFile(path.c_str(), 0, dwPlaybackFlags, pInfo);
}

HRESULT CPlaybackHost::OpenWhole(const std::wstring& path, TESSALY_FILEINFO* pInfo, const std::function<void()>& beforeEach,
                                 const std::function<bool()>& accepted)
{
    HRESULT hr = E_FAIL;
    for (int nAttempt = 0; nAttempt < 4; ++nAttempt)
    {
        beforeEach();
        hr = Open(path, pInfo);
        if (hr != TESSALY_S_PARTIAL_RENDER && hr != VFW_E_CANNOT_RENDER && (FAILED(hr) || accepted()))
            break;
        std::printf("the platform rendered %ls in part (0x%08lx); opening it again\n", path.c_str(), static_cast<unsigned long>(hr));
        m_pPlayer->CloseFile();
    }
    return hr;
}

bool CPlaybackHost::PumpUntil(const std::function<bool()>& done, DWORD dwTimeoutMs)
{
    return CMessagePump::PumpUntil(done, dwTimeoutMs);
}

void CPlaybackHost::PumpFor(DWORD dwMs)
{
    PumpUntil([] { return false; }, dwMs);
}

bool CPlaybackHost::PumpUntilEnd(DWORD dwTimeoutMs)
{
    return PumpUntil([this] { return Count(STREAMING_EVENT_COMPLETE) + Count(STREAMING_EVENT_ERROR) > 0; },
                     dwTimeoutMs);
}

void CPlaybackHost::Resize(int nWidth, int nHeight)
{
    SetWindowPos(m_hWnd, nullptr, 0, 0, nWidth, nHeight, SWP_NOMOVE | SWP_NOZORDER | SWP_NOACTIVATE);
}

size_t CPlaybackHost::Count(DWORD dwCode) const
{
    size_t n = 0;
    for (const Event& event : events)
        n += event.dwCode == dwCode;
    return n;
}

std::vector<double> CPlaybackHost::Progress() const
{
    std::vector<double> values;
    for (const Event& event : events)
    {
        if (event.dwCode == STREAMING_EVENT_PROGRESS)
            values.push_back(event.dProgress);
    }
    return values;
}
