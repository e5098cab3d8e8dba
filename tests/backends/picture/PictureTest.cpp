// The picture back-end in a 200 x 200 host, read back off the screen; each kind of picture through the dispatcher.
#include <gtest/gtest.h>
#include "CPictureCheck.h"
#include "CPictureFiles.h"
#include "CPictureStage.h"
#include "CPlaybackHost.h"
#include "engine/CDllModule.h"
#include "engine/TessalyContract.h"

namespace {

const COLORREF kRed = RGB(255, 0, 0), kGreen = RGB(0, 255, 0), kBlue = RGB(0, 0, 255), kOrange = RGB(255, 128, 0);
const RECT kWhole = {0, 0, 200, 200}, kSmallCentred = {68, 84, 132, 116};
const int kScaledSeam = 5; // 64 pixels grown to 200: a source pixel and a half is about five

class Picture : public ::testing::Test
{
protected:
    std::wstring Plain(int nWidth, int nHeight, COLORREF cr)
    {
        return files.Encode(std::to_wstring(nWidth) + L"x" + std::to_wstring(nHeight) + std::to_wstring(cr) + L".png", nWidth, nHeight, [cr](int, int) { return cr; });
    }

    CPictureFiles files;
    CPictureStage stage;
};

TEST(PictureGdiplus, EveryCallButTheTransportRefusesUntilInitAndEachViewerGivesBackItsOwnStartAndInAFadeItsBitmaps)
{
    ASSERT_FALSE(g_DllModule.IsGdiplusStarted()) << "no other viewer may be alive here";
    CPictViewerProbe viewer;
    for (HRESULT hr : {viewer.SetParentWindow(GetDesktopWindow()), viewer.SetParentWindowSize(10, 10), viewer.OpenFile(L"C:\\a.png", 0, 0),
                       viewer.SetPlaybackFlags(1), viewer.GetFileInfo(nullptr, nullptr, nullptr, nullptr, nullptr, nullptr)})
        EXPECT_EQ(TESSALY_E_GDIPLUS_UNAVAILABLE, hr);
    EXPECT_EQ(S_OK, viewer.Play());
    EXPECT_FALSE(viewer.IsInitialized());
    HBITMAP hbmFrom = nullptr, hbmTo = nullptr;
    HWND hPicture = nullptr;
    {
        CPictureFiles files;
        CPictureStage stage;
        ASSERT_EQ(S_OK, viewer.Init());
        viewer.Destroy();
        CPictViewerProbe().Destroy(); // never started
        EXPECT_TRUE(g_DllModule.IsGdiplusStarted()) << "the stage's viewer keeps its own";
        ASSERT_EQ(S_OK, stage.Open(files.Encode(L"red.png", 64, 32, [](int, int) { return kRed; })));
        ASSERT_EQ(S_OK, stage.Open(files.Encode(L"green.png", 64, 32, [](int, int) { return kGreen; }), TESSALY_OPEN_FLAG_CROSSFADE));
        ASSERT_TRUE(CMessagePump::PumpUntil([&] { return stage.Viewer().FadeTimerOn(); }, 1000));
        hbmFrom = stage.Viewer().FadeFrom(), hbmTo = stage.Viewer().FadeTo(), hPicture = stage.Viewer().PictureWindow();
        ASSERT_EQ(std::make_pair(DWORD(OBJ_BITMAP), DWORD(OBJ_BITMAP)), std::make_pair(GetObjectType(hbmFrom), GetObjectType(hbmTo)));
    }
    EXPECT_FALSE(g_DllModule.IsGdiplusStarted()) << "the last viewer gives GDI+ back";
    EXPECT_FALSE(IsWindow(hPicture));
    EXPECT_EQ(std::make_pair(0ul, 0ul), std::make_pair(GetObjectType(hbmFrom), GetObjectType(hbmTo)));
}

TEST_F(Picture, TransportAndCloseLeaveThePictureAsItIsAndItsInformation)
{
    ASSERT_EQ(S_OK, stage.Open(Plain(64, 32, kRed)));
    CPictViewerProbe& viewer = stage.Viewer();
    for (HRESULT hr : {viewer.Play(), viewer.Pause(), viewer.Resume(), viewer.Stop(), viewer.SetCurTime(3.0), viewer.CloseFile()})
        EXPECT_EQ(S_OK, hr);
    double dTime = 7.5, dDuration = 7.0;
    EXPECT_EQ(E_FAIL, viewer.GetCurTime(&dTime));
    EXPECT_EQ(7.5, dTime);
    BOOL bAudioOnly = 7, bSeekable = 7, bPicture = 7;
    DWORD dwWidth = 0, dwHeight = 0;
    ASSERT_EQ(S_OK, viewer.GetFileInfo(&bAudioOnly, &dDuration, &bSeekable, &dwWidth, &dwHeight, &bPicture));
    EXPECT_EQ(std::make_tuple(FALSE, 0.0, FALSE, 64ul, 32ul, TRUE), std::make_tuple(bAudioOnly, dDuration, bSeekable, dwWidth, dwHeight, bPicture));
    InvalidateRect(viewer.PictureWindow(), nullptr, FALSE);
    CMessagePump::PumpFor(50);
    EXPECT_TRUE(ShowsPictureAt(stage.Window(), kSmallCentred, kRed));
}

TEST_F(Picture, KeysAndMouseOverThePictureArePostedToTheHost)
{
    const LPARAM lPoint = MAKELPARAM(12, 34);
    const std::pair<UINT, WPARAM> kInput[] = {{WM_KEYDOWN, VK_F5}, {WM_CHAR, L'x'}, {WM_SYSKEYUP, VK_MENU}, {WM_MOUSEMOVE, 0}, {WM_LBUTTONDBLCLK, MK_LBUTTON},
                                              {WM_MBUTTONDOWN, MK_MBUTTON}, {WM_NCLBUTTONDOWN, HTCAPTION}, {WM_NCMBUTTONDBLCLK, HTCLIENT}};
    for (const auto& input : kInput)
        EXPECT_EQ(0, SendMessageW(stage.Viewer().PictureWindow(), input.first, input.second, lPoint));
    SendMessageW(stage.Viewer().PictureWindow(), WM_XBUTTONDOWN, 0, lPoint); // past the forwarded range: not the host's
    MSG msg;
    for (const auto& input : kInput)
    {
        ASSERT_TRUE(PeekMessageW(&msg, stage.Window(), WM_KEYFIRST, WM_MOUSELAST, PM_REMOVE) || PeekMessageW(&msg, stage.Window(), WM_NCMOUSEMOVE, WM_NCXBUTTONDBLCLK, PM_REMOVE));
        EXPECT_EQ(std::make_tuple(input.first, input.second, lPoint), std::make_tuple(msg.message, msg.wParam, msg.lParam));
    }
    EXPECT_FALSE(PeekMessageW(&msg, stage.Window(), WM_KEYFIRST, WM_MOUSELAST, PM_REMOVE));
}

// Wine answers 0 to GetGuiResources; a handle that is only the table index names the object there.
int LiveGdiObjects()
{
    int nLive = 0;
    for (ULONG_PTR index = 0; index <= 0xFFFF; ++index)
        nLive += GetObjectType(reinterpret_cast<HGDIOBJ>(index)) != 0;
    return nLive;
}

// Committed private memory, summed over the address space: the process counters leave it at zero.
SIZE_T PrivateBytes()
{
    SIZE_T cbTotal = 0;
    MEMORY_BASIC_INFORMATION info;
    for (const BYTE* p = nullptr; VirtualQuery(p, &info, sizeof(info)) == sizeof(info); p = static_cast<const BYTE*>(info.BaseAddress) + info.RegionSize)
        cbTotal += info.State == MEM_COMMIT && info.Type == MEM_PRIVATE ? info.RegionSize : 0;
    return cbTotal;
}

TEST_F(Picture, OpensAndFadesLeaveGdiObjectsAndMemoryFlat)
{
    // Big enough that keeping any file's bytes or any decoded picture shows in the total.
    const std::wstring red = files.Encode(L"red.bmp", 256, 256, [](int, int) { return kRed; }), green = files.Encode(L"green.png", 256, 256, [](int x, int y) { return RGB(0, x, y); });
    auto cycle = [&](int i) {
        EXPECT_EQ(S_OK, stage.Open(i % 2 ? green : red));
        EXPECT_EQ(S_OK, stage.Viewer().CloseFile());
    };
    for (int i = 0; i < 20; ++i) // warm-up: the decoders' and the heap's first allocations
        cycle(i);
    const int nObjectsBefore = LiveGdiObjects();
    const SIZE_T cbBefore = PrivateBytes();
    for (int i = 0; i < 200; ++i)
        cycle(i);
    EXPECT_LT(LiveGdiObjects(), nObjectsBefore + 40) << "other processes share the table and move it a little; an object an open adds 200";
    EXPECT_LT(PrivateBytes(), cbBefore + 1024 * 1024) << "keeping the bytes of every file read would add 19 MiB";
    for (int i = 0; i < 4; ++i)
        EXPECT_TRUE(SUCCEEDED(stage.Open(i % 2 ? red : green, TESSALY_OPEN_FLAG_CROSSFADE)) && stage.FadeEnds());
    CMessagePump::PumpFor(50);
    EXPECT_LT(LiveGdiObjects(), nObjectsBefore + 40) << "two contexts per frame would add 150";
}

TEST_F(Picture, FittedAndCentredOnBlackAndGrownOnlyWithTheStretchFlag)
{
    const std::tuple<int, int, DWORD, RECT, int> kCases[] = {{64, 32, 0, kSmallCentred, 2}, {64, 32, TESSALY_PLAYBACK_FLAG_STRETCH, {0, 50, 200, 150}, kScaledSeam},
                                                             {400, 100, 0, {0, 75, 200, 125}, 2}, {400, 100, TESSALY_PLAYBACK_FLAG_STRETCH, {0, 75, 200, 125}, 2}};
    for (const auto& [nWidth, nHeight, dwPlaybackFlags, rc, nSeam] : kCases)
    {
        ASSERT_EQ(S_OK, stage.Open(Plain(nWidth, nHeight, kRed), 0, dwPlaybackFlags));
        EXPECT_TRUE(ShowsPictureAt(stage.Window(), rc, kRed, nSeam)) << nWidth << " flags " << dwPlaybackFlags;
    }
}

// A 64 x 32 TIFF, left half red, right half blue: upright 32 high; turned a quarter 32 wide, 64 high;
// the first colour (left or top) as given. Mirrored orientations are turned, never flipped.
TEST_F(Picture, ATiffIsShownTurnedByItsOrientationTagAndReportedAsShown)
{
    const std::tuple<UINT16, bool, COLORREF> kTags[] = {{1, false, kRed}, {3, false, kBlue}, {6, true, kRed}, {8, true, kBlue},
                                                        {2, true, kRed}, {5, false, kRed}, {0, false, kRed}, {9, false, kRed}};
    for (const auto& [nTag, bQuarter, crFirst] : kTags)
    {
        SCOPED_TRACE(nTag);
        ASSERT_EQ(S_OK, stage.Open(files.OrientedTiff(L"o" + std::to_wstring(nTag) + L".tif", 64, 32, nTag, [](int x, int) { return x < 32 ? kRed : kBlue; })));
        const CWindowPixels pixels(stage.Window());
        auto at = [&, q = bQuarter](int nAlong, int nAcross) { return q ? pixels.At(nAcross, nAlong) : pixels.At(nAlong, nAcross); };
        EXPECT_EQ(std::make_tuple(crFirst, crFirst == kRed ? kBlue : kRed, RGB(0, 0, 0), RGB(0, 0, 0)),
                  std::make_tuple(at(84, 100), at(116, 100), at(100, 76), at(bQuarter ? 62 : 30, 100))) << "the narrow side and the ends stay black";
        DWORD dwWidth = 0, dwHeight = 0;
        ASSERT_EQ(S_OK, stage.Viewer().GetFileInfo(nullptr, nullptr, nullptr, &dwWidth, &dwHeight, nullptr));
        EXPECT_EQ(bQuarter ? std::make_pair(32ul, 64ul) : std::make_pair(64ul, 32ul), std::make_pair(dwWidth, dwHeight));
    }
}

TEST_F(Picture, WithTheFlagAShownPictureFadesIntoTheNextInHalfASecondAndWithoutItIsReplacedAtOnce)
{
    ASSERT_EQ(S_OK, stage.Open(Plain(200, 200, kRed), TESSALY_OPEN_FLAG_CROSSFADE));
    EXPECT_FALSE(stage.Viewer().Fading()) << "the first picture is shown at once";
    EXPECT_TRUE(ShowsPictureAt(stage.Window(), kWhole, kRed));
    const ULONGLONG start = GetTickCount64();
    ASSERT_EQ(S_OK, stage.Open(Plain(200, 200, kGreen), TESSALY_OPEN_FLAG_CROSSFADE));
    auto centre = [&] { return CWindowPixels(stage.Window()).At(100, 100); };
    EXPECT_EQ(kRed, centre()) << "the first paint of a fade only prepares it";
    int nBetween = 0; // centre pixels strictly between red and green
    ASSERT_TRUE(CMessagePump::PumpUntil([&] {
        const COLORREF cr = centre();
        nBetween += GetRValue(cr) > 0 && GetRValue(cr) < 255 && GetGValue(cr) > 0 && GetGValue(cr) < 255 && GetBValue(cr) == 0;
        return !stage.Viewer().Fading();
    }, 3000));
    EXPECT_GT(nBetween, 0);
    EXPECT_GE(GetTickCount64() - start, 500u) << "the fade lasts its full length";
    CMessagePump::PumpFor(50);
    EXPECT_TRUE(ShowsPictureAt(stage.Window(), kWhole, kGreen)) << "the fade ends on the new picture";
    EXPECT_FALSE(stage.Viewer().FadeTimerOn());

    ASSERT_EQ(S_OK, stage.Open(Plain(200, 200, kRed), TESSALY_OPEN_FLAG_CROSSFADE));
    ASSERT_TRUE(CMessagePump::PumpUntil([&] { return stage.Viewer().FadeTimerOn(); }, 1000));
    ASSERT_EQ(S_OK, stage.Open(Plain(200, 200, kBlue), TESSALY_OPEN_FLAG_CROSSFADE));
    EXPECT_TRUE(stage.Viewer().Fading()) << "a fade during a fade is pending";
    ASSERT_EQ(S_OK, stage.Open(Plain(200, 200, kGreen), 0));
    EXPECT_FALSE(stage.Viewer().FadeTimerOn() || stage.Viewer().Fading()) << "an open without the flag stops the running fade";
    EXPECT_TRUE(ShowsPictureAt(stage.Window(), kWhole, kGreen));
}

TEST(PictureFormats, EachExtensionOpensThroughTheDispatcherAndShowsOnBlack)
{
    CPictureFiles files;
    CPlaybackHost host{200, 200};
    for (const std::wstring ext : {L"bmp", L"dib", L"jpg", L"jpeg", L"jpe", L"jfif", L"png", L"tif", L"tiff", L"ico", L"wmf", L"emf"})
    {
        const std::wstring name = L"a." + ext, path = ext == L"ico" ? files.Icon(name, 32, kOrange) : ext == L"wmf" ? files.WindowsMetafile(name, 64, 32, kOrange)
                                                                  : ext == L"emf" ? files.EnhancedMetafile(name, 64, 32, kOrange) : files.Encode(name, 64, 32, [](int, int) { return kOrange; });
        SCOPED_TRACE(std::string(ext.begin(), ext.end()));
        TESSALY_FILEINFO info = {};
        ASSERT_EQ(S_OK, host.Player().Init(path.c_str()));
        ASSERT_EQ(S_OK, host.Player().OpenFile(path.c_str(), 0, 0, &info));
        const bool bMetafile = ext == L"wmf" || ext == L"emf"; // whose size follows the screen's resolution
        EXPECT_TRUE(bMetafile || (info.dwWidth == (ext == L"ico" ? 32u : 64u) && info.dwHeight == 32u)) << info.dwWidth << " x " << info.dwHeight;
        host.PumpFor(100);
        const CWindowPixels pixels(host.Window());
        const COLORREF cr = pixels.At(100, 100);
        const int nTolerance = ext[0] == L'j' ? 12 : 0; // JPEG is lossy
        EXPECT_TRUE(abs(GetRValue(cr) - 255) <= nTolerance && abs(GetGValue(cr) - 128) <= nTolerance && GetBValue(cr) <= nTolerance) << std::hex << cr;
        EXPECT_EQ(std::make_pair(RGB(0, 0, 0), RGB(0, 0, 0)), std::make_pair(pixels.At(2, 2), pixels.At(197, 197)));
    }
}

TEST_F(Picture, AFileNoDecoderTakesIsRefusedWithItsCodeAndTheShownPictureStays)
{
    const std::vector<BYTE> bmp = CPictureFiles::Read(files.Encode(L"b.bmp", 16, 16, [](int, int) { return kOrange; }));
    std::vector<BYTE> flipped = CPictureFiles::Read(Plain(16, 16, kOrange)), huge = bmp;
    for (size_t i = 8; i < 33; ++i) // the header chunk, its checksum included
        flipped[i] ^= 0x5A;
    const LONG lHuge[2] = {1000000, 1000000};
    memcpy(&huge[18], lHuge, sizeof(lHuge)); // width and height
    const HRESULT kInvalidData = HRESULT_FROM_WIN32(ERROR_INVALID_DATA);
    // A file that cannot be read is the out-of-memory code hosts have always seen.
    const std::pair<std::wstring, HRESULT> kCases[] = {
        {files.Path(L"missing.png"), E_OUTOFMEMORY}, {files.Bytes(L"empty.bmp", {}), E_OUTOFMEMORY}, {files.Bytes(L"text.jpg", {'h', 'e', 'l', 'l', 'o'}), kInvalidData},
        {files.Bytes(L"flipped.png", flipped), kInvalidData}, {files.Bytes(L"cut.bmp", {bmp.begin(), bmp.begin() + 30}), kInvalidData},
        {files.Bytes(L"huge.bmp", huge), kInvalidData}};
    ASSERT_EQ(S_OK, stage.Open(Plain(200, 200, kRed)));
    for (const auto& c : kCases)
    {
        EXPECT_EQ(c.second, stage.Open(c.first, TESSALY_OPEN_FLAG_CROSSFADE)) << c.first;
        CMessagePump::PumpFor(50);
        EXPECT_FALSE(stage.Viewer().Fading());
        EXPECT_TRUE(ShowsPictureAt(stage.Window(), kWhole, kRed)) << c.first;
        BOOL bPicture = 7;
        EXPECT_EQ(E_FAIL, stage.Viewer().GetFileInfo(nullptr, nullptr, nullptr, nullptr, nullptr, &bPicture)) << c.first;
        EXPECT_EQ(7, bPicture);
    }
    EXPECT_EQ(E_OUTOFMEMORY, stage.Viewer().OpenFile(nullptr, 0, 0));
    ASSERT_EQ(S_OK, stage.Open(files.Encode(L"bild-\u00c6\u00d8\u00c5-\u65e5\u672c.png", 16, 8, [](int, int) { return kOrange; }))) << "a name outside ASCII";
}

} // namespace
