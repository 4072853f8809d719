#include "standin/file_server.h"

#include "core/base/text.h"

#include <array>
#include <condition_variable>
#include <fstream>
#include <httplib.h>
#include <iterator>
#include <mutex>
#include <stdexcept>
#include <thread>

namespace vlt {

struct FaultRow {
    std::string_view word;
    FileFault fault;
};

constexpr std::chrono::seconds kSlowness(8);

constexpr std::array<FaultRow, 7> kFaults{{{"none", FileFault::None},
                                           {"404", FileFault::NotFound},
                                           {"500", FileFault::ServerError},
                                           {"cut", FileFault::CutBody},
                                           {"not-a-zip", FileFault::NotAZip},
                                           {"silent", FileFault::Silent},
                                           {"slow", FileFault::Slow}}};

std::optional<FileFault> gf_fileFault(std::string_view word)
{
    for (const FaultRow& row : kFaults) {
        if (row.word == word) {
            return row.fault;
        }
    }
    return std::nullopt;
}

class FileServer::Service
{
public:
    explicit Service(FileServerOptions options) : present(options.fault), m_options(std::move(options))
    {
        m_server.Get(".*", [this](const httplib::Request& request, httplib::Response& response) {
            ++requests;
            answer(request.path, response);
        });
    }

    ~Service()
    {
        {
            const std::scoped_lock lock(m_mutex);
            m_stopping = true;
        }
        m_wake.notify_all();
        m_server.stop();
        if (m_thread.joinable()) {
            m_thread.join();
        }
    }

    uint16_t start()
    {
        const char* loopback = "127.0.0.1";
        int port = m_options.port;
        if (port == 0) {
            port = m_server.bind_to_any_port(loopback);
        } else if (!m_server.bind_to_port(loopback, port)) {
            port = -1;
        }
        if (port < 0) {
            throw std::runtime_error(format("file server: port {} can't be had", m_options.port));
        }
        m_thread = std::jthread([this] { m_server.listen_after_bind(); });
        // A stop before it listens would be lost, and the thread would listen for ever.
        while (!m_server.is_running()) {
            std::this_thread::sleep_for(std::chrono::milliseconds(1));
        }
        return static_cast<uint16_t>(port);
    }

    std::atomic<uint64_t> requests = 0;  // [atomic] the library's threads write
    std::atomic<FileFault> present;      // [atomic]

private:
    void answer(const std::string& path, httplib::Response& response)
    {
        const bool struck = path.find(m_options.faultPath) != std::string::npos;
        const FileFault fault = struck ? present.load() : FileFault::None;
        const auto body = fault == FileFault::NotFound ? std::nullopt : read(path);
        switch (fault) {
        case FileFault::ServerError:
            response.status = 500;
            return;
        case FileFault::NotAZip:
            response.set_content("This is a page about a file that has moved, and no archive.", "text/html");
            return;
        case FileFault::Silent: {
            std::unique_lock lock(m_mutex);
            m_wake.wait(lock, [this] { return m_stopping; });
            return;
        }
        case FileFault::Slow: {
            std::unique_lock lock(m_mutex);
            m_wake.wait_for(lock, kSlowness, [this] { return m_stopping; });
            break;
        }
        case FileFault::None:
        case FileFault::NotFound:
        case FileFault::CutBody:
            break;
        }
        if (!body) {
            response.status = 404;
        } else if (fault == FileFault::CutBody) {
            cut(*body, response);
        } else {
            response.set_content(*body, "application/octet-stream");
        }
    }

    // Promises the whole length and breaks off in the middle.
    static void cut(const std::string& body, httplib::Response& response)
    {
        response.set_content_provider(
            std::max<size_t>(body.size(), 2), "application/octet-stream",
            [half = body.substr(0, body.size() / 2)](size_t at, size_t, httplib::DataSink& sink) {
                return at == 0 && !half.empty() && sink.write(half.data(), half.size());
            });
    }

    std::optional<std::string> read(const std::string& path) const
    {
        const size_t name = path.find_first_not_of('/');
        if (name == std::string::npos || path.find("..") != std::string::npos || m_options.folder.empty()) {
            return std::nullopt;
        }
        const std::filesystem::path file = m_options.folder / path.substr(name);
        std::error_code ignored;
        if (!std::filesystem::is_regular_file(file, ignored)) {
            return std::nullopt;
        }
        std::ifstream in(file, std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(in), {});
    }

    const FileServerOptions m_options;
    httplib::Server m_server;
    std::mutex m_mutex;  // m_stopping
    std::condition_variable m_wake;
    bool m_stopping = false;
    std::jthread m_thread;
};

FileServer::FileServer(FileServerOptions options) : m_service(std::make_unique<Service>(std::move(options)))
{
}

FileServer::~FileServer() = default;

uint16_t FileServer::start()
{
    return m_service->start();
}

void FileServer::stop()
{
    m_service.reset();
}

void FileServer::setFault(FileFault fault)
{
    m_service->present = fault;
}

uint64_t FileServer::requests() const
{
    return m_service ? m_service->requests.load() : 0;
}

}  // namespace vlt
