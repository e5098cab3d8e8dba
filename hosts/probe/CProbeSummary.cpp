#include "hosts/probe/CProbeSummary.h"

#include <cmath>

void CProbeSummary::Add(const CProbeResult& result)
{
    ++m_nFiles;
    if (result.Succeeded())
    {
        if (std::isfinite(result.info.dDuration) && result.info.dDuration > 0.0)
            m_dMedia += result.info.dDuration;
    }
    else
        ++m_failures[result.hr];
}

unsigned CProbeSummary::Failed() const
{
    unsigned nFailed = 0;
    for (const auto& failure : m_failures)
        nFailed += failure.second;
    return nFailed;
}
