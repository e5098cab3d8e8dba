#include "objects/CPlay.h"

#include <olectl.h>

#include <new>
#include <vector>

#include "dispatch/CMediaPlayer.h"
#include "base/CUtility.h"
#include "display/CInfoWnd.h"
#include "engine/ComBoundary.h"
#include "engine/ComPtr.h"
#include "engine/CComEnum.h"
#include "trace/Trace.h"

namespace {

struct InterfacePolicy
{
    static void AddRef(IConnectionPoint* p) { p->AddRef(); }
    static void Release(IConnectionPoint* p) { p->Release(); }
};

typedef CComEnum<IEnumConnectionPoints, &IID_IEnumConnectionPoints, IConnectionPoint*, InterfacePolicy>
    CEnumConnectionPoints;

// The host's memory is checked for the exact size before it is touched.
struct TaskMemFree
{
    void operator()(LPCWSTR* p) const { CoTaskMemFree(p); }
};

bool CanWrite(void* p, UINT_PTR cb)
{
    return p && !IsBadWritePtr(p, cb);
}

bool CanRead(const void* p, UINT_PTR cb)
{
    return p && !IsBadReadPtr(p, cb);
}

} // namespace

CPlay::CPlay()
    : m_cpPlayEvents(this, IID_IPlayEvents),
      m_cpPlayCDEvents(this, IID_IPlayCDEvents),
      m_pMediaPlayer(std::make_unique<CMediaPlayer>())
{
    ResetMediaInfo();
}

CPlay::~CPlay() = default;

void* CPlay::InternalQueryInterface(REFIID riid)
{
    if (riid == IID_IPlay || riid == IID_IPlay2 || riid == IID_IPlayCD)
        return static_cast<IPlayCD*>(this);
    if (riid == IID_ITextDisplay)
        return static_cast<ITextDisplay*>(this);
    if (riid == IID_IConnectionPointContainer)
        return static_cast<IConnectionPointContainer*>(this);
    return nullptr;
}

void CPlay::FinalRelease()
{
    TESSALY_TRACE("S:CPlay::FinalRelease> enter\n");
    if (m_pInfoWnd)
    {
        m_pInfoWnd->SetVideoArea(nullptr);
        if (m_pInfoWnd->IsWindow())
            m_pInfoWnd->DestroyWindow();
        m_pInfoWnd.reset();
    }
    // The dispatcher goes before the sinks, so nothing fires into a half-destroyed object.
    if (m_pMediaPlayer)
    {
        m_pMediaPlayer->CloseFile();
        m_pMediaPlayer->SetParentWindow(nullptr);
        m_pMediaPlayer->Destroy();
        m_pMediaPlayer.reset();
    }
    m_cpPlayEvents.ReleaseSinks();
    m_cpPlayCDEvents.ReleaseSinks();
    TESSALY_TRACE("S:CPlay::FinalRelease> leave\n");
}

void CPlay::ResetMediaInfo()
{
    ZeroMemory(&m_MediaInfo, sizeof(m_MediaInfo));
}

// ---- connection points -------------------------------------------------------------------

STDMETHODIMP CPlay::EnumConnectionPoints(IEnumConnectionPoints** ppEnum)
{
    return ComBoundary([&]() -> HRESULT {
        if (!ppEnum)
            return E_POINTER;
        *ppEnum = nullptr;
        return CEnumConnectionPoints::Create({&m_cpPlayEvents, &m_cpPlayCDEvents}, ppEnum);
    });
}

STDMETHODIMP CPlay::FindConnectionPoint(REFIID riid, IConnectionPoint** ppCP)
{
    if (!ppCP)
        return E_POINTER;
    *ppCP = nullptr;
    for (CConnectionPoint* pPoint : {&m_cpPlayEvents, &m_cpPlayCDEvents})
    {
        if (riid == pPoint->Iid())
        {
            *ppCP = pPoint;
            pPoint->AddRef();
            return S_OK;
        }
    }
    return CONNECT_E_NOCONNECTION;
}

