// A host thread's message loop for tests: it dispatches until done() holds, checked after every
// message so a test can act right after the message it waits for, or until the time is up.
#pragma once

#include <windows.h>

#include <functional>

inline bool PumpMessagesUntil(const std::function<bool()>& done, DWORD dwTimeoutMs)
{
    const ULONGLONG start = GetTickCount64();
    for (;;)
    {
        MSG msg;
        while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE))
        {
            TranslateMessage(&msg);
            DispatchMessageW(&msg);
            if (done())
                return true;
        }
        if (done())
            return true;
        const ULONGLONG elapsed = GetTickCount64() - start;
        if (elapsed >= dwTimeoutMs)
            return false;
        MsgWaitForMultipleObjects(0, nullptr, FALSE, static_cast<DWORD>(dwTimeoutMs - elapsed), QS_ALLINPUT);
    }
}
