// What every engine object has before it is wrapped as a plain or aggregated COM object.
// Hooks are hidden (not virtual) by the classes that need them.
#pragma once

#include <windows.h>

class CComObjectRoot
{
public:
    virtual ~CComObjectRoot() = default;

    HRESULT FinalConstruct() { return S_OK; }
    void FinalRelease() {}
};
