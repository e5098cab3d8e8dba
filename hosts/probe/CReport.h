// Where a probe run's answers go, one file at a time, then the summary.
#pragma once

#include <functional>
#include <string>

#include "hosts/probe/CProbeResult.h"
#include "hosts/probe/CProbeSummary.h"

class CReport
{
public:
    // Where the text goes: standard output in the probe, a string in tests.
    using Writer = std::function<void(const std::string&)>;
    explicit CReport(Writer write) : m_write(std::move(write)) {}
    virtual ~CReport() = default;
    virtual void Begin() = 0;
    virtual void Add(const CProbeResult& result) = 0;
    virtual void End(const CProbeSummary& summary) = 0;

protected:
    Writer m_write;
};
