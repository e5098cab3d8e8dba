// Writes and removes the filter's registration: HKEY_CLASSES_ROOT\CLSID\{class} with its
// friendly name and InprocServer32 (the library's path, ThreadingModel Both: the filter locks
// its own state and is called from the graph's threads and its own), plus an entry among the
// system's DirectShow filters (do-not-use merit: the engine creates it by class, and automatic
// graph building must never pick a source that does not read files).
#pragma once

#include <windows.h>

class CCDSourceRegistrar
{
public:
    static const WCHAR kFriendlyName[];

    // The class key is removed with everything below it before it is written again, so a
    // second registration leaves one clean key. Needs COM on the calling thread for the filter
    // entry, and starts it there for the call when it is not.
    static HRESULT Register(LPCWSTR pwszModulePath);
    // Removes both; what is already gone counts as removed.
    static HRESULT Unregister();

private:
    static HRESULT RegisterFilterEntry(bool bRegister);
};
