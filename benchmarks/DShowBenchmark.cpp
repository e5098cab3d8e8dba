// Figures, not tests: for every format the DirectShow back-end plays here, how long OpenFile
// takes (the first open in the process and the median of the later ones), what it reports
// against what ffprobe read, and how long after the media's end the completion event arrives.
// Run under Wine: dshow_benchmark.exe [opens per format] [plays per format] [only files whose name holds this]
#include <windows.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "CFigures.h"
#include "CPlaybackHost.h"
#include "CTestMedia.h"

namespace {

const char* const kFiles[] = {"tone.wav", "tone.mp3", "tone.wma", "tone.ogg",  "tone.flac", "tone.mpa",
                              "clip.wmv", "clip.asf", "clip.avi", "clip.divx", "clip.mpg",  "wmv9.wmv"};


} // namespace

int main(int argc, char** argv)
{
    const int nOpens = argc > 1 ? std::max(2, std::atoi(argv[1])) : 5;
    const int nPlays = argc > 2 ? std::max(1, std::atoi(argv[2])) : 3;
    std::printf("%-10s %9s %9s %9s %9s %11s %13s %15s\n", "file", "duration", "truth", "size", "truth",
                "first open", "median open", "end->complete");
    for (const char* pszFile : kFiles)
    {
        if (argc > 3 && !std::strstr(pszFile, argv[3]))
            continue;
        CTestMedia::Truth truth;
        const bool bKnown = CTestMedia::Read(pszFile, &truth); // ffprobe does not read the patched header
        const std::wstring path = CTestMedia::Path(pszFile);
        CPlaybackHost host;
        TESSALY_FILEINFO info = {};
        std::vector<double> opens;
        for (int i = 0; i < nOpens; ++i)
        {
            host.Player().Init(path.c_str());
            const double dBefore = CFigures::NowMs();
            const HRESULT hr = host.Player().OpenFile(path.c_str(), 0, 1, &info);
            const double dAfter = CFigures::NowMs();
            if (FAILED(hr))
                std::printf("%s: OpenFile failed 0x%08lx\n", pszFile, static_cast<unsigned long>(hr));
            opens.push_back(dAfter - dBefore);
            host.Player().CloseFile();
        }
        const double dFirstOpen = opens.front();
        opens.erase(opens.begin());

        std::vector<double> lates;
        for (int i = 0; i < nPlays; ++i)
        {
            host.Open(path, &info);
            host.events.clear();
            const ULONGLONG start = GetTickCount64();
            host.Player().Play();
            if (host.PumpUntilEnd(20000) && host.Count(STREAMING_EVENT_COMPLETE))
                lates.push_back(static_cast<double>(host.events.back().tick - start) - 1000.0 * info.dDuration);
            host.Player().CloseFile();
        }
        char szSize[32];
        std::snprintf(szSize, sizeof(szSize), "%lux%lu", info.dwWidth, info.dwHeight);
        char szTruth[32] = "-";
        char szTruthSize[32] = "-";
        if (bKnown)
        {
            std::snprintf(szTruth, sizeof(szTruth), "%.3f", truth.dDuration);
            std::snprintf(szTruthSize, sizeof(szTruthSize), "%lux%lu", truth.dwWidth, truth.dwHeight);
        }
        std::printf("%-10s %9.3f %9s %9s %9s %8.0f ms %10.0f ms %12.0f ms\n", pszFile, info.dDuration, szTruth,
                    szSize, szTruthSize, dFirstOpen, CFigures::Median(opens), CFigures::Median(lates));
    }
    return 0;
}
