// One line per file for a person reading a terminal, then the summary.
#pragma once

#include <string>

#include "hosts/probe/CReport.h"

class CTextReport : public CReport
{
public:
    using CReport::CReport;

    void Begin() override;
    void Add(const CProbeResult& result) override;
    void End(const CProbeSummary& summary) override;

    // "audio-only,seekable", "picture", or "-".
    static std::string Flags(const CProbeResult& result);
};
