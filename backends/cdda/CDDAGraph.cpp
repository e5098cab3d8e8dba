#include "backends/cdda/CDDAGraph.h"

#include "engine/Trace.h"

// Until the CD graph lands, Init keeps the base's failure and no range can be opened: a real
// failure code, so the dispatcher does not take the CD as open.
HRESULT CDDAGraph::OpenCD(WCHAR, WORD, WORD)
{
    TESSALY_TRACE("E:CDDAGraph::OpenCD> CD audio playback is not available");
    return E_NOTIMPL;
}

// No range has been opened, so there is no current track: its length is 0.
HRESULT CDDAGraph::GetDuration(double* pdDuration)
{
    *pdDuration = 0.0;
    return S_OK;
}
