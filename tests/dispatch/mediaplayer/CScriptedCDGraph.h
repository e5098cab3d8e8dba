// The test CD back-end: a scripted back-end that also records the CD operations.
#pragma once

#include "CScriptedBackEnd.h"
#include "backends/cdda/CDDAGraph.h"

class CScriptedCDGraph : public CScriptedBackEnd<CDDAGraph>
{
public:
    CScriptedCDGraph(CCallLog& log, const std::string& name)
        : CScriptedBackEnd<CDDAGraph>(log, name, nullptr, 0)
    {
    }

    double dDuration = 0.0;

    HRESULT OpenCD(WCHAR wcDrive, WORD wStartTrack, WORD wEndTrack) override
    {
        return Answer("OpenCD", Format("(%c,%u,%u)", static_cast<char>(wcDrive), wStartTrack, wEndTrack));
    }
    HRESULT GetDuration(double* pdDuration) override
    {
        const HRESULT hr = Answer("GetDuration");
        *pdDuration = dDuration;
        return hr;
    }
};
