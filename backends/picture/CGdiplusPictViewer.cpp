#include "backends/picture/CGdiplusPictViewer.h"

#include <objbase.h>

#include <cstring>

#include "dispatch/CUtility.h"
#include "engine/CComPtr.h"
#include "engine/CDllModule.h"
#include "engine/TessalyContract.h"
#include "engine/Trace.h"

using Gdiplus::Bitmap;
using Gdiplus::Color;
using Gdiplus::Graphics;
using Gdiplus::Rect;

namespace {

const LPCWSTR g_FileExt[] = {
    L".BMP", L".DIB", L".JPG", L".JPEG", L".JPE", L".JFIF", L".PNG", L".TIF", L".TIFF", L".ICO",
    L".WMF", L".EMF"};

const LPCWSTR kClassName = L"PICTViewer.Handler.WndClass";
const LPCWSTR kWindowName = L"PICTViewer.Handler.Window";
const UINT kFadeTimerPeriod = 25;
const LONG kFadeDuration = 500;
const Gdiplus::ARGB kOpaqueBlack = 0xFF000000;
const PROPID kOrientationTag = 0x0112;

bool GdiplusAvailable()
{
    if (g_DllModule.IsGdiplusStarted())
        return true;
    TESSALY_TRACE("CGdiplusPictViewer> GDI+ not installed...");
    return false;
}

bool IsPostedToParent(UINT uMsg)
{
    return uMsg == WM_MOUSEACTIVATE || (uMsg >= WM_NCMOUSEMOVE && uMsg <= WM_NCMBUTTONDBLCLK) ||
           (uMsg >= WM_KEYDOWN && uMsg <= WM_SYSDEADCHAR) ||
           (uMsg >= WM_MOUSEMOVE && uMsg <= WM_MBUTTONDBLCLK);
}

// A memory context holding one bitmap for the length of a fade frame.
class CSelectedBitmap
{
public:
    CSelectedBitmap(HDC hdcLike, HBITMAP hbm) : m_hdc(CreateCompatibleDC(hdcLike))
    {
        if (m_hdc)
            m_hbmOld = SelectObject(m_hdc, hbm);
    }
    ~CSelectedBitmap()
    {
        if (!m_hdc)
            return;
        SelectObject(m_hdc, m_hbmOld);
        DeleteDC(m_hdc);
    }
    CSelectedBitmap(const CSelectedBitmap&) = delete;
    CSelectedBitmap& operator=(const CSelectedBitmap&) = delete;
    HDC Dc() const { return m_hdc; }

private:
    HDC m_hdc;
    HGDIOBJ m_hbmOld = nullptr;
};

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
    const Rect rcParent(rc.left, rc.top, rc.right - rc.left, rc.bottom - rc.top);
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
    if (m_hWndParent) InvalidateRect(m_hWndParent, nullptr, TRUE);
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

BYTE* CGdiplusPictViewer::ReadFileToMemory(LPCWSTR pwszFile, DWORD* pdwSize)
{
    *pdwSize = 0;
    HANDLE hFile = CreateFileW(pwszFile, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                               FILE_ATTRIBUTE_NORMAL, nullptr);
    if (hFile == INVALID_HANDLE_VALUE)
        return nullptr;
    const DWORD dwSize = GetFileSize(hFile, nullptr);
    BYTE* pBytes = nullptr;
    if (dwSize != 0 && dwSize != INVALID_FILE_SIZE)
    {
        pBytes = static_cast<BYTE*>(CoTaskMemAlloc(dwSize));
        DWORD dwRead = 0;
        if (pBytes && (!ReadFile(hFile, pBytes, dwSize, &dwRead, nullptr) || dwRead != dwSize))
        {
            CoTaskMemFree(pBytes);
            pBytes = nullptr;
        }
    }
    CloseHandle(hFile);
    if (pBytes)
        *pdwSize = dwSize;
    return pBytes;
}

// The stream owns a copy of the bytes (its block is freed on its last release), so the
// decoder may keep reading from it after the caller frees its own buffer.
Bitmap* CGdiplusPictViewer::CreateBitmapFromMemory(const BYTE* pBytes, DWORD dwSize, Gdiplus::Status* pStatus)
{
    *pStatus = Gdiplus::OutOfMemory;
    HGLOBAL hMem = GlobalAlloc(GMEM_MOVEABLE, dwSize);
    if (!hMem)
        return nullptr;
    void* pMem = GlobalLock(hMem);
    if (!pMem)
    {
        GlobalFree(hMem);
        return nullptr;
    }
    memcpy(pMem, pBytes, dwSize);
    GlobalUnlock(hMem);
    CComPtr<IStream> pStream;
    if (FAILED(CreateStreamOnHGlobal(hMem, TRUE, &pStream)))
    {
        GlobalFree(hMem);
        return nullptr;
    }
    Bitmap* pBitmap = Bitmap::FromStream(pStream.Get(), FALSE);
    if (!pBitmap)
        return nullptr;
    *pStatus = pBitmap->GetLastStatus();
    if (*pStatus != Gdiplus::Ok)
    {
        if (Bitmap* pDrawn = DrawMetafile(pStream.Get()))
        {
            delete pBitmap;
            pBitmap = pDrawn;
            *pStatus = Gdiplus::Ok;
        }
    }
    return pBitmap;
}

// Windows' GDI+ makes a bitmap of a metafile by playing it; some platforms' GDI+ refuses a
// metafile as a bitmap but can still play it, so it is played here into one of its own size.
Bitmap* CGdiplusPictViewer::DrawMetafile(IStream* pStream)
{
    const LARGE_INTEGER start = {};
    if (FAILED(pStream->Seek(start, STREAM_SEEK_SET, nullptr)))
        return nullptr;
    Gdiplus::Metafile metafile(pStream);
    const INT nWidth = static_cast<INT>(metafile.GetWidth());
    const INT nHeight = static_cast<INT>(metafile.GetHeight());
    if (metafile.GetLastStatus() != Gdiplus::Ok || nWidth < 1 || nHeight < 1)
        return nullptr;
    std::unique_ptr<Bitmap> pBitmap(new Bitmap(nWidth, nHeight, PixelFormat32bppARGB));
    if (pBitmap->GetLastStatus() != Gdiplus::Ok)
        return nullptr;
    Graphics canvas(pBitmap.get());
    if (canvas.DrawImage(&metafile, 0, 0, nWidth, nHeight) != Gdiplus::Ok)
        return nullptr;
    return pBitmap.release();
}

HRESULT CGdiplusPictViewer::OpenFile(LPCWSTR pwszFile, DWORD dwOpenFlags, DWORD dwPlaybackFlags)
{
    if (!GdiplusAvailable())
        return TESSALY_E_GDIPLUS_UNAVAILABLE;
    const bool bWasShowing = m_curPicture.HasImage();
    m_dwPlaybackFlags = dwPlaybackFlags;

    if (bWasShowing)
    {
        m_prevPicture.Empty();
        Bitmap* pImage = m_curPicture.pImage.get();
        m_prevPicture.pImage.reset(pImage->Clone(0, 0, static_cast<INT>(pImage->GetWidth()),
                                                 static_cast<INT>(pImage->GetHeight()),
                                                 pImage->GetPixelFormat()));
        m_prevPicture.rcDest = m_curPicture.rcDest;
        m_curPicture.Empty();
    }

    DWORD dwSize = 0;
    BYTE* pBytes = pwszFile ? ReadFileToMemory(pwszFile, &dwSize) : nullptr;
    if (!pBytes)
        return E_OUTOFMEMORY; // what hosts have always been told for a missing or empty file
    Gdiplus::Status status = Gdiplus::Ok;
    Bitmap* pImage = CreateBitmapFromMemory(pBytes, dwSize, &status);
    CoTaskMemFree(pBytes);
    if (!pImage)
    {
        TESSALY_TRACE("E:CGdiplusPictViewer::OpenFile> Can't create an Image object from the source file");
        return E_OUTOFMEMORY;
    }
    m_curPicture.pImage.reset(pImage);
    m_curPicture.rcDest = Rect(0, 0, static_cast<INT>(pImage->GetWidth()), static_cast<INT>(pImage->GetHeight()));
    if (status != Gdiplus::Ok)
    {
        m_curPicture.Empty();
        TESSALY_TRACE("E:CGdiplusPictViewer::OpenFile> Bitmap::FromFile failed, the file is either not a valid image file or GDI+ don't have a decoder to open it...");
        return HRESULT_FROM_WIN32(ERROR_INVALID_DATA);
    }
    ApplyOrientation();

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

// Turns the picture upright by its orientation tag; a picture without one (the lookup fails
// and leaves a failure status) is used as stored.
void CGdiplusPictViewer::ApplyOrientation()
{
    Bitmap* pImage = m_curPicture.pImage.get();
    const UINT cbItem = pImage->GetPropertyItemSize(kOrientationTag);
    void* pItem = cbItem ? CoTaskMemAlloc(cbItem) : nullptr;
    if (pItem)
        pImage->GetPropertyItem(kOrientationTag, cbItem, static_cast<Gdiplus::PropertyItem*>(pItem));
    if (pImage->GetLastStatus() == Gdiplus::Ok && pItem)
    {
        const auto* pProperty = static_cast<const Gdiplus::PropertyItem*>(pItem);
        if (pProperty->value && pProperty->length >= sizeof(UINT16))
        {
            UINT16 nOrientation = 0;
            memcpy(&nOrientation, pProperty->value, sizeof(nOrientation));
            pImage->RotateFlip(OrientationToRotateFlip(nOrientation));
        }
    }
    CoTaskMemFree(pItem);
}

Gdiplus::RotateFlipType CGdiplusPictViewer::OrientationToRotateFlip(UINT16 nOrientation)
{
    if (nOrientation < 1 || nOrientation > 8)
        return Gdiplus::RotateNoneFlipNone;
    return static_cast<Gdiplus::RotateFlipType>((nOrientation - 1) % 4);
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
    m_curPicture.rcDest = Rect(rc.left, rc.top, rc.right - rc.left, rc.bottom - rc.top);
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
    Graphics buffer(m_pBackBuffer.get());
    Gdiplus::SolidBrush black{Color(kOpaqueBlack)};
    FitPicture();
    buffer.SetCompositingQuality(Gdiplus::CompositingQualityHighQuality);
    buffer.SetInterpolationMode(Gdiplus::InterpolationModeHighQuality);
    buffer.FillRectangle(&black, m_rcVideo);
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
    {
        Graphics target(m_pFadeTarget.get());
        Gdiplus::SolidBrush black{Color(kOpaqueBlack)};
        target.FillRectangle(&black, m_rcVideo);
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
