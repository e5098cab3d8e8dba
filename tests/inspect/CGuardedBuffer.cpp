#include "CGuardedBuffer.h"

#include <cstring>
#include <new>

#if defined(_WIN32)
#include <windows.h>
#else
#include <sys/mman.h>
#include <unistd.h>
#endif

namespace {

size_t PageSize()
{
#if defined(_WIN32)
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    return info.dwPageSize;
#else
    return static_cast<size_t>(sysconf(_SC_PAGESIZE));
#endif
}

} // namespace

CGuardedBuffer::CGuardedBuffer(const std::vector<uint8_t>& bytes)
    : m_pBase(nullptr), m_cbMapped(0), m_pData(nullptr), m_cbData(bytes.size())
{
    const size_t page = PageSize();
    const size_t cbData = (bytes.size() + page - 1) / page * page;
    m_cbMapped = cbData + page;
#if defined(_WIN32)
    m_pBase = VirtualAlloc(nullptr, m_cbMapped, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    DWORD oldProtect = 0;
    if (!m_pBase || !VirtualProtect(static_cast<uint8_t*>(m_pBase) + cbData, page, PAGE_NOACCESS,
                                    &oldProtect))
        throw std::bad_alloc();
#else
    m_pBase = mmap(nullptr, m_cbMapped, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (m_pBase == MAP_FAILED || mprotect(static_cast<uint8_t*>(m_pBase) + cbData, page, PROT_NONE) != 0)
        throw std::bad_alloc();
#endif
    uint8_t* pData = static_cast<uint8_t*>(m_pBase) + cbData - bytes.size();
    if (!bytes.empty())
        std::memcpy(pData, bytes.data(), bytes.size());
    m_pData = pData;
}

CGuardedBuffer::~CGuardedBuffer()
{
#if defined(_WIN32)
    VirtualFree(m_pBase, 0, MEM_RELEASE);
#else
    munmap(m_pBase, m_cbMapped);
#endif
}
