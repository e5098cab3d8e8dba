#include "hosts/soak/CProcessGauge.h"

#include <psapi.h>
#include <tlhelp32.h>

#include <cstdio>

namespace {

long OpenHandles()
{
    DWORD dwCount = 0;
    if (GetProcessHandleCount(GetCurrentProcess(), &dwCount) && dwCount != 0)
        return static_cast<long>(dwCount);
    // Handle values are multiples of four; a million of them is far beyond any sound process.
    long lOpen = 0;
    for (ULONG_PTR value = 4; value < 0x400000; value += 4)
    {
        DWORD dwFlags = 0;
        lOpen += GetHandleInformation(reinterpret_cast<HANDLE>(value), &dwFlags) ? 1 : 0;
    }
    return lOpen;
}

long Threads()
{
    long lThreads = 0;
    HANDLE hSnapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    if (hSnapshot == INVALID_HANDLE_VALUE)
        return 0;
    THREADENTRY32 entry = {};
    entry.dwSize = sizeof(entry);
    for (BOOL b = Thread32First(hSnapshot, &entry); b; b = Thread32Next(hSnapshot, &entry))
        lThreads += entry.th32OwnerProcessID == GetCurrentProcessId() ? 1 : 0;
    CloseHandle(hSnapshot);
    return lThreads;
}

} // namespace

CProcessGauge CProcessGauge::Read()
{
    CProcessGauge gauge;
    gauge.lHandles = OpenHandles();
    gauge.lUserObjects = static_cast<long>(GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS));
    gauge.lGdiObjects = static_cast<long>(GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS));
    gauge.lThreads = Threads();
    PROCESS_MEMORY_COUNTERS_EX counters = {};
    counters.cb = sizeof(counters);
    if (GetProcessMemoryInfo(GetCurrentProcess(), reinterpret_cast<PROCESS_MEMORY_COUNTERS*>(&counters),
                             sizeof(counters)))
        gauge.llPrivateBytes = static_cast<long long>(counters.PrivateUsage);
    if (gauge.llPrivateBytes == 0) // not kept by every platform: add up the committed private regions
    {
        MEMORY_BASIC_INFORMATION mbi;
        for (BYTE* p = nullptr; VirtualQuery(p, &mbi, sizeof(mbi)) == sizeof(mbi);
             p = static_cast<BYTE*>(mbi.BaseAddress) + mbi.RegionSize)
        {
            if (mbi.State == MEM_COMMIT && mbi.Type == MEM_PRIVATE)
                gauge.llPrivateBytes += static_cast<long long>(mbi.RegionSize);
        }
    }
    return gauge;
}

std::string CProcessGauge::Line() const
{
    char sz[160];
    std::snprintf(sz, sizeof(sz), "handles %ld  USER %ld  GDI %ld  threads %ld  private %.1f MB", lHandles,
                  lUserObjects, lGdiObjects, lThreads, static_cast<double>(llPrivateBytes) / (1024.0 * 1024.0));
    return sz;
}
