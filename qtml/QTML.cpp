// The toolbox's C entry points: each finds its objects by handle and hands the work to them.
// No C++ exception leaves these functions.
#include "qtml/QTML.h"

#include <windows.h>

#include <cstring>
#include <new>

#include "qtml/CGraphMovie.h"
#include "qtml/CMovieController.h"
#include "qtml/CPicture.h"
#include "qtml/CPictureMovie.h"
#include "qtml/CPortAssociation.h"
#include "qtml/CQtmlRegistry.h"
#include "qtml/CQtmlRuntime.h"

namespace {

CQtmlRegistry& Registry()
{
    return CQtmlRegistry::Instance();
}

OSErr ErrorOfException()
{
    try
    {
        throw;
    }
    catch (const std::bad_alloc&)
    {
        return memFullErr;
    }
    catch (...)
    {
        return paramErr;
    }
}

template <class Result, class Body>
Result Guarded(Result onException, Body body) noexcept
{
    try
    {
        return body();
    }
    catch (...)
    {
        CQtmlRuntime::SetMoviesError(ErrorOfException());
        return onException;
    }
}

template <class Body>
void GuardedVoid(Body body) noexcept
{
    try
    {
        body();
    }
    catch (...)
    {
        CQtmlRuntime::SetMoviesError(ErrorOfException());
    }
}

uintptr_t HandleOf(const void* p)
{
    return reinterpret_cast<uintptr_t>(p);
}

// The movie of a handle, with the thread's movie error set to noErr or paramErr.
std::shared_ptr<CMovie> FindMovie(Movie movie)
{
    auto found = Registry().Movies().Find(HandleOf(movie));
    CQtmlRuntime::SetMoviesError(found ? noErr : paramErr);
    return found;
}

std::shared_ptr<CMovieController> FindController(MovieController mc)
{
    auto found = Registry().Controllers().Find(HandleOf(mc));
    CQtmlRuntime::SetMoviesError(found ? noErr : paramErr);
    return found;
}

// A missing file, a directory or an empty file never reaches a decoder.
OSErr CheckMovieFile(const std::string& path)
{
    WIN32_FILE_ATTRIBUTE_DATA data;
    if (!GetFileAttributesExA(path.c_str(), GetFileExInfoStandard, &data) ||
        (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY))
        return fnfErr;
    return data.nFileSizeHigh == 0 && data.nFileSizeLow == 0 ? invalidMovie : noErr;
}

// A picture file that GDI+ cannot decode is damaged: it is not handed to the filter graph, whose
// parser under Wine never returns from a truncated GIF.
OSErr MakeMovie(const std::string& path, HWND hPortWnd, std::shared_ptr<CMovie>* pMovie)
{
    if (auto picture = CPicture::Load(path))
    {
        *pMovie = std::make_shared<CPictureMovie>(std::move(picture), hPortWnd);
        return noErr;
    }
    if (CPicture::LooksLikePicture(path))
        return invalidMovie;
    return CGraphMovie::Create(path, hPortWnd, pMovie);
}

} // namespace

OSErr InitializeQTML(long)
{
    return Guarded<OSErr>(qtmlDllLoadErr, [] { return CQtmlRuntime::Instance().Initialize(); });
}

void TerminateQTML()
{
    GuardedVoid([] { CQtmlRuntime::Instance().Terminate(); });
}

OSErr EnterMovies()
{
    return Guarded<OSErr>(qtmlDllLoadErr, [] { return CQtmlRuntime::Instance().Enter(); });
}

void ExitMovies()
{
    GuardedVoid([] { CQtmlRuntime::Instance().Exit(); });
}

OSErr Gestalt(OSType selector, long* pResponse)
{
    return Guarded<OSErr>(gestaltUndefSelectorErr,
                          [&] { return CQtmlRuntime::Instance().Gestalt(selector, pResponse); });
}

