// What the information panel shows of the host's media information: an open starts from an
// empty record, so the host sends what it knows after the open, as the panel's pixels tell.
#include <windows.h>

#include <gtest/gtest.h>

#include "CWindowPixels.h"
#include "ServerHost.h"

namespace {

using MediaInfoPanel = CServerHost;

TEST_F(MediaInfoPanel, InformationSentBeforeTheOpenIsClearedAndInformationSentAfterItShows)
{
    SetWindowPos(m_parent, HWND_TOPMOST, 0, 0, 0, 0, SWP_NOMOVE | SWP_NOSIZE | SWP_NOACTIVATE | SWP_SHOWWINDOW);
    ASSERT_EQ(S_OK, m_play->SetParentWindowSize(640, 480)) << "a new size brings the panel";
    const HWND hPanel = InfoWindowsOf(m_parent).first;
    ASSERT_NE(nullptr, hPanel);
    ShowWindow(hPanel, SW_SHOWNA); // showing the panel is the host's part; the engine only paints it
    ASSERT_EQ(S_OK, m_play->ShowMediaInfo(TRUE));
    TESSALY_MEDIA_INFO info = {};
    const wchar_t* const texts[] = {L"CHANNEL ONE", L"A TITLE WRITTEN LARGE", L"2026-11-23"};
    short* const fields[] = {info.wszChannelName, info.wszTitle, info.wszReleaseDate};
    for (int f = 0; f < 3; ++f)
        for (int i = 0; texts[f][i]; ++i)
            fields[f][i] = static_cast<short>(texts[f][i]);
    auto panel = [&] {
        UpdateWindow(hPanel);
        return CWindowPixels(hPanel);
    };

    ASSERT_EQ(S_OK, Open("tone.wav"));
    const CWindowPixels empty = panel();
    const RECT rcAll = {0, 0, empty.Width(), empty.Height()};
    ASSERT_EQ(320, empty.Width()) << "the panel covers the parent's client area";
    ASSERT_EQ(S_OK, m_play->CloseFile());
    ASSERT_EQ(S_OK, m_play->SetMediaInfo(&info));
    ASSERT_EQ(S_OK, Open("tone.wav"));
    EXPECT_EQ(0, panel().CountDifferent(empty, rcAll)) << "the open started from an empty record";
    ASSERT_EQ(S_OK, m_play->SetMediaInfo(&info));
    EXPECT_GT(panel().CountDifferent(empty, rcAll), 200) << "channel, title and date are drawn";
    // Closing clears it again: the next file's panel is empty until the host speaks.
    ASSERT_EQ(S_OK, m_play->CloseFile());
    ASSERT_EQ(S_OK, Open("tone.mp3"));
    EXPECT_EQ(0, panel().CountDifferent(empty, rcAll));
}

} // namespace
