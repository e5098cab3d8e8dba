#include "qtml/CGraphMovie.h"

#include "qtml/CIsoBoxes.h"
#include "qtml/CPortAssociation.h"

using Microsoft::WRL::ComPtr;

namespace {

constexpr LONGLONG kUnitsPerSecond = 10000000;
// A graph whose end notice never comes is taken as finished this long after its length.
constexpr LONGLONG kLateEndUnits = kUnitsPerSecond;

LONGLONG ToUnits(TimeValue time)
{
    return static_cast<LONGLONG>(time) * kUnitsPerSecond / CGraphMovie::kTimeScale;
}

TimeValue ToTime(LONGLONG units)
{
    const LONGLONG time = (units * CGraphMovie::kTimeScale + kUnitsPerSecond / 2) / kUnitsPerSecond;
    return time >= 0x7FFFFFFF ? 0x7FFFFFFF : static_cast<TimeValue>(time);
}

// The graph's control interfaces carry no compiler-known identifier in mingw-w64's headers.
template <class Interface>
HRESULT QueryTo(IUnknown* pFrom, REFIID iid, ComPtr<Interface>& to)
{
    return pFrom->QueryInterface(iid, reinterpret_cast<void**>(to.ReleaseAndGetAddressOf()));
}

OSErr ErrorOfRender(HRESULT hr)
{
    switch (hr)
    {
    case E_OUTOFMEMORY:
        return memFullErr;
    case HRESULT_FROM_WIN32(ERROR_FILE_NOT_FOUND):
    case HRESULT_FROM_WIN32(ERROR_PATH_NOT_FOUND):
        return fnfErr;
    default:
        return invalidMovie;
    }
}

// False for an ISO media file that breaks off before its movie box, on which the platform's parser
// would wait forever; other files are left to the graph.
bool CanRender(const std::wstring& path)
{
    HANDLE hFile = CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING,
                               FILE_ATTRIBUTE_NORMAL, nullptr);
    if (hFile == INVALID_HANDLE_VALUE)
        return true; // the graph reports why
    LARGE_INTEGER liSize = {};
    GetFileSizeEx(hFile, &liSize);
    auto read = [hFile](std::uint64_t offset, unsigned char* pBuffer, std::size_t cb) {
        OVERLAPPED at = {};
        at.Offset = static_cast<DWORD>(offset);
        at.OffsetHigh = static_cast<DWORD>(offset >> 32);
        DWORD cbRead = 0;
        return ReadFile(hFile, pBuffer, static_cast<DWORD>(cb), &cbRead, &at) && cbRead == cb;
    };
    unsigned char first[8];
    const std::uint64_t cbFile = static_cast<std::uint64_t>(liSize.QuadPart);
    const bool bRenderable = !read(0, first, sizeof(first)) || !CIsoBoxes::LooksLikeIsoFile(first) ||
                             CIsoBoxes::HasCompleteMovieBox(read, cbFile);
    CloseHandle(hFile);
    return bRenderable;
}

} // namespace

CGraphMovie::CGraphMovie(HWND hPortWnd)
    : CMovie(hPortWnd)
{
}

OSErr CGraphMovie::Create(const std::string& path, HWND hPortWnd, std::shared_ptr<CMovie>* pMovie)
{
    std::shared_ptr<CGraphMovie> movie(new CGraphMovie(hPortWnd));
    const OSErr err = movie->Build(path);
    if (err != noErr)
    {
        movie->Close();
        return err;
    }
    *pMovie = std::move(movie);
    return noErr;
}

OSErr CGraphMovie::Build(const std::string& path)
{
    const int cch = MultiByteToWideChar(CP_ACP, 0, path.c_str(), -1, nullptr, 0);
    if (cch <= 0)
        return paramErr;
    std::wstring widePath(static_cast<size_t>(cch), L'\0');
    MultiByteToWideChar(CP_ACP, 0, path.c_str(), -1, &widePath[0], cch);

    if (!CanRender(widePath))
        return invalidMovie;
    HRESULT hr = CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder,
                                  reinterpret_cast<void**>(m_pGraph.ReleaseAndGetAddressOf()));
    if (FAILED(hr))
        return qtmlDllLoadErr;
    hr = m_pGraph->RenderFile(widePath.c_str(), nullptr);
    if (FAILED(hr))
        return ErrorOfRender(hr);
    if (FAILED(QueryTo(m_pGraph.Get(), IID_IMediaControl, m_pControl)) ||
        FAILED(QueryTo(m_pGraph.Get(), IID_IMediaSeeking, m_pSeeking)) ||
        FAILED(QueryTo(m_pGraph.Get(), IID_IMediaEventEx, m_pEvents)))
        return invalidMovie;
    if (FAILED(m_pSeeking->GetDuration(&m_llDuration)) || m_llDuration < 0)
        m_llDuration = 0;

    Rect box = {0, 0, 0, 0};
    ComPtr<IBasicVideo> pBasicVideo;
    long width = 0, height = 0;
    if (SUCCEEDED(QueryTo(m_pGraph.Get(), IID_IBasicVideo, pBasicVideo)) &&
        SUCCEEDED(pBasicVideo->GetVideoSize(&width, &height)) && width > 0 && height > 0 &&
        SUCCEEDED(QueryTo(m_pGraph.Get(), IID_IVideoWindow, m_pVideoWindow)))
    {
        box.bottom = static_cast<int16_t>(height);
        box.right = static_cast<int16_t>(width);
    }
    SetInitialBox(box);
    if (m_pVideoWindow)
    {
        UseSystemClock();
        ShowVideoInPort();
    }
    if (PortWindow())
        m_pEvents->SetNotifyWindow(reinterpret_cast<OAHWND>(PortWindow()), CPortAssociation::ServiceMessage(), 0);
    return noErr;
}

