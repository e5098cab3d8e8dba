#include "base/CUtility.h"

#include <objbase.h>

#include "base/CSizeFit.h"
#include "trace/Trace.h"
#include "inspect/CChannelLayout.h"
#include "qtml/QTML.h"

int CUtility::CopyString(LPWSTR dst, LPCWSTR src, int cch)
{
    if (!dst || cch <= 0)
        return 0;
    dst[0] = L'\0';
    if (src)
        lstrcpynW(dst, src, cch);
    return lstrlenW(dst);
}

int CUtility::AnsiToWide(LPWSTR dst, LPCSTR src, int cch)
{
    if (!dst || cch <= 0)
        return 0;
    dst[0] = L'\0';
    if (src && !MultiByteToWideChar(CP_ACP, 0, src, -1, dst, cch))
        dst[cch - 1] = L'\0';
    return lstrlenW(dst);
}

int CUtility::WideToAnsi(LPSTR dst, LPCWSTR src, int cb)
{
    if (!dst || cb <= 0)
        return 0;
    dst[0] = '\0';
    if (src && !WideCharToMultiByte(CP_ACP, 0, src, -1, dst, cb, nullptr, nullptr))
        dst[cb - 1] = '\0';
    return lstrlenA(dst);
}

namespace {

// Every kind of queued message and input but raw input (0xFF).
const DWORD kPumpWakeMask = QS_KEY | QS_MOUSEMOVE | QS_MOUSEBUTTON | QS_POSTMESSAGE | QS_TIMER | QS_PAINT |
                            QS_SENDMESSAGE | QS_HOTKEY;
static_assert(kPumpWakeMask == 0xFF, "the wake mask of the message-pumping wait");

} // namespace

DWORD CUtility::WaitWithMessagePump(DWORD nCount, const HANDLE* handles, BOOL bWaitAll,
                                    DWORD dwMilliseconds)
{
    for (;;)
    {
        MSG msg;
        while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE))
        {
            if (msg.message == WM_QUIT)
                return WAIT_FAILED; // 0xFFFFFFFF
            DispatchMessageW(&msg);
        }
        DWORD dwResult = MsgWaitForMultipleObjects(nCount, handles, bWaitAll, dwMilliseconds, kPumpWakeMask);
        if (dwResult != WAIT_OBJECT_0 + nCount)
            return dwResult;
    }
}

bool CUtility::ReplaceInvalidFileNameChars(LPWSTR dst, WCHAR wcReplacement, LPCWSTR src)
{
    lstrcpyW(dst, src);
    bool bReplaced = false;
    for (LPWSTR p = dst; *p; p = CharNextW(p))
    {
        switch (*p)
        {
        case L'\\': case L'/': case L':': case L'*': case L'?':
        case L'"': case L'<': case L'>': case L'|':
            *p = wcReplacement;
            bReplaced = true;
            break;
        default:
            break;
        }
    }
    return bReplaced;
}

LPWSTR CUtility::FormatTime(DWORD dwSeconds, LPWSTR buffer)
{
    wsprintfW(buffer, L"%02lu:%02lu:%02lu", dwSeconds / 3600, (dwSeconds % 3600) / 60, dwSeconds % 60);
    return buffer;
}

HINSTANCE CUtility::ModuleInstance()
{
    HMODULE hModule = nullptr;
    GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                       reinterpret_cast<LPCWSTR>(&CUtility::ModuleInstance), &hModule);
    return hModule;
}

HWND CUtility::CreateInternalWindow(LPCWSTR className, LPCWSTR windowName, WNDPROC proc,
                                    void* userData, HWND hWndParent, BOOL bVisible,
                                    BOOL bSameSizeAsParent)
{
    HINSTANCE hInstance = ModuleInstance();
    WNDCLASSEXW wcx = {};
    wcx.cbSize = sizeof(wcx);
    if (!GetClassInfoExW(hInstance, className, &wcx))
    {
        wcx = {};
        wcx.cbSize = sizeof(wcx);
        wcx.style = CS_VREDRAW | CS_HREDRAW | CS_DBLCLKS;
        wcx.lpfnWndProc = proc;
        wcx.hInstance = hInstance;
        wcx.hbrBackground = static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH));
        wcx.lpszClassName = className;
        if (!RegisterClassExW(&wcx))
        {
            TESSALY_TRACE("E:CUtility::CreateInternalWindow> Failed to register new window class");
            return nullptr;
        }
    }

    DWORD dwStyle = hWndParent ? (WS_CHILD | WS_CLIPSIBLINGS | WS_CLIPCHILDREN) : 0;
    if (bVisible)
        dwStyle |= WS_VISIBLE;

    int width = 10;
    int height = 10;
    if (bSameSizeAsParent)
    {
        if (!hWndParent)
        {
            TESSALY_TRACE("E:CUtility::CreateInternalWindow> when bSameSizeAsParent is TRUE, hWndParent cann't be NULL");
            return nullptr;
        }
        RECT rc = GetWindowClientRect(hWndParent);
        width = rc.right - rc.left;
        height = rc.bottom - rc.top;
    }

    HWND hWnd = CreateWindowExW(0, className, windowName, dwStyle, 0, 0, width, height, hWndParent,
                                nullptr, hInstance, userData);
    if (!hWnd)
    {
        TESSALY_TRACE("E:CUtility::CreateInternalWindow> Failed to create window");
        return nullptr;
    }
    SetWindowLongPtrW(hWnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(userData));
    return hWnd;
}

