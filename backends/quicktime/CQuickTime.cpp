#include "backends/quicktime/CQuickTime.h"

#include <shlwapi.h>

#include <cstring>
#include <memory>
#include <new>

#include "base/EngineMessages.h"
#include "engine/TessalyContract.h"
#include "trace/Trace.h"

namespace {

// Anything at or past the largest signed 32-bit time value is an endless or live movie.
constexpr uint32_t kIndefiniteDuration = 0x7FFFFFFF;

// Controller parameters that travel in the pointer's own value.
void* ParamValue(intptr_t value)
{
    return reinterpret_cast<void*>(value);
}

// Truncated toward zero; a double out of range (or not a number) is never converted directly.
int64_t ToTimeValue(double value)
{
    if (!(value == value))
        return 0;
    if (value >= 9.2e18)
        return INT64_MAX;
    if (value <= -9.2e18)
        return INT64_MIN;
    return static_cast<int64_t>(value);
}

} // namespace

CQuickTime::~CQuickTime()
{
    CloseMovie();
    SetPortWindow(nullptr);
}

HRESULT CQuickTime::OpenMovie(LPCSTR pszPath, DWORD)
{
    if (!pszPath || !*pszPath)
        return E_FAIL;

    CloseMovie();
    const size_t cb = std::strlen(pszPath) + 1;
    std::unique_ptr<char[]> pszFile(new (std::nothrow) char[cb]);
    if (!pszFile)
    {
        TESSALY_TRACE("E:CQuickTime::OpenMovie> failed to allocate memory to store new file path");
        return E_OUTOFMEMORY;
    }
    std::memcpy(pszFile.get(), pszPath, cb);

    m_bIsGif = lstrcmpiA(PathFindExtensionA(pszFile.get()), ".GIF") == 0;

    FSSpec location = {};
    if (NativePathNameToFSSpec(pszFile.get(), &location, 0) == noErr)
    {
        GraphicsImportComponent importer = nullptr;
        if (GetGraphicsImporterForFile(&location, &importer) == noErr && importer)
        {
            m_bIsPicture = TRUE;
            CloseComponent(importer);
        }
    }

    // The movie is shown in the port that is current when it is made.
    if (IsWindow(m_hPortWnd))
    {
        if (GrafPtr port = GetNativeWindowPort(m_hPortWnd))
            MacSetPort(port);
    }

    int16_t resRefNum = 0;
    if (OpenMovieFile(&location, &resRefNum, fsRdPerm) != noErr)
    {
        TESSALY_TRACE("E:CQuickTime::OpenMovie> OpenMovieFile failed");
    }
    else
    {
        int16_t resId = 0;
        Movie movie = nullptr;
        if (NewMovieFromFile(&movie, resRefNum, &resId, nullptr, newMovieActive, nullptr) != noErr)
        {
            TESSALY_TRACE("E:CQuickTime::OpenMovie> NewMovieFromFile failed");
            if (movie)
                DisposeMovie(movie);
            movie = nullptr;
        }
        m_movie = movie;
        CloseMovieFile(resRefNum);
    }

    if (!m_movie)
    {
        CloseMovie();
        return E_FAIL;
    }
    if (static_cast<uint32_t>(GetMovieDuration(m_movie)) >= kIndefiniteDuration)
    {
        CloseMovie();
        return TESSALY_E_NOTSUPPORTED;
    }

    CreateController();
    m_bAudioOnly = TRUE;
    if (GetMovieIndTrackType(m_movie, 1, VisualMediaCharacteristic,
                             movieTrackCharacteristic | movieTrackEnabledOnly))
        m_bAudioOnly = FALSE;

    // An animated GIF plays by itself, for ever, from the moment it is shown.
    if (m_bIsPicture && m_bIsGif && m_controller)
    {
        MCDoAction(m_controller, mcActionSetLooping, ParamValue(true));
        MCDoAction(m_controller, mcActionPrerollAndPlay, ParamValue(GetMoviePreferredRate(m_movie)));
    }
    return S_OK;
}

