#include "hosts/player/CPlayerWindow.h"

#include <commctrl.h>
#include <objbase.h>

#include <cstdio>

#include "hosts/common/CFullPath.h"
#include "hosts/common/CResultCode.h"
#include "hosts/player/CFileChooser.h"
#include "hosts/player/CMediaTitle.h"
#include "hosts/player/CScreenshot.h"

namespace {

const wchar_t kMainClass[] = L"TessalyPlayer.Main";
const wchar_t kVideoClass[] = L"TessalyPlayer.Video";
const UINT WM_APP_PLAY_CURRENT = WM_APP + 1;
const UINT WM_APP_MOVE_ON = WM_APP + 2;
const UINT_PTR kScreenshotTimer = 1;
const double kSeekStep = 5.0;

void RegisterClasses(HINSTANCE hInstance, WNDPROC pfnMainProc)
{
    WNDCLASSEXW wc = {};
    wc.cbSize = sizeof(wc);
    wc.hInstance = hInstance;
    wc.hCursor = LoadCursorW(nullptr, IDC_ARROW);

    wc.lpfnWndProc = DefWindowProcW; // the engine draws here; the player only sizes it
    wc.hbrBackground = static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH));
    wc.lpszClassName = kVideoClass;
    RegisterClassExW(&wc);

    wc.hbrBackground = GetSysColorBrush(COLOR_BTNFACE);
    wc.hIcon = LoadIconW(nullptr, IDI_APPLICATION);
    wc.lpfnWndProc = pfnMainProc;
    wc.lpszClassName = kMainClass;
    RegisterClassExW(&wc);
}

std::wstring Seconds(double d)
{
    wchar_t wsz[32];
    swprintf(wsz, 32, L"%.3f", d);
    return wsz;
}

} // namespace

CPlayerWindow::CPlayerWindow(const CPlayerOptions& options, const CEventLog& log) : m_options(options), m_log(log)
{
    for (const std::wstring& file : options.Files())
        m_playlist.Add(CFullPath::Of(file));
}

CPlayerWindow::~CPlayerWindow()
{
    if (m_hWnd)
        DestroyWindow(m_hWnd);
    if (m_hFont)
        DeleteObject(m_hFont);
}

HRESULT CPlayerWindow::Create(int nShow)
{
    HINSTANCE hInstance = GetModuleHandleW(nullptr);
    RegisterClasses(hInstance, WndProc);
    NONCLIENTMETRICSW metrics = {};
    metrics.cbSize = sizeof(metrics);
    if (SystemParametersInfoW(SPI_GETNONCLIENTMETRICS, sizeof(metrics), &metrics, 0))
        m_hFont = CreateFontIndirectW(&metrics.lfMessageFont);

    if (!CreateWindowExW(WS_EX_ACCEPTFILES, kMainClass, L"Tessaly Player", WS_OVERLAPPEDWINDOW | WS_CLIPCHILDREN,
                         CW_USEDEFAULT, CW_USEDEFAULT, 720, 560, nullptr, nullptr, hInstance, this))
        return FAILED(m_hrEngine) ? m_hrEngine : HRESULT_FROM_WIN32(GetLastError());

    ShowWindow(m_hWnd, nShow);
    UpdateWindow(m_hWnd);
    PostMessageW(m_hWnd, WM_APP_PLAY_CURRENT, 0, 0);
    return S_OK;
}

LRESULT CALLBACK CPlayerWindow::WndProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    if (uMsg == WM_NCCREATE)
    {
        auto* pThis = static_cast<CPlayerWindow*>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams);
        pThis->m_hWnd = hWnd;
        SetWindowLongPtrW(hWnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(pThis));
    }
    auto* pThis = reinterpret_cast<CPlayerWindow*>(GetWindowLongPtrW(hWnd, GWLP_USERDATA));
    return pThis ? pThis->OnMessage(uMsg, wParam, lParam) : DefWindowProcW(hWnd, uMsg, wParam, lParam);
}

LRESULT CPlayerWindow::OnMessage(UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    switch (uMsg)
    {
    case WM_CREATE:
        return OnCreate() ? 0 : -1;
    case WM_SIZE:
        Layout();
        return 0;
    case WM_COMMAND:
        OnCommand(LOWORD(wParam));
        return 0;
    case WM_DROPFILES:
        AddFiles(CFileChooser::Dropped(reinterpret_cast<HDROP>(wParam)));
        return 0;
    case WM_TIMER:
        if (wParam == kScreenshotTimer)
            TakeScreenshot();
        return 0;
    case WM_APP_PLAY_CURRENT:
        PlayCurrent();
        return 0;
    case WM_APP_MOVE_ON:
        MoveOn(true);
        return 0;
    case WM_GETMINMAXINFO:
        reinterpret_cast<MINMAXINFO*>(lParam)->ptMinTrackSize = {560, 240};
        return 0;
    case WM_DESTROY:
        OnDestroy();
        return 0;
    case WM_NCDESTROY:
        SetWindowLongPtrW(m_hWnd, GWLP_USERDATA, 0);
        m_hWnd = nullptr;
        break;
    }
    return DefWindowProcW(m_hWnd, uMsg, wParam, lParam);
}

