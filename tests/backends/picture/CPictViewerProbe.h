// The engine's picture back-end with its window and fade state in view.
#pragma once

#include "backends/picture/CGdiplusPictViewer.h"

class CPictViewerProbe : public CGdiplusPictViewer
{
public:
    HWND PictureWindow() const { return m_hPictWnd; }
    bool Fading() const { return m_bFadePending != 0; }
    bool FadeTimerOn() const { return m_bFadeTimerOn != 0; }
    HBITMAP FadeFrom() const { return m_hbmFadeFrom; }
    HBITMAP FadeTo() const { return m_hbmFadeTo; }
};
