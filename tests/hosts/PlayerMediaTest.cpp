// The player plays real files one after the other through the registered engine, as its event
// log and its screenshot show.
#include <windows.h>

#include <gtest/gtest.h>

#include <cstdlib>

#include "CChildProcess.h"
#include "CHostRun.h"
#include "CPngPixels.h"
#include "CTempFolder.h"
#include "HostPaths.h"
#include "hosts/common/CUtf8.h"

namespace {

double Number(const std::string& line, size_t nWord)
{
    size_t nPos = 0;
    for (size_t i = 0; i < nWord; ++i)
        nPos = line.find(' ', nPos) + 1;
    return atof(line.c_str() + nPos);
}

struct TitleSearch
{
    DWORD dwProcessId;
    std::wstring prefix;
    HWND hFound;
};

BOOL CALLBACK FindTitled(HWND hWnd, LPARAM lParam)
{
    auto* pSearch = reinterpret_cast<TitleSearch*>(lParam);
    DWORD dwProcessId = 0;
    GetWindowThreadProcessId(hWnd, &dwProcessId);
    wchar_t wszTitle[256] = {};
    if (dwProcessId == pSearch->dwProcessId && GetWindowTextW(hWnd, wszTitle, 256) &&
        std::wstring(wszTitle).compare(0, pSearch->prefix.size(), pSearch->prefix) == 0)
    {
        pSearch->hFound = hWnd;
        return FALSE;
    }
    return TRUE;
}

// The player's window once its title says it plays the file of that name; null if it never does.
HWND WaitForTitle(const CChildProcess& player, const std::wstring& prefix)
{
    TitleSearch search = {player.Id(), prefix, nullptr};
    for (int i = 0; i < 6000 && !search.hFound; ++i) // a minute: a guard against a hang
    {
        EnumWindows(FindTitled, reinterpret_cast<LPARAM>(&search));
        if (!search.hFound)
            Sleep(10);
    }
    return search.hFound;
}

bool Near(COLORREF a, COLORREF b, int nTolerance)
{
    return abs(GetRValue(a) - GetRValue(b)) <= nTolerance && abs(GetGValue(a) - GetGValue(b)) <= nTolerance &&
           abs(GetBValue(a) - GetBValue(b)) <= nTolerance;
}

TEST(PlayerMedia, PlaysTwoFilesInSequenceWithProgressAndCompletionOfBoth)
{
    CTempFolder temp;
    const std::wstring first = temp.CopyIn(CHostRun::Media(L"tone.wav"), L"first.wav");
    const std::wstring second = temp.CopyIn(CHostRun::Media(L"stereo.wma"), L"second.wma");
    const std::wstring shot = temp.Path(L"shot.png");
    // A screenshot time past the end of both files: it is taken as the list ends, while the
    // second file's information panel is still up.
    const CChildProcess::Result run =
        CChildProcess::Run(CChildProcess::Quote(kPlayerPath) + L" --log --exit-after-complete --screenshot " +
                           CChildProcess::Quote(shot) + L" --screenshot-after 600 " + CChildProcess::Quote(first) +
                           L" " + CChildProcess::Quote(second));
    EXPECT_EQ(0, run.exitCode) << run.output << run.errors;
    EXPECT_TRUE(CHostRun::Events(run.output, "error").empty()) << run.output;

    const std::vector<std::string> completes = CHostRun::Events(run.output, "complete");
    ASSERT_EQ(2u, completes.size()) << run.output;
    EXPECT_EQ("complete " + CUtf8::FromWide(first), completes[0]);
    EXPECT_EQ("complete " + CUtf8::FromWide(second), completes[1]);
    EXPECT_EQ(std::vector<std::string>{"end files=2 errors=0"}, CHostRun::Events(run.output, "end"));

    // Progress for each file, rising within it and never past its length. The last report comes
    // with the end of the stream and may be a millisecond short of the tick before it.
    const double dLengths[] = {1.0, 2.0};
    size_t nFile = 0;
    unsigned nProgress[2] = {};
    double dLast = -1.0;
    for (const std::string& line : CHostRun::Events(run.output, ""))
    {
        if (line.compare(0, 9, "complete ") == 0)
        {
            ++nFile;
            dLast = -1.0;
        }
        else if (line.compare(0, 9, "progress ") == 0 && nFile < 2)
        {
            const double d = Number(line, 1);
            EXPECT_GE(d, dLast - 0.01) << line;
            EXPECT_LE(d, dLengths[nFile] + 0.25) << line;
            EXPECT_NE(std::string::npos, line.find("state=1")) << line;
            dLast = d;
            ++nProgress[nFile];
        }
    }
    EXPECT_GT(nProgress[0], 0u) << run.output;
    EXPECT_GT(nProgress[1], 0u) << run.output;

    // The second file is audio only: the engine's panel covers the video area in the player's
    // own gradient, from its top colour downwards.
    CPngPixels pixels(shot);
    ASSERT_TRUE(pixels.Loaded()) << run.output;
    EXPECT_TRUE(Near(RGB(16, 20, 48), pixels.At(2, 1), 8)) << std::hex << pixels.At(2, 1);
    const COLORREF lower = pixels.At(2, pixels.Height() / 2);
    EXPECT_GT(GetRValue(lower), 16 + 8) << std::hex << lower;
    EXPECT_LT(GetRValue(lower), 92) << std::hex << lower;
}

TEST(PlayerMedia, KeysPauseResumeSeekAndSkipToTheNextFile)
{
    CTempFolder temp;
    const std::wstring first = temp.CopyIn(CHostRun::Media(L"stereo.wma"), L"first.wma");
    const std::wstring second = temp.CopyIn(CHostRun::Media(L"tone.wav"), L"second.wav");
    CChildProcess player(CChildProcess::Quote(kPlayerPath) + L" --log --exit-after-complete " +
                         CChildProcess::Quote(first) + L" " + CChildProcess::Quote(second));
    ASSERT_TRUE(player.Started());
    const HWND hWnd = WaitForTitle(player, L"first - ");
    ASSERT_NE(nullptr, hWnd) << player.Finish().output;
    // Keys as the keyboard delivers them, wherever the focus is in the player.
    for (WPARAM vk : {VK_SPACE, VK_SPACE, VK_LEFT, VK_NEXT})
        PostMessageW(hWnd, WM_KEYDOWN, vk, 0);
    const CChildProcess::Result run = player.Finish();
    EXPECT_EQ(0, run.exitCode) << run.output << run.errors;

    // What the player did, leaving out the progress ticks and file details.
    std::vector<std::string> steps;
    for (const std::string& line : CHostRun::Events(run.output, ""))
        if (line.compare(0, 9, "progress ") != 0 && line.compare(0, 7, "opened ") != 0)
            steps.push_back(line);
    const std::vector<std::string> expected = {
        "open " + CUtf8::FromWide(first), "play", "pause", "resume", "seek 0.000", "open " + CUtf8::FromWide(second),
        "play", "complete " + CUtf8::FromWide(second), "end files=2 errors=0"};
    EXPECT_EQ(expected, steps) << run.output;
}

TEST(PlayerMedia, VideoOpensAtItsSizeAndPlaysToTheEnd)
{
    // Only the log is checked: Wine shows no frames in a video window that another window owns,
    // so a screenshot of the player's video area stays black on this platform.
    const CChildProcess::Result run = CChildProcess::Run(CChildProcess::Quote(kPlayerPath) + L" --log --exit-after-complete " +
                                                 CChildProcess::Quote(CHostRun::Media(L"clip.wmv")));
    EXPECT_EQ(0, run.exitCode) << run.output << run.errors;
    const std::vector<std::string> opened = CHostRun::Events(run.output, "opened");
    ASSERT_EQ(1u, opened.size()) << run.output;
    EXPECT_NE(std::string::npos, opened[0].find("size=320x240 mask=0x2 ")) << opened[0]; // seekable, has a picture
    EXPECT_FALSE(CHostRun::Events(run.output, "progress").empty()) << run.output;
    EXPECT_EQ(1u, CHostRun::Events(run.output, "complete").size()) << run.output;
    EXPECT_TRUE(CHostRun::Events(run.output, "error").empty()) << run.output;
}

} // namespace
