#include "backends/quicktime/CQTBackEnd.h"

HRESULT CQTBackEnd::GetFileInfo(BOOL* pbAudioOnly, double* pdDuration, BOOL* pbSeekable, DWORD* pdwWidth,
                                DWORD* pdwHeight, BOOL* pbPicture)
{
    const HRESULT hr = CheckQuickTime(true);
    if (FAILED(hr))
        return hr;
    return m_pQT->GetFileInfo(pbAudioOnly, pdDuration, pbSeekable, pdwWidth, pdwHeight, pbPicture);
}

HRESULT CQTBackEnd::Play()
{
    const HRESULT hr = CheckQuickTime(true);
    return FAILED(hr) ? hr : m_pQT->Play();
}

HRESULT CQTBackEnd::Pause()
{
    const HRESULT hr = CheckQuickTime(true);
    return FAILED(hr) ? hr : m_pQT->Pause();
}

HRESULT CQTBackEnd::Resume()
{
    const HRESULT hr = CheckQuickTime(true);
    return FAILED(hr) ? hr : m_pQT->Resume();
}

HRESULT CQTBackEnd::Stop()
{
    const HRESULT hr = CheckQuickTime(true);
    return FAILED(hr) ? hr : m_pQT->Stop();
}

HRESULT CQTBackEnd::SetCurTime(double dSeconds)
{
    const HRESULT hr = CheckQuickTime(true);
    return FAILED(hr) ? hr : m_pQT->SetCurTime(dSeconds);
}

HRESULT CQTBackEnd::GetCurTime(double* pdSeconds)
{
    const HRESULT hr = CheckQuickTime(true);
    return FAILED(hr) ? hr : m_pQT->GetCurTime(pdSeconds);
}

void CQTBackEnd::SetEventHandlerWindow(HWND hWnd)
{
    if (m_pQT)
        m_pQT->SetNotifyWindow(hWnd);
}
