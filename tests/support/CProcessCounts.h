// What a leak check reads of this process: kernel handles, window-system objects, threads and
// private committed memory, taken together so cycles can be compared before and after.
#pragma once

#include <windows.h>

#include <tlhelp32.h>

#include <cstdio>

struct CProcessCounts
{
    long lHandles = 0;
    long lUserObjects = 0;
    long lGdiObjects = 0;
    long lThreads = 0;
    long lPrivateKb = 0;

    static CProcessCounts Take()
    {
        CProcessCounts counts;
        DWORD dwHandles = 0;
        GetProcessHandleCount(GetCurrentProcess(), &dwHandles);
        counts.lHandles = static_cast<long>(dwHandles);
        counts.lUserObjects = static_cast<long>(GetGuiResources(GetCurrentProcess(), GR_USEROBJECTS));
        counts.lGdiObjects = static_cast<long>(GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS));
        HANDLE hSnapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
        THREADENTRY32 entry = {};
        entry.dwSize = sizeof(entry);
        for (BOOL b = Thread32First(hSnapshot, &entry); b; b = Thread32Next(hSnapshot, &entry))
            counts.lThreads += entry.th32OwnerProcessID == GetCurrentProcessId();
        CloseHandle(hSnapshot);
        MEMORY_BASIC_INFORMATION mbi;
        SIZE_T cbTotal = 0;
        for (BYTE* p = nullptr; VirtualQuery(p, &mbi, sizeof(mbi)) == sizeof(mbi);
             p = static_cast<BYTE*>(mbi.BaseAddress) + mbi.RegionSize)
        {
            if (mbi.State == MEM_COMMIT && mbi.Type == MEM_PRIVATE)
                cbTotal += mbi.RegionSize;
        }
        counts.lPrivateKb = static_cast<long>(cbTotal / 1024);
        return counts;
    }

    CProcessCounts operator-(const CProcessCounts& before) const
    {
        return {lHandles - before.lHandles, lUserObjects - before.lUserObjects, lGdiObjects - before.lGdiObjects,
                lThreads - before.lThreads, lPrivateKb - before.lPrivateKb};
    }

    void Print(const char* pszWhat) const
    {
        std::printf("%s: handles %+ld, USER objects %+ld, GDI objects %+ld, threads %+ld, private memory %+ld KiB\n",
                    pszWhat, lHandles, lUserObjects, lGdiObjects, lThreads, lPrivateKb);
    }
};
