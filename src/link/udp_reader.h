// The base of the feed readers: a thread that receives datagrams on one UDP port.
//
// A reader runs on its own thread, from `gf_startReader` to its stop flag, and takes no lock here. Its
// failure ends the run with READER ERROR.
#pragma once

#include "core/base/shared_value.h"

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <thread>

namespace vlt {

inline constexpr size_t kDatagramLimit = 16384;  // bytes; a datagram as long as this isn't processed

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

    // Takes one received datagram of `size` bytes, which lies in `buffer`: counts it, leaves out those of
    // kDatagramLimit bytes and repetitions, and has the others processed.
    void takeDatagram(size_t size);

    const std::string name;
    std::array<char, kDatagramLimit + 1> buffer{};  // [reader] with room for a closing zero
    std::string_view datagram;                      // [reader] view into buffer
    std::string lastDatagram;                       // [reader] copy of the one before
    SharedValue<bool> stop = false;                 // set by the worker, tested by the loop
    SharedValue<int32_t> packets = 0;               // datagrams received
};

// Starts the reader's thread on `port`: 127.0.0.1 if RealTraffic is on this PC, else any address. The
// thread is to be joined after `stop` was set and its stop token asked, which wakes it at once.
std::jthread gf_startReader(UdpReader& reader, uint16_t port);

}  // namespace vlt
