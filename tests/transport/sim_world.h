// The surroundings of a transport test: folders of its own, and a simulator's end of the wire that
// the test itself reads and writes, byte by byte.
#pragma once

#include "platform/local_pipe.h"
#include "sim/wire/simconnect.h"
#include "support/temp_folder.h"

#include <algorithm>
#include <asio/generic/stream_protocol.hpp>
#include <asio/ip/tcp.hpp>
#include <asio/local/stream_protocol.hpp>
#include <asio/read.hpp>
#include <asio/write.hpp>
#include <chrono>
#include <cstring>
#include <initializer_list>
#include <string>
#include <thread>
#include <vector>

namespace vlt {

using Bytes = std::vector<std::byte>;

// Every folder that the transport looks into, empty at first.
struct SimWorld {
    TempFolder folder;
    ScopedVariable appData{"VELATRA_APPDATA", (folder.path() / "appdata").string()};
    ScopedVariable documents{"VELATRA_DOCUMENTS", (folder.path() / "documents").string()};
    ScopedVariable publicDocuments{"VELATRA_PUBLIC_DOCUMENTS", (folder.path() / "public").string()};
    ScopedVariable runtime{"VELATRA_RUNTIME", (folder.path() / "run").string()};

    void writeConfig(const std::string& lines)
    {
        folder.write("documents/SimConnect.cfg", "[SimConnect]\n" + lines);
    }
    void writeRegistry(const std::string& lines)
    {
        folder.write("appdata/registry.ini",
                     "[HKEY_CURRENT_USER\\SOFTWARE\\Lockheed Martin\\Prepar3D v5]\n" + lines);
    }
};

inline constexpr const char* kPipeName = R"(\\.\pipe\Lockheed Martin Prepar3D v5\SimConnect)";

// The simulator's end of one connection. The system completes a connect before it is accepted, so
// the test needs no thread of its own for it.
class SimPeer
{
public:
    template <typename Socket>
    explicit SimPeer(Socket socket) : m_socket(std::move(socket))
    {
    }
    Bytes read(size_t count)
    {
        Bytes bytes(count);
        asio::read(m_socket, asio::buffer(bytes));
        return bytes;
    }
    void write(const Bytes& bytes)
    {
        asio::write(m_socket, asio::buffer(bytes));
    }
    // Ends in good order, after all that was written.
    void finish()
    {
        m_socket.close();
    }
    // Ends like a machine that crashes.
    void reset()
    {
        m_socket.set_option(asio::socket_base::linger(true, 0));
        m_socket.close();
    }
    // Waits until the client has ended its side.
    bool readsEnd()
    {
        std::byte byte{};
        std::error_code error;
        asio::read(m_socket, asio::buffer(&byte, 1), error);
        return error == asio::error::eof;
    }

private:
    asio::generic::stream_protocol::socket m_socket;
};

template <typename Protocol>
struct Server {
    SimPeer accept()
    {
        return SimPeer(acceptor.accept());
    }
    asio::io_context context;
    typename Protocol::acceptor acceptor{context};
};

struct PipeServer : Server<asio::local::stream_protocol> {
    explicit PipeServer(int backlog = 8)
    {
        const auto file = gf_localPipeFile(kPipeName);
        std::filesystem::create_directories(file.parent_path());
        acceptor.open();
        acceptor.bind(file.string());
        acceptor.listen(backlog);
    }
};

struct TcpServer : Server<asio::ip::tcp> {
    TcpServer()
    {
        acceptor = {context, {asio::ip::address_v4::loopback(), 0}};
    }
    std::string port() const
    {
        return std::to_string(acceptor.local_endpoint().port());
    }
};

// A message of `size` bytes: size, version, id, and a body that tells its place.
inline Bytes gf_message(uint32_t size, uint32_t id)
{
    Bytes bytes(size);
    for (size_t i = 0; i < bytes.size(); ++i) {
        bytes[i] = static_cast<std::byte>(1 + (i + id) % 251);
    }
    const uint32_t header[] = {size, 3, id};
    std::memcpy(bytes.data(), header, std::min(bytes.size(), sizeof header));
    return bytes;
}

// The four bytes of a packet's size alone.
inline Bytes gf_size(uint32_t size)
{
    Bytes bytes(sizeof size);
    std::memcpy(bytes.data(), &size, sizeof size);
    return bytes;
}

inline Bytes gf_joined(std::initializer_list<Bytes> parts)
{
    Bytes all;
    for (const Bytes& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

inline uint32_t gf_u32At(const Bytes& bytes, size_t offset)
{
    uint32_t value = 0;
    std::memcpy(&value, &bytes.at(offset + sizeof value - 1) - (sizeof value - 1), sizeof value);
    return value;
}

}  // namespace vlt