// ---- IPlay -------------------------------------------------------------------------------

STDMETHODIMP CPlay::GetSupportedFileExt(ULONG* pdwCount, LPWSTR** pppwszFileExtList)
{
    return ComBoundary([&]() -> HRESULT {
        TESSALY_TRACE("S:CPlay::GetSupportedFileExt>");
        if (!CanWrite(pdwCount, sizeof(*pdwCount)))
        {
            TESSALY_TRACE("E:CPlay::GetSupportedFileExt> Invalid param: pdwCount");
            return E_INVALIDARG;
        }
        if (!CanWrite(pppwszFileExtList, sizeof(*pppwszFileExtList)))
        {
            TESSALY_TRACE("E:CPlay::GetSupportedFileExt> Invalid param: pppwszFileExtList");
            return E_INVALIDARG;
        }
        DWORD dwCount = 0;
        LPCWSTR* ppwszList = m_pMediaPlayer->GetSupportedFileExt(&dwCount);
        if (!ppwszList)
        {
            TESSALY_TRACE("E:CPlay::GetSupportedFileExt> Can't get Supported file extension");
            return E_OUTOFMEMORY;
        }
        // The dispatcher's array points into the back-ends' own tables: only the array is ours to free.
        std::unique_ptr<LPCWSTR, TaskMemFree> dispatcherList(ppwszList);
        if (dwCount == 0)
        {
            TESSALY_TRACE("E:CPlay::GetSupportedFileExt> No Supported file extension is returned");
            return E_FAIL;
        }

        *pdwCount = dwCount;
        *pppwszFileExtList = static_cast<LPWSTR*>(CoTaskMemAlloc(dwCount * sizeof(LPWSTR)));
        if (!*pppwszFileExtList)
        {
            TESSALY_TRACE("E:CPlay::GetSupportedFileExt> Of of memory when allocating W string array");
            return E_OUTOFMEMORY;
        }
        ZeroMemory(*pppwszFileExtList, dwCount * sizeof(LPWSTR));
        for (DWORD i = 0; i < dwCount; ++i)
        {
            const size_t cb = (static_cast<size_t>(lstrlenW(ppwszList[i])) + 1) * sizeof(WCHAR);
            LPWSTR pwsz = static_cast<LPWSTR>(CoTaskMemAlloc(cb));
            if (!pwsz)
            {
                TESSALY_TRACE("E:CPlay::GetSupportedFileExt> Of of memory when allocating W string array");
                CUtility::FreeStringArray(dwCount, *pppwszFileExtList);
                *pppwszFileExtList = nullptr;
                *pdwCount = 0;
                return E_OUTOFMEMORY;
            }
            CopyMemory(pwsz, ppwszList[i], cb);
            (*pppwszFileExtList)[i] = pwsz;
        }
        return S_OK;
    });
}

HRESULT CPlay::InitPlaybackEngine(LPCWSTR pwszFile)
{
    TESSALY_TRACE("S:CPlay::InitPlaybackEngine>");
    const HRESULT hr = m_pMediaPlayer->Init(pwszFile);
    if (FAILED(hr))
        return hr;
    m_pMediaPlayer->SetEventCallback(OnMediaPlayerEvent, this);
    return hr;
}

