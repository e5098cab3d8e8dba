#include "backends/quicktime/CQTAudioPlayer.h"

#include <new>

#include "backends/quicktime/CQTPlayer.h"
#include "backends/quicktime/HostInput.h"
#include "base/CUtility.h"
#include "base/EngineMessages.h"
#include "engine/CDllModule.h"
#include "engine/TessalyContract.h"
#include "trace/Trace.h"

HWND g_hQTAudioHandlerWnd = nullptr;
volatile LONG g_bQTAudioQuit = 0;
volatile LONG g_bQTAudioDone = 0;
HANDLE g_hQTAudioReady = nullptr;
QTAudioThreadArgs g_QTAudioThreadArgs = {nullptr, nullptr};

namespace {

const LPCWSTR g_FileExt[] = {
    L".AIFF", L".AIF", L".AIFC", L".CDDA", L".AMR", L".AU", L".SND", L".ULW", L".M4A", L".M4B",
    L".M4P", L".GSM", L".AAC", L".ADTS"};

// The worker polls rather than blocks, so that it sees the quit flag this soon.
const DWORD kWorkerPollMs = 10;

DWORD RemainingMs(ULONGLONG ullStart, DWORD dwLimitMs)
{
    const ULONGLONG ullElapsed = GetTickCount64() - ullStart;
    return ullElapsed >= dwLimitMs ? 0 : static_cast<DWORD>(dwLimitMs - ullElapsed);
}

} // namespace

CQTAudioPlayer::CQTAudioPlayer()
{
    m_ppwszFileExt = g_FileExt;
    m_dwFileExtCount = ARRAYSIZE(g_FileExt);
    g_hQTAudioHandlerWnd = nullptr;
    g_bQTAudioQuit = 0;
    g_bQTAudioDone = 0;
}

// A player the dispatcher never destroyed still ends its worker and gives back what it took.
CQTAudioPlayer::~CQTAudioPlayer()
{
    if (m_pQT || m_nQTRefs > 0 || m_hThread || m_hBackgroundWnd)
        CQTAudioPlayer::Destroy();
}

HRESULT CQTAudioPlayer::CheckQuickTime(bool bNeedsMovieObject) const
{
    if (!g_DllModule.IsQTInstalled())
    {
        TESSALY_TRACE("CQTAudioPlayer> QT components not installed...");
        return TESSALY_E_QT_NOTINSTALLED;
    }
    if (!g_DllModule.IsQTVersionSupported())
    {
        TESSALY_TRACE("CQTAudioPlayer> QT components version is not compatible...");
        return TESSALY_E_QT_VERSION;
    }
    if (bNeedsMovieObject && !m_pQT)
    {
        TESSALY_TRACE("CQTAudioPlayer> QT object is null, call Init first...");
        return E_FAIL;
    }
    return S_OK;
}

// Unlike the video back-end this one never counts as initialised, so the dispatcher calls Init
// for every file it brings; only the first successful one does anything.
HRESULT CQTAudioPlayer::Init()
{
    if (m_pQT)
        return S_OK;
    g_DllModule.InitQT();
    ++m_nQTRefs;
    const HRESULT hr = CheckQuickTime(false);
    if (FAILED(hr))
        return hr;
    m_pQT.reset(new (std::nothrow) CQuickTime);
    return m_pQT ? S_OK : E_OUTOFMEMORY;
}

void CQTAudioPlayer::Destroy()
{
    // Releases a parenting that still waits for the worker.
    if (g_hQTAudioReady)
        SetEvent(g_hQTAudioReady);
    m_hWndParent = nullptr;
    if (m_pQT)
    {
        m_pQT->SetNotifyWindow(nullptr);
        // The movie goes on this thread, where it was made; its port goes in the worker, where
        // it was made, before the worker ends.
        m_pQT->CloseMovie();
        if (m_hThread && GetWindowThreadProcessId(g_hQTAudioHandlerWnd, nullptr) == m_dwThreadId)
            SendAttachPort(nullptr);
    }
    if (EndWorker())
    {
        // Only now can no message of the worker reach the movie object any more.
        if (m_pQT)
            m_pQT->SetPortWindow(nullptr);
        m_pQT.reset();
    }
    else
    {
        // A worker still running would use whatever it reaches: it is cut off from this object,
        // and the movie object is left to it.
        if (IsWindow(g_hQTAudioHandlerWnd))
            SetWindowLongPtrW(g_hQTAudioHandlerWnd, GWLP_USERDATA, 0);
        static_cast<void>(m_pQT.release());
    }
    // The worker destroyed its window on its way out: only the owning thread can.
    g_hQTAudioHandlerWnd = nullptr;
    CUtility::DestroyInternalWindow(&m_hBackgroundWnd);
    m_bReleasePort = 0;
    for (; m_nQTRefs > 0; --m_nQTRefs)
        g_DllModule.DeInitQT();
}

