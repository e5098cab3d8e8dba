// The QuickTime layer on its own, against real DirectShow and GDI+: start-up, damaged files and
// paths, painting and the video window in a port, and dispose against a controller serviced on a
// worker. What files report and their playback are checked through the back-ends' tests.
#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "../support/CMessagePump.h"
#include "../support/CWindowRect.h"
#include "qtml/QTML.h"

namespace {

std::string MediaPath(const char* pszName)
{
    std::string path = std::string(TESSALY_QT_MEDIA_DIR) + "/" + pszName;
    return std::replace(path.begin(), path.end(), '/', '\\'), path;
}

// As the engine opens a movie: FSSpec, movie file, movie, movie file closed.
OSErr OpenMovie(const char* pszName, Movie* pMovie)
{
    *pMovie = nullptr;
    FSSpec location;
    int16_t ref = 0;
    OSErr err = NativePathNameToFSSpec(MediaPath(pszName).c_str(), &location, 0);
    if (err == noErr)
        err = OpenMovieFile(&location, &ref, fsRdPerm);
    if (err != noErr)
        return err;
    err = NewMovieFromFile(pMovie, ref, nullptr, nullptr, newMovieActive, nullptr);
    CloseMovieFile(ref);
    return err;
}

TEST(StartupTest, StartsReportsVersionSevenAndNests)
{
    ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    long response = -1;
    EXPECT_EQ(gestaltUndefSelectorErr, Gestalt(gestaltQuickTime, &response));
    EXPECT_EQ(0, response);
    EXPECT_EQ(qtmlDllLoadErr, EnterMovies());
    const std::vector<OSErr> kStarted = {noErr, noErr, noErr, noErr};
    ASSERT_EQ(kStarted, (std::vector<OSErr>{InitializeQTML(0), EnterMovies(), InitializeQTML(0), EnterMovies()}));
    ASSERT_EQ(noErr, Gestalt(gestaltQuickTime, &response));
    EXPECT_EQ(0x0700, (response >> 16) & 0xFFFF);
    EXPECT_EQ(gestaltUndefSelectorErr, Gestalt(0x73797376 /* 'sysv' */, &response));
    EXPECT_EQ(0, response);
    ExitMovies(), TerminateQTML();
    EXPECT_EQ(noErr, Gestalt(gestaltQuickTime, &response)) << "the second user keeps it started";
    ExitMovies(), TerminateQTML();
    EXPECT_EQ(gestaltUndefSelectorErr, Gestalt(gestaltQuickTime, &response));
    EXPECT_EQ(qtmlDllLoadErr, EnterMovies());
    TerminateQTML(); // more shut-downs than start-ups leave the count at zero: the next one starts
    ASSERT_EQ(noErr, InitializeQTML(0));
    EXPECT_EQ(noErr, Gestalt(gestaltQuickTime, &response));
    TerminateQTML();
    CoUninitialize();
}

class QtmlTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
        ASSERT_EQ(noErr, InitializeQTML(0));
        ASSERT_EQ(noErr, EnterMovies());
    }
    void TearDown() override { ExitMovies(), TerminateQTML(), CoUninitialize(); }
};

// The platform's decoder (its bridge to GStreamer) stays unloaded: no case before this one opens media.
TEST_F(QtmlTest, EmptyMissingAndFolderFilesFailBeforeTheDecoderAndOverlongPathsAreRefused)
{
    FSSpec location;
    int16_t ref = -1;
    for (const std::string& path : {MediaPath("absent.mov"), std::string(TESSALY_QT_MEDIA_DIR)})
    {
        ASSERT_EQ(noErr, NativePathNameToFSSpec(path.c_str(), &location, 0));
        EXPECT_EQ(fnfErr, OpenMovieFile(&location, &ref, fsRdPerm));
    }
    for (const char* pszName : {"empty.mov", "empty.m4a"})
    {
        Movie movie = reinterpret_cast<Movie>(1);
        EXPECT_EQ(invalidMovie, OpenMovie(pszName, &movie)) << pszName;
        EXPECT_EQ(nullptr, movie);
    }
    EXPECT_EQ(nullptr, GetModuleHandleW(L"winegstreamer.dll"));
    // The path and its terminating null must fit the record's 260 characters.
    const std::pair<int, OSErr> kLengths[] = {{0, paramErr}, {259, noErr}, {260, paramErr}, {300, paramErr}};
    for (const auto& c : kLengths)
        EXPECT_EQ(c.second, NativePathNameToFSSpec(std::string(c.first, 'a').c_str(), &location, 0)) << c.first;
}

// A window with a port, made the current port, whose procedure hands every message to the
// controller that is set, as the engine's windows do.
struct CPortWindow
{
    CPortWindow()
    {
        WNDCLASSW wc = {0, Proc, 0, 0, nullptr, nullptr, nullptr, static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH)),
                        nullptr, L"QtmlTestPort"};
        RegisterClassW(&wc); // fails harmlessly once registered
        hWnd = CreateWindowExW(0, wc.lpszClassName, L"", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 20, 20, 320, 240, 0, 0, 0, 0);
        SetWindowLongPtrW(hWnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        MacSetPort(port = CreatePortAssociation(hWnd, nullptr, 0));
    }
    ~CPortWindow() { controller = nullptr, DestroyPortAssociation(port), DestroyWindow(hWnd); }

    static LRESULT CALLBACK Proc(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam)
    {
        auto* pThis = reinterpret_cast<CPortWindow*>(GetWindowLongPtrW(hWnd, GWLP_USERDATA));
        if (MovieController mc = pThis ? pThis->controller.load() : nullptr)
        {
            MSG msg = {hWnd, message, wParam, lParam, static_cast<DWORD>(GetMessageTime()), {0, 0}};
            EventRecord event;
            WinEventToMacEvent(&msg, &event);
            MCIsPlayerEvent(mc, &event);
        }
        return DefWindowProcW(hWnd, message, wParam, lParam);
    }

    HWND hWnd = nullptr;
    GrafPtr port = nullptr;
    std::atomic<MovieController> controller{nullptr};
};

