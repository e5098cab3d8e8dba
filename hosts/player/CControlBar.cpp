#include "hosts/player/CControlBar.h"

#include <commctrl.h>

#include <cstdio>
#include <string>

namespace {

const int kButtonWidth = 56;
const int kRowHeight = 30;
const int kTimeWidth = 110;
const int kGap = 4;
const int kProgressSteps = 1000;

struct ButtonDef
{
    int nId;
    const wchar_t* pwszText;
};

const ButtonDef kButtons[] = {
    {CControlBar::IdOpen, L"Open"},     {CControlBar::IdPrevious, L"|<"}, {CControlBar::IdPlayPause, L"Play"},
    {CControlBar::IdStop, L"Stop"},     {CControlBar::IdBack, L"<< 5s"}, {CControlBar::IdForward, L"5s >>"},
    {CControlBar::IdNext, L">|"},
};

std::wstring Clock(double dSeconds)
{
    if (!(dSeconds > 0.0))
        dSeconds = 0.0;
    const unsigned uTenths = static_cast<unsigned>(dSeconds * 10.0 + 0.5);
    wchar_t wsz[24];
    swprintf(wsz, 24, L"%u:%02u.%u", uTenths / 600, uTenths / 10 % 60, uTenths % 10);
    return wsz;
}

} // namespace

void CControlBar::Create(HWND hParent, HFONT hFont)
{
    HINSTANCE hInstance = reinterpret_cast<HINSTANCE>(GetWindowLongPtrW(hParent, GWLP_HINSTANCE));
    size_t i = 0;
    for (const ButtonDef& def : kButtons)
    {
        m_hButtons[i] = CreateWindowExW(0, L"BUTTON", def.pwszText, WS_CHILD | WS_VISIBLE | BS_PUSHBUTTON, 0, 0, 0, 0,
                                        hParent, reinterpret_cast<HMENU>(static_cast<INT_PTR>(def.nId)), hInstance, nullptr);
        SendMessageW(m_hButtons[i], WM_SETFONT, reinterpret_cast<WPARAM>(hFont), FALSE);
        if (def.nId == IdPlayPause)
            m_hPlayPause = m_hButtons[i];
        ++i;
    }
    m_hProgress = CreateWindowExW(0, PROGRESS_CLASSW, nullptr, WS_CHILD | WS_VISIBLE | PBS_SMOOTH, 0, 0, 0, 0, hParent,
                                  nullptr, hInstance, nullptr);
    SendMessageW(m_hProgress, PBM_SETRANGE32, 0, kProgressSteps);
    m_hTime = CreateWindowExW(0, L"STATIC", L"0:00.0 / 0:00.0", WS_CHILD | WS_VISIBLE | SS_CENTER | SS_CENTERIMAGE, 0, 0,
                              0, 0, hParent, nullptr, hInstance, nullptr);
    SendMessageW(m_hTime, WM_SETFONT, reinterpret_cast<WPARAM>(hFont), FALSE);
}

int CControlBar::Height()
{
    return kRowHeight + 2 * kGap;
}

void CControlBar::Layout(int nTop, int nWidth)
{
    int x = kGap;
    const int y = nTop + kGap;
    for (HWND hButton : m_hButtons)
    {
        MoveWindow(hButton, x, y, kButtonWidth, kRowHeight, TRUE);
        x += kButtonWidth + kGap;
    }
    const int nProgressWidth = nWidth - x - kTimeWidth - 2 * kGap;
    MoveWindow(m_hProgress, x, y + kRowHeight / 4, nProgressWidth > 20 ? nProgressWidth : 20, kRowHeight / 2, TRUE);
    MoveWindow(m_hTime, nWidth - kTimeWidth - kGap, y, kTimeWidth, kRowHeight, TRUE);
}

void CControlBar::ShowProgress(double dPosition, double dDuration)
{
    int nStep = 0;
    if (dDuration > 0.0 && dPosition > 0.0)
        nStep = dPosition >= dDuration ? kProgressSteps : static_cast<int>(dPosition / dDuration * kProgressSteps);
    SendMessageW(m_hProgress, PBM_SETPOS, static_cast<WPARAM>(nStep), 0);
    SetWindowTextW(m_hTime, (Clock(dPosition) + L" / " + Clock(dDuration)).c_str());
}

void CControlBar::ShowPaused(bool bPaused)
{
    SetWindowTextW(m_hPlayPause, bPaused ? L"Play" : L"Pause");
}
