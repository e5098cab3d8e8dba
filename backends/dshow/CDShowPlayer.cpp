#include "backends/dshow/CDShowPlayer.h"

#include <shlwapi.h>

#include <cwchar>

#include "backends/dshow/CSourceRenderer.h"
#include "backends/dshow/CWMV9RendererChoice.h"
#include "base/CUtility.h"
#include "base/EngineMessages.h"
#include "engine/TessalyContract.h"
#include "inspect/CASFFileParser.h"
#include "trace/Trace.h"

namespace {

const LPCWSTR g_FileExt[] = {
    L".MP3", L".WAV", L".WMA", L".AVI", L".MPEG", L".MPG", L".MPA", L".MPE", L".M1V", L".M1A",
    L".MPV", L".ASF", L".DAT", L".WMV", L".DIVX", L".VOB", L".OGG", L".FLAC", L".KMV"};

template <class Q>
HRESULT QueryGraph(IGraphBuilder* pGraph, REFIID riid, ComPtr<Q>& result, const char* pszName)
{
    const HRESULT hr = pGraph->QueryInterface(riid, &result);
    if (FAILED(hr))
        TESSALY_TRACE("E:CDShowPlayer::OpenInterfaces> Failed to QI for %s", pszName);
    return hr;
}

HRESULT MapRenderStatus(HRESULT hr)
{
    switch (hr)
    {
    case VFW_S_AUDIO_NOT_RENDERED:
        return TESSALY_S_AUDIO_NOT_RENDERED;
    case VFW_S_VIDEO_NOT_RENDERED:
        return TESSALY_S_VIDEO_NOT_RENDERED;
    case VFW_S_PARTIAL_RENDER:
        return TESSALY_S_PARTIAL_RENDER;
    default:
        return S_OK;
    }
}

} // namespace

CDShowPlayer::CDShowPlayer()
{
    m_ppwszFileExt = g_FileExt;
    m_dwFileExtCount = ARRAYSIZE(g_FileExt);
}

LRESULT CALLBACK CDShowPlayer::StaticWindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    auto pThis = reinterpret_cast<CDShowPlayer*>(GetWindowLongPtrW(hWnd, GWLP_USERDATA));
    if (pThis && uMsg == WM_DSHOW_GRAPH_NOTIFY)
    {
        pThis->HandleGraphEvent();
        return 0;
    }
    return DefWindowProcW(hWnd, uMsg, wParam, lParam);
}

HRESULT CDShowPlayer::Init()
{
    // A second Init keeps the window it has: an open graph still notifies that one.
    if (!CUtility::IsWindowHandle(m_hEventWnd))
    {
        m_hEventWnd = CUtility::CreateInternalWindow(L"DSHOWPLAYER.Event.Handler.WndClass",
                                                     L"DSHOWPLAYER.Event.Handler.Window",
                                                     StaticWindowProc, this, nullptr, FALSE, FALSE);
        if (!m_hEventWnd)
        {
            TESSALY_TRACE("E:CDShowPlayer::Init> Failed to create hidden window...");
            return HRESULT_FROM_WIN32(GetLastError());
        }
    }
    m_bInitialized = true;
    return S_OK;
}

void CDShowPlayer::Destroy()
{
    CloseInterfaces();
    CUtility::DestroyInternalWindow(&m_hEventWnd);
    CUtility::DestroyInternalWindow(&m_hBackgroundWnd);
    m_hWndParent = nullptr;
    m_WMVCore.Unload();
}

HRESULT CDShowPlayer::OpenInterfaces()
{
    HRESULT hr = CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER,
                                  IID_IGraphBuilder, &m_pGB);
    if (FAILED(hr))
    {
        TESSALY_TRACE("E:CDShowPlayer::OpenInterfaces> Failed to CoCreateInstance IGraphBuilder");
        return hr;
    }
    IGraphBuilder* pGraph = m_pGB.Get();
    if (FAILED(hr = QueryGraph(pGraph, IID_IMediaEventEx, m_pME, "IMediaEventEx")) ||
        FAILED(hr = QueryGraph(pGraph, IID_IMediaControl, m_pMC, "IMediaControl")) ||
        FAILED(hr = QueryGraph(pGraph, IID_IMediaSeeking, m_pMS, "IMediaSeeking")) ||
        FAILED(hr = QueryGraph(pGraph, IID_IVideoWindow, m_pVideoWindow, "IVideoWindow")) ||
        FAILED(hr = QueryGraph(pGraph, IID_IBasicVideo, m_pBV, "IBasicVideo")) ||
        FAILED(hr = QueryGraph(pGraph, IID_IBasicAudio, m_pBA, "IBasicAudio")))
        return hr;

    hr = m_pME->SetNotifyWindow(reinterpret_cast<OAHWND>(m_hEventWnd), WM_DSHOW_GRAPH_NOTIFY, 0);
    if (FAILED(hr))
        TESSALY_TRACE("E:CDShowPlayer::OpenInterfaces> m_pME->SetNotifyWindow Failed");
    return hr;
}

