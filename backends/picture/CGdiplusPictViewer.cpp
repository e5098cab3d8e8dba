#include "backends/picture/CGdiplusPictViewer.h"

#include <algorithm>

#include "backends/picture/CPictureDecoder.h"
#include "backends/picture/CSelectedBitmap.h"
#include "base/CUtility.h"
#include "engine/CDllModule.h"
#include "engine/TessalyContract.h"
#include "trace/Trace.h"

using Gdiplus::Bitmap;
using Gdiplus::Color;
using Gdiplus::Graphics;

namespace {

const LPCWSTR g_FileExt[] = {
    L".BMP", L".DIB", L".JPG", L".JPEG", L".JPE", L".JFIF", L".PNG", L".TIF", L".TIFF", L".ICO",
    L".WMF", L".EMF"};

const LPCWSTR kClassName = L"PICTViewer.Handler.WndClass";
const LPCWSTR kWindowName = L"PICTViewer.Handler.Window";
const UINT kFadeTimerPeriod = 25;
const LONG kFadeDuration = 500;
const Gdiplus::ARGB kOpaqueBlack = 0xFF000000;

bool GdiplusAvailable()
{
    if (g_DllModule.IsGdiplusStarted())
        return true;
    TESSALY_TRACE("CGdiplusPictViewer> GDI+ not installed...");
    return false;
}

// Written straight into the buffer's memory: GDI+ filling a rectangle of the window's size takes
// a good share of every open on a software renderer, the loop next to nothing.
void FillOpaqueBlack(Bitmap* pBuffer)
{
    const Gdiplus::Rect rcAll(0, 0, static_cast<INT>(pBuffer->GetWidth()), static_cast<INT>(pBuffer->GetHeight()));
    Gdiplus::BitmapData data = {};
    if (pBuffer->LockBits(&rcAll, Gdiplus::ImageLockModeWrite, PixelFormat32bppRGB, &data) == Gdiplus::Ok)
    {
        auto* pRow = static_cast<BYTE*>(data.Scan0);
        for (UINT y = 0; y < data.Height; ++y, pRow += data.Stride)
            std::fill_n(reinterpret_cast<UINT32*>(pRow), data.Width, kOpaqueBlack);
        pBuffer->UnlockBits(&data);
        return;
    }
    Graphics canvas(pBuffer);
    Gdiplus::SolidBrush black{Color(kOpaqueBlack)};
    canvas.FillRectangle(&black, rcAll);
}

bool IsPostedToParent(UINT uMsg)
{
    return uMsg == WM_MOUSEACTIVATE || (uMsg >= WM_NCMOUSEMOVE && uMsg <= WM_NCMBUTTONDBLCLK) ||
           (uMsg >= WM_KEYDOWN && uMsg <= WM_SYSDEADCHAR) ||
           (uMsg >= WM_MOUSEMOVE && uMsg <= WM_MBUTTONDBLCLK);
}

} // namespace

CGdiplusPictViewer::CGdiplusPictViewer()
{
    m_ppwszFileExt = g_FileExt;
    m_dwFileExtCount = ARRAYSIZE(g_FileExt);
}

// GDI+ objects must go before the module's reference does, so a viewer the dispatcher never
// destroyed still tears down in that order.
CGdiplusPictViewer::~CGdiplusPictViewer()
{
    if (m_nGdiplusRefs > 0 || m_hPictWnd)
        CGdiplusPictViewer::Destroy();
}

HRESULT CGdiplusPictViewer::Init()
{
    g_DllModule.InitGdiplus();
    if (!GdiplusAvailable())
        return TESSALY_E_GDIPLUS_UNAVAILABLE;
    ++m_nGdiplusRefs;
    m_bInitialized = true;
    return S_OK;
}

void CGdiplusPictViewer::Destroy()
{
    SetParentWindow(nullptr);
    // Destroying the window stopped its timer; the fade's bitmaps are ours to free.
    m_bFadeTimerOn = 0;
    m_bFadePending = 0;
    EndFade();
    m_prevPicture.Empty();
    m_curPicture.Empty();
    m_pBackBuffer.reset();
    for (; m_nGdiplusRefs > 0; --m_nGdiplusRefs)
        g_DllModule.DeInitGdiplus();
    m_bInitialized = false;
}

