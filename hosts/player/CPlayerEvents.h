// The player's IPlayEvents sink: a COM object of its own, reference counted, because the engine
// holds it for as long as it is advised and may call it from inside the message loop.
#pragma once

#include "engine/TessalyContract.h"
#include "hosts/player/CPlaybackListener.h"

class CPlayerEvents : public IPlayEvents
{
public:
    // Starts with one reference, the creator's.
    explicit CPlayerEvents(CPlaybackListener* pListener) : m_pListener(pListener) {}
    // From now on events are accepted and dropped: the listener is going away.
    void Detach() { m_pListener = nullptr; }

    STDMETHODIMP QueryInterface(REFIID riid, void** ppv) override;
    STDMETHODIMP_(ULONG) AddRef() override;
    STDMETHODIMP_(ULONG) Release() override;

    STDMETHODIMP OnPlayComplete() override;
    STDMETHODIMP OnPlayError(HRESULT hrError) override;
    STDMETHODIMP OnPlayProgress(double dProgress, TESSALY_PLAYBACK_STATE state) override;

private:
    virtual ~CPlayerEvents() = default;

    CPlaybackListener* m_pListener;
    LONG m_lRef = 1;
};