void CQuickTime::CreateController()
{
    Rect box = {};
    GetMovieBox(m_movie, &box);
    box.right = static_cast<int16_t>(box.right - box.left);
    box.bottom = static_cast<int16_t>(box.bottom - box.top);
    box.left = 0;
    box.top = 0;
    SetMovieBox(m_movie, &box);
    m_nMovieWidth = box.right;
    m_nMovieHeight = box.bottom;

    const MovieController controller = NewMovieController(m_movie, &box, mcTopLeftMovie | mcNotVisible);
    if (!controller)
        return;
    long lFlags = 0;
    MCDoAction(controller, mcActionGetFlags, &lFlags);
    MCDoAction(controller, mcActionSetFlags, ParamValue(lFlags | mcFlagsUseWindowPalette));
    m_actionFilter = NewMCActionFilterWithRefConUPP(ActionFilter);
    MCSetActionFilterWithRefCon(controller, m_actionFilter, reinterpret_cast<intptr_t>(this));
    m_controller = controller;
}

Boolean CQuickTime::ActionFilter(MovieController, int16_t action, void*, intptr_t refCon)
{
    switch (action)
    {
    case mcActionMouseDown:
        // Clicks on the movie do nothing: the host decides what a click means.
        return true;
    case mcActionMovieFinished:
        reinterpret_cast<CQuickTime*>(refCon)->DoPlaybackComplete();
        return false;
    default:
        return false;
    }
}

// The controller goes first: its disposal waits for an end-of-movie notice running in another
// thread, which still finds the movie.
void CQuickTime::CloseMovie()
{
    if (m_controller)
    {
        DisposeMovieController(m_controller);
        m_controller = nullptr;
    }
    if (m_actionFilter)
    {
        DisposeMCActionFilterWithRefConUPP(m_actionFilter);
        m_actionFilter = nullptr;
    }
    if (m_movie)
    {
        DisposeMovie(m_movie);
        m_movie = nullptr;
    }
    m_nMovieWidth = 0;
    m_nMovieHeight = 0;
    m_bAudioOnly = FALSE;
    m_bIsPicture = FALSE;
    m_bIsGif = 0;
}

// A null window while a movie is open keeps the association: the movie still draws into it,
// and it goes with the movie.
HRESULT CQuickTime::SetPortWindow(HWND hWnd)
{
    if (hWnd == m_hPortWnd)
        return S_OK;
    if (!hWnd && m_movie)
        return S_OK;
    if (m_hPortWnd)
    {
        if (GrafPtr port = GetNativeWindowPort(m_hPortWnd))
            DestroyPortAssociation(port);
        m_hPortWnd = nullptr;
    }
    if (IsWindow(hWnd))
    {
        CreatePortAssociation(hWnd, nullptr, 0);
        m_hPortWnd = hWnd;
    }
    return S_OK;
}

HRESULT CQuickTime::SetParentWindowSize(DWORD dwWidth, DWORD dwHeight)
{
    if (!m_movie)
    {
        TESSALY_TRACE("E:CQuickTime::SetParentWindowSize> Open a file first...");
        return E_FAIL;
    }
    // The toolbox's rectangles are 16-bit.
    const Rect box = {0, 0, static_cast<int16_t>(dwHeight), static_cast<int16_t>(dwWidth)};
    SetMovieBox(m_movie, &box);
    return S_OK;
}

HRESULT CQuickTime::GetMovieSize(LONG* plWidth, LONG* plHeight) const
{
    *plWidth = m_nMovieWidth;
    *plHeight = m_nMovieHeight;
    return (m_nMovieWidth == 0 || m_nMovieHeight == 0) ? E_FAIL : S_OK;
}

HRESULT CQuickTime::Play()
{
    if (!m_movie)
        return E_FAIL;
    if (m_bIsPicture)
        TESSALY_TRACE("S:CQuickTime::Play> Fake Play on picture file");
    else
        StartMovie(m_movie);
    return S_OK;
}

HRESULT CQuickTime::Pause()
{
    if (!m_movie)
        return E_FAIL;
    if (m_bIsPicture)
        TESSALY_TRACE("S:CQuickTime::Pause> Fake Pause on picture file");
    else
        StopMovie(m_movie);
    return S_OK;
}

HRESULT CQuickTime::Resume()
{
    if (!m_movie)
        return E_FAIL;
    if (m_bIsPicture)
        TESSALY_TRACE("S:CQuickTime::Resume> Fake Resume on picture file");
    else if (m_controller)
        MCDoAction(m_controller, mcActionPrerollAndPlay, ParamValue(GetMoviePreferredRate(m_movie)));
    return S_OK;
}

