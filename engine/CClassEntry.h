// One creatable class of the module: how to create it, how it is registered, and the slot
// where its class object is kept once made.
#pragma once

#include <windows.h>

#include "engine/CClassFactory.h"
#include "engine/ComPtr.h"

struct CClassEntry
{
    const CLSID* pclsid;
    CClassFactory::PFNCREATEINSTANCE pfnCreateInstance;
    const wchar_t* pwszDescription;          // "Play Class"
    const wchar_t* pwszProgId;               // "Tessaly.Play.1"
    const wchar_t* pwszVersionIndependentProgId; // "Tessaly.Play"
    ComPtr<CClassFactory> pClassObject;      // made on first request, released at Term
};
