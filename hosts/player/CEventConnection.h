// One sink advised on one connection point of an object, unadvised when this goes.
#pragma once

#include <windows.h>
#include <ocidl.h>

#include "engine/ComPtr.h"

class CEventConnection
{
public:
    CEventConnection() = default;
    ~CEventConnection() { Disconnect(); }
    CEventConnection(const CEventConnection&) = delete;
    CEventConnection& operator=(const CEventConnection&) = delete;

    HRESULT Connect(IUnknown* pSource, REFIID riidEvents, IUnknown* pSink);
    void Disconnect();

private:
    ComPtr<IConnectionPoint> m_point;
    DWORD m_dwCookie = 0;
};