void CDShowPlayer::CloseInterfaces()
{
    TESSALY_TRACE("S:CDShowPlayer::CloseInterfaces>");
    // Stopped before anything is taken from it: its streaming threads end while the graph is still
    // whole, not inside its final release after its window and notifications are gone.
    if (m_pMC && FAILED(m_pMC->Stop()))
        TESSALY_TRACE("E:CDShowPlayer::CloseInterfaces> m_pMC->Stop Failed");
    if (m_pVideoWindow)
    {
        if (FAILED(m_pVideoWindow->put_Visible(OAFALSE)))
            TESSALY_TRACE("E:CDShowPlayer::CloseInterfaces> m_pVideoWindow->put_Visible Failed");
        SetMessageDrain(nullptr);
        if (FAILED(m_pVideoWindow->put_Owner(0)))
            TESSALY_TRACE("E:CDShowPlayer::CloseInterfaces> m_pVideoWindow->put_Owner Failed");
    }
    if (m_pME && FAILED(m_pME->SetNotifyWindow(0, 0, 0)))
        TESSALY_TRACE("E:CDShowPlayer::CloseInterfaces> m_pME->SetNotifyWindow Failed");
    m_pME.Reset();
    m_pMS.Reset();
    m_pMC.Reset();
    m_pBA.Reset();
    m_pBV.Reset();
    m_pVideoWindow.Reset();
    m_pGB.Reset();
}

BOOL CDShowPlayer::IsMP3File(LPCWSTR pwszExt) { return _wcsicmp(pwszExt, L".MP3") == 0; }
BOOL CDShowPlayer::IsOGGFile(LPCWSTR pwszExt) { return _wcsicmp(pwszExt, L".OGG") == 0; }
BOOL CDShowPlayer::IsFLACFile(LPCWSTR pwszExt) { return _wcsicmp(pwszExt, L".FLAC") == 0; }

// Both flag words are the dispatcher's business: the layout follows SetPlaybackFlags only.
HRESULT CDShowPlayer::OpenFile(LPCWSTR pwszFile, DWORD, DWORD)
{
    BOOL bRendered = FALSE;
    CloseInterfaces();
    // The platform's GStreamer splitter can wait for ever inside RenderFile on an ASF file whose
    // header claims more bytes than the file holds; such a file never reaches the platform. The
    // header read here also tells the video codec below.
    CASFFileParser header;
    const bool bAsf = header.Open(pwszFile) == CASFFileParser::kOk;
    if (bAsf && header.HeaderOverrunsFile())
    {
        TESSALY_TRACE("E:CDShowPlayer::OpenFile> the ASF header claims more bytes than the file holds");
        return HRESULT_FROM_WIN32(ERROR_INVALID_DATA);
    }
    HRESULT hr = OpenInterfaces();
    if (FAILED(hr))
        return hr;

    // Formats whose own source filter is tried before automatic rendering.
    static const struct
    {
        BOOL (*pfnTakes)(LPCWSTR pwszExt);
        HRESULT (*pfnRender)(IGraphBuilder* pGraph, LPCWSTR pwszFile);
        const char* pszFormat;
        const char* pszSource;
    } kSourcePaths[] = {
        {IsMP3File, CSourceRenderer::RenderMP3File, "MP3", "WM ASF Reader"},
        {IsOGGFile, CSourceRenderer::RenderOGGFile, "OGG", "ondrel OGG Reader"},
        {IsFLACFile, CSourceRenderer::RenderFlacFile, "FLAC", "ondrel FLAC Reader"},
    };
    LPCWSTR pwszExt = PathFindExtensionW(pwszFile);
    for (const auto& path : kSourcePaths)
    {
        if (!path.pfnTakes(pwszExt))
            continue;
        hr = path.pfnRender(m_pGB.Get(), pwszFile);
        if (SUCCEEDED(hr))
            bRendered = TRUE;
        else
            TESSALY_TRACE("E:CDShowPlayer::OpenFile> Failed to render this %s file using %s, we try the default rendering...",
                          path.pszFormat, path.pszSource);
    }

    if (!bRendered)
    {
        bool bAddedVMR9 = false;
        if (bAsf && CWMV9RendererChoice::IsWMV9VideoCodec(header))
        {
            TESSALY_TRACE("S:CDShowPlayer::OpenFile> Is WMV9 Video Codec");
            // A file made for a device profile keeps the default renderer.
            BOOL bHasTemplate = FALSE;
            if (FAILED(HasDeviceConformanceMetaData(pwszFile, &bHasTemplate)) || !bHasTemplate)
                bAddedVMR9 = SUCCEEDED(CWMV9RendererChoice::AddVMR9Filter(m_pGB.Get()));
        }
        hr = m_pGB->RenderFile(pwszFile, nullptr);
        if (FAILED(hr))
        {
            TESSALY_TRACE("E:CDShowPlayer::OpenFile> IGraphBuilder->RenderFile failed");
            return hr;
        }
        if (bAddedVMR9)
            CWMV9RendererChoice::RemoveUnconnectedVMR9(m_pGB.Get());
    }
    const HRESULT hrResult = MapRenderStatus(hr);

    DetectAudioOnly();
    CheckSeekable();
    if (!m_bAudioOnly)
        AttachVideoWindow();
    return hrResult;
}

