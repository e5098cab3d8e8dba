// The --log output: every engine event and every step the player takes, one line each, stamped
// with the seconds since the player started.
#pragma once

#include <windows.h>

#include <string>

#include "hosts/common/CStdOut.h"

class CEventLog
{
public:
    explicit CEventLog(bool bEnabled);

    // "[   1.234] event detail"
    void Write(const char* pszEvent, const std::wstring& detail = std::wstring()) const;
    bool Enabled() const { return m_bEnabled; }

private:
    bool m_bEnabled;
    CStdOut m_out;
    LARGE_INTEGER m_liStart;
    LARGE_INTEGER m_liFrequency;
};
