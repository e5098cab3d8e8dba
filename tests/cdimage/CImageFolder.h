// A folder of the test's own under the system's temporary folder, named by UTF-8 paths (as the
// disc image takes them) and removed with everything in it when the test ends. Needs no Windows.
#pragma once
#include <cstdint>
#include <string>
#include <vector>

class CImageFolder
{
public:
    explicit CImageFolder(const std::string& suffix = std::string());  // a suffix to the folder's own name
    ~CImageFolder();
    std::string Path(const std::string& relative = std::string()) const { return relative.empty() ? m_root : m_root + "/" + relative; }
    std::vector<uint8_t> Read(const std::string& relative, uint64_t offset, size_t cb) const;  // empty if not all there
    void Resize(const std::string& relative, uint64_t size) const;
    void Remove(const std::string& relative) const;

private:
    std::string m_root;
};
