// The base of the feed readers: a thread that receives datagrams on one UDP port.
//
// A reader runs on its own thread, from `gf_startReader` until its stop token is asked, and takes no lock
// here. Its failure ends the run with READER ERROR.
#pragma once

#include "core/base/shared_value.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <thread>

namespace vlt {

inline constexpr size_t kDatagramLimit = 16384;  // bytes; a datagram as long as this isn't processed

// What a feed does; between two looks at a running one it counts as before.
enum class FeedState : int32_t { Receiving, Silent, Stopped };

class UdpReader
{
public:
    explicit UdpReader(std::string readerName) : name(std::move(readerName)) {}
    UdpReader(const UdpReader&) = delete;
    UdpReader& operator=(const UdpReader&) = delete;
    virtual ~UdpReader() = default;
    // The present datagram stands in `datagram`.
    virtual void processDatagram() = 0;
    // The socket is open.
    virtual void onStarted() = 0;
    // The reader has stopped as asked.
    virtual void onStopped() = 0;
    // Forgets what was heard, while the reader runs or not: a running one is silent until it hears again.
    virtual void forget();

    // Compares the count of datagrams with that of the last look: a running reader that brought nothing is
    // silent. Worker thread.
    void lookWhetherSilent();

    // Takes one datagram: counts it, leaves out those of kDatagramLimit bytes and repetitions, and has the
    // others processed. An empty one is none. What views the datagram is valid as long as `received`.
    void take(std::string_view received);

    const std::string name;
    std::string_view datagram;         // [reader] the one at hand
    std::string lastDatagram;          // [reader] copy of the one before
    SharedValue<int32_t> packets = 0;  // datagrams received
    int32_t packetsAtLastLook = 0;     // [worker]
    SharedValue<FeedState> state = FeedState::Stopped;
};

// Starts the reader's thread on `port`: 127.0.0.1 if RealTraffic is on this PC, else any address. Its stop
// token wakes it at once.
std::jthread gf_startReader(UdpReader& reader, uint16_t port);

}  // namespace vlt
