// What the virtual simulator finds fault with in the packets that it gets.
//
// Each check gives the reason in words, empty for nothing wrong. Stateless.
#pragma once

#include "standin/sim_object.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace vlt {

// One packet that was wrong.
struct Complaint {
    double time = 0;      // seconds of the simulator's clock
    uint32_t sendId = 0;  // 0 if the packet is too short to have one
    std::string function;
    std::string reason;
};

// The header of a client's packet.
struct ClientHeader {
    uint32_t size = 0;
    uint32_t version = 0;
    uint32_t function = 0;  // without kClientFunctionBase
    uint32_t sendId = 0;
};

// The header; none if the packet is shorter than one.
std::optional<ClientHeader> gf_clientHeader(std::span<const std::byte> packet);

// "CreateAircraft" and the like; the number in hexadecimal for an unknown function.
std::string gf_functionName(uint32_t function);

// The form of a whole packet: the size field against the bytes that came, version, known function,
// and the size that its function has.
std::string gf_checkForm(std::span<const std::byte> packet, const ClientHeader& header);

// Send ids rise from 1 and go from 0xFFFFFFFF to 1. Some are left out: a packet that couldn't be composed has
// used its id up.
std::string gf_checkSendId(uint32_t previous, uint32_t sendId);

// An object's state after a write: finite, and where an aircraft can be.
std::string gf_checkState(const SimObject& object);

// An object may be moved by the program: released, and frozen in all three ways.
std::string gf_checkMovable(const SimObject& object);

}  // namespace vlt
