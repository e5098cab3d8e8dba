#include "display/CInfoWnd.h"

#include <windowsx.h>

#include "base/CUtility.h"
#include "trace/Trace.h"

namespace {

LPCWSTR Text(const short* pField)
{
    return reinterpret_cast<LPCWSTR>(pField);
}

bool IsPresent(const short* pField)
{
    return pField[0] != 0;
}

// The panel's proportions are single-precision constants; the product is taken in double so
// that, for example, 500 × 0.04f gives 19, not 20.
int Proportion(int nLength, float fShare)
{
    return static_cast<int>(nLength * static_cast<double>(fShare));
}

int Width(const RECT& rc)
{
    return rc.right - rc.left;
}

int Height(const RECT& rc)
{
    return rc.bottom - rc.top;
}

// Scrolling goes this far and then starts again from below the box: only the beginning of a
// long description is ever shown.
const int SCROLL_LIMIT = 100;

// The cursor is looked at this often while it shows, and hidden this long after it last moved.
const UINT kCursorPollMs = 100;
const DWORD kCursorHideDelayMs = 2000;
// One step of the description's scroll.
const UINT kScrollStepMs = 40;

void DrawField(HDC hdc, HFONT hFont, const short* pField, const RECT& rcBox, UINT uFormat)
{
    if (!IsPresent(pField))
        return;
    if (hFont)
        SelectObject(hdc, hFont);
    RECT rc = rcBox;
    DrawTextW(hdc, Text(pField), -1, &rc, uFormat);
}

} // namespace

CInfoWnd::CInfoWnd() = default;

CInfoWnd::~CInfoWnd()
{
    // The window procedure reaches this object through the window: the window goes first.
    if (IsWindow())
        DestroyWindow();
    if (m_hbmBack)
        DeleteObject(m_hbmBack);
    if (m_hMemDC)
        DeleteDC(m_hMemDC);
}

bool CInfoWnd::ProcessWindowMessage(HWND, UINT uMsg, WPARAM wParam, LPARAM lParam,
                                    LRESULT& lResult, DWORD dwMsgMapID)
{
    if (dwMsgMapID != 0)
    {
        TESSALY_TRACE("Invalid message map ID (%i)\n", static_cast<int>(dwMsgMapID));
        return false;
    }
    lResult = 0;
    switch (uMsg)
    {
    case WM_PAINT:
        OnPaint();
        return true;
    case WM_ERASEBKGND:
        // Painting covers the whole client area from the off-screen bitmap; erasing first
        // would only flicker.
        lResult = 1;
        return true;
    case WM_SIZE:
        OnSize(LOWORD(lParam), HIWORD(lParam));
        return true;
    case WM_CREATE:
        lResult = OnCreate();
        return true;
    case WM_DESTROY:
        OnDestroy();
        return true;
    case WM_LBUTTONDBLCLK:
    case WM_CHAR:
    case WM_DEADCHAR:
    case WM_KEYDOWN:
    case WM_KEYUP:
    case WM_LBUTTONDOWN:
    case WM_LBUTTONUP:
    case WM_MOUSEMOVE:
    case WM_RBUTTONDBLCLK:
    case WM_RBUTTONDOWN:
    case WM_RBUTTONUP:
        lResult = OnInput(uMsg, wParam, lParam);
        return true;
    case WM_TIMER:
        if (!OnTimer(wParam))
            return false;
        lResult = 1;
        return true;
    default:
        return ReflectNotifications(uMsg, wParam, lParam, lResult);
    }
}

LRESULT CInfoWnd::OnCreate()
{
    TESSALY_TRACE("CInfoWnd::OnCreate\n");
    HDC hdc = GetDC(m_hWnd);
    const bool bFonts = m_Fonts.CreateDefault(hdc);
    ReleaseDC(m_hWnd, hdc);
    return bFonts ? 0 : -1;
}

void CInfoWnd::OnDestroy()
{
    TESSALY_TRACE("CInfoWnd::OnDestroy\n");
    if (m_nCursorTimer)
    {
        KillTimer(m_hWnd, m_nCursorTimer);
        m_nCursorTimer = 0;
    }
    StopScroll();
    m_Fonts.Delete();
}

