// The engine's picture back-end with its window, layout and fade state in view.
#pragma once

#include "backends/picture/CGdiplusPictViewer.h"

class CPictViewerProbe : public CGdiplusPictViewer
{
public:
    HWND PictureWindow() const { return m_hPictWnd; }
    const Gdiplus::Rect& Destination() const { return m_curPicture.rcDest; }
    bool HoldsPrevious() const { return m_prevPicture.HasImage(); }
    bool Fading() const { return m_bFadePending != 0; }
    bool FadeTimerOn() const { return m_bFadeTimerOn != 0; }
    HBITMAP FadeFrom() const { return m_hbmFadeFrom; }
    HBITMAP FadeTo() const { return m_hbmFadeTo; }
};
