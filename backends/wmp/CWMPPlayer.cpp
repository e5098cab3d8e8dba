#include "backends/wmp/CWMPPlayer.h"

#include <new>

#include "backends/wmp/CWMPHost.h"
#include "base/CUtility.h"
#include "engine/TessalyContract.h"
#include "trace/Trace.h"

namespace {

// One empty entry: no real extension matches it, so only the Windows Media route leads here,
// yet hosts still see the entry in the supported-extension list.
const LPCWSTR g_FileExt[] = {L""};

} // namespace

CWMPPlayer::CWMPPlayer()
{
    m_ppwszFileExt = g_FileExt;
    m_dwFileExtCount = ARRAYSIZE(g_FileExt);
}

// The host is deleted by Destroy; one still here (Destroy never ran) goes with its window.
CWMPPlayer::~CWMPPlayer() = default;

CWMPHost* CWMPPlayer::CreateHost()
{
    return new (std::nothrow) CWMPHost;
}

bool CWMPPlayer::IsHostUsable() const
{
    return m_pWMPHost && IsWindow(m_pWMPHost->Window());
}

HRESULT CWMPPlayer::Init()
{
    if (m_pWMPHost)
        return S_OK;
    m_pWMPHost.reset(CreateHost());
    if (!m_pWMPHost)
        return E_OUTOFMEMORY;
    m_bInitialized = true;
    return S_OK;
}

void CWMPPlayer::Destroy()
{
    if (!m_pWMPHost)
        return;
    HWND hWndHost = m_pWMPHost->Window();
    if (IsWindow(hWndHost))
    {
        m_hEventHandlerWnd = nullptr;
        m_pWMPHost->SetNotifyWindow(nullptr);
        SetParent(hWndHost, nullptr);
        DestroyWindow(hWndHost);
    }
    m_pWMPHost.reset();
}

HRESULT CWMPPlayer::SetParentWindow(HWND hWndParent)
{
    if (!m_pWMPHost)
        return E_FAIL;
    if (!m_pWMPHost->Window() && hWndParent)
    {
        const RECT rcEmpty = {};
        HWND hWndHost = m_pWMPHost->Create(hWndParent, rcEmpty, WS_CHILD | WS_VISIBLE | WS_CLIPSIBLINGS | WS_CLIPCHILDREN);
        if (!hWndHost)
        {
            // The system's error number as it stands, not a result code.
            return static_cast<HRESULT>(GetLastError());
        }
        SetParent(hWndHost, hWndParent);
        // The window's creation starts the host without a notify window, and the dispatcher
        // named its window before there was one.
        m_pWMPHost->SetNotifyWindow(m_hEventHandlerWnd);
    }
    m_hWndParent = hWndParent;
    m_rcHost = CUtility::GetWindowClientRect(hWndParent);
    UpdateHostWindow();
    return S_OK;
}

HRESULT CWMPPlayer::SetParentWindowSize(DWORD dwWidth, DWORD dwHeight)
{
    if (!IsHostUsable())
        return E_FAIL;
    m_rcHost.right = m_rcHost.left + static_cast<LONG>(dwWidth);
    m_rcHost.bottom = m_rcHost.top + static_cast<LONG>(dwHeight);
    UpdateHostWindow();
    return S_OK;
}

HRESULT CWMPPlayer::OpenFile(LPCWSTR pwszFile, DWORD, DWORD dwPlaybackFlags)
{
    if (!m_pWMPHost || !m_hWndParent)
        return E_FAIL;
    if (FAILED(m_pWMPHost->Open(pwszFile)))
    {
        TESSALY_TRACE("E:CWMPPlayer::OpenFile> the control could not open the item");
        return TESSALY_E_CANNOTPLAY;
    }
    // The control starts an item as soon as it is open; the engine keeps it still until told.
    Stop();
    SetPlaybackFlags(dwPlaybackFlags);
    UpdateHostWindow();
    HWND hWndHost = m_pWMPHost->Window();
    if (IsWindow(hWndHost))
        ShowWindow(hWndHost, m_pWMPHost->IsAudioOnly() ? SW_HIDE : SW_SHOWNORMAL);
    return S_OK;
}

HRESULT CWMPPlayer::CloseFile()
{
    if (!m_pWMPHost)
        return E_FAIL;
    m_pWMPHost->Close();
    HWND hWndHost = m_pWMPHost->Window();
    if (IsWindow(hWndHost))
        ShowWindow(hWndHost, SW_HIDE);
    return S_OK;
}

HRESULT CWMPPlayer::GetFileInfo(BOOL* pbAudioOnly, double* pdDuration, BOOL* pbSeekable, DWORD* pdwWidth,
                                DWORD* pdwHeight, BOOL* pbPicture)
{
    if (!IsHostUsable())
        return E_FAIL;
    return m_pWMPHost->GetFileInfo(pbAudioOnly, pdDuration, pbSeekable, pdwWidth, pdwHeight, pbPicture);
}

HRESULT CWMPPlayer::Play()
{
    return IsHostUsable() ? m_pWMPHost->Play() : E_FAIL;
}

HRESULT CWMPPlayer::Pause()
{
    return IsHostUsable() ? m_pWMPHost->Pause() : E_FAIL;
}

// The control has no resume of its own: play carries on from where pause left it.
HRESULT CWMPPlayer::Resume()
{
    return IsHostUsable() ? m_pWMPHost->Play() : E_FAIL;
}

HRESULT CWMPPlayer::Stop()
{
    return IsHostUsable() ? m_pWMPHost->Stop() : E_FAIL;
}

HRESULT CWMPPlayer::SetCurTime(double dSeconds)
{
    return IsHostUsable() ? m_pWMPHost->SeekTo(dSeconds) : E_FAIL;
}

HRESULT CWMPPlayer::SetPlaybackFlags(DWORD dwPlaybackFlags)
{
    if (dwPlaybackFlags == m_dwPlaybackFlags)
        return S_OK;
    if (!IsHostUsable())
        return E_FAIL;
    m_dwPlaybackFlags = dwPlaybackFlags;
    m_pWMPHost->SetStretchToFit(dwPlaybackFlags & TESSALY_PLAYBACK_FLAG_STRETCH);
    return S_OK;
}

HRESULT CWMPPlayer::GetCurTime(double* pdSeconds)
{
    return IsHostUsable() ? m_pWMPHost->GetCurrentPosition(pdSeconds) : E_FAIL;
}

void CWMPPlayer::SetEventHandlerWindow(HWND hWnd)
{
    CPlayerBase::SetEventHandlerWindow(hWnd);
    if (m_pWMPHost)
        m_pWMPHost->SetNotifyWindow(hWnd);
}

HRESULT CWMPPlayer::Reserved(DWORD)
{
    return S_OK;
}

// The whole client area goes to the control, which scales the picture itself.
HRESULT CWMPPlayer::UpdateHostWindow()
{
    if (!m_hWndParent || !IsHostUsable())
        return E_FAIL;
    if (!m_pWMPHost->MoveHostWindow(m_rcHost.left, m_rcHost.top, m_rcHost.right - m_rcHost.left,
                                    m_rcHost.bottom - m_rcHost.top))
        return static_cast<HRESULT>(GetLastError());
    return S_OK;
}
