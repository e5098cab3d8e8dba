#include "dispatch/CMediaPlayer.h"

#include <objbase.h>
#include <shlwapi.h>

#include "backends/cdda/CDDAGraph.h"
#include "backends/dshow/CDShowPlayer.h"
#include "backends/picture/CGdiplusPictViewer.h"
#include "backends/quicktime/CQTAudioPlayer.h"
#include "backends/quicktime/CQTPlayer.h"
#include "backends/wmp/CWMPPlayer.h"
#include "base/CPlayerBase.h"
#include "base/CSaturate.h"
#include "base/CUtility.h"
#include "dispatch/CWindowsMediaRoute.h"
#include "base/EngineMessages.h"
#include "trace/Trace.h"

namespace {

constexpr UINT_PTR kProgressTimerId = 1;
constexpr UINT kProgressPeriodMs = 100;

} // namespace

CMediaPlayer::BackEnds CMediaPlayer::CreateBackEnds()
{
    // Each back-end is owned before the list grows, so an allocation that fails leaks none.
    BackEnds backEnds;
    backEnds.players.reserve(5);
    backEnds.players.push_back(std::make_unique<CDShowPlayer>());
    backEnds.players.push_back(std::make_unique<CGdiplusPictViewer>());
    backEnds.players.push_back(std::make_unique<CWMPPlayer>());
    backEnds.pWMPPlayer = backEnds.players.back().get();
    backEnds.players.push_back(std::make_unique<CQTPlayer>());
    backEnds.players.push_back(std::make_unique<CQTAudioPlayer>());
    backEnds.pCDDAGraph = std::make_unique<CDDAGraph>();
    backEnds.pWindowsMediaRoute = std::make_unique<CWindowsMediaRoute>();
    return backEnds;
}

CMediaPlayer::CMediaPlayer() : CMediaPlayer(CreateBackEnds()) {}

CMediaPlayer::CMediaPlayer(BackEnds backEnds)
    : m_Players(std::move(backEnds.players)),
      m_pWMPPlayer(backEnds.pWMPPlayer),
      m_pCDDAGraph(std::move(backEnds.pCDDAGraph)),
      m_pWindowsMediaRoute(std::move(backEnds.pWindowsMediaRoute))
{
}

CMediaPlayer::~CMediaPlayer()
{
    if (m_pbGone)
        *m_pbGone = true;
}

HRESULT CMediaPlayer::Init(LPCWSTR pwszFile)
{
    if (!m_hEventWnd)
    {
        m_hEventWnd = CUtility::CreateInternalWindow(L"MEDIAPLAYER.Event.Handler.WndClass",
                                                     L"MEDIAPLAYER.Event.Handler.Window",
                                                     StaticWindowProc, this, nullptr, FALSE, FALSE);
        if (!m_hEventWnd)
        {
            TESSALY_TRACE("E:CMediaPlayer::Init> Failed to create hidden window...");
            return HRESULT_FROM_WIN32(GetLastError());
        }
    }

    LPCWSTR pwszExt = PathFindExtensionW(pwszFile);
    const bool bWindowsMedia = TakesWindowsMediaRoute(pwszFile);
    for (const auto& pPlayer : m_Players)
    {
        if (bWindowsMedia || (!pPlayer->IsInitialized() && pPlayer->IsSupportedFileExt(pwszExt)))
        {
            if (FAILED(pPlayer->Init()))
                TESSALY_TRACE("E:CMediaPlayer::Init> CPlayer->Init failed");
        }
        pPlayer->SetEventHandlerWindow(m_hEventWnd);
    }

    if (m_pCDDAGraph)
    {
        if (!m_pCDDAGraph->IsInitialized() && FAILED(m_pCDDAGraph->Init()))
            TESSALY_TRACE("E:CMediaPlayer::Init> CDDAGraph->Init failed");
        m_pCDDAGraph->SetEventHandlerWindow(m_hEventWnd);
    }

    // Deliberately forgets an open file without closing it: the next OpenFile then opens
    // over it, and the back-end that held it does not count as the previous one.
    m_PlayState = Playback_State_Stop;
    m_bFileOpened = false;
    return S_OK;
}

