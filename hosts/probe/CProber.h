// Asks the engine about files through one QueryFileInfo object, reused for every file so that each
// back-end starts only once in a run.
#pragma once

#include "engine/ComPtr.h"
#include "engine/TessalyContract.h"
#include "hosts/probe/CProbeResult.h"
#include "hosts/probe/CProbeTarget.h"

class CProber
{
public:
    HRESULT Create();
    CProbeResult Probe(const CProbeTarget& target);

private:
    ComPtr<IQueryFileInfo> m_query;
};
