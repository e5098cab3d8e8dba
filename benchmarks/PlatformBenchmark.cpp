// Figures, not a test: one step of the engine or of the bare platform per process, for a tool
// that times whole processes and pairs one against the other (farm-bench --vs):
//   platform_benchmark first-query FILE        the engine's first QueryFileInfo in a fresh process
//   platform_benchmark first-render FILE       a bare first RenderFile and duration, the same way
//   platform_benchmark play FILE SECONDS       the engine plays FILE in a host window
//   platform_benchmark play-bare FILE SECONDS  a bare graph plays it, its video in the same window
//   platform_benchmark partial-renders FILE N  how often N bare RenderFile calls render only part of
//                                              FILE (the rate behind the tests' second opens)
#include <windows.h>
#include <dshow.h>

#include <cstdio>
#include <cwchar>
#include <string>

#include "engine/ComPtr.h"
#include "engine/TessalyContract.h"

int wmain(int argc, wchar_t** argv); // the C runtime's entry point for -municode programs

namespace {

void Pump(DWORD dwMilliseconds)
{
    const ULONGLONG end = GetTickCount64() + dwMilliseconds;
    for (ULONGLONG now = GetTickCount64(); now < end; now = GetTickCount64())
    {
        MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(end - now), QS_ALLINPUT);
        MSG msg;
        while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE))
            DispatchMessageW(&msg);
    }
}

HWND HostWindow()
{
    HWND hWnd = CreateWindowExW(0, L"STATIC", L"bench", WS_POPUP | WS_CLIPCHILDREN, 0, 0, 320, 240, nullptr, nullptr,
                                nullptr, nullptr);
    ShowWindow(hWnd, SW_SHOWNOACTIVATE);
    return hWnd;
}

HRESULT FirstQuery(std::wstring& path)
{
    ComPtr<IQueryFileInfo> query;
    HRESULT hr = CoCreateInstance(CLSID_QueryFileInfo, nullptr, CLSCTX_INPROC_SERVER, IID_IQueryFileInfo, &query);
    TESSALY_FILEINFO info = {};
    return FAILED(hr) ? hr : query->GetFileInfo(&path[0], &info);
}

HRESULT FirstRender(const std::wstring& path)
{
    ComPtr<IGraphBuilder> graph;
    HRESULT hr = CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder, &graph);
    if (SUCCEEDED(hr))
        hr = graph->RenderFile(path.c_str(), nullptr);
    ComPtr<IMediaSeeking> seeking;
    LONGLONG llDuration = 0;
    if (SUCCEEDED(hr))
        hr = QueryTo(graph, IID_IMediaSeeking, seeking);
    return FAILED(hr) ? hr : seeking->GetDuration(&llDuration);
}

HRESULT PlayThroughEngine(std::wstring& path, DWORD dwMs)
{
    HWND hWnd = HostWindow();
    ComPtr<IPlay> play;
    HRESULT hr = CoCreateInstance(CLSID_Play, nullptr, CLSCTX_INPROC_SERVER, IID_IPlay, &play);
    if (SUCCEEDED(hr))
        hr = play->SetParentWindow(static_cast<LONG>(reinterpret_cast<LONG_PTR>(hWnd)));
    if (SUCCEEDED(hr))
        hr = play->OpenFile(&path[0], 0, TESSALY_PLAYBACK_FLAG_STRETCH, nullptr);
    if (SUCCEEDED(hr))
        hr = play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr);
    Pump(dwMs);
    if (play)
        play->CloseFile();
    play.Reset();
    DestroyWindow(hWnd);
    return hr;
}

HRESULT PlayBare(const std::wstring& path, DWORD dwMs)
{
    HWND hWnd = HostWindow();
    ComPtr<IGraphBuilder> graph;
    HRESULT hr = CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder, &graph);
    if (SUCCEEDED(hr))
        hr = graph->RenderFile(path.c_str(), nullptr);
    ComPtr<IVideoWindow> video;
    if (SUCCEEDED(hr) && SUCCEEDED(QueryTo(graph, IID_IVideoWindow, video)) &&
        SUCCEEDED(video->put_Owner(reinterpret_cast<OAHWND>(hWnd))))
    {
        video->put_WindowStyle(WS_CHILD | WS_CLIPSIBLINGS);
        video->SetWindowPosition(0, 0, 320, 240);
    }
    ComPtr<IMediaControl> control;
    if (SUCCEEDED(hr))
        hr = QueryTo(graph, IID_IMediaControl, control);
    if (SUCCEEDED(hr))
        hr = control->Run();
    Pump(dwMs);
    if (control)
        control->Stop();
    if (video)
        video->put_Owner(0);
    graph.Reset();
    DestroyWindow(hWnd);
    return hr;
}

HRESULT CountPartialRenders(const std::wstring& path, long lRenders)
{
    long lPartial = 0, lFailed = 0;
    for (long i = 0; i < lRenders; ++i)
    {
        ComPtr<IGraphBuilder> graph;
        HRESULT hr = CoCreateInstance(CLSID_FilterGraph, nullptr, CLSCTX_INPROC_SERVER, IID_IGraphBuilder, &graph);
        if (SUCCEEDED(hr))
            hr = graph->RenderFile(path.c_str(), nullptr);
        lPartial += hr == VFW_S_PARTIAL_RENDER ? 1 : 0;
        lFailed += FAILED(hr) ? 1 : 0;
    }
    std::printf("%ld renders: %ld partial, %ld failed\n", lRenders, lPartial, lFailed);
    return S_OK;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    if (argc < 3)
    {
        std::fputs("usage: platform_benchmark first-query|first-render|play|play-bare|partial-renders FILE [SECONDS|N]\n", stderr);
        return 2;
    }
    const std::wstring mode = argv[1];
    WCHAR wszFull[MAX_PATH];
    GetFullPathNameW(argv[2], MAX_PATH, wszFull, nullptr);
    std::wstring path = wszFull;
    const DWORD dwMs = argc > 3 ? static_cast<DWORD>(std::wcstol(argv[3], nullptr, 10) * 1000) : 0;
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    HRESULT hr = E_INVALIDARG;
    if (mode == L"first-query")
        hr = FirstQuery(path);
    else if (mode == L"first-render")
        hr = FirstRender(path);
    else if (mode == L"play")
        hr = PlayThroughEngine(path, dwMs);
    else if (mode == L"play-bare")
        hr = PlayBare(path, dwMs);
    else if (mode == L"partial-renders" && argc > 3)
        hr = CountPartialRenders(path, std::wcstol(argv[3], nullptr, 10));
    CoUninitialize();
    if (FAILED(hr))
        std::fprintf(stderr, "platform_benchmark: 0x%08lX\n", static_cast<unsigned long>(hr));
    return FAILED(hr) ? 1 : 0;
}
