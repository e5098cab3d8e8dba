// A read-only view of a file's bytes in which every read is bounded: offsets may lie anywhere,
// and bytes past the end of the file read as zero. Hostile object sizes therefore can make the
// parser read nonsense, but never memory outside the view.
#pragma once

#include <cstddef>
#include <cstdint>

class CByteView
{
public:
    CByteView(const uint8_t* pData, uint64_t cbData);

    uint64_t Size() const { return m_cbData; }

    // Whether [offset, offset + length) lies wholly inside the file.
    bool Contains(uint64_t offset, uint64_t length) const;

    // Little-endian reads.
    uint16_t ReadU16(uint64_t offset) const;
    uint32_t ReadU32(uint64_t offset) const;
    uint64_t ReadU64(uint64_t offset) const;

    bool Equals(uint64_t offset, const uint8_t* pExpected, size_t cbExpected) const;

    // One past the furthest byte of the file any read has looked at: how much of the file a
    // parse made the system page in.
    uint64_t HighWaterMark() const { return m_cbHighWater; }

private:
    // Byte i of a read at offset, or zero past the end; offset + i never wraps.
    uint8_t ByteAt(uint64_t offset, uint64_t i) const
    {
        return offset < m_cbData && i < m_cbData - offset ? m_pData[offset + i] : 0;
    }
    uint64_t ReadLittleEndian(uint64_t offset, unsigned cb) const;
    void Touch(uint64_t offset, uint64_t length) const;

    const uint8_t* m_pData;
    uint64_t m_cbData;
    mutable uint64_t m_cbHighWater;
};
