#include "backends/wmp/CWMPHost.h"

#include <oleauto.h>

#include <cwchar>
#include <new>

#include "backends/wmp/CAtlAxLibrary.h"
#include "backends/wmp/CWMPEventSink.h"
#include "backends/wmp/WMPInterfaces.h"
#include "base/CUtility.h"
#include "base/EngineMessages.h"
#include "trace/Trace.h"

namespace {

const wchar_t kClassName[] = L"WMPHost.Handler.WndClass";

// A BSTR for the length of one call.
class CBstr
{
public:
    explicit CBstr(LPCWSTR pwsz = nullptr) : m_bstr(pwsz ? SysAllocString(pwsz) : nullptr) {}
    ~CBstr() { SysFreeString(m_bstr); }
    CBstr(const CBstr&) = delete;
    CBstr& operator=(const CBstr&) = delete;
    BSTR Get() const { return m_bstr; }
    BSTR* Out()
    {
        SysFreeString(m_bstr);
        m_bstr = nullptr;
        return &m_bstr;
    }
    LPCWSTR Text() const { return m_bstr ? m_bstr : L""; }

private:
    BSTR m_bstr;
};

bool RegisterHostClass(HINSTANCE hInstance, WNDPROC pfnWndProc)
{
    WNDCLASSEXW wcx = {};
    wcx.cbSize = sizeof(wcx);
    if (GetClassInfoExW(hInstance, kClassName, &wcx))
        return true;
    wcx = {};
    wcx.cbSize = sizeof(wcx);
    wcx.lpfnWndProc = pfnWndProc;
    wcx.hInstance = hInstance;
    wcx.hCursor = LoadCursorW(nullptr, reinterpret_cast<LPCWSTR>(IDC_ARROW));
    wcx.lpszClassName = kClassName;
    return RegisterClassExW(&wcx) != 0;
}

} // namespace

CWMPHost::~CWMPHost()
{
    if (m_pbOpenAlive)
        *m_pbOpenAlive = false;
    if (IsWindow(m_hWnd))
        DestroyWindow(m_hWnd);
}

HWND CWMPHost::Create(HWND hWndParent, const RECT& rc, DWORD dwStyle, DWORD dwExStyle)
{
    HINSTANCE hInstance = CUtility::ModuleInstance();
    if (!RegisterHostClass(hInstance, WindowProc))
        return nullptr;
    return CreateWindowExW(dwExStyle, kClassName, L"", dwStyle, rc.left, rc.top, rc.right - rc.left,
                           rc.bottom - rc.top, hWndParent, nullptr, hInstance, this);
}

LRESULT CALLBACK CWMPHost::WindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    if (uMsg == WM_NCCREATE)
    {
        auto pHost = static_cast<CWMPHost*>(reinterpret_cast<CREATESTRUCTW*>(lParam)->lpCreateParams);
        pHost->m_hWnd = hWnd;
        SetWindowLongPtrW(hWnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(pHost));
    }
    auto pHost = reinterpret_cast<CWMPHost*>(GetWindowLongPtrW(hWnd, GWLP_USERDATA));
    if (!pHost)
        return DefWindowProcW(hWnd, uMsg, wParam, lParam);

    bool bHandled = false;
    const LRESULT lResult = pHost->ProcessMessage(uMsg, wParam, lParam, &bHandled);
    if (uMsg == WM_NCDESTROY)
    {
        SetWindowLongPtrW(hWnd, GWLP_USERDATA, 0);
        pHost->m_hWnd = nullptr;
    }
    return bHandled ? lResult : DefWindowProcW(hWnd, uMsg, wParam, lParam);
}

LRESULT CWMPHost::ProcessMessage(UINT uMsg, WPARAM wParam, LPARAM lParam, bool* pbHandled)
{
    *pbHandled = true;
    switch (uMsg)
    {
    case WM_CREATE:
        return OnCreate();
    case WM_DESTROY:
        OnDestroy();
        *pbHandled = false;
        return 0;
    case WM_SIZE:
        OnSize();
        return 0;
    case WM_ERASEBKGND:
        return 1;
    case WM_WMP_EVENT:
        return OnWMPEvent(wParam, lParam, pbHandled);
    default:
        *pbHandled = false;
        return 0;
    }
}