void CGdiplusPictViewer::Activate()
{
    InitVideoWindow();
    if (m_hPictWnd)
        ShowWindow(m_hPictWnd, SW_SHOW);
    CPlayerBase::Activate();
}

void CGdiplusPictViewer::Deactivate()
{
    if (m_hPictWnd)
        ShowWindow(m_hPictWnd, SW_HIDE);
    CPlayerBase::Deactivate();
}

HRESULT CGdiplusPictViewer::SetParentWindow(HWND hWndParent)
{
    if (!GdiplusAvailable())
        return TESSALY_E_GDIPLUS_UNAVAILABLE;
    const HRESULT hr = CreateBackgroundWindow(&m_hPictWnd, hWndParent, kClassName, kWindowName,
                                              StaticWindowProc, this);
    if (FAILED(hr))
        return hr;
    m_hWndParent = hWndParent;

    const RECT rc = CUtility::GetWindowClientRect(hWndParent);
    const Gdiplus::Rect rcParent(rc.left, rc.top, rc.right - rc.left, rc.bottom - rc.top);
    if (!rcParent.Equals(m_rcVideo))
    {
        m_rcVideo = rcParent;
        RecreateBackBuffer();
        InitVideoWindow();
        m_bRedraw = 1;
        InvalidateParent();
    }
    return S_OK;
}

HRESULT CGdiplusPictViewer::SetParentWindowSize(DWORD dwWidth, DWORD dwHeight)
{
    if (!GdiplusAvailable())
        return TESSALY_E_GDIPLUS_UNAVAILABLE;
    const INT nWidth = static_cast<INT>(dwWidth);
    const INT nHeight = static_cast<INT>(dwHeight);
    if (nWidth != m_rcVideo.Width || nHeight != m_rcVideo.Height)
    {
        m_rcVideo.Width = nWidth;
        m_rcVideo.Height = nHeight;
        InitVideoWindow();
        RecreateBackBuffer();
        m_bRedraw = 1;
        InvalidateParent();
    }
    return S_OK;
}

// The parent, not the picture window, is asked to repaint: with no parent that is the whole
// desktop, which is what a host that takes the picture away expects to see redrawn.
void CGdiplusPictViewer::InvalidateParent()
{
    InvalidateRect(m_hWndParent, nullptr, TRUE);
}

void CGdiplusPictViewer::RecreateBackBuffer()
{
    m_pBackBuffer.reset();
    m_pBackBuffer.reset(new Bitmap(m_rcVideo.Width, m_rcVideo.Height, PixelFormat32bppRGB));
}

HRESULT CGdiplusPictViewer::InitVideoWindow()
{
    if (!m_hWndParent)
    {
        TESSALY_TRACE("S:CGdiplusPictViewer::InitVideoWindow> Parent window handle is null");
        return E_FAIL;
    }
    if (!m_hPictWnd)
    {
        TESSALY_TRACE("S:CGdiplusPictViewer::InitVideoWindow> own window handle is null");
        return E_FAIL;
    }
    if (m_rcVideo.Width < 1 || m_rcVideo.Height < 1)
    {
        TESSALY_TRACE("S:CGdiplusPictViewer::InitVideoWindow> Parent Window size is empty");
        return E_FAIL;
    }
    if (!SetWindowPos(m_hPictWnd, nullptr, m_rcVideo.X, m_rcVideo.Y, m_rcVideo.Width,
                      m_rcVideo.Height, SWP_NOZORDER))
    {
        TESSALY_TRACE("E:CGdiplusPictViewer::InitVideoWindow> SetWindowPos failed");
        // The bare error number: callers ignore it, and it was never a result code.
        return static_cast<HRESULT>(GetLastError());
    }
    return S_OK;
}

