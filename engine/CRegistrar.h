// Writes and removes one class's registration under HKEY_CLASSES_ROOT.
#pragma once

#include <windows.h>

#include "engine/CClassEntry.h"

class CRegistrar
{
public:
    // The class key is removed with everything below it before it is written again, so a
    // second registration leaves one clean key.
    static HRESULT RegisterClassEntry(const CClassEntry& entry, const GUID& libid, LPCWSTR pwszModulePath);
    static HRESULT UnregisterClassEntry(const CClassEntry& entry);

private:
    static HRESULT SetKey(LPCWSTR pwszKey, LPCWSTR pwszValueName, LPCWSTR pwszValue);
    static HRESULT DeleteTree(LPCWSTR pwszKey);
};
