// Which Windows Media files the engine gives to the Media Player control: those whose header
// declares content protection. This platform's control accepts such a file but never plays it,
// so the open must end in the back-end's failure code, and soon.
#include <gtest/gtest.h>

#include "CControlStage.h"
#include "CProtectedMedia.h"
#include "CTempFolder.h"
#include "CTestMedia.h"
#include "backends/wmp/CWMPHost.h"

namespace {

TEST(WMPRoute, ProtectedFilesAreHostedInTheControlAndFailWithinTheOpenLimit)
{
    CTempFolder folder;
    // One of each encryption object, on sound and on video.
    const struct
    {
        const char* pszName;
        bool bExtended;
    } kCases[] = {{"tone.wma", false}, {"clip.wmv", true}, {"clip.asf", false}};
    for (const auto& c : kCases)
    {
        SCOPED_TRACE(c.pszName);
        const std::wstring path = CProtectedMedia::Copy(folder, c.pszName, c.bExtended);
        ASSERT_FALSE(path.empty());
        CPlaybackHost host;
        TESSALY_FILEINFO info = {7, 7.0, 7, 7};
        const ULONGLONG start = GetTickCount64();
        EXPECT_EQ(TESSALY_E_CANNOTPLAY, host.Open(path, &info));
        const ULONGLONG elapsed = GetTickCount64() - start;
        std::printf("protected %s: open failed after %llu ms\n", c.pszName, elapsed);
        EXPECT_LT(elapsed, CWMPHost::kOpenLimitMs + 2000);
        EXPECT_NE(nullptr, CControlStage::FindContainer(host.Window())) << "the control was not hosted";
        EXPECT_EQ(nullptr, host.DShow().Graph()) << "DirectShow was asked as well";
        EXPECT_EQ(7.0, info.dDuration) << "a failed open wrote the caller's record";
        EXPECT_EQ(0u, host.events.size());
    }
}

TEST(WMPRoute, UnprotectedFilesStayWithDirectShow)
{
    for (const char* pszName : {"tone.wma", "clip.wmv"})
    {
        SCOPED_TRACE(pszName);
        CPlaybackHost host;
        ASSERT_EQ(S_OK, host.OpenWhole(CTestMedia::Path(pszName), nullptr));
        EXPECT_NE(nullptr, host.DShow().Graph());
        EXPECT_EQ(nullptr, CControlStage::FindContainer(host.Window()));
    }
}

} // namespace