OSErr NativePathNameToFSSpec(const char* path, FSSpec* location, long)
{
    if (!path || !location)
        return paramErr;
    const size_t cch = std::strlen(path);
    if (cch == 0 || cch >= sizeof(location->path))
        return paramErr;
    std::memset(location, 0, sizeof(*location));
    std::memcpy(location->path, path, cch);
    return noErr;
}

OSErr GetGraphicsImporterForFile(const FSSpec* location, GraphicsImportComponent* pImporter)
{
    return Guarded<OSErr>(cantFindHandler, [&]() -> OSErr {
        if (!pImporter)
            return paramErr;
        *pImporter = nullptr;
        if (!location)
            return paramErr;
        if (!CQtmlRuntime::Instance().IsStarted())
            return cantFindHandler;
        auto picture = CPicture::Load(location->path);
        if (!picture)
            return cantFindHandler;
        const uintptr_t handle = Registry().NewHandle();
        Registry().Importers().Add(handle, std::move(picture));
        *pImporter = reinterpret_cast<GraphicsImportComponent>(handle);
        return noErr;
    });
}

OSErr CloseComponent(ComponentInstance instance)
{
    return Guarded<OSErr>(paramErr, [&]() -> OSErr {
        if (Registry().Importers().Remove(HandleOf(instance)))
            return noErr;
        if (auto controller = Registry().Controllers().Remove(HandleOf(instance)))
        {
            controller->Close();
            return noErr;
        }
        return paramErr;
    });
}

GrafPtr CreatePortAssociation(void* hwnd, Ptr, long)
{
    return Guarded<GrafPtr>(nullptr, [&]() -> GrafPtr {
        const HWND hWnd = static_cast<HWND>(hwnd);
        if (!hWnd || !IsWindow(hWnd))
            return nullptr;
        if (GrafPtr existing = Registry().PortOfWindow(hWnd))
            return existing;
        const uintptr_t handle = Registry().NewHandle();
        Registry().Ports().Add(handle, std::make_shared<CPortAssociation>(hWnd));
        return reinterpret_cast<GrafPtr>(handle);
    });
}

void DestroyPortAssociation(CGrafPtr port)
{
    GuardedVoid([&] {
        if (auto association = Registry().Ports().Remove(HandleOf(port)))
            association->End();
    });
}

GrafPtr GetNativeWindowPort(const void* hwnd)
{
    return Guarded<GrafPtr>(nullptr, [&] { return Registry().PortOfWindow(static_cast<HWND>(const_cast<void*>(hwnd))); });
}

void MacSetPort(GrafPtr port)
{
    GuardedVoid([&] { Registry().SetCurrentPort(port); });
}

OSErr OpenMovieFile(const FSSpec* location, int16_t* pResRefNum, int8_t)
{
    return Guarded<OSErr>(paramErr, [&]() -> OSErr {
        if (!location || !pResRefNum)
            return paramErr;
        *pResRefNum = 0;
        const DWORD dwAttributes = GetFileAttributesA(location->path);
        if (dwAttributes == INVALID_FILE_ATTRIBUTES || (dwAttributes & FILE_ATTRIBUTE_DIRECTORY))
            return fnfErr;
        const int16_t ref = Registry().OpenFile(location->path);
        if (ref == 0)
            return memFullErr;
        *pResRefNum = ref;
        return noErr;
    });
}

OSErr CloseMovieFile(int16_t resRefNum)
{
    return Guarded<OSErr>(paramErr, [&] { return Registry().CloseFile(resRefNum) ? noErr : paramErr; });
}

