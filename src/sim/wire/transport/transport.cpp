#include "sim/wire/transport/transport.h"

#include "sim/wire/transport/io_thread.h"

#include <asio/error.hpp>
#include <new>
#include <utility>

namespace vlt {

// How a read or write that did not succeed ends the connection. The statuses are the system's own
// for these events.
struct Ending {
    std::error_code error;
    CloseReason reason;
    SimStatus status;
};

static Ending lf_endingAfter(std::error_code error)
{
    const auto status = [](uint32_t bits) { return static_cast<SimStatus>(bits); };
    const Ending endings[] = {
        {asio::error::operation_aborted, CloseReason::Cancelled, status(0xC0000120)},
        {asio::error::not_connected, CloseReason::Broken, status(0xC000013C)},
        {asio::error::broken_pipe, CloseReason::Broken, status(0xC000014B)},
        {asio::error::connection_reset, CloseReason::Broken, status(0xC000020D)},
        {asio::error::eof, CloseReason::EndOfBytes, status(0xC000013E)},
    };
    for (const Ending& ending : endings) {
        if (ending.error == error) {
            return ending;
        }
    }
    return {error, CloseReason::Failed, status(0xC0000001)};
}

SimTransport::SimTransport(const SimConfig& config)
    : m_maxReceiveSize(config.maxReceiveSize), m_disableNagle(config.disableNagle), m_stream(gf_ioContext())
{
}

std::error_code SimTransport::connect(const SimTarget& target)
{
    // Nobody else knows the object yet, so that the wait needs no lock.
    if (const std::error_code error = m_stream.connect(target)) {
        return error;
    }
    start();
    const std::scoped_lock lock(m_stateMutex);
    postRead();
    return {};
}

void SimTransport::start()
{
    const std::scoped_lock lock(m_stateMutex);
    {
        const std::scoped_lock outgoingLock(m_outgoingMutex);
        m_outgoing.clear();
    }
    m_receiveBuffer.reset();
    if (m_disableNagle) {
        m_stream.disableNagle();
    }
    m_open = true;
}

bool SimTransport::close(CloseReason reason, SimStatus status)
{
    const std::scoped_lock lock(m_stateMutex);
    return closeLocked(reason, status);
}

bool SimTransport::closeLocked(CloseReason reason, SimStatus status)
{
    const bool wasOpen = m_stream.isOpen();
    m_open = false;
    if (reason != CloseReason::None) {
        m_closeStatus = status;
    }
    m_stream.close();
    m_closeReason = reason;
    return wasOpen;
}

void SimTransport::closeAfter(std::error_code error)
{
    // Closing shuts down first, which a running read may take for the other side's end.
    const Ending ending = lf_endingAfter(m_stream.isOpen() ? error : asio::error::operation_aborted);
    closeLocked(ending.reason, ending.status);
}

bool SimTransport::isOpen()
{
    const std::scoped_lock lock(m_stateMutex);
    return m_open && m_stream.isOpen();
}

void SimTransport::postRead()
{
    m_stream.readSome(m_receiveBuffer.room(),
                      [self = shared_from_this()](std::error_code error, size_t count) {
                          self->complete([&] { self->readDone(error, count); });
                      });
}

// A completion that fails half-way would leave the connection open and deaf.
template <typename Handle>
void SimTransport::complete(Handle handle)
{
    const std::scoped_lock lock(m_stateMutex);
    try {
        handle();
    } catch (const std::bad_alloc&) {
        closeLocked(CloseReason::NoMemory, kStatusNoMemory);
    } catch (const std::exception&) {
        closeAfter({});
    }
}

void SimTransport::readDone(std::error_code error, size_t count)
{
    // A closed stream: its owner closed it while this completion was on its way.
    if (error || !m_stream.isOpen()) {
        closeAfter(error);
        return;
    }
    m_receiveBuffer.filled(count);
    takePackets();
    if (m_stream.isOpen()) {
        postRead();
    }
}

void SimTransport::takePackets()
{
    using Kind = ReceiveBuffer::Taken::Kind;
    while (true) {
        const ReceiveBuffer::Taken taken = m_receiveBuffer.take(m_maxReceiveSize);
        switch (taken.kind) {
        case Kind::Packet:
            packetReceived(m_receiveBuffer.packet());
            break;
        case Kind::Wait:
            return;
        case Kind::Broken:
            closeLocked(taken.reason, taken.status);
            return;
        }
    }
}

bool SimTransport::send(std::span<const std::byte> bytes)
{
    {
        const std::scoped_lock lock(m_outgoingMutex);
        m_outgoing.emplace_back(bytes.begin(), bytes.end());
    }
    const std::scoped_lock lock(m_stateMutex);
    startNextWrite();
    return m_stream.isOpen();
}

void SimTransport::startNextWrite()
{
    if (m_writeInFlight || !m_stream.isOpen()) {
        return;
    }
    {
        const std::scoped_lock lock(m_outgoingMutex);
        if (m_outgoing.empty()) {
            return;
        }
        m_writing = std::move(m_outgoing.front());
        m_outgoing.pop_front();
    }
    m_written = 0;
    m_writeInFlight = true;
    postWrite();
}

void SimTransport::postWrite()
{
    m_stream.writeSome(std::span<const std::byte>(m_writing).subspan(m_written),
                       [self = shared_from_this()](std::error_code error, size_t count) {
                           self->complete([&] { self->writeDone(error, count); });
                       });
}

void SimTransport::writeDone(std::error_code error, size_t count)
{
    m_written += count;
    if (!error && m_written < m_writing.size() && m_stream.isOpen()) {
        postWrite();
        return;
    }
    m_writeInFlight = false;
    if (error) {
        closeAfter(error);
    } else {
        startNextWrite();
    }
}

}  // namespace vlt
