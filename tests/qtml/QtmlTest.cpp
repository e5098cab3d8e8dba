// The QuickTime layer on its own, against real DirectShow and GDI+: start-up, what it reads of
// movies and pictures, damaged files and paths, and a controller whose heartbeat is the messages
// of its port window, serviced on the test's thread or on a worker as the engine's audio back-end
// does. Playback to the end, seeking and damaged files are the back-ends' tests'
// (tests/backends/quicktime).
#include <windows.h>

#include <dshow.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "../support/CMessagePump.h"
#include "../support/CProcessCounts.h"
#include "qtml/QTML.h"

namespace {

std::string MediaPath(const char* pszName)
{
    std::string path = std::string(TESSALY_QT_MEDIA_DIR) + "/" + pszName;
    std::replace(path.begin(), path.end(), '/', '\\');
    return path;
}

// Opens a movie as the engine does: FSSpec, movie file, movie, movie file closed.
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

class StartupTest : public ::testing::Test
{
protected:
    void SetUp() override { ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)); }
    void TearDown() override { CoUninitialize(); }
    long response = -1;
};

TEST_F(StartupTest, StartsReportsVersionSevenAndNests)
{
    EXPECT_EQ(gestaltUndefSelectorErr, Gestalt(gestaltQuickTime, &response));
    EXPECT_EQ(0, response);
    EXPECT_EQ(qtmlDllLoadErr, EnterMovies());
    for (int i = 0; i < 2; ++i) // a second user keeps the layer started after the first one leaves
    {
        ASSERT_EQ(noErr, InitializeQTML(0));
        ASSERT_EQ(noErr, EnterMovies());
    }
    ASSERT_EQ(noErr, Gestalt(gestaltQuickTime, &response));
    EXPECT_EQ(0x0700, (response >> 16) & 0xFFFF);
    EXPECT_EQ(gestaltUndefSelectorErr, Gestalt(0x73797376 /* 'sysv' */, &response));
    EXPECT_EQ(0, response);
    ExitMovies(), TerminateQTML();
    EXPECT_EQ(noErr, Gestalt(gestaltQuickTime, &response));
    ExitMovies(), TerminateQTML();
    EXPECT_EQ(gestaltUndefSelectorErr, Gestalt(gestaltQuickTime, &response));
    EXPECT_EQ(qtmlDllLoadErr, EnterMovies());
    TerminateQTML(); // more shut-downs than start-ups leave the count at zero: the next one starts
    ASSERT_EQ(noErr, InitializeQTML(0));
    EXPECT_EQ(noErr, Gestalt(gestaltQuickTime, &response));
    TerminateQTML();
}

// Runs in a ctest entry of its own with Wine's quartz disabled (TESSALY_QTML_NO_DIRECTSHOW set
// there); anywhere else DirectShow works and there is nothing to check.
TEST_F(StartupTest, FailsWithoutDirectShowAndLeavesNothingStarted)
{
    if (!std::getenv("TESSALY_QTML_NO_DIRECTSHOW"))
        GTEST_SKIP() << "needs DirectShow disabled; runs in the qtml_tests.StartupWithoutDirectShow entry";
    void* pGraph = nullptr;
    ASSERT_TRUE(FAILED(CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder, &pGraph)));
    EXPECT_EQ(qtmlDllLoadErr, InitializeQTML(0));
    EXPECT_EQ(qtmlDllLoadErr, EnterMovies());
    EXPECT_EQ(gestaltUndefSelectorErr, Gestalt(gestaltQuickTime, &response));
    EXPECT_EQ(0, response);
    ExitMovies(), TerminateQTML(); // the engine shuts down once for every start-up, failed or not
    EXPECT_EQ(qtmlDllLoadErr, InitializeQTML(0));
    Movie movie = reinterpret_cast<Movie>(1);
    EXPECT_EQ(qtmlDllLoadErr, OpenMovie("tone.m4a", &movie));
    EXPECT_EQ(nullptr, movie);
    TerminateQTML(), TerminateQTML();
    EXPECT_EQ(gestaltUndefSelectorErr, Gestalt(gestaltQuickTime, &response));
}

// COM on the test's thread and the layer started for the length of a case.
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

// An empty, missing or folder "file" never reaches the platform's decoder, whose bridge to
// GStreamer (winegstreamer) stays unloaded; cases before this one in the file open no media.
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

