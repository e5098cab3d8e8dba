// The sinks advised on one connection point. Hosts see its layout through the cookies and the
// firing order: one sink is kept on its own; a second makes an array of four; a full array
// doubles; freed slots are reused by the next Advise and the list never shrinks.
#pragma once

#include <windows.h>

class CSinkList
{
public:
    CSinkList() = default;
    CSinkList(const CSinkList&) = delete;
    CSinkList& operator=(const CSinkList&) = delete;
    ~CSinkList();

    // Keeps the caller's reference on success; false when the list could not grow.
    bool Add(IUnknown* pSink);
    // Clears the first slot holding the sink and releases it; false when none does.
    bool Remove(IUnknown* pSink);
    void ReleaseAll();

    int Size() const { return m_nSize; }
    // The sink in a slot, or null for an empty slot or one past the current size.
    IUnknown* At(int nIndex) const;

private:
    IUnknown* m_pSingle = nullptr; // the one-sink form, size 1
    IUnknown** m_ppSinks = nullptr; // the array form, size 4 and up
    int m_nSize = 0;
};
