#include "cdimage/CBinaryFile.h"

#include <limits>

#if !defined(_WIN32)
#include <sys/stat.h>
#include <sys/types.h>
#endif

namespace {

#if defined(_WIN32)
// UTF-8 to UTF-16 by hand: the conversion functions of the system live in windows.h, which this
// portable file does not include. Malformed or overlong sequences and surrogate code points make
// the whole path unusable rather than naming some other file.
bool Utf8ToWide(const std::string& utf8, std::wstring* pWide)
{
    pWide->clear();
    pWide->reserve(utf8.size());
    size_t i = 0;
    while (i < utf8.size())
    {
        const unsigned char lead = static_cast<unsigned char>(utf8[i]);
        uint32_t codePoint = 0;
        size_t cbMore = 0;
        uint32_t minimum = 0;
        if (lead < 0x80)
        {
            codePoint = lead;
        }
        else if ((lead & 0xE0) == 0xC0)
        {
            codePoint = lead & 0x1F;
            cbMore = 1;
            minimum = 0x80;
        }
        else if ((lead & 0xF0) == 0xE0)
        {
            codePoint = lead & 0x0F;
            cbMore = 2;
            minimum = 0x800;
        }
        else if ((lead & 0xF8) == 0xF0)
        {
            codePoint = lead & 0x07;
            cbMore = 3;
            minimum = 0x10000;
        }
        else
        {
            return false;
        }
        if (cbMore > utf8.size() - i - 1)
            return false;
        for (size_t k = 1; k <= cbMore; ++k)
        {
            const unsigned char next = static_cast<unsigned char>(utf8[i + k]);
            if ((next & 0xC0) != 0x80)
                return false;
            codePoint = (codePoint << 6) | (next & 0x3F);
        }
        if (codePoint < minimum || codePoint > 0x10FFFF || (codePoint >= 0xD800 && codePoint <= 0xDFFF))
            return false;
        if (codePoint >= 0x10000)
        {
            codePoint -= 0x10000;
            pWide->push_back(static_cast<wchar_t>(0xD800 + (codePoint >> 10)));
            pWide->push_back(static_cast<wchar_t>(0xDC00 + (codePoint & 0x3FF)));
        }
        else
        {
            pWide->push_back(static_cast<wchar_t>(codePoint));
        }
        i += cbMore + 1;
    }
    return true;
}
#endif

} // namespace

CBinaryFile::~CBinaryFile()
{
    Close();
}

bool CBinaryFile::Open(const std::string& path, const char* pszMode)
{
    Close();
    // An embedded NUL would silently open a shorter name.
    if (path.empty() || path.find('\0') != std::string::npos)
        return false;
#if defined(_WIN32)
    std::wstring widePath;
    if (!Utf8ToWide(path, &widePath))
        return false;
    const std::wstring wideMode(pszMode, pszMode + std::char_traits<char>::length(pszMode));
    m_pFile = _wfopen(widePath.c_str(), wideMode.c_str());
#else
    m_pFile = std::fopen(path.c_str(), pszMode);
#endif
    return m_pFile != nullptr;
}

bool CBinaryFile::OpenRead(const std::string& path)
{
    if (!Open(path, "rb"))
        return false;
#if !defined(_WIN32)
    // fopen opens a folder here for reading; its "size" would be whatever the file system says.
    struct stat info;
    if (fstat(fileno(m_pFile), &info) != 0 || !S_ISREG(info.st_mode))
    {
        Close();
        return false;
    }
#endif
    return true;
}

bool CBinaryFile::Create(const std::string& path)
{
    return Open(path, "wb");
}

bool CBinaryFile::Close()
{
    if (!m_pFile)
        return true;
    const bool bClosed = std::fclose(m_pFile) == 0;
    m_pFile = nullptr;
    return bClosed;
}

bool CBinaryFile::Seek(uint64_t ullOffset)
{
#if defined(_WIN32)
    if (ullOffset > static_cast<uint64_t>(std::numeric_limits<__int64>::max()))
        return false;
    return _fseeki64(m_pFile, static_cast<__int64>(ullOffset), SEEK_SET) == 0;
#else
    if (ullOffset > static_cast<uint64_t>(std::numeric_limits<off_t>::max()))
        return false;
    return fseeko(m_pFile, static_cast<off_t>(ullOffset), SEEK_SET) == 0;
#endif
}

bool CBinaryFile::Size(uint64_t* pcbFile)
{
    if (!m_pFile)
        return false;
#if defined(_WIN32)
    if (_fseeki64(m_pFile, 0, SEEK_END) != 0)
        return false;
    const __int64 size = _ftelli64(m_pFile);
#else
    if (fseeko(m_pFile, 0, SEEK_END) != 0)
        return false;
    const off_t size = ftello(m_pFile);
#endif
    if (size < 0)
        return false;
    *pcbFile = static_cast<uint64_t>(size);
    return Seek(0);
}

bool CBinaryFile::ReadAt(uint64_t ullOffset, void* pBuffer, size_t cb)
{
    if (!m_pFile || !Seek(ullOffset))
        return false;
    return std::fread(pBuffer, 1, cb, m_pFile) == cb;
}

size_t CBinaryFile::Read(void* pBuffer, size_t cb)
{
    if (!m_pFile)
        return 0;
    return std::fread(pBuffer, 1, cb, m_pFile);
}

bool CBinaryFile::Write(const void* pBytes, size_t cb)
{
    if (!m_pFile)
        return false;
    return std::fwrite(pBytes, 1, cb, m_pFile) == cb;
}
