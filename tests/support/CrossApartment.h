// A host in another apartment: the interface is used through the proxy from a thread of the
// multi-threaded apartment while this apartment serves the calls from its message loop.
#pragma once

#include <windows.h>
#include <objbase.h>

#include <functional>
#include <thread>

// Runs call with the proxy; answers the unmarshalling's result (call does not run when it fails).
template <class T>
HRESULT CallFromAnotherApartment(T* pObject, REFIID riid, const std::function<void(T*)>& call)
{
    IStream* pStream = nullptr;
    HRESULT hr = CoMarshalInterThreadInterfaceInStream(riid, pObject, &pStream);
    if (FAILED(hr))
        return hr;
    HANDLE hDone = CreateEventW(nullptr, TRUE, FALSE, nullptr);
    std::thread caller([&] {
        T* pRemote = nullptr;
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        hr = CoGetInterfaceAndReleaseStream(pStream, riid, reinterpret_cast<void**>(&pRemote));
        if (SUCCEEDED(hr))
        {
            call(pRemote);
            pRemote->Release();
        }
        CoUninitialize();
        SetEvent(hDone);
    });
    MSG msg;
    while (MsgWaitForMultipleObjects(1, &hDone, FALSE, 30000, QS_ALLINPUT) == WAIT_OBJECT_0 + 1)
        while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE))
            DispatchMessageW(&msg);
    caller.join();
    CloseHandle(hDone);
    return hr;
}
