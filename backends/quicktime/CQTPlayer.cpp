#include "backends/quicktime/CQTPlayer.h"

#include <memory>
#include <new>

#include "backends/quicktime/HostInput.h"
#include "base/CUtility.h"
#include "engine/CDllModule.h"
#include "engine/TessalyContract.h"
#include "trace/Trace.h"

namespace {

const LPCWSTR g_FileExt[] = {
    L".MOV", L".QT", L".MQV", L".DV", L".DIF", L".MP4", L".MP4V", L".3GPP", L".3GP", L".3G2",
    L".3GP2", L".M4V", L".PNTG", L".PNT", L".MAC", L".PICT", L".PIC", L".PCT", L".QTIF", L".QTI",
    L".SGI", L".RGB", L".TARGA", L".TGA", L".PSD", L".GIF"};

} // namespace

CQTPlayer::CQTPlayer()
{
    m_ppwszFileExt = g_FileExt;
    m_dwFileExtCount = ARRAYSIZE(g_FileExt);
}

// A player the dispatcher never destroyed still gives back its windows and QuickTime references.
CQTPlayer::~CQTPlayer()
{
    if (m_pQT || m_nQTRefs > 0 || m_hBackgroundWnd || m_hVideoWnd)
        CQTPlayer::Destroy();
}

HRESULT CQTPlayer::CheckQuickTime(bool bNeedsMovieObject) const
{
    if (!g_DllModule.IsQTInstalled())
    {
        TESSALY_TRACE("CQTPlayer> QT components not installed...");
        return TESSALY_E_QT_NOTINSTALLED;
    }
    if (!g_DllModule.IsQTVersionSupported())
    {
        TESSALY_TRACE("CQTPlayer> QT components version is not compatible...");
        return TESSALY_E_QT_VERSION;
    }
    if (bNeedsMovieObject && !m_pQT)
    {
        TESSALY_TRACE("CQTPlayer> QT object is null, call Init first...");
        return E_FAIL;
    }
    return S_OK;
}

HRESULT CQTPlayer::Init()
{
    if (m_pQT)
    {
        TESSALY_TRACE("S:CQTPlayer::Init> QT object created...");
        return S_OK;
    }
    // Taken even when the start-up fails: every reference is given back by Destroy.
    g_DllModule.InitQT();
    ++m_nQTRefs;
    const HRESULT hr = CheckQuickTime(false);
    if (FAILED(hr))
        return hr;
    m_pQT.reset(new (std::nothrow) CQuickTime);
    if (!m_pQT)
    {
        TESSALY_TRACE("S:CQTPlayer::Init> Failed to create CQuickTime object...");
        return E_OUTOFMEMORY;
    }
    m_bInitialized = true;
    return S_OK;
}

void CQTPlayer::Destroy()
{
    m_hWndParent = nullptr;
    if (m_pQT)
    {
        m_pQT->SetPortWindow(nullptr);
        m_pQT->SetNotifyWindow(nullptr);
        // The movie and its port go while the video window still exists.
        m_pQT.reset();
    }
    CUtility::DestroyInternalWindow(&m_hVideoWnd);
    CUtility::DestroyInternalWindow(&m_hBackgroundWnd);
    for (; m_nQTRefs > 0; --m_nQTRefs)
        g_DllModule.DeInitQT();
    m_bInitialized = false;
}

HRESULT CQTPlayer::SetParentWindow(HWND hWndParent)
{
    HRESULT hr = CheckQuickTime(true);
    if (FAILED(hr))
        return hr;
    // A video window made now needs a port of its own; a re-parented one keeps the one it has.
    const bool bSetPort = !hWndParent || !CUtility::IsWindowHandle(m_hVideoWnd);
    hr = CreateBackgroundWindow(&m_hBackgroundWnd, hWndParent, L"QTPlayer.Background.WndClass",
                                L"QTPlayer.Handler.Window", StaticWindowProc, this);
    if (FAILED(hr))
        return hr;
    hr = CreateBackgroundWindow(&m_hVideoWnd, m_hBackgroundWnd, L"QTPlayer.Handler.WndClass",
                                L"QTPlayer.Handler.Window", StaticWindowProc, this);
    if (FAILED(hr))
        return hr;
    m_hWndParent = hWndParent;
    m_rcParent = CUtility::GetWindowClientRect(hWndParent);
    if (bSetPort)
        m_pQT->SetPortWindow(m_hVideoWnd);
    InitVideoWindow();
    return S_OK;
}

// Pausing and resuming around the new layout means a paused or stopped movie plays after a
// resize; hosts have always seen it so.
HRESULT CQTPlayer::SetParentWindowSize(DWORD dwWidth, DWORD dwHeight)
{
    const HRESULT hr = CheckQuickTime(true);
    if (FAILED(hr))
        return hr;
    m_rcParent.right = m_rcParent.left + static_cast<LONG>(dwWidth);
    m_rcParent.bottom = m_rcParent.top + static_cast<LONG>(dwHeight);
    Pause();
    InitVideoWindow();
    Resume();
    return S_OK;
}

