// What the player does with the engine's events; the event sink hands them on to it.
#pragma once

#include <windows.h>

class CPlaybackListener
{
public:
    virtual void OnPlaybackProgress(double dSeconds, int nState) = 0;
    virtual void OnPlaybackComplete() = 0;
    virtual void OnPlaybackError(HRESULT hrError) = 0;

protected:
    ~CPlaybackListener() = default;
};