STDMETHODIMP CPlay::OpenFile(LPWSTR wszFilepath, ULONG dwOpenFlags, ULONG dwPlaybackFlags,
                             TESSALY_FILEINFO* pOpenedFileInfo)
{
    return ComBoundary([&]() -> HRESULT {
        TESSALY_TRACE("S:CPlay::OpenFile>");
        HRESULT hr = InitPlaybackEngine(wszFilepath);
        if (FAILED(hr))
        {
            TESSALY_TRACE("E:CPlay::OpenFile> InitPlaybackEngine failed");
            return hr;
        }
        if (pOpenedFileInfo && !CanWrite(pOpenedFileInfo, sizeof(*pOpenedFileInfo)))
        {
            TESSALY_TRACE("E:CPlay::OpenFile> Invalid param: pOpenedFileInfo");
            return E_INVALIDARG;
        }
        hr = m_pMediaPlayer->OpenFile(wszFilepath, dwOpenFlags, dwPlaybackFlags, pOpenedFileInfo);
        if (FAILED(hr))
            return hr;

        DWORD dwMode = INFO_MODE_NONE;
        if (m_pMediaPlayer->IsAudioOnly())
            dwMode = INFO_MODE_MEDIA;
        else if (m_pMediaPlayer->IsPictureFile())
            dwMode = INFO_MODE_CAPTION;
        if (m_pInfoWnd && CUtility::IsWindowHandle(m_pInfoWnd->GetHandle()))
        {
            m_pInfoWnd->ClearMediaInfo();
            m_pInfoWnd->SetDisplayMode(dwMode, TRUE);
        }
        return hr;
    });
}

STDMETHODIMP CPlay::CloseFile()
{
    return ComBoundary([&]() -> HRESULT {
        TESSALY_TRACE("S:CPlay::CloseFile>");
        if (m_pInfoWnd)
        {
            m_pInfoWnd->ClearMediaInfo();
            m_pInfoWnd->SetDisplayMode(INFO_MODE_NONE, FALSE);
        }
        const HRESULT hr = m_pMediaPlayer->CloseFile();
        ResetMediaInfo();
        return hr;
    });
}

STDMETHODIMP CPlay::GetState(TESSALY_PLAYBACK_STATE* pCurPlayState, double* pdCurElapseTime)
{
    return ComBoundary([&]() -> HRESULT {
        TESSALY_TRACE("S:CPlay::GetState>");
        if (pCurPlayState)
        {
            if (!CanWrite(pCurPlayState, sizeof(*pCurPlayState)))
            {
                TESSALY_TRACE("E:CPlay::GetState> Invalid param: pCurPlayState");
                return E_INVALIDARG;
            }
            *pCurPlayState = m_pMediaPlayer->GetPlayState();
        }
        if (!pdCurElapseTime)
            return S_OK;
        if (!CanWrite(pdCurElapseTime, sizeof(*pdCurElapseTime)))
        {
            TESSALY_TRACE("E:CPlay::GetState> Invalid param: pdCurElapseTime");
            return E_INVALIDARG;
        }
        // The last time progress delivered, not a fresh question to the back-end.
        *pdCurElapseTime = m_dCurElapseTime;
        return S_OK;
    });
}

STDMETHODIMP CPlay::GetFileInfo(TESSALY_FILEINFO* pFileInfo)
{
    return ComBoundary([&]() -> HRESULT {
        TESSALY_TRACE("S:CPlay::GetFileInfo>");
        // Deliberately before the pointer check: hosts have relied on S_OK here until every
        // back-end is started.
        if (!m_pMediaPlayer->IsInitialized())
            return S_OK;
        if (!CanWrite(pFileInfo, sizeof(*pFileInfo)))
        {
            TESSALY_TRACE("E:CPlay::GetFileInfo> Invalid param: pFileInfo");
            return E_INVALIDARG;
        }
        BOOL bAudioOnly = FALSE, bSeekable = FALSE, bPicture = FALSE;
        const HRESULT hr = m_pMediaPlayer->GetFileInfo(&bAudioOnly, &pFileInfo->dDuration, &bSeekable,
                                                       &pFileInfo->dwWidth, &pFileInfo->dwHeight, &bPicture);
        if (FAILED(hr))
        {
            TESSALY_TRACE("E:CPlay::GetFileInfo> m_pMediaPlayer->GetFileInfo");
            return hr;
        }
        pFileInfo->dwAttributeMask = 0;
        if (bAudioOnly)
            pFileInfo->dwAttributeMask |= TESSALY_FILEINFO_AUDIO_ONLY;
        if (bSeekable)
            pFileInfo->dwAttributeMask |= TESSALY_FILEINFO_SEEKABLE;
        if (bPicture)
            pFileInfo->dwAttributeMask |= TESSALY_FILEINFO_PICTURE;
        return S_OK;
    });
}