HRESULT CQTPlayer::InitVideoWindow()
{
    const HRESULT hr = CheckQuickTime(true);
    if (FAILED(hr))
        return hr;
    if (!m_hWndParent)
    {
        TESSALY_TRACE("S:CQTPlayer::InitVideoWindow> Parent window handle is null");
        return E_FAIL;
    }
    if (!m_hBackgroundWnd)
    {
        TESSALY_TRACE("S:CQTPlayer::InitVideoWindow> background window handle is null");
        return E_FAIL;
    }
    if (!m_hVideoWnd)
    {
        TESSALY_TRACE("S:CQTPlayer::InitVideoWindow> own window handle is null");
        return E_FAIL;
    }
    LONG lWidth = 0;
    LONG lHeight = 0;
    if (FAILED(m_pQT->GetMovieSize(&lWidth, &lHeight)))
    {
        TESSALY_TRACE("S:CQTPlayer::InitVideoWindow> Can't get source movie size");
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
    if (SetWindowPos(m_hVideoWnd, nullptr, rc.left, rc.top, lVideoWidth, lVideoHeight, SWP_NOZORDER | SWP_NOACTIVATE))
        m_pQT->SetParentWindowSize(static_cast<DWORD>(lVideoWidth), static_cast<DWORD>(lVideoHeight));
    else
        TESSALY_TRACE("CQTPlayer::InitVideoWindow() -> m_hVideoWnd is not a valid window.\n");
    return S_OK;
}

// QuickTime takes ANSI paths; the short form reaches a file whatever characters its name has.
// Both QuickTime back-ends open through here, so they fail alike.
HRESULT CQTPlayer::OpenMovieByShortPath(CQuickTime& qt, LPCWSTR pwszFile, DWORD dwOpenFlags)
{
    const DWORD cchShort = GetShortPathNameW(pwszFile, nullptr, 0);
    if (cchShort == 0)
        return E_FAIL;
    std::unique_ptr<WCHAR[]> pwszShort(new (std::nothrow) WCHAR[cchShort]);
    if (!pwszShort)
        return E_OUTOFMEMORY;
    const DWORD cchGot = GetShortPathNameW(pwszFile, pwszShort.get(), cchShort);
    if (cchGot == 0 || cchGot >= cchShort)
        return E_FAIL;
    const int cbAnsi = WideCharToMultiByte(CP_ACP, 0, pwszShort.get(), -1, nullptr, 0, nullptr, nullptr);
    if (cbAnsi == 0)
    {
        TESSALY_TRACE("E:CQTPlayer::OpenFile> WideCharToMultiByte failed");
        return E_FAIL;
    }
    std::unique_ptr<char[]> pszAnsi(new (std::nothrow) char[cbAnsi + 1]);
    if (!pszAnsi)
        return E_OUTOFMEMORY;
    if (CUtility::WideToAnsi(pszAnsi.get(), pwszShort.get(), cbAnsi + 1) == 0)
    {
        TESSALY_TRACE("E:CQTPlayer::OpenFile> can't convert unicode string into ansi string");
        return E_FAIL;
    }
    const HRESULT hr = qt.OpenMovie(pszAnsi.get(), dwOpenFlags);
    if (FAILED(hr))
        TESSALY_TRACE("E:CQTAudioPlayer::OpenFile> m_pQT->OpenMovie failed");
    return hr;
}

// Neither flag word is used here: the layout follows SetPlaybackFlags only.
HRESULT CQTPlayer::OpenFile(LPCWSTR pwszFile, DWORD dwOpenFlags, DWORD)
{
    HRESULT hr = CheckQuickTime(true);
    if (FAILED(hr))
        return hr;
    hr = OpenMovieByShortPath(*m_pQT, pwszFile, dwOpenFlags);
    if (FAILED(hr))
        return hr;
    m_pQT->SetCurTime(0.0); // refused for a picture, which has no time line
    InitVideoWindow();
    InvalidateRect(m_hBackgroundWnd, nullptr, TRUE);
    return S_OK;
}

HRESULT CQTPlayer::CloseFile()
{
    const HRESULT hr = CheckQuickTime(true);
    if (FAILED(hr))
        return hr;
    m_pQT->CloseMovie();
    return S_OK;
}

// A change is stored and laid out, and still answered with E_FAIL: hosts have always been told so.
HRESULT CQTPlayer::SetPlaybackFlags(DWORD dwPlaybackFlags)
{
    const HRESULT hr = CheckQuickTime(false);
    if (FAILED(hr))
        return hr;
    if (dwPlaybackFlags == m_dwPlaybackFlags)
    {
        TESSALY_TRACE("S:CQTPlayer::SetPlaybackFlags> No changes, do nothing...");
        return S_OK;
    }
    const bool bStretchChanged = ((dwPlaybackFlags ^ m_dwPlaybackFlags) & TESSALY_PLAYBACK_FLAG_STRETCH) != 0;
    m_dwPlaybackFlags = dwPlaybackFlags;
    if (bStretchChanged)
        InitVideoWindow();
    TESSALY_TRACE("S:CQTPlayer::SetPlaybackFlags> dwPlaybackFlags = 0x%.8x", static_cast<unsigned>(dwPlaybackFlags));
    return E_FAIL;
}

LRESULT CALLBACK CQTPlayer::StaticWindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    auto pThis = reinterpret_cast<CQTPlayer*>(GetWindowLongPtrW(hWnd, GWLP_USERDATA));
    if (!pThis)
        return DefWindowProcW(hWnd, uMsg, wParam, lParam);
    return pThis->WindowProc(hWnd, uMsg, wParam, lParam);
}

// Every message first services the movie controller: it has no other clock.
LRESULT CQTPlayer::WindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    if (m_pQT)
        m_pQT->OnWindowMessage(hWnd, uMsg, wParam, lParam);
    if (IsHostInput(uMsg))
    {
        if (m_hWndParent)
            PostMessageW(m_hWndParent, uMsg, wParam, lParam);
        return 0;
    }
    return DefWindowProcW(hWnd, uMsg, wParam, lParam);
}
