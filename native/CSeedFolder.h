// A fuzzer's starting corpus on disk: each seed becomes "<stem>-<n><ext>" in the folder the seed
// writer is given on its command line.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

class CSeedFolder
{
public:
    // The seed writer's exit code: 0 when every seed was written, 1 when one could not be, 2 when
    // the command line names no folder.
    template <class Bytes>
    static int Write(int argc, char** argv, const char* pszStem, const char* pszExt, const std::vector<Bytes>& seeds)
    {
        if (argc != 2)
        {
            std::fprintf(stderr, "usage: %s <directory>\n", argv[0]);
            return 2;
        }
        for (size_t i = 0; i < seeds.size(); ++i)
        {
            const std::string path = std::string(argv[1]) + "/" + pszStem + "-" + std::to_string(i) + pszExt;
            FILE* f = std::fopen(path.c_str(), "wb");
            const bool ok = f && std::fwrite(seeds[i].data(), 1, seeds[i].size(), f) == seeds[i].size();
            if (!f || std::fclose(f) != 0 || !ok)
            {
                std::perror(path.c_str());
                return 1;
            }
        }
        return 0;
    }
};
