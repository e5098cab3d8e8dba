// Figures, not tests: what the Media Player control route costs over the bare control. For each
// Windows Media file, rounds alternate between the engine (a host whose route sends the file to
// the control, from a new host to the item open with its duration) and the platform's control in
// the system's ATL container with nothing else around it (told the file, polled until its item has
// a duration, then stopped, as an open through the engine leaves it).
// Medians and their ratio are printed; nothing fails on timing.
// Run under Wine: wmp_benchmark.exe [rounds]
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <vector>

#include "CControlStage.h"
#include "CTestMedia.h"
#include "backends/wmp/CAtlAxLibrary.h"
#include "backends/wmp/WMPInterfaces.h"
#include "engine/ComPtr.h"

namespace {

const DWORD kOpenLimitMs = 10000;

double Milliseconds(ULONGLONG from, ULONGLONG to)
{
    return static_cast<double>(to - from);
}

double Median(std::vector<double> values)
{
    if (values.empty())
        return -1.0;
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

void Pump(DWORD dwMs)
{
    MsgWaitForMultipleObjects(0, nullptr, FALSE, dwMs, QS_ALLINPUT);
    MSG msg;
    while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE))
        DispatchMessageW(&msg);
}

// Milliseconds from creating the control until its item reports a duration and is stopped again;
// negative on failure.
// The control sits in the system's ATL container, as it must to open anything, in a window of the
// engine's host size; nothing else of the engine is used.
double BareOpen(const std::wstring& path)
{
    const ULONGLONG start = GetTickCount64();
    if (!CAtlAxLibrary::WinInit())
        return -1.0;
    HWND hWnd = CreateWindowExW(0, L"STATIC", L"bare", WS_POPUP | WS_CLIPCHILDREN, 0, 0, 320, 240, nullptr, nullptr,
                                nullptr, nullptr);
    HWND hContainer = CreateWindowExW(0, L"AtlAxWin", nullptr, WS_CHILD | WS_VISIBLE | WS_CLIPCHILDREN, 0, 0, 320,
                                      240, hWnd, nullptr, nullptr, nullptr);
    ComPtr<IUnknown> control;
    ComPtr<IWMPPlayer> player;
    double dDuration = 0.0;
    if (hContainer && SUCCEEDED(CAtlAxLibrary::CreateControl(hContainer, wmp::kControlClassId)) &&
        SUCCEEDED(CAtlAxLibrary::GetControl(hContainer, &control)) &&
        SUCCEEDED(QueryTo(control, __uuidof(IWMPPlayer), player)))
    {
        // Left to start by itself, as the engine leaves it: this control reads an item's duration
        // only when it builds the item's graph to play it.
        BSTR url = SysAllocString(path.c_str());
        const HRESULT hr = player->put_URL(url);
        SysFreeString(url);
        while (SUCCEEDED(hr) && GetTickCount64() - start < kOpenLimitMs)
        {
            ComPtr<IWMPMedia> media;
            if (SUCCEEDED(player->get_currentMedia(&media)) && media && SUCCEEDED(media->get_duration(&dDuration)) &&
                dDuration > 0.0)
                break;
            Pump(2);
        }
    }
    // An open leaves the item stopped, as the engine's does: the stop is part of the time.
    if (player)
    {
        ComPtr<IWMPControls> controls;
        if (SUCCEEDED(player->get_controls(&controls)))
            controls->stop();
    }
    const ULONGLONG end = GetTickCount64();
    if (player)
        player->close();
    player.Reset();
    control.Reset();
    DestroyWindow(hWnd);
    return dDuration > 0.0 ? Milliseconds(start, end) : -1.0;
}

double EngineOpen(const char* pszName)
{
    const ULONGLONG start = GetTickCount64();
    auto host = CControlStage::ControlHost();
    TESSALY_FILEINFO info = {};
    const HRESULT hr = host->Open(CTestMedia::Path(pszName), &info);
    const ULONGLONG end = GetTickCount64();
    host->Player().CloseFile();
    return SUCCEEDED(hr) && info.dDuration > 0.0 ? Milliseconds(start, end) : -1.0;
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
        std::vector<double> engine, bare;
        int nEngineFailed = 0, nBareFailed = 0;
        for (int i = 0; i < nRounds; ++i)
        {
            const double dEngine = EngineOpen(pszName);
            const double dBare = BareOpen(CTestMedia::Path(pszName));
            // The first round of each loads the control's code and is left out of the medians.
            if (i == 0)
                continue;
            if (dEngine < 0)
                ++nEngineFailed;
            else
                engine.push_back(dEngine);
            if (dBare < 0)
                ++nBareFailed;
            else
                bare.push_back(dBare);
        }
        const double dEngine = Median(engine), dBare = Median(bare);
        std::printf("%-10s %11.1f ms %11.1f ms %7.2f %9d/%d\n", pszName, dEngine, dBare,
                    dEngine > 0 && dBare > 0 ? dEngine / dBare : 0.0, nEngineFailed, nBareFailed);
        std::fflush(stdout);
    }
    CoUninitialize();
    return 0;
}