bool CPlayerWindow::OnCreate()
{
    HINSTANCE hInstance = GetModuleHandleW(nullptr);
    // Made empty: the engine makes its information panel when it first hears of a new size.
    m_hVideo = CreateWindowExW(0, kVideoClass, nullptr, WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN, 0, 0, 0, 0, m_hWnd,
                               nullptr, hInstance, nullptr);
    m_hStatus = CreateWindowExW(0, STATUSCLASSNAMEW, nullptr, WS_CHILD | WS_VISIBLE | SBARS_SIZEGRIP, 0, 0, 0, 0, m_hWnd,
                                nullptr, hInstance, nullptr);
    m_controls.Create(m_hWnd, m_hFont);
    m_hrEngine = CreateEngine();
    if (FAILED(m_hrEngine))
        return false;
    SetStatus(m_playlist.Size() ? L"Starting..." : L"Drop media files here, or press Ctrl+O to open some.");
    return true;
}

HRESULT CPlayerWindow::CreateEngine()
{
    HRESULT hr = CoCreateInstance(CLSID_Play, nullptr, CLSCTX_INPROC_SERVER, IID_IPlay, &m_play);
    if (FAILED(hr))
        return hr;
    Adopt(m_events, new CPlayerEvents(this));
    hr = m_connection.Connect(m_play.Get(), IID_IPlayEvents, m_events.Get());
    if (SUCCEEDED(hr))
        hr = m_play->SetParentWindow(static_cast<LONG>(reinterpret_cast<LONG_PTR>(m_hVideo)));
    if (SUCCEEDED(hr))
        m_panel.Attach(m_play.Get(), m_hVideo);
    return hr;
}

void CPlayerWindow::OnDestroy()
{
    KillTimer(m_hWnd, kScreenshotTimer);
    if (m_events)
        m_events->Detach();
    m_connection.Disconnect();
    if (m_play)
        m_play->CloseFile();
    m_panel.Detach();
    m_play.Reset();
    m_events.Reset();
    PostQuitMessage(0);
}

void CPlayerWindow::Layout()
{
    RECT rc;
    GetClientRect(m_hWnd, &rc);
    SendMessageW(m_hStatus, WM_SIZE, 0, 0);
    RECT rcStatus;
    GetWindowRect(m_hStatus, &rcStatus);
    const int nStatus = rcStatus.bottom - rcStatus.top;
    const int nControlsTop = rc.bottom - nStatus - CControlBar::Height();
    const int nVideoHeight = nControlsTop > 1 ? nControlsTop : 1;
    MoveWindow(m_hVideo, 0, 0, rc.right, nVideoHeight, TRUE);
    m_controls.Layout(nControlsTop, rc.right);
    m_panel.Resize(static_cast<UINT>(rc.right), static_cast<UINT>(nVideoHeight));
}

bool CPlayerWindow::HandleKey(WPARAM vk)
{
    switch (vk)
    {
    case VK_SPACE:
        TogglePause();
        return true;
    case VK_LEFT:
        SeekTo(m_dPosition - kSeekStep);
        return true;
    case VK_RIGHT:
        SeekTo(m_dPosition + kSeekStep);
        return true;
    case VK_HOME:
        SeekTo(0.0);
        return true;
    case VK_ESCAPE:
        Stop();
        return true;
    case VK_PRIOR:
        MoveOn(false);
        return true;
    case VK_NEXT:
        MoveOn(true);
        return true;
    case 'O':
        if (GetKeyState(VK_CONTROL) < 0)
        {
            AddFiles(CFileChooser::Choose(m_hWnd, m_play.Get()));
            return true;
        }
        return false;
    default:
        return false;
    }
}