bool CMediaPlayer::IsInitialized() const
{
    for (const auto& pPlayer : m_Players)
    {
        if (!pPlayer->IsInitialized())
            return false;
    }
    return true;
}

void CMediaPlayer::Destroy()
{
    TESSALY_TRACE("CMediaPlayer::Destroy\n");
    if (m_bFileOpened)
        CloseFile();
    ProgressTimer(FALSE);
    CUtility::DestroyInternalWindow(&m_hEventWnd);
    for (auto& pPlayer : m_Players)
    {
        pPlayer->Destroy();
        pPlayer.reset();
    }
    m_Players.clear();
    m_pCurPlayer = nullptr;
    m_pPrevPlayer = nullptr;
    m_pWMPPlayer = nullptr;
    if (m_pCDDAGraph)
    {
        m_pCDDAGraph->Destroy();
        m_pCDDAGraph.reset();
    }
    m_hWndParent = nullptr;
    m_PlayState = Playback_State_Stop;
}

HRESULT CMediaPlayer::SetEventCallback(StreamingPlayerEventCallback pfn, void* pContext)
{
    m_pfnEventCallback = pfn;
    m_pCallbackContext = pContext;
    return S_OK;
}

HRESULT CMediaPlayer::SetParentWindow(HWND hWnd)
{
    m_hWndParent = hWnd;
    if (m_pCurPlayer)
        return m_pCurPlayer->SetParentWindow(hWnd);
    // Remembered for the back-end that the next OpenFile chooses.
    m_bParentWindowPending = true;
    return E_FAIL;
}

HRESULT CMediaPlayer::SetParentWindowSize(DWORD dwWidth, DWORD dwHeight)
{
    if (!m_pCurPlayer)
        return E_FAIL;
    return m_pCurPlayer->SetParentWindowSize(dwWidth, dwHeight);
}

BOOL CMediaPlayer::ValidateFileExt(LPCWSTR pwszExt)
{
    if (pwszExt && pwszExt[0] == L'.' && pwszExt[1] != L'\0')
        return TRUE;
    TESSALY_TRACE("CMediaPlayer::ValidateFileExt() error ext : %ls\n", pwszExt ? pwszExt : L"(null)");
    return FALSE;
}

bool CMediaPlayer::TakesWindowsMediaRoute(LPCWSTR pwszFile) const
{
    return m_pWMPPlayer && m_pWindowsMediaRoute && m_pWindowsMediaRoute->TakesRoute(pwszFile);
}

CPlayerBase* CMediaPlayer::ChoosePlayer(LPCWSTR pwszFile, LPCWSTR pwszExt) const
{
    if (TakesWindowsMediaRoute(pwszFile))
        return m_pWMPPlayer;
    for (const auto& pPlayer : m_Players)
    {
        if (pPlayer->IsSupportedFileExt(pwszExt))
            return pPlayer.get();
    }
    return nullptr;
}

HRESULT CMediaPlayer::OpenFile(LPCWSTR pwszFile, DWORD dwOpenFlags, DWORD dwPlaybackFlags,
                               TESSALY_FILEINFO* pOpenedFileInfo)
{
    TESSALY_TRACE("S:CMediaPlayer::OpenFile>");
    if (!m_hEventWnd)
    {
        TESSALY_TRACE("E:CMediaPlayer::OpenFile> Call CMediaPlayer::Init first...");
        return E_FAIL;
    }
    if (m_bFileOpened)
        CloseFile();
    m_dwPlaybackFlags = dwPlaybackFlags;

    LPCWSTR pwszExt = PathFindExtensionW(pwszFile);
    if (!ValidateFileExt(pwszExt))
        return TESSALY_E_NOTSUPPORTED;
    CPlayerBase* pChoice = ChoosePlayer(pwszFile, pwszExt);
    if (!pChoice)
        return TESSALY_E_NOTSUPPORTED;

    const bool bSwitching = m_pPrevPlayer && m_pPrevPlayer != pChoice;
    if (bSwitching)
    {
        m_pPrevPlayer->SetParentWindow(nullptr);
        m_pPrevPlayer->Deactivate();
    }
    if (m_bParentWindowPending || bSwitching)
    {
        pChoice->SetParentWindow(m_hWndParent);
        m_bParentWindowPending = false;
    }
    if (bSwitching)
        pChoice->Activate();

    // No other back-end is tried: a file that its own back-end cannot open is not played.
    const HRESULT hr = pChoice->OpenFile(pwszFile, dwOpenFlags, dwPlaybackFlags);
    if (FAILED(hr))
    {
        pChoice->CloseFile();
        pChoice->SetParentWindow(nullptr);
        // The next open may choose this back-end again without switching: it must get the
        // window back, or the host would see S_OK and nothing in its window.
        m_bParentWindowPending = true;
        return hr;
    }

    m_pCurPlayer = pChoice;
    m_PlayState = Playback_State_Stop;
    m_bFileOpened = true;
    m_dwPictureTicks = 0;
    RefreshFileInfo(pOpenedFileInfo);
    return hr;
}

