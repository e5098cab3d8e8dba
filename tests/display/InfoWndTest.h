// A host window at the top left of the screen with the information window laid over its whole
// client area, shown, reading the test's record; the window's clock is the test's, its boxes in view.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "CPictureFiles.h"
#include "CWindowPixels.h"
#include "display/CInfoWnd.h"
#include "tests/support/CMessagePump.h"

const COLORREF BLACK = RGB(0, 0, 0), NAVY = RGB(0, 0, 0x60), RED = RGB(220, 30, 30), BLUE = RGB(30, 60, 230);
const RECT CLIENT = {0, 0, 640, 480};

inline LOGFONTW Font(LPCWSTR pwszFace, LONG nHeight, LONG nWeight = FW_NORMAL)
{
    LOGFONTW lf = {};
    lf.lfHeight = nHeight;
    lf.lfWeight = nWeight;
    lf.lfCharSet = DEFAULT_CHARSET;
    lstrcpyW(lf.lfFaceName, pwszFace);
    return lf;
}

struct CInfoWndProbe : CInfoWnd
{
    using CInfoWnd::m_rcCaption, CInfoWnd::m_rcChannel, CInfoWnd::m_rcCoverArt, CInfoWnd::m_rcDescript,
        CInfoWnd::m_rcReleaseDate, CInfoWnd::m_rcTitle;
    DWORD Now() const override { return dwNow; }
    DWORD dwNow = 1000000;
};

class InfoWndTest : public ::testing::Test
{
protected:
    void SetUp() override { CreateWindows(); }
    void TearDown() override { DestroyWindows(); }
    void CreateWindows()
    {
        hWndHost = CreateWindowExW(0, L"STATIC", L"host", WS_POPUP | WS_CLIPCHILDREN, 0, 0, 640, 480, nullptr, nullptr,
                                   nullptr, nullptr);
        ASSERT_NE(nullptr, hWndHost);
        // Never activated, Wine hands the window to no window manager (whose absence costs two
        // seconds at every destruction).
        ShowWindow(hWndHost, SW_SHOWNOACTIVATE);
        // As the Play object makes it: a hidden child with the default rectangle, then moved.
        info.reset(new CInfoWndProbe);
        info->SetMediaInfoRecord(&record);
        hWnd = info->Create(hWndHost, CWindowBase::rcDefault, nullptr, WS_CHILD | WS_CLIPSIBLINGS | WS_CLIPCHILDREN, 0);
        ASSERT_NE(nullptr, hWnd);
        ASSERT_EQ(hWnd, info->GetHandle());
        MoveWindow(hWnd, 0, 0, 640, 480, TRUE);
        ShowWindow(hWnd, SW_SHOWNA);
        UpdateWindow(hWnd);
    }
    void DestroyWindows()
    {
        info.reset(); // takes its window along
        DestroyWindow(hWndHost);
        CMessagePump::PumpFor(0);
    }
    void Resize(int nWidth, int nHeight)
    {
        SetWindowPos(hWndHost, nullptr, 0, 0, nWidth, nHeight, SWP_NOZORDER | SWP_NOACTIVATE);
        MoveWindow(hWnd, 0, 0, nWidth, nHeight, TRUE);
    }
    void Paint() { RedrawWindow(hWnd, nullptr, nullptr, RDW_INVALIDATE | RDW_UPDATENOW); }
    CWindowPixels Grab() const { return CWindowPixels(hWnd); }
    bool NeedsPaint() const { return GetUpdateRect(hWnd, nullptr, FALSE) != FALSE; }
    static void SetField(short* pField, const std::wstring& text) { lstrcpyW(reinterpret_cast<LPWSTR>(pField), text.c_str()); }
    // The description is longer than its box.
    void FillSampleRecord()
    {
        SetField(record.wszChannelName, L"Radio Tessaly");
        SetField(record.wszTitle, L"Evening Concert: Nocturnes and Preludes");
        SetField(record.wszReleaseDate, L"2024-05-17");
        std::wstring text;
        for (int i = 0; i < 8; ++i)
            text += L"The programme opens with three nocturnes, followed by preludes played without a break.\r\n";
        SetField(record.wszDescript, text);
    }
    void ShowPanelOn(COLORREF crTop, COLORREF crBottom = CLR_INVALID)
    {
        info->SetGradientBkColor(crTop, crBottom == CLR_INVALID ? crTop : crBottom, FALSE);
        ASSERT_EQ(S_OK, info->SetDisplayMode(INFO_MODE_MEDIA, TRUE));
        info->ShowMediaInfo(TRUE);
        Paint();
    }
    // The input waiting in the host's queue, taken out.
    std::vector<MSG> HostMessages() const
    {
        std::vector<MSG> messages(1);
        while (PeekMessageW(&messages.back(), hWndHost, WM_KEYFIRST, WM_MOUSELAST, PM_REMOVE))
            messages.emplace_back();
        messages.pop_back();
        return messages;
    }

    TESSALY_MEDIA_INFO record = {};
    std::unique_ptr<CInfoWndProbe> info;
    HWND hWndHost = nullptr;
    HWND hWnd = nullptr;
    CPictureFiles files;
};
