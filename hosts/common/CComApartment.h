// The calling thread's single-threaded COM apartment for as long as the object lives: the engine's
// classes are apartment-threaded, so a host creates and calls them from one thread that pumps
// messages.
#pragma once

#include <windows.h>

class CComApartment
{
public:
    CComApartment();
    ~CComApartment();
    CComApartment(const CComApartment&) = delete;
    CComApartment& operator=(const CComApartment&) = delete;

    HRESULT Result() const { return m_hr; }

private:
    HRESULT m_hr;
};
