// What the information panel shows of the host's media information: an open starts from an
// empty record, so the host sends what it knows after the open, as the panel's pixels tell.
#include <windows.h>
#include <objbase.h>

#include <gtest/gtest.h>

#include <string>

#include "CTestMedia.h"
#include "CWindowPixels.h"
#include "InfoWindows.h"
#include "engine/ComPtr.h"
#include "engine/TessalyContract.h"

namespace {

class MediaInfoPanel : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
        ASSERT_EQ(S_OK, CoCreateInstance(CLSID_Play, nullptr, CLSCTX_INPROC_SERVER, IID_IPlay2, &m_play));
        m_parent = CreateWindowExW(WS_EX_TOPMOST, L"STATIC", L"host", WS_POPUP | WS_VISIBLE, 0, 0, 320, 240,
                                   nullptr, nullptr, nullptr, nullptr);
        ASSERT_NE(nullptr, m_parent);
        ASSERT_EQ(S_OK, m_play->SetParentWindow(static_cast<LONG>(reinterpret_cast<LONG_PTR>(m_parent))));
        ASSERT_EQ(S_OK, m_play->SetParentWindowSize(640, 480)) << "a new size brings the panel";
        const ChildSearch found = InfoWindowsOf(m_parent);
        ASSERT_EQ(1, found.count);
        m_hPanel = found.hFound;
        // Showing the panel is the host's part; the engine only paints it.
        ShowWindow(m_hPanel, SW_SHOWNA);
        ASSERT_EQ(S_OK, m_play->ShowMediaInfo(TRUE));

        ZeroMemory(&m_info, sizeof(m_info));
        Copy(m_info.wszChannelName, L"CHANNEL ONE");
        Copy(m_info.wszTitle, L"A TITLE WRITTEN LARGE");
        Copy(m_info.wszReleaseDate, L"2026-11-23");
    }
    void TearDown() override
    {
        m_play.Reset();
        DestroyWindow(m_parent);
        CoUninitialize();
    }
    template <size_t N>
    static void Copy(short (&field)[N], const wchar_t* pwsz)
    {
        for (size_t i = 0; i + 1 < N && pwsz[i]; ++i)
            field[i] = static_cast<short>(pwsz[i]);
    }
    HRESULT Open(const char* pszName)
    {
        std::wstring path = CTestMedia::Path(pszName);
        return m_play->OpenFile(&path[0], 0, TESSALY_PLAYBACK_FLAG_STRETCH, nullptr);
    }
    CWindowPixels Panel()
    {
        UpdateWindow(m_hPanel);
        return CWindowPixels(m_hPanel);
    }

    ComPtr<IPlay2> m_play;
    HWND m_parent = nullptr;
    HWND m_hPanel = nullptr;
    TESSALY_MEDIA_INFO m_info;
};

TEST_F(MediaInfoPanel, InformationSentBeforeTheOpenIsClearedAndInformationSentAfterItShows)
{
    ASSERT_EQ(S_OK, Open("tone.wav"));
    const CWindowPixels empty = Panel();
    const RECT rcAll = {0, 0, empty.Width(), empty.Height()};
    ASSERT_EQ(320, empty.Width()) << "the panel covers the parent's client area";
    ASSERT_EQ(S_OK, m_play->CloseFile());

    ASSERT_EQ(S_OK, m_play->SetMediaInfo(&m_info));
    ASSERT_EQ(S_OK, Open("tone.wav"));
    EXPECT_EQ(0, Panel().CountDifferent(empty, rcAll)) << "the open started from an empty record";

    ASSERT_EQ(S_OK, m_play->SetMediaInfo(&m_info));
    const int nTextPixels = Panel().CountDifferent(empty, rcAll);
    EXPECT_GT(nTextPixels, 200) << "channel, title and date are drawn";

    // Closing clears it again: the next file's panel is empty until the host speaks.
    ASSERT_EQ(S_OK, m_play->CloseFile());
    ASSERT_EQ(S_OK, Open("tone.mp3"));
    EXPECT_EQ(0, Panel().CountDifferent(empty, rcAll));
}

} // namespace