LRESULT CWMPHost::OnCreate()
{
    CAtlAxLibrary::WinInit();
    m_dwAdviseCookie = 0;
    m_hNotifyWnd = nullptr;
    m_bFileOpened = false;
    m_bOpening = false;

    m_hOpenEvent = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    if (!m_hOpenEvent)
        return 0;
    const RECT rc = CUtility::GetWindowClientRect(m_hWnd);
    m_wndView = CreateWindowExW(WS_EX_CLIENTEDGE, L"AtlAxWin", nullptr, WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN,
                                rc.left, rc.top, rc.right - rc.left, rc.bottom - rc.top, m_hWnd, nullptr,
                                CUtility::ModuleInstance(), nullptr);
    if (!m_wndView)
    {
        TESSALY_TRACE("E:CWMPHost::OnCreate> no container window");
        return 0;
    }

    // Each step needs the one before; a failure leaves the window without a working control.
    ComPtr<IUnknown> pControl;
    ComPtr<IWMPSettings> pSettings;
    ComPtr<IConnectionPointContainer> pContainer;
    CBstr version;
    HRESULT hr = CAtlAxLibrary::CreateControl(m_wndView, wmp::kControlClassId);
    if (SUCCEEDED(hr))
        hr = CAtlAxLibrary::GetControl(m_wndView, &pControl);
    if (SUCCEEDED(hr))
        hr = QueryTo(pControl, __uuidof(IWMPPlayer), m_spWMPPlayer);
    if (SUCCEEDED(hr))
        hr = m_spWMPPlayer->get_versionInfo(version.Out());
    if (SUCCEEDED(hr) && FAILED(QueryTo(m_spWMPPlayer, __uuidof(IWMPControls), m_spWMPControls)))
    {
        // Some controls hand out their transport only as a property of the player.
        hr = m_spWMPPlayer->get_controls(&m_spWMPControls);
    }
    if (SUCCEEDED(hr))
    {
        CBstr none(L"none");
        m_spWMPPlayer->put_uiMode(none.Get());
        m_spWMPPlayer->put_enableContextMenu(VARIANT_FALSE);
        hr = m_spWMPPlayer->get_settings(&pSettings);
    }
    ComPtr<CWMPEventSink> pSink;
    if (SUCCEEDED(hr))
    {
        Adopt(pSink, new (std::nothrow) CWMPEventSink(m_hWnd));
        hr = pSink ? S_OK : E_OUTOFMEMORY;
    }
    if (SUCCEEDED(hr))
        hr = QueryTo(m_spWMPPlayer, IID_IConnectionPointContainer, pContainer);
    // Advised through the interface of the point found: a control may call the sink it is given
    // without asking it for that interface first (this platform's does).
    IUnknown* pSinkInterface = static_cast<IWMPEvents*>(pSink.Get());
    if (SUCCEEDED(hr) && FAILED(hr = pContainer->FindConnectionPoint(__uuidof(IWMPEvents), &m_spConnectionPoint)))
    {
        hr = pContainer->FindConnectionPoint(__uuidof(_WMPOCXEvents), &m_spConnectionPoint);
        pSinkInterface = static_cast<IDispatch*>(pSink.Get());
    }
    if (SUCCEEDED(hr))
        hr = m_spConnectionPoint->Advise(pSinkInterface, &m_dwAdviseCookie);
    if (FAILED(hr))
        TESSALY_TRACE("E:CWMPHost::OnCreate> the control could not be built (0x%08lX)", static_cast<unsigned long>(hr));
    return 0;
}

void CWMPHost::OnDestroy()
{
    TESSALY_TRACE("CWMPHost::OnDestroy\n");
    if (m_hOpenEvent)
    {
        SetEvent(m_hOpenEvent);
        CloseHandle(m_hOpenEvent);
        m_hOpenEvent = nullptr;
    }
    if (m_spConnectionPoint)
    {
        if (m_dwAdviseCookie != 0)
            m_spConnectionPoint->Unadvise(m_dwAdviseCookie);
        m_dwAdviseCookie = 0;
        m_spConnectionPoint.Reset();
    }
    if (m_spWMPControls)
    {
        m_spWMPControls->stop();
        m_spWMPControls.Reset();
    }
    if (m_spWMPPlayer)
    {
        m_spWMPPlayer->close();
        m_spWMPPlayer.Reset();
    }
    m_bFileOpened = false;
}

void CWMPHost::OnSize()
{
    const RECT rc = CUtility::GetWindowClientRect(m_hWnd);
    if (m_wndView)
        MoveWindow(m_wndView, rc.left, rc.top, rc.right - rc.left, rc.bottom - rc.top, TRUE);
}

HRESULT CWMPHost::Open(LPCWSTR pwszPath)
{
    if (m_bFileOpened)
        Close();
    if (m_bOpening)
        return E_FAIL;
    if (!m_spWMPPlayer || !m_hOpenEvent)
        return E_FAIL;

    m_bOpening = true;
    m_bItemOpenBegan = false;
    ResetEvent(m_hOpenEvent);
    m_bOpenFailed = false;

    CBstr url(pwszPath);
    HRESULT hr = m_spWMPPlayer->put_URL(url.Get());
    // Messages dispatched while waiting may destroy the window, or this object with it.
    bool bAlive = true;
    m_pbOpenAlive = &bAlive;
    const bool bWaited = WaitWithMessage(m_hOpenEvent);
    if (!bAlive)
        return E_FAIL;
    m_pbOpenAlive = nullptr;
    if (!bWaited || m_bOpenFailed || !m_spWMPPlayer)
        hr = E_FAIL;
    m_bOpening = false;
    if (SUCCEEDED(hr))
    {
        ReadFileInfo();
        m_bFileOpened = true;
    }
    return hr;
}