void CUtility::DestroyInternalWindow(HWND* phWnd)
{
    if (*phWnd)
    {
        DestroyWindow(*phWnd);
        *phWnd = nullptr;
    }
}

void CUtility::FitSrcToDestDimension(DWORD destWidth, DWORD destHeight, DWORD* width, DWORD* height)
{
    if (*width <= destWidth && *height <= destHeight)
    {
        TESSALY_TRACE("S:CUtility::FitSrcToDestDimension> Src dimension is smaller than the destination dimension, do nothing...");
        return;
    }
    uint32_t w = *width, h = *height;
    CSizeFit::Shrink(destWidth, destHeight, &w, &h);
    *width = w;
    *height = h;
    TESSALY_TRACE("S:CUtility::FitSrcToDestDimension> ImageWidth = %d, ImageHeight = %d", static_cast<int>(w),
                  static_cast<int>(h));
}

void CUtility::StretchSrcToDestDimension(DWORD destWidth, DWORD destHeight, DWORD* width,
                                         DWORD* height)
{
    uint32_t w = *width, h = *height;
    CSizeFit::Stretch(destWidth, destHeight, &w, &h);
    *width = w;
    *height = h;
    TESSALY_TRACE("S:CUtility::StretchSrcToDestDimension> ImageWidth = %d, ImageHeight = %d", static_cast<int>(w),
                  static_cast<int>(h));
}

void CUtility::FreeStringArray(DWORD count, LPWSTR* array)
{
    if (!array)
    {
        TESSALY_TRACE("S:CUtility::FreeStringArray> ppStringArray is null");
        return;
    }
    for (DWORD i = 0; i < count; ++i)
    {
        if (array[i])
            CoTaskMemFree(array[i]);
    }
    CoTaskMemFree(array);
}

DWORD CUtility::GetQuickTimeVersion()
{
    long lVersion = 0;
    if (Gestalt(gestaltQuickTime, &lVersion) != qtmlNoErr)
        return 0;
    return static_cast<DWORD>(lVersion);
}

WORD CUtility::WfxAudioChannelsToMTPAudioChannelType(WORD nChannels, BOOL bPointOne)
{
    return CChannelLayout::ToMTPChannelType(nChannels, bPointOne != FALSE);
}

void CUtility::DrawVerticalGradient(HDC hdc, const RECT* prc, COLORREF crTop, COLORREF crBottom)
{
    TRIVERTEX vertices[2] = {};
    vertices[0].x = prc->left;
    vertices[0].y = prc->top;
    vertices[0].Red = static_cast<COLOR16>(GetRValue(crTop) << 8);
    vertices[0].Green = static_cast<COLOR16>(GetGValue(crTop) << 8);
    vertices[0].Blue = static_cast<COLOR16>(GetBValue(crTop) << 8);
    vertices[1].x = prc->right;
    vertices[1].y = prc->bottom;
    vertices[1].Red = static_cast<COLOR16>(GetRValue(crBottom) << 8);
    vertices[1].Green = static_cast<COLOR16>(GetGValue(crBottom) << 8);
    vertices[1].Blue = static_cast<COLOR16>(GetBValue(crBottom) << 8);
    GRADIENT_RECT gradientRect = {0, 1};
    GradientFill(hdc, vertices, 2, &gradientRect, 1, GRADIENT_FILL_RECT_V);
}

RECT CUtility::GetWindowClientRect(HWND hWnd)
{
    RECT rc = {0, 0, 0, 0};
    if (IsWindowHandle(hWnd) && !GetClientRect(hWnd, &rc))
        SetRectEmpty(&rc);
    return rc;
}

double CUtility::ReferenceTimeToSeconds(LONGLONG llTime)
{
    return static_cast<double>(llTime) / 10000000.0;
}

LONGLONG CUtility::SecondsToReferenceTime(double dSeconds)
{
    // Hosts may pass any double; beyond what 100-ns units can hold the conversion would be undefined.
    const double dLimit = 922337203685.0;
    if (!(dSeconds > -dLimit && dSeconds < dLimit))
        return dSeconds > 0 ? 922337203685LL * 10000000LL : (dSeconds < 0 ? -922337203685LL * 10000000LL : 0);
    return static_cast<LONGLONG>(dSeconds) * 10000000LL;
}

bool CUtility::IsWindowsXP()
{
    OSVERSIONINFOW osvi = {};
    osvi.dwOSVersionInfoSize = sizeof(osvi);
    if (!GetVersionExW(&osvi))
        return false;
    return osvi.dwMajorVersion == 5 && osvi.dwMinorVersion == 1;
}

bool CUtility::IsWindowHandle(HWND hWnd)
{
    return hWnd != nullptr && IsWindow(hWnd) != FALSE;
}
