// The helpers engine code calls, against the real Windows APIs they wrap.
#include <windows.h>
#include <objbase.h>

#include <gtest/gtest.h>

#include <vector>

#include "base/CUtility.h"

namespace {

TEST(Utility, ReferenceTimesConvertWithSeekPositionsOnWholeSeconds)
{
    const struct
    {
        double dSeconds;
        LONGLONG llTime;
    } toTime[] = {{1.99, 10000000LL}, {0.999, 0}, {-1.5, -10000000LL}, {3600.0, 36000000000LL},
                  {1e300, 922337203685LL * 10000000LL}, {-1e300, -922337203685LL * 10000000LL}};
    for (const auto& c : toTime)
        EXPECT_EQ(c.llTime, CUtility::SecondsToReferenceTime(c.dSeconds)) << c.dSeconds;
    EXPECT_DOUBLE_EQ(1.5, CUtility::ReferenceTimeToSeconds(15000000LL));
    EXPECT_DOUBLE_EQ(0.0000001, CUtility::ReferenceTimeToSeconds(1LL));
}

TEST(Utility, WideToAnsiConvertsAndTruncatesInsideTheBuffer)
{
    char narrow[8];
    memset(narrow, 'x', sizeof(narrow));
    EXPECT_EQ(5, CUtility::WideToAnsi(narrow, L"Movie", 8));
    EXPECT_STREQ("Movie", narrow);
    memset(narrow, 'x', sizeof(narrow));
    EXPECT_LE(CUtility::WideToAnsi(narrow, L"Movie", 3), 2);
    EXPECT_EQ('\0', narrow[2]) << "terminated inside the buffer";
    EXPECT_EQ('x', narrow[3]) << "nothing written past it";
}

// COM's task allocator reports each free to this spy while it is registered.
class FreeRecorder : public IMallocSpy
{
public:
    std::vector<void*> freed;
    ULONG refs = 1;
    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override
    {
        *ppv = riid == IID_IUnknown || riid == IID_IMallocSpy ? this : nullptr;
        return *ppv ? (AddRef(), S_OK) : E_NOINTERFACE;
    }
    STDMETHODIMP_(ULONG) AddRef() override { return ++refs; }
    STDMETHODIMP_(ULONG) Release() override { return --refs; }
    STDMETHODIMP_(SIZE_T) PreAlloc(SIZE_T cb) override { return cb; }
    STDMETHODIMP_(void*) PostAlloc(void* p) override { return p; }
    STDMETHODIMP_(void*) PreFree(void* p, BOOL) override { return p ? (freed.push_back(p), p) : p; }
    STDMETHODIMP_(void) PostFree(BOOL) override {}
    STDMETHODIMP_(SIZE_T) PreRealloc(void* p, SIZE_T cb, void** ppNew, BOOL) override { return *ppNew = p, cb; }
    STDMETHODIMP_(void*) PostRealloc(void* p, BOOL) override { return p; }
    STDMETHODIMP_(void*) PreGetSize(void* p, BOOL) override { return p; }
    STDMETHODIMP_(SIZE_T) PostGetSize(SIZE_T cb, BOOL) override { return cb; }
    STDMETHODIMP_(void*) PreDidAlloc(void* p, BOOL) override { return p; }
    STDMETHODIMP_(int) PostDidAlloc(void*, BOOL, int fActual) override { return fActual; }
    STDMETHODIMP_(void) PreHeapMinimize() override {}
    STDMETHODIMP_(void) PostHeapMinimize() override {}
};

TEST(Utility, FreeStringArrayFreesEachStringThenTheArraySkippingNulls)
{
    auto** array = static_cast<LPWSTR*>(CoTaskMemAlloc(3 * sizeof(LPWSTR)));
    array[0] = static_cast<LPWSTR>(CoTaskMemAlloc(8));
    array[1] = nullptr;
    array[2] = static_cast<LPWSTR>(CoTaskMemAlloc(8));
    const std::vector<void*> expected = {array[0], array[2], array};
    FreeRecorder spy;
    ASSERT_EQ(S_OK, CoRegisterMallocSpy(&spy));
    CUtility::FreeStringArray(3, array);
    CUtility::FreeStringArray(5, nullptr);
    ASSERT_EQ(S_OK, CoRevokeMallocSpy());
    EXPECT_EQ(expected, spy.freed);
    EXPECT_EQ(1u, spy.refs) << "COM let go of the spy";
}

std::vector<LONG_PTR> g_userDataDuringCreation;
std::vector<UINT> g_firstProcMessages;

LRESULT CALLBACK FirstProc(HWND hWnd, UINT msg, WPARAM wParam, LPARAM lParam)
{
    g_firstProcMessages.push_back(msg);
    if (msg == WM_NCCREATE || msg == WM_CREATE)
        g_userDataDuringCreation.push_back(GetWindowLongPtrW(hWnd, GWLP_USERDATA));
    return DefWindowProcW(hWnd, msg, wParam, lParam);
}

LRESULT CALLBACK SecondProc(HWND hWnd, UINT msg, WPARAM wParam, LPARAM lParam)
{
    ADD_FAILURE() << "the class keeps the first procedure";
    return DefWindowProcW(hWnd, msg, wParam, lParam);
}

TEST(Utility, InternalWindowsShareTheirFirstClassAndGetTheOwnerAfterCreation)
{
    int owner = 0;
    g_userDataDuringCreation.clear();
    HWND first = CUtility::CreateInternalWindow(L"Tessaly.Test.Shared", L"a", FirstProc, &owner, nullptr, FALSE, FALSE);
    HWND second = CUtility::CreateInternalWindow(L"Tessaly.Test.Shared", L"b", SecondProc, &owner, nullptr, FALSE, FALSE);
    ASSERT_NE(nullptr, first);
    ASSERT_NE(nullptr, second);
    EXPECT_EQ((std::vector<LONG_PTR>{0, 0, 0, 0}), g_userDataDuringCreation) << "WM_NCCREATE, WM_CREATE twice";
    EXPECT_EQ(reinterpret_cast<LONG_PTR>(&owner), GetWindowLongPtrW(second, GWLP_USERDATA));
    EXPECT_FALSE(IsWindowVisible(second));
    g_firstProcMessages.clear();
    SendMessageW(second, WM_USER + 7, 0, 0);
    EXPECT_EQ(std::vector<UINT>{WM_USER + 7}, g_firstProcMessages);

    HWND copy = first;
    CUtility::DestroyInternalWindow(&first);
    EXPECT_EQ(nullptr, first);
    EXPECT_FALSE(IsWindow(copy));
    CUtility::DestroyInternalWindow(&first); // null: nothing to do
    CUtility::DestroyInternalWindow(&second);
}

TEST(Utility, ASameSizeWindowCoversItsParentAndNeedsOne)
{
    HWND parent = CreateWindowExW(0, L"STATIC", L"parent", WS_POPUP | WS_VISIBLE, 0, 0, 320, 200, nullptr,
                                  nullptr, nullptr, nullptr);
    HWND child = CUtility::CreateInternalWindow(L"Tessaly.Test.Child", L"c", FirstProc, nullptr, parent, TRUE, TRUE);
    ASSERT_NE(nullptr, child);
    EXPECT_EQ(parent, GetParent(child));
    EXPECT_TRUE(IsWindowVisible(child));
    RECT rc = CUtility::GetWindowClientRect(child);
    EXPECT_TRUE(rc.left == 0 && rc.top == 0 && rc.right == 320 && rc.bottom == 200);
    EXPECT_TRUE(CUtility::IsWindowHandle(child));
    DestroyWindow(parent);
    // No window: an empty rectangle, and a null handle is not even asked about.
    for (HWND gone : {child, static_cast<HWND>(nullptr)})
    {
        SetLastError(ERROR_SUCCESS);
        rc = CUtility::GetWindowClientRect(gone);
        EXPECT_TRUE(rc.left == 0 && rc.top == 0 && rc.right == 0 && rc.bottom == 0);
        if (!gone)
        {
            EXPECT_EQ(static_cast<DWORD>(ERROR_SUCCESS), GetLastError());
        }
        EXPECT_FALSE(CUtility::IsWindowHandle(gone));
    }
    g_firstProcMessages.clear();
    EXPECT_EQ(nullptr, CUtility::CreateInternalWindow(L"Tessaly.Test.NoParent", L"o", FirstProc, nullptr,
                                                      nullptr, TRUE, TRUE));
    EXPECT_TRUE(g_firstProcMessages.empty());
}

} // namespace