STDMETHODIMP CPlay::PlaybackControl(ULONG dwControlFlag, ULONG dwParamSize, BYTE* pParam)
{
    return ComBoundary([&]() -> HRESULT {
        TESSALY_TRACE("S:CPlay::PlaybackControl>");
        switch (dwControlFlag)
        {
        case TESSALY_PLAYBACK_CONTROL_PLAY:
            TESSALY_TRACE("S:CPlay::PlaybackControl> TESSALY_PLAYBACK_CONTROL_PLAY");
            return m_pMediaPlayer->Play();
        case TESSALY_PLAYBACK_CONTROL_PAUSE:
            TESSALY_TRACE("S:CPlay::PlaybackControl> TESSALY_PLAYBACK_CONTROL_PAUSE");
            return m_pMediaPlayer->Pause();
        case TESSALY_PLAYBACK_CONTROL_STOP:
            TESSALY_TRACE("S:CPlay::PlaybackControl> TESSALY_PLAYBACK_CONTROL_STOP");
            return m_pMediaPlayer->Stop();
        case TESSALY_PLAYBACK_CONTROL_SEEKTOPOS:
        {
            TESSALY_TRACE("S:CPlay::PlaybackControl> TESSALY_PLAYBACK_CONTROL_SEEKTOPOS");
            if (dwParamSize == 0 || !pParam)
            {
                TESSALY_TRACE("E:CPlay::PlaybackControl> Invalid param for TESSALY_PLAYBACK_CONTROL_SEEKTOPOS, dwParamSize or pParam can't be zero");
                return E_INVALIDARG;
            }
            if (!CanRead(pParam, dwParamSize))
            {
                TESSALY_TRACE("E:CPlay::PlaybackControl> Invalid param for TESSALY_PLAYBACK_CONTROL_SEEKTOPOS");
                return E_INVALIDARG;
            }
            double dPosition;
            CopyMemory(&dPosition, pParam, sizeof(dPosition));
            return m_pMediaPlayer->SeekTo(dPosition);
        }
        default:
            TESSALY_TRACE("S:CPlay::PlaybackControl> Unknown Playback Control Flag");
            return TESSALY_E_NOTSUPPORTED;
        }
    });
}

STDMETHODIMP CPlay::SetParentWindow(LONG hWndParent)
{
    return ComBoundary([&]() -> HRESULT {
        TESSALY_TRACE("S:CPlay::SetParentWindow>");
        HWND hWnd = reinterpret_cast<HWND>(static_cast<LONG_PTR>(hWndParent));
        if (hWnd && !IsWindow(hWnd))
        {
            TESSALY_TRACE("E:CPlay::SetParentWindow> Invalid non-null window handle: hWndParent");
            return E_INVALIDARG;
        }
        m_hWndParent = hWnd;
        m_rcParent = CUtility::GetWindowClientRect(hWnd);
        // Fails while no file is open, but the dispatcher keeps the window for the next open.
        m_pMediaPlayer->SetParentWindow(hWnd);
        return S_OK;
    });
}

STDMETHODIMP CPlay::GetParentWindow(LONG* phWndParent)
{
    TESSALY_TRACE("S:CPlay::GetParentWindow>");
    if (!CanWrite(phWndParent, sizeof(*phWndParent)))
    {
        TESSALY_TRACE("E:CPlay::GetParentWindow> Invalid param: phWndParent");
        return E_INVALIDARG;
    }
    *phWndParent = static_cast<LONG>(reinterpret_cast<LONG_PTR>(m_hWndParent));
    return S_OK;
}