HRESULT CMediaPlayer::RefreshFileInfo(TESSALY_FILEINFO* pInfo)
{
    BOOL bAudioOnly = FALSE;
    double dDuration = 0.0;
    BOOL bSeekable = TRUE;
    DWORD dwWidth = 0;
    DWORD dwHeight = 0;
    BOOL bPicture = FALSE;
    const HRESULT hr = GetFileInfo(&bAudioOnly, &dDuration, &bSeekable, &dwWidth, &dwHeight, &bPicture);
    if (FAILED(hr))
        return hr;

    m_bAudioOnly = bAudioOnly;
    m_bSeekable = bSeekable;
    m_bPicture = bPicture;
    if (pInfo)
    {
        pInfo->dwAttributeMask = (bAudioOnly ? TESSALY_FILEINFO_AUDIO_ONLY : 0) |
                                 (bSeekable ? TESSALY_FILEINFO_SEEKABLE : 0) |
                                 (bPicture ? TESSALY_FILEINFO_PICTURE : 0);
        pInfo->dDuration = dDuration;
        pInfo->dwWidth = dwWidth;
        pInfo->dwHeight = dwHeight;
    }
    return hr;
}

HRESULT CMediaPlayer::OpenCD(WCHAR wcDrive, WORD wStartTrack, WORD wEndTrack)
{
    if (!m_pCDDAGraph)
        return E_FAIL;
    // The file of another back-end stays open underneath; only its presentation is hidden.
    if (m_pCurPlayer && m_pCurPlayer != m_pCDDAGraph.get())
        m_pCurPlayer->Deactivate();
    m_pCurPlayer = m_pCDDAGraph.get();
    m_pCDDAGraph->Activate();

    // The CD back-end answers 1 for a range it refuses; that counts as opened here.
    const HRESULT hr = m_pCDDAGraph->OpenCD(wcDrive, wStartTrack, wEndTrack);
    if (FAILED(hr))
        return hr;
    m_PlayState = Playback_State_Stop;
    m_bFileOpened = true;
    const HRESULT hrInfo = RefreshFileInfo(nullptr);
    return FAILED(hrInfo) ? hrInfo : hr;
}

HRESULT CMediaPlayer::GetCDDuration(double* pdDuration)
{
    if (!m_pCDDAGraph)
        return E_FAIL;
    return m_pCDDAGraph->GetDuration(pdDuration);
}

HRESULT CMediaPlayer::CloseFile()
{
    TESSALY_TRACE("S:CMediaPlayer::CloseFile>");
    if (!m_bFileOpened)
        return S_OK;
    if (FAILED(Stop()))
        TESSALY_TRACE("E:CMediaPlayer::CloseFile> Stop failed");
    if (m_pCurPlayer)
        m_pCurPlayer->CloseFile();
    // The back-end keeps its parent window until a later OpenFile switches away from it.
    m_pPrevPlayer = m_pCurPlayer;
    m_pCurPlayer = nullptr;
    m_bAudioOnly = FALSE;
    m_bPicture = FALSE;
    m_bSeekable = FALSE;
    m_dwPictureTicks = 0;
    m_PlayState = Playback_State_Stop;
    m_bFileOpened = false;
    return S_OK;
}

