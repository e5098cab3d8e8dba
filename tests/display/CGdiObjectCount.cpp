#include "CGdiObjectCount.h"

#include <windows.h>

int CGdiObjectCount::Live()
{
    const DWORD dwCount = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS);
    if (dwCount != 0)
        return static_cast<int>(dwCount);
    // Wine answers 0 here. Its GDI handles carry the table index in their low word, and a
    // handle with a zero high word names whatever object lives at that index, so the live
    // objects can be counted by walking the table.
    int nLive = 0;
    for (ULONG_PTR index = 0; index <= 0xFFFF; ++index)
        nLive += GetObjectType(reinterpret_cast<HGDIOBJ>(index)) != 0;
    return nLive;
}
