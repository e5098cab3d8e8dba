// Shows still pictures inside the host's window through GDI+.
#pragma once

#include "dispatch/CPlayerBase.h"

class CGdiplusPictViewer : public CPlayerBase
{
public:
    CGdiplusPictViewer();

    HRESULT OpenFile(LPCWSTR pwszFile, DWORD dwOpenFlags, DWORD dwPlaybackFlags) override;
};