HRESULT CMediaPlayer::Play()
{
    TESSALY_TRACE("S:CMediaPlayer::Play>");
    if (!m_pCurPlayer)
        return E_FAIL;
    switch (m_PlayState)
    {
    case Playback_State_Play:
        return S_OK;
    case Playback_State_Pause:
    case Playback_State_Stop:
    {
        // Leaving Pause goes through the back-end's Play; only a second Pause resumes.
        const HRESULT hr = m_pCurPlayer->Play();
        if (FAILED(hr))
        {
            if (m_PlayState == Playback_State_Pause)
                TESSALY_TRACE("E:CMediaPlayer::Play>  failed");
            else
                TESSALY_TRACE("E:CMediaPlayer::Play> failed");
            return hr;
        }
        ProgressTimer(TRUE);
        if (m_PlayState == Playback_State_Stop)
            m_dwPictureTicks = 0;
        m_PlayState = Playback_State_Play;
        SetFocus(m_hWndParent);
        return S_OK;
    }
    default:
        TESSALY_TRACE("E:CMediaPlayer::Play> Unknown playState = %d, can't pause", m_PlayState);
        return E_FAIL;
    }
}

HRESULT CMediaPlayer::Pause()
{
    TESSALY_TRACE("S:CMediaPlayer::Pause>");
    if (!m_pCurPlayer || !m_bFileOpened)
        return E_FAIL;
    switch (m_PlayState)
    {
    case Playback_State_Busy:
        TESSALY_TRACE("E:CMediaPlayer::Pause> engine not initialized properly / file not opened");
        return E_FAIL;
    case Playback_State_Play:
    {
        const HRESULT hr = m_pCurPlayer->Pause();
        if (FAILED(hr))
        {
            TESSALY_TRACE("E:CMediaPlayer::Pause> failed");
            return hr;
        }
        ProgressTimer(FALSE);
        m_PlayState = Playback_State_Pause;
        return S_OK;
    }
    case Playback_State_Pause:
    {
        const HRESULT hr = m_pCurPlayer->Resume();
        if (FAILED(hr))
        {
            TESSALY_TRACE("E:CMediaPlayer::Pause>  failed");
            return hr;
        }
        ProgressTimer(TRUE);
        m_PlayState = Playback_State_Play;
        return S_OK;
    }
    default:
        TESSALY_TRACE("E:CMediaPlayer::Pause> Unknown playState = %d, can't pause", m_PlayState);
        return E_FAIL;
    }
}

HRESULT CMediaPlayer::Stop()
{
    TESSALY_TRACE("S:CMediaPlayer::Stop>");
    if (!m_pCurPlayer)
        return E_FAIL;
    switch (m_PlayState)
    {
    case Playback_State_Play:
    case Playback_State_Pause:
    {
        const HRESULT hr = m_pCurPlayer->Stop();
        if (FAILED(hr))
        {
            TESSALY_TRACE("E:CMediaPlayer::Stop> failed");
            return hr;
        }
        ProgressTimer(FALSE);
        m_PlayState = Playback_State_Stop;
        m_dwPictureTicks = 0;
        return S_OK;
    }
    case Playback_State_Stop:
        TESSALY_TRACE("E:CMediaPlayer::Stop> already stopped");
        return S_OK;
    default:
        TESSALY_TRACE("E:CMediaPlayer::Stop> Unknown playState = %d, can't pause", m_PlayState);
        return E_FAIL;
    }
}

