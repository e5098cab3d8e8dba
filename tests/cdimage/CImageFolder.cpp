#include "CImageFolder.h"

#include <atomic>
#include <chrono>
#include <filesystem>

#include "cdimage/CBinaryFile.h"

namespace fs = std::filesystem;

// Programs may run side by side: the clock and a counter keep every folder apart.
CImageFolder::CImageFolder(const std::string& suffix)
{
    static std::atomic<unsigned> s_counter{0};
    const auto ticks = std::chrono::steady_clock::now().time_since_epoch().count();
    const fs::path root = fs::temp_directory_path() /
        fs::u8path("tessaly-cdimage-" + std::to_string(ticks) + "-" + std::to_string(s_counter++) + suffix);
    fs::create_directories(root);
    m_root = root.u8string();
}

CImageFolder::~CImageFolder()
{
    std::error_code ignored;
    fs::remove_all(fs::u8path(m_root), ignored);
}

std::vector<uint8_t> CImageFolder::Read(const std::string& relative, uint64_t offset, size_t cb) const
{
    std::vector<uint8_t> bytes(cb);
    CBinaryFile file;
    return file.OpenRead(Path(relative)) && file.ReadAt(offset, bytes.data(), cb) ? bytes : std::vector<uint8_t>();
}

void CImageFolder::Resize(const std::string& name, uint64_t size) const { fs::resize_file(fs::u8path(Path(name)), size); }
void CImageFolder::Remove(const std::string& name) const { fs::remove(fs::u8path(Path(name))); }
