// A working folder of its own for one test, with a log that can be read, and no server to be reached.
#pragma once

#include "core/base/log.h"
#include "support/temp_folder.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

namespace vlt {

// The whole text of a file; empty if there is none.
inline std::string gf_textOfFile(const std::filesystem::path& path)
{
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
}

class Workplace
{
public:
    Workplace() : m_before(std::filesystem::current_path())
    {
        std::filesystem::current_path(folder.path());
        std::filesystem::create_directories("input/my_regcodes");
        std::filesystem::create_directories("output");
        logStart();
    }
    ~Workplace()
    {
        gf_logEnd();
        std::filesystem::current_path(m_before);
    }
    Workplace(const Workplace&) = delete;
    Workplace& operator=(const Workplace&) = delete;

    // The log so far.
    [[nodiscard]] std::string log() const
    {
        return gf_textOfFile(folder.path() / "Log.txt");
    }

    TempFolder folder;
    ScopedVariable server{"VELATRA_SERVER", "http://127.0.0.1:1/"};  // nobody listens there
    ScopedVariable settings{"VELATRA_APPDATA", folder.path().string()};

private:
    std::filesystem::path m_before;
};

}  // namespace vlt
