#include "hosts/player/CPlayerEvents.h"

STDMETHODIMP CPlayerEvents::QueryInterface(REFIID riid, void** ppv)
{
    if (!ppv)
        return E_POINTER;
    if (riid == IID_IUnknown || riid == IID_IPlayEvents)
    {
        *ppv = static_cast<IPlayEvents*>(this);
        AddRef();
        return S_OK;
    }
    *ppv = nullptr;
    return E_NOINTERFACE;
}

STDMETHODIMP_(ULONG) CPlayerEvents::AddRef()
{
    return static_cast<ULONG>(InterlockedIncrement(&m_lRef));
}

STDMETHODIMP_(ULONG) CPlayerEvents::Release()
{
    const LONG lRef = InterlockedDecrement(&m_lRef);
    if (lRef == 0)
        delete this;
    return static_cast<ULONG>(lRef);
}

STDMETHODIMP CPlayerEvents::OnPlayComplete()
{
    if (m_pListener)
        m_pListener->OnPlaybackComplete();
    return S_OK;
}

STDMETHODIMP CPlayerEvents::OnPlayError(HRESULT hrError)
{
    if (m_pListener)
        m_pListener->OnPlaybackError(hrError);
    return S_OK;
}

STDMETHODIMP CPlayerEvents::OnPlayProgress(double dProgress, TESSALY_PLAYBACK_STATE state)
{
    if (m_pListener)
        m_pListener->OnPlaybackProgress(dProgress, static_cast<int>(state));
    return S_OK;
}
