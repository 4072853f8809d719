#include "sim/wire/transport/receive_buffer.h"

#include <algorithm>
#include <cstring>
#include <new>

namespace vlt {

using Kind = ReceiveBuffer::Taken::Kind;

constexpr size_t kSizeBytes = sizeof(uint32_t);  // a packet begins with its size

ReceiveBuffer::ReceiveBuffer() : m_buffer(kStep) {}

std::span<std::byte> ReceiveBuffer::room()
{
    return std::span(m_buffer).subspan(m_writeMark);
}

void ReceiveBuffer::filled(size_t count)
{
    m_writeMark += std::min(count, m_buffer.size() - m_writeMark);
}

std::span<const std::byte> ReceiveBuffer::packet() const
{
    return std::span(m_packet).first(m_packetSize);
}

void ReceiveBuffer::reset()
{
    m_writeMark = 0;
    m_readMark = 0;
}

void ReceiveBuffer::skipZeros()
{
    while (m_readMark < m_writeMark && m_buffer[m_readMark] == std::byte{0}) {
        ++m_readMark;
    }
    // What comes with a later read is judged anew: a zero there may be the low byte of a size.
    if (m_readMark == m_writeMark) {
        reset();
    }
}

void ReceiveBuffer::makeRoom()
{
    if (m_writeMark < m_buffer.size()) {
        return;
    }
    if (m_readMark > 0) {
        const auto first = m_buffer.begin() + static_cast<std::ptrdiff_t>(m_readMark);
        std::copy(first, m_buffer.end(), m_buffer.begin());
        m_writeMark -= m_readMark;
        m_readMark = 0;
    } else if (m_buffer.size() < kLargest) {
        m_buffer.resize(std::min(m_buffer.size() + kStep, kLargest));
    } else {
        // A packet that can never become whole here.
        reset();
    }
}

ReceiveBuffer::Taken ReceiveBuffer::wait()
{
    makeRoom();
    return {};
}

bool ReceiveBuffer::growPacket(size_t size)
{
    if (size <= m_packet.size()) {
        return true;
    }
    try {
        m_packet.reserve(size);
        m_packet.resize(size);
    } catch (const std::bad_alloc&) {
        return false;
    }
    return true;
}

void ReceiveBuffer::takeBytes(size_t size)
{
    std::memcpy(m_packet.data(), m_buffer.data() + m_readMark, size);
    m_packetSize = size;
    m_readMark += size;
    if (m_readMark == m_writeMark) {
        reset();
    }
}

ReceiveBuffer::Taken ReceiveBuffer::take(uint32_t maxReceiveSize)
{
    while (m_writeMark - m_readMark >= kSizeBytes) {
        uint32_t size = 0;
        std::memcpy(&size, m_buffer.data() + m_readMark, kSizeBytes);
        if (size > maxReceiveSize) {
            return {Kind::Broken, CloseReason::TooLarge, kStatusBadPacket};
        }
        if (size == 0) {
            skipZeros();
            continue;
        }
        if (size < kSizeBytes) {
            return {Kind::Broken, CloseReason::BadSize, kStatusBadPacket};
        }
        if (!growPacket(size)) {
            return {Kind::Broken, CloseReason::NoMemory, kStatusNoMemory};
        }
        if (m_writeMark - m_readMark < size) {
            return wait();
        }
        takeBytes(size);
        return {Kind::Packet};
    }
    return wait();
}

}  // namespace vlt
