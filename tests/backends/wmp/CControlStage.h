// The dispatcher routed to the control for every Windows Media file; opens and plays made again
// (up to four times, printed) when the busy platform's graph behind the control renders nothing,
// as the DirectShow tests do for the same platform fault; what the control says of its item.
#pragma once

#include <cstdio>
#include <cwchar>
#include <memory>
#include <string>

#include "CPlaybackHost.h"
#include "CTestMedia.h"
#include "backends/wmp/CAtlAxLibrary.h"
#include "backends/wmp/WMPInterfaces.h"
#include "dispatch/CWindowsMediaRoute.h"
#include "engine/ComPtr.h"

struct CControlStage
{
    struct CEveryFileRoute : CWindowsMediaRoute
    {
        bool PrefersMediaPlayerControl(LPCWSTR) const override { return true; }
    };

    static std::unique_ptr<CPlaybackHost> ControlHost(int nWidth = 320, int nHeight = 240)
    {
        return std::make_unique<CPlaybackHost>(nWidth, nHeight, std::make_unique<CEveryFileRoute>());
    }
    // Opened again while the control reports the item open with no duration.
    static HRESULT OpenRendered(CPlaybackHost& host, const char* pszName, TESSALY_FILEINFO* pInfo = nullptr)
    {
        TESSALY_FILEINFO info = {};
        HRESULT hr = host.Open(CTestMedia::Path(pszName), pInfo ? pInfo : &info);
        for (int nAttempt = 1; nAttempt < 4 && SUCCEEDED(hr) && (pInfo ? pInfo : &info)->dDuration <= 0.0; ++nAttempt)
        {
            std::printf("the platform rendered nothing of %s behind the control; opening it again\n", pszName);
            host.Player().CloseFile();
            hr = host.Open(CTestMedia::Path(pszName), pInfo ? pInfo : &info);
        }
        return hr;
    }
    // Plays, opened and played again while the position does not move in 400 ms. Returns the tick
    // at which the play that moved was asked for; 0 when none moved.
    static ULONGLONG PlayRendered(CPlaybackHost& host, const char* pszName)
    {
        for (int nAttempt = 0; nAttempt < 4; ++nAttempt)
        {
            const ULONGLONG start = GetTickCount64();
            if (host.Player().Play() != S_OK)
                return 0;
            host.PumpFor(400);
            if (!host.Progress().empty() && host.Progress().back() > 0.0)
                return start;
            std::printf("the platform rendered nothing of %s when the control played it; opening it again\n", pszName);
            host.Player().CloseFile();
            host.events.clear();
            if (FAILED(OpenRendered(host, pszName)))
                return 0;
        }
        return 0;
    }
    // The control's container window under hWnd, or null.
    static HWND FindContainer(HWND hWnd)
    {
        HWND hContainer = nullptr;
        EnumChildWindows(hWnd, KeepIfContainer, reinterpret_cast<LPARAM>(&hContainer));
        return hContainer;
    }
    static BOOL CALLBACK KeepIfContainer(HWND hWnd, LPARAM lParam)
    {
        wchar_t szClass[32] = {};
        GetClassNameW(hWnd, szClass, 32);
        if (wcscmp(szClass, L"AtlAxWin"))
            return TRUE;
        *reinterpret_cast<HWND*>(lParam) = hWnd;
        return FALSE;
    }
    // The media type the hosted control names for its item ("" when it names none).
    static std::wstring ControlMediaType(HWND hWnd)
    {
        ComPtr<IUnknown> pControl;
        ComPtr<IWMPPlayer> pPlayer;
        ComPtr<IWMPMedia> pMedia;
        BSTR bstrName = SysAllocString(L"MediaType"), bstrType = nullptr;
        if (SUCCEEDED(CAtlAxLibrary::GetControl(FindContainer(hWnd), &pControl)) &&
            SUCCEEDED(QueryTo(pControl, __uuidof(IWMPPlayer), pPlayer)) &&
            SUCCEEDED(pPlayer->get_currentMedia(&pMedia)) && pMedia)
            pMedia->getItemInfo(bstrName, &bstrType);
        const std::wstring type = bstrType ? bstrType : L"";
        return SysFreeString(bstrName), SysFreeString(bstrType), type;
    }
};