STDMETHODIMP CPlay::SetParentWindowSize(ULONG dwWidth, ULONG dwHeight)
{
    return ComBoundary([&]() -> HRESULT {
        TESSALY_TRACE("S:CPlay::SetParentWindowSize>");
        if (dwWidth == 0)
        {
            TESSALY_TRACE("S:CPlay::SetParentWindowSize> dwWidth can't be zero");
            return E_INVALIDARG;
        }
        if (dwHeight == 0)
        {
            TESSALY_TRACE("S:CPlay::SetParentWindowSize> dwHeight can't be zero");
            return E_INVALIDARG;
        }
        if (dwWidth == static_cast<ULONG>(m_rcParent.right - m_rcParent.left) &&
            dwHeight == static_cast<ULONG>(m_rcParent.bottom - m_rcParent.top))
            return S_OK;
        m_rcParent.right = m_rcParent.left + static_cast<LONG>(dwWidth);
        m_rcParent.bottom = m_rcParent.top + static_cast<LONG>(dwHeight);
        UpdateInfoWindow();
        m_pMediaPlayer->SetParentWindowSize(static_cast<DWORD>(m_rcParent.right - m_rcParent.left),
                                            static_cast<DWORD>(m_rcParent.bottom - m_rcParent.top));
        return S_OK;
    });
}

HRESULT CPlay::UpdateInfoWindow()
{
    if (!m_pInfoWnd && CUtility::IsWindowHandle(m_hWndParent))
    {
        m_pInfoWnd.reset(new (std::nothrow) CInfoWnd());
        if (!m_pInfoWnd)
            return E_OUTOFMEMORY;
        m_pInfoWnd->SetMediaInfoRecord(&m_MediaInfo);
        if (!m_pInfoWnd->Create(m_hWndParent, CWindowBase::rcDefault, nullptr, WS_CHILD | WS_CLIPSIBLINGS | WS_CLIPCHILDREN, 0))
        {
            m_pInfoWnd.reset();
            return E_OUTOFMEMORY;
        }
    }
    if (!m_pInfoWnd)
        return S_OK;

    HWND hInfoWnd = m_pInfoWnd->GetHandle();
    // The engine never shows the window itself; it only hides it when it loses its parent.
    if (!m_hWndParent)
        ShowWindow(hInfoWnd, SW_HIDE);
    ::SetParent(hInfoWnd, m_hWndParent);
    if (m_hWndParent)
    {
        RECT rcParent, rcInfo;
        GetWindowRect(m_hWndParent, &rcParent);
        GetWindowRect(hInfoWnd, &rcInfo);
        if (!EqualRect(&rcParent, &rcInfo))
        {
            const RECT rcClient = CUtility::GetWindowClientRect(m_hWndParent);
            MoveWindow(hInfoWnd, rcClient.left, rcClient.top, rcClient.right - rcClient.left,
                       rcClient.bottom - rcClient.top, TRUE);
        }
    }
    m_pInfoWnd->SetVideoArea(m_pMediaPlayer.get());
    return S_OK;
}

STDMETHODIMP CPlay::GetPlaybackFlags(ULONG* pdwPlaybackFlags)
{
    TESSALY_TRACE("S:CPlay::GetPlaybackFlags>");
    if (!CanWrite(pdwPlaybackFlags, sizeof(*pdwPlaybackFlags)))
    {
        TESSALY_TRACE("E:CPlay::GetPlaybackFlags> Invalid param: pdwPlaybackFlags");
        return E_INVALIDARG;
    }
    return m_pMediaPlayer->GetPlaybackFlags(pdwPlaybackFlags);
}

STDMETHODIMP CPlay::SetPlaybackFlags(ULONG dwPlaybackFlags)
{
    return ComBoundary([&]() -> HRESULT {
        TESSALY_TRACE("S:CPlay::SetPlaybackFlags> dwPlaybackFlags = 0x%.8lx", dwPlaybackFlags);
        const HRESULT hr = m_pMediaPlayer->SetPlaybackFlags(dwPlaybackFlags);
        return FAILED(hr) ? hr : S_OK;
    });
}