HRESULT CQuickTime::Stop()
{
    if (!m_movie)
        return E_FAIL;
    if (m_bIsPicture)
    {
        TESSALY_TRACE("S:CQuickTime::Stop> Fake Stop on picture file");
        return S_OK;
    }
    StopMovie(m_movie);
    SetCurTime(0.0);
    return S_OK;
}

HRESULT CQuickTime::SetCurTime(double dSeconds)
{
    if (m_bIsPicture)
    {
        TESSALY_TRACE("E:CQuickTime::SetCurTime> Can't perform this on picture file");
        return E_FAIL;
    }
    if (!m_movie || !m_controller)
        return E_FAIL;
    const TimeScale scale = GetMovieTimeScale(m_movie);
    if (scale == 0)
    {
        TESSALY_TRACE("E:CQuickTime::SetCurTime> Time Scale (Units per sec) is 0, can't seek");
        return E_FAIL;
    }
    OSErr err = GetMoviesError();
    if (err != noErr)
    {
        TESSALY_TRACE("E:CQuickTime::SetCurTime> GetMovieTimeScale failed, err = %d", err);
        return E_FAIL;
    }

    const int64_t value = ToTimeValue(static_cast<double>(scale) * dSeconds);
    TimeRecord time = {};
    time.value.lo = static_cast<uint32_t>(static_cast<uint64_t>(value));
    time.value.hi = static_cast<int32_t>(value >> 32);
    time.scale = scale;
    time.base = nullptr;
    MCDoAction(m_controller, mcActionGoToTime, &time);
    err = GetMoviesError();
    if (err != noErr)
    {
        TESSALY_TRACE("E:CQuickTime::SetCurTime> MCDoAction( mcActionGoToTime ) failed, err = %d", err);
        return E_FAIL;
    }
    return S_OK;
}

HRESULT CQuickTime::GetCurTime(double* pdSeconds) const
{
    *pdSeconds = 0.0;
    if (m_bIsPicture || !m_controller)
        return S_OK;
    TimeScale scale = 0;
    const TimeValue time = MCGetCurrentTime(m_controller.load(), &scale);
    if (scale != 0)
        *pdSeconds = static_cast<double>(time) / static_cast<double>(scale);
    return S_OK;
}

HRESULT CQuickTime::GetFileInfo(BOOL* pbAudioOnly, double* pdDuration, BOOL* pbSeekable,
                                DWORD* pdwWidth, DWORD* pdwHeight, BOOL* pbPicture) const
{
    if (!m_movie)
        return E_FAIL;
    double dDuration = 0.0;
    // A still picture has no length; an animated GIF reports one loop.
    if (!m_bIsPicture || m_bIsGif)
    {
        const TimeScale scale = GetMovieTimeScale(m_movie);
        if (scale != 0)
            dDuration = static_cast<double>(GetMovieDuration(m_movie)) / static_cast<double>(scale);
    }
    *pbAudioOnly = m_bAudioOnly;
    *pdDuration = dDuration;
    *pbSeekable = !m_bIsPicture;
    *pdwWidth = static_cast<DWORD>(m_nMovieWidth);
    *pdwHeight = static_cast<DWORD>(m_nMovieHeight);
    *pbPicture = m_bIsPicture;
    return S_OK;
}

void CQuickTime::OnWindowMessage(HWND hWnd, UINT uMsg, WPARAM wParam, LPARAM lParam)
{
    if (!GetNativeWindowPort(hWnd))
        return;
    const DWORD dwPos = GetMessagePos();
    MSG msg = {};
    msg.hwnd = hWnd;
    msg.message = uMsg;
    msg.wParam = wParam;
    msg.lParam = lParam;
    msg.time = static_cast<DWORD>(GetMessageTime());
    msg.pt.x = static_cast<short>(LOWORD(dwPos));
    msg.pt.y = static_cast<short>(HIWORD(dwPos));
    EventRecord event = {};
    WinEventToMacEvent(&msg, &event);
    // The controller does its periodic work (end of movie, looping, the next frame) only here.
    const MovieController controller = m_controller;
    if (controller && IsWindow(hWnd))
        MCIsPlayerEvent(controller, &event);
}

void CQuickTime::DoPlaybackComplete()
{
    const HWND hNotifyWnd = m_hNotifyWnd;
    if (!hNotifyWnd)
        return;
    TESSALY_TRACE("E:CQuickTime::DoPlaybackComplete>");
    Stop();
    PostMessageW(hNotifyWnd, WM_QT_PLAYBACK_COMPLETE, 0, 0);
}
