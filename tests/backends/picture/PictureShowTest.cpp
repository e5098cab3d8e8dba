// What the back-end shows: pictures fitted and centred on black, grown only by the stretch flag,
// turned upright by their orientation tag, cross-faded when the host asks; every kind of picture
// opened through the dispatcher as a Play object opens it, and a clear code for files no decoder
// takes, the back-end still usable afterwards.
#include <gtest/gtest.h>

#include "CPictureCheck.h"
#include "CPictureFiles.h"
#include "CPictureStage.h"
#include "CPlaybackHost.h"

namespace {

const COLORREF kRed = RGB(255, 0, 0), kGreen = RGB(0, 255, 0), kBlue = RGB(0, 0, 255), kOrange = RGB(255, 128, 0);
const RECT kWhole = {0, 0, 200, 200}, kSmallCentred = {68, 84, 132, 116};
const int kScaledSeam = 5; // 64 pixels grown to 200: a source pixel and a half is about five

class PictureShow : public ::testing::Test
{
protected:
    std::wstring Plain(int nWidth, int nHeight, COLORREF cr)
    {
        const std::wstring name = std::to_wstring(nWidth) + L"x" + std::to_wstring(nHeight) + std::to_wstring(cr) + L".png";
        return files.Encode(name, nWidth, nHeight, [cr](int, int) { return cr; });
    }
    COLORREF Centre() { return CWindowPixels(stage.Window()).At(100, 100); }