void CPlayerWindow::OnCommand(int nId)
{
    switch (nId)
    {
    case CControlBar::IdOpen:
        AddFiles(CFileChooser::Choose(m_hWnd, m_play.Get()));
        break;
    case CControlBar::IdPrevious:
        MoveOn(false);
        break;
    case CControlBar::IdPlayPause:
        TogglePause();
        break;
    case CControlBar::IdStop:
        Stop();
        break;
    case CControlBar::IdBack:
        SeekTo(m_dPosition - kSeekStep);
        break;
    case CControlBar::IdForward:
        SeekTo(m_dPosition + kSeekStep);
        break;
    case CControlBar::IdNext:
        MoveOn(true);
        break;
    }
    SetFocus(m_hWnd); // keys go on working after a click
}

void CPlayerWindow::AddFiles(const std::vector<std::wstring>& files)
{
    for (const std::wstring& file : files)
    {
        m_playlist.Add(CFullPath::Of(file));
        m_log.Write("add", CFullPath::Of(file));
    }
    if (!m_bOpen && !files.empty())
        PlayCurrent();
}

void CPlayerWindow::PlayCurrent()
{
    if (!m_playlist.HasCurrent())
    {
        if (m_playlist.Size() || m_options.ExitAfterComplete())
            FinishPlaylist();
        return;
    }
    const std::wstring& path = m_playlist.Current();
    m_play->CloseFile();
    m_bOpen = false;
    m_dPosition = 0.0;
    m_dDuration = 0.0;
    m_controls.ShowProgress(0.0, 0.0);
    m_log.Write("open", path);

    TESSALY_FILEINFO info = {};
    const HRESULT hrOpen = m_play->OpenFile(const_cast<LPWSTR>(path.c_str()), 0, TESSALY_PLAYBACK_FLAG_STRETCH, &info);
    if (FAILED(hrOpen))
    {
        ReportError(L"open", hrOpen);
        PostMessageW(m_hWnd, WM_APP_MOVE_ON, 0, 0);
        return;
    }
    m_bOpen = true;
    m_dDuration = info.dDuration;
    wchar_t wszInfo[128];
    swprintf(wszInfo, 128, L"duration=%.3f size=%lux%lu mask=0x%lx result=", info.dDuration, info.dwWidth,
             info.dwHeight, info.dwAttributeMask);
    m_log.Write("opened", wszInfo + CResultCode::HexAndName(hrOpen));

    const bool bAudioOnly = (info.dwAttributeMask & TESSALY_FILEINFO_AUDIO_ONLY) != 0;
    m_panel.ShowFor({path, info.dDuration, m_playlist.CurrentIndex(), m_playlist.Size()}, bAudioOnly);

    const HRESULT hr = m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr);
    if (FAILED(hr))
    {
        ReportError(L"play", hr);
        PostMessageW(m_hWnd, WM_APP_MOVE_ON, 0, 0);
        return;
    }
    m_controls.ShowPaused(false);
    m_controls.ShowProgress(0.0, m_dDuration);
    m_log.Write("play");
    // The screenshot's clock starts with the first file that plays, not with the window, so that
    // a slow start does not photograph an empty window.
    if (!m_options.Screenshot().empty() && !m_bScreenshotDone && !m_bScreenshotTimed)
    {
        m_bScreenshotTimed = true;
        SetTimer(m_hWnd, kScreenshotTimer, static_cast<UINT>(m_options.ScreenshotAfter() * 1000.0), nullptr);
    }

    const std::wstring title = CMediaTitle::Of(path);
    SetWindowTextW(m_hWnd, (title + L" - Tessaly Player").c_str());
    std::wstring status = L"Playing " + std::to_wstring(m_playlist.CurrentIndex() + 1) + L" of " +
                          std::to_wstring(m_playlist.Size()) + L": " + title;
    if (hrOpen != S_OK) // opened only in part: say what is missing
        status += L" \x2014 " + CResultCode::Message(hrOpen);
    SetStatus(status);
}

void CPlayerWindow::MoveOn(bool bForward)
{
    if (bForward ? m_playlist.MoveNext() : m_playlist.MovePrevious())
        PlayCurrent();
    else if (bForward)
        FinishPlaylist();
}

void CPlayerWindow::FinishPlaylist()
{
    // A screenshot still due is taken now, while the last file's picture or panel is up.
    if (m_options.ExitAfterComplete())
        TakeScreenshot();
    if (m_bOpen)
        m_play->CloseFile();
    m_bOpen = false;
    m_controls.ShowPaused(true);
    m_panel.Hide();
    m_log.Write("end", L"files=" + std::to_wstring(m_playlist.Size()) + L" errors=" + std::to_wstring(m_nErrors));
    if (m_nErrors == 0)
        SetStatus(L"Finished the playlist.");
    if (m_options.ExitAfterComplete())
        DestroyWindow(m_hWnd);
}

