#include "CQtmlTestSupport.h"

#include <objbase.h>

#include <cstdio>
#include <cstring>

#include "../support/CMessagePump.h"

std::string MediaPath(const char* pszName)
{
    std::string path = std::string(TESSALY_QT_MEDIA_DIR) + "/" + pszName;
    for (char& c : path)
    {
        if (c == '/')
            c = '\\';
    }
    return path;
}

CTruth ReadTruth(const char* pszName)
{
    CTruth truth;
    FILE* pFile = std::fopen(MediaPath("truth.txt").c_str(), "r");
    if (!pFile)
        return truth;
    char name[64];
    double dSeconds;
    int nWidth, nHeight;
    while (std::fscanf(pFile, "%63s %lf %d %d", name, &dSeconds, &nWidth, &nHeight) == 4)
    {
        if (std::strcmp(name, pszName) == 0)
            truth = {dSeconds, nWidth, nHeight};
    }
    std::fclose(pFile);
    return truth;
}

OSErr OpenMovie(const std::string& path, Movie* pMovie)
{
    *pMovie = nullptr;
    FSSpec location;
    OSErr err = NativePathNameToFSSpec(path.c_str(), &location, 0);
    if (err != noErr)
        return err;
    int16_t ref = 0;
    err = OpenMovieFile(&location, &ref, fsRdPerm);
    if (err != noErr)
        return err;
    err = NewMovieFromFile(pMovie, ref, nullptr, nullptr, newMovieActive, nullptr);
    CloseMovieFile(ref);
    return err;
}

CPortWindow::CPortWindow()
{
    static const ATOM atom = [] {
        WNDCLASSW wc = {};
        wc.lpfnWndProc = WindowProc;
        wc.hInstance = GetModuleHandleW(nullptr);
        wc.lpszClassName = L"QtmlTestPortWindow";
        wc.hbrBackground = static_cast<HBRUSH>(GetStockObject(BLACK_BRUSH));
        return RegisterClassW(&wc);
    }();
    (void)atom;
    m_hWnd = CreateWindowExW(0, L"QtmlTestPortWindow", L"port", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 20, 20, 320, 240,
                             nullptr, nullptr, GetModuleHandleW(nullptr), nullptr);
    SetWindowLongPtrW(m_hWnd, GWLP_USERDATA, reinterpret_cast<LONG_PTR>(this));
    m_port = CreatePortAssociation(m_hWnd, nullptr, 0);
    MacSetPort(m_port);
}

CPortWindow::~CPortWindow()
{
    m_controller = nullptr;
    DestroyPortAssociation(m_port);
    DestroyWindow(m_hWnd);
}

LRESULT CALLBACK CPortWindow::WindowProc(HWND hWnd, UINT message, WPARAM wParam, LPARAM lParam)
{
    auto* pThis = reinterpret_cast<CPortWindow*>(GetWindowLongPtrW(hWnd, GWLP_USERDATA));
    MovieController mc = pThis ? pThis->m_controller.load() : nullptr;
    if (mc && GetNativeWindowPort(hWnd))
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

void CRecordingFilter::Install(MovieController mc)
{
    MCSetActionFilterWithRefCon(mc, NewMCActionFilterWithRefConUPP(Filter), reinterpret_cast<intptr_t>(this));
}

Boolean CRecordingFilter::Filter(MovieController mc, int16_t action, void* params, intptr_t refCon)
{
    auto* pThis = reinterpret_cast<CRecordingFilter*>(refCon);
    switch (action)
    {
    case mcActionMovieFinished:
        ++pThis->nFinished;
        pThis->dwFinishedThread = GetCurrentThreadId();
        if (pThis->onFinished)
            pThis->onFinished(mc);
        return 0;
    case mcActionMouseDown:
        ++pThis->nMouseDowns;
        pThis->pLastParams = params;
        return pThis->bSwallowClicks ? 1 : 0;
    default:
        return 0;
    }
}

void QtmlTest::SetUp()
{
    ASSERT_TRUE(SUCCEEDED(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)));
    ASSERT_EQ(noErr, InitializeQTML(0));
    ASSERT_EQ(noErr, EnterMovies());
}

void QtmlTest::TearDown()
{
    ExitMovies();
    TerminateQTML();
    CoUninitialize();
}

void QtmlPortTest::Open(const char* pszName)
{
    ASSERT_EQ(noErr, OpenMovie(MediaPath(pszName), &m_movie));
    Rect box;
    GetMovieBox(m_movie, &box);
    m_mc = NewMovieController(m_movie, &box, mcTopLeftMovie | mcNotVisible);
    ASSERT_NE(nullptr, m_mc);
    m_filter.Install(m_mc);
    m_port.SetController(m_mc);
}

void QtmlPortTest::TearDown()
{
    m_port.SetController(nullptr);
    DisposeMovieController(m_mc);
    DisposeMovie(m_movie);
    QtmlTest::TearDown();
}

void PumpFor(DWORD dwMs)
{
    CMessagePump::PumpFor(dwMs);
}

// Checks every 20 ms: the condition may be met on another thread, which wakes no wait here.
bool PumpUntil(const std::function<bool()>& done, DWORD dwTimeoutMs)
{
    const ULONGLONG ullEnd = GetTickCount64() + dwTimeoutMs;
    while (!done())
    {
        if (GetTickCount64() >= ullEnd)
            return false;
        CMessagePump::PumpFor(20);
    }
    return true;
}