// Under Wine a video renderer timed by the audio renderer's clock leaves one thread (and its
// buffers) behind for every graph that ran; timed by a system clock, nothing is left. Any clock
// serves DirectShow: the audio renderer follows a clock that is not its own.
void CGraphMovie::UseSystemClock()
{
    ComPtr<IReferenceClock> pClock;
    ComPtr<IMediaFilter> pMediaFilter;
    if (SUCCEEDED(CoCreateInstance(CLSID_SystemClock, nullptr, CLSCTX_INPROC_SERVER, IID_IReferenceClock,
                                   reinterpret_cast<void**>(pClock.GetAddressOf()))) &&
        SUCCEEDED(QueryTo(m_pGraph.Get(), IID_IMediaFilter, pMediaFilter)))
        pMediaFilter->SetSyncSource(pClock.Get());
}

// Without a port the video window must not pop up as a window of its own when the movie runs.
void CGraphMovie::ShowVideoInPort()
{
    const HWND hPortWnd = PortWindow();
    m_pVideoWindow->put_AutoShow(OAFALSE);
    if (!hPortWnd)
    {
        m_pVideoWindow->put_Visible(OAFALSE);
        return;
    }
    m_pVideoWindow->put_Owner(reinterpret_cast<OAHWND>(hPortWnd));
    m_pVideoWindow->put_WindowStyle(WS_CHILD | WS_CLIPSIBLINGS);
    m_pVideoWindow->put_MessageDrain(reinterpret_cast<OAHWND>(hPortWnd));
    OnPlace(CurrentBox(), CurrentBox());
    m_pVideoWindow->put_Visible(OATRUE);
}

TimeValue CGraphMovie::OnDuration()
{
    return m_llDuration > 0 ? ToTime(m_llDuration) : 0x7FFFFFFF;
}

void CGraphMovie::OnPlace(const Rect&, const Rect& newBox)
{
    if (m_pVideoWindow && PortWindow())
        m_pVideoWindow->SetWindowPosition(newBox.left, newBox.top, newBox.right - newBox.left,
                                          newBox.bottom - newBox.top);
}

void CGraphMovie::OnStart()
{
    if (m_bRunning)
        return;
    DiscardEvents();
    m_bRunning = SUCCEEDED(m_pControl->Run());
}

void CGraphMovie::OnStop()
{
    if (m_bRunning)
        StopAt(Position());
}

OSErr CGraphMovie::OnGoTo(TimeValue time)
{
    LONGLONG position = ToUnits(time);
    if (m_llDuration > 0 && position > m_llDuration)
        position = m_llDuration;
    const bool bWasRunning = m_bRunning;
    if (bWasRunning)
        m_pControl->Stop();
    HRESULT hr = m_pSeeking->SetPositions(&position, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning);
    if (bWasRunning)
    {
        DiscardEvents();
        m_bRunning = SUCCEEDED(m_pControl->Run());
    }
    return SUCCEEDED(hr) ? noErr : invalidMovie;
}

TimeValue CGraphMovie::OnCurrentTime()
{
    return ToTime(Position());
}

LONGLONG CGraphMovie::Position()
{
    LONGLONG position = 0;
    if (FAILED(m_pSeeking->GetCurrentPosition(&position)) || position < 0)
        return 0;
    return m_llDuration > 0 && position > m_llDuration ? m_llDuration : position;
}

void CGraphMovie::StopAt(LONGLONG position)
{
    m_pControl->Stop();
    m_pSeeking->SetPositions(&position, AM_SEEKING_AbsolutePositioning, nullptr, AM_SEEKING_NoPositioning);
    m_bRunning = false;
    DiscardEvents();
}

void CGraphMovie::DiscardEvents()
{
    long code = 0;
    LONG_PTR param1 = 0, param2 = 0;
    while (m_pEvents->GetEvent(&code, &param1, &param2, 0) == S_OK)
        m_pEvents->FreeEventParams(code, param1, param2);
}

bool CGraphMovie::OnService()
{
    bool bEnded = false;
    long code = 0;
    LONG_PTR param1 = 0, param2 = 0;
    while (m_pEvents->GetEvent(&code, &param1, &param2, 0) == S_OK)
    {
        m_pEvents->FreeEventParams(code, param1, param2);
        bEnded |= code == EC_COMPLETE || code == EC_ERRORABORT || code == EC_USERABORT;
    }
    if (!m_bRunning)
        return false;
    if (!bEnded && m_llDuration > 0)
    {
        LONGLONG position = 0;
        bEnded = SUCCEEDED(m_pSeeking->GetCurrentPosition(&position)) && position >= m_llDuration + kLateEndUnits;
    }
    if (!bEnded)
        return false;
    if (IsLooping() && m_llDuration > 0)
    {
        StopAt(0);
        m_bRunning = SUCCEEDED(m_pControl->Run());
        return false;
    }
    StopAt(m_llDuration);
    return true;
}

// The order matters to the video window: it must leave the port window before the graph goes.
void CGraphMovie::OnClose()
{
    if (m_pControl)
        m_pControl->Stop();
    m_bRunning = false;
    if (m_pEvents)
        m_pEvents->SetNotifyWindow(0, 0, 0);
    if (m_pVideoWindow)
    {
        m_pVideoWindow->put_Visible(OAFALSE);
        m_pVideoWindow->put_MessageDrain(0);
        m_pVideoWindow->put_Owner(0);
    }
    m_pVideoWindow.Reset();
    m_pEvents.Reset();
    m_pSeeking.Reset();
    m_pControl.Reset();
    m_pGraph.Reset();
}
