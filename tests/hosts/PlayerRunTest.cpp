// The player run as a user runs it, through the registered engine: it plays real files one after
// the other as its event log and screenshot show, obeys its keys, and reports the files it cannot
// open one by one while the playlist still comes to its end.
#include <windows.h>
#include <gdiplus.h>

#include <gtest/gtest.h>

#include <cstdlib>

#include "CHostRun.h"
#include "CTempFolder.h"
#include "hosts/common/CUtf8.h"

namespace {

std::string Utf8(const std::wstring& path)
{
    return CUtf8::FromWide(path);
}

TEST(PlayerRun, FilesThatCannotBeOpenedAreReportedTheListEndsAndBadCommandLinesAreRefused)
{
    CTempFolder temp;
    const std::wstring notes = temp.Write(L"notes.txt", "x"), bare = temp.Write(L"noextension", "x");
    const std::wstring shot = temp.Path(L"shot.png");
    const CChildProcess::Result run = CChildProcess::Run(CHostRun::Player(
        L"--log --exit-after-complete --screenshot " + CChildProcess::Quote(shot) + L" " + CChildProcess::Quote(notes) +
        L" " + CChildProcess::Quote(bare)));
    EXPECT_EQ(1, run.exitCode) << run.output << run.errors;
    EXPECT_EQ((std::vector<std::string>{"open " + Utf8(notes), "open " + Utf8(bare)}), CHostRun::Events(run.output, "open"));
    const std::vector<std::string> errors = CHostRun::Events(run.output, "error");
    ASSERT_EQ(2u, errors.size()) << run.output;
    for (const std::string& error : errors)
        EXPECT_EQ(0u, error.find("error 0x8004A000 TESSALY_E_NOTSUPPORTED open ")) << error;
    EXPECT_TRUE(CHostRun::Events(run.output, "play").empty());
    EXPECT_TRUE(CHostRun::Events(run.output, "complete").empty());
    EXPECT_EQ(std::vector<std::string>{"end files=2 errors=2"}, CHostRun::Events(run.output, "end"));
    // Nothing played, so the screenshot came with the end of the list: the window as it was.
    EXPECT_EQ(std::vector<std::string>{"screenshot " + Utf8(shot)}, CHostRun::Events(run.output, "screenshot"));
    EXPECT_NE(INVALID_FILE_ATTRIBUTES, GetFileAttributesW(shot.c_str()));

    const CChildProcess::Result quiet = CChildProcess::Run(CHostRun::Player(L"--exit-after-complete " + CChildProcess::Quote(notes)));
    EXPECT_EQ(1, quiet.exitCode);
    EXPECT_TRUE(quiet.output.empty()) << "printed without --log: " << quiet.output;
    const CChildProcess::Result bad = CChildProcess::Run(CHostRun::Player(L"--screenshot-after soon"));
    EXPECT_EQ(2, bad.exitCode);
    EXPECT_NE(std::string::npos, bad.errors.find("--screenshot-after")) << bad.errors;
}

// The colour of a pixel of a PNG file, read back through GDI+.
COLORREF PixelOf(const std::wstring& path, unsigned x, double dRelativeY)
{
    ULONG_PTR token = 0;
    Gdiplus::GdiplusStartupInput input;
    Gdiplus::GpBitmap* pBitmap = nullptr;
    Gdiplus::ARGB argb = 0xFFFFFFFF;
    if (Gdiplus::GdiplusStartup(&token, &input, nullptr) != Gdiplus::Ok)
        return CLR_INVALID;
    if (Gdiplus::DllExports::GdipCreateBitmapFromFile(path.c_str(), &pBitmap) == Gdiplus::Ok)
    {
        UINT uHeight = 0;
        Gdiplus::DllExports::GdipGetImageHeight(pBitmap, &uHeight);
        const INT y = dRelativeY < 0 ? 1 : static_cast<INT>(uHeight * dRelativeY);
        if (Gdiplus::DllExports::GdipBitmapGetPixel(pBitmap, static_cast<INT>(x), y, &argb) != Gdiplus::Ok)
            argb = 0xFFFFFFFF;
        Gdiplus::DllExports::GdipDisposeImage(pBitmap);
    }
    Gdiplus::GdiplusShutdown(token);
    return argb == 0xFFFFFFFF ? CLR_INVALID : RGB((argb >> 16) & 0xFF, (argb >> 8) & 0xFF, argb & 0xFF);
}

TEST(PlayerRun, PlaysAVideoAtItsSizeThenTwoSoundsInSequenceWithRisingProgressAndTheSoundsPanelOnScreen)
{
    const CChildProcess::Result video = CChildProcess::Run(
        CHostRun::Player(L"--log --exit-after-complete " + CChildProcess::Quote(CHostRun::Media(L"clip.wmv"))));
    EXPECT_EQ(0, video.exitCode) << video.output << video.errors;
    const std::vector<std::string> opened = CHostRun::Events(video.output, "opened");
    ASSERT_EQ(1u, opened.size()) << video.output;
    EXPECT_NE(std::string::npos, opened[0].find("size=320x240 mask=0x2 ")) << opened[0]; // seekable, has a picture
    EXPECT_FALSE(CHostRun::Events(video.output, "progress").empty()) << video.output;
    EXPECT_EQ(1u, CHostRun::Events(video.output, "complete").size()) << video.output;
    EXPECT_TRUE(CHostRun::Events(video.output, "error").empty()) << video.output;

    CTempFolder temp;
    const std::wstring first = temp.CopyIn(CHostRun::Media(L"tone.wav"), L"first.wav");
    const std::wstring second = temp.CopyIn(CHostRun::Media(L"stereo.wma"), L"second.wma");
    const std::wstring shot = temp.Path(L"shot.png");
    // A screenshot time past the end of both files: it is taken as the list ends, while the
    // second file's information panel is still up.
    const CChildProcess::Result run = CChildProcess::Run(CHostRun::Player(
        L"--log --exit-after-complete --screenshot " + CChildProcess::Quote(shot) + L" --screenshot-after 600 " +
        CChildProcess::Quote(first) + L" " + CChildProcess::Quote(second)));
    EXPECT_EQ(0, run.exitCode) << run.output << run.errors;
    EXPECT_TRUE(CHostRun::Events(run.output, "error").empty()) << run.output;
    EXPECT_EQ((std::vector<std::string>{"complete " + Utf8(first), "complete " + Utf8(second)}),
              CHostRun::Events(run.output, "complete"));
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
            const double d = atof(line.c_str() + 9);
            EXPECT_GE(d, dLast - 0.01) << line;
            EXPECT_LE(d, dLengths[nFile] + 0.25) << line;
            EXPECT_NE(std::string::npos, line.find("state=1")) << line;
            dLast = d;
            ++nProgress[nFile];
        }
    }
    EXPECT_GT(nProgress[0], 0u) << run.output;
    EXPECT_GT(nProgress[1], 0u) << run.output;

    // The second file is audio only: the engine's panel covers the video area in the player's own
    // gradient, from its top colour downwards. (Wine shows no frames in a video window another
    // window owns, so the video itself cannot be seen in a screenshot here.)
    const COLORREF top = PixelOf(shot, 2, -1), lower = PixelOf(shot, 2, 0.5);
    ASSERT_NE(CLR_INVALID, top) << run.output;
    EXPECT_TRUE(abs(GetRValue(top) - 16) <= 8 && abs(GetGValue(top) - 20) <= 8 && abs(GetBValue(top) - 48) <= 8)
        << std::hex << top;
    EXPECT_GT(GetRValue(lower), 16 + 8) << std::hex << lower;
    EXPECT_LT(GetRValue(lower), 92) << std::hex << lower;
}

