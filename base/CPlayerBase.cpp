#include "base/CPlayerBase.h"

#include "base/CSizeFit.h"
#include "base/CUtility.h"
#include "engine/TessalyContract.h"
#include "trace/Trace.h"

HRESULT CPlayerBase::Init() { return E_FAIL; }
void CPlayerBase::Destroy() {}
void CPlayerBase::Activate() {}
void CPlayerBase::Deactivate() {}
HRESULT CPlayerBase::SetParentWindow(HWND) { return S_OK; }
HRESULT CPlayerBase::SetParentWindowSize(DWORD, DWORD) { return S_OK; }
HRESULT CPlayerBase::OpenFile(LPCWSTR, DWORD, DWORD) { return S_OK; }
HRESULT CPlayerBase::CloseFile() { return S_OK; }
HRESULT CPlayerBase::GetFileInfo(BOOL*, double*, BOOL*, DWORD*, DWORD*, BOOL*) { return S_OK; }
HRESULT CPlayerBase::Play() { return S_OK; }
HRESULT CPlayerBase::Pause() { return S_OK; }
HRESULT CPlayerBase::Resume() { return S_OK; }
HRESULT CPlayerBase::Stop() { return S_OK; }
HRESULT CPlayerBase::SetCurTime(double) { return S_OK; }
HRESULT CPlayerBase::SetPlaybackFlags(DWORD) { return S_OK; }
HRESULT CPlayerBase::GetCurTime(double*) { return E_FAIL; }
HRESULT CPlayerBase::OnEngineNotify(WPARAM, LPARAM) { return S_OK; }
HRESULT CPlayerBase::Reserved(DWORD) { return S_OK; }

LPCWSTR* CPlayerBase::GetSupportedFileExt(DWORD* pdwCount)
{
    *pdwCount = m_dwFileExtCount;
    return const_cast<LPCWSTR*>(m_ppwszFileExt);
}

void CPlayerBase::SetEventHandlerWindow(HWND hWnd)
{
    m_hEventHandlerWnd = hWnd;
}

namespace {

// Case folding of A-Z only, as the C locale does it: no other letter can stand for an ASCII one.
bool EqualsIgnoringAsciiCase(LPCWSTR a, LPCWSTR b)
{
    auto fold = [](WCHAR c) { return (c >= L'a' && c <= L'z') ? static_cast<WCHAR>(c - L'a' + L'A') : c; };
    for (; *a && *b; ++a, ++b)
    {
        if (fold(*a) != fold(*b))
            return false;
    }
    return *a == *b;
}

} // namespace

BOOL CPlayerBase::IsSupportedFileExt(LPCWSTR pwszExt) const
{
    if (!pwszExt)
        return FALSE;
    for (DWORD i = 0; i < m_dwFileExtCount; ++i)
    {
        if (EqualsIgnoringAsciiCase(pwszExt, m_ppwszFileExt[i]))
            return TRUE;
    }
    return FALSE;
}

void CPlayerBase::FitVideoRect(DWORD dwParentWidth, DWORD dwParentHeight, RECT* prc) const
{
    const DWORD dwWidth = static_cast<DWORD>(prc->right - prc->left);
    const DWORD dwHeight = static_cast<DWORD>(prc->bottom - prc->top);
    const bool bStretch = (m_dwPlaybackFlags & TESSALY_PLAYBACK_FLAG_STRETCH) != 0;
    const SizeFitRect rc = CSizeFit::Place(dwParentWidth, dwParentHeight, dwWidth, dwHeight, bStretch);
    const int nWidth = rc.right - rc.left;
    const int nHeight = rc.bottom - rc.top;
    if (dwWidth <= dwParentWidth && dwHeight <= dwParentHeight)
    {
        if (bStretch)
            TESSALY_TRACE("S:CPlayerBase::FitVideoRect> Source video is smaller than parent window dimension, but caller request to stretch it(maintaining aspect ratio) to the parent window...");
        else
            TESSALY_TRACE("S:CPlayerBase::FitVideoRect> Source video is smaller than parent window dimension, we just center it in the parent window...");
        TESSALY_TRACE("S:CPlayerBase::FitVideoRect> Stretch Window Size : lWidth = %d, lHeight = %d", nWidth, nHeight);
    }
    else
    {
        TESSALY_TRACE("S:CPlayerBase::FitVideoRect> Source video is larger than parent window dimension, we reduce it(maintaining aspect ratio) and center it in the parent window...");
        TESSALY_TRACE("S:CPlayerBase::FitVideoRect> Fit Window Size : lWidth = %d, lHeight = %d", nWidth, nHeight);
    }
    SetRect(prc, rc.left, rc.top, rc.right, rc.bottom);
}

HRESULT CPlayerBase::CreateBackgroundWindow(HWND* phWnd, HWND hWndParent, LPCWSTR pwszClassName,
                                            LPCWSTR pwszWindowName, WNDPROC pfnWndProc,
                                            void* pUserData)
{
    if (!hWndParent)
    {
        CUtility::DestroyInternalWindow(phWnd);
        return S_OK;
    }
    if (CUtility::IsWindowHandle(*phWnd))
    {
        SetParent(*phWnd, hWndParent);
        return S_OK;
    }
    CUtility::DestroyInternalWindow(phWnd);
    *phWnd = CUtility::CreateInternalWindow(pwszClassName, pwszWindowName, pfnWndProc, pUserData,
                                            hWndParent, TRUE, TRUE);
    if (!*phWnd)
        return HRESULT_FROM_WIN32(GetLastError());
    return S_OK;
}
