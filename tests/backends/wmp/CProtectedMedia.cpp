#include "CProtectedMedia.h"

#include <cstdio>
#include <cstring>

#include "CAsfHeaderBuilder.h"
#include "CTempFolder.h"
#include "CTestMedia.h"

// The object goes in as the header's first child; the header's size (8 bytes at 16) and child
// count (4 bytes at 24), little-endian, grow to match, and everything after the header moves along.
std::wstring CProtectedMedia::Copy(const CTempFolder& folder, const char* pszName, bool bExtended)
{
    std::string bytes;
    if (FILE* f = _wfopen(CTestMedia::Path(pszName).c_str(), L"rb"))
    {
        char buffer[65536];
        for (size_t cb; (cb = fread(buffer, 1, sizeof(buffer), f)) > 0;)
            bytes.append(buffer, cb);
        fclose(f);
    }
    if (bytes.size() < 30)
        return L"";
    const std::vector<uint8_t> object = CAsfHeaderBuilder::EncryptionObject(bExtended);
    auto grow = [&bytes](size_t offset, int cb, uint64_t by) {
        uint64_t value = 0;
        for (int i = cb - 1; i >= 0; --i)
            value = (value << 8) | static_cast<uint8_t>(bytes[offset + i]);
        for (int i = 0; i < cb; ++i)
            bytes[offset + i] = static_cast<char>((value + by) >> (8 * i));
    };
    grow(16, 8, object.size());
    grow(24, 4, 1);
    bytes.insert(30, std::string(object.begin(), object.end()));
    return folder.Write(L"protected-" + std::wstring(pszName, pszName + strlen(pszName)), bytes);
}
