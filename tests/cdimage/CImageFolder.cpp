#include "CImageFolder.h"

#include <atomic>
#include <chrono>
#include <filesystem>
#include <stdexcept>

#include "cdimage/CBinaryFile.h"

namespace fs = std::filesystem;

namespace {

fs::path FromUtf8(const std::string& path)
{
    return fs::u8path(path);
}

std::string ToUtf8(const fs::path& path)
{
    return path.u8string();
}

} // namespace

CImageFolder::CImageFolder(const std::string& suffix)
{
    // Cases of one program may run side by side with another program's: the clock and a counter
    // keep every folder apart.
    static std::atomic<unsigned> s_counter{0};
    const auto ticks = std::chrono::steady_clock::now().time_since_epoch().count();
    const std::string name = "tessaly-cdimage-" + std::to_string(ticks) + "-" + std::to_string(s_counter++) + suffix;
    const fs::path root = fs::temp_directory_path() / FromUtf8(name);
    fs::create_directories(root);
    m_root = ToUtf8(root);
}

CImageFolder::~CImageFolder()
{
    std::error_code ignored;
    fs::remove_all(FromUtf8(m_root), ignored);
}

std::string CImageFolder::Path(const std::string& relative) const
{
    return relative.empty() ? m_root : m_root + "/" + relative;
}

std::string CImageFolder::Write(const std::string& relative, const std::string& bytes) const
{
    const std::string path = Path(relative);
    fs::create_directories(FromUtf8(path).parent_path());
    CBinaryFile file;
    if (!file.Create(path) || !file.Write(bytes.data(), bytes.size()) || !file.Close())
        throw std::runtime_error("cannot write " + path);
    return path;
}

void CImageFolder::Resize(const std::string& relative, uint64_t size) const
{
    fs::resize_file(FromUtf8(Path(relative)), size);
}

void CImageFolder::Remove(const std::string& relative) const
{
    fs::remove(FromUtf8(Path(relative)));
}

void CImageFolder::Move(const std::string& from, const std::string& to) const
{
    fs::create_directories(FromUtf8(Path(to)).parent_path());
    fs::rename(FromUtf8(Path(from)), FromUtf8(Path(to)));
}
