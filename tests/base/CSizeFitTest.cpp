// Placement of a picture in a window, checked against the placement rules themselves over a
// sweep of shapes, plus the worked examples hosts rely on.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "base/CSizeFit.h"

namespace {

struct Size
{
    uint32_t w;
    uint32_t h;
};

void PrintTo(const Size& s, std::ostream* os)
{
    *os << s.w << "x" << s.h;
}

void ExpectRect(const SizeFitRect& rc, int32_t left, int32_t top, int32_t right, int32_t bottom)
{
    EXPECT_EQ(left, rc.left);
    EXPECT_EQ(top, rc.top);
    EXPECT_EQ(right, rc.right);
    EXPECT_EQ(bottom, rc.bottom);
}

TEST(SizeFitPlace, WorkedExamples)
{
    ExpectRect(CSizeFit::Place(640, 480, 320, 240, false), 160, 120, 480, 360);
    ExpectRect(CSizeFit::Place(640, 480, 320, 240, true), 0, 0, 640, 480);
    ExpectRect(CSizeFit::Place(640, 480, 1280, 720, false), 0, 60, 640, 420);
    ExpectRect(CSizeFit::Place(640, 480, 300, 600, false), 200, 0, 440, 480);
    ExpectRect(CSizeFit::Place(500, 500, 100, 50, true), 0, 125, 500, 375);
}

TEST(SizeFitPlace, ExactFitCountsAsFittingAndFillsTheParent)
{
    ExpectRect(CSizeFit::Place(640, 480, 640, 480, false), 0, 0, 640, 480);
    ExpectRect(CSizeFit::Place(640, 480, 640, 480, true), 0, 0, 640, 480);
}

TEST(SizeFitPlace, OnePixelTooLargeIsShrunkEvenWithoutStretch)
{
    // 641 wide: width fills, height = trunc(480 / (641 / 640)) = 479, centred vertically.
    ExpectRect(CSizeFit::Place(640, 480, 641, 480, false), 0, 0, 640, 479);
    // 481 tall in a landscape window: w > h with height overflowing, so height fills instead:
    // width = trunc(640 / (481 / 480)) = 638, centred horizontally.
    ExpectRect(CSizeFit::Place(640, 480, 640, 481, false), 1, 0, 639, 480);
}

TEST(SizeFitResize, ShrinkDividesByTheRatioWhileStretchMultipliesSoTheyCanDifferByOnePixel)
{
    // 110x66 into 100x100: the exact height is 60. Shrink computes 66 / 1.1 = 59.999...,
    // stretch computes 66 * (100 / 110) = 60.000..., and both truncate.
    uint32_t w = 110, h = 66;
    CSizeFit::Shrink(100, 100, &w, &h);
    EXPECT_EQ(100u, w);
    EXPECT_EQ(59u, h);

    w = 110;
    h = 66;
    CSizeFit::Stretch(100, 100, &w, &h);
    EXPECT_EQ(100u, w);
    EXPECT_EQ(60u, h);
}

TEST(SizeFitResize, ShrinkLeavesASizeThatFitsAlone)
{
    uint32_t w = 320, h = 240;
    CSizeFit::Shrink(640, 480, &w, &h);
    EXPECT_EQ(320u, w);
    EXPECT_EQ(240u, h);
}

TEST(SizeFitResize, StretchAlsoShrinksALargerSource)
{
    uint32_t w = 1280, h = 720;
    CSizeFit::Stretch(640, 480, &w, &h);
    EXPECT_EQ(640u, w);
    EXPECT_EQ(360u, h);
}

TEST(SizeFitResize, SquareSourcesFollowTheParentsShorterSide)
{
    // 1000 / (1000 / 480) comes out just under 480 in doubles, and truncation keeps 479.
    uint32_t w = 1000, h = 1000;
    CSizeFit::Shrink(640, 480, &w, &h);
    EXPECT_EQ(479u, w);
    EXPECT_EQ(480u, h);

    w = 100;
    h = 100;
    CSizeFit::Stretch(480, 640, &w, &h);
    EXPECT_EQ(480u, w);
    EXPECT_EQ(480u, h);
}

TEST(SizeFitPlace, DegenerateSizesStayInsideTheParent)
{
    const Size parents[] = {{0, 0}, {0, 100}, {100, 0}, {640, 480}};
    const Size sources[] = {{0, 0}, {0, 50}, {50, 0}, {10, 10}, {4000000000u, 1}};
    for (const Size& p : parents)
    {
        for (const Size& s : sources)
        {
            for (bool stretch : {false, true})
            {
                SCOPED_TRACE(::testing::PrintToString(p) + " " + ::testing::PrintToString(s));
                const SizeFitRect rc = CSizeFit::Place(p.w, p.h, s.w, s.h, stretch);
                EXPECT_GE(rc.left, 0);
                EXPECT_GE(rc.top, 0);
                EXPECT_LE(rc.left, rc.right);
                EXPECT_LE(rc.top, rc.bottom);
                EXPECT_LE(static_cast<uint32_t>(rc.right), p.w);
                EXPECT_LE(static_cast<uint32_t>(rc.bottom), p.h);
            }
        }
    }
}

// The rules, stated independently of how the code computes them.
void ExpectPlacementRules(Size parent, Size source, bool stretch)
{
    SCOPED_TRACE(::testing::PrintToString(parent) + " source " + ::testing::PrintToString(source) +
                 (stretch ? " stretch" : " no-stretch"));
    const SizeFitRect rc = CSizeFit::Place(parent.w, parent.h, source.w, source.h, stretch);
    const uint32_t rw = static_cast<uint32_t>(rc.right - rc.left);
    const uint32_t rh = static_cast<uint32_t>(rc.bottom - rc.top);
    const bool fits = source.w <= parent.w && source.h <= parent.h;

    if (fits && !stretch)
    {
        EXPECT_EQ(source.w, rw);
        EXPECT_EQ(source.h, rh);
        EXPECT_EQ(static_cast<int32_t>((parent.w - source.w) / 2), rc.left);
        EXPECT_EQ(static_cast<int32_t>((parent.h - source.h) / 2), rc.top);
        return;
    }

    EXPECT_LE(rw, parent.w);
    EXPECT_LE(rh, parent.h);
    if (fits)
    {
        EXPECT_GE(rw, source.w) << "stretching never shrinks";
        EXPECT_GE(rh, source.h) << "stretching never shrinks";
    }
    else
    {
        EXPECT_LE(rw, source.w) << "shrinking never grows";
        EXPECT_LE(rh, source.h) << "shrinking never grows";
    }

    // One side fills the window and the other keeps the aspect ratio to within the pixel that
    // truncation can cost (which may also make both sides fill).
    const bool widthFillsInProportion =
        rw == parent.w && std::fabs(rh - static_cast<double>(source.h) * parent.w / source.w) < 1.0 + 1e-6;
    const bool heightFillsInProportion =
        rh == parent.h && std::fabs(rw - static_cast<double>(source.w) * parent.h / source.h) < 1.0 + 1e-6;
    EXPECT_TRUE(widthFillsInProportion || heightFillsInProportion) << rw << "x" << rh;

    // Only the axis that is not filled is centred.
    if (rw < parent.w)
    {
        EXPECT_EQ(static_cast<int32_t>((parent.w - rw) / 2), rc.left);
        EXPECT_EQ(0, rc.top);
    }
    else
    {
        EXPECT_EQ(0, rc.left);
        EXPECT_EQ(rh < parent.h ? static_cast<int32_t>((parent.h - rh) / 2) : 0, rc.top);
    }
}

TEST(SizeFitPlace, SweepOfShapesFollowsThePlacementRules)
{
    const std::vector<Size> parents = {{640, 480}, {480, 640}, {500, 500}, {1920, 1080}, {333, 777}, {1, 1}};
    for (const Size& p : parents)
    {
        const std::vector<Size> sources = {
            {320, 240}, {240, 320}, {100, 100}, {p.w, p.h}, {p.w + 1, p.h}, {p.w, p.h + 1},
            {p.w + 1, p.h + 1}, {2 * p.w, p.h}, {p.w, 3 * p.h}, {1280, 720}, {300, 600},
            {1, 1}, {p.w > 1 ? p.w - 1 : 1, p.h > 1 ? p.h - 1 : 1}, {7, 1000}, {1000, 7},
            {110, 66}, {4096, 4096}};
        for (const Size& s : sources)
        {
            ExpectPlacementRules(p, s, false);
            ExpectPlacementRules(p, s, true);
        }
    }
}

} // namespace