HRESULT CDShowPlayer::CreateMetadataEditor(IWMMetadataEditor** ppEditor)
{
    return m_WMVCore.CreateEditor(ppEditor);
}

HRESULT CDShowPlayer::HasDeviceConformanceMetaData(LPCWSTR pwszFile, BOOL* pbHas)
{
    *pbHas = FALSE;
    ComPtr<IWMMetadataEditor> editor;
    HRESULT hr = CreateMetadataEditor(&editor);
    if (SUCCEEDED(hr) && !editor)
        hr = E_POINTER;
    if (FAILED(hr))
    {
        TESSALY_TRACE("E:CDShowPlayer::HasDeviceConformanceMetaData> WMCreateEditor failed");
        return hr;
    }
    return CWMV9RendererChoice::ReadConformanceTemplate(editor.Get(), pwszFile, pbHas);
}

void CDShowPlayer::DetectAudioOnly()
{
    m_bAudioOnly = FALSE;
    if (!m_pVideoWindow || !m_pBV)
    {
        m_bAudioOnly = TRUE;
        return;
    }
    long lVisible = 0;
    const HRESULT hr = m_pVideoWindow->get_Visible(&lVisible);
    if (FAILED(hr))
    {
        TESSALY_TRACE("E:CDShowPlayer::OpenFile> m_pVideoWindow->get_Visible() failed");
        // The graph has no renderer with a window; any other failure is not proof of that.
        if (hr == E_NOINTERFACE)
            m_bAudioOnly = TRUE;
    }
}

HRESULT CDShowPlayer::CheckSeekable()
{
    if (!m_pMS)
    {
        TESSALY_TRACE("E:CDShowPlayer::CheckSeekable> IMediaSeeking is null");
        return E_FAIL;
    }
    m_bSeekable = FALSE;
    DWORD dwCapabilities = 0;
    const HRESULT hr = m_pMS->GetCapabilities(&dwCapabilities);
    if (FAILED(hr))
    {
        TESSALY_TRACE("E:CDShowPlayer::CheckSeekable> IMediaSeeking->GetCapabilities failed");
        return hr;
    }
    if (dwCapabilities & AM_SEEKING_CanSeekAbsolute)
    {
        TESSALY_TRACE("S:CDShowPlayer::CheckSeekable> Video Stream is Seekable...");
        m_bSeekable = TRUE;
    }
    else
        TESSALY_TRACE("S:CDShowPlayer::CheckSeekable> Video Stream is NOT Seekable...");
    return S_OK;
}

