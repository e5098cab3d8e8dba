// The calls that start and stop QuickTime and GDI+ for the whole process. The module goes
// through this table so that tests can count the calls; the product always uses Platform().
#pragma once

#include <windows.h>

#include "qtml/QTML.h"

struct CFrameworkStartup
{
    OSErr (*pfnInitializeQTML)(long flags);
    OSErr (*pfnEnterMovies)();
    void (*pfnExitMovies)();
    void (*pfnTerminateQTML)();
    OSErr (*pfnGestalt)(OSType selector, long* pResponse);
    // Fills the token and answers true when GDI+ started.
    bool (*pfnStartGdiplus)(ULONG_PTR* pToken);
    void (*pfnShutdownGdiplus)(ULONG_PTR token);

    static const CFrameworkStartup& Platform();
};
