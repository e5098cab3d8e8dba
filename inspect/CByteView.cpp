#include "inspect/CByteView.h"

CByteView::CByteView(const uint8_t* pData, uint64_t cbData)
    : m_pData(pData), m_cbData(pData ? cbData : 0), m_cbHighWater(0)
{
}

bool CByteView::Contains(uint64_t offset, uint64_t length) const
{
    return offset <= m_cbData && length <= m_cbData - offset;
}

uint16_t CByteView::ReadU16(uint64_t offset) const
{
    return static_cast<uint16_t>(ReadLittleEndian(offset, 2));
}

uint32_t CByteView::ReadU32(uint64_t offset) const
{
    return static_cast<uint32_t>(ReadLittleEndian(offset, 4));
}

uint64_t CByteView::ReadU64(uint64_t offset) const
{
    return ReadLittleEndian(offset, 8);
}

bool CByteView::Equals(uint64_t offset, const uint8_t* pExpected, size_t cbExpected) const
{
    Touch(offset, cbExpected);
    for (size_t i = 0; i < cbExpected; ++i)
    {
        if (ByteAt(offset, i) != pExpected[i])
            return false;
    }
    return true;
}

uint64_t CByteView::ReadLittleEndian(uint64_t offset, unsigned cb) const
{
    Touch(offset, cb);
    uint64_t value = 0;
    for (unsigned i = 0; i < cb; ++i)
        value |= static_cast<uint64_t>(ByteAt(offset, i)) << (8 * i);
    return value;
}

void CByteView::Touch(uint64_t offset, uint64_t length) const
{
    if (offset >= m_cbData)
        return;
    uint64_t end = length < m_cbData - offset ? offset + length : m_cbData;
    if (end > m_cbHighWater)
        m_cbHighWater = end;
}
