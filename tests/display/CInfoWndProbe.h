// The information window with a clock the test sets and its layout readable.
#pragma once

#include "display/CInfoWnd.h"

class CInfoWndProbe : public CInfoWnd
{
public:
    DWORD dwNow = 1000000;

    const RECT& CoverArtBox() const { return m_rcCoverArt; }
    const RECT& ChannelBox() const { return m_rcChannel; }
    const RECT& TitleBox() const { return m_rcTitle; }
    const RECT& ReleaseDateBox() const { return m_rcReleaseDate; }
    const RECT& DescriptBox() const { return m_rcDescript; }
    const RECT& CaptionBox() const { return m_rcCaption; }

protected:
    DWORD Now() const override { return dwNow; }
};
