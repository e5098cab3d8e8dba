// Parses each file given (or every file of each directory given) from memory over and over and
// prints how many headers a second that is, and how much of the file the parser looked at.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "inspect/CASFFileParser.h"
#include "inspect/CByteView.h"

namespace {

using Clock = std::chrono::steady_clock;

std::vector<std::string> ListFiles(int argc, char** argv)
{
    std::vector<std::string> files;
    for (int i = 1; i < argc; ++i)
    {
        if (std::filesystem::is_directory(argv[i]))
        {
            for (const auto& entry : std::filesystem::directory_iterator(argv[i]))
            {
                if (entry.is_regular_file() && entry.path().filename().string()[0] != '.')
                    files.push_back(entry.path().string());
            }
        }
        else
        {
            files.push_back(argv[i]);
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

// Parses for at least a quarter of a second; the result is headers per second.
double HeadersPerSecond(const std::vector<uint8_t>& bytes, int32_t* pResult)
{
    const auto budget = std::chrono::milliseconds(250);
    const Clock::time_point start = Clock::now();
    long long parses = 0;
    Clock::duration elapsed{};
    do
    {
        for (int i = 0; i < 256; ++i)
        {
            CASFFileParser parser;
            *pResult = parser.ParseHeader(CByteView(bytes.data(), bytes.size()));
            ASF_VIDEO_INFO video{};
            ASF_AUDIO_INFO audio{};
            uint16_t channelType = 0;
            parser.GetAVFileInfo(&video, &audio, &channelType);
        }
        parses += 256;
        elapsed = Clock::now() - start;
    } while (elapsed < budget);
    return static_cast<double>(parses) / std::chrono::duration<double>(elapsed).count();
}

} // namespace

int main(int argc, char** argv)
{
    const std::vector<std::string> files = ListFiles(argc, argv);
    if (files.empty())
    {
        std::fprintf(stderr, "usage: %s <file or directory>...\n", argv[0]);
        return 2;
    }
    std::printf("%-28s %12s %12s %9s %14s %s\n", "file", "size", "touched", "share",
                "headers/s", "result");
    for (const std::string& path : files)
    {
        std::ifstream in(path, std::ios::binary);
        const std::vector<uint8_t> bytes{std::istreambuf_iterator<char>(in),
                                         std::istreambuf_iterator<char>()};
        CByteView view(bytes.data(), bytes.size());
        CASFFileParser parser;
        parser.ParseHeader(view);
        int32_t result = 0;
        const double rate = HeadersPerSecond(bytes, &result);
        const double share = bytes.empty() ? 0.0 : 100.0 * static_cast<double>(view.HighWaterMark()) /
                                                       static_cast<double>(bytes.size());
        std::printf("%-28s %12zu %12llu %8.3f%% %14.0f 0x%08X\n",
                    std::filesystem::path(path).filename().string().c_str(), bytes.size(),
                    static_cast<unsigned long long>(view.HighWaterMark()), share, rate,
                    static_cast<unsigned>(result));
    }
    return 0;
}
