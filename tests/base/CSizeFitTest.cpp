// Placement of a picture in a window: worked examples, then the placement rules themselves
// checked over a sweep of shapes.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "base/CSizeFit.h"

namespace {

struct Size
{
    uint32_t w, h;
};

TEST(SizeFit, WorkedExamples)
{
    const struct
    {
        Size parent, source;
        bool stretch;
        SizeFitRect expected;
    } examples[] = {
        {{640, 480}, {320, 240}, false, {160, 120, 480, 360}},
        {{640, 480}, {320, 240}, true, {0, 0, 640, 480}},
        {{640, 480}, {1280, 720}, false, {0, 60, 640, 420}},
        {{640, 480}, {300, 600}, false, {200, 0, 440, 480}},
        {{500, 500}, {100, 50}, true, {0, 125, 500, 375}},
        {{640, 480}, {640, 480}, false, {0, 0, 640, 480}},
        // One pixel too wide: 480 / (641 / 640) truncates to 479.
        {{640, 480}, {641, 480}, false, {0, 0, 640, 479}},
        // One pixel too tall: the height fills, 640 / (481 / 480) truncates to 638.
        {{640, 480}, {640, 481}, false, {1, 0, 639, 480}},
    };
    for (const auto& e : examples)
    {
        const SizeFitRect rc = CSizeFit::Place(e.parent.w, e.parent.h, e.source.w, e.source.h, e.stretch);
        EXPECT_EQ((std::vector<int32_t>{e.expected.left, e.expected.top, e.expected.right, e.expected.bottom}),
                  (std::vector<int32_t>{rc.left, rc.top, rc.right, rc.bottom}))
            << e.source.w << "x" << e.source.h << " in " << e.parent.w << "x" << e.parent.h << " " << e.stretch;
    }
}

TEST(SizeFit, ShrinkLeavesASizeThatFitsAlone)
{
    // Includes sizes meeting the destination on one side, where a resize could still round.
    const Size cases[][2] = {{{640, 480}, {320, 240}}, {{640, 480}, {640, 480}}, {{100, 200}, {100, 199}},
                             {{200, 100}, {199, 100}}, {{480, 640}, {480, 100}}};
    for (const auto& c : cases)
    {
        uint32_t w = c[1].w, h = c[1].h;
        CSizeFit::Shrink(c[0].w, c[0].h, &w, &h);
        EXPECT_TRUE(w == c[1].w && h == c[1].h) << c[1].w << "x" << c[1].h << " in " << c[0].w << "x" << c[0].h;
    }
}

// The rules, stated independently of how the code computes them.
void ExpectPlacementRules(Size parent, Size source, bool stretch)
{
    SCOPED_TRACE(testing::Message() << source.w << "x" << source.h << " in " << parent.w << "x" << parent.h
                                    << (stretch ? " stretched" : ""));
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
        EXPECT_TRUE(rw >= source.w && rh >= source.h) << "stretching never shrinks";
    else
        EXPECT_TRUE(rw <= source.w && rh <= source.h) << "shrinking never grows";

    // One side fills the window, the other keeps the aspect ratio to within the pixel that
    // truncation can cost.
    const bool widthFills =
        rw == parent.w && std::fabs(rh - static_cast<double>(source.h) * parent.w / source.w) < 1.0 + 1e-6;
    const bool heightFills =
        rh == parent.h && std::fabs(rw - static_cast<double>(source.w) * parent.h / source.h) < 1.0 + 1e-6;
    EXPECT_TRUE(widthFills || heightFills) << rw << "x" << rh;

    // Only the axis that is not filled is centred.
    EXPECT_EQ(rw < parent.w ? static_cast<int32_t>((parent.w - rw) / 2) : 0, rc.left);
    EXPECT_EQ(rw == parent.w && rh < parent.h ? static_cast<int32_t>((parent.h - rh) / 2) : 0, rc.top);
}

TEST(SizeFit, SweepOfShapesFollowsThePlacementRules)
{
    for (const Size& p : std::vector<Size>{{640, 480}, {480, 640}, {500, 500}, {1920, 1080}, {333, 777}, {1, 1}})
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
