// The part of QuickTime for Windows' C interface that the engine calls. QuickTime is not
// available on this platform, so this layer answers as a machine without it would: every
// start-up call fails and Gestalt knows no selector.
#pragma once

#include <cstdint>

typedef int16_t OSErr;
typedef uint32_t OSType;

enum : OSErr
{
    qtmlNoErr = 0,
    qtmlDllLoadErr = -2092,
    gestaltUndefSelectorErr = -5551
};

constexpr OSType gestaltQuickTime = 0x7174696D; // 'qtim'

OSErr InitializeQTML(long flags);
void TerminateQTML();
OSErr EnterMovies();
void ExitMovies();
OSErr Gestalt(OSType selector, long* pResponse);
