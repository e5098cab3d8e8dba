// A host in another apartment: the interface is marshalled to a thread of the multi-threaded
// apartment and used there through the engine's proxy, while this (single-threaded) apartment
// serves the calls from its message loop, as a host's user-interface thread would.
#pragma once

#include <windows.h>
#include <objbase.h>

#include <functional>
#include <thread>

#include "engine/ComPtr.h"

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
        CoInitializeEx(nullptr, COINIT_MULTITHREADED);
        {
            ComPtr<T> remote;
            hr = CoGetInterfaceAndReleaseStream(pStream, riid, reinterpret_cast<void**>(remote.GetAddressOf()));
            if (SUCCEEDED(hr))
                call(remote.Get());
        }
        CoUninitialize();
        SetEvent(hDone);
    });
    while (MsgWaitForMultipleObjects(1, &hDone, FALSE, 30000, QS_ALLINPUT) == WAIT_OBJECT_0 + 1)
    {
        MSG msg;
        while (PeekMessageW(&msg, nullptr, 0, 0, PM_REMOVE))
            DispatchMessageW(&msg);
    }
    caller.join();
    CloseHandle(hDone);
    return hr;
}
