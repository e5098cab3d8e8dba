// Figures, not tests: how long OpenFile takes through the QuickTime route (our movie toolbox on
// the platform's DirectShow) against the DirectShow back-end on the same file, opened in turn in
// one process, each back-end in a window of its own. Prints the medians and their ratio.
// Run under Wine: qt_benchmark.exe [opens per route and file]
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include "backends/dshow/CDShowPlayer.h"
#include "backends/quicktime/CQTAudioPlayer.h"
#include "backends/quicktime/CQTPlayer.h"

namespace {

struct File
{
    const wchar_t* pwszName;
    bool bAudio;
};

const File kFiles[] = {{L"clip.mov", false}, {L"clip.mp4", false}, {L"clip.m4v", false},
                       {L"clip.3gp", false}, {L"tone.m4a", true},  {L"tone.aiff", true}};

double Milliseconds(const LARGE_INTEGER& from, const LARGE_INTEGER& to)
{
    LARGE_INTEGER frequency;
    QueryPerformanceFrequency(&frequency);
    return 1000.0 * static_cast<double>(to.QuadPart - from.QuadPart) / static_cast<double>(frequency.QuadPart);
}

double Median(std::vector<double> values)
{
    if (values.empty())
        return -1.0;
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

HWND MakeHostWindow()
{
    WNDCLASSW wc = {};
    wc.lpfnWndProc = DefWindowProcW;
    wc.hInstance = GetModuleHandleW(nullptr);
    wc.lpszClassName = L"QTBenchmark.Host";
    RegisterClassW(&wc);
    return CreateWindowExW(0, wc.lpszClassName, L"", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 320, 240, nullptr,
                           nullptr, wc.hInstance, nullptr);
}

void Pump()
{
    MSG msg;
    while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE))
    {
        TranslateMessage(&msg);
        DispatchMessageW(&msg);
    }
}

// One open of path by player, in milliseconds; negative when the open failed.
double TimeOpen(CPlayerBase& player, const std::wstring& path)
{
    LARGE_INTEGER before, after;
    QueryPerformanceCounter(&before);
    const HRESULT hr = player.OpenFile(path.c_str(), 0, TESSALY_PLAYBACK_FLAG_STRETCH);
    QueryPerformanceCounter(&after);
    player.CloseFile();
    Pump();
    return SUCCEEDED(hr) ? Milliseconds(before, after) : -1.0;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    const int nOpens = argc > 1 ? std::max(3, _wtoi(argv[1])) : 9;
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    const HWND hQT = MakeHostWindow();
    const HWND hQTAudio = MakeHostWindow();
    const HWND hDShow = MakeHostWindow();
    CQTPlayer qt;
    CQTAudioPlayer qtAudio;
    CDShowPlayer dshow;
    const HRESULT hrInit[] = {qt.Init(), qtAudio.Init(), dshow.Init()};
    qt.SetParentWindow(hQT);
    qtAudio.SetParentWindow(hQTAudio);
    dshow.SetParentWindow(hDShow);
    std::printf("Init: QuickTime 0x%08lx, QuickTime audio 0x%08lx, DirectShow 0x%08lx\n",
                static_cast<unsigned long>(hrInit[0]), static_cast<unsigned long>(hrInit[1]),
                static_cast<unsigned long>(hrInit[2]));
    std::printf("%-10s %14s %14s %7s %9s\n", "file", "QuickTime", "DirectShow", "ratio", "failures");
    const std::wstring dir = TESSALY_QT_MEDIA_DIR;
    for (const File& file : kFiles)
    {
        const std::wstring path = dir + L"\\" + file.pwszName;
        CPlayerBase& viaQT = file.bAudio ? static_cast<CPlayerBase&>(qtAudio) : qt;
        std::vector<double> qtTimes, dshowTimes;
        int nFailures = 0;
        // Alternating, so that a busy moment of the machine falls on both routes alike.
        for (int i = 0; i < nOpens; ++i)
        {
            for (CPlayerBase* pPlayer : {&viaQT, static_cast<CPlayerBase*>(&dshow)})
            {
                const double ms = TimeOpen(*pPlayer, path);
                if (ms < 0)
                    ++nFailures;
                else
                    (pPlayer == &dshow ? dshowTimes : qtTimes).push_back(ms);
            }
        }
        const double dQT = Median(qtTimes), dDShow = Median(dshowTimes);
        std::printf("%-10ls %11.1f ms %11.1f ms %7.2f %9d\n", file.pwszName, dQT, dDShow,
                    dQT > 0 && dDShow > 0 ? dQT / dDShow : 0.0, nFailures);
    }
    qt.Destroy();
    qtAudio.Destroy();
    dshow.Destroy();
    DestroyWindow(hQT);
    DestroyWindow(hQTAudio);
    DestroyWindow(hDShow);
    CoUninitialize();
    return 0;
}
