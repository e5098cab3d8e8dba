// player [options] FILE...: a small Win32 host of the Tessaly engine that uses it only through its
// published COM contract, as any application would.
#include <windows.h>
#include <commctrl.h>
#include <shellapi.h>

#include "hosts/common/CComApartment.h"
#include "hosts/common/CResultCode.h"
#include "hosts/common/CStdOut.h"
#include "hosts/common/CUtf8.h"
#include "hosts/player/CEventLog.h"
#include "hosts/player/CPlayerOptions.h"
#include "hosts/player/CPlayerWindow.h"

namespace {

// Messages go to the console when there is one; a player started from the desktop shows them.
void Tell(const std::wstring& text, bool bError)
{
    const CStdOut out(bError ? CStdOut::Error : CStdOut::Output);
    if (GetStdHandle(bError ? STD_ERROR_HANDLE : STD_OUTPUT_HANDLE))
        out.Write(CUtf8::FromWide(text));
    else
        MessageBoxW(nullptr, text.c_str(), L"Tessaly Player", bError ? MB_ICONERROR : MB_ICONINFORMATION);
}

} // namespace

int WINAPI wWinMain(HINSTANCE, HINSTANCE, LPWSTR, int nShow)
{
    int argc = 0;
    LPWSTR* argv = CommandLineToArgvW(GetCommandLineW(), &argc);
    CPlayerOptions options;
    const bool bParsed = argv && options.Parse(argc, argv);
    LocalFree(argv);
    if (!bParsed)
    {
        Tell(L"player: " + options.Error() + L"\n" + CPlayerOptions::Usage(), true);
        return 2;
    }
    if (options.Help())
    {
        Tell(CPlayerOptions::Usage(), false);
        return 0;
    }

    INITCOMMONCONTROLSEX icc = {sizeof(icc), ICC_BAR_CLASSES | ICC_PROGRESS_CLASS | ICC_STANDARD_CLASSES};
    InitCommonControlsEx(&icc);
    CComApartment apartment;
    const CEventLog log(options.Log());
    CPlayerWindow window(options, log);
    const HRESULT hr = FAILED(apartment.Result()) ? apartment.Result() : window.Create(nShow);
    if (FAILED(hr))
    {
        log.Write("error", CResultCode::HexAndName(hr) + L" start: " + CResultCode::Message(hr));
        Tell(L"player: cannot start the engine: " + CResultCode::Message(hr) + L" (" + CResultCode::HexAndName(hr) + L")\n",
             true);
        return 3;
    }

    MSG msg;
    while (GetMessageW(&msg, nullptr, 0, 0) > 0)
    {
        if (msg.message == WM_KEYDOWN && window.HandleKey(msg.wParam))
            continue;
        TranslateMessage(&msg);
        DispatchMessageW(&msg);
    }
    return window.ExitCode();
}
