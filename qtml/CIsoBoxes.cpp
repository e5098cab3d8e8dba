#include "qtml/CIsoBoxes.h"

#include <cstring>

namespace {

std::uint64_t BigEndian(const unsigned char* p, int cb)
{
    std::uint64_t value = 0;
    for (int i = 0; i < cb; ++i)
        value = (value << 8) | p[i];
    return value;
}

} // namespace

bool CIsoBoxes::LooksLikeIsoFile(const unsigned char* pFirst8)
{
    static const char* const kTypes[] = {"ftyp", "moov", "mdat", "wide", "free", "skip", "pnot"};
    for (const char* pszType : kTypes)
    {
        if (std::memcmp(pFirst8 + 4, pszType, 4) == 0)
            return true;
    }
    return false;
}

bool CIsoBoxes::HasCompleteMovieBox(const Reader& read, std::uint64_t cbFile)
{
    std::uint64_t offset = 0;
    while (offset + 8 <= cbFile)
    {
        unsigned char header[16];
        if (!read(offset, header, 8))
            return false;
        std::uint64_t cbBox = BigEndian(header, 4);
        std::uint64_t cbHeader = 8;
        if (cbBox == 1) // the size follows as 64 bits
        {
            if (offset + 16 > cbFile || !read(offset + 8, header + 8, 8))
                return false;
            cbBox = BigEndian(header + 8, 8);
            cbHeader = 16;
        }
        else if (cbBox == 0) // to the end of the file
        {
            cbBox = cbFile - offset;
        }
        if (cbBox < cbHeader || cbBox > cbFile - offset)
            return false; // broken off, or claiming more than the file holds
        if (std::memcmp(header + 4, "moov", 4) == 0)
            return true;
        offset += cbBox;
    }
    return false;
}