// ---- IPlay2 ------------------------------------------------------------------------------

STDMETHODIMP CPlay::ShowMediaInfo(LONG bShow)
{
    if (!HasInfoWindow())
        return E_FAIL;
    m_pInfoWnd->ShowMediaInfo(bShow);
    return S_OK;
}

STDMETHODIMP CPlay::SetMediaInfo(TESSALY_MEDIA_INFO* pPMI)
{
    return ComBoundary([&]() -> HRESULT {
        if (!HasInfoWindow())
            return E_FAIL;
        if (!CanRead(pPMI, sizeof(*pPMI)))
            return E_INVALIDARG;
        CopyMemory(&m_MediaInfo, pPMI, sizeof(m_MediaInfo));
        m_pInfoWnd->LoadCoverArt(reinterpret_cast<LPCWSTR>(m_MediaInfo.wszCoverArtPath));
        InvalidateRect(m_pInfoWnd->GetHandle(), nullptr, TRUE);
        return S_OK;
    });
}

// ---- IPlayCD -----------------------------------------------------------------------------

STDMETHODIMP CPlay::OpenCD(SHORT wszDrive, USHORT wStartTrack, USHORT wEndTrack)
{
    return ComBoundary([&]() -> HRESULT {
        TESSALY_TRACE("S:CPlay::OpenCD>");
        // An empty path prepares no file back-end.
        const HRESULT hr = InitPlaybackEngine(L"");
        if (FAILED(hr))
        {
            TESSALY_TRACE("E:CPlay::OpenCD> InitPlaybackEngine failed");
            return hr;
        }
        return m_pMediaPlayer->OpenCD(static_cast<WCHAR>(wszDrive), wStartTrack, wEndTrack);
    });
}

STDMETHODIMP CPlay::GetDuration(double* dbDuration)
{
    return m_pMediaPlayer->GetCDDuration(dbDuration);
}

// ---- ITextDisplay ------------------------------------------------------------------------

STDMETHODIMP CPlay::SetGradientBkColor(ULONG crTop, ULONG crBottom, LONG bForceRefresh)
{
    if (!HasInfoWindow())
        return E_FAIL;
    m_pInfoWnd->SetGradientBkColor(crTop, crBottom, bForceRefresh);
    return S_OK;
}

STDMETHODIMP CPlay::SetTextColor(ULONG crColor, LONG bForceRefresh)
{
    if (!HasInfoWindow())
        return E_FAIL;
    m_pInfoWnd->SetTextColor(crColor, bForceRefresh);
    return S_OK;
}

STDMETHODIMP CPlay::SetFont(LOGFONTW* plf, LONG bForceRefresh)
{
    return ComBoundary([&]() -> HRESULT {
        if (!HasInfoWindow())
            return E_FAIL;
        if (plf && !CanRead(plf, sizeof(*plf)))
            return E_INVALIDARG;
        return m_pInfoWnd->SetFont(plf, bForceRefresh);
    });
}

STDMETHODIMP CPlay::GetGradientBkColor(ULONG* pcrTop, ULONG* pcrBottom)
{
    if (!HasInfoWindow())
        return E_FAIL;
    if (!CanWrite(pcrTop, sizeof(*pcrTop)) || !CanWrite(pcrBottom, sizeof(*pcrBottom)))
        return E_INVALIDARG;
    COLORREF crTop = 0, crBottom = 0;
    m_pInfoWnd->GetGradientBkColor(&crTop, &crBottom);
    *pcrTop = crTop;
    *pcrBottom = crBottom;
    return S_OK;
}

