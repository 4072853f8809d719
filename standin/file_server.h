// A web server for the downloads of the program, with faults to play.
//
// A thread of its own between start and stop, and those of its library; any thread may call.
#pragma once

#include <atomic>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vlt {

enum class FileFault {
    None,
    NotFound,     // 404 for every file
    ServerError,  // 500 for every file
    CutBody,      // half the body, then the connection closes
    NotAZip,      // a text in the place of every file
    Silent,       // takes the request and never answers
    Slow,         // answers after 8 s
};

// "404", "500", "cut", "not-a-zip", "silent", "slow", "none"; none for another word.
std::optional<FileFault> gf_fileFault(std::string_view word);

struct FileServerOptions {
    std::filesystem::path folder;
    uint16_t port = 0;  // 0 picks a free one
    FileFault fault = FileFault::None;
    std::string faultPath;  // the fault strikes only paths that contain this
};

class FileServer
{
public:
    explicit FileServer(FileServerOptions options);
    ~FileServer();
    FileServer(const FileServer&) = delete;
    FileServer& operator=(const FileServer&) = delete;

    // Serves on the loopback from now on; the port. Throws std::runtime_error if it can't be had.
    uint16_t start();
    void stop();
    void setFault(FileFault fault);  // from now on
    uint64_t requests() const;

private:
    class Service;
    std::unique_ptr<Service> m_service;
};

}  // namespace vlt
