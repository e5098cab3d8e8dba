// CUtility against the real Windows APIs it wraps: windows, GDI, COM allocation and waits.
#include <windows.h>
#include <objbase.h>

#include <gtest/gtest.h>

#include <set>
#include <string>
#include <thread>
#include <vector>

#include "base/CUtility.h"

namespace {

// ---- strings and numbers --------------------------------------------------------------

TEST(UtilityText, FormatTimeWritesUnwrappedHoursMinutesSeconds)
{
    WCHAR buffer[32];
    EXPECT_EQ(buffer, CUtility::FormatTime(3725, buffer));
    EXPECT_STREQ(L"01:02:05", buffer);
    EXPECT_STREQ(L"100:00:00", CUtility::FormatTime(360000, buffer));
    EXPECT_STREQ(L"00:00:00", CUtility::FormatTime(0, buffer));
    EXPECT_STREQ(L"00:59:59", CUtility::FormatTime(3599, buffer));
    EXPECT_STREQ(L"1193046:28:15", CUtility::FormatTime(0xFFFFFFFF, buffer));
}

TEST(UtilityText, CopyStringTruncatesToTheBufferAndReturnsTheLength)
{
    WCHAR buffer[6];
    EXPECT_EQ(5, CUtility::CopyString(buffer, L"abcdefgh", 6));
    EXPECT_STREQ(L"abcde", buffer);
    EXPECT_EQ(2, CUtility::CopyString(buffer, L"xy", 6));
    EXPECT_STREQ(L"xy", buffer);
    EXPECT_EQ(0, CUtility::CopyString(buffer, L"xy", 1));
    EXPECT_STREQ(L"", buffer);
}

TEST(UtilityText, AnsiAndWideConversionsRoundTripAndTruncate)
{
    WCHAR wide[16];
    char narrow[16];
    EXPECT_EQ(5, CUtility::AnsiToWide(wide, "Movie", 16));
    EXPECT_STREQ(L"Movie", wide);
    EXPECT_EQ(5, CUtility::WideToAnsi(narrow, L"Movie", 16));
    EXPECT_STREQ("Movie", narrow);

    // Too small a buffer still leaves a terminated string, never an overrun.
    EXPECT_LE(CUtility::AnsiToWide(wide, "Movie", 3), 2);
    EXPECT_LE(CUtility::WideToAnsi(narrow, L"Movie", 3), 2);
}

TEST(UtilityText, ReplaceInvalidFileNameCharsReplacesEachReservedCharacter)
{
    WCHAR out[64];
    EXPECT_TRUE(CUtility::ReplaceInvalidFileNameChars(out, L'_', L"a\\b/c:d*e?f\"g<h>i|j"));
    EXPECT_STREQ(L"a_b_c_d_e_f_g_h_i_j", out);
    EXPECT_FALSE(CUtility::ReplaceInvalidFileNameChars(out, L'_', L"Clean name.mp3"));
    EXPECT_STREQ(L"Clean name.mp3", out);
}

TEST(UtilityTime, SecondsToReferenceTimeDropsTheFraction)
{
    EXPECT_EQ(10000000LL, CUtility::SecondsToReferenceTime(1.99));
    EXPECT_EQ(0LL, CUtility::SecondsToReferenceTime(0.999));
    EXPECT_EQ(-10000000LL, CUtility::SecondsToReferenceTime(-1.5));
    EXPECT_EQ(36000000000LL, CUtility::SecondsToReferenceTime(3600.0));
}

TEST(UtilityTime, ReferenceTimeToSecondsKeepsTheFraction)
{
    EXPECT_DOUBLE_EQ(1.5, CUtility::ReferenceTimeToSeconds(15000000LL));
    EXPECT_DOUBLE_EQ(0.0000001, CUtility::ReferenceTimeToSeconds(1LL));
}

TEST(UtilityAudio, ChannelCountsMapToMTPChannelTypes)
{
    const WORD plain[] = {0, 1, 2, 4, 6, 8, 10, 12, 14, 16, 10};
    const WORD pointOne[] = {0, 1, 3, 5, 7, 9, 11, 13, 15, 17, 10};
    for (WORD n = 0; n <= 10; ++n)
    {
        EXPECT_EQ(plain[n], CUtility::WfxAudioChannelsToMTPAudioChannelType(n, FALSE)) << n;
        EXPECT_EQ(pointOne[n], CUtility::WfxAudioChannelsToMTPAudioChannelType(n, TRUE)) << n;
    }
    EXPECT_EQ(11, CUtility::WfxAudioChannelsToMTPAudioChannelType(6, TRUE));
    EXPECT_EQ(12, CUtility::WfxAudioChannelsToMTPAudioChannelType(12, FALSE));
    EXPECT_EQ(0xFFFF, CUtility::WfxAudioChannelsToMTPAudioChannelType(0xFFFF, TRUE));
}

TEST(UtilitySystem, QuickTimeVersionIsZeroWithoutQuickTime)
{
    EXPECT_EQ(0u, CUtility::GetQuickTimeVersion());
}

// ---- string arrays handed to hosts -------------------------------------------------------

// Records what COM's task allocator frees while it is registered.
class FreeRecorder : public IMallocSpy
{
public:
    std::vector<void*> freed;

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override
    {
        if (riid == IID_IUnknown || riid == IID_IMallocSpy)
        {
            *ppv = static_cast<IMallocSpy*>(this);
            AddRef();
            return S_OK;
        }
        *ppv = nullptr;
        return E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++m_refs; }
    STDMETHODIMP_(ULONG) Release() override { return --m_refs; }
    STDMETHODIMP_(SIZE_T) PreAlloc(SIZE_T cb) override { return cb; }
    STDMETHODIMP_(void*) PostAlloc(void* p) override { return p; }
    STDMETHODIMP_(void*) PreFree(void* p, BOOL) override
    {
        if (p)
            freed.push_back(p);
        return p;
    }
    STDMETHODIMP_(void) PostFree(BOOL) override {}
    STDMETHODIMP_(SIZE_T) PreRealloc(void* p, SIZE_T cb, void** ppNew, BOOL) override
    {
        *ppNew = p;
        return cb;
    }
    STDMETHODIMP_(void*) PostRealloc(void* p, BOOL) override { return p; }
    STDMETHODIMP_(void*) PreGetSize(void* p, BOOL) override { return p; }
    STDMETHODIMP_(SIZE_T) PostGetSize(SIZE_T cb, BOOL) override { return cb; }
    STDMETHODIMP_(void*) PreDidAlloc(void* p, BOOL) override { return p; }
    STDMETHODIMP_(int) PostDidAlloc(void*, BOOL, int fActual) override { return fActual; }
    STDMETHODIMP_(void) PreHeapMinimize() override {}
    STDMETHODIMP_(void) PostHeapMinimize() override {}

