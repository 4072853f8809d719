#include "standin/sim_checks.h"

#include "core/base/text.h"
#include "sim/wire/packets.h"
#include "traffic/geodesy.h"

#include <array>
#include <cmath>

namespace vlt {

constexpr double kLowestAltitude = -2000;  // feet
constexpr double kHighestAltitude = 70000;
constexpr double kFastest = 1500;                   // knots
constexpr double kFastestPush = 20;                 // knots, backwards out of a stand
constexpr double kSteepestPitch = 60 * kRadPerDeg;  // no airliner goes there, nor should an engine
constexpr double kSteepestBank = 80 * kRadPerDeg;
constexpr size_t kSetDataHeader = 36;

struct FunctionRow {
    SimFunction function;
    std::string_view name;
    size_t size;  // of the packet; the least for SetDataOnSimObject
};

// clang-format off
constexpr std::array<FunctionRow, 14> kFunctions{{
    {SimFunction::Open,                              "Open",                              296},
    {SimFunction::MapClientEventToSimEvent,          "MapClientEventToSimEvent",          276},
    {SimFunction::TransmitClientEvent,               "TransmitClientEvent",                36},
    {SimFunction::AddClientEventToNotificationGroup, "AddClientEventToNotificationGroup",  28},
    {SimFunction::SetNotificationGroupPriority,      "SetNotificationGroupPriority",       24},
    {SimFunction::AddToDataDefinition,               "AddToDataDefinition",               544},
    {SimFunction::RequestDataOnSimObject,            "RequestDataOnSimObject",             48},
    {SimFunction::RequestDataOnSimObjectType,        "RequestDataOnSimObjectType",         32},
    {SimFunction::SetDataOnSimObject,                "SetDataOnSimObject",     kSetDataHeader},
    {SimFunction::SubscribeToSystemEvent,            "SubscribeToSystemEvent",            276},
    {SimFunction::AICreateNonATCAircraft,            "AICreateNonATCAircraft",            344},
    {SimFunction::AIReleaseControl,                  "AIReleaseControl",                   24},
    {SimFunction::AIRemoveObject,                    "AIRemoveObject",                     24},
    {SimFunction::AISetAircraftFlightPlan,           "AISetAircraftFlightPlan",           284},
}};
// clang-format on

static const FunctionRow* lf_functionRow(uint32_t function)
{
    for (const FunctionRow& row : kFunctions) {
        if (static_cast<uint32_t>(row.function) == function) {
            return &row;
        }
    }
    return nullptr;
}

std::optional<ClientHeader> gf_clientHeader(std::span<const std::byte> packet)
{
    if (packet.size() < kClientHeaderSize) {
        return std::nullopt;
    }
    PacketReader reader(packet);
    ClientHeader header;
    header.size = reader.u32();
    header.version = reader.u32();
    header.function = reader.u32() - kClientFunctionBase;
    header.sendId = reader.u32();
    return header;
}

std::string gf_functionName(uint32_t function)
{
    const FunctionRow* row = lf_functionRow(function);
    return row ? std::string(row->name) : format("{:#x}", function);
}

std::string gf_checkForm(std::span<const std::byte> packet, const ClientHeader& header)
{
    if (header.size != packet.size()) {
        return format("size field {} on a packet of {} bytes", header.size, packet.size());
    }
    if (header.version != kClientProtocolVersion) {
        return format("version {}", header.version);
    }
    const FunctionRow* row = lf_functionRow(header.function);
    if (!row) {
        return "unknown function";
    }
    const bool growing = row->function == SimFunction::SetDataOnSimObject;
    if (growing ? packet.size() < row->size : packet.size() != row->size) {
        return format("{} bytes, its function has {}", packet.size(), row->size);
    }
    return {};
}

std::string gf_checkSendId(uint32_t previous, uint32_t sendId)
{
    // Counted in a circle, where the half ahead is later.
    const uint32_t ahead = sendId - previous;
    const bool later = sendId != 0 && ahead != 0 && ahead <= UINT32_MAX / 2;
    return later ? std::string() : format("send id {} after {}", sendId, previous);
}

std::string gf_checkState(const SimObject& object)
{
    const struct {
        const char* what;
        double value, lowest, highest;
    } rows[] = {
        {"latitude", object.lat, -90, 90},
        {"longitude", object.lon, -180, 180},
        {"altitude", object.altitude, kLowestAltitude, kHighestAltitude},
        {"pitch", object.pitch, -kSteepestPitch, kSteepestPitch},
        {"bank", object.bank, -kSteepestBank, kSteepestBank},
        {"heading", object.heading, -kTwoPi, kTwoPi},
        {"vertical speed", object.verticalSpeed, -kHighestAltitude, kHighestAltitude},
        {"airspeed", object.tas, -kFastestPush, kFastest},
    };
    for (const auto& row : rows) {
        if (!std::isfinite(row.value)) {
            return format("{} isn't finite", row.what);
        }
        if (row.value < row.lowest || row.value > row.highest) {
            return format("{} {:g} out of range", row.what, row.value);
        }
    }
    return {};
}

std::string gf_checkMovable(const SimObject& object)
{
    if (!object.released) {
        return format("object {} moved while the AI has control", object.id);
    }
    if (!object.frozenPosition || !object.frozenAltitude || !object.frozenAttitude) {
        return format("object {} moved without its three freezes", object.id);
    }
    return {};
}

}  // namespace vlt
