// Cuts the simulator's byte stream into packets.
//
// A buffer that is read into at a write mark and taken from at a read mark. Knows nothing of
// sockets, so that tests and a fuzzer drive it with any chunks. No lock: whoever owns it has one.
#pragma once

#include "sim/wire/simconnect.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace vlt {

// Why a connection was closed. The numbers are the ones that turn up in notes about SimConnect.
enum class CloseReason : uint32_t {
    None = 0,
    TooLarge = 1,    // a packet above the limit
    BadSize = 2,     // a size of 1 to 3 bytes
    NoMemory = 3,    // no room for a packet
    EndOfBytes = 4,  // the other side has finished
    Broken = 5,      // the other side is gone
    Cancelled = 8,   // we closed it while something ran
    Failed = 9,      // anything else
};

inline constexpr SimStatus kStatusBadPacket = static_cast<SimStatus>(0x80004004);
inline constexpr SimStatus kStatusNoMemory = static_cast<SimStatus>(0x8007000E);

class ReceiveBuffer
{
public:
    static constexpr size_t kStep = 2048;        // bytes at first, and by which it grows
    static constexpr size_t kLargest = 1048576;  // bytes

    // What `take` found.
    struct Taken {
        enum class Kind { Packet, Wait, Broken } kind = Kind::Wait;
        CloseReason reason = CloseReason::None;  // of Broken
        SimStatus status = kSimOk;               // of Broken
    };

    ReceiveBuffer();

    // Where the next bytes go; never empty after `take` has said Wait.
    std::span<std::byte> room();
    // `count` bytes of the room have been filled.
    void filled(size_t count);
    // Looks for the next packet of at most `maxReceiveSize` bytes. Packet: it is in `packet()`
    // until the next call. Wait: more bytes are needed, and there is room for them. Broken: the
    // stream can't go on.
    Taken take(uint32_t maxReceiveSize);
    std::span<const std::byte> packet() const;
    // Forgets all bytes.
    void reset();

    [[nodiscard]] size_t capacity() const
    {
        return m_buffer.size();
    }

private:
    void skipZeros();
    void makeRoom();
    Taken wait();
    bool growPacket(size_t size);
    void takeBytes(size_t size);

    std::vector<std::byte> m_buffer;
    size_t m_writeMark = 0;
    size_t m_readMark = 0;
    std::vector<std::byte> m_packet;  // grows, holds one packet
    size_t m_packetSize = 0;          // bytes of m_packet in use
};

}  // namespace vlt
