// A working folder of its own for one test.
#pragma once

#include "support/temp_folder.h"

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>

namespace vlt {

class WorkFolder : public ::testing::Test
{
protected:
    WorkFolder()
    {
        std::filesystem::create_directories(home);
        std::filesystem::current_path(home);
    }
    ~WorkFolder() override
    {
        std::filesystem::current_path(before);
    }
    static void write(const std::string& name, const std::string& bytes)
    {
        std::ofstream(name, std::ios::binary) << bytes;
    }
    static std::string read(const std::filesystem::path& name)
    {
        std::ifstream file(name, std::ios::binary);
        return {std::istreambuf_iterator<char>(file), {}};
    }

    const std::filesystem::path before = std::filesystem::current_path();
    const TempFolder folder;
    const std::filesystem::path home = folder.path() / "home";
};

}  // namespace vlt
