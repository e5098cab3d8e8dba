#include "hosts/player/CEventLog.h"

#include <cstdio>

#include "hosts/common/CUtf8.h"

CEventLog::CEventLog(bool bEnabled) : m_bEnabled(bEnabled), m_out(CStdOut::Output)
{
    QueryPerformanceFrequency(&m_liFrequency);
    QueryPerformanceCounter(&m_liStart);
}

void CEventLog::Write(const char* pszEvent, const std::wstring& detail) const
{
    if (!m_bEnabled)
        return;
    LARGE_INTEGER liNow;
    QueryPerformanceCounter(&liNow);
    const double dSeconds =
        static_cast<double>(liNow.QuadPart - m_liStart.QuadPart) / static_cast<double>(m_liFrequency.QuadPart);
    char szStamp[32];
    snprintf(szStamp, sizeof(szStamp), "[%8.3f] ", dSeconds);
    std::string line = std::string(szStamp) + pszEvent;
    if (!detail.empty())
        line += " " + CUtf8::FromWide(detail);
    m_out.WriteLine(line);
}
