// The count behind a COM object's own IUnknown, shared by the plain and the aggregated wrappers:
// it keeps the library loaded while the object lives, and runs the object's last step once.
#pragma once

#include <windows.h>

#include "engine/CModuleLock.h"

class CComRefCount
{
public:
    CComRefCount() { CModuleLock::Lock(); }
    ~CComRefCount() { CModuleLock::Unlock(); }
    CComRefCount(const CComRefCount&) = delete;
    CComRefCount& operator=(const CComRefCount&) = delete;

    ULONG AddRef() { return static_cast<ULONG>(InterlockedIncrement(&m_lRef)); }

    // At zero, lastStep (final release and deletion of the owner, this count with it) runs with the
    // count held at one, so that an AddRef/Release pair made from inside it cannot run it again.
    template <class F>
    ULONG Release(F lastStep)
    {
        const LONG lRef = InterlockedDecrement(&m_lRef);
        if (lRef == 0)
        {
            m_lRef = 1;
            lastStep();
        }
        return static_cast<ULONG>(lRef);
    }

private:
    LONG m_lRef = 0;
};
