#include "hosts/common/CComApartment.h"

#include <objbase.h>

CComApartment::CComApartment() : m_hr(CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED)) {}

CComApartment::~CComApartment()
{
    // S_FALSE (already initialised on this thread) also took a reference that must be given back.
    if (SUCCEEDED(m_hr))
        CoUninitialize();
}
