#include "standin/realtraffic_client.h"

#include <asio/buffer.hpp>
#include <asio/connect.hpp>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/post.hpp>
#include <asio/read_until.hpp>
#include <asio/steady_timer.hpp>
#include <asio/write.hpp>
#include <chrono>
#include <mutex>
#include <thread>

namespace vlt {

constexpr size_t kLongestLine = 16384;
constexpr std::chrono::seconds kRetryPause{1};
constexpr const char* kVersionReply = "{\"version\": \"10.0.240\", \"client\": \"stand-in\"}\r\n";

class RealTrafficClient::Service
{
public:
    explicit Service(uint16_t port)
        : m_server(asio::ip::address_v4::loopback(), port), m_socket(m_context), m_timer(m_context)
    {
        connect();
        m_thread = std::jthread([this] { m_context.run(); });
    }

    ~Service()
    {
        asio::post(m_context, [this] {
            std::error_code ignored;
            m_timer.cancel();
            m_socket.close(ignored);
            m_context.stop();
        });
    }

    PositionReport report() const
    {
        const std::scoped_lock lock(m_mutex);
        return m_report;
    }

private:
    void connect()
    {
        m_socket = asio::ip::tcp::socket(m_context);
        m_socket.async_connect(m_server, [this](std::error_code error) {
            if (error) {
                return retry();
            }
            {
                const std::scoped_lock lock(m_mutex);
                ++m_report.connections;
            }
            m_received.clear();
            read();
        });
    }

    void retry()
    {
        m_timer.expires_after(kRetryPause);
        m_timer.async_wait([this](std::error_code error) {
            if (!error) {
                connect();
            }
        });
    }

    void read()
    {
        asio::async_read_until(m_socket, asio::dynamic_buffer(m_received, kLongestLine), "\r\n",
                               [this](std::error_code error, size_t bytes) {
                                   if (error) {
                                       return retry();
                                   }
                                   take(m_received.substr(0, bytes - 2));
                                   m_received.erase(0, bytes);
                                   read();
                               });
    }

    void take(const std::string& line)
    {
        if (line.starts_with("Qs999=")) {
            std::error_code ignored;
            asio::write(m_socket, asio::buffer(kVersionReply, std::char_traits<char>::length(kVersionReply)),
                        ignored);
        }
        const std::scoped_lock lock(m_mutex);
        if (line.starts_with("Qs121=")) {
            ++m_report.positions;
            m_report.lastPosition = line;
        } else if (line.starts_with("Qs123=")) {
            ++m_report.times;
        } else if (line == "exit") {
            m_report.goodbye = true;
        }
    }

    asio::io_context m_context;
    const asio::ip::tcp::endpoint m_server;
    asio::ip::tcp::socket m_socket;
    asio::steady_timer m_timer;
    std::string m_received;
    mutable std::mutex m_mutex;  // m_report
    PositionReport m_report;
    std::jthread m_thread;
};

RealTrafficClient::RealTrafficClient(uint16_t port) : m_service(std::make_unique<Service>(port)) {}

RealTrafficClient::~RealTrafficClient() = default;

PositionReport RealTrafficClient::report() const
{
    return m_service->report();
}

}  // namespace vlt
