// Figures, not a test: how fast one reused QueryFileInfo object answers for a folder of media,
// and what the first query of each kind of file costs (the back-end's start-up).
//   query_benchmark FOLDER [ROUNDS]
#include <windows.h>
#include <objbase.h>

#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "engine/ComPtr.h"
#include "engine/TessalyContract.h"

namespace {

double Seconds(const LARGE_INTEGER& from, const LARGE_INTEGER& to)
{
    LARGE_INTEGER frequency;
    QueryPerformanceFrequency(&frequency);
    return static_cast<double>(to.QuadPart - from.QuadPart) / static_cast<double>(frequency.QuadPart);
}

std::vector<std::wstring> FilesIn(const std::wstring& folder)
{
    std::vector<std::wstring> files;
    WIN32_FIND_DATAW fd;
    HANDLE hFind = FindFirstFileW((folder + L"\\*").c_str(), &fd);
    if (hFind == INVALID_HANDLE_VALUE)
        return files;
    do
    {
        if (!(fd.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY))
            files.push_back(folder + L"\\" + fd.cFileName);
    } while (FindNextFileW(hFind, &fd));
    FindClose(hFind);
    return files;
}

std::string Narrow(const std::wstring& text)
{
    char sz[MAX_PATH * 2] = {};
    WideCharToMultiByte(CP_UTF8, 0, text.c_str(), -1, sz, sizeof(sz) - 1, nullptr, nullptr);
    return sz;
}

} // namespace

int wmain(int argc, wchar_t** argv);

int wmain(int argc, wchar_t** argv)
{
    if (argc < 2)
    {
        std::fprintf(stderr, "usage: query_benchmark FOLDER [ROUNDS]\n");
        return 2;
    }
    const int nRounds = argc > 2 ? _wtoi(argv[2]) : 5;
    const std::vector<std::wstring> files = FilesIn(argv[1]);
    if (files.empty())
    {
        std::fprintf(stderr, "no files in %s\n", Narrow(argv[1]).c_str());
        return 2;
    }
    CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
    int rc = 0;
    {
        ComPtr<IQueryFileInfo> query;
        HRESULT hr = CoCreateInstance(CLSID_QueryFileInfo, nullptr, CLSCTX_INPROC_SERVER, IID_IQueryFileInfo,
                                      &query);
        if (FAILED(hr))
        {
            std::fprintf(stderr, "QueryFileInfo not available (0x%08lx): register the engine first\n", hr);
            rc = 1;
        }
        else
        {
            // First pass: each file is the first of its kind to this object, so back-ends start.
            std::printf("first query of each file (back-end start-up included on first of its kind):\n");
            for (const std::wstring& file : files)
            {
                std::wstring path = file;
                TESSALY_FILEINFO info = {};
                LARGE_INTEGER t0, t1;
                QueryPerformanceCounter(&t0);
                hr = query->GetFileInfo(&path[0], &info);
                QueryPerformanceCounter(&t1);
                std::printf("  %-40s %8.1f ms  0x%08lx\n", Narrow(file.substr(file.rfind(L'\\') + 1)).c_str(),
                            1000.0 * Seconds(t0, t1), hr);
            }
            // Then the steady state: every back-end already prepared.
            LARGE_INTEGER t0, t1;
            QueryPerformanceCounter(&t0);
            int nQueries = 0, nFailed = 0;
            for (int round = 0; round < nRounds; ++round)
            {
                for (const std::wstring& file : files)
                {
                    std::wstring path = file;
                    TESSALY_FILEINFO info = {};
                    if (FAILED(query->GetFileInfo(&path[0], &info)))
                        ++nFailed;
                    ++nQueries;
                }
            }
            QueryPerformanceCounter(&t1);
            const double dSeconds = Seconds(t0, t1);
            std::printf("%d queries over %zu files in %.2f s: %.1f queries/s (%d failed)\n", nQueries, files.size(),
                        dSeconds, nQueries / dSeconds, nFailed);
        }
    }
    CoUninitialize();
    return rc;
}
