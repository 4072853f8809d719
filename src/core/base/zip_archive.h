// Zip archives: just the operations wanted here, reading one entry by entry and writing one whole.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

namespace vlt {

// An archive opened for reading. Not shared between threads.
class ZipArchive
{
public:
    // Opens `path`; throws std::runtime_error if it isn't a zip archive.
    explicit ZipArchive(const std::filesystem::path& path);
    ~ZipArchive();
    ZipArchive(const ZipArchive&) = delete;
    ZipArchive& operator=(const ZipArchive&) = delete;

    // The names of all entries, in the archive's order; those of folders end in "/".
    [[nodiscard]] std::vector<std::string> entries() const;
    // Gives the entry's bytes to `sink`, piece by piece. Throws std::runtime_error if the entry is broken,
    // or is larger than `limit` bytes.
    void read(const std::string& entry, uint64_t limit,
              const std::function<void(std::span<const char>)>& sink) const;

private:
    struct Handle;
    std::unique_ptr<Handle> m_handle;
};

// Writes an archive of the given entries (name, content) to `path`; throws std::runtime_error.
void gf_writeZip(const std::filesystem::path& path,
                 const std::vector<std::pair<std::string, std::string>>& entries);

}  // namespace vlt
