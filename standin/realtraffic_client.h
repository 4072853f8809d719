// Plays RealTraffic towards the program: connects to its position server, answers the question for
// the version, and takes in the positions.
//
// One thread of its own between start and stop, which connects anew once a second. Any thread may
// call.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace vlt {

struct PositionReport {
    uint64_t positions = 0;  // lines with a position
    uint64_t times = 0;      // lines with the simulator's time
    uint64_t versions = 0;   // questions for the version
    uint64_t connections = 0;
    bool goodbye = false;      // the server said "exit"
    std::string lastPosition;  // the last line with a position, without its end
};

class RealTrafficClient
{
public:
    // The port of the position server on this machine.
    explicit RealTrafficClient(uint16_t port);
    ~RealTrafficClient();
    RealTrafficClient(const RealTrafficClient&) = delete;
    RealTrafficClient& operator=(const RealTrafficClient&) = delete;

    PositionReport report() const;

    // What it does from now on.
    void leave();        // closes the connection, and stays away
    void comeBack();     // connects again
    void stopReading();  // stays connected
    void sendGarbage();  // a few hundred thousand bytes that mean nothing, once

private:
    class Service;
    std::unique_ptr<Service> m_service;
};

}  // namespace vlt
