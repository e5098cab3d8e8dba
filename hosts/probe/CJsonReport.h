// One JSON document for programs: {"files": [...], "summary": {...}}, written as the run goes so
// that a long run's output starts at once.
#pragma once

#include <string>

#include "hosts/probe/CReport.h"

class CJsonReport : public CReport
{
public:
    using CReport::CReport;

    void Begin() override;
    void Add(const CProbeResult& result) override;
    void End(const CProbeSummary& summary) override;

    // A JSON string literal, quotes included, of UTF-16 text.
    static std::string Quote(const std::wstring& text);

private:
    bool m_bFirst = true;
};
