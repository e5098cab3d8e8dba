#include "engine/CFrameworkStartup.h"

#include <gdiplus.h>

namespace {

bool StartGdiplus(ULONG_PTR* pToken)
{
    Gdiplus::GdiplusStartupInput input;
    return Gdiplus::GdiplusStartup(pToken, &input, nullptr) == Gdiplus::Ok;
}

void ShutdownGdiplus(ULONG_PTR token)
{
    Gdiplus::GdiplusShutdown(token);
}

} // namespace

const CFrameworkStartup& CFrameworkStartup::Platform()
{
    static const CFrameworkStartup platform = {InitializeQTML, EnterMovies, ExitMovies, TerminateQTML,
                                               Gestalt,        StartGdiplus, ShutdownGdiplus};
    return platform;
}
