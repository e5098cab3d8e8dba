// A window shows one colour inside the rectangle where a picture should land, black outside, bar a seam
// along its edges where the scaler blends the picture's edge over about a source pixel and a half.
#pragma once

#include <gtest/gtest.h>
#include "CWindowPixels.h"

inline ::testing::AssertionResult ShowsPictureAt(HWND hWnd, const RECT& rc, COLORREF cr, int nSeam = 2)
{
    const CWindowPixels pixels(hWnd);
    const RECT rcAll = {0, 0, pixels.Width(), pixels.Height()};
    RECT rcSeam = {rc.left - nSeam, rc.top - nSeam, rc.right + nSeam, rc.bottom + nSeam};
    IntersectRect(&rcSeam, &rcSeam, &rcAll);
    const int nInside = pixels.CountOther({rc.left + nSeam, rc.top + nSeam, rc.right - nSeam, rc.bottom - nSeam}, cr);
    const int nOutside = pixels.CountOther(rcAll, RGB(0, 0, 0)) - pixels.CountOther(rcSeam, RGB(0, 0, 0));
    return nInside + nOutside == 0 ? ::testing::AssertionSuccess()
                                   : ::testing::AssertionFailure() << nInside << " pixels inside are not 0x" << std::hex << cr << ", " << std::dec << nOutside << " outside not black";
}