bool CWMPHost::WaitWithMessage(HANDLE hEvent)
{
    const ULONGLONG deadline = GetTickCount64() + kOpenLimitMs;
    bool bAlways = true;
    const bool* pbAlive = m_pbOpenAlive ? m_pbOpenAlive : &bAlways;
    while (!m_bOpenFailed)
    {
        const ULONGLONG now = GetTickCount64();
        const DWORD dwLeft = now < deadline ? static_cast<DWORD>(deadline - now) : 0;
        // Messages already in the queue count too: the control may post its events while
        // put_URL itself looks at the queue, and a plain wait would then sleep past them.
        const DWORD r = MsgWaitForMultipleObjectsEx(1, &hEvent, dwLeft, QS_ALLINPUT, MWMO_INPUTAVAILABLE);
        if (r == WAIT_OBJECT_0)
        {
            TESSALY_TRACE("CWMPHost::WaitWithMessage: OK.\n");
            return true;
        }
        if (r == WAIT_TIMEOUT)
        {
            TESSALY_TRACE("CWMPHost::WaitWithMessage: timeout.\n");
            return false;
        }
        if (r == WAIT_FAILED)
            return false;
        MSG msg = {};
        PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE);
        if (msg.message == WM_DESTROY && msg.hwnd == m_hWnd)
            break;
        TranslateMessage(&msg);
        DispatchMessageW(&msg);
        // This object, or only its window, went while messages were dispatched: nothing is left
        // to wait for (and after the first, nothing of this object may be touched).
        if (!*pbAlive || !m_hOpenEvent)
            return false;
    }
    return m_bOpenFailed;
}

LRESULT CWMPHost::OnWMPEvent(WPARAM wKind, LPARAM lValue, bool* pbHandled)
{
    const long lState = static_cast<long>(lValue);
    switch (wKind)
    {
    case WMP_EVENT_OPENSTATE_CHANGED:
        TESSALY_TRACE("WMP_EVENT_OPENSTATE_CHANGED: %d\n", static_cast<int>(lState));
        if (!m_bOpening)
            break;
        if (lState >= wmp::kOpenStateFirstMediaState)
            m_bItemOpenBegan = true;
        if (lState == wmp::kOpenStateMediaOpen)
        {
            Stop();
            SetEvent(m_hOpenEvent);
        }
        break;
    case WMP_EVENT_PLAYSTATE_CHANGED:
        // A control may pass through ready before it even looks at the item (this platform's does
        // on every new URL), so ready and undefined end the wait only once the item's own open began.
        if (m_bOpening && m_bItemOpenBegan && lState == wmp::kPlayStateReady)
            SetEvent(m_hOpenEvent);
        else if (m_bOpening && m_bItemOpenBegan && lState == wmp::kPlayStateUndefined)
        {
            // The control gave up on the item without an error event.
            Stop();
            m_bOpenFailed = true;
            SetEvent(m_hOpenEvent);
        }
        else if (lState == wmp::kPlayStateMediaEnded && m_bFileOpened && m_hNotifyWnd)
            PostMessageW(m_hNotifyWnd, WM_WMP_PLAYBACK_COMPLETE, 0, 0);
        break;
    case WMP_EVENT_ERROR:
        m_bOpenFailed = true;
        TESSALY_TRACE("WMP_EVENT_ERROR \n");
        if (m_bOpening)
            SetEvent(m_hOpenEvent);
        if (m_bFileOpened && m_hNotifyWnd)
            PostMessageW(m_hNotifyWnd, WM_WMP_PLAYBACK_ERROR, 2, lValue);
        break;
    default:
        *pbHandled = false;
        break;
    }
    return 0;
}

void CWMPHost::ClearFileInfo()
{
    m_bSeekable = FALSE;
    m_bAudioOnly = FALSE;
    m_bPicture = FALSE;
    m_dwWidth = 0;
    m_dwHeight = 0;
    m_dDuration = 0.0;
}