// Scale, length (ffprobe's within a frame when dSeconds < 0), box, visual track, and importer: a
// Targa has no GDI+ decoder (the graph would play it as noise), a PNG named .pict is found by its
// content. A handle that is gone does nothing and says so.
TEST_F(QtmlTest, EveryKindReportsItsScaleLengthBoxAndImporterAndIsGoneOnceDisposed)
{
    struct
    {
        const char* pszName;
        TimeScale scale;
        double dSeconds;
        int nWidth, nHeight;
    } kinds[] = {{"clip.mov", 600, -1, 0, 0},    {"clip.mp4", 600, -1, 0, 0},    {"tone.m4a", 600, -1, 0, 0},
                 {"still.pict", 600, 0, 64, 48}, {"still.tga", 600, 0, 64, 48}, {"anim.gif", 100, 1, 80, 60}};
    for (auto kind : kinds)
    {
        SCOPED_TRACE(kind.pszName);
        const bool bPicture = kind.dSeconds >= 0;
        FILE* pTruth = bPicture ? nullptr : std::fopen(MediaPath("truth.txt").c_str(), "r");
        char name[64] = "";
        while (pTruth && std::strcmp(name, kind.pszName) != 0 &&
               std::fscanf(pTruth, "%63s %lf %d %d", name, &kind.dSeconds, &kind.nWidth, &kind.nHeight) == 4)
            ;
        if (pTruth)
            std::fclose(pTruth);
        ASSERT_GE(kind.dSeconds, 0.0) << "not in truth.txt";
        FSSpec location;
        GraphicsImportComponent importer = reinterpret_cast<GraphicsImportComponent>(1);
        ASSERT_EQ(noErr, NativePathNameToFSSpec(MediaPath(kind.pszName).c_str(), &location, 0));
        EXPECT_EQ(bPicture ? noErr : cantFindHandler, GetGraphicsImporterForFile(&location, &importer));
        EXPECT_EQ(bPicture, importer != nullptr);
        EXPECT_EQ(bPicture ? noErr : paramErr, CloseComponent(importer));
        EXPECT_EQ(paramErr, CloseComponent(importer));

        Movie movie = nullptr;
        ASSERT_EQ(noErr, OpenMovie(kind.pszName, &movie));
        EXPECT_EQ(kind.scale, GetMovieTimeScale(movie));
        EXPECT_NEAR(kind.dSeconds * kind.scale, GetMovieDuration(movie), kind.scale / 25);
        Rect box = {-1, -1, -1, -1};
        GetMovieBox(movie, &box);
        EXPECT_EQ((std::vector<int>{0, 0, kind.nHeight, kind.nWidth}),
                  (std::vector<int>{box.top, box.left, box.bottom, box.right}));
        EXPECT_EQ(kind.nWidth > 0, nullptr != GetMovieIndTrackType(movie, 1, VisualMediaCharacteristic,
                                                                   movieTrackCharacteristic | movieTrackEnabledOnly));
        MovieController mc = NewMovieController(movie, &box, mcTopLeftMovie | mcNotVisible);
        TimeScale scale = 0;
        EXPECT_EQ(0, MCGetCurrentTime(mc, &scale));
        EXPECT_EQ(kind.scale, scale);
        DisposeMovieController(mc);
        DisposeMovie(movie);
        EXPECT_EQ(noErr, GetMoviesError());
        EXPECT_EQ(0, GetMovieDuration(movie));
        EXPECT_EQ(paramErr, GetMoviesError());
        EXPECT_EQ(0, MCGetCurrentTime(mc, &scale));
        EXPECT_EQ(0, scale);
        EXPECT_EQ(paramErr, GetMoviesError());
    }
}