// ---- operations of the Play object ----------------------------------------------------------

HRESULT CInfoWnd::SetDisplayMode(DWORD dwMode, BOOL bInvalidate)
{
    if (bInvalidate)
        Invalidate(TRUE);
    ResetScroll();
    if (dwMode != m_dwMode)
    {
        if (dwMode != INFO_MODE_NONE && dwMode != INFO_MODE_CAPTION && dwMode != INFO_MODE_MEDIA)
            return E_INVALIDARG;
        m_dwMode = dwMode;
    }
    if (m_dwMode == INFO_MODE_CAPTION && m_bShowInfo && m_pVideoArea)
    {
        DWORD dwWidth = 0;
        DWORD dwHeight = 0;
        GetVideoArea(&dwWidth, &dwHeight);
        return m_pVideoArea->SetParentWindowSize(dwWidth, dwHeight);
    }
    return S_OK;
}

void CInfoWnd::ShowMediaInfo(BOOL bShow)
{
    if (bShow == m_bShowInfo)
        return;
    m_bShowInfo = bShow;
    if (bShow)
    {
        if (m_dwMode == INFO_MODE_MEDIA)
        {
            Invalidate(TRUE);
        }
        else if (m_dwMode == INFO_MODE_CAPTION)
        {
            // The picture moves up out of the caption strip's way.
            DWORD dwWidth = 0;
            DWORD dwHeight = 0;
            GetVideoArea(&dwWidth, &dwHeight);
            if (m_pVideoArea)
                m_pVideoArea->SetParentWindowSize(dwWidth, dwHeight);
            Invalidate(TRUE);
        }
        return;
    }
    ResetScroll();
    Invalidate(TRUE);
    // The current back-end takes this window as its parent and fills all of it again.
    if (m_pVideoArea)
        m_pVideoArea->SetParentWindow(m_hWnd);
}

void CInfoWnd::ClearMediaInfo()
{
    LoadCoverArt(nullptr);
    if (m_pMediaInfo)
        ZeroMemory(m_pMediaInfo, sizeof(*m_pMediaInfo));
}

bool CInfoWnd::LoadCoverArt(LPCWSTR pwszPath)
{
    return m_CoverArt.Load(m_hWnd, pwszPath);
}

void CInfoWnd::SetGradientBkColor(COLORREF crTop, COLORREF crBottom, BOOL bForceRefresh)
{
    if (crTop == m_crTop && crBottom == m_crBottom)
        return;
    m_crTop = crTop;
    m_crBottom = crBottom;
    const RECT rcClient = CUtility::GetWindowClientRect(m_hWnd);
    RecreateBackground(Width(rcClient), Height(rcClient));
    if (bForceRefresh)
        Invalidate(bForceRefresh);
}

void CInfoWnd::GetGradientBkColor(COLORREF* pcrTop, COLORREF* pcrBottom) const
{
    *pcrTop = m_crTop;
    *pcrBottom = m_crBottom;
}

void CInfoWnd::SetTextColor(COLORREF crColor, BOOL bForceRefresh)
{
    if (crColor == m_crText)
        return;
    m_crText = crColor;
    if (bForceRefresh)
        Invalidate(bForceRefresh);
}

HRESULT CInfoWnd::SetFont(const LOGFONTW* plf, BOOL bForceRefresh)
{
    m_Fonts.Delete();
    if (!plf)
    {
        HDC hdc = GetDC(m_hWnd);
        const bool bFonts = m_Fonts.CreateDefault(hdc);
        ReleaseDC(m_hWnd, hdc);
        return bFonts ? S_OK : E_FAIL;
    }
    const bool bFonts = m_Fonts.CreateFrom(*plf);
    if (bForceRefresh)
        Invalidate(TRUE);
    return bFonts ? S_OK : E_FAIL;
}

// ---- layout ---------------------------------------------------------------------------------

