// Placement of a picture or video inside a window, keeping its aspect ratio. Pure arithmetic
// with no Windows dependency, so it also builds natively for sanitizers and fuzzing.
#pragma once

#include <cstdint>

struct SizeFitRect
{
    int32_t left;
    int32_t top;
    int32_t right;
    int32_t bottom;
};

class CSizeFit
{
public:
    // Shrinks (w, h) into (destWidth, destHeight); a size that already fits is left alone.
    static void Shrink(uint32_t destWidth, uint32_t destHeight, uint32_t* pWidth, uint32_t* pHeight);

    // Grows or shrinks (w, h) until one side meets the destination.
    static void Stretch(uint32_t destWidth, uint32_t destHeight, uint32_t* pWidth, uint32_t* pHeight);

    // Where a source of (width, height) lands in a parent of (parentWidth, parentHeight):
    // shrunk when larger, stretched when smaller and bStretch, otherwise centred at its own size.
    static SizeFitRect Place(uint32_t parentWidth, uint32_t parentHeight, uint32_t width,
                             uint32_t height, bool bStretch);
};