// Waits for the worker to leave, taking the messages it sends this thread meanwhile (its window
// is a child of this thread's windows, so destroying it sends here).
bool CQTAudioPlayer::EndWorker()
{
    if (!m_hThread)
        return true;
    g_bQTAudioQuit = 1;
    HANDLE hThread = m_hThread.get();
    const ULONGLONG ullStart = GetTickCount64();
    DWORD dwWait;
    for (;;)
    {
        dwWait = MsgWaitForMultipleObjects(1, &hThread, FALSE, RemainingMs(ullStart, kWorkerLimitMs), QS_SENDMESSAGE);
        if (dwWait != WAIT_OBJECT_0 + 1)
            break;
        MSG msg;
        PeekMessageW(&msg, nullptr, 0, 0, PM_NOREMOVE | PM_QS_SENDMESSAGE);
    }
    if (dwWait != WAIT_OBJECT_0)
    {
        // Left running: it may still signal the ready event, which therefore stays open.
        TESSALY_TRACE("E:CQTAudioPlayer::EndWorker> the worker thread did not end in time");
    }
    else if (g_hQTAudioReady)
    {
        CloseHandle(g_hQTAudioReady);
        g_hQTAudioReady = nullptr;
    }
    m_hThread.reset();
    m_dwThreadId = 0;
    return dwWait == WAIT_OBJECT_0;
}

void CQTAudioPlayer::SendAttachPort(HWND hWnd) const
{
    DWORD_PTR dwResult = 0;
    if (!SendMessageTimeoutW(g_hQTAudioHandlerWnd, WM_QT_ATTACH_PORT, reinterpret_cast<WPARAM>(hWnd), 0,
                             SMTO_NORMAL, kWorkerLimitMs, &dwResult))
        TESSALY_TRACE("E:CQTAudioPlayer::SendAttachPort> the worker thread did not take WM_QT_ATTACH_PORT");
}

HRESULT CQTAudioPlayer::SetParentWindow(HWND hWndParent)
{
    if (hWndParent == m_hWndParent)
        return S_OK;
    HRESULT hr = CheckQuickTime(true);
    if (FAILED(hr))
        return hr;
    hr = CreateBackgroundWindow(&m_hBackgroundWnd, hWndParent, L"QTAudioPlayer.Background.WndClass",
                                L"QTAudioPlayer.Background.Window", DefWindowProcW, this);
    if (FAILED(hr))
        return hr;

    bool bDone = false;
    if (!g_hQTAudioHandlerWnd)
    {
        // Without a parent there is nothing to make the worker's window a child of, nor any
        // port to detach.
        bDone = !hWndParent || StartWorker(hWndParent);
    }
    else if (!hWndParent)
    {
        ShowWindow(g_hQTAudioHandlerWnd, SW_HIDE);
        bDone = SetParent(g_hQTAudioHandlerWnd, nullptr) != nullptr;
    }
    else if (SetParent(g_hQTAudioHandlerWnd, hWndParent))
    {
        SetForegroundWindow(g_hQTAudioHandlerWnd);
        ShowWindow(g_hQTAudioHandlerWnd, SW_SHOWNORMAL);
        SendAttachPort(g_hQTAudioHandlerWnd);
        bDone = true;
    }
    // The movie keeps its port while it is open; the port goes at the next CloseFile.
    if (!hWndParent && m_pQT->HasMovie())
        m_bReleasePort = 1;
    if (!bDone)
        return E_FAIL;

    m_hWndParent = hWndParent;
    m_rcParent = CUtility::GetWindowClientRect(hWndParent);
    InitVideoWindow();
    return S_OK;
}

