#include "qtml/CPortAssociation.h"

CPortAssociation::CPortAssociation(HWND hWnd)
    : m_hWnd(hWnd)
    , m_dwThreadId(GetWindowThreadProcessId(hWnd, nullptr))
{
}

bool CPortAssociation::OnWindowThread() const
{
    return GetCurrentThreadId() == m_dwThreadId;
}

void CPortAssociation::KeepTicking(bool bTicking)
{
    if (!OnWindowThread() || m_bTicking == bTicking)
        return;
    if (bTicking)
        m_bTicking = SetTimer(m_hWnd, kTickTimerId, kTickMs, nullptr) != 0;
    else
    {
        KillTimer(m_hWnd, kTickTimerId);
        m_bTicking = false;
    }
}

void CPortAssociation::End()
{
    if (m_bTicking && OnWindowThread())
        KillTimer(m_hWnd, kTickTimerId);
    m_bTicking = false;
}

UINT CPortAssociation::ServiceMessage()
{
    static const UINT message = RegisterWindowMessageW(L"Tessaly.MovieToolbox.Service");
    return message;
}
