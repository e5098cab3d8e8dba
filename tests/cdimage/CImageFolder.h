// A folder of the test's own under the system's temporary folder, named by UTF-8 paths (as the
// disc image takes them) and removed with everything in it when the test ends. Needs no Windows.
#pragma once

#include <cstdint>
#include <string>

class CImageFolder
{
public:
    // The folder's own name may carry a suffix, e.g. one outside ASCII.
    explicit CImageFolder(const std::string& suffix = std::string());
    ~CImageFolder();
    CImageFolder(const CImageFolder&) = delete;
    CImageFolder& operator=(const CImageFolder&) = delete;

    // The folder itself, or a name inside it ("sub/a.bin").
    std::string Path(const std::string& relative = std::string()) const;
    // Writes a file, making the folders on its way; returns its path.
    std::string Write(const std::string& relative, const std::string& bytes) const;
    void Resize(const std::string& relative, uint64_t size) const;
    void Remove(const std::string& relative) const;

private:
    std::string m_root;
};
