// The byte level of one connection: reads that never stop, writes one at a time, and why it ended.
//
// The caller's threads and the I/O thread meet here. Each running read or write holds a reference,
// so that the object goes when the last of them has completed. Locks, where one is taken inside
// another:
//   connectionsMutex -> stateMutex -> outgoingMutex, incomingMutex
#pragma once

#include "sim/wire/transport/receive_buffer.h"
#include "sim/wire/transport/wire_stream.h"

#include <atomic>
#include <cstddef>
#include <deque>
#include <memory>
#include <mutex>
#include <span>
#include <system_error>
#include <vector>

namespace vlt {

class SimTransport : public std::enable_shared_from_this<SimTransport>
{
public:
    explicit SimTransport(const SimConfig& config);
    virtual ~SimTransport() = default;
    SimTransport(const SimTransport&) = delete;
    SimTransport& operator=(const SimTransport&) = delete;

    // Connects, starts, and begins to read; no error when somebody is there. Once in a connection's life.
    std::error_code connect(const SimTarget& target);
    // Forgets what was received or is waiting to be sent, and marks the connection as open.
    void start();
    // Closes the stream. A reason other than None is kept with its status, for whoever asks next;
    // of several the last one counts. False if it was closed already.
    bool close(CloseReason reason, SimStatus status);
    // Sends a copy of `bytes` after everything before it, without waiting. False if the stream is
    // closed.
    bool send(std::span<const std::byte> bytes);

    [[nodiscard]] bool isOpen();
    [[nodiscard]] CloseReason closeReason() const
    {
        return m_closeReason;
    }
    // The status with which the connection broke; valid once `closeReason` says so.
    [[nodiscard]] SimStatus closeStatus() const
    {
        return m_closeStatus;
    }

protected:
    // One whole packet has arrived. On the I/O thread, under the state's lock.
    virtual void packetReceived(std::span<const std::byte> packet) = 0;

private:
    // Takes stateMutex for a completion; one that throws closes the connection with its reason.
    template <typename Handle>
    void complete(Handle handle);

    // All below are called under stateMutex.
    bool closeLocked(CloseReason reason, SimStatus status);
    void closeAfter(std::error_code error);
    void takePackets();
    void postRead();
    void readDone(std::error_code error, size_t count);
    void startNextWrite();
    void postWrite();
    void writeDone(std::error_code error, size_t count);

    const uint32_t m_maxReceiveSize;
    const bool m_disableNagle;
    std::mutex m_stateMutex;
    WireStream m_stream;               // [stateMutex]
    bool m_open = false;               // [stateMutex]
    ReceiveBuffer m_receiveBuffer;     // [stateMutex]
    bool m_writeInFlight = false;      // [stateMutex]
    std::vector<std::byte> m_writing;  // [stateMutex] what the running write sends
    size_t m_written = 0;              // [stateMutex] bytes of it that are out
    std::mutex m_outgoingMutex;
    std::deque<std::vector<std::byte>> m_outgoing;               // [outgoingMutex]
    std::atomic<SimStatus> m_closeStatus = kSimOk;               // [atomic] written first
    std::atomic<CloseReason> m_closeReason = CloseReason::None;  // [atomic]
};

}  // namespace vlt