HRESULT CMediaPlayer::SeekTo(double dSeconds)
{
    if (!m_bFileOpened || m_PlayState == Playback_State_Stop)
    {
        TESSALY_TRACE("E:CMediaPlayer::SeekTo> engine not initialized properly / file not opened");
        return E_FAIL;
    }
    if (!m_bSeekable)
    {
        TESSALY_TRACE("E:CMediaPlayer::SeekTo> File is not seekable...");
        return TESSALY_E_NOTSEEKABLE;
    }
    if (!m_pCurPlayer)
        return S_OK;
    if (m_bPicture)
    {
        // A picture's progress counts timer ticks; a seek moves that count.
        TESSALY_TRACE("E:CMediaPlayer::SeekTo> Fake Seek for a picture file");
        m_dwPictureTicks = CSaturate::ToUInt32(dSeconds);
        return S_OK;
    }
    const HRESULT hr = m_pCurPlayer->SetCurTime(dSeconds);
    if (FAILED(hr))
    {
        TESSALY_TRACE("E:CMediaPlayer::SeekTo> failed");
        return hr;
    }
    return S_OK;
}

HRESULT CMediaPlayer::GetFileInfo(BOOL* pbAudioOnly, double* pdDuration, BOOL* pbSeekable,
                                  DWORD* pdwWidth, DWORD* pdwHeight, BOOL* pbPicture)
{
    if (!m_bFileOpened)
        return E_FAIL;
    if (!m_pCurPlayer)
        return S_OK;
    return m_pCurPlayer->GetFileInfo(pbAudioOnly, pdDuration, pbSeekable, pdwWidth, pdwHeight,
                                     pbPicture);
}

LPCWSTR* CMediaPlayer::GetSupportedFileExt(DWORD* pnCount)
{
    if (!pnCount)
    {
        TESSALY_TRACE("E:CMediaPlayer::GetSupportedFileExt> pnCount param can't be null");
        return nullptr;
    }
    DWORD nTotal = 0;
    for (const auto& pPlayer : m_Players)
    {
        DWORD nCount = 0;
        pPlayer->GetSupportedFileExt(&nCount);
        nTotal += nCount;
    }
    *pnCount = nTotal;
    if (nTotal == 0)
        return nullptr;

    auto ppList = static_cast<LPCWSTR*>(CoTaskMemAlloc(nTotal * sizeof(LPCWSTR)));
    if (!ppList)
    {
        *pnCount = 0;
        return nullptr;
    }
    // A back-end that counts entries but has no table leaves its share empty, not undefined.
    ZeroMemory(ppList, nTotal * sizeof(LPCWSTR));
    DWORD nCopied = 0;
    for (const auto& pPlayer : m_Players)
    {
        DWORD nCount = 0;
        LPCWSTR* ppTable = pPlayer->GetSupportedFileExt(&nCount);
        for (DWORD i = 0; ppTable && i < nCount && nCopied < nTotal; ++i)
            ppList[nCopied++] = ppTable[i];
    }
    return ppList;
}

HRESULT CMediaPlayer::GetPlaybackFlags(DWORD* pdwFlags)
{
    *pdwFlags = m_dwPlaybackFlags;
    return S_OK;
}

HRESULT CMediaPlayer::SetPlaybackFlags(DWORD dwFlags)
{
    if (dwFlags == m_dwPlaybackFlags)
    {
        TESSALY_TRACE("S:CMediaPlayer::SetPlaybackFlags> No changes, do nothing...");
        return S_OK;
    }
    const bool bStretchChanged = ((dwFlags ^ m_dwPlaybackFlags) & TESSALY_PLAYBACK_FLAG_STRETCH) != 0;
    m_dwPlaybackFlags = dwFlags;
    // Only the stretch bit changes what a back-end shows.
    if (bStretchChanged && m_pCurPlayer)
        m_pCurPlayer->SetPlaybackFlags(dwFlags);
    TESSALY_TRACE("S:CMediaPlayer::SetPlaybackFlags> dwPlaybackFlags = 0x%.8lx", dwFlags);
    return S_OK;
}

HRESULT CMediaPlayer::ProgressTimer(BOOL bStart)
{
    if (bStart)
    {
        if (!SetTimer(m_hEventWnd, kProgressTimerId, kProgressPeriodMs, nullptr))
        {
            TESSALY_TRACE("E:CMediaPlayer::ProgressTimer> SetTimer failed");
            return HRESULT_FROM_WIN32(GetLastError());
        }
        m_nProgressTimerId = kProgressTimerId;
        return S_OK;
    }
    if (m_nProgressTimerId == 0)
    {
        TESSALY_TRACE("S:CMediaPlayer::ProgressTimer> Timer is not created yet...");
        return E_FAIL;
    }
    if (!KillTimer(m_hEventWnd, m_nProgressTimerId))
        TESSALY_TRACE("E:CMediaPlayer::ProgressTimer> KillTimer failed");
    m_nProgressTimerId = 0;
    return S_OK;
}

