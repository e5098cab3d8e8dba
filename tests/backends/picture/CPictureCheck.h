// What a window shows of a picture: one colour inside the rectangle where the picture should land,
// black everywhere outside it; a seam along its edges is left out, where the scaler blends a
// picture's edge with what lies beyond it over about a source pixel and a half.
#pragma once

#include <gtest/gtest.h>

#include "CWindowPixels.h"

inline ::testing::AssertionResult ShowsPictureAt(HWND hWnd, const RECT& rc, COLORREF cr, int nSeam = 2)
{
    const CWindowPixels pixels(hWnd);
    const RECT rcInside = {rc.left + nSeam, rc.top + nSeam, rc.right - nSeam, rc.bottom - nSeam};
    const RECT rcAll = {0, 0, pixels.Width(), pixels.Height()};
    RECT rcSeam = {rc.left - nSeam, rc.top - nSeam, rc.right + nSeam, rc.bottom + nSeam};
    IntersectRect(&rcSeam, &rcSeam, &rcAll);
    const int nInsideWrong = pixels.CountOther(rcInside, cr);
    const int nOutsideWrong = pixels.CountOther(rcAll, RGB(0, 0, 0)) - pixels.CountOther(rcSeam, RGB(0, 0, 0));
    if (nInsideWrong + nOutsideWrong == 0)
        return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << nInsideWrong << " pixels inside are not 0x" << std::hex << cr << ", " << std::dec << nOutsideWrong << " outside not black";
}
