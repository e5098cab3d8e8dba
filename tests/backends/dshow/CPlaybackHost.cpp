#include "CPlaybackHost.h"

#include <objbase.h>
#include <vfwmsgs.h>

#include <cstdio>

#include "backends/cdda/CDDAGraph.h" // the dispatcher destroys it
#include "tests/support/CMessagePump.h"

CPlaybackHost::CPlaybackHost(int nWidth, int nHeight, std::unique_ptr<CWindowsMediaRoute> pRoute)
{
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    WNDCLASSW wc = {};
    wc.lpfnWndProc = WindowProc;
    wc.hInstance = GetModuleHandleW(nullptr);
    wc.lpszClassName = L"Tessaly.Test.DShowHost";
    RegisterClassW(&wc); // a second host finds it registered
    // A popup has no frame: its client area is the whole window. Shown without activation, Wine
    // hands it to no window manager, whose absence costs two seconds at every destruction.
    m_hWnd = CreateWindowExW(0, wc.lpszClassName, L"host", WS_POPUP, 0, 0, nWidth, nHeight, nullptr, nullptr,
                             wc.hInstance, nullptr);
    SetWindowLongPtrW(m_hWnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    ShowWindow(m_hWnd, SW_SHOWNOACTIVATE);

    CMediaPlayer::BackEnds backEnds = CMediaPlayer::CreateBackEnds();
    m_pDShow = new CDShowPlayerProbe;
    backEnds.players[0].reset(m_pDShow);
    if (pRoute)
        backEnds.pWindowsMediaRoute = std::move(pRoute);
    m_pPlayer.reset(new CMediaPlayer(std::move(backEnds)));
    m_pPlayer->SetEventCallback(&CPlaybackHost::OnEvent, this);
    m_pPlayer->SetParentWindow(m_hWnd); // no back-end is current: the window waits for OpenFile
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
    if (pHost && ((uMsg >= WM_KEYFIRST && uMsg <= WM_KEYLAST) || (uMsg >= WM_MOUSEFIRST && uMsg <= WM_MOUSELAST)))
        pHost->inputs.push_back({uMsg, wParam, lParam});
    return DefWindowProcW(hWnd, uMsg, wParam, lParam);
}

HRESULT CPlaybackHost::OnEvent(DWORD dwEvent, ULONG_PTR ulParam, void* pContext)
{
    const bool bProgress = dwEvent == STREAMING_EVENT_PROGRESS;
    static_cast<CPlaybackHost*>(pContext)->events.push_back(
        {dwEvent, bProgress ? 0 : ulParam, bProgress ? *reinterpret_cast<double*>(ulParam) : 0.0, GetTickCount64()});
    return S_OK;
}

HRESULT CPlaybackHost::Open(const std::wstring& path, TESSALY_FILEINFO* pInfo, DWORD dwPlaybackFlags)
{
    const HRESULT hr = m_pPlayer->Init(path.c_str());
    return FAILED(hr) ? hr : m_pPlayer->OpenFile(path.c_str(), 0, dwPlaybackFlags, pInfo);
}

HRESULT CPlaybackHost::OpenWhole(const std::wstring& path, TESSALY_FILEINFO* pInfo,
                                 const std::function<void()>& beforeEach, const std::function<bool()>& accepted)
{
    HRESULT hr = E_FAIL;
    for (int nAttempt = 0; nAttempt < 4; ++nAttempt)
    {
        beforeEach();
        hr = Open(path, pInfo);
        if (hr != TESSALY_S_PARTIAL_RENDER && hr != VFW_E_CANNOT_RENDER && (FAILED(hr) || accepted()))
            break;
        std::printf("the platform rendered %ls in part (0x%08lx); opening it again\n", path.c_str(),
                    static_cast<unsigned long>(hr));
        m_pPlayer->CloseFile();
    }
    return hr;
}

bool CPlaybackHost::PumpUntil(const std::function<bool()>& done, DWORD dwTimeoutMs)
{
    return CMessagePump::PumpUntil(done, dwTimeoutMs);
}

void CPlaybackHost::PumpFor(DWORD dwMs) { CMessagePump::PumpFor(dwMs); }

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
        if (event.dwCode == STREAMING_EVENT_PROGRESS)
            values.push_back(event.dProgress);
    return values;
}
