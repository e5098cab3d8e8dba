// Figures, not tests: OpenFile through the QuickTime route (our movie toolbox on the platform's
// DirectShow) against the DirectShow back-end on the same file, alternating; medians and ratio.
// Run under Wine: qt_benchmark.exe [opens per route and file]
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "CFigures.h"
#include "backends/dshow/CDShowPlayer.h"
#include "backends/quicktime/CQTAudioPlayer.h"
#include "backends/quicktime/CQTPlayer.h"

int wmain(int argc, wchar_t** argv)
{
    const int nOpens = argc > 1 ? std::max(3, _wtoi(argv[1])) : 9;
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    CQTPlayer qt;
    CQTAudioPlayer qtAudio;
    CDShowPlayer dshow;
    CPlayerBase* players[] = {&qt, &qtAudio, &dshow};
    std::printf("Init (QuickTime, QuickTime audio, DirectShow):");
    for (CPlayerBase* pPlayer : players)
    {
        std::printf(" 0x%08lx", static_cast<unsigned long>(pPlayer->Init()));
        pPlayer->SetParentWindow(CreateWindowExW(0, L"STATIC", L"", WS_OVERLAPPEDWINDOW | WS_VISIBLE, 0, 0, 320, 240,
                                                 nullptr, nullptr, nullptr, nullptr));
    }
    std::printf("\n%-10s %14s %14s %7s %9s\n", "file", "QuickTime", "DirectShow", "ratio", "failures");
    for (const wchar_t* pwszName : {L"clip.mov", L"clip.mp4", L"clip.m4v", L"clip.3gp", L"tone.m4a", L"tone.aiff"})
    {
        const std::wstring path = std::wstring(TESSALY_QT_MEDIA_DIR) + L"\\" + pwszName;
        std::vector<double> times[2];
        int nFailures = 0;
        for (int i = 0; i < 2 * nOpens; ++i) // alternating, so that a busy moment falls on both routes alike
        {
            CPlayerBase& player = i % 2 ? static_cast<CPlayerBase&>(dshow) : *players[pwszName[0] == L't' ? 1 : 0];
            const double dBefore = CFigures::NowMs();
            const HRESULT hr = player.OpenFile(path.c_str(), 0, TESSALY_PLAYBACK_FLAG_STRETCH);
            const double dAfter = CFigures::NowMs();
            player.CloseFile();
            for (MSG msg; PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE);)
                DispatchMessageW(&msg);
            nFailures += FAILED(hr);
            if (SUCCEEDED(hr))
                times[i % 2].push_back(dAfter - dBefore);
        }
        const double dMedian[2] = {CFigures::Median(times[0]), CFigures::Median(times[1])};
        std::printf("%-10ls %11.1f ms %11.1f ms %7.2f %9d\n", pwszName, dMedian[0], dMedian[1],
                    dMedian[0] > 0 && dMedian[1] > 0 ? dMedian[0] / dMedian[1] : 0.0, nFailures);
    }
    for (CPlayerBase* pPlayer : players)
        pPlayer->Destroy();
    CoUninitialize();
    return 0;
}