HRESULT CDShowPlayer::SetParentWindow(HWND hWndParent)
{
    if (hWndParent == m_hWndParent)
        return S_OK;
    const HRESULT hr = CreateBackgroundWindow(&m_hBackgroundWnd, hWndParent,
                                              L"DSHOWPLAYER.Background.WndClass",
                                              L"DSHOWPLAYER.Background.Window", DefWindowProcW, this);
    if (FAILED(hr))
        return hr;
    m_hWndParent = hWndParent;
    m_rcParent = CUtility::GetWindowClientRect(hWndParent);
    InitVideoWindow();
    return S_OK;
}

HRESULT CDShowPlayer::SetParentWindowSize(DWORD dwWidth, DWORD dwHeight)
{
    if (!m_hWndParent)
    {
        TESSALY_TRACE("S:CDShowPlayer::SetParentWindowSize> Parent window not set");
        return E_FAIL;
    }
    if (static_cast<DWORD>(m_rcParent.right - m_rcParent.left) == dwWidth &&
        static_cast<DWORD>(m_rcParent.bottom - m_rcParent.top) == dwHeight)
        return S_OK;
    m_rcParent.right = m_rcParent.left + static_cast<LONG>(dwWidth);
    m_rcParent.bottom = m_rcParent.top + static_cast<LONG>(dwHeight);
    InitVideoWindow();
    return S_OK;
}

HRESULT CDShowPlayer::AttachVideoWindow()
{
    if (!m_pVideoWindow)
        return E_FAIL;
    HRESULT hr = m_pVideoWindow->put_Visible(OAFALSE);
    if (FAILED(hr))
    {
        TESSALY_TRACE("E:CDShowPlayer::SetParentWindow> m_pVideoWindow->put_Visible Failed");
        return hr;
    }
    hr = m_pVideoWindow->put_Owner(reinterpret_cast<OAHWND>(m_hBackgroundWnd));
    if (FAILED(hr))
    {
        TESSALY_TRACE("E:CDShowPlayer::SetParentWindow> m_pVideoWindow->put_Owner Failed");
        return hr;
    }
    if (m_hWndParent)
    {
        hr = m_pVideoWindow->put_WindowStyle(WS_CHILD | WS_CLIPSIBLINGS | WS_CLIPCHILDREN);
        if (FAILED(hr))
        {
            TESSALY_TRACE("E:CDShowPlayer::SetParentWindow> m_pVideoWindow->put_WindowStyle Failed");
            return hr;
        }
        hr = InitVideoWindow();
        if (FAILED(hr))
        {
            TESSALY_TRACE("E:CDShowPlayer::SetParentWindow> InitVideoWindow Failed");
            return hr;
        }
    }
    // Input over the video goes to the host, as if the video were not there.
    hr = SetMessageDrain(m_hWndParent);
    if (FAILED(hr))
    {
        TESSALY_TRACE("E:CDShowPlayer::SetParentWindow> SetMessageDrain Failed");
        return hr;
    }
    hr = m_pVideoWindow->put_Visible(CUtility::IsWindowHandle(m_hBackgroundWnd) ? OATRUE : OAFALSE);
    if (FAILED(hr))
    {
        TESSALY_TRACE("E:CDShowPlayer::SetParentWindow> m_pVideoWindow->put_Visible Failed");
        return hr;
    }
    return S_OK;
}

HRESULT CDShowPlayer::InitVideoWindow()
{
    if (!m_pBV)
    {
        TESSALY_TRACE("S:CDShowPlayer::InitVideoWindow> m_pBV is null");
        return E_FAIL;
    }
    if (!m_pVideoWindow)
    {
        TESSALY_TRACE("S:CDShowPlayer::InitVideoWindow> m_pVideoWindow is null");
        return E_FAIL;
    }
    if (!m_hWndParent)
    {
        TESSALY_TRACE("S:CDShowPlayer::InitVideoWindow> Parent window handle is null");
        return E_FAIL;
    }

    long lWidth = 0;
    long lHeight = 0;
    const HRESULT hrSize = m_pBV->GetVideoSize(&lWidth, &lHeight);
    if (hrSize == E_NOINTERFACE)
        return S_OK; // no video in this graph
    if (FAILED(hrSize))
        lWidth = lHeight = 0;
    RECT rc = {0, 0, lWidth, lHeight};
    const DWORD dwParentWidth = static_cast<DWORD>(m_rcParent.right - m_rcParent.left);
    const DWORD dwParentHeight = static_cast<DWORD>(m_rcParent.bottom - m_rcParent.top);
    TESSALY_TRACE("S:CDShowPlayer::InitVideoWindow> Video Source Size: lWidth = %d, lHeight = %d",
                  static_cast<int>(lWidth), static_cast<int>(lHeight));
    TESSALY_TRACE("S:CDShowPlayer::InitVideoWindow> Parent Window Size: lWidth = %d, lHeight = %d",
                  static_cast<int>(dwParentWidth), static_cast<int>(dwParentHeight));
    FitVideoRect(dwParentWidth, dwParentHeight, &rc);

    SetWindowPos(m_hBackgroundWnd, HWND_NOTOPMOST, m_rcParent.left, m_rcParent.top,
                 static_cast<int>(dwParentWidth), static_cast<int>(dwParentHeight), SWP_NOZORDER);
    const HRESULT hr = m_pVideoWindow->SetWindowPosition(rc.left, rc.top, rc.right - rc.left,
                                                         rc.bottom - rc.top);
    if (FAILED(hr))
        TESSALY_TRACE("E:CDShowPlayer::InitVideoWindow> m_pVideoWindow->SetWindowPosition() failed");
    return hr;
}

