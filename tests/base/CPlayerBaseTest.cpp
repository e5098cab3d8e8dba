// The back-end base: extension matching, placement by the stretch flag, the child window.
#include <windows.h>

#include <gtest/gtest.h>

#include "base/CPlayerBase.h"
#include "base/CSizeFit.h"
#include "engine/TessalyContract.h"

namespace {

const LPCWSTR kTable[] = {L".MOV", L".QT", L".GIF"};

class TablePlayer : public CPlayerBase
{
public:
    explicit TablePlayer(LONGLONG llFlags = -1)
    {
        m_ppwszFileExt = kTable;
        m_dwFileExtCount = 3;
        if (llFlags >= 0)
            m_dwPlaybackFlags = static_cast<DWORD>(llFlags);
    }
};

TEST(PlayerBase, ExtensionsMatchIgnoringAsciiCaseOnly)
{
    TablePlayer player;
    for (LPCWSTR pwszExt : {L".mov", L".Gif", L".qT"})
        EXPECT_TRUE(player.IsSupportedFileExt(pwszExt)) << pwszExt;
    for (LPCWSTR pwszExt : {L".mo", L".MOVX", L"MOV", L"", L".\x017Fnd" /* long s */, L".g\x0131" L"f", (LPCWSTR) nullptr})
        EXPECT_FALSE(player.IsSupportedFileExt(pwszExt)) << (pwszExt ? pwszExt : L"(null)");
}

TEST(PlayerBase, ASourceIsCentredShrunkOrStretchedByBitZeroKeepingItsShape)
{
    // Flags -1 leave the base's default; one pixel too wide or too tall truncates the other side.
    const struct { LONGLONG llFlags; LONG pw, ph, sw, sh; RECT expected; } cases[] = {
        {0, 640, 480, 320, 240, {160, 120, 480, 360}}, {0xFFFFFFFE, 640, 480, 320, 240, {160, 120, 480, 360}},
        {-1, 640, 480, 320, 240, {0, 0, 640, 480}},     {TESSALY_PLAYBACK_FLAG_STRETCH, 500, 500, 100, 50, {0, 125, 500, 375}},
        {1, 500, 500, 50, 100, {125, 0, 375, 500}},    {1, 640, 480, 400, 100, {0, 160, 640, 320}},
        {1, 480, 640, 100, 400, {160, 0, 320, 640}},   {1, 480, 640, 320, 240, {0, 140, 480, 500}},
        {0, 640, 480, 1280, 720, {0, 60, 640, 420}},   {1, 640, 480, 300, 600, {200, 0, 440, 480}},
        {0, 640, 480, 700, 600, {40, 0, 600, 480}},    {0, 480, 640, 600, 700, {0, 40, 480, 600}},
        {0, 480, 640, 960, 480, {0, 200, 480, 440}},  {0, 640, 480, 800, 800, {80, 0, 560, 480}},
        {0, 480, 640, 800, 800, {0, 80, 480, 560}},
        {0, 640, 480, 641, 480, {0, 0, 640, 479}},     {0, 640, 480, 640, 481, {1, 0, 639, 480}},
    };
    for (const auto& c : cases)
    {
        RECT rc = {10, 10, 10 + c.sw, 10 + c.sh};
        TablePlayer(c.llFlags).FitVideoRect(c.pw, c.ph, &rc);
        EXPECT_TRUE(EqualRect(&rc, &c.expected)) << c.sw << "x" << c.sh << " in " << c.pw << "x" << c.ph << " flags "
                                                 << c.llFlags << ": " << rc.left << "," << rc.top << "," << rc.right;
    }
}

TEST(SizeFit, ShrinkLeavesASizeThatFitsAlone)
{
    const uint32_t cases[][4] = {{640, 480, 640, 480}, {100, 200, 100, 199}, {200, 100, 199, 100}, {480, 640, 480, 100}};
    for (const auto& c : cases)
    {
        uint32_t w = c[2], h = c[3];
        CSizeFit::Shrink(c[0], c[1], &w, &h);
        EXPECT_TRUE(w == c[2] && h == c[3]) << c[2] << "x" << c[3] << " in " << c[0] << "x" << c[1];
    }
}

int g_created = 0;

LRESULT CALLBACK CountingProc(HWND hWnd, UINT msg, WPARAM wParam, LPARAM lParam)
{
    g_created += msg == WM_CREATE;
    return DefWindowProcW(hWnd, msg, wParam, lParam);
}

TEST(PlayerBase, TheBackgroundWindowCoversItsParentMovesWhileAliveAndIsReplacedOnceGone)
{
    auto popup = [](int w, int h) {
        return CreateWindowExW(0, L"STATIC", L"", WS_POPUP | WS_VISIBLE, 0, 0, w, h, nullptr, nullptr, nullptr, nullptr);
    };
    HWND parent = popup(400, 300), bigger = popup(800, 600), hWnd = nullptr;
    int owner = 0, created = 0;
    auto createIn = [&](HWND hWndParent) {
        created = g_created;
        const HRESULT hr = CPlayerBase::CreateBackgroundWindow(&hWnd, hWndParent, L"Tessaly.Test.Background", L"bg",
                                                               CountingProc, &owner);
        RECT rc = {};
        EXPECT_TRUE(FAILED(hr) || !hWndParent ||
                    (GetClientRect(hWnd, &rc) && rc.right == 400 && rc.bottom == 300 && IsWindowVisible(hWnd) &&
                     GetParent(hWnd) == hWndParent && GetWindowLongPtrW(hWnd, GWLP_USERDATA) == LONG_PTR(&owner)));
        return hr;
    };
    ASSERT_EQ(S_OK, createIn(parent));
    const HWND first = hWnd;
    EXPECT_EQ(S_OK, createIn(bigger)); // moved, keeping its size
    EXPECT_EQ(first, hWnd);
    EXPECT_EQ(created, g_created);
    DestroyWindow(bigger); // the handle is kept but its window is gone
    EXPECT_EQ(S_OK, createIn(parent));
    EXPECT_EQ(created + 1, g_created);
    const HWND second = hWnd;
    for (int i = 0; i < 2; ++i)
    {
        EXPECT_EQ(S_OK, createIn(nullptr)) << "destroyed, or nothing to destroy";
        EXPECT_EQ(nullptr, hWnd);
    }
    EXPECT_FALSE(IsWindow(second));
    const HRESULT hr = createIn(reinterpret_cast<HWND>(static_cast<INT_PTR>(0x0BADF00D)));
    EXPECT_EQ(HRESULT_FROM_WIN32(GetLastError()), hr);
    EXPECT_TRUE(FAILED(hr));
    EXPECT_EQ(nullptr, hWnd);
    DestroyWindow(parent);
}

} // namespace