OSErr NewMovieFromFile(Movie* pMovie, int16_t resRefNum, int16_t*, StringPtr, int16_t, Boolean* pDataRefWasChanged)
{
    const OSErr err = Guarded<OSErr>(paramErr, [&]() -> OSErr {
        if (pDataRefWasChanged)
            *pDataRefWasChanged = 0;
        if (!pMovie)
            return paramErr;
        *pMovie = nullptr;
        if (!CQtmlRuntime::Instance().IsStarted())
            return qtmlDllLoadErr;
        std::string path;
        if (!Registry().FilePath(resRefNum, &path))
            return paramErr;
        OSErr fileErr = CheckMovieFile(path);
        if (fileErr != noErr)
            return fileErr;
        HWND hPortWnd = Registry().CurrentPortWindow();
        if (hPortWnd && !IsWindow(hPortWnd))
            hPortWnd = nullptr;
        std::shared_ptr<CMovie> movie;
        const OSErr makeErr = MakeMovie(path, hPortWnd, &movie);
        if (makeErr != noErr)
            return makeErr;
        const uintptr_t handle = Registry().NewHandle();
        Registry().Movies().Add(handle, std::move(movie));
        *pMovie = reinterpret_cast<Movie>(handle);
        return noErr;
    });
    CQtmlRuntime::SetMoviesError(err);
    return err;
}

void DisposeMovie(Movie movie)
{
    GuardedVoid([&] {
        auto found = Registry().Movies().Remove(HandleOf(movie));
        CQtmlRuntime::SetMoviesError(found ? noErr : paramErr);
        if (found)
            found->Close();
    });
}

TimeValue GetMovieDuration(Movie movie)
{
    return Guarded<TimeValue>(0, [&]() -> TimeValue {
        auto found = FindMovie(movie);
        return found ? found->Duration() : 0;
    });
}

TimeScale GetMovieTimeScale(Movie movie)
{
    return Guarded<TimeScale>(0, [&]() -> TimeScale {
        auto found = FindMovie(movie);
        return found ? found->Scale() : 0;
    });
}

Fixed GetMoviePreferredRate(Movie movie)
{
    return Guarded<Fixed>(0, [&]() -> Fixed { return FindMovie(movie) ? 0x00010000 : 0; });
}

void GetMovieBox(Movie movie, Rect* pBox)
{
    GuardedVoid([&] {
        if (!pBox)
        {
            CQtmlRuntime::SetMoviesError(paramErr);
            return;
        }
        auto found = FindMovie(movie);
        *pBox = found ? found->Box() : Rect{0, 0, 0, 0};
    });
}

void SetMovieBox(Movie movie, const Rect* pBox)
{
    GuardedVoid([&] {
        auto found = FindMovie(movie);
        if (!found || !pBox)
        {
            CQtmlRuntime::SetMoviesError(paramErr);
            return;
        }
        found->SetBox(*pBox);
    });
}

void StartMovie(Movie movie)
{
    GuardedVoid([&] {
        if (auto found = FindMovie(movie))
            found->Start();
    });
}

void StopMovie(Movie movie)
{
    GuardedVoid([&] {
        if (auto found = FindMovie(movie))
            found->Stop();
    });
}

// Tracks are not objects of their own here: the answer only says whether the movie has one of
// the kind asked for, as a handle that is never dereferenced.
Track GetMovieIndTrackType(Movie movie, long index, OSType trackType, long flags)
{
    constexpr OSType kVideoMediaType = 0x76696465; // 'vide'
    return Guarded<Track>(nullptr, [&]() -> Track {
        auto found = FindMovie(movie);
        if (!found || index != 1)
            return nullptr;
        const bool bVisualAsked = (flags & movieTrackCharacteristic) ? trackType == VisualMediaCharacteristic
                                                                    : trackType == kVideoMediaType;
        if (!bVisualAsked || !found->HasPictures())
            return nullptr;
        return reinterpret_cast<Track>(HandleOf(movie) + 8);
    });
}

OSErr GetMoviesError()
{
    return CQtmlRuntime::MoviesError();
}

