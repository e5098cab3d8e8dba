// hostile FILE: what the engine answers for one file, hostile or not, in a line of its own:
// QueryFileInfo's result, then Play's OpenFile and, when it opens, what playing it for at most
// three seconds brings (completion, an error event, or progress only), each with its time. One
// file per process, so that a script can tell a crash or a hang from an answer.
#include <windows.h>

#include <cstdio>
#include <string>

#include "engine/ComPtr.h"
#include "engine/TessalyContract.h"
#include "hosts/common/CComApartment.h"
#include "hosts/common/CFullPath.h"
#include "hosts/common/CStdOut.h"
#include "hosts/player/CEventConnection.h"
#include "hosts/player/CPlayerEvents.h"

int wmain(int argc, wchar_t** argv); // the C runtime's entry point for -municode programs

namespace {

const DWORD kPlayLimitMs = 3000;

class COutcome : public CPlaybackListener
{
public:
    void OnPlaybackProgress(double, int) override { ++nProgress; }
    void OnPlaybackComplete() override { bComplete = true; }
    void OnPlaybackError(HRESULT hr) override { hrError = hr; }

    int nProgress = 0;
    bool bComplete = false;
    HRESULT hrError = S_OK;
};

class CStopwatch
{
public:
    CStopwatch() { QueryPerformanceCounter(&m_start); }
    long Ms() const
    {
        LARGE_INTEGER now, frequency;
        QueryPerformanceCounter(&now);
        QueryPerformanceFrequency(&frequency);
        return static_cast<long>((now.QuadPart - m_start.QuadPart) * 1000 / frequency.QuadPart);
    }

private:
    LARGE_INTEGER m_start;
};

std::string Code(HRESULT hr)
{
    char sz[16];
    std::snprintf(sz, sizeof(sz), "0x%08lX", static_cast<unsigned long>(hr));
    return sz;
}

} // namespace

int wmain(int argc, wchar_t** argv)
{
    const CStdOut out(CStdOut::Output);
    if (argc != 2)
    {
        CStdOut(CStdOut::Error).WriteLine("usage: hostile FILE");
        return 2;
    }
    // Each step's answer goes to the error stream as it comes, so that a run cut off by a hang or
    // a crash still shows how far it got, and a run that shows nothing never started at all.
    const CStdOut progress(CStdOut::Error);
    progress.WriteLine("host: started");
    std::wstring path = CFullPath::Of(argv[1]);
    CComApartment apartment;
    std::string line;

    ComPtr<IQueryFileInfo> query;
    HRESULT hr = CoCreateInstance(CLSID_QueryFileInfo, nullptr, CLSCTX_INPROC_SERVER, IID_IQueryFileInfo, &query);
    if (FAILED(hr))
    {
        out.WriteLine("engine " + Code(hr));
        return 3;
    }
    TESSALY_FILEINFO info = {};
    CStopwatch queryTime;
    hr = query->GetFileInfo(&path[0], &info);
    line += "query " + Code(hr) + " " + std::to_string(queryTime.Ms()) + "ms";
    progress.WriteLine("host: " + line);
    query.Reset();

    HWND hWnd = CreateWindowExW(0, L"STATIC", L"hostile", WS_POPUP, 0, 0, 320, 240, nullptr, nullptr, nullptr, nullptr);
    ComPtr<IPlay> play;
    hr = CoCreateInstance(CLSID_Play, nullptr, CLSCTX_INPROC_SERVER, IID_IPlay, &play);
    if (SUCCEEDED(hr))
        hr = play->SetParentWindow(static_cast<LONG>(reinterpret_cast<LONG_PTR>(hWnd)));
    COutcome outcome;
    CPlayerEvents* pSink = new CPlayerEvents(&outcome);
    CEventConnection connection;
    if (SUCCEEDED(hr))
        hr = connection.Connect(play.Get(), IID_IPlayEvents, pSink);
    if (FAILED(hr))
    {
        out.WriteLine(line + " | engine " + Code(hr));
        return 3;
    }
    CStopwatch openTime;
    hr = play->OpenFile(&path[0], 0, TESSALY_PLAYBACK_FLAG_STRETCH, &info);
    line += " | open " + Code(hr) + " " + std::to_string(openTime.Ms()) + "ms";
    progress.WriteLine("host: " + line);
    if (SUCCEEDED(hr))
    {
        CStopwatch playTime;
        hr = play->PlaybackControl(TESSALY_PLAYBACK_CONTROL_PLAY, 0, nullptr);
        while (SUCCEEDED(hr) && !outcome.bComplete && outcome.hrError == S_OK && playTime.Ms() < static_cast<long>(kPlayLimitMs))
        {
            MsgWaitForMultipleObjects(0, nullptr, FALSE, 50, QS_ALLINPUT);
            MSG msg;
            while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE))
                DispatchMessageW(&msg);
        }
        line += " | play ";
        if (FAILED(hr))
            line += Code(hr);
        else if (outcome.bComplete)
            line += "complete";
        else if (outcome.hrError != S_OK)
            line += "error " + Code(outcome.hrError);
        else
            line += "progress " + std::to_string(outcome.nProgress);
        line += " " + std::to_string(playTime.Ms()) + "ms";
        progress.WriteLine("host: " + line);
        CStopwatch closeTime;
        hr = play->CloseFile();
        line += " | close " + Code(hr) + " " + std::to_string(closeTime.Ms()) + "ms";
    }
    connection.Disconnect();
    pSink->Detach();
    pSink->Release();
    play.Reset();
    DestroyWindow(hWnd);
    out.WriteLine(line);
    return 0;
}
