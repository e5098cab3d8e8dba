// The back-end base: what every back-end inherits for extension matching, placement by the
// stretch flag, and the child window it draws in.
#include <windows.h>

#include <gtest/gtest.h>

#include "base/CPlayerBase.h"
#include "engine/TessalyContract.h"

namespace {

const LPCWSTR kTable[] = {L".MOV", L".QT", L".GIF"};

class TablePlayer : public CPlayerBase
{
public:
    TablePlayer()
    {
        m_ppwszFileExt = kTable;
        m_dwFileExtCount = 3;
    }
    void SetFlags(DWORD dwFlags) { m_dwPlaybackFlags = dwFlags; }
};

TEST(PlayerBase, ExtensionsMatchIgnoringAsciiCaseOnly)
{
    TablePlayer player;
    const struct
    {
        LPCWSTR pwszExt;
        BOOL bMatch;
    } cases[] = {{L".mov", TRUE}, {L".MOV", TRUE}, {L".Gif", TRUE}, {L".qT", TRUE}, {L".mo", FALSE},
                 {L".MOVX", FALSE}, {L"MOV", FALSE}, {L".", FALSE}, {L"", FALSE}, {nullptr, FALSE},
                 // Letters Unicode upper-cases to ASCII ones (long s, dotless i) do not stand for them.
                 {L".\x017Fnd", FALSE}, {L".g\x0131" L"f", FALSE}};
    for (const auto& c : cases)
        EXPECT_EQ(c.bMatch, player.IsSupportedFileExt(c.pwszExt)) << (c.pwszExt ? c.pwszExt : L"(null)");
}

TEST(PlayerBase, TheStretchBitDecidesWhetherASmallerSourceGrows)
{
    const struct
    {
        bool bSetFlags;
        DWORD dwFlags;
        RECT source, parent, expected;
    } cases[] = {
        {false, 0, {0, 0, 320, 240}, {0, 0, 640, 480}, {0, 0, 640, 480}}, // stretching by default
        {true, 0, {0, 0, 320, 240}, {0, 0, 640, 480}, {160, 120, 480, 360}},
        {true, 0xFFFFFFFE, {0, 0, 320, 240}, {0, 0, 640, 480}, {160, 120, 480, 360}},
        {true, TESSALY_PLAYBACK_FLAG_STRETCH, {0, 0, 100, 50}, {0, 0, 500, 500}, {0, 125, 500, 375}},
        {true, 0, {0, 0, 1280, 720}, {0, 0, 640, 480}, {0, 60, 640, 420}}, // larger: shrunk either way
        {true, 1, {10, 10, 310, 610}, {0, 0, 640, 480}, {200, 0, 440, 480}},
    };
    for (const auto& c : cases)
    {
        TablePlayer player;
        if (c.bSetFlags)
            player.SetFlags(c.dwFlags);
        RECT rc = c.source;
        player.FitVideoRect(c.parent.right, c.parent.bottom, &rc);
        EXPECT_TRUE(EqualRect(&rc, &c.expected)) << "flags " << c.dwFlags << ": " << rc.left << ","
                                                 << rc.top << "," << rc.right << "," << rc.bottom;
    }
}

int g_created = 0;

LRESULT CALLBACK CountingProc(HWND hWnd, UINT msg, WPARAM wParam, LPARAM lParam)
{
    g_created += msg == WM_CREATE;
    return DefWindowProcW(hWnd, msg, wParam, lParam);
}

class BackgroundWindow : public ::testing::Test
{
protected:
    void SetUp() override { m_parent = Popup(400, 300); }
    void TearDown() override
    {
        DestroyWindow(m_hWnd);
        DestroyWindow(m_parent);
    }
    static HWND Popup(int w, int h)
    {
        return CreateWindowExW(0, L"STATIC", L"host", WS_POPUP | WS_VISIBLE, 0, 0, w, h, nullptr, nullptr,
                               nullptr, nullptr);
    }
    HRESULT Create(HWND hWndParent)
    {
        return CPlayerBase::CreateBackgroundWindow(&m_hWnd, hWndParent, L"Tessaly.Test.Background", L"bg",
                                                   CountingProc, &m_owner);
    }
    void ExpectChildOf(HWND hWndParent, LONG width, LONG height)
    {
        ASSERT_TRUE(IsWindow(m_hWnd));
        EXPECT_EQ(hWndParent, GetParent(m_hWnd));
        EXPECT_TRUE(IsWindowVisible(m_hWnd));
        RECT rc;
        GetClientRect(m_hWnd, &rc);
        EXPECT_EQ(width, rc.right);
        EXPECT_EQ(height, rc.bottom);
        EXPECT_EQ(reinterpret_cast<LONG_PTR>(&m_owner), GetWindowLongPtrW(m_hWnd, GWLP_USERDATA));
    }

    HWND m_parent = nullptr, m_hWnd = nullptr;
    int m_owner = 0;
};

TEST_F(BackgroundWindow, IsCreatedCoveringTheParentMovedWhileAliveAndReplacedOnceGone)
{
    ASSERT_EQ(S_OK, Create(m_parent));
    ExpectChildOf(m_parent, 400, 300);
    const HWND first = m_hWnd;
    const int created = g_created;
    HWND bigger = Popup(800, 600);
    EXPECT_EQ(S_OK, Create(bigger)); // the live window moves, keeping its size
    EXPECT_EQ(first, m_hWnd);
    EXPECT_EQ(created, g_created);
    ExpectChildOf(bigger, 400, 300);
    DestroyWindow(bigger); // the handle is kept but its window is gone
    EXPECT_EQ(S_OK, Create(m_parent));
    EXPECT_EQ(created + 1, g_created);
    ExpectChildOf(m_parent, 400, 300);
    const HWND second = m_hWnd;
    for (int i = 0; i < 2; ++i)
    {
        EXPECT_EQ(S_OK, Create(nullptr)) << "destroyed, or nothing to destroy";
        EXPECT_EQ(nullptr, m_hWnd);
    }
    EXPECT_FALSE(IsWindow(second));

    const HRESULT hr = Create(reinterpret_cast<HWND>(static_cast<INT_PTR>(0x0BADF00D)));
    const DWORD dwLastError = GetLastError();
    EXPECT_TRUE(FAILED(hr));
    EXPECT_EQ(HRESULT_FROM_WIN32(dwLastError), hr);
    EXPECT_EQ(nullptr, m_hWnd);
}

} // namespace
