// Pictures as a host meets them through the registered library: what an open says of the file,
// and the picture in the host's window. (How the transport treats a still is the
// dispatcher's and the picture back-end's tests' part.)
#include <windows.h>

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <vector>

#include "CPictureCheck.h"
#include "CPictureFiles.h"
#include "ServerHost.h"

namespace {

const COLORREF kRed = RGB(255, 0, 0);
const RECT kCentred = {68, 84, 132, 116}; // 64 x 32 kept at its size in the middle of 200 x 200

class PicturePlay : public CServerHost
{
protected:
    void SetUp() override
    {
        CServerHost::SetUp();
        WNDCLASSW wc = {};
        wc.lpfnWndProc = DefWindowProcW;
        wc.hInstance = GetModuleHandleW(nullptr);
        wc.lpszClassName = L"Tessaly.Test.PicturePlayHost";
        // White, so that black around a picture can only come from the engine's window.
        wc.hbrBackground = static_cast<HBRUSH>(GetStockObject(WHITE_BRUSH));
        RegisterClassW(&wc);
        // A popup's client area is the whole window. Shown without activation: Wine hands an
        // activated window to the absent window manager and waits two seconds to destroy it.
        m_host = CreateWindowExW(0, wc.lpszClassName, L"host", WS_POPUP, 0, 0, 200, 200, nullptr, nullptr, wc.hInstance, nullptr);
        ASSERT_NE(nullptr, m_host);
        ShowWindow(m_host, SW_SHOWNOACTIVATE);
        ASSERT_EQ(S_OK, m_play->SetParentWindow(HandleOf(m_host)));
    }
    void TearDown() override
    {
        CServerHost::TearDown();
        DestroyWindow(m_host);
    }
    HRESULT OpenAndPaint(const std::wstring& path, TESSALY_FILEINFO* pInfo)
    {
        const HRESULT hr = m_play->OpenFile(const_cast<LPWSTR>(path.c_str()), 0, 0, pInfo);
        RedrawWindow(m_host, nullptr, nullptr, RDW_UPDATENOW | RDW_ALLCHILDREN);
        CMessagePump::PumpFor(50);
        return hr;
    }

    CPictureFiles m_files;
    HWND m_host = nullptr;
};

TEST_F(PicturePlay, AStillOfItsOwnSizeIsShownEvenAfterAFailedOpen)
{
    const std::string note = "A shopping list, not a photograph.\r\n";
    TESSALY_FILEINFO info, pattern;
    memset(&pattern, 0xCD, sizeof(pattern)); // no answer could contain it
    info = pattern;
    ASSERT_EQ(HRESULT_FROM_WIN32(ERROR_INVALID_DATA),
              OpenAndPaint(m_files.Bytes(L"notes.jpg", std::vector<BYTE>(note.begin(), note.end())), &info));
    EXPECT_EQ(0, memcmp(&pattern, &info, sizeof(info))) << "the record is left alone";

    // The back-end that refused the last file takes this one: it must get the window back.
    const std::wstring red = m_files.Encode(L"red.png", 64, 32, [](int, int) { return kRed; });
    ASSERT_EQ(S_OK, OpenAndPaint(red, &info));
    EXPECT_EQ(TESSALY_FILEINFO_PICTURE, info.dwAttributeMask) << "neither seekable nor sound";
    EXPECT_EQ(0.0, info.dDuration);
    EXPECT_EQ(64u, info.dwWidth);
    EXPECT_EQ(32u, info.dwHeight);
    EXPECT_TRUE(ShowsPictureAt(m_host, kCentred, kRed)) << "kept at its size, centred";

    // GetFileInfo answers from the open file only once every back-end of the object has started,
    // which the QuickTime sound back-end never reports: success, with the record untouched.
    TESSALY_FILEINFO held = pattern;
    EXPECT_EQ(S_OK, m_play->GetFileInfo(&held));
    EXPECT_EQ(0, memcmp(&pattern, &held, sizeof(held)));
}

} // namespace
