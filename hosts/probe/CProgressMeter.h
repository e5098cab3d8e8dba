// Shows on standard error how far a long probe run is, so that a folder of thousands of files does
// not look like a hang; short runs print nothing.
#pragma once

#include <windows.h>

#include <string>

#include "hosts/common/CStdOut.h"

class CProgressMeter
{
public:
    CProgressMeter(const CStdOut& out, size_t nTotal, bool bEnabled);
    void Step(size_t nDone, const std::wstring& path);
    void End();

private:
    const CStdOut& m_out;
    size_t m_nTotal;
    bool m_bEnabled;
    bool m_bTerminal;
    bool m_bShown = false;
    ULONGLONG m_ullStart;
    ULONGLONG m_ullLast;
};
