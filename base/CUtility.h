// Stateless helpers shared by the whole engine.
#pragma once

#include <windows.h>

class CUtility
{
public:
    static int CopyString(LPWSTR dst, LPCWSTR src, int cch);
    static int AnsiToWide(LPWSTR dst, LPCSTR src, int cch);
    static int WideToAnsi(LPSTR dst, LPCWSTR src, int cb);

    // Waits while dispatching the thread's messages; 0xFFFFFFFF when WM_QUIT was taken.
    static DWORD WaitWithMessagePump(DWORD nCount, const HANDLE* handles, BOOL bWaitAll,
                                     DWORD dwMilliseconds);

    static bool ReplaceInvalidFileNameChars(LPWSTR dst, WCHAR wcReplacement, LPCWSTR src);

    // "hh:mm:ss" with unwrapped hours; buffer must hold the result.
    static LPWSTR FormatTime(DWORD dwSeconds, LPWSTR buffer);

    // The owner's pointer is in the window's user data only once creation has returned.
    static HWND CreateInternalWindow(LPCWSTR className, LPCWSTR windowName, WNDPROC proc,
                                     void* userData, HWND hWndParent, BOOL bVisible,
                                     BOOL bSameSizeAsParent);
    static void DestroyInternalWindow(HWND* phWnd);

    static void FitSrcToDestDimension(DWORD destWidth, DWORD destHeight, DWORD* width, DWORD* height);
    static void StretchSrcToDestDimension(DWORD destWidth, DWORD destHeight, DWORD* width,
                                          DWORD* height);

    // Frees an array of strings allocated with CoTaskMemAlloc, null entries included.
    static void FreeStringArray(DWORD count, LPWSTR* array);

    static DWORD GetQuickTimeVersion();
    static WORD WfxAudioChannelsToMTPAudioChannelType(WORD nChannels, BOOL bPointOne);
    static void DrawVerticalGradient(HDC hdc, const RECT* prc, COLORREF crTop, COLORREF crBottom);
    static RECT GetWindowClientRect(HWND hWnd);
    static double ReferenceTimeToSeconds(LONGLONG llTime);
    // Whole seconds only: every seek made with it lands on a second boundary.
    static LONGLONG SecondsToReferenceTime(double dSeconds);
    static bool IsWindowsXP();
    static bool IsWindowHandle(HWND hWnd);

    // The module whose code this is (the engine library, or a test program linking it).
    static HINSTANCE ModuleInstance();
};
