#include "standin/realtraffic_client.h"

#include <algorithm>
#include <asio/buffer.hpp>
#include <asio/connect.hpp>
#include <asio/executor_work_guard.hpp>
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
constexpr size_t kGarbageBytes = 300'000;
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

    void leave()
    {
        asio::post(m_context, [this] {
            std::error_code ignored;
            m_away = true;
            m_timer.cancel();
            m_socket.close(ignored);
        });
    }

    void comeBack()
    {
        asio::post(m_context, [this] {
            if (m_away || m_deaf) {
                m_away = false;
                m_deaf = false;
                connect();
            }
        });
    }

    void stopReading()
    {
        asio::post(m_context, [this] { m_deaf = true; });
    }

    void sendGarbage()
    {
        asio::post(m_context, [this] {
            std::string garbage(kGarbageBytes, '\0');
            std::generate(garbage.begin(), garbage.end(), [n = 0U]() mutable {
                n = n * 1664525U + 1013904223U;
                return static_cast<char>(n >> 24U);
            });
            std::error_code ignored;
            asio::write(m_socket, asio::buffer(garbage), ignored);
        });
    }

private:
    void connect()
    {
        if (m_away) {
            return;
        }
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
                                   if (!m_deaf) {
                                       read();
                                   }
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
        m_report.versions += line.starts_with("Qs999=") ? 1 : 0;
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
    // While it stays away there is nothing else to do.
    const asio::executor_work_guard<asio::io_context::executor_type> m_work{m_context.get_executor()};
    const asio::ip::tcp::endpoint m_server;
    asio::ip::tcp::socket m_socket;
    asio::steady_timer m_timer;
    std::string m_received;
    bool m_away = false;
    bool m_deaf = false;
    mutable std::mutex m_mutex;  // m_report
    PositionReport m_report;
    std::jthread m_thread;
};

RealTrafficClient::RealTrafficClient(uint16_t port) : m_service(std::make_unique<Service>(port)) {}

RealTrafficClient::~RealTrafficClient() = default;

void RealTrafficClient::leave()
{
    m_service->leave();
}

void RealTrafficClient::comeBack()
{
    m_service->comeBack();
}

void RealTrafficClient::stopReading()
{
    m_service->stopReading();
}

void RealTrafficClient::sendGarbage()
{
    m_service->sendGarbage();
}

PositionReport RealTrafficClient::report() const
{
    return m_service->report();
}

}  // namespace vlt
