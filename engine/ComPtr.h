// COM references are held in the platform library's smart pointer, WRL's ComPtr: brought in by
// name once for the whole tree, with the adoption and the query its interface lacks (or has wrong).
#pragma once

#include <wrl/client.h>

using Microsoft::WRL::ComPtr;

// Takes over a reference the caller already holds. mingw-w64's ComPtr::Attach adds a reference of
// its own (the documented Attach does not), so it is never used.
template <class T, class U>
void Adopt(ComPtr<T>& p, U* pNew)
{
    *p.ReleaseAndGetAddressOf() = pNew;
}

// QueryInterface through a reference that may be empty: E_POINTER then, and the result untouched.
template <class T, class Q>
HRESULT QueryTo(const ComPtr<T>& p, REFIID riid, ComPtr<Q>& result)
{
    return p ? p.CopyTo(riid, &result) : E_POINTER;
}
