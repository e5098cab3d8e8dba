#include "CParseProbe.h"

#include <cstdio>
#include <cstring>
#include <new>

#include "inspect/CASFFileParser.h"
#include "inspect/CByteView.h"

#if defined(_WIN32)
#include <windows.h>
#else
#include <sys/mman.h>
#include <unistd.h>
#endif

CGuardedBuffer::CGuardedBuffer(const std::vector<uint8_t>& bytes) : m_cbData(bytes.size())
{
#if defined(_WIN32)
    SYSTEM_INFO info;
    GetSystemInfo(&info);
    const size_t page = info.dwPageSize, cbData = (bytes.size() + page - 1) / page * page;
    m_cbMapped = cbData + page;
    m_pBase = VirtualAlloc(nullptr, m_cbMapped, MEM_RESERVE | MEM_COMMIT, PAGE_READWRITE);
    DWORD oldProtect = 0;
    if (!m_pBase || !VirtualProtect(static_cast<uint8_t*>(m_pBase) + cbData, page, PAGE_NOACCESS, &oldProtect))
        throw std::bad_alloc();
#else
    const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE)), cbData = (bytes.size() + page - 1) / page * page;
    m_cbMapped = cbData + page;
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

CParseProbe::CParseProbe(const std::vector<uint8_t>& bytes)
{
    CASFFileParser parser;
    *this = CParseProbe(parser, bytes);
}

CParseProbe::CParseProbe(CASFFileParser& parser, const std::vector<uint8_t>& bytes)
{
    const CGuardedBuffer buffer(bytes);
    hr = parser.ParseHeader(CByteView(buffer.Data(), buffer.Size()));
    Collect(parser);
}

namespace {

const uint8_t kPattern = 0xA5;

template <typename T> bool Written(const T& value)
{
    T untouched;
    std::memset(static_cast<void*>(&untouched), kPattern, sizeof(T));
    return std::memcmp(&untouched, &value, sizeof(T)) != 0;
}

} // namespace

void CParseProbe::Collect(CASFFileParser& parser)
{
    std::memset(static_cast<void*>(&video), kPattern, sizeof(video));
    std::memset(static_cast<void*>(&audio), kPattern, sizeof(audio));
    std::memset(&channelType, kPattern, sizeof(channelType));
    infoResult = parser.GetAVFileInfo(&video, &audio, &channelType);
    bVideo = Written(video);
    bAudio = Written(audio);
    bChannelType = Written(channelType);
}

std::string CParseProbe::Video() const
{
    if (!bVideo)
        return "none";
    const uint32_t c = video.dwFourCC;
    const char fourCC[5] = {char(c), char(c >> 8), char(c >> 16), char(c >> 24), 0};
    char text[160];
    std::snprintf(text, sizeof(text), "%s %dx%dx%u %.10gs %.9gfps %lld %ubps%s", fourCC, int(video.lWidth),
                  int(video.lHeight), unsigned(video.wBitDepth), video.dDuration, video.dFrameRate,
                  static_cast<long long>(video.llAvgTimePerFrame), unsigned(video.dwBitrate),
                  video.bPresent == 1 ? "" : " absent?");
    return text;
}

std::string CParseProbe::Audio() const
{
    if (!bAudio)
        return bChannelType ? "type only?" : "none";
    char text[160];
    std::snprintf(text, sizeof(text), "0x%x %uch %uHz %uB/s %u %ubit type %d%s", unsigned(audio.wFormatTag),
                  unsigned(audio.nChannels), unsigned(audio.nSamplesPerSec), unsigned(audio.nAvgBytesPerSec),
                  unsigned(audio.nBlockAlign), unsigned(audio.wBitsPerSample), bChannelType ? int(channelType) : -1,
                  audio.bPresent == 1 ? "" : " absent?");
    return text;
}
