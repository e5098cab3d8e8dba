#include "hosts/probe/CProgressMeter.h"

#include <cstdio>

#include "hosts/common/CUtf8.h"

namespace {

// Quiet for runs shorter than this, then one report per period.
const ULONGLONG kFirstReportMs = 2000;
const ULONGLONG kTerminalPeriodMs = 250;
const ULONGLONG kLinePeriodMs = 5000;

} // namespace

CProgressMeter::CProgressMeter(const CStdOut& out, size_t nTotal, bool bEnabled)
    : m_out(out), m_nTotal(nTotal), m_bEnabled(bEnabled), m_bTerminal(out.IsTerminal()),
      m_ullStart(GetTickCount64()), m_ullLast(m_ullStart)
{
}

void CProgressMeter::Step(size_t nDone, const std::wstring& path)
{
    if (!m_bEnabled)
        return;
    const ULONGLONG ullNow = GetTickCount64();
    if (ullNow - m_ullStart < kFirstReportMs || ullNow - m_ullLast < (m_bTerminal ? kTerminalPeriodMs : kLinePeriodMs))
        return;
    m_ullLast = ullNow;
    char sz[64];
    snprintf(sz, sizeof(sz), "probe: %u of %u files (%u%%) ", static_cast<unsigned>(nDone),
             static_cast<unsigned>(m_nTotal), static_cast<unsigned>(m_nTotal ? nDone * 100 / m_nTotal : 100));
    if (m_bTerminal)
    {
        // Only the file's name, so the line fits and can be redrawn in place.
        const size_t nSlash = path.find_last_of(L"\\/");
        std::string name = CUtf8::FromWide(nSlash == std::wstring::npos ? path : path.substr(nSlash + 1));
        if (name.size() > 40)
            name = name.substr(0, 37) + "...";
        m_out.Write("\r" + std::string(sz) + name + "\x1b[K");
    }
    else
        m_out.WriteLine(std::string(sz) + CUtf8::FromWide(path));
    m_bShown = true;
}

void CProgressMeter::End()
{
    if (m_bShown && m_bTerminal)
        m_out.Write("\r\x1b[K");
}
