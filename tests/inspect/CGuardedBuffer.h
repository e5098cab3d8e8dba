// Holds bytes so that they end exactly where an inaccessible page begins: a read of even one
// byte past the end faults at once, under Wine as well as natively, sanitizers or not.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

class CGuardedBuffer
{
public:
    explicit CGuardedBuffer(const std::vector<uint8_t>& bytes);
    ~CGuardedBuffer();
    CGuardedBuffer(const CGuardedBuffer&) = delete;
    CGuardedBuffer& operator=(const CGuardedBuffer&) = delete;

    const uint8_t* Data() const { return m_pData; }
    size_t Size() const { return m_cbData; }

private:
    void* m_pBase;
    size_t m_cbMapped;
    const uint8_t* m_pData;
    size_t m_cbData;
};