bool CWMPHost::ReadFileInfo()
{
    TESSALY_TRACE("CWMPHost::ReadFileInfo():enter");
    ClearFileInfo();
    ComPtr<IWMPMedia> pMedia;
    if (FAILED(m_spWMPPlayer->get_currentMedia(&pMedia)) || !pMedia)
        return false;
    CBstr attribute(L"MediaType");
    CBstr type;
    if (FAILED(pMedia->getItemInfo(attribute.Get(), type.Out())))
        return false;

    // The reads below are not checked: a failed one leaves its member at 0.
    long lWidth = 0;
    long lHeight = 0;
    const bool bPicture = _wcsicmp(type.Text(), L"photo") == 0;
    const bool bAudio = _wcsicmp(type.Text(), L"audio") == 0;
    const bool bVideo = _wcsicmp(type.Text(), L"video") == 0;
    if (bPicture || bVideo)
    {
        pMedia->get_imageSourceHeight(&lHeight);
        pMedia->get_imageSourceWidth(&lWidth);
        m_dwHeight = static_cast<DWORD>(lHeight);
        m_dwWidth = static_cast<DWORD>(lWidth);
    }
    if (!bPicture)
        pMedia->get_duration(&m_dDuration);
    m_bPicture = bPicture;
    m_bAudioOnly = bAudio;

    VARIANT_BOOL bAvailable = VARIANT_FALSE;
    CBstr position(L"currentPosition");
    if (m_spWMPControls)
        m_spWMPControls->get_isAvailable(position.Get(), &bAvailable);
    m_bSeekable = bAvailable == VARIANT_TRUE;
    // Every opened item counts as seekable, whatever the control answered.
    m_bSeekable = TRUE;
    TESSALY_TRACE("CWMPHost::ReadFileInfo():leave OK");
    return true;
}

HRESULT CWMPHost::Close()
{
    if (m_spWMPPlayer && FAILED(m_spWMPPlayer->close()) && m_bFileOpened && m_spWMPControls)
    {
        // A control that cannot close the item is at least made to stop playing it.
        m_spWMPControls->stop();
    }
    ClearFileInfo();
    m_bFileOpened = false;
    return S_OK;
}

HRESULT CWMPHost::Play()
{
    if (!m_bFileOpened || !m_spWMPControls)
        return E_FAIL;
    m_spWMPControls->play();
    return S_OK;
}

HRESULT CWMPHost::Stop()
{
    if (!m_bFileOpened || !m_spWMPControls)
        return E_FAIL;
    m_spWMPControls->stop();
    return S_OK;
}

HRESULT CWMPHost::Pause()
{
    if (!m_bFileOpened || !m_spWMPControls)
        return E_FAIL;
    m_spWMPControls->pause();
    return S_OK;
}

HRESULT CWMPHost::SeekTo(double dSeconds)
{
    if (!m_bFileOpened || !m_bSeekable || !m_spWMPControls)
        return E_FAIL;
    return m_spWMPControls->put_currentPosition(dSeconds);
}

HRESULT CWMPHost::GetCurrentPosition(double* pdSeconds)
{
    *pdSeconds = 0.0;
    if (!m_spWMPControls)
        return E_FAIL;
    if (!m_bFileOpened)
        return S_OK;
    m_spWMPControls->get_currentPosition(pdSeconds);
    return S_OK;
}

HRESULT CWMPHost::GetFileInfo(BOOL* pbAudioOnly, double* pdDuration, BOOL* pbSeekable, DWORD* pdwWidth,
                              DWORD* pdwHeight, BOOL* pbPicture)
{
    if (!m_bFileOpened)
        return E_FAIL;
    *pbAudioOnly = m_bAudioOnly;
    *pdDuration = m_dDuration;
    *pbSeekable = m_bSeekable;
    *pdwWidth = m_dwWidth;
    *pdwHeight = m_dwHeight;
    *pbPicture = m_bPicture;
    return S_OK;
}

bool CWMPHost::SetStretchToFit(BOOL bStretch)
{
    WMPOpenState state = wmposUndefined;
    if (!m_spWMPPlayer || FAILED(m_spWMPPlayer->get_openState(&state)))
        return false;
    if (state != wmposMediaOpen)
        return true;
    ComPtr<wmp::IWMPPlayer2> pPlayer2;
    if (FAILED(QueryTo(m_spWMPPlayer, wmp::IID_IWMPPlayer2, pPlayer2)))
        return true;
    VARIANT_BOOL bCurrent = VARIANT_FALSE;
    const VARIANT_BOOL bWanted = bStretch ? VARIANT_TRUE : VARIANT_FALSE;
    if (SUCCEEDED(pPlayer2->get_stretchToFit(&bCurrent)) && bCurrent == bWanted)
        return true;
    pPlayer2->put_stretchToFit(bWanted);
    return true;
}

BOOL CWMPHost::MoveHostWindow(int x, int y, int cx, int cy)
{
    const UINT uShow = (m_bAudioOnly || !m_bFileOpened) ? SWP_HIDEWINDOW : SWP_SHOWWINDOW;
    return SetWindowPos(m_hWnd, nullptr, x, y, cx, cy, SWP_NOZORDER | SWP_NOACTIVATE | uShow);
}