HRESULT CGdiplusPictViewer::OpenFile(LPCWSTR pwszFile, DWORD dwOpenFlags, DWORD dwPlaybackFlags)
{
    if (!GdiplusAvailable())
        return TESSALY_E_GDIPLUS_UNAVAILABLE;
    const bool bWasShowing = m_curPicture.HasImage();
    m_dwPlaybackFlags = dwPlaybackFlags;

    if (bWasShowing)
    {
        m_prevPicture.pImage = std::move(m_curPicture.pImage);
        m_prevPicture.rcDest = m_curPicture.rcDest;
        m_curPicture.Empty();
    }

    DWORD dwSize = 0;
    BYTE* pBytes = pwszFile ? CPictureDecoder::ReadFileToMemory(pwszFile, &dwSize) : nullptr;
    if (!pBytes)
        return E_OUTOFMEMORY; // what hosts have always been told for a missing or empty file
    Gdiplus::Status status = Gdiplus::Ok;
    Gdiplus::Image* pImage = CPictureDecoder::CreateImageFromMemory(pBytes, dwSize, &status);
    CoTaskMemFree(pBytes);
    if (!pImage)
    {
        TESSALY_TRACE("E:CGdiplusPictViewer::OpenFile> Can't create an Image object from the source file");
        return E_OUTOFMEMORY;
    }
    m_curPicture.pImage.reset(pImage);
    m_curPicture.rcDest = Gdiplus::Rect(0, 0, static_cast<INT>(pImage->GetWidth()), static_cast<INT>(pImage->GetHeight()));
    if (status != Gdiplus::Ok)
    {
        m_curPicture.Empty();
        TESSALY_TRACE("E:CGdiplusPictViewer::OpenFile> Bitmap::FromFile failed, the file is either not a valid image file or GDI+ don't have a decoder to open it...");
        return HRESULT_FROM_WIN32(ERROR_INVALID_DATA);
    }
    CPictureDecoder::ApplyOrientation(pImage);

    if (m_bFadeTimerOn)
    {
        StopFadeTimer();
        EndFade();
    }
    // Without the flag the new picture replaces the old at once, even when it interrupts a fade.
    if (bWasShowing && (dwOpenFlags & TESSALY_OPEN_FLAG_CROSSFADE))
    {
        m_bFadePending = 1;
    }
    else
    {
        m_bFadePending = 0;
        m_bRedraw = 1;
    }
    InvalidateRect(m_hPictWnd, nullptr, TRUE);
    return S_OK;
}

// The picture stays loaded and shown: a picture has nothing to close.
HRESULT CGdiplusPictViewer::CloseFile()
{
    return S_OK;
}

HRESULT CGdiplusPictViewer::GetFileInfo(BOOL* pbAudioOnly, double* pdDuration, BOOL* pbSeekable,
                                        DWORD* pdwWidth, DWORD* pdwHeight, BOOL* pbPicture)
{
    if (!GdiplusAvailable())
        return TESSALY_E_GDIPLUS_UNAVAILABLE;
    if (!m_curPicture.HasImage())
    {
        TESSALY_TRACE("E:CGdiplusPictViewer::GetFileInfo> file not opened");
        return E_FAIL;
    }
    if (pbAudioOnly)
        *pbAudioOnly = FALSE;
    if (pdDuration)
        *pdDuration = 0.0;
    if (pbSeekable)
        *pbSeekable = FALSE;
    if (pdwWidth)
        *pdwWidth = m_curPicture.pImage->GetWidth();
    if (pdwHeight)
        *pdwHeight = m_curPicture.pImage->GetHeight();
    if (pbPicture)
        *pbPicture = TRUE;
    return S_OK;
}

// A changed stretch flag shows at the next recomposition (new picture, parent or size), not
// here: the back buffer is deliberately left as it is.
HRESULT CGdiplusPictViewer::SetPlaybackFlags(DWORD dwPlaybackFlags)
{
    if (!GdiplusAvailable())
        return TESSALY_E_GDIPLUS_UNAVAILABLE;
    m_dwPlaybackFlags = dwPlaybackFlags;
    if (m_hPictWnd)
        InvalidateParent();
    return S_OK;
}

