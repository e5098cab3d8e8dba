// Every method a host or the system can call runs its body through ComBoundary: no exception
// may leave a COM method, so an allocation that fails inside one (a vector copied, a string
// built, the dispatcher and its back-ends made) answers E_OUTOFMEMORY, and anything else thrown
// E_UNEXPECTED.
#pragma once

#include <windows.h>

#include <new>

template <class F>
HRESULT ComBoundary(F&& body) noexcept
{
    try
    {
        return body();
    }
    catch (const std::bad_alloc&)
    {
        return E_OUTOFMEMORY;
    }
    catch (...)
    {
        return E_UNEXPECTED;
    }
}