// A top-level window with a port, made the current port. Its window procedure gives every message
// to the controller that is set, through WinEventToMacEvent and MCIsPlayerEvent.
struct CPortWindow
{
    CPortWindow()
    {
        static const ATOM atom = [] {
            WNDCLASSW wc = {0, Proc, 0, 0, nullptr, nullptr, nullptr, static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH)),
                            nullptr, L"QtmlTestPort"};
            return RegisterClassW(&wc);
        }();
        hWnd = CreateWindowExW(0, reinterpret_cast<LPCWSTR>(static_cast<ULONG_PTR>(atom)), L"", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 20, 20, 320, 240, nullptr,
                               nullptr, nullptr, nullptr);
        SetWindowLongPtrW(hWnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
        MacSetPort(port = CreatePortAssociation(hWnd, nullptr, 0));
    }
    ~CPortWindow() { controller = nullptr, DestroyPortAssociation(port), DestroyWindow(hWnd); }

    static LRESULT CALLBACK Proc(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam)
    {
        auto* pThis = reinterpret_cast<CPortWindow*>(GetWindowLongPtrW(hWnd, GWLP_USERDATA));
        if (MovieController mc = pThis ? pThis->controller.load() : nullptr)
        {
            const DWORD dwPos = GetMessagePos();
            MSG msg = {hWnd, message, wParam, lParam, static_cast<DWORD>(GetMessageTime()),
                       {static_cast<short>(LOWORD(dwPos)), static_cast<short>(HIWORD(dwPos))}};
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

// An action filter that records the end of the movie.
struct CRecordingFilter
{
    explicit CRecordingFilter(MovieController mc)
    {
        MCSetActionFilterWithRefCon(mc, NewMCActionFilterWithRefConUPP(Filter), reinterpret_cast<intptr_t>(this));
    }
    static Boolean Filter(MovieController mc, int16_t action, void*, intptr_t refCon)
    {
        auto* pThis = reinterpret_cast<CRecordingFilter*>(refCon);
        if (action == mcActionMovieFinished)
        {
            pThis->dwFinishedThread = GetCurrentThreadId();
            ++pThis->nFinished;
            if (pThis->onFinished)
                pThis->onFinished(mc);
        }
        return 0;
    }

    std::atomic<int> nFinished{0};
    std::atomic<DWORD> dwFinishedThread{0};
    std::function<void(MovieController)> onFinished; // runs on the end, as the engine's filter stops and rewinds
};

// A movie opened in a port window of the test's thread, with a controller.
class PortTest : public QtmlTest
{
protected:
    void Open(const char* pszName)
    {
        ASSERT_EQ(noErr, OpenMovie(pszName, &m_movie));
        Rect box;
        GetMovieBox(m_movie, &box);
        ASSERT_NE(nullptr, m_port.controller = m_mc = NewMovieController(m_movie, &box, mcTopLeftMovie | mcNotVisible));
    }
    void TearDown() override
    {
        m_port.controller = nullptr;
        DisposeMovieController(m_mc);
        DisposeMovie(m_movie);
        QtmlTest::TearDown();
    }
    // The colour at a point after a repaint: the window's own paint erases in black after the
    // controller has seen the update.
    COLORREF Repaint(int x, int y)
    {
        RedrawWindow(m_port.hWnd, nullptr, nullptr, RDW_INVALIDATE | RDW_ERASE | RDW_UPDATENOW);
        CMessagePump::PumpFor(100);
        HDC hdc = GetDC(m_port.hWnd);
        const COLORREF color = GetPixel(hdc, x, y);
        ReleaseDC(m_port.hWnd, hdc);
        return color;
    }
    // Each child of the port window: left, top, right, bottom in the port, and whether visible.
    std::vector<long> Children()
    {
        std::vector<long> placed;
        for (HWND h = GetWindow(m_port.hWnd, GW_CHILD); h; h = GetWindow(h, GW_HWNDNEXT))
        {
            RECT rc;
            GetWindowRect(h, &rc);
            MapWindowPoints(HWND_DESKTOP, m_port.hWnd, reinterpret_cast<POINT*>(&rc), 2);
            placed.insert(placed.end(), {rc.left, rc.top, rc.right, rc.bottom, IsWindowVisible(h)});
        }
        return placed;
    }

    CPortWindow m_port;
    Movie m_movie = nullptr;
    MovieController m_mc = nullptr;
};

TEST_F(PortTest, APictureIsPaintedAtTheMovieBoxAndScalesWithIt)
{
    Open("still.png");
    EXPECT_NE(RGB(0, 0, 0), Repaint(32, 24));
    EXPECT_EQ(RGB(0, 0, 0), Repaint(100, 80));
    const Rect twice = {0, 0, 96, 128};
    SetMovieBox(m_movie, &twice);
    EXPECT_NE(RGB(0, 0, 0), Repaint(100, 80));
    EXPECT_TRUE(Children().empty());
}

TEST_F(PortTest, AVideoWindowIsAChildOfThePortAtTheMovieBoxAndGoesWithTheMovie)
{
    Open("clip.mov");
    EXPECT_EQ((std::vector<long>{0, 0, 160, 120, TRUE}), Children());
    const Rect placed = {10, 20, 70, 100};
    SetMovieBox(m_movie, &placed);
    EXPECT_EQ((std::vector<long>{20, 10, 100, 70, TRUE}), Children());
    m_port.controller = nullptr;
    DisposeMovieController(m_mc);
    DisposeMovie(m_movie);
    CMessagePump::PumpFor(100);
    EXPECT_TRUE(Children().empty());
}

// Checks every 20 ms: the condition may be met on another thread, which wakes no wait here.
bool PumpUntil(const std::function<bool()>& done, DWORD dwTimeoutMs)
{
    for (const ULONGLONG ullEnd = GetTickCount64() + dwTimeoutMs; !done(); CMessagePump::PumpFor(20))
    {
        if (GetTickCount64() >= ullEnd)
            return false;
    }
    return true;
}

// The audio back-end's arrangement: a worker owns the port window and, as the engine's worker,
// dispatches its messages and hands the controller a null event every 10 ms; this thread opens,
// plays and disposes, here while the end's filter runs on the worker.
TEST_F(QtmlTest, DisposeWaitsForTheFilterRunningOnTheThreadThatServicesThePort)
{
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
    ASSERT_TRUE(PumpUntil([&] { return pPort != nullptr; }, 5000));
    MacSetPort(pPort.load()->port);
    Movie movie = nullptr;
    ASSERT_EQ(noErr, OpenMovie("anim.gif", &movie));
    MovieController mc = NewMovieController(movie, nullptr, mcTopLeftMovie | mcNotVisible);
    CRecordingFilter filter(mc);
    std::atomic<bool> bFilterReturned{false};
    filter.onFinished = [&](MovieController) { Sleep(300), StopMovie(movie), bFilterReturned = true; };
    pPort.load()->controller = mc;
    StartMovie(movie);
    EXPECT_TRUE(PumpUntil([&] { return filter.nFinished > 0; }, 4000));
    DisposeMovieController(mc);
    EXPECT_TRUE(bFilterReturned);
    EXPECT_EQ(dwWorker, filter.dwFinishedThread);
    DisposeMovie(movie);
    CMessagePump::PumpFor(100); // the worker still holds the handle and keeps using it
    EventRecord idle = {nullEvent, 0, GetTickCount(), {0, 0}, 0};
    EXPECT_EQ(0, MCIsPlayerEvent(mc, &idle));
    EXPECT_EQ(paramErr, GetMoviesError());
    StartMovie(movie);
    EXPECT_EQ(paramErr, GetMoviesError());
    EXPECT_EQ(1, filter.nFinished);
    pPort.load()->controller = nullptr;
}

// A leak in every cycle of one kind would add 25. Private memory is only printed: Wine's
// GStreamer parser keeps about 350 KiB of every video graph even when the graph never ran. Open
// handles are found by asking about every small value (this platform's handle count and window
// object counts do not move), over pictures only: the platform's filter graphs keep dozens each.
TEST_F(QtmlTest, OpenPlayDisposeCyclesLeaveTheProcessFlat)
{
    auto openHandles = [] {
        long nHandles = 0;
        for (ULONG_PTR value = 4; value < 0x10000; value += 4)
        {
            DWORD dwFlags = 0;
            nHandles += GetHandleInformation(reinterpret_cast<HANDLE>(value), &dwFlags) != FALSE;
        }
        return nHandles;
    };
    CPortWindow port;
    const char* names[] = {"clip.mov", "tone.m4a", "anim.gif", "still.png"};
    auto cycle = [&](int i) {
        Movie movie = nullptr;
        ASSERT_EQ(noErr, OpenMovie(names[i % 4], &movie));
        Rect box;
        GetMovieBox(movie, &box);
        port.controller = NewMovieController(movie, &box, mcTopLeftMovie | mcNotVisible);
        StartMovie(movie);
        CMessagePump::PumpFor(20);
        DisposeMovieController(port.controller.exchange(nullptr));
        DisposeMovie(movie);
    };
    for (int i = 0; i < 4; ++i)
        cycle(i);
    CMessagePump::PumpFor(500);
    const CProcessCounts before = CProcessCounts::Take();
    const long nHandles = openHandles();
    for (int i = 0; i < 50; ++i)
        cycle(2 + i % 2);
    const long nPictureHandles = openHandles() - nHandles;
    for (int i = 0; i < 100; ++i)
        cycle(i);
    CMessagePump::PumpFor(500);
    CProcessCounts growth = CProcessCounts::Take() - before;
    growth.lHandles = nPictureHandles;
    growth.Print("150 cycles, handles over the 50 of pictures");
    EXPECT_LE(growth.lHandles, 8);
    EXPECT_LE(growth.lThreads, 2);
}

} // namespace
