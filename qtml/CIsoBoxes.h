// The top-level boxes of an ISO base media file (QuickTime, MP4, 3GP): whether the movie box the
// whole file depends on is there in full. The platform's parser waits forever on a file that
// breaks off before its movie box, so a file without one is refused before any graph is built.
// Portable: the caller reads the bytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

class CIsoBoxes
{
public:
    // Reads cb bytes at offset into pBuffer; false when they are not all there.
    using Reader = std::function<bool(std::uint64_t offset, unsigned char* pBuffer, std::size_t cb)>;

    // True when the file starts with a box type this format uses.
    static bool LooksLikeIsoFile(const unsigned char* pFirst8);
    // True when a complete 'moov' box lies among well-formed top-level boxes.
    static bool HasCompleteMovieBox(const Reader& read, std::uint64_t cbFile);
};
