// How many GDI objects the process holds, for leak checks.
#pragma once

#include <windows.h>

inline int LiveGdiObjects()
{
    if (const DWORD dwCount = GetGuiResources(GetCurrentProcess(), GR_GDIOBJECTS))
        return static_cast<int>(dwCount);
    // Wine answers 0 above. Its GDI handles carry the table index in their low word, and a handle
    // with a zero high word names whatever object lives at that index: the table can be walked.
    int nLive = 0;
    for (ULONG_PTR index = 0; index <= 0xFFFF; ++index)
        nLive += GetObjectType(reinterpret_cast<HGDIOBJ>(index)) != 0;
    return nLive;
}
