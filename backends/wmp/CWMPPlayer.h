// Plays Windows Media files through the Windows Media Player control.
#pragma once

#include "dispatch/CPlayerBase.h"

class CWMPPlayer : public CPlayerBase
{
public:
    CWMPPlayer();

    HRESULT OpenFile(LPCWSTR pwszFile, DWORD dwOpenFlags, DWORD dwPlaybackFlags) override;
};