void CPlayerWindow::TogglePause()
{
    if (!m_bOpen)
    {
        if (!m_playlist.HasCurrent() && m_playlist.Size())
            m_playlist.MovePrevious(); // after the end, play the last file again
        PlayCurrent();
        return;
    }
    TESSALY_PLAYBACK_STATE state = Playback_State_Stop;
    m_play->GetState(&state, nullptr);
    const bool bPause = state == Playback_State_Play;
    const HRESULT hr = m_play->PlaybackControl(bPause ? TESSALY_PLAYBACK_CONTROL_PAUSE : TESSALY_PLAYBACK_CONTROL_PLAY, 0,
                                               nullptr);
    if (FAILED(hr))
    {
        ReportError(bPause ? L"pause" : L"resume", hr);
        return;
    }
    m_controls.ShowPaused(bPause);
    m_log.Write(bPause ? "pause" : "resume");
    SetStatus(bPause ? L"Paused." : L"Playing.");
}

void CPlayerWindow::Stop()
{
    if (!m_bOpen)
        return;
    const HRESULT hr = m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_STOP, 0, nullptr);
    if (FAILED(hr))
    {
        ReportError(L"stop", hr);
        return;
    }
    m_dPosition = 0.0;
    m_controls.ShowPaused(true);
    m_controls.ShowProgress(0.0, m_dDuration);
    m_log.Write("stop");
    SetStatus(L"Stopped.");
}

void CPlayerWindow::SeekTo(double dPosition)
{
    if (!m_bOpen)
        return;
    if (dPosition > m_dDuration)
        dPosition = m_dDuration;
    if (dPosition < 0.0)
        dPosition = 0.0;
    const HRESULT hr =
        m_play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_SEEKTOPOS, sizeof(dPosition), reinterpret_cast<BYTE*>(&dPosition));
    if (FAILED(hr))
    {
        // A refused seek leaves playback as it was: worth a word, not an error of the run.
        m_log.Write("refused", L"seek " + Seconds(dPosition) + L" " + CResultCode::HexAndName(hr));
        SetStatus(L"Cannot seek: " + CResultCode::Message(hr) + L" (" + CResultCode::HexAndName(hr) + L")");
        return;
    }
    m_dPosition = dPosition;
    m_controls.ShowProgress(dPosition, m_dDuration);
    m_log.Write("seek", Seconds(dPosition));
}

void CPlayerWindow::OnPlaybackProgress(double dSeconds, int nState)
{
    m_dPosition = dSeconds;
    m_log.Write("progress", Seconds(dSeconds) + L" state=" + std::to_wstring(nState));
    m_controls.ShowProgress(dSeconds, m_dDuration);
}

void CPlayerWindow::OnPlaybackComplete()
{
    m_log.Write("complete", m_playlist.Current());
    m_controls.ShowProgress(m_dDuration, m_dDuration);
    // Moving on closes this file; do it from the message loop, not inside the engine's event.
    PostMessageW(m_hWnd, WM_APP_MOVE_ON, 0, 0);
}

void CPlayerWindow::OnPlaybackError(HRESULT hrError)
{
    ReportError(L"play", hrError);
    PostMessageW(m_hWnd, WM_APP_MOVE_ON, 0, 0);
}

void CPlayerWindow::ReportError(const wchar_t* pwszStep, HRESULT hr)
{
    ++m_nErrors;
    const std::wstring& path = m_playlist.Current();
    m_log.Write("error", CResultCode::HexAndName(hr) + L" " + pwszStep + L" " + path + L": " + CResultCode::Message(hr));
    SetStatus(L"Cannot " + std::wstring(pwszStep) + L" " + CMediaTitle::FromName(path) + L": " + CResultCode::Message(hr) +
              L" (" + CResultCode::HexAndName(hr) + L")");
}

void CPlayerWindow::TakeScreenshot()
{
    KillTimer(m_hWnd, kScreenshotTimer);
    if (m_bScreenshotDone || m_options.Screenshot().empty())
        return;
    m_bScreenshotDone = true;
    // Paint what is still pending (the engine's panel after the last open) before reading it.
    RedrawWindow(m_hWnd, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
    const HRESULT hr = CScreenshot::Save(m_hWnd, m_options.Screenshot());
    if (SUCCEEDED(hr))
        m_log.Write("screenshot", CFullPath::Of(m_options.Screenshot()));
    else
        ReportError(L"write the screenshot", hr);
}

void CPlayerWindow::SetStatus(const std::wstring& text)
{
    SendMessageW(m_hStatus, SB_SETTEXTW, 0, reinterpret_cast<LPARAM>(text.c_str()));
}
