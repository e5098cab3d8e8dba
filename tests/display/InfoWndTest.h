// A host window at the top left of the screen with the information window laid over its whole
// client area, shown, with the window's record attached.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "CInfoWndProbe.h"
#include "CWindowPixels.h"

class InfoWndTest : public ::testing::Test
{
protected:
    void SetUp() override { CreateWindows(640, 480); }
    void TearDown() override;

    void CreateWindows(int nWidth, int nHeight);
    void DestroyWindows();
    void Resize(int nWidth, int nHeight);
    // Invalidates without erasing and paints at once.
    void Paint();
    CWindowPixels Grab() const { return CWindowPixels(hWnd); }
    // Whether the window waits for a repaint.
    bool NeedsPaint() const { return GetUpdateRect(hWnd, nullptr, FALSE) != FALSE; }

    void SetField(short* pField, LPCWSTR pwszText);
    void FillSampleRecord();
    // Mode 4 with the information shown, on a gradient of one colour.
    void ShowPanelOn(COLORREF crBackground);
    // Takes the messages posted to the host; the host records what it receives.
    void DrainHostQueue();

    static LRESULT CALLBACK HostProc(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam);

    TESSALY_MEDIA_INFO record = {};
    std::unique_ptr<CInfoWndProbe> info;
    HWND hWndHost = nullptr;
    HWND hWnd = nullptr;
    std::vector<MSG> hostMessages;
};
