// What a window shows of a picture: one colour inside the rectangle where the picture should
// land, black everywhere outside it. A seam along its edges is left out: the scaler blends a
// picture's edge with what lies beyond it over about a source pixel and a half.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include "CWindowPixels.h"

inline ::testing::AssertionResult ShowsPictureAt(HWND hWnd, const RECT& rc, COLORREF cr, int nSeam = 2)
{
    const CWindowPixels pixels(hWnd);
    int nInsideWrong = 0, nOutsideWrong = 0;
    for (int y = 0; y < pixels.Height(); ++y)
    {
        for (int x = 0; x < pixels.Width(); ++x)
        {
            const bool bInside = x >= rc.left + nSeam && x < rc.right - nSeam && y >= rc.top + nSeam && y < rc.bottom - nSeam;
            const bool bOutside = x < rc.left - nSeam || x >= rc.right + nSeam || y < rc.top - nSeam || y >= rc.bottom + nSeam;
            nInsideWrong += bInside && pixels.At(x, y) != cr;
            nOutsideWrong += bOutside && pixels.At(x, y) != RGB(0, 0, 0);
        }
    }
    return nInsideWrong + nOutsideWrong == 0 ? ::testing::AssertionSuccess()
                                             : ::testing::AssertionFailure() << nInsideWrong << " pixels inside are not 0x" << std::hex
                                                                             << cr << ", " << std::dec << nOutsideWrong << " outside not black";
}
