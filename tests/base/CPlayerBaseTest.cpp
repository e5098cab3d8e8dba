// The back-end base: defaults every back-end inherits, extension matching, picture placement
// by the stretch flag, and the child window a back-end draws in.
#include <windows.h>

#include <gtest/gtest.h>

#include "base/CPlayerBase.h"
#include "base/CUtility.h"
#include "engine/TessalyContract.h"

namespace {

const LPCWSTR kTable[] = {L".MOV", L".QT", L".GIF", L".SND"};

class TablePlayer : public CPlayerBase
{
public:
    explicit TablePlayer(bool bWithTable = true)
    {
        if (bWithTable)
        {
            m_ppwszFileExt = kTable;
            m_dwFileExtCount = 4;
        }
    }
    void SetFlags(DWORD dwFlags) { m_dwPlaybackFlags = dwFlags; }
    HWND EventWindow() const { return m_hEventHandlerWnd; }
};

TEST(PlayerBaseDefaults, InitFailsAndEverythingElseSucceedsWithoutTouchingOutputs)
{
    CPlayerBase player;
    EXPECT_FALSE(player.IsInitialized());
    EXPECT_EQ(E_FAIL, player.Init());
    EXPECT_FALSE(player.IsInitialized());
    EXPECT_EQ(S_OK, player.SetParentWindow(nullptr));
    EXPECT_EQ(S_OK, player.SetParentWindowSize(640, 480));
    EXPECT_EQ(S_OK, player.OpenFile(L"C:\\a.mp3", 0, 1));
    EXPECT_EQ(S_OK, player.CloseFile());
    EXPECT_EQ(S_OK, player.Play());
    EXPECT_EQ(S_OK, player.Pause());
    EXPECT_EQ(S_OK, player.Resume());
    EXPECT_EQ(S_OK, player.Stop());
    EXPECT_EQ(S_OK, player.SetCurTime(2.0));
    EXPECT_EQ(S_OK, player.SetPlaybackFlags(0));
    EXPECT_EQ(S_OK, player.OnEngineNotify(1, 2));
    EXPECT_EQ(S_OK, player.Reserved(7));

    BOOL bAudio = 7, bSeek = 7, bPict = 7;
    double dDuration = -1.0;
    DWORD dwW = 7, dwH = 7;
    EXPECT_EQ(S_OK, player.GetFileInfo(&bAudio, &dDuration, &bSeek, &dwW, &dwH, &bPict));
    EXPECT_EQ(7, bAudio);
    EXPECT_EQ(-1.0, dDuration);
    EXPECT_EQ(7, bSeek);
    EXPECT_EQ(7u, dwW);
    EXPECT_EQ(7u, dwH);
    EXPECT_EQ(7, bPict);

    double dNow = -1.0;
    EXPECT_EQ(E_FAIL, player.GetCurTime(&dNow));
    EXPECT_EQ(-1.0, dNow);

    DWORD dwCount = 99;
    EXPECT_EQ(nullptr, player.GetSupportedFileExt(&dwCount));
    EXPECT_EQ(0u, dwCount);
}

TEST(PlayerBaseDefaults, EventWindowIsStoredAndTheTableIsHandedOut)
{
    TablePlayer player;
    EXPECT_EQ(nullptr, player.EventWindow());
    player.SetEventHandlerWindow(reinterpret_cast<HWND>(0x1234));
    EXPECT_EQ(reinterpret_cast<HWND>(0x1234), player.EventWindow());

    DWORD dwCount = 0;
    LPCWSTR* ppExt = player.GetSupportedFileExt(&dwCount);
    ASSERT_EQ(4u, dwCount);
    EXPECT_STREQ(L".MOV", ppExt[0]);
    EXPECT_STREQ(L".SND", ppExt[3]);
}

TEST(PlayerBaseExtensions, MatchIgnoresAsciiCaseOnly)
{
    TablePlayer player;
    EXPECT_TRUE(player.IsSupportedFileExt(L".mov"));
    EXPECT_TRUE(player.IsSupportedFileExt(L".MOV"));
    EXPECT_TRUE(player.IsSupportedFileExt(L".Gif"));
    EXPECT_TRUE(player.IsSupportedFileExt(L".snd"));
    EXPECT_FALSE(player.IsSupportedFileExt(L".mo"));
    EXPECT_FALSE(player.IsSupportedFileExt(L".MOVX"));
    EXPECT_FALSE(player.IsSupportedFileExt(L"MOV"));
    EXPECT_FALSE(player.IsSupportedFileExt(L"."));
    EXPECT_FALSE(player.IsSupportedFileExt(L""));
    // Letters outside ASCII never stand for ASCII ones, even where Unicode upper-cases them so.
    EXPECT_FALSE(player.IsSupportedFileExt(L".\x017Fnd")); // long s
    EXPECT_FALSE(player.IsSupportedFileExt(L".g\x0131" L"f")); // dotless i
}

TEST(PlayerBaseExtensions, AnEmptyTableMatchesNothing)
{
    TablePlayer player(false);
    EXPECT_FALSE(player.IsSupportedFileExt(L".mov"));
    EXPECT_FALSE(player.IsSupportedFileExt(L""));
}

void ExpectRect(const RECT& rc, LONG left, LONG top, LONG right, LONG bottom)
{
    EXPECT_EQ(left, rc.left);
    EXPECT_EQ(top, rc.top);
    EXPECT_EQ(right, rc.right);
    EXPECT_EQ(bottom, rc.bottom);
}

TEST(PlayerBaseFit, StretchFlagIsSetByDefaultAndBitZeroDecides)
{
    TablePlayer player;
    RECT rc = {0, 0, 320, 240};
    player.FitVideoRect(640, 480, &rc);
    ExpectRect(rc, 0, 0, 640, 480);

    player.SetFlags(0);
    rc = {0, 0, 320, 240};
    player.FitVideoRect(640, 480, &rc);
    ExpectRect(rc, 160, 120, 480, 360);

    player.SetFlags(0xFFFFFFFE); // every bit but the stretch bit
    rc = {0, 0, 320, 240};
    player.FitVideoRect(640, 480, &rc);
    ExpectRect(rc, 160, 120, 480, 360);

    player.SetFlags(TESSALY_PLAYBACK_FLAG_STRETCH);
    rc = {0, 0, 100, 50};
    player.FitVideoRect(500, 500, &rc);
    ExpectRect(rc, 0, 125, 500, 375);
}

TEST(PlayerBaseFit, LargerSourcesShrinkWhateverTheFlag)
{
    TablePlayer player;
    for (DWORD dwFlags : {0u, 1u})
    {
        player.SetFlags(dwFlags);
        RECT rc = {0, 0, 1280, 720};
        player.FitVideoRect(640, 480, &rc);
        ExpectRect(rc, 0, 60, 640, 420);
        rc = {0, 0, 300, 600};
        player.FitVideoRect(640, 480, &rc);
        ExpectRect(rc, 200, 0, 440, 480);
    }
}

// ---- the back-end's child window -----------------------------------------------------------

int g_createdWithOwner = 0;

LRESULT CALLBACK BackgroundProc(HWND hWnd, UINT msg, WPARAM wParam, LPARAM lParam)
{
    if (msg == WM_CREATE)
        ++g_createdWithOwner;
    return DefWindowProcW(hWnd, msg, wParam, lParam);
}

class BackgroundWindow : public ::testing::Test
{
protected:
    void SetUp() override
    {
        m_parent = CreateWindowExW(0, L"STATIC", L"host", WS_POPUP | WS_VISIBLE, 0, 0, 400, 300,
                                   nullptr, nullptr, nullptr, nullptr);
        ASSERT_NE(nullptr, m_parent);
    }
    void TearDown() override
    {
        if (IsWindow(m_hWnd))
            DestroyWindow(m_hWnd);
        DestroyWindow(m_parent);
    }
    HRESULT Create(HWND hWndParent)
    {
        return CPlayerBase::CreateBackgroundWindow(&m_hWnd, hWndParent, L"Tessaly.Test.Background",
                                                   L"Tessaly.Test.Background.Window", BackgroundProc,
                                                   &m_owner);
    }

