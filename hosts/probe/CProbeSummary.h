// Counts of a probe run, for the closing lines: how many files, how many failed and with which
// codes, how much media, and how fast the engine answered.
#pragma once

#include <windows.h>

#include <map>

#include "hosts/probe/CProbeResult.h"

class CProbeSummary
{
public:
    void Add(const CProbeResult& result);
    void SetElapsed(double dSeconds) { m_dElapsed = dSeconds; }

    unsigned Files() const { return m_nFiles; }
    unsigned Succeeded() const { return m_nFiles - Failed(); }
    unsigned Failed() const;
    double MediaSeconds() const { return m_dMedia; }
    double Elapsed() const { return m_dElapsed; }
    double QueriesPerSecond() const { return m_dElapsed > 0.0 ? m_nFiles / m_dElapsed : 0.0; }
    // Failures by result code, in the order of the codes' values.
    const std::map<HRESULT, unsigned>& Failures() const { return m_failures; }

private:
    unsigned m_nFiles = 0;
    double m_dMedia = 0.0;
    double m_dElapsed = 0.0;
    std::map<HRESULT, unsigned> m_failures;
};
