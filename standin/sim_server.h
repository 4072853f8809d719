// The virtual simulator on the wire: TCP on IPv4 and IPv6, and the local pipe, one client at a
// time.
//
// One I/O thread between start and stop runs the sockets and the simulator's clock in real time.
// The other functions may be called from any thread.
#pragma once

#include "standin/virtual_simulator.h"

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

namespace vlt {

inline constexpr const char* kSimulatorPipe = "\\\\.\\pipe\\Lockheed Martin Prepar3D v5\\SimConnect";

struct ServerOptions {
    std::optional<uint16_t> ipv4Port;  // 0 picks a free one; none for no IPv4
    std::optional<uint16_t> ipv6Port;
    std::string pipe = kSimulatorPipe;  // empty for none
};

// Where the server listens; 0 or empty where it doesn't.
struct ServerAddress {
    uint16_t ipv4Port = 0;
    uint16_t ipv6Port = 0;
    std::string pipeFile;
};

class SimServer
{
public:
    // The simulator must outlive the server.
    SimServer(VirtualSimulator& simulator, ServerOptions options);
    ~SimServer();
    SimServer(const SimServer&) = delete;
    SimServer& operator=(const SimServer&) = delete;

    // Listens from now on. Throws std::system_error if an address can't be had.
    ServerAddress start();
    // Does nothing for so long: neither clock nor sockets.
    void stall(double seconds);
    // Sends what is left, closes everything, joins the thread.
    void stop();

private:
    class Service;
    VirtualSimulator& m_simulator;
    const ServerOptions m_options;
    std::unique_ptr<Service> m_service;
};

}  // namespace vlt
