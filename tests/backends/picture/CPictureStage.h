// A host window of a given client size with the picture back-end parented to it and shown, the
// input that reaches the host recorded, and the host thread's message loop.
#pragma once

#include <windows.h>

#include <functional>
#include <string>
#include <vector>

#include "CPictViewerProbe.h"

class CPictureStage
{
public:
    struct Input
    {
        UINT uMsg;
        WPARAM wParam;
        LPARAM lParam;
    };

    CPictureStage(int nWidth = 200, int nHeight = 200);
    ~CPictureStage();
    CPictureStage(const CPictureStage&) = delete;
    CPictureStage& operator=(const CPictureStage&) = delete;

    // Opens and lets the window paint what it shows now.
    HRESULT Open(const std::wstring& path, DWORD dwOpenFlags = 0, DWORD dwPlaybackFlags = 0);
    // Resizes the host window and tells the back-end, as the Play object does.
    void Resize(int nWidth, int nHeight);
    bool PumpUntil(const std::function<bool()>& done, DWORD dwTimeoutMs);
    void PumpFor(DWORD dwMs);

    CPictViewerProbe& Viewer() { return m_viewer; }
    HWND Window() const { return m_hWnd; }
    std::vector<Input> inputs;

private:
    static LRESULT CALLBACK WindowProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam);

    HWND m_hWnd = nullptr;
    CPictViewerProbe m_viewer;
};
