#include "CProtectedMedia.h"

#include <cstdio>
#include <cstring>

#include "CAsfHeaderBuilder.h"
#include "CTempFolder.h"
#include "CTestMedia.h"

namespace {

std::string ReadAll(const std::wstring& path)
{
    std::string bytes;
    if (FILE* f = _wfopen(path.c_str(), L"rb"))
    {
        char buffer[65536];
        size_t cb;
        while ((cb = fread(buffer, 1, sizeof(buffer), f)) > 0)
            bytes.append(buffer, cb);
        fclose(f);
    }
    return bytes;
}

void PutLittleEndian(std::string& bytes, size_t offset, uint64_t value, int cb)
{
    for (int i = 0; i < cb; ++i)
        bytes[offset + i] = static_cast<char>(value >> (8 * i));
}

uint64_t GetLittleEndian(const std::string& bytes, size_t offset, int cb)
{
    uint64_t value = 0;
    for (int i = cb - 1; i >= 0; --i)
        value = (value << 8) | static_cast<uint8_t>(bytes[offset + i]);
    return value;
}

} // namespace

// The object goes in as the header's first child; the header's size and child count grow to
// match, and everything after the header moves along unchanged.
std::wstring CProtectedMedia::Copy(const CTempFolder& folder, const char* pszName, bool bExtended)
{
    std::string bytes = ReadAll(CTestMedia::Path(pszName));
    if (bytes.size() < 30)
        return L"";
    const std::vector<uint8_t> object = CAsfHeaderBuilder::EncryptionObject(bExtended);
    PutLittleEndian(bytes, 16, GetLittleEndian(bytes, 16, 8) + object.size(), 8);
    PutLittleEndian(bytes, 24, GetLittleEndian(bytes, 24, 4) + 1, 4);
    bytes.insert(30, std::string(object.begin(), object.end()));
    std::wstring name(pszName, pszName + strlen(pszName));
    return folder.Write(L"protected-" + name, bytes);
}
