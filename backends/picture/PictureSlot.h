// One picture the viewer holds: the decoded image (a bitmap, or a metafile kept as drawing
// commands) and where it goes in the window.
#pragma once

#include <windows.h>

#include <gdiplus.h>

#include <memory>

struct PictureSlot
{
    std::unique_ptr<Gdiplus::Image> pImage;
    Gdiplus::Rect rcDest;

    bool HasImage() const { return pImage != nullptr; }
    void Empty()
    {
        pImage.reset();
        rcDest = Gdiplus::Rect();
    }
};