    HWND m_parent = nullptr;
    HWND m_hWnd = nullptr;
    int m_owner = 0;
};

TEST_F(BackgroundWindow, CreatesAVisibleChildCoveringTheParent)
{
    ASSERT_EQ(S_OK, Create(m_parent));
    ASSERT_TRUE(IsWindow(m_hWnd));
    EXPECT_EQ(m_parent, GetParent(m_hWnd));
    EXPECT_TRUE(IsWindowVisible(m_hWnd));
    RECT rc;
    GetClientRect(m_hWnd, &rc);
    EXPECT_EQ(400, rc.right);
    EXPECT_EQ(300, rc.bottom);
    EXPECT_EQ(reinterpret_cast<LONG_PTR>(&m_owner), GetWindowLongPtrW(m_hWnd, GWLP_USERDATA));
}

TEST_F(BackgroundWindow, ALiveWindowIsOnlyReparentedKeepingItsSize)
{
    ASSERT_EQ(S_OK, Create(m_parent));
    HWND first = m_hWnd;
    HWND bigger = CreateWindowExW(0, L"STATIC", L"other host", WS_POPUP | WS_VISIBLE, 0, 0, 800, 600,
                                  nullptr, nullptr, nullptr, nullptr);
    const int created = g_createdWithOwner;
    EXPECT_EQ(S_OK, Create(bigger));
    EXPECT_EQ(first, m_hWnd);
    EXPECT_EQ(created, g_createdWithOwner) << "no new window";
    EXPECT_EQ(bigger, GetParent(m_hWnd));
    RECT rc;
    GetClientRect(m_hWnd, &rc);
    EXPECT_EQ(400, rc.right);
    EXPECT_EQ(300, rc.bottom);
    DestroyWindow(m_hWnd);
    DestroyWindow(bigger);
}

TEST_F(BackgroundWindow, ANullParentDestroysTheWindowAndSucceeds)
{
    ASSERT_EQ(S_OK, Create(m_parent));
    HWND old = m_hWnd;
    EXPECT_EQ(S_OK, Create(nullptr));
    EXPECT_EQ(nullptr, m_hWnd);
    EXPECT_FALSE(IsWindow(old));
    EXPECT_EQ(S_OK, Create(nullptr)) << "nothing to destroy is fine too";
    EXPECT_EQ(nullptr, m_hWnd);
}

TEST_F(BackgroundWindow, AStaleHandleIsReplacedByANewWindow)
{
    ASSERT_EQ(S_OK, Create(m_parent));
    DestroyWindow(m_hWnd); // the handle is kept but its window is gone
    const int created = g_createdWithOwner;
    EXPECT_EQ(S_OK, Create(m_parent));
    EXPECT_TRUE(IsWindow(m_hWnd));
    EXPECT_EQ(created + 1, g_createdWithOwner);
    EXPECT_EQ(m_parent, GetParent(m_hWnd));
}

TEST_F(BackgroundWindow, AParentThatIsNotAWindowFailsWithTheWindowsError)
{
    HWND bogus = reinterpret_cast<HWND>(static_cast<INT_PTR>(0x0BADF00D));
    ASSERT_FALSE(IsWindow(bogus));
    const HRESULT hr = Create(bogus);
    const DWORD dwLastError = GetLastError();
    EXPECT_TRUE(FAILED(hr));
    EXPECT_EQ(HRESULT_FROM_WIN32(dwLastError), hr) << "the thread's last error, as a result code";
    EXPECT_EQ(nullptr, m_hWnd);
}

} // namespace
