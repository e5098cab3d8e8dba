// soak [--cycles N] [--every K] [--play MS] [--bare] MEDIA...: opens, plays for a moment and closes the
// media in turn, N cycles in all (10,000 unless told), through the engine's published Play class
// in this one process, with a new Play object every 100 cycles. Before the first cycle and every
// K cycles (1,000) it prints what the process holds (handles, USER and GDI objects, threads,
// private bytes) and the failures so far. --bare runs the same cycles on bare DirectShow graphs,
// without the engine, to tell what the platform keeps. Exit code 0 when every cycle succeeded.
#include <windows.h>
#include <dshow.h>

#include <cstdio>
#include <cwchar>
#include <string>
#include <vector>

#include "engine/TessalyContract.h"
#include "hosts/common/CComApartment.h"
#include "hosts/common/CFullPath.h"
#include "hosts/common/CResultCode.h"
#include "hosts/common/CStdOut.h"
#include "hosts/common/CUtf8.h"
#include "hosts/soak/CProcessGauge.h"

int wmain(int argc, wchar_t** argv); // the C runtime's entry point for -municode programs

namespace {

const long kCyclesPerObject = 100;

void Pump(DWORD dwMilliseconds)
{
    const ULONGLONG end = GetTickCount64() + dwMilliseconds;
    for (ULONGLONG now = GetTickCount64(); now < end; now = GetTickCount64())
    {
        MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(end - now), QS_ALLINPUT);
        MSG msg;
        while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE))
        {
            TranslateMessage(&msg);
            DispatchMessageW(&msg);
        }
    }
}

// The same cycle on a bare DirectShow graph, with no engine: what the platform itself keeps.
HRESULT BareCycle(std::wstring& path, DWORD dwPlayMs)
{
    IGraphBuilder* pGraph = nullptr;
    HRESULT hr = CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder,
                                  reinterpret_cast<void**>(&pGraph));
    if (FAILED(hr))
        return hr;
    IMediaControl* pControl = nullptr;
    hr = pGraph->RenderFile(path.c_str(), nullptr);
    if (SUCCEEDED(hr))
        hr = pGraph->QueryInterface(IID_IMediaControl, reinterpret_cast<void**>(&pControl));
    if (SUCCEEDED(hr))
        hr = pControl->Run();
    Pump(dwPlayMs);
    if (pControl)
    {
        pControl->Stop();
        pControl->Release();
    }
    pGraph->Release();
    return FAILED(hr) ? hr : S_OK;
}

// One cycle: open, play for a moment, close. Answers the first failure.
HRESULT Cycle(IPlay* pPlay, std::wstring& path, DWORD dwPlayMs)
{
    TESSALY_FILEINFO info = {};
    HRESULT hr = pPlay->OpenFile(&path[0], 0, TESSALY_PLAYBACK_FLAG_STRETCH, &info);
    if (SUCCEEDED(hr))
        hr = pPlay->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr);
    Pump(dwPlayMs);
    const HRESULT hrClose = pPlay->CloseFile();
    return FAILED(hr) ? hr : hrClose;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    const CStdOut out(CStdOut::Output);
    const CStdOut err(CStdOut::Error);
    long lCycles = 10000, lEvery = 1000, lPlayMs = 60;
    bool bBare = false;
    std::vector<std::wstring> media;
    for (int i = 1; i < argc; ++i)
    {
        const std::wstring arg = argv[i];
        if ((arg == L"--cycles" || arg == L"--every" || arg == L"--play") && i + 1 < argc)
        {
            const long lValue = std::wcstol(argv[++i], nullptr, 10);
            (arg == L"--cycles" ? lCycles : arg == L"--every" ? lEvery : lPlayMs) = lValue;
        }
        else if (arg == L"--bare")
            bBare = true;
        else
            media.push_back(CFullPath::Of(arg));
    }
    if (media.empty() || lCycles <= 0 || lEvery <= 0 || lPlayMs < 0)
    {
        err.WriteLine("usage: soak [--cycles N] [--every K] [--play MS] [--bare] MEDIA...");
        return 2;
    }

    CComApartment apartment;
    HWND hWnd = CreateWindowExW(0, L"STATIC", L"soak", WS_POPUP, 0, 0, 320, 240, nullptr, nullptr, nullptr, nullptr);
    ShowWindow(hWnd, SW_SHOWNOACTIVATE);
    IPlay* pPlay = nullptr;
    long lFailures = 0;
    const ULONGLONG start = GetTickCount64();
    auto report = [&](long lCycle) {
        char sz[96];
        std::snprintf(sz, sizeof(sz), "cycle %6ld  %7.1f s  failures %ld  ", lCycle,
                      static_cast<double>(GetTickCount64() - start) / 1000.0, lFailures);
        out.WriteLine(sz + CProcessGauge::Read().Line());
    };
    report(0);
    for (long lCycle = 1; lCycle <= lCycles; ++lCycle)
    {
        if (!pPlay && !bBare)
        {
            HRESULT hr = CoCreateInstance(CLSID_Play, nullptr, CLSCTX_INPROC_SERVER, IID_IPlay,
                                          reinterpret_cast<void**>(&pPlay));
            if (SUCCEEDED(hr))
                hr = pPlay->SetParentWindow(static_cast<LONG>(reinterpret_cast<LONG_PTR>(hWnd)));
            if (FAILED(hr))
            {
                err.WriteLine("soak: cannot create a Play object: " + CUtf8::FromWide(CResultCode::HexAndName(hr)));
                return 3;
            }
        }
        std::wstring& path = media[static_cast<size_t>(lCycle - 1) % media.size()];
        const HRESULT hr = bBare ? BareCycle(path, static_cast<DWORD>(lPlayMs))
                                 : Cycle(pPlay, path, static_cast<DWORD>(lPlayMs));
        if (FAILED(hr))
        {
            ++lFailures;
            err.WriteLine("soak: cycle " + std::to_string(lCycle) + ", " + CUtf8::FromWide(path) + ": " +
                          CUtf8::FromWide(CResultCode::HexAndName(hr)));
        }
        if (pPlay && lCycle % kCyclesPerObject == 0)
        {
            pPlay->Release();
            pPlay = nullptr;
        }
        if (lCycle % lEvery == 0)
            report(lCycle);
    }
    if (pPlay)
        pPlay->Release();
    DestroyWindow(hWnd);
    return lFailures == 0 ? 0 : 1;
}
