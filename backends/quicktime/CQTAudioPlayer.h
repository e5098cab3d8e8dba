// Plays the audio formats that QuickTime handles.
#pragma once

#include "dispatch/CPlayerBase.h"

class CQTAudioPlayer : public CPlayerBase
{
public:
    CQTAudioPlayer();

    HRESULT OpenFile(LPCWSTR pwszFile, DWORD dwOpenFlags, DWORD dwPlaybackFlags) override;
};
