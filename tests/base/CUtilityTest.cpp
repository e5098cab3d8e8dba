// The helpers engine code calls, against the real Windows APIs they wrap.
#include <windows.h>

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "base/CUtility.h"

namespace {

TEST(Utility, ReferenceTimesConvertWithSeekPositionsOnWholeSeconds)
{
    const std::pair<double, LONGLONG> cases[] = {{1.99, 10000000LL}, {0.999, 0}, {-1.5, -10000000LL}, {3600.0, 36000000000LL},
                 {1e300, 922337203685LL * 10000000LL}, {-1e300, -922337203685LL * 10000000LL}};
    for (const auto& c : cases)
        EXPECT_EQ(c.second, CUtility::SecondsToReferenceTime(c.first)) << c.first;
    EXPECT_DOUBLE_EQ(1.5, CUtility::ReferenceTimeToSeconds(15000000LL));
    EXPECT_DOUBLE_EQ(0.0000001, CUtility::ReferenceTimeToSeconds(1LL));
}

TEST(Utility, WideToAnsiConvertsAndTruncatesInsideTheBuffer)
{
    char narrow[8] = "xxxxxxx";
    EXPECT_EQ(5, CUtility::WideToAnsi(narrow, L"Movie", 8));
    EXPECT_STREQ("Movie", narrow);
    memset(narrow, 'x', sizeof(narrow));
    EXPECT_LE(CUtility::WideToAnsi(narrow, L"Movie", 3), 2);
    EXPECT_EQ(std::string("Mo\0x", 4), std::string(narrow, 4)) << "terminated inside the buffer, nothing past it";
}

std::vector<UINT> g_messages;
std::vector<LONG_PTR> g_userDataDuringCreation;

LRESULT CALLBACK FirstProc(HWND hWnd, UINT msg, WPARAM wParam, LPARAM lParam)
{
    g_messages.push_back(msg);
    if (msg == WM_NCCREATE || msg == WM_CREATE)
        g_userDataDuringCreation.push_back(GetWindowLongPtrW(hWnd, GWLP_USERDATA));
    return DefWindowProcW(hWnd, msg, wParam, lParam);
}

TEST(Utility, InternalWindowsShareTheirFirstClassGetTheOwnerAfterCreationAndCoverAParent)
{
    int owner = 0;
    HWND first = CUtility::CreateInternalWindow(L"Tessaly.Test.Shared", L"a", FirstProc, &owner, nullptr, FALSE, FALSE);
    HWND second = CUtility::CreateInternalWindow(L"Tessaly.Test.Shared", L"b", DefWindowProcW, &owner, nullptr, FALSE, FALSE);
    ASSERT_TRUE(first && second);
    EXPECT_EQ((std::vector<LONG_PTR>{0, 0, 0, 0}), g_userDataDuringCreation) << "WM_NCCREATE, WM_CREATE twice";
    EXPECT_EQ(reinterpret_cast<LONG_PTR>(&owner), GetWindowLongPtrW(second, GWLP_USERDATA));
    EXPECT_FALSE(IsWindowVisible(second));
    g_messages.clear();
    SendMessageW(second, WM_USER + 7, 0, 0);
    EXPECT_EQ(std::vector<UINT>{WM_USER + 7}, g_messages) << "the class keeps the first procedure";
    HWND copy = first;
    CUtility::DestroyInternalWindow(&first);
    EXPECT_EQ(nullptr, first);
    EXPECT_FALSE(IsWindow(copy));
    CUtility::DestroyInternalWindow(&first); // null: nothing to do
    CUtility::DestroyInternalWindow(&second);

    HWND parent = CreateWindowExW(0, L"STATIC", L"parent", WS_POPUP | WS_VISIBLE, 0, 0, 320, 200, nullptr, nullptr,
                                  nullptr, nullptr);
    HWND child = CUtility::CreateInternalWindow(L"Tessaly.Test.Child", L"c", FirstProc, nullptr, parent, TRUE, TRUE);
    ASSERT_NE(nullptr, child);
    EXPECT_EQ(parent, GetParent(child));
    EXPECT_TRUE(IsWindowVisible(child));
    RECT rc = CUtility::GetWindowClientRect(child), empty = {};
    EXPECT_TRUE(rc.left == 0 && rc.top == 0 && rc.right == 320 && rc.bottom == 200);
    EXPECT_TRUE(CUtility::IsWindowHandle(child));
    DestroyWindow(parent);
    rc = CUtility::GetWindowClientRect(child);
    EXPECT_TRUE(EqualRect(&rc, &empty) && !CUtility::IsWindowHandle(child)) << "gone";
    SetLastError(ERROR_SUCCESS);
    rc = CUtility::GetWindowClientRect(nullptr);
    EXPECT_EQ(static_cast<DWORD>(ERROR_SUCCESS), GetLastError()) << "a null handle is not even asked about";
    EXPECT_TRUE(EqualRect(&rc, &empty) && !CUtility::IsWindowHandle(nullptr));
    g_messages.clear();
    EXPECT_EQ(nullptr, CUtility::CreateInternalWindow(L"Tessaly.Test.NoParent", L"o", FirstProc, nullptr, nullptr, TRUE, TRUE));
    EXPECT_TRUE(g_messages.empty());
}

} // namespace
