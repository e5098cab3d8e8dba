// Where the panel's boxes fall at several sizes, and the painted evidence of the boxes.
#include <string>

#include "InfoWndTest.h"

namespace {

const COLORREF NAVY = RGB(0, 0, 0x60);

void ExpectRect(const RECT& expected, const RECT& actual, const char* pszBox)
{
    EXPECT_TRUE(EqualRect(&expected, &actual))
        << pszBox << " is (" << actual.left << ", " << actual.top << ")-(" << actual.right << ", "
        << actual.bottom << ")";
}

struct Layout
{
    RECT rcCoverArt, rcChannel, rcTitle, rcReleaseDate, rcDescript, rcCaption;
};

void ExpectLayout(const Layout& expected, const CInfoWndProbe& info)
{
    ExpectRect(expected.rcCoverArt, info.CoverArtBox(), "cover art");
    ExpectRect(expected.rcChannel, info.ChannelBox(), "channel");
    ExpectRect(expected.rcTitle, info.TitleBox(), "title");
    ExpectRect(expected.rcReleaseDate, info.ReleaseDateBox(), "release date");
    ExpectRect(expected.rcDescript, info.DescriptBox(), "description");
    ExpectRect(expected.rcCaption, info.CaptionBox(), "caption");
}

using InfoWndLayout = InfoWndTest;

TEST_F(InfoWndLayout, BoxesOfA640By480Window)
{
    ExpectLayout({{25, 19, 168, 141}, {183, 19, 615, 50}, {183, 50, 615, 110}, {183, 110, 615, 141},
                  {25, 160, 615, 461}, {0, 383, 640, 480}},
                 *info);
}

// The proportions are single-precision constants: 500 × 0.04f is just under 20, and 800 ×
// 0.04f, 800 × 0.225f, 600 × 0.255f and 600 × 0.2f all land just under whole numbers.
TEST_F(InfoWndLayout, ProportionsTruncateTheSinglePrecisionProducts)
{
    Resize(640, 500);
    ExpectLayout({{25, 19, 168, 146}, {183, 19, 615, 51}, {183, 51, 615, 113}, {183, 113, 615, 146},
                  {25, 165, 615, 481}, {0, 399, 640, 500}},
                 *info);
    Resize(800, 600);
    ExpectLayout({{31, 23, 210, 175}, {229, 23, 769, 62}, {229, 62, 769, 138}, {229, 138, 769, 175},
                  {31, 198, 769, 577}, {0, 479, 800, 600}},
                 *info);
}

TEST_F(InfoWndLayout, AnEmptySizeKeepsTheLastLayout)
{
    Resize(0, 480);
    Resize(640, 0);
    ExpectRect({25, 160, 615, 461}, info->DescriptBox(), "description");
    ExpectRect({0, 383, 640, 480}, info->CaptionBox(), "caption");
}

TEST_F(InfoWndLayout, CaptionStripIsTheBottomFifthUnderBlack)
{
    info->SetGradientBkColor(NAVY, NAVY, FALSE);
    info->SetDisplayMode(INFO_MODE_CAPTION, TRUE);
    info->ShowMediaInfo(TRUE);
    Paint();
    const CWindowPixels pixels = Grab();
    EXPECT_EQ(0, pixels.CountOther({0, 0, 640, 383}, RGB(0, 0, 0)));
    EXPECT_EQ(0, pixels.CountOther({0, 383, 640, 480}, NAVY));
}

TEST_F(InfoWndLayout, DescriptionIsClippedToItsBox)
{
    std::wstring text;
    for (int i = 0; i < 15; ++i)
        text += L"Line of a long description that wraps and overflows its box.\r\n";
    SetField(record.wszDescript, text.c_str());
    ShowPanelOn(NAVY);
    const CWindowPixels pixels = Grab();
    const RECT bounds = pixels.BoundsUnlikeRow({0, 0, 640, 480}, 0);
    // Text from the top of the box down to its last line, cut there and never beyond.
    EXPECT_GE(bounds.left, 25);
    EXPECT_LE(bounds.right, 615);
    EXPECT_GE(bounds.top, 160);
    EXPECT_LT(bounds.top, 160 + 10);
    EXPECT_LE(bounds.bottom, 461);
    EXPECT_GT(bounds.bottom, 461 - 30);
}

} // namespace
