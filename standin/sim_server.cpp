#include "standin/sim_server.h"

#include "platform/folders.h"
#include "platform/local_pipe.h"

#include <array>
#include <asio/generic/stream_protocol.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/ip/v6_only.hpp>
#include <asio/local/stream_protocol.hpp>
#include <asio/post.hpp>
#include <asio/read.hpp>
#include <asio/steady_timer.hpp>
#include <asio/write.hpp>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <thread>
#include <vector>

namespace vlt {

using Socket = asio::generic::stream_protocol::socket;

constexpr std::chrono::microseconds kFramePause{1'000'000 / kFramesPerSecond};
constexpr double kLongestFrame = 0.5;           // seconds; a machine that slept doesn't rush after it
constexpr size_t kReadSize = 65536;             // bytes asked for in one read
constexpr size_t kLargestBacklog = 16'777'216;  // bytes that a client may leave unread
constexpr size_t kSizeField = 4;
constexpr std::chrono::milliseconds kFarewell{500};  // for a running write, at the end
constexpr std::chrono::milliseconds kClosePause{1};

// All members belong to the I/O thread, once it runs.
class SimServer::Service
{
public:
    Service(VirtualSimulator& simulator, const ServerOptions& options)
        : m_simulator(simulator), m_frameTimer(m_context), m_last(std::chrono::steady_clock::now())
    {
        listenTcp(m_ipv4, options.ipv4Port, asio::ip::tcp::v4(), address.ipv4Port);
        listenTcp(m_ipv6, options.ipv6Port, asio::ip::tcp::v6(), address.ipv6Port);
        listenPipe(options.pipe);
        waitFrame();
        m_thread = std::jthread([this] {
            try {
                m_context.run();
            } catch (const std::exception& e) {
                std::cerr << "simulator server: " << e.what() << std::endl;
            }
        });
    }

    ~Service()
    {
        asio::post(m_context, [this] {
            m_closing = true;
            m_frameTimer.cancel();
            closeAll(std::chrono::steady_clock::now() + kFarewell);
        });
        if (m_thread.joinable()) {
            m_thread.join();
        }
#if defined(ASIO_HAS_LOCAL_SOCKETS)
        if (!address.pipeFile.empty()) {
            std::error_code ignored;
            std::filesystem::remove(address.pipeFile, ignored);
        }
#endif
    }

    void stall(double seconds)
    {
        asio::post(m_context,
                   [seconds] { std::this_thread::sleep_for(std::chrono::duration<double>(seconds)); });
    }

    ServerAddress address;

private:
    void listenTcp(std::optional<asio::ip::tcp::acceptor>& acceptor, std::optional<uint16_t> port,
                   asio::ip::tcp family, uint16_t& bound)
    {
        if (!port) {
            return;
        }
        const bool v6 = family == asio::ip::tcp::v6();
        const asio::ip::address loopback = v6 ? asio::ip::address(asio::ip::address_v6::loopback())
                                              : asio::ip::address(asio::ip::address_v4::loopback());
        acceptor.emplace(m_context);
        acceptor->open(family);
        acceptor->set_option(asio::ip::tcp::acceptor::reuse_address(true));
        acceptor->bind({loopback, *port});
        acceptor->listen();
        bound = acceptor->local_endpoint().port();
        accept(*acceptor);
    }

    void listenPipe(const std::string& name)
    {
#if defined(ASIO_HAS_LOCAL_SOCKETS)
        if (name.empty()) {
            return;
        }
        if (!gf_makeRuntimeFolder()) {
            throw std::runtime_error(gf_runtimeFolder().string() + " belongs to another user");
        }
        const std::filesystem::path file = gf_localPipeFile(name);
        std::filesystem::create_directories(file.parent_path());
        std::filesystem::remove(file);  // left over from a run that was cut off
        m_pipe.emplace(m_context, asio::local::stream_protocol::endpoint(file.string()));
        address.pipeFile = file.string();
        accept(*m_pipe);
#else
        (void)name;
#endif
    }

    template <typename Acceptor>
    void accept(Acceptor& acceptor)
    {
        acceptor.async_accept([this, &acceptor](std::error_code error, auto peer) {
            if (!acceptor.is_open()) {
                return;
            }
            if (!error) {
                take(Socket(std::move(peer)));
            }
            accept(acceptor);
        });
    }

    // A second client is turned away: its socket closes as it falls out of scope.
    void take(Socket peer)
    {
        if (m_client || !m_simulator.connect()) {
            return;
        }
        m_client = std::make_unique<Socket>(std::move(peer));
        ++m_clientNumber;
        m_received.clear();
        m_outgoing.clear();
        m_writing.clear();
        read();
    }

    void read()
    {
        m_client->async_read_some(asio::buffer(m_chunk),
                                  [this, number = m_clientNumber](std::error_code error, size_t bytes) {
                                      if (!m_client || number != m_clientNumber) {
                                          return;
                                      }
                                      if (error) {
                                          return dropClient();
                                      }
                                      m_received.insert(m_received.end(), m_chunk.begin(),
                                                        m_chunk.begin() + static_cast<ptrdiff_t>(bytes));
                                      if (!takePackets()) {
                                          return dropClient();
                                      }
                                      flush();
                                      read();
                                  });
    }

