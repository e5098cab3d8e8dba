// The layer's start-up: counted, so that InitializeQTML/TerminateQTML and EnterMovies/ExitMovies
// pairs nest. It starts only where the platform can serve movies (a filter graph can be made),
// and keeps a GDI+ start-up of its own for pictures. Also the error of the last movie call, which
// is per thread.
#pragma once

#include <windows.h>

#include <mutex>

#include "qtml/QTML.h"

class CQtmlRuntime
{
public:
    static CQtmlRuntime& Instance();

    OSErr Initialize();
    void Terminate();
    OSErr Enter();
    void Exit();
    bool IsStarted();
    OSErr Gestalt(OSType selector, long* pResponse);

    static void SetMoviesError(OSErr err);
    static OSErr MoviesError();

    // QuickTime 7.0, final release.
    static constexpr long kVersion = 0x07008000;

private:
    CQtmlRuntime() = default;
    static bool CanMakeFilterGraph();

    std::mutex m_lock;
    int m_nInitializeCount = 0;
    int m_nEnterCount = 0;
    ULONG_PTR m_ulGdiplusToken = 0;
};