HRESULT CDShowPlayer::SetMessageDrain(HWND hDrain)
{
    if (!m_pVideoWindow)
    {
        TESSALY_TRACE("E:CDShowPlayer::SetMessageDrain> m_pVideoWindow is NULL");
        return E_FAIL;
    }
    if (hDrain)
    {
        if (!m_hOldMessageDrain)
        {
            OAHWND hOld = 0;
            if (SUCCEEDED(m_pVideoWindow->get_MessageDrain(&hOld)))
                m_hOldMessageDrain = reinterpret_cast<HWND>(hOld);
            else
                TESSALY_TRACE("E:CDShowPlayer::SetMessageDrain> m_pVideoWindow->get_MessageDrain failed, can't backup message drain");
        }
        return m_pVideoWindow->put_MessageDrain(reinterpret_cast<OAHWND>(hDrain));
    }
    if (FAILED(m_pVideoWindow->put_MessageDrain(reinterpret_cast<OAHWND>(m_hOldMessageDrain))))
        TESSALY_TRACE("E:CDShowPlayer::SetMessageDrain> m_pVideoWindow->put_MessageDrain failed, can't restore message drain");
    m_hOldMessageDrain = nullptr;
    return S_OK;
}

HRESULT CDShowPlayer::SetPlaybackFlags(DWORD dwPlaybackFlags)
{
    if (dwPlaybackFlags == m_dwPlaybackFlags)
    {
        TESSALY_TRACE("S:CQTPlayer::SetPlaybackFlags> No changes, do nothing...");
        return S_OK;
    }
    const DWORD dwChanged = dwPlaybackFlags ^ m_dwPlaybackFlags;
    m_dwPlaybackFlags = dwPlaybackFlags;
    // Only the stretch bit changes the picture's place.
    if (dwChanged & TESSALY_PLAYBACK_FLAG_STRETCH)
        InitVideoWindow();
    return S_OK;
}

HRESULT CDShowPlayer::Play()
{
    if (!m_pMC)
        return E_FAIL;
    const HRESULT hr = m_pMC->Run();
    if (FAILED(hr))
        TESSALY_TRACE("E:CDShowPlayer::Play> m_pMC->Run failed");
    return hr;
}

HRESULT CDShowPlayer::Resume()
{
    return m_pMC ? m_pMC->Run() : E_FAIL;
}

HRESULT CDShowPlayer::Pause()
{
    return m_pMC ? m_pMC->Pause() : E_FAIL;
}

HRESULT CDShowPlayer::Stop()
{
    if (!m_pMC)
        return E_FAIL;
    if (FAILED(m_pMC->Stop()))
        TESSALY_TRACE("E:CDShowPlayer::Stop> m_pMC->Stop failed");
    HRESULT hr = SetCurTime(0.0);
    if (FAILED(hr))
    {
        // A clip that cannot seek returns to its start by being stopped and run again.
        hr = m_pMC->Stop();
        if (FAILED(hr))
            TESSALY_TRACE("E:CDShowPlayer::Stop> m_pMC->Stop failed to stop media clip");
        else
        {
            hr = m_pMC->Run();
            if (FAILED(hr))
                TESSALY_TRACE("E:CDShowPlayer::Stop> m_pMC->Run failed to reset media clip");
        }
    }
    // Paused rather than stopped, so that a video shows its first frame.
    m_pMC->Pause();
    return hr;
}

