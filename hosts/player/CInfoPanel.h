// The engine's information panel as this player uses it: the player's own colours and font, a
// title, cover art and details for every audio file, shown over the video area while an audio
// file plays and hidden for video. The engine makes the panel as a hidden child of the video
// area when it first learns a new size of it, and leaves showing it to the host.
#pragma once

#include <windows.h>

#include <string>

#include "engine/ComPtr.h"
#include "engine/TessalyContract.h"

class CInfoPanel
{
public:
    void Attach(IPlay* pPlay, HWND hParent);
    void Detach();

    // Tells the engine the video area's new size; at the first one the panel appears.
    void Resize(UINT uWidth, UINT uHeight);

    struct Details
    {
        std::wstring path;
        double dDuration;
        size_t nIndex; // 0-based position in the playlist
        size_t nCount;
    };
    // Shows the panel with the file's details; a file with a picture gets the picture instead.
    HRESULT ShowFor(const Details& details, bool bAudioOnly);
    void Hide();
    HWND Window() const { return m_hPanel; }

    // What the panel says about a file (exposed so that its wording can be checked).
    static TESSALY_MEDIA_INFO Describe(const Details& details);

private:
    HWND FindNewChild(const HWND* phKnown, size_t nKnown) const;
    void ApplyStyle();

    ComPtr<IPlay> m_play;
    ComPtr<IPlay2> m_play2;
    ComPtr<ITextDisplay> m_text;
    HWND m_hParent = nullptr;
    HWND m_hPanel = nullptr;
};
