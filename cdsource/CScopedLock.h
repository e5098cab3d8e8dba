// Holds a critical section for the rest of a scope, so that no early return leaves it held.
#pragma once

#include <windows.h>

class CScopedLock
{
public:
    explicit CScopedLock(CRITICAL_SECTION* pcs) : m_pcs(pcs) { EnterCriticalSection(m_pcs); }
    ~CScopedLock() { LeaveCriticalSection(m_pcs); }
    CScopedLock(const CScopedLock&) = delete;
    CScopedLock& operator=(const CScopedLock&) = delete;

private:
    CRITICAL_SECTION* m_pcs;
};
