// Plays the common audio and video formats through DirectShow filter graphs.
#pragma once

#include "dispatch/CPlayerBase.h"

class CDShowPlayer : public CPlayerBase
{
public:
    CDShowPlayer();

    HRESULT OpenFile(LPCWSTR pwszFile, DWORD dwOpenFlags, DWORD dwPlaybackFlags) override;
};
