#include "dispatch/CSizeFit.h"

#include "engine/Trace.h"

uint32_t CSizeFit::Truncate(double value)
{
    // A zero source size makes the ratio infinite or undefined; clamp instead of converting
    // an out-of-range double, which the language leaves undefined.
    if (!(value > 0.0))
        return 0;
    if (value >= 4294967295.0)
        return 0xFFFFFFFFu;
    return static_cast<uint32_t>(value);
}

void CSizeFit::Shrink(uint32_t destWidth, uint32_t destHeight, uint32_t* pWidth, uint32_t* pHeight)
{
    const uint32_t w = *pWidth;
    const uint32_t h = *pHeight;
    if (w <= destWidth && h <= destHeight)
    {
        TESSALY_TRACE("S:CUtility::FitSrcToDestDimension> Src dimension is smaller than the destination dimension, do nothing...");
        return;
    }

    const double dW = destWidth, dH = destHeight, dw = w, dh = h;
    uint32_t nw, nh;
    double ratio;
    if (w > h)
    {
        nw = destWidth;
        ratio = dw / dW;
        nh = Truncate(dh / ratio);
        if (nh > destHeight && destWidth > destHeight)
        {
            ratio = dh / dH;
            nw = Truncate(dw / ratio);
            nh = destHeight;
        }
    }
    else if (w < h)
    {
        nh = destHeight;
        ratio = dh / dH;
        nw = Truncate(dw / ratio);
        if (nw > destWidth && destWidth < destHeight)
        {
            nw = destWidth;
            ratio = dw / dW;
            nh = Truncate(dh / ratio);
        }
    }
    else if (destWidth > destHeight)
    {
        nh = destHeight;
        ratio = dh / dH;
        nw = Truncate(dw / ratio);
    }
    else
    {
        nw = destWidth;
        ratio = dw / dW;
        nh = Truncate(dh / ratio);
    }
    *pWidth = nw;
    *pHeight = nh;
    TESSALY_TRACE("S:CUtility::FitSrcToDestDimension> ImageWidth = %d, ImageHeight = %d",
                  static_cast<int>(nw), static_cast<int>(nh));
}

void CSizeFit::Stretch(uint32_t destWidth, uint32_t destHeight, uint32_t* pWidth, uint32_t* pHeight)
{
    const uint32_t w = *pWidth;
    const uint32_t h = *pHeight;
    const double dW = destWidth, dH = destHeight, dw = w, dh = h;
    uint32_t nw, nh;
    double ratio;
    if (destWidth > destHeight)
    {
        nh = destHeight;
        ratio = dH / dh;
        nw = Truncate(dw * ratio);
        if (nw > destWidth && w > h)
        {
            nw = destWidth;
            ratio = dW / dw;
            nh = Truncate(dh * ratio);
        }
    }
    else if (destWidth < destHeight)
    {
        nw = destWidth;
        ratio = dW / dw;
        nh = Truncate(dh * ratio);
        if (nh > destHeight && w < h)
        {
            nh = destHeight;
            ratio = dH / dh;
            nw = Truncate(dw * ratio);
        }
    }
    else if (w < h)
    {
        nh = destHeight;
        ratio = dH / dh;
        nw = Truncate(dw * ratio);
    }
    else
    {
        nw = destWidth;
        ratio = dW / dw;
        nh = Truncate(dh * ratio);
    }
    *pWidth = nw;
    *pHeight = nh;
    TESSALY_TRACE("S:CUtility::StretchSrcToDestDimension> ImageWidth = %d, ImageHeight = %d",
                  static_cast<int>(nw), static_cast<int>(nh));
}

SizeFitRect CSizeFit::Place(uint32_t parentWidth, uint32_t parentHeight, uint32_t width,
                            uint32_t height, bool bStretch)
{
    SizeFitRect rc = {0, 0, 0, 0};
    bool bCentreOneAxis = true;
    if (width <= parentWidth && height <= parentHeight)
    {
        if (bStretch)
        {
            TESSALY_TRACE("S:CPlayerBase::FitVideoRect> Source video is smaller than parent window dimension, but caller request to stretch it(maintaining aspect ratio) to the parent window...");
            Stretch(parentWidth, parentHeight, &width, &height);
        }
        else
        {
            TESSALY_TRACE("S:CPlayerBase::FitVideoRect> Source video is smaller than parent window dimension, we just center it in the parent window...");
            rc.left = static_cast<int32_t>((parentWidth - width) / 2);
            rc.top = static_cast<int32_t>((parentHeight - height) / 2);
            bCentreOneAxis = false;
        }
        TESSALY_TRACE("S:CPlayerBase::FitVideoRect> Stretch Window Size : lWidth = %d, lHeight = %d",
                      static_cast<int>(width), static_cast<int>(height));
    }
    else
    {
        TESSALY_TRACE("S:CPlayerBase::FitVideoRect> Source video is larger than parent window dimension, we reduce it(maintaining aspect ratio) and center it in the parent window...");
        Shrink(parentWidth, parentHeight, &width, &height);
        TESSALY_TRACE("S:CPlayerBase::FitVideoRect> Fit Window Size : lWidth = %d, lHeight = %d",
                      static_cast<int>(width), static_cast<int>(height));
    }

    // A resize fills one axis, so only the other one is centred.
    if (bCentreOneAxis)
    {
        if (width < parentWidth)
            rc.left = static_cast<int32_t>((parentWidth - width) / 2);
        else if (height < parentHeight)
            rc.top = static_cast<int32_t>((parentHeight - height) / 2);
    }
    rc.right = static_cast<int32_t>(static_cast<uint32_t>(rc.left) + width);
    rc.bottom = static_cast<int32_t>(static_cast<uint32_t>(rc.top) + height);
    return rc;
}