MovieController NewMovieController(Movie movie, const Rect* pMovieRect, long flags)
{
    return Guarded<MovieController>(nullptr, [&]() -> MovieController {
        auto found = FindMovie(movie);
        if (!found)
            return nullptr;
        if (pMovieRect && (flags & mcTopLeftMovie))
        {
            Rect box = found->Box();
            const int16_t width = static_cast<int16_t>(box.right - box.left);
            const int16_t height = static_cast<int16_t>(box.bottom - box.top);
            if (box.top != pMovieRect->top || box.left != pMovieRect->left)
            {
                box = {pMovieRect->top, pMovieRect->left, static_cast<int16_t>(pMovieRect->top + height),
                       static_cast<int16_t>(pMovieRect->left + width)};
                found->SetBox(box);
            }
        }
        const uintptr_t handle = Registry().NewHandle();
        const auto mc = reinterpret_cast<MovieController>(handle);
        Registry().Controllers().Add(handle, std::make_shared<CMovieController>(mc, std::move(found)));
        return mc;
    });
}

void DisposeMovieController(MovieController mc)
{
    GuardedVoid([&] {
        auto found = Registry().Controllers().Remove(HandleOf(mc));
        CQtmlRuntime::SetMoviesError(found ? noErr : paramErr);
        if (found)
            found->Close();
    });
}

MCActionFilterWithRefConUPP NewMCActionFilterWithRefConUPP(MCActionFilterWithRefConProcPtr proc)
{
    return proc;
}

void DisposeMCActionFilterWithRefConUPP(MCActionFilterWithRefConUPP)
{
}

ComponentResult MCSetActionFilterWithRefCon(MovieController mc, MCActionFilterWithRefConUPP filter, intptr_t refCon)
{
    return Guarded<ComponentResult>(paramErr, [&]() -> ComponentResult {
        auto found = FindController(mc);
        if (!found)
            return paramErr;
        found->SetFilter(filter, refCon);
        return noErr;
    });
}

ComponentResult MCDoAction(MovieController mc, int16_t action, void* params)
{
    return Guarded<ComponentResult>(paramErr, [&]() -> ComponentResult {
        auto found = FindController(mc);
        if (!found)
            return paramErr;
        const ComponentResult result = found->DoAction(action, params);
        CQtmlRuntime::SetMoviesError(static_cast<OSErr>(result));
        return result;
    });
}

TimeValue MCGetCurrentTime(MovieController mc, TimeScale* pScale)
{
    return Guarded<TimeValue>(0, [&]() -> TimeValue {
        if (pScale)
            *pScale = 0;
        auto found = FindController(mc);
        return found ? found->CurrentTime(pScale) : 0;
    });
}

ComponentResult MCIsPlayerEvent(MovieController mc, const EventRecord* pEvent)
{
    return Guarded<ComponentResult>(0, [&]() -> ComponentResult {
        auto found = pEvent ? FindController(mc) : nullptr;
        return found ? found->IsPlayerEvent(*pEvent) : 0;
    });
}

long WinEventToMacEvent(void* pWinMsg, EventRecord* pEvent)
{
    if (!pWinMsg || !pEvent)
        return 0;
    const MSG& msg = *static_cast<const MSG*>(pWinMsg);
    std::memset(pEvent, 0, sizeof(*pEvent));
    switch (msg.message)
    {
    case WM_LBUTTONDOWN:
        pEvent->what = mouseDown;
        break;
    case WM_LBUTTONUP:
        pEvent->what = mouseUp;
        break;
    case WM_KEYDOWN:
        pEvent->what = keyDown;
        break;
    case WM_KEYUP:
        pEvent->what = keyUp;
        break;
    case WM_PAINT:
        pEvent->what = updateEvt;
        break;
    case WM_ACTIVATE:
        pEvent->what = activateEvt;
        break;
    default:
        pEvent->what = nullEvent;
        break;
    }
    pEvent->message = msg.message;
    pEvent->when = msg.time;
    pEvent->where.v = static_cast<int16_t>(msg.pt.y);
    pEvent->where.h = static_cast<int16_t>(msg.pt.x);
    return 1;
}
