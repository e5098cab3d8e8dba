// The back-end's life in a host: GDI+ shared through the module's count, transport calls that
// leave a picture alone, input handed to the host, and nothing left behind by opens, fades and
// destruction.
#include <gtest/gtest.h>

#include "CGdiObjectCount.h"
#include "CPictureCheck.h"
#include "CPictureFiles.h"
#include "CPictureStage.h"
#include "engine/CDllModule.h"
#include "engine/TessalyContract.h"

namespace {

const COLORREF kRed = RGB(255, 0, 0);

CPictureFiles::Painter Solid(COLORREF cr)
{
    return [cr](int, int) { return cr; };
}

TEST(PictureGdiplus, EveryCallButTheTransportRefusesUntilInitAndEachViewerGivesBackOnlyItsOwnStart)
{
    ASSERT_FALSE(g_DllModule.IsGdiplusStarted()) << "no other viewer may be alive here";
    CPictViewerProbe viewer;
    EXPECT_EQ(TESSALY_E_GDIPLUS_UNAVAILABLE, viewer.SetParentWindow(GetDesktopWindow()));
    EXPECT_EQ(nullptr, viewer.PictureWindow());
    EXPECT_EQ(TESSALY_E_GDIPLUS_UNAVAILABLE, viewer.SetParentWindowSize(10, 10));
    EXPECT_EQ(TESSALY_E_GDIPLUS_UNAVAILABLE, viewer.OpenFile(L"C:\\a.png", 0, 0));
    EXPECT_EQ(TESSALY_E_GDIPLUS_UNAVAILABLE, viewer.SetPlaybackFlags(1));
    EXPECT_EQ(TESSALY_E_GDIPLUS_UNAVAILABLE, viewer.GetFileInfo(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(S_OK, viewer.Play());
    EXPECT_FALSE(viewer.IsInitialized());
    {
        CPictureFiles files;
        CPictureStage stage;
        ASSERT_EQ(S_OK, stage.Open(files.Encode(L"red.png", 200, 200, Solid(kRed))));
        ASSERT_EQ(S_OK, viewer.Init());
        EXPECT_TRUE(viewer.IsInitialized());
        viewer.Destroy();
        CPictViewerProbe().Destroy(); // never started
        ASSERT_TRUE(g_DllModule.IsGdiplusStarted());
        InvalidateRect(stage.Viewer().PictureWindow(), nullptr, FALSE);
        stage.PumpFor(50);
        EXPECT_TRUE(ShowsPictureAt(stage.Window(), {0, 0, 200, 200}, kRed)) << "still drawn through GDI+";
    }
    EXPECT_FALSE(g_DllModule.IsGdiplusStarted()) << "the last viewer gives GDI+ back";
}

class PictureInHost : public ::testing::Test
{
protected:
    CPictureFiles files;
    CPictureStage stage; // 200 x 200
};

TEST_F(PictureInHost, TransportAndCloseLeaveThePictureAsItIsAndItsInformation)
{
    ASSERT_EQ(S_OK, stage.Open(files.Encode(L"red.png", 64, 32, Solid(kRed))));
    CPictViewerProbe& viewer = stage.Viewer();
    for (HRESULT hr : {viewer.Play(), viewer.Pause(), viewer.Resume(), viewer.Stop(), viewer.SetCurTime(3.0), viewer.CloseFile()})
        EXPECT_EQ(S_OK, hr);
    double dTime = 7.5;
    EXPECT_EQ(E_FAIL, viewer.GetCurTime(&dTime));
    EXPECT_EQ(7.5, dTime);
    BOOL bAudioOnly = 7, bSeekable = 7, bPicture = 7;
    double dDuration = 7.0;
    DWORD dwWidth = 0, dwHeight = 0;
    ASSERT_EQ(S_OK, viewer.GetFileInfo(&bAudioOnly, &dDuration, &bSeekable, &dwWidth, &dwHeight, &bPicture));
    EXPECT_EQ(FALSE, bAudioOnly);
    EXPECT_EQ(0.0, dDuration);
    EXPECT_EQ(FALSE, bSeekable);
    EXPECT_EQ(64u, dwWidth);
    EXPECT_EQ(32u, dwHeight);
    EXPECT_EQ(TRUE, bPicture);
    InvalidateRect(viewer.PictureWindow(), nullptr, FALSE);
    stage.PumpFor(50);
    EXPECT_TRUE(ShowsPictureAt(stage.Window(), {68, 84, 132, 116}, kRed));
}

TEST_F(PictureInHost, KeysAndMouseOverThePictureArePostedToTheHost)
{
    const HWND hWnd = stage.Viewer().PictureWindow();
    const LPARAM lPoint = MAKELPARAM(12, 34);
    const std::pair<UINT, WPARAM> kInput[] = {
        {WM_KEYDOWN, VK_F5},        {WM_CHAR, L'x'},           {WM_SYSKEYUP, VK_MENU},         {WM_MOUSEMOVE, 0},
        {WM_LBUTTONDBLCLK, MK_LBUTTON}, {WM_MBUTTONDOWN, MK_MBUTTON}, {WM_NCLBUTTONDOWN, HTCAPTION}, {WM_NCMBUTTONDBLCLK, HTCLIENT}};
    for (const auto& input : kInput)
        EXPECT_EQ(0, SendMessageW(hWnd, input.first, input.second, lPoint));
    SendMessageW(hWnd, WM_XBUTTONDOWN, 0, lPoint); // past the forwarded range: not the host's
    const std::vector<MSG> posted = stage.PostedToHost();
    ASSERT_EQ(std::size(kInput), posted.size());
    for (size_t i = 0; i < posted.size(); ++i)
    {
        EXPECT_EQ(kInput[i].first, posted[i].message) << i;
        EXPECT_EQ(kInput[i].second, posted[i].wParam) << i;
        EXPECT_EQ(lPoint, posted[i].lParam) << i;
    }
}

// Committed private memory, summed over the address space: this platform leaves the process
// counters' private usage at zero.
SIZE_T PrivateBytes()
{
    SIZE_T cbTotal = 0;
    MEMORY_BASIC_INFORMATION info;
    for (const BYTE* p = nullptr; VirtualQuery(p, &info, sizeof(info)) == sizeof(info);
         p = static_cast<const BYTE*>(info.BaseAddress) + info.RegionSize)
        cbTotal += info.State == MEM_COMMIT && info.Type == MEM_PRIVATE ? info.RegionSize : 0;
    return cbTotal;
}

TEST_F(PictureInHost, OpensAndFadesLeaveGdiObjectsAndMemoryFlat)
{
    // Big enough that keeping any file's bytes or any decoded picture would show in the total.
    const std::wstring red = files.Encode(L"red.bmp", 256, 256, Solid(kRed));
    const std::wstring green = files.Encode(L"green.png", 256, 256, [](int x, int y) { return RGB(0, x, y); });
    auto cycle = [&](int i) {
        ASSERT_EQ(S_OK, stage.Open(i % 2 ? green : red));
        ASSERT_EQ(S_OK, stage.Viewer().CloseFile());
    };
    for (int i = 0; i < 20; ++i) // warm-up: the decoders' and the heap's first allocations
        cycle(i);
    const int nObjectsBefore = LiveGdiObjects();
    const SIZE_T cbBefore = PrivateBytes();
    for (int i = 0; i < 200; ++i)
        cycle(i);
    // The count walks a handle table other test processes share here, so it moves by a few on its
    // own; one object kept per open would add 200.
    EXPECT_LT(LiveGdiObjects(), nObjectsBefore + 40);
    EXPECT_LT(PrivateBytes(), cbBefore + 1024 * 1024) << "keeping the bytes of every file read would add 19 MiB";
    for (int i = 0; i < 4; ++i)
    {
        ASSERT_EQ(S_OK, stage.Open(i % 2 ? red : green, TESSALY_OPEN_FLAG_CROSSFADE));
        stage.PumpUntil([&] { return !stage.Viewer().Fading(); }, 3000);
    }
    stage.PumpFor(50);
    EXPECT_LT(LiveGdiObjects(), nObjectsBefore + 40) << "two contexts per frame would add 150";
}

TEST_F(PictureInHost, DestroyInTheMiddleOfAFadeGivesBackItsWindowBitmapsAndGdiplus)
{
    const HWND hPicture = stage.Viewer().PictureWindow();
    ASSERT_EQ(S_OK, stage.Open(files.Encode(L"red.png", 64, 32, Solid(kRed))));
    ASSERT_EQ(S_OK, stage.Open(files.Encode(L"green.png", 64, 32, Solid(RGB(0, 255, 0))), TESSALY_OPEN_FLAG_CROSSFADE));
    stage.PumpFor(100);
    ASSERT_TRUE(stage.Viewer().FadeTimerOn());
    const HBITMAP hbmFrom = stage.Viewer().FadeFrom(), hbmTo = stage.Viewer().FadeTo();
    ASSERT_EQ(static_cast<DWORD>(OBJ_BITMAP), GetObjectType(hbmFrom));
    ASSERT_EQ(static_cast<DWORD>(OBJ_BITMAP), GetObjectType(hbmTo));
    stage.Viewer().Destroy();
    EXPECT_FALSE(IsWindow(hPicture));
    EXPECT_EQ(nullptr, stage.Viewer().PictureWindow());
    EXPECT_EQ(0u, GetObjectType(hbmFrom));
    EXPECT_EQ(0u, GetObjectType(hbmTo));
    EXPECT_FALSE(g_DllModule.IsGdiplusStarted());
}

} // namespace
