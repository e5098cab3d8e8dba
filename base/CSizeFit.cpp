#include "base/CSizeFit.h"

#include "base/CSaturate.h"

void CSizeFit::Shrink(uint32_t destWidth, uint32_t destHeight, uint32_t* pWidth, uint32_t* pHeight)
{
    const uint32_t w = *pWidth;
    const uint32_t h = *pHeight;
    if (w <= destWidth && h <= destHeight)
        return;

    const double dW = destWidth, dH = destHeight, dw = w, dh = h;
    uint32_t nw, nh;
    double ratio;
    if (w > h)
    {
        nw = destWidth;
        ratio = dw / dW;
        nh = CSaturate::ToUInt32(dh / ratio);
        if (nh > destHeight && destWidth > destHeight)
        {
            ratio = dh / dH;
            nw = CSaturate::ToUInt32(dw / ratio);
            nh = destHeight;
        }
    }
    else if (w < h)
    {
        nh = destHeight;
        ratio = dh / dH;
        nw = CSaturate::ToUInt32(dw / ratio);
        if (nw > destWidth && destWidth < destHeight)
        {
            nw = destWidth;
            ratio = dw / dW;
            nh = CSaturate::ToUInt32(dh / ratio);
        }
    }
    else if (destWidth > destHeight)
    {
        nh = destHeight;
        ratio = dh / dH;
        nw = CSaturate::ToUInt32(dw / ratio);
    }
    else
    {
        nw = destWidth;
        ratio = dw / dW;
        nh = CSaturate::ToUInt32(dh / ratio);
    }
    *pWidth = nw;
    *pHeight = nh;
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
        nw = CSaturate::ToUInt32(dw * ratio);
        if (nw > destWidth && w > h)
        {
            nw = destWidth;
            ratio = dW / dw;
            nh = CSaturate::ToUInt32(dh * ratio);
        }
    }
    else if (destWidth < destHeight)
    {
        nw = destWidth;
        ratio = dW / dw;
        nh = CSaturate::ToUInt32(dh * ratio);
        if (nh > destHeight && w < h)
        {
            nh = destHeight;
            ratio = dH / dh;
            nw = CSaturate::ToUInt32(dw * ratio);
        }
    }
    else if (w < h)
    {
        nh = destHeight;
        ratio = dH / dh;
        nw = CSaturate::ToUInt32(dw * ratio);
    }
    else
    {
        nw = destWidth;
        ratio = dW / dw;
        nh = CSaturate::ToUInt32(dh * ratio);
    }
    *pWidth = nw;
    *pHeight = nh;
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
            Stretch(parentWidth, parentHeight, &width, &height);
        }
        else
        {
            rc.left = static_cast<int32_t>((parentWidth - width) / 2);
            rc.top = static_cast<int32_t>((parentHeight - height) / 2);
            bCentreOneAxis = false;
        }
    }
    else
    {
        Shrink(parentWidth, parentHeight, &width, &height);
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
