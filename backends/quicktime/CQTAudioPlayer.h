// Plays the audio formats that QuickTime handles.
#pragma once

#include "base/CPlayerBase.h"

class CQTAudioPlayer : public CPlayerBase
{
public:
    CQTAudioPlayer();

    HRESULT OpenFile(LPCWSTR pwszFile, DWORD dwOpenFlags, DWORD dwPlaybackFlags) override;
};