STDMETHODIMP CPlay::GetTextColor(ULONG* pcrColor)
{
    if (!HasInfoWindow())
        return E_FAIL;
    if (!CanWrite(pcrColor, sizeof(*pcrColor)))
        return E_INVALIDARG;
    COLORREF crColor = 0;
    m_pInfoWnd->GetTextColor(&crColor);
    *pcrColor = crColor;
    return S_OK;
}

// ---- events ------------------------------------------------------------------------------

HRESULT CPlay::OnMediaPlayerEvent(DWORD dwEvent, ULONG_PTR ulParam, void* pContext)
{
    // A sink may release the host's last reference: the object, its sink lists included, lives
    // until every sink has heard the event.
    auto pThis = static_cast<CPlay*>(pContext);
    const ComPtr<IUnknown> keepAlive(pThis->GetUnknown());
    return pThis->NotifyStreamingPlayerEvent(static_cast<WORD>(dwEvent & 0xFFFF), ulParam);
}

HRESULT CPlay::NotifyStreamingPlayerEvent(WORD wEvent, ULONG_PTR ulParam)
{
    switch (wEvent)
    {
    // Both completions keep the line log readers search for, error prefix and all.
    case STREAMING_EVENT_COMPLETE:
        TESSALY_TRACE("E:CPlay::NotifyStreamingPlayerEvent> Streaming Playback completed");
        return Fire_OnPlayComplete();
    case STREAMING_EVENT_TRACK_COMPLETE:
        TESSALY_TRACE("E:CPlay::NotifyStreamingPlayerEvent> Streaming Playback completed");
        return Fire_OnPlayTrackComplete();
    case STREAMING_EVENT_ERROR:
        TESSALY_TRACE("E:CPlay::NotifyStreamingPlayerEvent> Error!");
        return PlaybackError(static_cast<HRESULT>(ulParam));
    case STREAMING_EVENT_PROGRESS:
        return OnPlaybackProgress(*reinterpret_cast<const double*>(ulParam));
    default:
        TESSALY_TRACE("E:CPlay::NotifyStreamingPlayerEvent> Unknown Event Code = %d", static_cast<int>(wEvent));
        return S_OK;
    }
}

HRESULT CPlay::PlaybackError(HRESULT hrError)
{
    if (m_pMediaPlayer->GetPlayState() == Playback_State_Stop)
    {
        TESSALY_TRACE("S:CPlay::PlaybackError> We have stopped, don't bother about this error");
        return S_OK;
    }
    // The dispatcher does not stop on an error by itself; the host hears of it once stopped.
    m_pMediaPlayer->Stop();
    return Fire_OnPlayError(hrError);
}

HRESULT CPlay::OnPlaybackProgress(double dProgress)
{
    const TESSALY_PLAYBACK_STATE state = m_pMediaPlayer->GetPlayState();
    m_dCurElapseTime = dProgress;
    if (state != Playback_State_Play)
        return S_OK;
    return Fire_OnPlayProgress(dProgress, state);
}

HRESULT CPlay::Fire_OnPlayComplete()
{
    return m_cpPlayEvents.Fire<IPlayEvents>([](IPlayEvents* pSink) { return pSink->OnPlayComplete(); });
}

HRESULT CPlay::Fire_OnPlayError(HRESULT hrError)
{
    return m_cpPlayEvents.Fire<IPlayEvents>([hrError](IPlayEvents* pSink) { return pSink->OnPlayError(hrError); });
}

HRESULT CPlay::Fire_OnPlayProgress(double dProgress, TESSALY_PLAYBACK_STATE state)
{
    return m_cpPlayEvents.Fire<IPlayEvents>(
        [dProgress, state](IPlayEvents* pSink) { return pSink->OnPlayProgress(dProgress, state); });
}

HRESULT CPlay::Fire_OnPlayTrackComplete()
{
    return m_cpPlayCDEvents.Fire<IPlayCDEvents>([](IPlayCDEvents* pSink) { return pSink->OnPlayTrackComplete(); });
}