HRESULT CGdiplusPictViewer::GetCurTime(double*)
{
    return E_FAIL;
}

void CGdiplusPictViewer::FitPicture()
{
    if (!m_curPicture.HasImage() || m_rcVideo.Width < 1 || m_rcVideo.Height < 1)
        return;
    RECT rc = {0, 0, static_cast<LONG>(m_curPicture.pImage->GetWidth()),
               static_cast<LONG>(m_curPicture.pImage->GetHeight())};
    FitVideoRect(static_cast<DWORD>(m_rcVideo.Width), static_cast<DWORD>(m_rcVideo.Height), &rc);
    m_curPicture.rcDest = Gdiplus::Rect(rc.left, rc.top, rc.right - rc.left, rc.bottom - rc.top);
}

void CGdiplusPictViewer::OnPaint(HDC hdc)
{
    if (!m_pBackBuffer)
        return;
    if (m_bFadePending)
    {
        if (!m_bFadeTimerOn)
        {
            EndFade();
            BeginFade(hdc);
            StartFadeTimer();
        }
        else
        {
            DrawFadeFrame(hdc);
        }
        return;
    }
    if (m_curPicture.HasImage() && m_bRedraw)
        ComposeBackBuffer();
    Graphics screen(hdc);
    screen.SetCompositingMode(Gdiplus::CompositingModeSourceCopy);
    screen.DrawImage(m_pBackBuffer.get(), 0, 0, m_rcVideo.Width, m_rcVideo.Height);
}

void CGdiplusPictViewer::ComposeBackBuffer()
{
    FitPicture();
    FillOpaqueBlack(m_pBackBuffer.get());
    Graphics buffer(m_pBackBuffer.get());
    buffer.SetCompositingQuality(Gdiplus::CompositingQualityHighQuality);
    buffer.SetInterpolationMode(Gdiplus::InterpolationModeHighQuality);
    buffer.DrawImage(m_curPicture.pImage.get(), m_curPicture.rcDest);
    m_bRedraw = 0;
}

// The start frame is the back buffer, which still shows the previous picture as the viewer saw
// it; the end frame is the new picture composed the way the next paint would compose it.
void CGdiplusPictViewer::BeginFade(HDC)
{
    if (!m_curPicture.HasImage() || !m_prevPicture.HasImage() || !m_pBackBuffer)
        return;
    const DWORD dwStart = GetTickCount();
    TESSALY_TRACE("#####################################\n");
    FitPicture();
    m_pFadeTarget.reset(new Bitmap(m_rcVideo.Width, m_rcVideo.Height, PixelFormat32bppRGB));
    FillOpaqueBlack(m_pFadeTarget.get());
    {
        Graphics target(m_pFadeTarget.get());
        target.DrawImage(m_curPicture.pImage.get(), m_curPicture.rcDest);
    }
    m_blendFunc.BlendOp = AC_SRC_OVER;
    m_blendFunc.BlendFlags = 0;
    m_blendFunc.AlphaFormat = 0;
    m_pBackBuffer->GetHBITMAP(Color(kOpaqueBlack), &m_hbmFadeFrom);
    m_pFadeTarget->GetHBITMAP(Color(kOpaqueBlack), &m_hbmFadeTo);
    TESSALY_TRACE("Begin fade time = %d\n", static_cast<int>(GetTickCount() - dwStart));
    (void)dwStart;
}

