// The back-end's life in a host: GDI+ shared through the module's count, transport calls that
// leave a picture alone, input handed to the host, and nothing left behind by opens, fades and
// destruction.
#include <windows.h>

#include <gtest/gtest.h>

#include <cstdio>

#include "CGdiObjectCount.h"
#include "CPictureCheck.h"
#include "CPictureFiles.h"
#include "CPictureStage.h"
#include "engine/CDllModule.h"
#include "engine/TessalyContract.h"

namespace {

const COLORREF kRed = RGB(255, 0, 0);
const COLORREF kGreen = RGB(0, 255, 0);
const RECT kWhole = {0, 0, 200, 200};
const int kObjectNoise = 40;

// Committed private memory, summed over the address space: this platform leaves the process
// counters' private usage at zero.
SIZE_T PrivateBytes()
{
    SIZE_T cbTotal = 0;
    MEMORY_BASIC_INFORMATION info;
    for (const BYTE* p = nullptr; VirtualQuery(p, &info, sizeof(info)) == sizeof(info);
         p = static_cast<const BYTE*>(info.BaseAddress) + info.RegionSize)
    {
        if (info.State == MEM_COMMIT && info.Type == MEM_PRIVATE)
            cbTotal += info.RegionSize;
    }
    return cbTotal;
}

TEST(PictureGdiplus, EveryCallButTheTransportRefusesUntilInitStartsGdiplus)
{
    ASSERT_FALSE(g_DllModule.IsGdiplusStarted()) << "no other viewer may be alive here";
    CPictViewerProbe viewer;
    const HWND hWnd = GetDesktopWindow();
    EXPECT_EQ(TESSALY_E_GDIPLUS_UNAVAILABLE, viewer.SetParentWindow(hWnd));
    EXPECT_EQ(nullptr, viewer.PictureWindow());
    EXPECT_EQ(TESSALY_E_GDIPLUS_UNAVAILABLE, viewer.SetParentWindowSize(10, 10));
    EXPECT_EQ(TESSALY_E_GDIPLUS_UNAVAILABLE, viewer.OpenFile(L"C:\\a.png", 0, 0));
    EXPECT_EQ(TESSALY_E_GDIPLUS_UNAVAILABLE, viewer.SetPlaybackFlags(1));
    EXPECT_EQ(TESSALY_E_GDIPLUS_UNAVAILABLE, viewer.GetFileInfo(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
    EXPECT_EQ(S_OK, viewer.Play());
    EXPECT_FALSE(viewer.IsInitialized());

    ASSERT_EQ(S_OK, viewer.Init());
    EXPECT_TRUE(viewer.IsInitialized());
    EXPECT_TRUE(g_DllModule.IsGdiplusStarted());
    viewer.Destroy();
    EXPECT_FALSE(g_DllModule.IsGdiplusStarted()) << "the last viewer gives GDI+ back";
}

TEST(PictureGdiplus, OneViewersDestroyLeavesGdiplusRunningForAnother)
{
    CPictureStage stage;
    CPictureFiles files;
    ASSERT_EQ(S_OK, stage.Open(files.Encode(L"red.png", 200, 200, [](int, int) { return kRed; })));
    {
        CPictViewerProbe other;
        ASSERT_EQ(S_OK, other.Init());
        other.Destroy();
        CPictViewerProbe neverStarted;
        neverStarted.Destroy();
    }
    ASSERT_TRUE(g_DllModule.IsGdiplusStarted());
    InvalidateRect(stage.Viewer().PictureWindow(), nullptr, FALSE);
    stage.PumpFor(50);
    EXPECT_TRUE(ShowsPictureAt(stage.Window(), kWhole, kRed)) << "still drawn through GDI+";
}

class PictureInHost : public ::testing::Test
{
protected:
    std::wstring Plain(const wchar_t* pwszName, COLORREF cr)
    {
        return files.Encode(pwszName, 64, 32, [cr](int, int) { return cr; });
    }

    CPictureFiles files;
    CPictureStage stage; // 200 x 200
};

TEST_F(PictureInHost, TransportAndCloseLeaveThePictureAsItIs)
{
    ASSERT_EQ(S_OK, stage.Open(Plain(L"red.png", kRed)));
    CPictViewerProbe& viewer = stage.Viewer();
    EXPECT_EQ(S_OK, viewer.Play());
    EXPECT_EQ(S_OK, viewer.Pause());
    EXPECT_EQ(S_OK, viewer.Resume());
    EXPECT_EQ(S_OK, viewer.Stop());
    EXPECT_EQ(S_OK, viewer.SetCurTime(3.0));
    double dTime = 7.5;
    EXPECT_EQ(E_FAIL, viewer.GetCurTime(&dTime));
    EXPECT_EQ(7.5, dTime);
    EXPECT_EQ(S_OK, viewer.CloseFile());

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

TEST_F(PictureInHost, KeysAndMouseOverThePictureReachTheHost)
{
    const HWND hWnd = stage.Viewer().PictureWindow();
    const LPARAM lPoint = MAKELPARAM(12, 34);
    const struct
    {
        UINT uMsg;
        WPARAM wParam;
    } kInput[] = {{WM_KEYDOWN, VK_F5},         {WM_CHAR, L'x'},          {WM_SYSKEYUP, VK_MENU},
                  {WM_MOUSEMOVE, 0},              {WM_LBUTTONDBLCLK, MK_LBUTTON}, {WM_MBUTTONDOWN, MK_MBUTTON},
                  {WM_NCLBUTTONDOWN, HTCAPTION},  {WM_NCMBUTTONDBLCLK, HTCLIENT}};
    for (const auto& input : kInput)
        EXPECT_EQ(0, SendMessageW(hWnd, input.uMsg, input.wParam, lPoint));
    SendMessageW(hWnd, WM_XBUTTONDOWN, 0, lPoint); // past the forwarded range: not the host's
    stage.PumpFor(50);

    ASSERT_EQ(ARRAYSIZE(kInput), stage.inputs.size()) << "last: 0x" << std::hex << stage.inputs.back().uMsg;
    for (size_t i = 0; i < stage.inputs.size(); ++i)
    {
        EXPECT_EQ(kInput[i].uMsg, stage.inputs[i].uMsg) << i;
        EXPECT_EQ(kInput[i].wParam, stage.inputs[i].wParam) << i;
        EXPECT_EQ(lPoint, stage.inputs[i].lParam) << i;
    }
}

TEST_F(PictureInHost, OpensAndFadesLeaveGdiObjectsAndMemoryFlat)
{
    // Big enough that keeping any file's bytes or any decoded picture would show in the total.
    const std::wstring red = files.Encode(L"red.bmp", 256, 256, [](int, int) { return kRed; });
    const std::wstring green = files.Encode(L"green.png", 256, 256, [](int x, int y) { return RGB(0, x, y); });
    auto cycle = [&](int i) {
        ASSERT_EQ(S_OK, stage.Open(i % 2 ? green : red));
        ASSERT_EQ(S_OK, stage.Viewer().CloseFile());
    };
    for (int i = 0; i < 20; ++i) // warm-up: the decoders' and the heap's first allocations
        cycle(i);
    const int nObjectsBefore = CGdiObjectCount::Live();
    const SIZE_T cbBefore = PrivateBytes();
    for (int i = 0; i < 200; ++i)
        cycle(i);
    const int nObjectsAfter = CGdiObjectCount::Live();
    const SIZE_T cbAfter = PrivateBytes();
    std::printf("200 open/close cycles: GDI objects %d -> %d, private bytes %lu -> %lu KiB\n", nObjectsBefore,
                nObjectsAfter, static_cast<unsigned long>(cbBefore / 1024), static_cast<unsigned long>(cbAfter / 1024));
    // The count walks a handle table other test processes share here, so it moves by a few on
    // its own; one object kept per open would add 200.
    EXPECT_LT(nObjectsAfter, nObjectsBefore + kObjectNoise);
    EXPECT_LT(cbAfter, cbBefore + 1024 * 1024) << "keeping the bytes of every file read would add 19 MiB";

    for (int i = 0; i < 4; ++i)
    {
        ASSERT_EQ(S_OK, stage.Open(i % 2 ? red : green, 1));
        stage.PumpUntil([&] { return !stage.Viewer().Fading(); }, 3000);
    }
    stage.PumpFor(50);
    std::printf("after 4 cross-fades: GDI objects %d\n", CGdiObjectCount::Live());
    EXPECT_LT(CGdiObjectCount::Live(), nObjectsBefore + kObjectNoise) << "two contexts per frame would add 150";
}

TEST(PictureTeardown, DestroyInTheMiddleOfAFadeGivesBackItsWindowAndBitmaps)
{
    CPictureFiles files;
    CPictureStage stage;
    const HWND hPicture = stage.Viewer().PictureWindow();
    ASSERT_EQ(S_OK, stage.Open(files.Encode(L"red.png", 64, 32, [](int, int) { return kRed; })));
    ASSERT_EQ(S_OK, stage.Open(files.Encode(L"green.png", 64, 32, [](int, int) { return kGreen; }), 1));
    stage.PumpFor(100);
    ASSERT_TRUE(stage.Viewer().FadeTimerOn());
    const HBITMAP hbmFrom = stage.Viewer().FadeFrom();
    const HBITMAP hbmTo = stage.Viewer().FadeTo();
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