void CInfoWnd::OnSize(int nWidth, int nHeight)
{
    if (nWidth == 0 || nHeight == 0)
        return;
    RECT rc = {};
    GetClientRect(m_hWnd, &rc);
    const int W = Width(rc);
    const int H = Height(rc);

    RecreateBackground(nWidth, nHeight);
    m_nMarginY = Proportion(H, 0.04f);
    m_nMarginX = Proportion(W, 0.04f);
    m_nCoverHeight = Proportion(H, 0.255f);
    m_nCoverWidth = Proportion(W, 0.225f);
    m_nTextWidth = Proportion(W, 0.675f);

    m_rcCoverArt.left = rc.left + m_nMarginX;
    m_rcCoverArt.top = rc.top + m_nMarginY;
    m_rcCoverArt.right = m_rcCoverArt.left + m_nCoverWidth;
    m_rcCoverArt.bottom = m_rcCoverArt.top + m_nCoverHeight;

    // The text column beside the cover art: channel, two lines of title, release date, its
    // bottom level with the picture's.
    const int nLineHeight = m_nCoverHeight / 4;
    m_rcChannel.right = rc.right - m_nMarginX;
    m_rcChannel.left = m_rcChannel.right - m_nTextWidth;
    m_rcChannel.top = rc.top + m_nMarginY;
    m_rcChannel.bottom = m_rcChannel.top + nLineHeight + 1;
    m_rcTitle = {m_rcChannel.left, m_rcChannel.bottom, m_rcChannel.right,
                 m_rcChannel.bottom + 2 * nLineHeight};
    m_rcReleaseDate = {m_rcChannel.left, m_rcTitle.bottom, m_rcChannel.right,
                       m_rcChannel.top + m_nCoverHeight};

    m_rcDescript = {rc.left + m_nMarginX, m_rcReleaseDate.bottom + m_nMarginY,
                    rc.right - m_nMarginX, rc.bottom - m_nMarginY};
    m_rcCaption = {rc.left, static_cast<LONG>(rc.bottom - H * static_cast<double>(m_fCaptionRatio)),
                   rc.right, rc.bottom};

    ScaleFonts();
    StopScroll();
    m_nScrollOffset = 0;
}

void CInfoWnd::RecreateBackground(int nWidth, int nHeight)
{
    if (m_hbmBack)
    {
        DeleteObject(m_hbmBack);
        m_hbmBack = nullptr;
    }
    if (nWidth <= 0 || nHeight <= 0)
        return;
    HDC hdc = GetDC(m_hWnd);
    m_hbmBack = CreateCompatibleBitmap(hdc, nWidth, nHeight);
    HDC hdcMem = m_hbmBack ? CreateCompatibleDC(hdc) : nullptr;
    if (hdcMem)
    {
        HGDIOBJ hbmOld = SelectObject(hdcMem, m_hbmBack);
        const RECT rc = {0, 0, nWidth, nHeight};
        CUtility::DrawVerticalGradient(hdcMem, &rc, m_crTop, m_crBottom);
        SelectObject(hdcMem, hbmOld);
        DeleteDC(hdcMem);
    }
    ReleaseDC(m_hWnd, hdc);
}

void CInfoWnd::ScaleFonts()
{
    m_Fonts.Scale(static_cast<LONG>(Height(m_rcTitle) * 0.4),
                  static_cast<LONG>(Height(m_rcChannel) * 0.8),
                  static_cast<LONG>(Height(m_rcDescript) * (1.0 / 13)));
}

void CInfoWnd::GetVideoArea(DWORD* pdwWidth, DWORD* pdwHeight) const
{
    const RECT rc = CUtility::GetWindowClientRect(m_hWnd);
    if (*pdwWidth == 0)
        *pdwWidth = static_cast<DWORD>(Width(rc));
    const DWORD dwAbove = static_cast<DWORD>(Height(rc) * (1.0 - m_fCaptionRatio));
    if (*pdwHeight == 0 || dwAbove < *pdwHeight)
        *pdwHeight = dwAbove;
}

bool CInfoWnd::GetActiveTextBox(RECT* prc) const
{
    if (m_dwMode == INFO_MODE_MEDIA)
        *prc = m_rcDescript;
    else if (m_dwMode == INFO_MODE_CAPTION)
        *prc = m_rcCaption;
    else
        return false;
    return true;
}

// ---- painting -------------------------------------------------------------------------------

