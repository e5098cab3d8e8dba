// One picture the viewer holds: the decoded image and where it goes in the window.
#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <memory>

struct PictureSlot
{
    std::unique_ptr<Gdiplus::Bitmap> pImage;
    Gdiplus::Rect rcDest;

    bool HasImage() const { return pImage != nullptr; }
    void Empty()
    {
        pImage.reset();
        rcDest = Gdiplus::Rect();
    }
};
