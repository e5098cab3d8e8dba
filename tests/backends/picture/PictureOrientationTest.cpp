// Pictures shown upright by their orientation tag: turned before they are fitted, mirrored
// orientations turned and never flipped, and the size reported as shown.
#include <windows.h>

#include <gdiplus.h>
#include <gtest/gtest.h>

#include "CPictureFiles.h"
#include "CPictureStage.h"
#include "CWindowPixels.h"

namespace {

const COLORREF kRed = RGB(255, 0, 0);
const COLORREF kBlue = RGB(0, 0, 255);

// 64 x 32: the left half red, the right half blue.
COLORREF Halves(int x, int)
{
    return x < 32 ? kRed : kBlue;
}

struct Orientation
{
    UINT16 nTag;
    bool bTurnedQuarter; // shown 32 wide and 64 high
    COLORREF crFirst;    // left half, or top half when turned a quarter
    COLORREF crSecond;
};

class PictureOrientation : public ::testing::TestWithParam<Orientation>
{
protected:
    // The colour in the middle of each half as the 200 x 200 window shows it.
    void ExpectHalves(COLORREF crFirst, COLORREF crSecond, bool bTurnedQuarter)
    {
        const CWindowPixels pixels(stage.Window());
        if (bTurnedQuarter)
        {
            EXPECT_EQ(crFirst, pixels.At(100, 84));   // top half: rows 68-99
            EXPECT_EQ(crSecond, pixels.At(100, 116)); // bottom half: rows 100-131
            EXPECT_EQ(RGB(0, 0, 0), pixels.At(76, 100)) << "a quarter turn leaves the sides black";
            EXPECT_EQ(RGB(0, 0, 0), pixels.At(100, 62)) << "the picture must not grow past its turned height";
        }
        else
        {
            EXPECT_EQ(crFirst, pixels.At(84, 100));
            EXPECT_EQ(crSecond, pixels.At(116, 100));
            EXPECT_EQ(RGB(0, 0, 0), pixels.At(100, 76)) << "upright, the picture is 32 high";
        }
    }

    CPictureFiles files;
    CPictureStage stage; // 200 x 200, no stretching
};

TEST_P(PictureOrientation, TiffIsShownTurnedByItsTag)
{
    const Orientation& o = GetParam();
    ASSERT_EQ(S_OK, stage.Open(files.OrientedTiff(L"o.tif", 64, 32, o.nTag, Halves)));
    ExpectHalves(o.crFirst, o.crSecond, o.bTurnedQuarter);

    DWORD dwWidth = 0, dwHeight = 0;
    BOOL bPicture = FALSE;
    ASSERT_EQ(S_OK, stage.Viewer().GetFileInfo(nullptr, nullptr, nullptr, &dwWidth, &dwHeight, &bPicture));
    EXPECT_EQ(o.bTurnedQuarter ? 32u : 64u, dwWidth);
    EXPECT_EQ(o.bTurnedQuarter ? 64u : 32u, dwHeight);
}

INSTANTIATE_TEST_SUITE_P(Tags, PictureOrientation,
                         ::testing::Values(Orientation{1, false, kRed, kBlue}, Orientation{3, false, kBlue, kRed},
                                           Orientation{6, true, kRed, kBlue}, Orientation{8, true, kBlue, kRed},
                                           Orientation{2, true, kRed, kBlue}, Orientation{5, false, kRed, kBlue},
                                           Orientation{0, false, kRed, kBlue}, Orientation{9, false, kRed, kBlue}),
                         [](const ::testing::TestParamInfo<Orientation>& param) {
                             return "Tag" + std::to_string(param.param.nTag);
                         });

// Whether this platform's GDI+ hands out a JPEG's orientation at all; when it does, the JPEG must
// be turned like the TIFF.
bool PlatformReportsOrientation(const std::wstring& path)
{
    using namespace Gdiplus::DllExports;
    Gdiplus::GpImage* pImage = nullptr;
    if (GdipLoadImageFromFile(path.c_str(), &pImage) != Gdiplus::Ok)
        return false;
    UINT cbItem = 0;
    const bool bReported = GdipGetPropertyItemSize(pImage, 0x0112, &cbItem) == Gdiplus::Ok && cbItem != 0;
    GdipDisposeImage(pImage);
    return bReported;
}

TEST(JpegOrientation, AJpegTaggedSixIsShownTurnedAQuarterClockwise)
{
    CPictureFiles files;
    const std::wstring path = files.OrientedJpeg(L"o.jpg", 64, 32, 6, Halves);
    ASSERT_FALSE(path.empty());
    if (!PlatformReportsOrientation(path))
        GTEST_SKIP() << "this platform's GDI+ does not report a JPEG's EXIF orientation (tag 0x0112), so a "
                        "JPEG is shown as stored here; the tag handling is checked on TIFF pictures";
    CPictureStage stage;
    ASSERT_EQ(S_OK, stage.Open(path));
    const CWindowPixels pixels(stage.Window());
    EXPECT_GT(GetRValue(pixels.At(100, 84)), 200);
    EXPECT_GT(GetBValue(pixels.At(100, 116)), 200);
}

} // namespace