    CPictureFiles files;
    CPictureStage stage; // 200 x 200
};

TEST_F(PictureShow, PicturesAreFittedAndCentredOnBlackAndGrownOnlyWithTheStretchFlag)
{
    const struct
    {
        int nWidth, nHeight;
        DWORD dwPlaybackFlags;
        RECT rc;
        int nSeam;
    } kCases[] = {{64, 32, 0, kSmallCentred, 2}, {64, 32, TESSALY_PLAYBACK_FLAG_STRETCH, {0, 50, 200, 150}, kScaledSeam},
                  {400, 100, 0, {0, 75, 200, 125}, 2}, {400, 100, TESSALY_PLAYBACK_FLAG_STRETCH, {0, 75, 200, 125}, 2}};
    for (const auto& c : kCases)
    {
        ASSERT_EQ(S_OK, stage.Open(Plain(c.nWidth, c.nHeight, kRed), 0, c.dwPlaybackFlags));
        EXPECT_TRUE(ShowsPictureAt(stage.Window(), c.rc, kRed, c.nSeam)) << c.nWidth << " flags " << c.dwPlaybackFlags;
    }
}

TEST_F(PictureShow, AChangedStretchFlagWaitsForTheHostsNextSizeAndEachSizeLaysThePictureOutAgain)
{
    ASSERT_EQ(S_OK, stage.Open(Plain(64, 32, kRed)));
    ASSERT_EQ(S_OK, stage.Viewer().SetPlaybackFlags(TESSALY_PLAYBACK_FLAG_STRETCH));
    stage.PumpFor(100);
    EXPECT_TRUE(ShowsPictureAt(stage.Window(), kSmallCentred, kRed));
    stage.Resize(200, 200); // the same size: nothing to lay out
    EXPECT_TRUE(ShowsPictureAt(stage.Window(), kSmallCentred, kRed));
    stage.Resize(100, 300);
    EXPECT_TRUE(ShowsPictureAt(stage.Window(), {0, 125, 100, 175}, kRed, kScaledSeam));
    stage.Resize(300, 100);
    EXPECT_TRUE(ShowsPictureAt(stage.Window(), {50, 0, 250, 100}, kRed, kScaledSeam));
    stage.Viewer().Deactivate();
    EXPECT_FALSE(IsWindowVisible(stage.Viewer().PictureWindow()));
    stage.Viewer().Activate();
    EXPECT_TRUE(IsWindowVisible(stage.Viewer().PictureWindow()));
}

// A 64 x 32 TIFF, the left half red and the right half blue, tagged: upright, it shows 32 high;
// turned a quarter, 32 wide and 64 high. Mirrored orientations are turned, never flipped.
struct Orientation
{
    UINT16 nTag;
    bool bQuarter;
    COLORREF crFirst; // the left half, or the top half when turned a quarter
};

void PrintTo(const Orientation& o, std::ostream* pStream)
{
    *pStream << "tag " << o.nTag;
}

class PictureOrientation : public PictureShow, public ::testing::WithParamInterface<Orientation>
{
};

TEST_P(PictureOrientation, IsShownTurnedAndReportedAsShown)
{
    const Orientation& o = GetParam();
    ASSERT_EQ(S_OK, stage.Open(files.OrientedTiff(L"o.tif", 64, 32, o.nTag, [](int x, int) { return x < 32 ? kRed : kBlue; })));
    const CWindowPixels pixels(stage.Window());
    const COLORREF crSecond = o.crFirst == kRed ? kBlue : kRed;
    EXPECT_EQ(o.crFirst, o.bQuarter ? pixels.At(100, 84) : pixels.At(84, 100));
    EXPECT_EQ(crSecond, o.bQuarter ? pixels.At(100, 116) : pixels.At(116, 100));
    EXPECT_EQ(RGB(0, 0, 0), o.bQuarter ? pixels.At(76, 100) : pixels.At(100, 76)) << "the narrow side stays black";
    if (o.bQuarter)
    {
        EXPECT_EQ(RGB(0, 0, 0), pixels.At(100, 62)) << "no taller than the turned height";
    }
    DWORD dwWidth = 0, dwHeight = 0;
    ASSERT_EQ(S_OK, stage.Viewer().GetFileInfo(nullptr, nullptr, nullptr, &dwWidth, &dwHeight, nullptr));
    EXPECT_EQ(o.bQuarter ? 32u : 64u, dwWidth);
    EXPECT_EQ(o.bQuarter ? 64u : 32u, dwHeight);
}

INSTANTIATE_TEST_SUITE_P(Tags, PictureOrientation,
                         ::testing::Values(Orientation{1, false, kRed}, Orientation{3, false, kBlue}, Orientation{6, true, kRed},
                                           Orientation{8, true, kBlue}, Orientation{2, true, kRed}, Orientation{5, false, kRed},
                                           Orientation{0, false, kRed}, Orientation{9, false, kRed}),
                         [](const auto& param) { return "Tag" + std::to_string(param.param.nTag); });

TEST_F(PictureShow, WithTheFlagAShownPictureFadesIntoTheNextInHalfASecond)
{
    ASSERT_EQ(S_OK, stage.Open(Plain(200, 200, kRed)));
    const ULONGLONG start = GetTickCount64();
    ASSERT_EQ(S_OK, stage.Open(Plain(200, 200, kGreen), TESSALY_OPEN_FLAG_CROSSFADE));
    EXPECT_EQ(kRed, Centre()) << "the first paint of a fade only prepares it";
    int nBetween = 0; // centre pixels strictly between red and green
    stage.PumpUntil([&] {
        const COLORREF cr = Centre();
        nBetween += GetRValue(cr) > 0 && GetRValue(cr) < 255 && GetGValue(cr) > 0 && GetGValue(cr) < 255 && GetBValue(cr) == 0;
        return !stage.Viewer().Fading();
    }, 3000);
    const ULONGLONG length = GetTickCount64() - start;
    ASSERT_FALSE(stage.Viewer().Fading()) << "the fade must end";
    EXPECT_GT(nBetween, 0);
    EXPECT_GE(length, 500u) << "the fade lasts its full length";
    EXPECT_LT(length, 2500u);
    stage.PumpFor(50);
    EXPECT_TRUE(ShowsPictureAt(stage.Window(), kWhole, kGreen)) << "the fade ends on the new picture";
    EXPECT_FALSE(stage.Viewer().FadeTimerOn());
}

TEST_F(PictureShow, ANewPictureDuringAFadeFadesFromWhatIsShownOrWithoutTheFlagReplacesItAtOnce)
{
    ASSERT_EQ(S_OK, stage.Open(Plain(200, 200, kRed), TESSALY_OPEN_FLAG_CROSSFADE));
    EXPECT_FALSE(stage.Viewer().Fading()) << "the first picture is shown at once";
    EXPECT_TRUE(ShowsPictureAt(stage.Window(), kWhole, kRed));
    ASSERT_EQ(S_OK, stage.Open(Plain(200, 200, kGreen), TESSALY_OPEN_FLAG_CROSSFADE));
    stage.PumpFor(150);
    ASSERT_TRUE(stage.Viewer().FadeTimerOn());
    ASSERT_EQ(S_OK, stage.Open(Plain(200, 200, kBlue), TESSALY_OPEN_FLAG_CROSSFADE));
    EXPECT_TRUE(stage.Viewer().Fading()) << "a new fade is pending";
    stage.PumpUntil([&] { return !stage.Viewer().Fading(); }, 3000);
    stage.PumpFor(50);
    EXPECT_TRUE(ShowsPictureAt(stage.Window(), kWhole, kBlue));
    ASSERT_EQ(S_OK, stage.Open(Plain(200, 200, kRed), TESSALY_OPEN_FLAG_CROSSFADE));
    stage.PumpFor(100);
    ASSERT_EQ(S_OK, stage.Open(Plain(200, 200, kGreen), 0));
    EXPECT_FALSE(stage.Viewer().FadeTimerOn()) << "an open without the flag stops the running fade";
    EXPECT_FALSE(stage.Viewer().Fading());
    EXPECT_TRUE(ShowsPictureAt(stage.Window(), kWhole, kGreen));
}

class PictureFormats : public ::testing::TestWithParam<std::string>
{
};

TEST_P(PictureFormats, OpensThroughTheDispatcherAndShowsOnBlack)
{
    CPictureFiles files;
    CPlaybackHost host{200, 200};
    const std::string& ext = GetParam();
    const std::wstring name = L"a." + std::wstring(ext.begin(), ext.end());
    const std::wstring path = ext == "ico"   ? files.Icon(name, 32, kOrange)
                              : ext == "wmf" ? files.WindowsMetafile(name, 64, 32, kOrange)
                              : ext == "emf" ? files.EnhancedMetafile(name, 64, 32, kOrange)
                                             : files.Encode(name, 64, 32, [](int, int) { return kOrange; });
    ASSERT_FALSE(path.empty()) << "the fixture could not be written";
    TESSALY_FILEINFO info = {};
    ASSERT_EQ(S_OK, host.Player().Init(path.c_str()));
    ASSERT_EQ(S_OK, host.Player().OpenFile(path.c_str(), 0, 0, &info));
    EXPECT_EQ(TESSALY_FILEINFO_PICTURE, info.dwAttributeMask);
    EXPECT_EQ(0.0, info.dDuration);
    if (ext != "wmf" && ext != "emf") // a metafile's size follows the screen's resolution
    {
        EXPECT_EQ(std::make_pair(ext == "ico" ? 32ul : 64ul, 32ul), std::make_pair(info.dwWidth, info.dwHeight));
    }
    host.PumpFor(100);
    const CWindowPixels pixels(host.Window());
    const COLORREF cr = pixels.At(100, 100);
    const int nTolerance = ext[0] == 'j' ? 12 : 0; // JPEG is lossy
    EXPECT_TRUE(abs(GetRValue(cr) - 255) <= nTolerance && abs(GetGValue(cr) - 128) <= nTolerance && GetBValue(cr) <= nTolerance) << std::hex << cr;
    EXPECT_EQ(RGB(0, 0, 0), pixels.At(2, 2));
    EXPECT_EQ(RGB(0, 0, 0), pixels.At(197, 197));
    ASSERT_EQ(S_OK, host.Player().Play());
    EXPECT_EQ(TESSALY_E_NOTSEEKABLE, host.Player().SeekTo(1.0)) << "a picture has no time line";
}

INSTANTIATE_TEST_SUITE_P(EachExtension, PictureFormats,
                         ::testing::Values("bmp", "dib", "jpg", "jpeg", "jpe", "jfif", "png", "tif", "tiff", "ico", "wmf", "emf"),
                         [](const auto& param) { return param.param; });

TEST_F(PictureShow, AFileNoDecoderTakesIsRefusedWithItsCodeAndTheShownPictureStays)
{
    const std::vector<BYTE> png = CPictureFiles::Read(Plain(16, 16, kOrange));
    std::vector<BYTE> bmp = CPictureFiles::Read(files.Encode(L"b.bmp", 16, 16, [](int, int) { return kOrange; }));
    ASSERT_GT(png.size(), 40u);
    ASSERT_GT(bmp.size(), 54u);
    std::vector<BYTE> flipped = png;
    for (size_t i = 8; i < 33; ++i) // the header chunk, its checksum included
        flipped[i] ^= 0x5A;
    std::vector<BYTE> huge = bmp;
    const LONG lHuge = 1000000;
    memcpy(&huge[18], &lHuge, sizeof(lHuge)); // width
    memcpy(&huge[22], &lHuge, sizeof(lHuge)); // height
    CreateDirectoryW(files.Path(L"folder.jpg").c_str(), nullptr);
    const HRESULT kInvalidData = HRESULT_FROM_WIN32(ERROR_INVALID_DATA);
    // A file that cannot be read is the out-of-memory code hosts have always seen.
    const std::pair<std::wstring, HRESULT> kCases[] = {
        {files.Path(L"missing.png"), E_OUTOFMEMORY}, {files.Bytes(L"empty.bmp", {}), E_OUTOFMEMORY},
        {files.Path(L"folder.jpg"), E_OUTOFMEMORY}, {files.Bytes(L"text.jpg", {'h', 'e', 'l', 'l', 'o'}), kInvalidData},
        {files.Bytes(L"header-only.png", {png.begin(), png.begin() + 20}), kInvalidData},
        {files.Bytes(L"flipped.png", flipped), kInvalidData}, {files.Bytes(L"cut.bmp", {bmp.begin(), bmp.begin() + 30}), kInvalidData},
        {files.Bytes(L"huge.bmp", huge), kInvalidData}};
    for (const auto& c : kCases)
    {
        ASSERT_EQ(S_OK, stage.Open(Plain(200, 200, kRed)));
        EXPECT_EQ(c.second, stage.Open(c.first, TESSALY_OPEN_FLAG_CROSSFADE)) << c.first;
        stage.PumpFor(50);
        EXPECT_FALSE(stage.Viewer().Fading());
        EXPECT_TRUE(ShowsPictureAt(stage.Window(), kWhole, kRed)) << c.first;
        BOOL bPicture = 7;
        EXPECT_EQ(E_FAIL, stage.Viewer().GetFileInfo(nullptr, nullptr, nullptr, nullptr, nullptr, &bPicture)) << c.first;
        EXPECT_EQ(7, bPicture);
    }
    EXPECT_EQ(E_OUTOFMEMORY, stage.Viewer().OpenFile(nullptr, 0, 0));
    // A name outside ASCII opens.
    ASSERT_EQ(S_OK, stage.Open(files.Encode(L"bild-\u00c6\u00d8\u00c5-\u65e5\u672c.png", 16, 8, [](int, int) { return kOrange; })));
    DWORD dwWidth = 0;
    EXPECT_EQ(S_OK, stage.Viewer().GetFileInfo(nullptr, nullptr, nullptr, &dwWidth, nullptr, nullptr));
    EXPECT_EQ(16u, dwWidth);
}

} // namespace
