// GDI+ runs for the whole program, as the engine's module keeps it running for the cover art.
#include <windows.h>
#include <gdiplus.h>
#include <gtest/gtest.h>

struct CGdiplusEnvironment : ::testing::Environment
{
    void SetUp() override { ASSERT_EQ(Gdiplus::Ok, Gdiplus::GdiplusStartup(&token, &input, nullptr)); }
    void TearDown() override { Gdiplus::GdiplusShutdown(token); }
    Gdiplus::GdiplusStartupInput input;
    ULONG_PTR token = 0;
};

static ::testing::Environment* const g_pGdiplus = ::testing::AddGlobalTestEnvironment(new CGdiplusEnvironment);
