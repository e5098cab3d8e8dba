// Figures, not tests: per Windows Media file, rounds alternate between the engine (a new host routed
// to the control, to the item open with its duration) and the control alone in the system's ATL
// container (polled until its item has a duration, then stopped, as the engine leaves it). Prints
// medians and their ratio; each file's first round loads the control's code and is left out.
// Run under Wine: wmp_benchmark.exe [rounds]
#include <algorithm>
#include <cstdlib>
#include <vector>

#include "CControlStage.h"
#include "CFigures.h"

namespace {

// Milliseconds from creating the control to its item stopped with a duration; negative on failure.
double BareOpen(const std::wstring& path)
{
    const ULONGLONG start = GetTickCount64();
    HWND hWnd = CreateWindowExW(0, L"STATIC", L"", WS_POPUP | WS_CLIPCHILDREN, 0, 0, 320, 240, 0, 0, 0, 0);
    HWND hContainer = CAtlAxLibrary::WinInit() ? CreateWindowExW(0, L"AtlAxWin", nullptr, WS_CHILD | WS_VISIBLE, 0,
                                                                 0, 320, 240, hWnd, 0, 0, 0)
                                               : nullptr;
    ComPtr<IUnknown> control;
    ComPtr<IWMPPlayer> player;
    ComPtr<IWMPControls> controls;
    double dDuration = 0.0;
    BSTR url = SysAllocString(path.c_str());
    if (hContainer && SUCCEEDED(CAtlAxLibrary::CreateControl(hContainer, wmp::kControlClassId)) &&
        SUCCEEDED(CAtlAxLibrary::GetControl(hContainer, &control)) &&
        SUCCEEDED(QueryTo(control, __uuidof(IWMPPlayer), player)) && SUCCEEDED(player->put_URL(url)))
    {
        for (ComPtr<IWMPMedia> media; GetTickCount64() - start < 10000; media.Reset())
        {
            if (SUCCEEDED(player->get_currentMedia(&media)) && media && SUCCEEDED(media->get_duration(&dDuration)) &&
                dDuration > 0.0)
                break;
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 2, QS_ALLINPUT);
            for (MSG msg; PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE);)
                DispatchMessageW(&msg);
        }
    }
    if (player && SUCCEEDED(player->get_controls(&controls)))
        controls->stop();
    const ULONGLONG end = GetTickCount64();
    if (player)
        player->close();
    SysFreeString(url);
    controls.Reset();
    player.Reset();
    control.Reset();
    DestroyWindow(hWnd);
    return dDuration > 0.0 ? static_cast<double>(end - start) : -1.0;
}

double EngineOpen(const char* pszName)
{
    const ULONGLONG start = GetTickCount64();
    auto host = CControlStage::ControlHost();
    TESSALY_FILEINFO info = {};
    const HRESULT hr = host->Open(CTestMedia::Path(pszName), &info);
    const ULONGLONG end = GetTickCount64();
    return SUCCEEDED(hr) && info.dDuration > 0.0 ? static_cast<double>(end - start) : -1.0;
}

} // namespace

int main(int argc, char** argv)
{
    const int nRounds = argc > 1 ? std::max(3, std::atoi(argv[1])) : 9;
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    std::printf("Open to an item with its duration, %d rounds per file, engine and bare control alternating\n",
                nRounds);
    std::printf("%-10s %14s %14s %7s %16s\n", "file", "engine median", "bare median", "ratio", "failed eng/bare");
    for (const char* pszName : {"clip.wmv", "tone.wma", "clip.asf"})
    {
        std::vector<double> times[2];
        int nFailed[2] = {};
        for (int i = 0; i < nRounds; ++i)
        {
            const double ms[2] = {EngineOpen(pszName), BareOpen(CTestMedia::Path(pszName))};
            for (int k = 0; k < 2 && i > 0; ++k)
            {
                if (ms[k] < 0)
                    ++nFailed[k];
                else
                    times[k].push_back(ms[k]);
            }
        }
        const double dEngine = CFigures::Median(times[0]), dBare = CFigures::Median(times[1]);
        std::printf("%-10s %11.1f ms %11.1f ms %7.2f %9d/%d\n", pszName, dEngine, dBare,
                    dEngine > 0 && dBare > 0 ? dEngine / dBare : 0.0, nFailed[0], nFailed[1]);
        std::fflush(stdout);
    }
    CoUninitialize();
    return 0;
}