void CInfoWnd::OnPaint()
{
    RECT rcClient = {};
    GetClientRect(m_hWnd, &rcClient);
    PAINTSTRUCT ps;
    HDC hdcPaint = BeginPaint(m_hWnd, &ps);
    if (!m_hMemDC)
        m_hMemDC = CreateCompatibleDC(hdcPaint);

    HDC hdc = hdcPaint;
    HGDIOBJ hbmOld = nullptr;
    if (m_hMemDC && m_hbmBack)
    {
        hbmOld = SelectObject(m_hMemDC, m_hbmBack);
        hdc = m_hMemDC;
    }

    if (!IsShowingText())
    {
        SelectObject(hdc, GetStockObject(BLACK_BRUSH));
        Rectangle(hdc, rcClient.left, rcClient.top, rcClient.right, rcClient.bottom);
    }
    else if (m_dwMode == INFO_MODE_MEDIA)
    {
        PaintMediaPanel(hdc, rcClient);
    }
    else
    {
        const int nSaved = SaveDC(hdc);
        SelectObject(hdc, GetStockObject(BLACK_BRUSH));
        Rectangle(hdc, rcClient.left, rcClient.top, rcClient.right, rcClient.bottom);
        DrawScrollText(hdc, rcClient, m_rcCaption);
        RestoreDC(hdc, nSaved);
    }

    if (hdc == m_hMemDC)
    {
        // One block to the screen: the window never shows a half-painted state.
        BitBlt(hdcPaint, 0, 0, Width(rcClient), Height(rcClient), m_hMemDC, 0, 0, SRCCOPY);
        SelectObject(m_hMemDC, hbmOld);
    }
    EndPaint(m_hWnd, &ps);
}

void CInfoWnd::PaintMediaPanel(HDC hdc, const RECT& rcClient)
{
    CUtility::DrawVerticalGradient(hdc, &rcClient, m_crTop, m_crBottom);
    m_CoverArt.Draw(hdc, m_rcCoverArt);
    SetBkMode(hdc, TRANSPARENT);
    ::SetTextColor(hdc, m_crText);
    if (!m_pMediaInfo)
        return;

    // Long single lines are clipped at the box edges rather than shortened with an ellipsis.
    HGDIOBJ hFontOld = GetCurrentObject(hdc, OBJ_FONT);
    DrawField(hdc, m_Fonts.Channel(), m_pMediaInfo->wszChannelName, m_rcChannel,
              DT_CENTER | DT_VCENTER | DT_SINGLELINE);
    DrawField(hdc, m_Fonts.Title(), m_pMediaInfo->wszTitle, m_rcTitle,
              DT_CENTER | DT_VCENTER | DT_WORDBREAK);
    DrawField(hdc, m_Fonts.Title(), m_pMediaInfo->wszReleaseDate, m_rcReleaseDate,
              DT_CENTER | DT_VCENTER | DT_SINGLELINE);
    SelectObject(hdc, hFontOld);
    if (IsPresent(m_pMediaInfo->wszDescript))
        DrawScrollText(hdc, rcClient, m_rcDescript);
}

void CInfoWnd::DrawScrollText(HDC hdc, const RECT& rcClient, const RECT& rcText)
{
    HRGN hrgnClip = CreateRectRgnIndirect(&rcText);
    SelectClipRgn(hdc, hrgnClip);
    // The whole window's gradient, so that the box shows its own slice of it.
    CUtility::DrawVerticalGradient(hdc, &rcClient, m_crTop, m_crBottom);
    SetBkMode(hdc, TRANSPARENT);
    ::SetTextColor(hdc, m_crText);
    HGDIOBJ hFontOld = m_Fonts.Descript() ? SelectObject(hdc, m_Fonts.Descript()) : nullptr;
    if (m_pMediaInfo)
    {
        RECT rc = rcText;
        rc.top -= m_nScrollOffset;
        DrawTextW(hdc, Text(m_pMediaInfo->wszDescript), -1, &rc,
                  DT_CENTER | DT_WORDBREAK | DT_EDITCONTROL);
    }
    SelectClipRgn(hdc, nullptr);
    if (hFontOld)
        SelectObject(hdc, hFontOld);
    if (hrgnClip)
        DeleteObject(hrgnClip);
}

// ---- input and timers -----------------------------------------------------------------------