// The player's window once its title says it plays the file of that name; null if it never does.
HWND WaitForTitle(DWORD dwProcessId, const std::wstring& prefix)
{
    struct Search
    {
        DWORD dwProcessId;
        std::wstring prefix;
        HWND hFound;
    } search = {dwProcessId, prefix, nullptr};
    for (int i = 0; i < 6000 && !search.hFound; ++i) // a minute: a guard against a hang
    {
        EnumWindows(
            [](HWND hWnd, LPARAM lParam) -> BOOL {
                auto* p = reinterpret_cast<Search*>(lParam);
                DWORD dwId = 0;
                wchar_t wszTitle[256] = {};
                GetWindowThreadProcessId(hWnd, &dwId);
                if (dwId == p->dwProcessId && GetWindowTextW(hWnd, wszTitle, 256) &&
                    std::wstring(wszTitle).compare(0, p->prefix.size(), p->prefix) == 0)
                    p->hFound = hWnd;
                return !p->hFound;
            },
            reinterpret_cast<LPARAM>(&search));
        if (!search.hFound)
            Sleep(10);
    }
    return search.hFound;
}

TEST(PlayerRun, KeysPauseResumeSeekAndSkipToTheNextFile)
{
    CTempFolder temp;
    const std::wstring first = temp.CopyIn(CHostRun::Media(L"stereo.wma"), L"first.wma");
    const std::wstring second = temp.CopyIn(CHostRun::Media(L"tone.wav"), L"second.wav");
    CChildProcess player(CHostRun::Player(L"--log --exit-after-complete " + CChildProcess::Quote(first) + L" " +
                                          CChildProcess::Quote(second)));
    ASSERT_TRUE(player.Started());
    const HWND hWnd = WaitForTitle(player.Id(), L"first - ");
    ASSERT_NE(nullptr, hWnd) << player.Finish().output;
    // Keys as the keyboard delivers them, wherever the focus is in the player.
    for (WPARAM vk : {VK_SPACE, VK_SPACE, VK_LEFT, VK_NEXT})
        PostMessageW(hWnd, WM_KEYDOWN, vk, 0);
    const CChildProcess::Result run = player.Finish();
    EXPECT_EQ(0, run.exitCode) << run.output << run.errors;
    std::vector<std::string> steps; // leaving out the progress ticks and file details
    for (const std::string& line : CHostRun::Events(run.output, ""))
        if (line.compare(0, 9, "progress ") != 0 && line.compare(0, 7, "opened ") != 0)
            steps.push_back(line);
    EXPECT_EQ((std::vector<std::string>{"open " + Utf8(first), "play", "pause", "resume", "seek 0.000", "open " + Utf8(second),
                                        "play", "complete " + Utf8(second), "end files=2 errors=0"}),
              steps)
        << run.output;
}

} // namespace
