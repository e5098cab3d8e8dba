// What a window shows of a picture: one colour inside the rectangle where the picture should
// land, black everywhere outside it. A seam along its edges is left out: the scaler blends a picture's
// edge with what lies beyond it over about a source pixel and a half.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include "CWindowPixels.h"

inline ::testing::AssertionResult ShowsPictureAt(HWND hWnd, const RECT& rcPicture, COLORREF cr, int nSeam = 2)
{
    const CWindowPixels pixels(hWnd);
    int nInsideWrong = 0, nOutsideWrong = 0;
    for (int y = 0; y < pixels.Height(); ++y)
    {
        for (int x = 0; x < pixels.Width(); ++x)
        {
            const bool bInside = x >= rcPicture.left + nSeam && x < rcPicture.right - nSeam &&
                                 y >= rcPicture.top + nSeam && y < rcPicture.bottom - nSeam;
            const bool bOutside = x < rcPicture.left - nSeam || x >= rcPicture.right + nSeam ||
                                  y < rcPicture.top - nSeam || y >= rcPicture.bottom + nSeam;
            nInsideWrong += bInside && pixels.At(x, y) != cr;
            nOutsideWrong += bOutside && pixels.At(x, y) != RGB(0, 0, 0);
        }
    }
    if (nInsideWrong == 0 && nOutsideWrong == 0)
        return ::testing::AssertionSuccess();
    const RECT rcAll = {0, 0, pixels.Width(), pixels.Height()};
    const RECT rcSeen = pixels.BoundsUnlikeRow(rcAll, 0);
    return ::testing::AssertionFailure() << nInsideWrong << " pixels inside are not 0x" << std::hex << cr << ", "
                                         << std::dec << nOutsideWrong << " outside are not black; centre 0x"
                                         << std::hex << pixels.At(pixels.Width() / 2, pixels.Height() / 2)
                                         << std::dec << "; non-black bounds (" << rcSeen.left << "," << rcSeen.top
                                         << ")-(" << rcSeen.right << "," << rcSeen.bottom << ")";
}
