// The engine's DirectShow back-end with its graph and windows in view, and the metadata editor
// replaceable, so tests can see what it built and give it headers this platform cannot read.
#pragma once

#include <functional>

#include "backends/dshow/CDShowPlayer.h"

class CDShowPlayerProbe : public CDShowPlayer
{
public:
    IGraphBuilder* Graph() const { return m_pGB.Get(); }
    IMediaControl* MediaControl() const { return m_pMC.Get(); }
    IVideoWindow* VideoWindow() const { return m_pVideoWindow.Get(); }
    HWND BackgroundWindow() const { return m_hBackgroundWnd; }
    HWND EventWindow() const { return m_hEventWnd; }
    DWORD PlaybackFlags() const { return m_dwPlaybackFlags; }

    // Unset, the platform's editor answers.
    std::function<HRESULT(IWMMetadataEditor**)> editorFactory;

protected:
    HRESULT CreateMetadataEditor(IWMMetadataEditor** ppEditor) override
    {
        return editorFactory ? editorFactory(ppEditor) : CDShowPlayer::CreateMetadataEditor(ppEditor);
    }
};