    // Hands on every whole packet. False if the stream can't be followed any further.
    bool takePackets()
    {
        size_t at = 0;
        while (m_received.size() - at >= kSizeField) {
            uint32_t size = 0;
            std::memcpy(&size, m_received.data() + at, sizeof size);
            const std::span<const std::byte> rest = std::span(m_received).subspan(at);
            if (size < kClientHeaderSize || size > kMaxClientPacket) {
                m_simulator.handlePacket(rest);  // so that it is listed
                return false;
            }
            if (rest.size() < size) {
                break;
            }
            m_simulator.handlePacket(rest.first(size));
            at += size;
        }
        m_received.erase(m_received.begin(), m_received.begin() + static_cast<ptrdiff_t>(at));
        return true;
    }

    void waitFrame()
    {
        m_frameTimer.expires_after(kFramePause);
        m_frameTimer.async_wait([this](std::error_code error) {
            if (error || m_closing) {
                return;
            }
            const auto now = std::chrono::steady_clock::now();
            const double passed = std::chrono::duration<double>(now - m_last).count();
            m_last = now;
            m_simulator.advance(std::min(passed, kLongestFrame));
            if (m_client && !m_simulator.started()) {
                dropClient();
            }
            flush();
            waitFrame();
        });
    }

    // Collects the simulator's messages and writes them, one write at a time.
    void flush()
    {
        if (!m_client) {
            return;
        }
        for (const std::vector<std::byte>& message : m_simulator.takeMessages()) {
            m_outgoing.insert(m_outgoing.end(), message.begin(), message.end());
        }
        if (m_outgoing.size() > kLargestBacklog) {
            return dropClient();
        }
        if (!m_writing.empty() || m_outgoing.empty()) {
            return;
        }
        m_writing.swap(m_outgoing);
        asio::async_write(*m_client, asio::buffer(m_writing),
                          [this, number = m_clientNumber](std::error_code error, size_t) {
                              if (!m_client || number != m_clientNumber) {
                                  return;
                              }
                              m_writing.clear();
                              if (error) {
                                  return dropClient();
                              }
                              flush();
                          });
    }

    void dropClient()
    {
        // Running reads and writes still refer to the buffers, not to the socket: the number tells
        // their handlers that their client is gone.
        m_client.reset();
        ++m_clientNumber;
        m_simulator.disconnect();
    }

    // Waits for a running write, but not beyond `deadline`: the last words come after it.
    void closeAll(std::chrono::steady_clock::time_point deadline)
    {
        if (m_client && !m_writing.empty() && std::chrono::steady_clock::now() < deadline) {
            m_frameTimer.expires_after(kClosePause);
            m_frameTimer.async_wait([this, deadline](std::error_code) { closeAll(deadline); });
            return;
        }
        std::error_code ignored;
        if (m_ipv4) {
            m_ipv4->close(ignored);
        }
        if (m_ipv6) {
            m_ipv6->close(ignored);
        }
#if defined(ASIO_HAS_LOCAL_SOCKETS)
        if (m_pipe) {
            m_pipe->close(ignored);
        }
#endif
        if (m_client) {
            sendRest();
            dropClient();
        }
        m_context.stop();
    }

    // The last words, such as the quit message, as far as they go out at once.
    void sendRest()
    {
        std::error_code ignored;
        for (const std::vector<std::byte>& message : m_simulator.takeMessages()) {
            m_outgoing.insert(m_outgoing.end(), message.begin(), message.end());
        }
        m_client->non_blocking(true, ignored);
        if (m_writing.empty() && !m_outgoing.empty()) {
            asio::write(*m_client, asio::buffer(m_outgoing), ignored);
        }
        m_client->shutdown(Socket::shutdown_both, ignored);
    }

    VirtualSimulator& m_simulator;
    asio::io_context m_context;
    asio::steady_timer m_frameTimer;
    std::optional<asio::ip::tcp::acceptor> m_ipv4;
    std::optional<asio::ip::tcp::acceptor> m_ipv6;
#if defined(ASIO_HAS_LOCAL_SOCKETS)
    std::optional<asio::local::stream_protocol::acceptor> m_pipe;
#endif
    std::unique_ptr<Socket> m_client;
    uint64_t m_clientNumber = 0;
    bool m_closing = false;
    std::array<std::byte, kReadSize> m_chunk;
    std::vector<std::byte> m_received;
    std::vector<std::byte> m_outgoing;  // waits for the write that runs
    std::vector<std::byte> m_writing;   // runs, until its handler empties it
    std::chrono::steady_clock::time_point m_last;
    std::jthread m_thread;
};

SimServer::SimServer(VirtualSimulator& simulator, ServerOptions options)
    : m_simulator(simulator), m_options(std::move(options))
{
}

SimServer::~SimServer()
{
    stop();
}

ServerAddress SimServer::start()
{
    m_service = std::make_unique<Service>(m_simulator, m_options);
    return m_service->address;
}

void SimServer::stall(double seconds)
{
    if (m_service) {
        m_service->stall(seconds);
    }
}

void SimServer::stop()
{
    m_service.reset();
}

}  // namespace vlt
