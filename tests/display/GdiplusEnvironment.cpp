// GDI+ runs for the whole test program, as the engine's module keeps it running for the
// information window's cover art; this is the one place that starts it.
#include <windows.h>

#include <gdiplus.h>
#include <gtest/gtest.h>

namespace {

struct CGdiplusEnvironment : ::testing::Environment
{
    void SetUp() override
    {
        Gdiplus::GdiplusStartupInput input;
        ASSERT_EQ(Gdiplus::Ok, Gdiplus::GdiplusStartup(&token, &input, nullptr));
    }
    void TearDown() override { Gdiplus::GdiplusShutdown(token); }
    ULONG_PTR token = 0;
};

::testing::Environment* const g_pGdiplus = ::testing::AddGlobalTestEnvironment(new CGdiplusEnvironment);

} // namespace
