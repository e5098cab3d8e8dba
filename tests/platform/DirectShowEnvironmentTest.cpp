// The test environment itself: audio must render into the null device in real time, or every
// playback test later on would fail for reasons that have nothing to do with the engine.
#include <windows.h>
#include <dshow.h>

#include <gtest/gtest.h>

#include <fstream>
#include <string>

#include "engine/ComPtr.h"

TEST(PlatformAudio, HalfASecondOfWaveRendersAndCompletesInRealTime)
{
    ASSERT_EQ(S_OK, CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED));
    char dir[MAX_PATH];
    GetTempPathA(MAX_PATH, dir);
    const std::string wav = std::string(dir) + "tessaly-platform-" + std::to_string(GetCurrentProcessId()) + ".wav";
    // 16-bit mono PCM at 22050 Hz: a header whose sizes are little-endian, then silence.
    const unsigned rate = 22050, data = rate; // half a second, two bytes a sample
    const unsigned header[] = {0x46464952, 36 + data, 0x45564157, 0x20746d66, 16, 0x00010001, rate, rate * 2,
                               0x00100002, 0x61746164, data};
    std::ofstream(wav, std::ios::binary).write(reinterpret_cast<const char*>(header), sizeof header)
        << std::string(data, '\0');
    {
        ComPtr<IGraphBuilder> graph;
        ComPtr<IMediaSeeking> seeking;
        ComPtr<IMediaControl> control;
        ComPtr<IMediaEvent> events;
        ASSERT_EQ(S_OK, CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder, &graph));
        ASSERT_EQ(S_OK, graph->RenderFile(std::wstring(wav.begin(), wav.end()).c_str(), nullptr))
            << "no audio renderer: check the ALSA null device";
        ASSERT_EQ(S_OK, QueryTo(graph, IID_IMediaSeeking, seeking));
        ASSERT_EQ(S_OK, QueryTo(graph, IID_IMediaControl, control));
        ASSERT_EQ(S_OK, QueryTo(graph, IID_IMediaEvent, events));
        LONGLONG duration = 0;
        ASSERT_EQ(S_OK, seeking->GetDuration(&duration));
        EXPECT_NEAR(5000000, duration, 100000);
        const ULONGLONG start = GetTickCount64();
        ASSERT_TRUE(SUCCEEDED(control->Run()));
        long code = 0;
        EXPECT_EQ(S_OK, events->WaitForCompletion(10000, &code));
        EXPECT_EQ(EC_COMPLETE, code);
        EXPECT_GE(GetTickCount64() - start, 300u) << "the null device is clocked";
        control->Stop();
    }
    DeleteFileA(wav.c_str());
    CoUninitialize();
}
