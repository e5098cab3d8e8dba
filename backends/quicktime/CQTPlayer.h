// Plays QuickTime movies and shows QuickTime pictures.
#pragma once

#include "base/CPlayerBase.h"

class CQTPlayer : public CPlayerBase
{
public:
    CQTPlayer();

    HRESULT OpenFile(LPCWSTR pwszFile, DWORD dwOpenFlags, DWORD dwPlaybackFlags) override;
};
