#include "CControlStage.h"

#include <cstdio>
#include <cwchar>

#include "CTestMedia.h"
#include "backends/wmp/CAtlAxLibrary.h"
#include "engine/ComPtr.h"

#include <wmp.h>

namespace {

BOOL CALLBACK FindAtlAxWin(HWND hWnd, LPARAM lParam)
{
    wchar_t szClass[32] = {};
    GetClassNameW(hWnd, szClass, 32);
    if (wcscmp(szClass, L"AtlAxWin") != 0)
        return TRUE;
    *reinterpret_cast<HWND*>(lParam) = hWnd;
    return FALSE;
}

} // namespace

HRESULT CControlStage::OpenRendered(CPlaybackHost& host, const char* pszName, TESSALY_FILEINFO* pInfo)
{
    TESSALY_FILEINFO info = {};
    HRESULT hr = E_FAIL;
    for (int nAttempt = 0; nAttempt < 4 && (nAttempt == 0 || (SUCCEEDED(hr) && info.dDuration <= 0.0)); ++nAttempt)
    {
        if (nAttempt > 0)
        {
            std::printf("the platform rendered nothing of %s behind the control; opening it again\n", pszName);
            host.Player().CloseFile();
        }
        hr = host.Open(CTestMedia::Path(pszName), &info);
    }
    if (pInfo)
        *pInfo = info;
    return hr;
}

ULONGLONG CControlStage::PlayRendered(CPlaybackHost& host, const char* pszName)
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

HWND CControlStage::FindContainer(HWND hWnd)
{
    HWND hContainer = nullptr;
    EnumChildWindows(hWnd, FindAtlAxWin, reinterpret_cast<LPARAM>(&hContainer));
    return hContainer;
}

std::wstring CControlStage::ControlMediaType(HWND hWnd)
{
    ComPtr<IUnknown> pControl;
    ComPtr<IWMPPlayer> pPlayer;
    ComPtr<IWMPMedia> pMedia;
    HWND hContainer = FindContainer(hWnd);
    BSTR bstrType = nullptr;
    if (hContainer && SUCCEEDED(CAtlAxLibrary::GetControl(hContainer, &pControl)) &&
        SUCCEEDED(QueryTo(pControl, __uuidof(IWMPPlayer), pPlayer)) && SUCCEEDED(pPlayer->get_currentMedia(&pMedia)) &&
        pMedia)
    {
        BSTR bstrName = SysAllocString(L"MediaType");
        pMedia->getItemInfo(bstrName, &bstrType);
        SysFreeString(bstrName);
    }
    std::wstring type = bstrType ? bstrType : L"";
    SysFreeString(bstrType);
    return type;
}