// The worker makes its window as a descendant of this thread's windows, which sends messages
// here: this thread keeps dispatching while it waits.
bool CQTAudioPlayer::StartWorker(HWND hWndParent)
{
    if (g_hQTAudioReady)
        CloseHandle(g_hQTAudioReady);
    g_hQTAudioReady = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (!g_hQTAudioReady)
        return false;
    ResetEvent(g_hQTAudioReady);

    // Cleared before the start too: a quit left by an earlier worker would end this one at once.
    g_bQTAudioQuit = 0;
    g_bQTAudioDone = 0;
    g_QTAudioThreadArgs = {m_hBackgroundWnd, this};
    m_hThread.reset(CreateThread(nullptr, 0, QTAudioThreadProc, &g_QTAudioThreadArgs, 0, &m_dwThreadId));
    if (!m_hThread)
    {
        m_dwThreadId = 0;
        return false;
    }

    const HANDLE handles[] = {g_hQTAudioReady, m_hThread.get()};
    const ULONGLONG ullStart = GetTickCount64();
    bool bQuit = false;
    WPARAM wQuitCode = 0;
    DWORD dwWait;
    for (;;)
    {
        dwWait = MsgWaitForMultipleObjects(ARRAYSIZE(handles), handles, FALSE, RemainingMs(ullStart, kWorkerLimitMs),
                                           QS_ALLINPUT);
        if (dwWait != WAIT_OBJECT_0 + ARRAYSIZE(handles))
            break;
        MSG msg;
        while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE))
        {
            if (msg.message == WM_QUIT)
            {
                // The host's own loop must still see it.
                bQuit = true;
                wQuitCode = msg.wParam;
                continue;
            }
            TranslateMessage(&msg);
            DispatchMessageW(&msg);
        }
    }
    if (bQuit)
        PostQuitMessage(static_cast<int>(wQuitCode));
    if (dwWait != WAIT_OBJECT_0)
    {
        TESSALY_TRACE("E:CQTAudioPlayer::SetParentWindow> the worker thread did not get ready");
        EndWorker();
        return false;
    }
    g_bQTAudioQuit = 0;
    SetParent(g_hQTAudioHandlerWnd, hWndParent);
    return true;
}

DWORD WINAPI CQTAudioPlayer::QTAudioThreadProc(LPVOID pArgs)
{
    const QTAudioThreadArgs args = *static_cast<const QTAudioThreadArgs*>(pArgs);
    HWND hWnd = CUtility::CreateInternalWindow(L"QTAudioPlayer.Handler.WndClass", L"QTAudioPlayer.Handler.Window",
                                               HandlerWindowProc, args.pPlayer, args.hBackgroundWnd, TRUE, FALSE);
    if (!hWnd)
    {
        // The waiting thread sees this thread end without the ready event.
        g_bQTAudioDone = 1;
        return 1;
    }
    g_hQTAudioHandlerWnd = hWnd;
    // The port association belongs to the thread that services the controller.
    SendMessageW(hWnd, WM_QT_ATTACH_PORT, reinterpret_cast<WPARAM>(hWnd), 0);
    SetEvent(g_hQTAudioReady);

    while (!g_bQTAudioQuit)
    {
        MSG msg;
        while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE))
        {
            TranslateMessage(&msg);
            DispatchMessageW(&msg);
        }
        Sleep(kWorkerPollMs);
    }
    // Only this thread can destroy its window; after this no message reaches the player.
    DestroyWindow(hWnd);
    g_bQTAudioDone = 1;
    return 0;
}

LRESULT CALLBACK CQTAudioPlayer::HandlerWindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    auto pThis = reinterpret_cast<CQTAudioPlayer*>(GetWindowLongPtrW(hWnd, GWLP_USERDATA));
    if (!pThis)
        return DefWindowProcW(hWnd, uMsg, wParam, lParam);
    return pThis->OnHandlerMessage(hWnd, uMsg, wParam, lParam);
}

// Runs in the worker thread: the controller is serviced here, the end of the movie included.
LRESULT CQTAudioPlayer::OnHandlerMessage(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    if (m_pQT)
    {
        if (uMsg == WM_QT_ATTACH_PORT)
            m_pQT->SetPortWindow(reinterpret_cast<HWND>(wParam));
        else
            m_pQT->OnWindowMessage(hWnd, uMsg, wParam, lParam);
    }
    if (IsHostInput(uMsg))
    {
        if (HWND hWndParent = m_hWndParent)
            PostMessageW(hWndParent, uMsg, wParam, lParam);
        return 0;
    }
    return DefWindowProcW(hWnd, uMsg, wParam, lParam);
}

HRESULT CQTAudioPlayer::SetParentWindowSize(DWORD dwWidth, DWORD dwHeight)
{
    const HRESULT hr = CheckQuickTime(true);
    if (FAILED(hr))
        return hr;
    m_rcParent.right = m_rcParent.left + static_cast<LONG>(dwWidth);
    m_rcParent.bottom = m_rcParent.top + static_cast<LONG>(dwHeight);
    // As the video back-end: a paused movie plays again after a resize.
    Pause();
    InitVideoWindow();
    Resume();
    return S_OK;
}

