// The test environment itself: audio must render into the null device in real time, or every
// playback test later on would fail for reasons that have nothing to do with the engine.
#include <windows.h>
#include <dshow.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "engine/ComPtr.h"

namespace {

// A 16-bit mono PCM file of the given length, written byte by byte.
std::wstring WriteSilentWave(double dSeconds)
{
    WCHAR dir[MAX_PATH], path[MAX_PATH];
    GetTempPathW(MAX_PATH, dir);
    GetTempFileNameW(dir, L"tsl", 0, path);
    const uint32_t rate = 22050;
    const uint32_t dataBytes = static_cast<uint32_t>(rate * dSeconds) * 2;
    std::vector<uint8_t> bytes;
    auto put32 = [&](uint32_t v) { for (int i = 0; i < 4; ++i) bytes.push_back(static_cast<uint8_t>(v >> (8 * i))); };
    auto put16 = [&](uint16_t v) { bytes.push_back(static_cast<uint8_t>(v)); bytes.push_back(static_cast<uint8_t>(v >> 8)); };
    auto tag = [&](const char* t) { bytes.insert(bytes.end(), t, t + 4); };
    tag("RIFF"); put32(36 + dataBytes); tag("WAVE");
    tag("fmt "); put32(16); put16(1); put16(1); put32(rate); put32(rate * 2); put16(2); put16(16);
    tag("data"); put32(dataBytes);
    bytes.resize(bytes.size() + dataBytes, 0);

    std::wstring wav = std::wstring(path) + L".wav";
    DeleteFileW(path);
    HANDLE hFile = CreateFileW(wav.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    DWORD written = 0;
    WriteFile(hFile, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    CloseHandle(hFile);
    return wav;
}

TEST(PlatformAudio, AWaveFileRendersAndCompletesInRealTime)
{
    ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    const std::wstring wav = WriteSilentWave(0.5);
    {
        ComPtr<IGraphBuilder> graph;
        ASSERT_EQ(S_OK, CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER,
                                         IID_IGraphBuilder, &graph));
        ASSERT_EQ(S_OK, graph->RenderFile(wav.c_str(), nullptr)) << "no audio renderer: check the ALSA null device";

        ComPtr<IMediaSeeking> seeking;
        ASSERT_EQ(S_OK, QueryTo(graph, IID_IMediaSeeking, seeking));
        LONGLONG duration = 0;
        ASSERT_EQ(S_OK, seeking->GetDuration(&duration));
        EXPECT_NEAR(5000000, duration, 100000);

        ComPtr<IMediaControl> control;
        ComPtr<IMediaEventEx> events;
        ASSERT_EQ(S_OK, QueryTo(graph, IID_IMediaControl, control));
        ASSERT_EQ(S_OK, QueryTo(graph, IID_IMediaEventEx, events));
        const DWORD dwStart = GetTickCount();
        ASSERT_TRUE(SUCCEEDED(control->Run()));
        long code = 0;
        EXPECT_EQ(S_OK, events->WaitForCompletion(10000, &code));
        EXPECT_EQ(EC_COMPLETE, code);
        // The null device is clocked: half a second of sound takes about that long to play.
        EXPECT_GE(GetTickCount() - dwStart, 300u);
        control->Stop();
    }
    DeleteFileW(wav.c_str());
    CoUninitialize();
}

} // namespace