// Each frame blends over the frames before it, so the picture arrives well before the fade's
// length is over; the next timer tick after that length ends the fade.
void CGdiplusPictViewer::DrawFadeFrame(HDC hdc)
{
    if (!m_hbmFadeFrom || !m_hbmFadeTo || !m_pFadeTarget)
        return;
    const DWORD dwStart = GetTickCount();
    CSelectedBitmap from(hdc, m_hbmFadeFrom);
    CSelectedBitmap to(hdc, m_hbmFadeTo);
    if (!from.Dc() || !to.Dc())
        return;

    const DWORD dwElapsed = GetTickCount() - m_dwFadeStart;
    const double dRatio = static_cast<double>(dwElapsed) / static_cast<double>(m_dwFadeDuration);
    m_blendFunc.SourceConstantAlpha = static_cast<BYTE>(static_cast<long long>(dRatio * 255.0) & 0xFF);
    TESSALY_TRACE("Aplha = %f\t", dRatio);
    AlphaBlend(from.Dc(), 0, 0, m_rcVideo.Width, m_rcVideo.Height, to.Dc(), 0, 0,
               static_cast<int>(m_pFadeTarget->GetWidth()), static_cast<int>(m_pFadeTarget->GetHeight()),
               m_blendFunc);
    BitBlt(hdc, 0, 0, m_rcVideo.Width, m_rcVideo.Height, from.Dc(), 0, 0, SRCCOPY);
    TESSALY_TRACE("Draw time = %d\n", static_cast<int>(GetTickCount() - dwStart));
    (void)dwStart;
}

void CGdiplusPictViewer::EndFade()
{
    const DWORD dwStart = GetTickCount();
    if (m_hbmFadeFrom)
        DeleteObject(m_hbmFadeFrom);
    if (m_hbmFadeTo)
        DeleteObject(m_hbmFadeTo);
    m_hbmFadeFrom = nullptr;
    m_hbmFadeTo = nullptr;
    m_pFadeTarget.reset();
    TESSALY_TRACE("End fade time = %d\n", static_cast<int>(GetTickCount() - dwStart));
    (void)dwStart;
}

void CGdiplusPictViewer::StartFadeTimer()
{
    if (!m_hPictWnd)
        return;
    if (m_bFadeTimerOn)
        StopFadeTimer();
    SetTimer(m_hPictWnd, FADE_TIMER_ID, kFadeTimerPeriod, nullptr);
    m_dwFadeDuration = kFadeDuration;
    m_dwFadeStart = m_dwFadeLast = GetTickCount();
    m_bFadeTimerOn = 1;
}

void CGdiplusPictViewer::StopFadeTimer()
{
    if (!m_hPictWnd)
        return;
    KillTimer(m_hPictWnd, FADE_TIMER_ID);
    m_bFadeTimerOn = 0;
}

void CGdiplusPictViewer::OnFadeTimer()
{
    const DWORD dwNow = GetTickCount();
    const LONG lElapsed = static_cast<LONG>(dwNow - m_dwFadeStart);
    if (lElapsed < m_dwFadeDuration)
    {
        m_dwFadeLast = dwNow;
        InvalidateRect(m_hPictWnd, nullptr, TRUE);
        return;
    }
    StopFadeTimer();
    EndFade();
    m_bFadePending = 0;
    m_bRedraw = 1;
    InvalidateRect(m_hPictWnd, nullptr, TRUE);
}

LRESULT CALLBACK CGdiplusPictViewer::StaticWindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    auto pThis = reinterpret_cast<CGdiplusPictViewer*>(GetWindowLongPtrW(hWnd, GWLP_USERDATA));
    if (!pThis)
        return DefWindowProcW(hWnd, uMsg, wParam, lParam);
    return pThis->WindowProc(hWnd, uMsg, wParam, lParam);
}

LRESULT CGdiplusPictViewer::WindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    if (IsPostedToParent(uMsg))
    {
        if (m_hWndParent)
            PostMessageW(m_hWndParent, uMsg, wParam, lParam);
        return 0;
    }
    switch (uMsg)
    {
    case WM_PAINT:
    {
        PAINTSTRUCT ps;
        HDC hdc = BeginPaint(hWnd, &ps);
        if (hdc)
            OnPaint(hdc);
        EndPaint(hWnd, &ps);
        return 0;
    }
    case WM_ERASEBKGND:
        return 1; // the back buffer covers the whole window
    case WM_DISPLAYCHANGE:
        TESSALY_TRACE("S:CGdiplusPictViewer::WindowProc> WM_DISPLAYCHANGE...");
        return 0;
    case WM_TIMER:
        if (wParam == FADE_TIMER_ID)
            OnFadeTimer();
        return 0;
    default:
        return DefWindowProcW(hWnd, uMsg, wParam, lParam);
    }
}
