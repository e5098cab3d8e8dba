// The information window's three fonts. They are made together and, when one of them cannot
// be made, thrown away together, so the window either has its whole set or none.
#pragma once

#include <windows.h>

class CInfoFonts
{
public:
    CInfoFonts() = default;
    CInfoFonts(const CInfoFonts&) = delete;
    CInfoFonts& operator=(const CInfoFonts&) = delete;
    ~CInfoFonts() { Delete(); }

    // "times" at 12 (title), 10 (description) and 14 points (channel, semi-bold) for hdc's
    // vertical resolution.
    bool CreateDefault(HDC hdc);
    // The title font as given; the description and channel fonts 0.89 and 1.11 times its height.
    bool CreateFrom(const LOGFONTW& lf);
    // New heights for the fonts that exist, each keeping the sign convention it was made with.
    void Scale(LONG nTitleHeight, LONG nChannelHeight, LONG nDescriptHeight);
    void Delete();

    HFONT Title() const { return m_hFontTitle; }
    HFONT Descript() const { return m_hFontDescript; }
    HFONT Channel() const { return m_hFontChannel; }

private:
    bool CreateSet(const LOGFONTW& lfTitle, const LOGFONTW& lfDescript, const LOGFONTW& lfChannel);
    static void Resize(HFONT* phFont, LONG nHeight);

    HFONT m_hFontTitle = nullptr;
    HFONT m_hFontDescript = nullptr;
    HFONT m_hFontChannel = nullptr;
};
