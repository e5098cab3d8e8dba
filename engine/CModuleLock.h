// The count of reasons the library must stay loaded: live objects, externally held class
// objects and LockServer(TRUE) calls. DllCanUnloadNow answers from it.
#pragma once

#include <windows.h>

class CModuleLock
{
public:
    static void Lock() { InterlockedIncrement(&s_lCount); }
    static void Unlock() { InterlockedDecrement(&s_lCount); }
    static LONG Count() { return s_lCount; }

private:
    static LONG s_lCount;
};
