// What the layer's tests share: the media files, COM and the layer started around each case, a
// port window that hands every message to the controller as the engine's windows do, and an
// action filter that records what it is told.
#pragma once

#include <windows.h>

#include <gtest/gtest.h>

#include <atomic>
#include <functional>
#include <string>
#include <vector>

#include "qtml/QTML.h"

std::string MediaPath(const char* pszName);

struct CTruth
{
    double dSeconds = 0;
    int nWidth = 0;
    int nHeight = 0;
};
// What ffprobe read from a movie when the media were written.
CTruth ReadTruth(const char* pszName);

// Opens a movie as the engine does: FSSpec, movie file, movie, movie file closed.
OSErr OpenMovie(const std::string& path, Movie* pMovie);

// A top-level window with a port, made the current port. Its window procedure gives every message
// to the controller that is set, through WinEventToMacEvent and MCIsPlayerEvent.
class CPortWindow
{
public:
    CPortWindow();
    ~CPortWindow();
    CPortWindow(const CPortWindow&) = delete;
    CPortWindow& operator=(const CPortWindow&) = delete;

    HWND Window() const { return m_hWnd; }
    GrafPtr Port() const { return m_port; }
    void SetController(MovieController mc) { m_controller = mc; }

private:
    static LRESULT CALLBACK WindowProc(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam);

    HWND m_hWnd = nullptr;
    GrafPtr m_port = nullptr;
    std::atomic<MovieController> m_controller{nullptr};
};

// An action filter that counts the actions it is given.
class CRecordingFilter
{
public:
    void Install(MovieController mc);

    std::atomic<int> nFinished{0};
    std::atomic<int> nMouseDowns{0};
    std::atomic<DWORD> dwFinishedThread{0};
    std::atomic<bool> bSwallowClicks{false};
    const void* pLastParams = nullptr;
    // Runs on the end of the movie, as the engine's own filter stops and rewinds.
    std::function<void(MovieController)> onFinished;

private:
    static Boolean Filter(MovieController mc, int16_t action, void* params, intptr_t refCon);
};

// COM on the test's thread and the layer started for the length of a case.
class QtmlTest : public ::testing::Test
{
protected:
    void SetUp() override;
    void TearDown() override;
};

// A movie opened in a port window of the test's thread, with a controller and a recording filter.
class QtmlPortTest : public QtmlTest
{
protected:
    void Open(const char* pszName);
    void TearDown() override;

    CPortWindow m_port;
    Movie m_movie = nullptr;
    MovieController m_mc = nullptr;
    CRecordingFilter m_filter;
};

void PumpFor(DWORD dwMs);
bool PumpUntil(const std::function<bool()>& done, DWORD dwTimeoutMs);