LRESULT CMediaPlayer::OnTimerPlaybackProgress()
{
    if (!m_pfnEventCallback)
    {
        TESSALY_TRACE("E:CMediaPlayer::OnTimerPlaybackProgress> callback function ptr is null, no need to query progress...");
        return 0;
    }
    double dElapsed = 0.0;
    if (m_bPicture)
    {
        // Deliberately ticks, not seconds: a picture has no time line of its own.
        dElapsed = static_cast<double>(++m_dwPictureTicks);
    }
    // Only S_OK carries a position: the CD back-end answers 1 when it has none.
    else if (!m_pCurPlayer || m_pCurPlayer->GetCurTime(&dElapsed) != S_OK)
    {
        return 0;
    }
    Notify(STREAMING_EVENT_PROGRESS, reinterpret_cast<ULONG_PTR>(&dElapsed));
    return 0;
}

void CMediaPlayer::Notify(DWORD dwEvent, ULONG_PTR ulParam)
{
    if (m_pfnEventCallback)
        m_pfnEventCallback(dwEvent, ulParam, m_pCallbackContext);
}

void CMediaPlayer::OnBackEndMessage(UINT uMsg, WPARAM wParam)
{
    // The owner may let the dispatcher go from inside the last progress report (a host releasing
    // its Play object in its handler); nothing of it may be touched after that.
    bool bGone = false;
    bool* const pbOuter = m_pbGone;
    m_pbGone = &bGone;
    OnTimerPlaybackProgress();
    if (bGone)
    {
        if (pbOuter)
            *pbOuter = true;
        return;
    }
    m_pbGone = pbOuter;
    if (uMsg == WM_CDDA_TRACK_COMPLETE)
    {
        // Playback goes on with the next track, and so do the progress reports.
        Notify(STREAMING_EVENT_TRACK_COMPLETE, 0);
        return;
    }
    ProgressTimer(FALSE);
    if (uMsg == WM_DSHOW_PLAYBACK_ERROR || uMsg == WM_WMP_PLAYBACK_ERROR)
    {
        // Stopping after an error is the owner's decision.
        Notify(STREAMING_EVENT_ERROR, wParam);
        return;
    }
    Stop();
    Notify(STREAMING_EVENT_COMPLETE, 0);
}

LRESULT CMediaPlayer::WindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    switch (uMsg)
    {
    case WM_TIMER:
        return wParam == kProgressTimerId ? OnTimerPlaybackProgress() : 0;
    case WM_DSHOW_PLAYBACK_COMPLETE:
    case WM_QT_PLAYBACK_COMPLETE:
    case WM_WMP_PLAYBACK_COMPLETE:
    case WM_CDDA_PLAYBACK_COMPLETE:
    case WM_DSHOW_PLAYBACK_ERROR:
    case WM_WMP_PLAYBACK_ERROR:
    case WM_CDDA_TRACK_COMPLETE:
        OnBackEndMessage(uMsg, wParam);
        return 0;
    case WM_CDDA_GRAPH_NOTIFY:
        if (m_pCDDAGraph && m_pCurPlayer == m_pCDDAGraph.get())
            m_pCDDAGraph->OnEngineNotify(wParam, lParam);
        return 0;
    default:
        return DefWindowProcW(hWnd, uMsg, wParam, lParam);
    }
}

LRESULT CALLBACK CMediaPlayer::StaticWindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    auto pThis = reinterpret_cast<CMediaPlayer*>(GetWindowLongPtrW(hWnd, GWLP_USERDATA));
    if (!pThis)
        return DefWindowProcW(hWnd, uMsg, wParam, lParam);
    return pThis->WindowProc(hWnd, uMsg, wParam, lParam);
}