HRESULT CQTAudioPlayer::InitVideoWindow()
{
    const HRESULT hr = CheckQuickTime(true);
    if (FAILED(hr))
        return hr;
    if (!m_hWndParent)
    {
        TESSALY_TRACE("S:CQTAudioPlayer::InitVideoWindow> Parent window handle is null");
        return E_FAIL;
    }
    if (!m_hBackgroundWnd)
    {
        TESSALY_TRACE("S:CQTAudioPlayer::InitVideoWindow> background window handle is null");
        return E_FAIL;
    }
    HWND hVideoWindow = g_hQTAudioHandlerWnd;
    if (!hVideoWindow)
    {
        TESSALY_TRACE("S:CQTAudioPlayer::InitVideoWindow> own window handle is null");
        return E_FAIL;
    }
    // A plain sound has no size: nothing is moved.
    LONG lWidth = 0;
    LONG lHeight = 0;
    if (FAILED(m_pQT->GetMovieSize(&lWidth, &lHeight)))
    {
        TESSALY_TRACE("S:CQTAudioPlayer::InitVideoWindow> Can't get source movie size");
        return E_FAIL;
    }

    const LONG lParentWidth = m_rcParent.right - m_rcParent.left;
    const LONG lParentHeight = m_rcParent.bottom - m_rcParent.top;
    RECT rc = {0, 0, lWidth, lHeight};
    FitVideoRect(static_cast<DWORD>(lParentWidth), static_cast<DWORD>(lParentHeight), &rc);
    SetWindowPos(m_hBackgroundWnd, nullptr, m_rcParent.left, m_rcParent.top, lParentWidth, lParentHeight,
                 SWP_NOZORDER | SWP_NOACTIVATE);
    const LONG lVideoWidth = rc.right - rc.left;
    const LONG lVideoHeight = rc.bottom - rc.top;
    if (SetWindowPos(hVideoWindow, nullptr, rc.left, rc.top, lVideoWidth, lVideoHeight, SWP_NOZORDER | SWP_NOACTIVATE))
        m_pQT->SetParentWindowSize(static_cast<DWORD>(lVideoWidth), static_cast<DWORD>(lVideoHeight));
    else
        TESSALY_TRACE("CQTAudioPlayer::InitVideoWindow() -> hVideoWindow is not a valid window.\n");
    return S_OK;
}

// Neither flag word is used here.
HRESULT CQTAudioPlayer::OpenFile(LPCWSTR pwszFile, DWORD dwOpenFlags, DWORD)
{
    HRESULT hr = CheckQuickTime(true);
    if (FAILED(hr))
        return hr;
    hr = CQTPlayer::OpenMovieByShortPath(*m_pQT, pwszFile, dwOpenFlags);
    if (FAILED(hr))
        return hr;
    m_pQT->SetCurTime(0.0);
    InitVideoWindow();
    InvalidateRect(m_hBackgroundWnd, nullptr, TRUE);
    return S_OK;
}

HRESULT CQTAudioPlayer::CloseFile()
{
    const HRESULT hr = CheckQuickTime(true);
    if (FAILED(hr))
        return hr;
    m_pQT->CloseMovie();
    if (m_bReleasePort)
    {
        SendAttachPort(nullptr);
        m_bReleasePort = 0;
    }
    return S_OK;
}

// A change is stored and laid out, and still answered with E_FAIL, as by the video back-end.
HRESULT CQTAudioPlayer::SetPlaybackFlags(DWORD dwPlaybackFlags)
{
    const HRESULT hr = CheckQuickTime(false);
    if (FAILED(hr))
        return hr;
    if (dwPlaybackFlags == m_dwPlaybackFlags)
    {
        TESSALY_TRACE("S:CQTAudioPlayer::SetPlaybackFlags> No changes, do nothing...");
        return S_OK;
    }
    const bool bStretchChanged = ((dwPlaybackFlags ^ m_dwPlaybackFlags) & TESSALY_PLAYBACK_FLAG_STRETCH) != 0;
    m_dwPlaybackFlags = dwPlaybackFlags;
    if (bStretchChanged)
        InitVideoWindow();
    TESSALY_TRACE("S:CQTAudioPlayer::SetPlaybackFlags> dwPlaybackFlags = 0x%.8x", static_cast<unsigned>(dwPlaybackFlags));
    return E_FAIL;
}

