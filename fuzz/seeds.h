// Inputs to begin with: a fuzzer's first ones, written into its corpus before it reads that.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace vlt {

// Writes the bytes into the corpus folder of the command line, if there is one.
inline void gf_seed(int argc, char** argv, const std::string& name, const std::string& bytes)
{
    for (int i = 1; i < argc; ++i) {
        if (std::filesystem::is_directory(argv[i])) {
            std::ofstream(std::filesystem::path(argv[i]) / ("seed_" + name), std::ios::binary) << bytes;
            return;
        }
    }
}

// Ends the fuzzer with a finding.
inline void gf_require(bool holds)
{
    if (!holds) {
        std::abort();
    }
}

}  // namespace vlt