LRESULT CInfoWnd::OnInput(UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    // Movement only wakes the cursor; the host never sees it.
    if (uMsg == WM_MOUSEMOVE)
    {
        ArmCursorHide();
        return 1;
    }

    RECT rcBox = {};
    const POINT pt = {GET_X_LPARAM(lParam), GET_Y_LPARAM(lParam)};
    if (uMsg == WM_LBUTTONDOWN && GetActiveTextBox(&rcBox) && PtInRect(&rcBox, pt) && m_bShowInfo)
    {
        // A click stops a scrolling description, and starts one that does not fit its box.
        if (m_nScrollTimer)
        {
            ResetScroll();
        }
        else if (m_pMediaInfo && IsPresent(m_pMediaInfo->wszDescript))
        {
            HDC hdc = GetDC(m_hWnd);
            HGDIOBJ hFontOld = m_Fonts.Descript() ? SelectObject(hdc, m_Fonts.Descript()) : nullptr;
            RECT rcText = rcBox;
            DrawTextW(hdc, Text(m_pMediaInfo->wszDescript), -1, &rcText,
                      DT_WORDBREAK | DT_CALCRECT | DT_EDITCONTROL);
            if (hFontOld)
                SelectObject(hdc, hFontOld);
            ReleaseDC(m_hWnd, hdc);
            if (Height(rcText) >= Height(rcBox))
            {
                m_nScrollExtent = Height(rcText);
                m_nScrollOffset = 0;
                StartScroll();
            }
        }
    }

    if (HWND hWndParent = GetParent(m_hWnd))
        PostMessageW(hWndParent, uMsg, wParam, lParam);
    return 0;
}

void CInfoWnd::ArmCursorHide()
{
    if (!m_nCursorTimer)
    {
        ShowCursor(TRUE);
        m_nCursorTimer = SetTimer(m_hWnd, CURSOR_TIMER_ID, kCursorPollMs, nullptr);
    }
    m_dwCursorHideTime = Now() + kCursorHideDelayMs;
}

bool CInfoWnd::OnTimer(UINT_PTR nTimerId)
{
    if (m_nCursorTimer && nTimerId == m_nCursorTimer)
    {
        if (Now() > m_dwCursorHideTime)
        {
            ShowCursor(FALSE);
            KillTimer(m_hWnd, m_nCursorTimer);
            m_nCursorTimer = 0;
        }
        return true;
    }
    if (m_nScrollTimer && nTimerId == m_nScrollTimer)
        DrawScrollStep();
    return false;
}

void CInfoWnd::DrawScrollStep()
{
    RECT rcClient = {};
    GetClientRect(m_hWnd, &rcClient);
    RECT rcBox = {};
    if (GetActiveTextBox(&rcBox))
    {
        // Only the text box is redrawn and only it goes to the screen.
        HDC hdc = GetDC(m_hWnd);
        if (m_hMemDC && m_hbmBack)
        {
            HGDIOBJ hbmOld = SelectObject(m_hMemDC, m_hbmBack);
            DrawScrollText(m_hMemDC, rcClient, rcBox);
            BitBlt(hdc, rcBox.left, rcBox.top, Width(rcBox), Height(rcBox), m_hMemDC, rcBox.left,
                   rcBox.top, SRCCOPY);
            SelectObject(m_hMemDC, hbmOld);
        }
        else
        {
            DrawScrollText(hdc, rcClient, rcBox);
        }
        ReleaseDC(m_hWnd, hdc);
    }
    if (++m_nScrollOffset > SCROLL_LIMIT)
        m_nScrollOffset = rcBox.top - rcBox.bottom;
}

void CInfoWnd::StartScroll()
{
    if (m_nScrollTimer)
        return;
    m_nScrollOffset = 0;
    m_nScrollTimer = SetTimer(m_hWnd, SCROLL_TIMER_ID, kScrollStepMs, nullptr);
}

void CInfoWnd::StopScroll()
{
    if (!m_nScrollTimer)
        return;
    KillTimer(m_hWnd, m_nScrollTimer);
    m_nScrollTimer = 0;
}

void CInfoWnd::ResetScroll()
{
    if (!m_nScrollTimer)
        return;
    StopScroll();
    m_nScrollOffset = 0;
}
