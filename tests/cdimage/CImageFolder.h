// A folder of the test's own under the system's temporary folder, named by UTF-8 paths (as the
// disc image takes them) and removed with everything in it when the test ends. Needs no Windows.
#pragma once
#include <cstdint>
#include <string>

class CImageFolder
{
public:
    explicit CImageFolder(const std::string& suffix = std::string());  // a suffix to the folder's own name
    ~CImageFolder();
    CImageFolder(const CImageFolder&) = delete;
    CImageFolder& operator=(const CImageFolder&) = delete;

    std::string Path(const std::string& relative = std::string()) const;  // the folder, or "sub/a.bin" in it
    std::string Write(const std::string& relative, const std::string& bytes) const;  // makes folders on the way
    void Resize(const std::string& relative, uint64_t size) const;
    void Remove(const std::string& relative) const;

private:
    std::string m_root;
};