HRESULT CDShowPlayer::SetCurTime(double dSeconds)
{
    if (!m_pMS)
        return S_OK;
    LONGLONG llPosition = CUtility::SecondsToReferenceTime(dSeconds);
    return m_pMS->SetPositions(&llPosition, AM_SEEKING_AbsolutePositioning, nullptr,
                               AM_SEEKING_NoPositioning);
}

HRESULT CDShowPlayer::GetCurTime(double* pdSeconds)
{
    if (!m_pMS)
    {
        TESSALY_TRACE("E:CDShowPlayer::GetCurTime> IMediaSeeking interface is null");
        return S_OK;
    }
    LONGLONG llPosition = 0;
    if (FAILED(m_pMS->GetCurrentPosition(&llPosition)))
    {
        TESSALY_TRACE("E:CDShowPlayer::GetCurTime> m_pMS->GetCurrentPosition failed");
        return S_OK;
    }
    *pdSeconds = CUtility::ReferenceTimeToSeconds(llPosition);
    return S_OK;
}

HRESULT CDShowPlayer::GetFileInfo(BOOL* pbAudioOnly, double* pdDuration, BOOL* pbSeekable,
                                  DWORD* pdwWidth, DWORD* pdwHeight, BOOL* pbPicture)
{
    *pbPicture = FALSE;
    *pbAudioOnly = m_bAudioOnly;
    *pbSeekable = m_bSeekable;
    *pdwWidth = 0;
    *pdwHeight = 0;
    *pdDuration = 0.0;
    if (!m_pMS || !m_pBV)
        return E_FAIL;

    LONGLONG llDuration = 0;
    HRESULT hr = m_pMS->GetDuration(&llDuration);
    if (SUCCEEDED(hr))
        *pdDuration = CUtility::ReferenceTimeToSeconds(llDuration);
    else
        TESSALY_TRACE("E:CDShowPlayer::GetFileInfo> m_pMS->GetDuration failed");

    if (!m_bAudioOnly)
    {
        long lWidth = 0;
        long lHeight = 0;
        hr = m_pBV->GetVideoSize(&lWidth, &lHeight);
        if (SUCCEEDED(hr))
        {
            *pdwWidth = static_cast<DWORD>(lWidth);
            *pdwHeight = static_cast<DWORD>(lHeight);
        }
        else
            TESSALY_TRACE("S:CDShowPlayer::GetFileInfo> m_pBV->GetVideoSize failed");
    }
    return hr;
}

HRESULT CDShowPlayer::CloseFile()
{
    CloseInterfaces();
    return S_OK;
}

LRESULT CDShowPlayer::HandleGraphEvent()
{
    LRESULT result = 0;
    bool bFreeFailed = false;
    long lCode = 0;
    LONG_PTR lParam1 = 0;
    LONG_PTR lParam2 = 0;
    // Every event fetched is freed at once, so none of their parameters can leak.
    while (m_pME && SUCCEEDED(m_pME->GetEvent(&lCode, &lParam1, &lParam2, 0)))
    {
        bool bAborted = false;
        if (lCode == EC_COMPLETE)
        {
            TESSALY_TRACE("S:CDShowPlayer::HandleGraphEvent> EC_COMPLETE");
            PostMessageW(m_hEventHandlerWnd, WM_DSHOW_PLAYBACK_COMPLETE, 0, 0);
        }
        else if (lCode == EC_ERRORABORT)
        {
            TESSALY_TRACE("S:CDShowPlayer::HandleGraphEvent> EC_ERRORABORT - 0x%08lx. Aborting...",
                          static_cast<unsigned long>(lParam1));
            if (m_pMC && FAILED(m_pMC->Stop()))
                TESSALY_TRACE("E:CDShowPlayer::HandleGraphEvent> Failed to stop media clip!");
            PostMessageW(m_hEventHandlerWnd, WM_DSHOW_PLAYBACK_ERROR, static_cast<WPARAM>(lParam1), 0);
            result = lParam1;
            bAborted = true;
        }
        if (FAILED(m_pME->FreeEventParams(lCode, lParam1, lParam2)))
            bFreeFailed = true;
        if (bAborted)
            break;
    }
    // A graph that cannot give back its events is in no state to go on.
    if (bFreeFailed)
        CloseFile();
    return result;
}