// A repaint's colour at a point (the window's own paint erases in black after the controller drew),
// and each child of the port: left, top, right, bottom, and whether visible.
TEST_F(QtmlTest, APictureIsPaintedAtTheMovieBoxAVideoIsAChildWindowThereAndBothFollowTheBox)
{
    CPortWindow port;
    auto children = [&] {
        std::vector<long> placed;
        for (HWND h = GetWindow(port.hWnd, GW_CHILD); h; h = GetWindow(h, GW_HWNDNEXT))
        {
            const RECT rc = CWindowRect::InParent(h); // a child of the port
            placed.insert(placed.end(), {rc.left, rc.top, rc.right, rc.bottom, IsWindowVisible(h)});
        }
        return placed;
    };
    auto repaint = [&](int x, int y) {
        RedrawWindow(port.hWnd, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
        CMessagePump::PumpFor(100);
        HDC hdc = GetDC(port.hWnd);
        const COLORREF color = GetPixel(hdc, x, y);
        ReleaseDC(port.hWnd, hdc);
        return color;
    };
    for (const char* pszName : {"still.png", "clip.mov"})
    {
        Movie movie = nullptr;
        ASSERT_EQ(noErr, OpenMovie(pszName, &movie));
        Rect box;
        GetMovieBox(movie, &box);
        port.controller = NewMovieController(movie, &box, mcTopLeftMovie | mcNotVisible);
        const Rect placed = {10, 20, 106, 148}; // twice the picture's size
        if (std::string(pszName) == "still.png")
        {
            EXPECT_NE(RGB(0, 0, 0), repaint(32, 24));
            EXPECT_EQ(RGB(0, 0, 0), repaint(100, 80));
            SetMovieBox(movie, &placed);
            EXPECT_NE(RGB(0, 0, 0), repaint(100, 80));
            EXPECT_TRUE(children().empty());
        }
        else
        {
            EXPECT_EQ((std::vector<long>{0, 0, 160, 120, TRUE}), children());
            SetMovieBox(movie, &placed);
            EXPECT_EQ((std::vector<long>{20, 10, 148, 106, TRUE}), children());
        }
        DisposeMovieController(port.controller.exchange(nullptr));
        DisposeMovie(movie);
        CMessagePump::PumpFor(100);
        EXPECT_TRUE(children().empty()) << pszName;
    }
}

// The audio back-end's arrangement: a worker owns the port window, dispatches its messages and
// hands the controller a null event every 10 ms; this thread opens, plays and disposes, here
// while the end's filter (which stops the movie, as the engine's does) runs on the worker.
TEST_F(QtmlTest, DisposeWaitsForTheFilterRunningOnTheThreadThatServicesThePort)
{
    static std::atomic<int> nFinished;
    static std::atomic<DWORD> dwFilterReturnedOn; // the filter's thread, once it has returned
    nFinished = 0, dwFilterReturnedOn = 0;
    std::atomic<CPortWindow*> pPort{nullptr};
    std::atomic<bool> bQuit{false};
    std::atomic<DWORD> dwWorker{0};
    std::thread worker([&] {
        CPortWindow port;
        for (dwWorker = GetCurrentThreadId(), pPort = &port; !bQuit; Sleep(10))
        {
            CMessagePump::PumpFor(0);
            EventRecord idle = {nullEvent, 0, GetTickCount(), {0, 0}, 0};
            MCIsPlayerEvent(port.controller, &idle);
        }
    });
    const auto join = [&](std::thread* pThread) { bQuit = true, pThread->join(); };
    const std::unique_ptr<std::thread, decltype(join)> joiner(&worker, join);
    auto pumpUntil = [](auto done) { // the condition is met on another thread, which wakes no wait here
        for (int i = 0; i < 200 && !done(); ++i)
            CMessagePump::PumpFor(20);
        return done();
    };
    ASSERT_TRUE(pumpUntil([&] { return pPort != nullptr; }));
    MacSetPort(pPort.load()->port);
    Movie movie = nullptr;
    ASSERT_EQ(noErr, OpenMovie("anim.gif", &movie));
    MovieController mc = NewMovieController(movie, nullptr, mcTopLeftMovie | mcNotVisible);
    auto filter = [](MovieController, int16_t action, void*, intptr_t refCon) -> Boolean {
        if (action == mcActionMovieFinished && nFinished++ == 0)
            Sleep(300), StopMovie(reinterpret_cast<Movie>(refCon)), dwFilterReturnedOn = GetCurrentThreadId();
        return 0;
    };
    MCSetActionFilterWithRefCon(mc, NewMCActionFilterWithRefConUPP(filter), reinterpret_cast<intptr_t>(movie));
    pPort.load()->controller = mc;
    StartMovie(movie);
    EXPECT_TRUE(pumpUntil([&] { return nFinished > 0; }));
    DisposeMovieController(mc);
    EXPECT_EQ(dwWorker, dwFilterReturnedOn);
    DisposeMovie(movie);
    CMessagePump::PumpFor(100); // the worker still holds the handle and keeps using it
    EventRecord idle = {nullEvent, 0, GetTickCount(), {0, 0}, 0};
    EXPECT_EQ(0, MCIsPlayerEvent(mc, &idle));
    EXPECT_EQ(paramErr, GetMoviesError());
    StartMovie(movie);
    EXPECT_EQ(paramErr, GetMoviesError());
    EXPECT_EQ(1, nFinished);
}

} // namespace
