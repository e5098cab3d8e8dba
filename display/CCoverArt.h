// The cover art picture of the information panel, kept as a GDI bitmap at the picture's own
// size and fitted into its box at every paint.
#pragma once

#include <windows.h>

class CCoverArt
{
public:
    CCoverArt() = default;
    CCoverArt(const CCoverArt&) = delete;
    CCoverArt& operator=(const CCoverArt&) = delete;
    ~CCoverArt() { Delete(); }

    // Reads the picture through GDI+ (which must be started) for hWnd's screen. An empty or
    // null path drops the picture. An existing bitmap is drawn into again rather than made
    // anew, even when the new picture's size differs: painting then takes the new size out
    // of the old bitmap.
    bool Load(HWND hWnd, LPCWSTR pwszPath);
    // Keeps the aspect ratio, centred across the box's free dimension; nothing without a picture.
    void Draw(HDC hdc, const RECT& rcBox) const;
    void Delete();

    bool HasPicture() const { return m_hbmCoverArt != nullptr; }

private:
    HBITMAP m_hbmCoverArt = nullptr;
    int m_nArtWidth = 0;
    int m_nArtHeight = 0;
};
