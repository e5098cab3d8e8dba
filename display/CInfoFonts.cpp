#include "display/CInfoFonts.h"

namespace {

LOGFONTW WithHeight(const LOGFONTW& lf, LONG nHeight)
{
    LOGFONTW result = lf;
    result.lfHeight = nHeight;
    return result;
}

void DeleteFont(HFONT* phFont)
{
    if (*phFont)
    {
        DeleteObject(*phFont);
        *phFont = nullptr;
    }
}

} // namespace

bool CInfoFonts::CreateDefault(HDC hdc)
{
    LOGFONTW lf = {};
    lf.lfCharSet = DEFAULT_CHARSET;
    lstrcpynW(lf.lfFaceName, L"times", LF_FACESIZE);
    const int nPixelsPerInch = GetDeviceCaps(hdc, LOGPIXELSY);
    auto points = [&](int nPoints, LONG nWeight) {
        LOGFONTW sized = WithHeight(lf, -MulDiv(nPoints, nPixelsPerInch, 72));
        sized.lfWeight = nWeight;
        return sized;
    };
    return CreateSet(points(12, FW_NORMAL), points(10, FW_NORMAL), points(14, FW_SEMIBOLD));
}

bool CInfoFonts::CreateFrom(const LOGFONTW& lf)
{
    return CreateSet(lf, WithHeight(lf, static_cast<LONG>(lf.lfHeight * 0.89)),
                     WithHeight(lf, static_cast<LONG>(lf.lfHeight * 1.11)));
}

bool CInfoFonts::CreateSet(const LOGFONTW& lfTitle, const LOGFONTW& lfDescript,
                           const LOGFONTW& lfChannel)
{
    Delete();
    m_hFontTitle = CreateFontIndirectW(&lfTitle);
    m_hFontDescript = CreateFontIndirectW(&lfDescript);
    m_hFontChannel = CreateFontIndirectW(&lfChannel);
    if (m_hFontTitle && m_hFontDescript && m_hFontChannel)
        return true;
    Delete();
    return false;
}

void CInfoFonts::Scale(LONG nTitleHeight, LONG nChannelHeight, LONG nDescriptHeight)
{
    Resize(&m_hFontTitle, nTitleHeight);
    Resize(&m_hFontChannel, nChannelHeight);
    Resize(&m_hFontDescript, nDescriptHeight);
}

void CInfoFonts::Resize(HFONT* phFont, LONG nHeight)
{
    if (!*phFont)
        return;
    LOGFONTW lf = {};
    GetObjectW(*phFont, sizeof(lf), &lf);
    // A negative height asks for the character height, a positive one for the cell height;
    // the new font asks for the same kind.
    const LONG nSign = lf.lfHeight < 0 ? -1 : 1;
    const LOGFONTW lfNew = WithHeight(lf, nSign * nHeight);
    DeleteFont(phFont);
    *phFont = CreateFontIndirectW(&lfNew);
}

void CInfoFonts::Delete()
{
    DeleteFont(&m_hFontTitle);
    DeleteFont(&m_hFontDescript);
    DeleteFont(&m_hFontChannel);
}
