// The part of QuickTime for Windows' C interface that the engine calls: start-up, movies opened
// from files, graphics importers, the movie controller and the port association of a native
// window. QuickTime itself is not available on this platform, so this layer serves the same calls
// from the platform's DirectShow (movies and sound) and GDI+ (pictures). Names, numbers and the
// order of rectangle fields are the toolbox's, so the engine's code is the same either way.
//
// Where the toolbox passes a pointer in a 32-bit long (the action filter's reference value), this
// layer takes a pointer-sized integer, so that the 64-bit engine can pass its object.
#pragma once

#include <cstdint>

typedef int16_t OSErr;
typedef uint32_t OSType;
typedef uint8_t Boolean;
typedef int32_t Fixed;
typedef int32_t TimeValue;
typedef int32_t TimeScale;
typedef int32_t ComponentResult;
typedef char* Ptr;
typedef unsigned char* StringPtr;

enum : OSErr
{
    noErr = 0,
    qtmlNoErr = 0,
    paramErr = -50,
    fnfErr = -43,
    memFullErr = -108,
    invalidMovie = -2010,
    badImageDescription = -2001,
    noMovieFound = -2048,
    cantFindHandler = -2003,
    qtmlDllLoadErr = -2092,
    gestaltUndefSelectorErr = -5551
};

constexpr OSType gestaltQuickTime = 0x7174696D;         // 'qtim'
constexpr OSType VisualMediaCharacteristic = 0x65796573; // 'eyes'

// OpenMovieFile permissions and NewMovieFromFile flags.
constexpr int8_t fsRdPerm = 1;
constexpr int16_t newMovieActive = 1 << 0;

// GetMovieIndTrackType flags.
constexpr long movieTrackMediaType = 1 << 0;
constexpr long movieTrackCharacteristic = 1 << 1;
constexpr long movieTrackEnabledOnly = 1 << 2;

// NewMovieController flags.
constexpr long mcTopLeftMovie = 1 << 0;
constexpr long mcNotVisible = 1 << 3;

// Controller flags (mcActionGetFlags / mcActionSetFlags).
constexpr long mcFlagsUseWindowPalette = 1 << 3;

// Controller actions: the parameter of each is given after it.
enum : int16_t
{
    mcActionMouseDown = 5,         // EventRecord*; a filter that answers true swallows the click
    mcActionGoToTime = 12,         // TimeRecord*
    mcActionSetLooping = 21,       // Boolean, in the pointer's value
    mcActionSetFlags = 38,         // long, in the pointer's value
    mcActionGetFlags = 39,         // long*
    mcActionPrerollAndPlay = 55,   // Fixed rate, in the pointer's value
    mcActionMovieFinished = 86     // none; sent to the filter when the movie reaches its end
};

// QuickTime rectangles and points are 16-bit, top-left-bottom-right.
struct Rect
{
    int16_t top;
    int16_t left;
    int16_t bottom;
    int16_t right;
};

struct Point
{
    int16_t v;
    int16_t h;
};

// A file as the toolbox names it. The toolbox keeps a volume, a directory and a 63-character
// name; this layer keeps the native path it was made from.
struct FSSpec
{
    int16_t vRefNum;
    int32_t parID;
    char path[260];
};

struct wide
{
    uint32_t lo;
    int32_t hi;
};

typedef struct TimeBaseRecord* TimeBase;

struct TimeRecord
{
    wide value;
    TimeScale scale;
    TimeBase base;
};

// Event kinds of EventRecord.what.
enum : uint16_t
{
    nullEvent = 0,
    mouseDown = 1,
    mouseUp = 2,
    keyDown = 3,
    keyUp = 4,
    autoKey = 5,
    updateEvt = 6,
    activateEvt = 8,
    osEvt = 15
};

// A window message translated by WinEventToMacEvent. Messages with no event of their own
// (timers, the layer's own notices) arrive as null events that still carry the message, so the
// controller can act on them.
struct EventRecord
{
    uint16_t what;
    uintptr_t message;
    uint32_t when;
    Point where;
    uint16_t modifiers;
};

typedef struct MovieRecord* Movie;
typedef struct TrackRecord* Track;
typedef struct ComponentInstanceRecord* ComponentInstance;
typedef ComponentInstance MovieController;
typedef ComponentInstance GraphicsImportComponent;
typedef struct GrafPort* GrafPtr;
typedef GrafPtr CGrafPtr;

typedef Boolean (*MCActionFilterWithRefConProcPtr)(MovieController mc, int16_t action, void* params,
                                                   intptr_t refCon);
typedef MCActionFilterWithRefConProcPtr MCActionFilterWithRefConUPP;

// Start-up. InitializeQTML fails with qtmlDllLoadErr when the platform cannot serve movies
// (no filter graph can be made); Gestalt(gestaltQuickTime) answers the version word, major and
// minor in the high 16 bits.
OSErr InitializeQTML(long flags);
void TerminateQTML();
OSErr EnterMovies();
void ExitMovies();
OSErr Gestalt(OSType selector, long* pResponse);

// Files and importers.
OSErr NativePathNameToFSSpec(const char* path, FSSpec* location, long flags);
OSErr GetGraphicsImporterForFile(const FSSpec* location, GraphicsImportComponent* pImporter);
OSErr CloseComponent(ComponentInstance instance);

// Ports: a native window gets a port by association; the current port is where the next movie
// is shown.
GrafPtr CreatePortAssociation(void* hwnd, Ptr storage, long flags);
void DestroyPortAssociation(CGrafPtr port);
GrafPtr GetNativeWindowPort(const void* hwnd);
void MacSetPort(GrafPtr port);

// Movies.
OSErr OpenMovieFile(const FSSpec* location, int16_t* pResRefNum, int8_t permission);
OSErr CloseMovieFile(int16_t resRefNum);
OSErr NewMovieFromFile(Movie* pMovie, int16_t resRefNum, int16_t* pResId, StringPtr resName,
                       int16_t newMovieFlags, Boolean* pDataRefWasChanged);
void DisposeMovie(Movie movie);
TimeValue GetMovieDuration(Movie movie);
TimeScale GetMovieTimeScale(Movie movie);
Fixed GetMoviePreferredRate(Movie movie);
void GetMovieBox(Movie movie, Rect* pBox);
void SetMovieBox(Movie movie, const Rect* pBox);
void StartMovie(Movie movie);
void StopMovie(Movie movie);
Track GetMovieIndTrackType(Movie movie, long index, OSType trackType, long flags);
// The error of the last movie call made on this thread.
OSErr GetMoviesError();

// The movie controller.
MovieController NewMovieController(Movie movie, const Rect* pMovieRect, long flags);
void DisposeMovieController(MovieController mc);
MCActionFilterWithRefConUPP NewMCActionFilterWithRefConUPP(MCActionFilterWithRefConProcPtr proc);
void DisposeMCActionFilterWithRefConUPP(MCActionFilterWithRefConUPP upp);
ComponentResult MCSetActionFilterWithRefCon(MovieController mc, MCActionFilterWithRefConUPP filter,
                                            intptr_t refCon);
ComponentResult MCDoAction(MovieController mc, int16_t action, void* params);
TimeValue MCGetCurrentTime(MovieController mc, TimeScale* pScale);
// Services the controller: answers 1 when the event was the controller's. The controller does its
// periodic work (end of movie, looping, a GIF's next frame) only here.
ComponentResult MCIsPlayerEvent(MovieController mc, const EventRecord* pEvent);

// Translates a Windows MSG into an event record.
long WinEventToMacEvent(void* pWinMsg, EventRecord* pEvent);