    ULONG refs() const { return m_refs; }

private:
    ULONG m_refs = 1;
};

LPWSTR TaskString(const wchar_t* text)
{
    const size_t cb = (wcslen(text) + 1) * sizeof(WCHAR);
    auto* p = static_cast<LPWSTR>(CoTaskMemAlloc(cb));
    memcpy(p, text, cb);
    return p;
}

TEST(UtilityStringArray, FreeStringArrayFreesEveryStringThenTheArraySkippingNulls)
{
    auto** array = static_cast<LPWSTR*>(CoTaskMemAlloc(3 * sizeof(LPWSTR)));
    array[0] = TaskString(L".MP3");
    array[1] = nullptr;
    array[2] = TaskString(L".WAV");
    const std::vector<void*> expected = {array[0], array[2], array};

    FreeRecorder spy;
    ASSERT_EQ(S_OK, CoRegisterMallocSpy(&spy));
    CUtility::FreeStringArray(3, array);
    ASSERT_EQ(S_OK, CoRevokeMallocSpy());
    EXPECT_EQ(expected, spy.freed);
    EXPECT_EQ(1u, spy.refs()) << "COM let go of the spy";
}

TEST(UtilityStringArray, FreeStringArrayOfNullFreesNothing)
{
    FreeRecorder spy;
    ASSERT_EQ(S_OK, CoRegisterMallocSpy(&spy));
    CUtility::FreeStringArray(5, nullptr);
    ASSERT_EQ(S_OK, CoRevokeMallocSpy());
    EXPECT_TRUE(spy.freed.empty());
}

// ---- windows ---------------------------------------------------------------------------

struct WindowLog
{
    std::vector<UINT> messages;
    std::vector<LONG_PTR> userDataDuringCreation;
};

WindowLog g_firstLog;
WindowLog g_secondLog;

LRESULT CALLBACK FirstProc(HWND hWnd, UINT msg, WPARAM wParam, LPARAM lParam)
{
    g_firstLog.messages.push_back(msg);
    if (msg == WM_NCCREATE || msg == WM_CREATE)
        g_firstLog.userDataDuringCreation.push_back(GetWindowLongPtrW(hWnd, GWLP_USERDATA));
    return DefWindowProcW(hWnd, msg, wParam, lParam);
}

LRESULT CALLBACK SecondProc(HWND hWnd, UINT msg, WPARAM wParam, LPARAM lParam)
{
    g_secondLog.messages.push_back(msg);
    return DefWindowProcW(hWnd, msg, wParam, lParam);
}

HWND MakePopup(int width, int height)
{
    return CreateWindowExW(0, L"STATIC", L"parent", WS_POPUP | WS_VISIBLE, 0, 0, width, height,
                           nullptr, nullptr, nullptr, nullptr);
}

bool Received(const WindowLog& log, UINT msg)
{
    for (UINT m : log.messages)
        if (m == msg)
            return true;
    return false;
}

TEST(UtilityWindow, AClassNameIsRegisteredOnceWithTheFirstProcedure)
{
    g_firstLog = {};
    g_secondLog = {};
    int owner = 0;
    HWND first = CUtility::CreateInternalWindow(L"Tessaly.Test.Shared", L"first", FirstProc, &owner,
                                                nullptr, FALSE, FALSE);
    HWND second = CUtility::CreateInternalWindow(L"Tessaly.Test.Shared", L"second", SecondProc,
                                                 &owner, nullptr, FALSE, FALSE);
    ASSERT_NE(nullptr, first);
    ASSERT_NE(nullptr, second);
    EXPECT_EQ(reinterpret_cast<LONG_PTR>(FirstProc), GetClassLongPtrW(second, GCLP_WNDPROC));

    g_firstLog = {};
    SendMessageW(second, WM_USER + 7, 0, 0);
    EXPECT_TRUE(Received(g_firstLog, WM_USER + 7));
    EXPECT_TRUE(g_secondLog.messages.empty());

    WNDCLASSEXW wcx = {};
    wcx.cbSize = sizeof(wcx);
    ASSERT_TRUE(GetClassInfoExW(CUtility::ModuleInstance(), L"Tessaly.Test.Shared", &wcx));
    EXPECT_EQ(static_cast<UINT>(CS_VREDRAW | CS_HREDRAW | CS_DBLCLKS), wcx.style);
    EXPECT_EQ(GetStockObject(BLACK_BRUSH), wcx.hbrBackground);
    EXPECT_EQ(nullptr, wcx.hCursor);
    EXPECT_EQ(nullptr, wcx.hIcon);
    EXPECT_EQ(0, wcx.cbWndExtra);

    CUtility::DestroyInternalWindow(&first);
    CUtility::DestroyInternalWindow(&second);
}

TEST(UtilityWindow, TheOwnerIsInTheUserDataOnlyAfterCreation)
{
    g_firstLog = {};
    int owner = 0;
    HWND hWnd = CUtility::CreateInternalWindow(L"Tessaly.Test.UserData", L"w", FirstProc, &owner,
                                               nullptr, FALSE, FALSE);
    ASSERT_NE(nullptr, hWnd);
    ASSERT_EQ(2u, g_firstLog.userDataDuringCreation.size()) << "WM_NCCREATE and WM_CREATE";
    EXPECT_EQ(0, g_firstLog.userDataDuringCreation[0]);
    EXPECT_EQ(0, g_firstLog.userDataDuringCreation[1]);
    EXPECT_EQ(reinterpret_cast<LONG_PTR>(&owner), GetWindowLongPtrW(hWnd, GWLP_USERDATA));
    CUtility::DestroyInternalWindow(&hWnd);
}

TEST(UtilityWindow, SameSizeAsParentWithoutAParentCreatesNothing)
{
    g_firstLog = {};
    HWND hWnd = CUtility::CreateInternalWindow(L"Tessaly.Test.NoParent", L"orphan", FirstProc,
                                               nullptr, nullptr, TRUE, TRUE);
    EXPECT_EQ(nullptr, hWnd);
    EXPECT_EQ(nullptr, FindWindowW(L"Tessaly.Test.NoParent", L"orphan"));
    EXPECT_FALSE(Received(g_firstLog, WM_NCCREATE));
}

TEST(UtilityWindow, AChildCoversItsParentsClientArea)
{
    HWND parent = MakePopup(320, 200);
    ASSERT_NE(nullptr, parent);
    HWND child = CUtility::CreateInternalWindow(L"Tessaly.Test.Child", L"child", FirstProc, nullptr,
                                                parent, TRUE, TRUE);
    ASSERT_NE(nullptr, child);
    EXPECT_EQ(parent, GetParent(child));
    const LONG_PTR style = GetWindowLongPtrW(child, GWL_STYLE);
    EXPECT_EQ(WS_CHILD | WS_CLIPSIBLINGS | WS_CLIPCHILDREN | WS_VISIBLE,
              style & (WS_CHILD | WS_CLIPSIBLINGS | WS_CLIPCHILDREN | WS_VISIBLE | WS_CAPTION | WS_BORDER));
    RECT rc = CUtility::GetWindowClientRect(child);
    EXPECT_EQ(0, rc.left);
    EXPECT_EQ(0, rc.top);
    EXPECT_EQ(320, rc.right);
    EXPECT_EQ(200, rc.bottom);
    CUtility::DestroyInternalWindow(&child);
    DestroyWindow(parent);
}

// What CreateWindowEx was asked for, seen from a CBT hook before the system adjusts it (a
// top-level window gets a caption and a minimum size whatever it asked for).
CREATESTRUCTW g_requested;

LRESULT CALLBACK RecordCreation(int code, WPARAM wParam, LPARAM lParam)
{
    // The system may create windows of its own (an input-method window) on the way.
    const CREATESTRUCTW* pcs = code == HCBT_CREATEWND ? reinterpret_cast<CBT_CREATEWNDW*>(lParam)->lpcs : nullptr;
    if (pcs && pcs->lpszName && lstrcmpW(pcs->lpszName, L"small") == 0)
    {
        g_requested = *pcs;
        g_requested.lpszName = nullptr;
        g_requested.lpszClass = nullptr;
    }
    return CallNextHookEx(nullptr, code, wParam, lParam);
}

TEST(UtilityWindow, WithoutSameSizeAWindowAsksForTenByTenAndNoStyle)
{
    HHOOK hook = SetWindowsHookExW(WH_CBT, RecordCreation, nullptr, GetCurrentThreadId());
    ASSERT_NE(nullptr, hook);
    g_requested = {};
    int owner = 0;
    HWND hWnd = CUtility::CreateInternalWindow(L"Tessaly.Test.Small", L"small", FirstProc, &owner,
                                               nullptr, FALSE, FALSE);
    UnhookWindowsHookEx(hook);
    ASSERT_NE(nullptr, hWnd);
    EXPECT_EQ(10, g_requested.cx);
    EXPECT_EQ(10, g_requested.cy);
    EXPECT_EQ(0, g_requested.x);
    EXPECT_EQ(0, g_requested.y);
    EXPECT_EQ(0, g_requested.style);
    EXPECT_EQ(0u, g_requested.dwExStyle);
    EXPECT_EQ(nullptr, g_requested.hwndParent);
    EXPECT_EQ(&owner, g_requested.lpCreateParams);
    EXPECT_FALSE(IsWindowVisible(hWnd));
    CUtility::DestroyInternalWindow(&hWnd);
}

TEST(UtilityWindow, DestroyInternalWindowDestroysAndForgets)
{
    HWND hWnd = CUtility::CreateInternalWindow(L"Tessaly.Test.Destroy", L"d", FirstProc, nullptr,
                                               nullptr, FALSE, FALSE);
    HWND copy = hWnd;
    ASSERT_NE(nullptr, hWnd);
    CUtility::DestroyInternalWindow(&hWnd);
    EXPECT_EQ(nullptr, hWnd);
    EXPECT_FALSE(IsWindow(copy));
    CUtility::DestroyInternalWindow(&hWnd); // null: nothing to do
    EXPECT_EQ(nullptr, hWnd);
}

TEST(UtilityWindow, ClientRectOfNullOrDestroyedWindowIsEmpty)
{
    RECT rc = CUtility::GetWindowClientRect(nullptr);
    EXPECT_TRUE(rc.left == 0 && rc.top == 0 && rc.right == 0 && rc.bottom == 0);

    HWND hWnd = MakePopup(300, 200);
    rc = CUtility::GetWindowClientRect(hWnd);
    EXPECT_EQ(300, rc.right);
    EXPECT_EQ(200, rc.bottom);
    EXPECT_TRUE(CUtility::IsWindowHandle(hWnd));
    DestroyWindow(hWnd);
    rc = CUtility::GetWindowClientRect(hWnd);
    EXPECT_TRUE(rc.left == 0 && rc.top == 0 && rc.right == 0 && rc.bottom == 0);
    EXPECT_FALSE(CUtility::IsWindowHandle(hWnd));
    EXPECT_FALSE(CUtility::IsWindowHandle(nullptr));
}

// ---- waiting while pumping messages --------------------------------------------------------

TEST(UtilityWait, DispatchesWaitingMessagesThenReturnsTheSignalledObject)
{
    g_firstLog = {};
    HWND hWnd = CUtility::CreateInternalWindow(L"Tessaly.Test.Pump", L"pump", FirstProc, nullptr,
                                               nullptr, FALSE, FALSE);
    ASSERT_NE(nullptr, hWnd);
    HANDLE events[2] = {CreateEventW(nullptr, TRUE, FALSE, nullptr), CreateEventW(nullptr, TRUE, FALSE, nullptr)};
    PostMessageW(hWnd, WM_USER + 1, 0, 0);
    std::thread signaller([&] {
        Sleep(50);
        PostMessageW(hWnd, WM_USER + 2, 0, 0); // wakes the wait, which must go on waiting
        Sleep(50);
        SetEvent(events[1]);
    });
    const DWORD result = CUtility::WaitWithMessagePump(2, events, FALSE, 5000);
    signaller.join();
    EXPECT_EQ(WAIT_OBJECT_0 + 1, result);
    EXPECT_TRUE(Received(g_firstLog, WM_USER + 1));
    EXPECT_TRUE(Received(g_firstLog, WM_USER + 2));
    CloseHandle(events[0]);
    CloseHandle(events[1]);
    CUtility::DestroyInternalWindow(&hWnd);
}

TEST(UtilityWait, TimesOutWhenNothingIsSignalled)
{
    HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    EXPECT_EQ(static_cast<DWORD>(WAIT_TIMEOUT), CUtility::WaitWithMessagePump(1, &event, FALSE, 20));
    CloseHandle(event);
}

TEST(UtilityWait, AQuitMessageEndsTheWaitAndIsConsumed)
{
    HANDLE event = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    PostQuitMessage(3);
    EXPECT_EQ(0xFFFFFFFFu, CUtility::WaitWithMessagePump(1, &event, FALSE, 5000));
    MSG msg;
    EXPECT_FALSE(PeekMessageW(&msg, nullptr, WM_QUIT, WM_QUIT, PM_REMOVE));
    CloseHandle(event);
}

// ---- painting ------------------------------------------------------------------------------

TEST(UtilityPaint, VerticalGradientRunsFromTheTopColourToTheBottomColour)
{
    const int width = 8, height = 101;
    BITMAPINFO bmi = {};
    bmi.bmiHeader.biSize = sizeof(bmi.bmiHeader);
    bmi.bmiHeader.biWidth = width;
    bmi.bmiHeader.biHeight = -height; // top-down rows
    bmi.bmiHeader.biPlanes = 1;
    bmi.bmiHeader.biBitCount = 32;
    bmi.bmiHeader.biCompression = BI_RGB;
    void* pBits = nullptr;
    HDC hdc = CreateCompatibleDC(nullptr);
    HBITMAP hbm = CreateDIBSection(hdc, &bmi, DIB_RGB_COLORS, &pBits, nullptr, 0);
    ASSERT_NE(nullptr, hbm);
    HGDIOBJ old = SelectObject(hdc, hbm);

    const RECT rc = {0, 0, width, height};
    CUtility::DrawVerticalGradient(hdc, &rc, RGB(255, 0, 0), RGB(0, 0, 255));
    GdiFlush();

    auto pixel = [&](int x, int y) { return static_cast<const DWORD*>(pBits)[y * width + x]; };
    auto red = [](DWORD p) { return static_cast<int>((p >> 16) & 0xFF); };
    auto blue = [](DWORD p) { return static_cast<int>(p & 0xFF); };
    EXPECT_EQ(255, red(pixel(0, 0)));
    EXPECT_EQ(0, blue(pixel(0, 0)));
    EXPECT_EQ(red(pixel(0, 0)), red(pixel(width - 1, 0))) << "rows are uniform";
    EXPECT_LE(red(pixel(3, height - 1)), 5);
    EXPECT_GE(blue(pixel(3, height - 1)), 250);
    EXPECT_NEAR(128, red(pixel(3, 50)), 6);
    EXPECT_NEAR(128, blue(pixel(3, 50)), 6);
    for (int y = 1; y < height; ++y)
        EXPECT_LE(red(pixel(0, y)), red(pixel(0, y - 1))) << "red only fades going down, row " << y;

    SelectObject(hdc, old);
    DeleteObject(hbm);
    DeleteDC(hdc);
}

} // namespace
