// Plays a range of audio CD tracks. The dispatcher keeps it apart from the back-ends it picks by
// extension and reaches it through OpenCD and GetDuration.
#pragma once

#include "dispatch/CPlayerBase.h"

class CDDAGraph : public CPlayerBase
{
public:
    // S_OK when the range was loaded, 1 when it was refused.
    virtual HRESULT OpenCD(WCHAR wcDrive, WORD wStartTrack, WORD wEndTrack);
    // The current track's length in whole seconds.
    virtual HRESULT GetDuration(double* pdDuration);
};
