// Files cut short, overwritten with noise, empty or missing: the back-end either refuses them
// with the code the platform gives, or plays until the graph reports an end or an error.
#include <gtest/gtest.h>

#include <string>

#include "CPlaybackHost.h"
#include "CTestMedia.h"

namespace {

// What DirectShow itself answers for the file, in a graph of its own.
HRESULT PlatformRenderResult(const std::wstring& path)
{
    ComPtr<IGraphBuilder> graph;
    HRESULT hr = CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder,
                                  &graph);
    return FAILED(hr) ? hr : graph->RenderFile(path.c_str(), nullptr);
}

class DamagedFile : public ::testing::TestWithParam<const char*>
{
};

TEST_P(DamagedFile, IsRefusedWithThePlatformsCodeOrEndsWithAnEvent)
{
    CPlaybackHost host;
    const std::wstring path = CTestMedia::Path(GetParam());
    const HRESULT hrPlatform = PlatformRenderResult(path);

    TESSALY_FILEINFO info;
    memset(&info, 0xCD, sizeof(info));
    const HRESULT hr = host.Open(path, &info);
    if (FAILED(hrPlatform))
    {
        EXPECT_EQ(hrPlatform, hr);
        EXPECT_EQ(0xCDCDCDCDu, info.dwAttributeMask) << "the record was written for a refused file";
        EXPECT_EQ(E_FAIL, host.Player().Play());
        return;
    }
    ASSERT_TRUE(SUCCEEDED(hr)) << std::hex << hr;
    ASSERT_EQ(S_OK, host.Player().Play());
    ASSERT_TRUE(host.PumpUntilEnd(15000)) << "neither an end nor an error";
    EXPECT_EQ(1u, host.Count(STREAMING_EVENT_COMPLETE) + host.Count(STREAMING_EVENT_ERROR));
    if (host.Count(STREAMING_EVENT_ERROR))
    {
        EXPECT_TRUE(FAILED(static_cast<HRESULT>(host.events.back().ulParam)));
    }
}

// The platform may never return from rendering such a file, so the engine answers for it: the
// record untouched, nothing open, and the next file opens as usual.
TEST(DamagedHeader, AnAsfHeaderClaimingMoreThanTheFileHoldsIsInvalidData)
{
    CPlaybackHost host;
    TESSALY_FILEINFO info;
    memset(&info, 0xCD, sizeof(info));
    EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_INVALID_DATA), host.Open(CTestMedia::Path("huge.wma"), &info));
    EXPECT_EQ(0xCDCDCDCDu, info.dwAttributeMask);
    EXPECT_EQ(E_FAIL, host.Player().Play());
    EXPECT_EQ(S_OK, host.OpenWhole(CTestMedia::Path("tone.wma"), &info));
    EXPECT_EQ(TESSALY_FILEINFO_AUDIO_ONLY | TESSALY_FILEINFO_SEEKABLE, info.dwAttributeMask);
}

std::string FileTestName(const ::testing::TestParamInfo<const char*>& info)
{
    std::string name = info.param;
    for (char& c : name)
    {
        if (c == '.' || c == '-')
            c = '_';
    }
    return name;
}

INSTANTIATE_TEST_SUITE_P(DShowDamage, DamagedFile,
                         ::testing::Values("cut.wmv", "cut.avi", "cut.mp3", "noisy.avi", "noise.avi",
                                           "noise.mp3", "empty.wav", "missing.wav"),
                         FileTestName);

} // namespace
