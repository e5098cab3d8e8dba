// One file of a disc image opened by its UTF-8 path: the .cue, a .bin, or (for tests) a file
// being written. Windows takes such a path only through its wide functions, so the path is
// converted there; elsewhere it goes to fopen as it is. Offsets and sizes are 64-bit everywhere,
// since an image of a whole disc is larger than 2 GiB as often as not. Needs no Windows.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>

class CBinaryFile
{
public:
    CBinaryFile() = default;
    ~CBinaryFile();
    CBinaryFile(const CBinaryFile&) = delete;
    CBinaryFile& operator=(const CBinaryFile&) = delete;

    // An existing regular file, for reading.
    bool OpenRead(const std::string& path);
    // A new or emptied file, for writing.
    bool Create(const std::string& path);
    // False when an open file could not be flushed and closed (a write that never reached it).
    bool Close();

    bool Size(uint64_t* pcbFile);
    // Exactly cb bytes at the offset, or false.
    bool ReadAt(uint64_t ullOffset, void* pBuffer, size_t cb);
    // Up to cb bytes from where the last read ended; how many came.
    size_t Read(void* pBuffer, size_t cb);
    bool Write(const void* pBytes, size_t cb);

private:
    bool Open(const std::string& path, const char* pszMode);
    bool Seek(uint64_t ullOffset);

    FILE* m_pFile = nullptr;
};
