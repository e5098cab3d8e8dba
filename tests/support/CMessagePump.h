// The host thread's message loop as a test drives it: dispatch whatever arrives until a
// condition holds or the time is up.
#pragma once

#include <windows.h>

#include <functional>

class CMessagePump
{
public:
    static bool PumpUntil(const std::function<bool()>& done, DWORD dwTimeoutMs)
    {
        const ULONGLONG start = GetTickCount64();
        for (;;)
        {
            MSG msg;
            while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE))
            {
                TranslateMessage(&msg);
                DispatchMessageW(&msg);
            }
            if (done())
                return true;
            const ULONGLONG elapsed = GetTickCount64() - start;
            if (elapsed >= dwTimeoutMs)
                return false;
            MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(dwTimeoutMs - elapsed), QS_ALLINPUT);
        }
    }

    static void PumpFor(DWORD dwMs)
    {
        PumpUntil([] { return false; }, dwMs);
    }
};
