// A folder of its own for one test, and environment variables that come back to what they were.
#pragma once

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>
#include <string>
#include <string_view>
#include <unistd.h>

namespace vlt {

// An empty folder below the temporary folder, removed with all that is in it.
class TempFolder
{
public:
    TempFolder()
    {
        static std::atomic<int> count = 0;
        const std::string name = "velatra-test-" + std::to_string(::getpid()) + "-" + std::to_string(++count);
        m_path = std::filesystem::temp_directory_path() / name;
        std::filesystem::remove_all(m_path);
        std::filesystem::create_directories(m_path);
    }
    ~TempFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;

    [[nodiscard]] const std::filesystem::path& path() const
    {
        return m_path;
    }

    // Writes a file, with the folders above it; gives its path.
    std::filesystem::path write(std::string_view name, std::string_view content) const
    {
        const std::filesystem::path file = m_path / name;
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file, std::ios::binary) << content;
        return file;
    }

private:
    std::filesystem::path m_path;
};

// Sets an environment variable, or unsets it with an empty value.
class ScopedVariable
{
public:
    ScopedVariable(std::string name, const std::string& value) : m_name(std::move(name))
    {
        if (const char* before = std::getenv(m_name.c_str())) {
            m_before = before;
        }
        set(value);
    }
    ~ScopedVariable()
    {
        set(m_before.value_or(""));
    }
    ScopedVariable(const ScopedVariable&) = delete;
    ScopedVariable& operator=(const ScopedVariable&) = delete;

    void set(const std::string& value)
    {
        if (value.empty()) {
            ::unsetenv(m_name.c_str());
        } else {
            ::setenv(m_name.c_str(), value.c_str(), 1);
        }
    }

private:
    std::string m_name;
    std::optional<std::string> m_before;
};

}  // namespace vlt
