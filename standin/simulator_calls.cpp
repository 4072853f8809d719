// The virtual simulator's answers to packets about events and data, one function per kind of
// packet.
#include "standin/virtual_simulator.h"

#include "core/base/text.h"
#include "sim/wire/exceptions.h"
#include "traffic/geodesy.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <stdexcept>

namespace vlt {

constexpr uint32_t kOpenTag = 0x50334400;  // "P3D"
constexpr uint32_t kWidestRadiusM = 200'000;
constexpr uint32_t kPeriodNever = 0;
constexpr double kStepMargin = 1.5;   // a step may exceed the speed by this factor
constexpr double kStepJitter = 0.05;  // seconds by which a write may come early or late
constexpr double kStepRounding = 3;   // feet
constexpr double kCalmSeconds = 1;    // after the first write the object may be brought into place
constexpr std::array<const char*, 6> kSystemEvents{"SIM",   "OBJECTADDED",     "OBJECTREMOVED",
                                                   "FRAME", "POSITIONCHANGED", "FLIGHTLOADED"};

void VirtualSimulator::complain(const ClientHeader& header, std::string reason)
{
    ++m_counts.complaints;
    if (m_complaints.size() < kMaxComplaints) {
        m_complaints.push_back(
            {nowLocked(), header.sendId, gf_functionName(header.function), std::move(reason)});
    }
}

void VirtualSimulator::raise(uint32_t exception, uint32_t index)
{
    PacketWriter writer(SimMessageId::Exception);
    writer.u32(exception).u32(m_header.sendId).u32(index);
    send(writer);
}

void VirtualSimulator::handlePacket(std::span<const std::byte> packet)
{
    const std::scoped_lock lock(m_mutex);
    const auto header = gf_clientHeader(packet);
    if (!header) {
        complain({}, format("a packet of {} bytes", packet.size()));
        return;
    }
    m_header = *header;
    ++m_counts.packets[header->function];
    if (std::string reason = gf_checkSendId(m_lastSendId, header->sendId); !reason.empty()) {
        complain(*header, std::move(reason));
    }
    m_lastSendId = header->sendId;
    if (std::string reason = gf_checkForm(packet, *header); !reason.empty()) {
        complain(*header, std::move(reason));
        const bool version = header->version != kClientProtocolVersion;
        raise(version ? kExceptionVersionMismatch : kExceptionSizeMismatch, 0);
        return;
    }
    SimCall call;
    call.time = nowLocked();
    call.function = static_cast<SimFunction>(header->function);
    call.sendId = header->sendId;
    if (!m_opened && call.function != SimFunction::Open) {
        complain(*header, "sent before Open");
    }
    PacketReader reader(packet);
    reader.skip(kClientHeaderSize);
    try {
        dispatch(reader, call);
    } catch (const std::out_of_range&) {
        complain(*header, "data shorter than their definition");
        raise(kExceptionInvalidDataSize, 0);
    }
    if (m_options.keepCalls) {
        m_calls.push_back(std::move(call));
    }
}

void VirtualSimulator::dispatch(PacketReader& reader, SimCall& call)
{
    switch (call.function) {
    case SimFunction::Open:
        return onOpen(reader, call);
    case SimFunction::MapClientEventToSimEvent:
        return onMapEvent(reader, call);
    case SimFunction::TransmitClientEvent:
        return onTransmitEvent(reader, call);
    case SimFunction::AddClientEventToNotificationGroup:
    case SimFunction::SetNotificationGroupPriority:
        return onEventGroup(reader, call);
    case SimFunction::AddToDataDefinition:
        return onAddToDefinition(reader, call);
    case SimFunction::RequestDataOnSimObject:
        return onRequestData(reader, call);
    case SimFunction::RequestDataOnSimObjectType:
        return onRequestByType(reader, call);
    case SimFunction::SetDataOnSimObject:
        return onSetData(reader, call);
    case SimFunction::SubscribeToSystemEvent:
        return onSubscribe(reader, call);
    case SimFunction::AICreateNonATCAircraft:
        return onCreate(reader, call);
    case SimFunction::AIReleaseControl:
        return onRelease(reader, call);
    case SimFunction::AIRemoveObject:
        return onRemove(reader, call);
    case SimFunction::AISetAircraftFlightPlan:
        return onFlightPlan(reader, call);
    }
}

// ---- opening and events

void VirtualSimulator::onOpen(PacketReader& reader, SimCall& call)
{
    call.text = reader.text(kSimNameWidth);
    const uint32_t zero = reader.u32();
    const uint32_t tag = reader.u32();
    const uint32_t major = reader.u32();
    const uint32_t minor = reader.u32();
    if (zero != 0 || tag != kOpenTag || major != 5 || minor != 3) {
        complain(m_header, format("opening words {} {:#x} {} {}", zero, tag, major, minor));
    }
    if (m_opened) {
        complain(m_header, "opened twice");
    }
    m_opened = true;
    PacketWriter writer(SimMessageId::Open);
    writer.text(m_options.applicationName, kSimNameWidth);
    for (const uint32_t part : m_options.applicationVersion) {
        writer.u32(part);
    }
    writer.u32(5).u32(3).u32(0).u32(0).u32(0).u32(0);  // the protocol's version, and two reserved
    send(writer);
}

void VirtualSimulator::onMapEvent(PacketReader& reader, SimCall& call)
{
    call.id = reader.u32();
    call.text = reader.text(kSimNameWidth);
    const SimEventRow* event = gf_simEvent(call.text);
    if (!event) {
        complain(m_header, format("no event \"{}\"", call.text));
        return raise(kExceptionNameUnrecognized, 2);
    }
    if (!m_events.emplace(call.id, event).second) {
        complain(m_header, format("event {} mapped twice", call.id));
        raise(kExceptionEventIdDuplicate, 1);
    }
}

void VirtualSimulator::onEventGroup(PacketReader& reader, SimCall& call)
{
    call.id = reader.u32();
    call.value = reader.u32();  // the event or the priority
    if (call.function == SimFunction::SetNotificationGroupPriority) {
        const auto first = m_groups.lower_bound({call.id, 0});
        if (first == m_groups.end() || first->first != call.id) {
            complain(m_header, format("priority for the empty group {}", call.id));
        }
        return;
    }
    if (!m_events.contains(call.value)) {
        complain(m_header, format("event {} isn't mapped", call.value));
        return raise(kExceptionUnrecognizedId, 2);
    }
    m_groups.emplace(call.id, call.value);
}

void VirtualSimulator::onTransmitEvent(PacketReader& reader, SimCall& call)
{
    call.object = reader.u32();
    call.id = reader.u32();
    call.value = reader.u32();
    const auto event = m_events.find(call.id);
    if (event == m_events.end()) {
        complain(m_header, format("event {} isn't mapped", call.id));
        return raise(kExceptionUnrecognizedId, 2);
    }
    call.text = event->second->name;
    SimObject* object = findObject(call.object);
    if (!object) {
        const bool user = call.object == kVirtualUserId || call.object == kSimUserObject;
        complain(m_header, format("{} for {}", call.text,
                                  user ? "the user's aircraft" : format("unknown object {}", call.object)));
        return raise(kExceptionUnrecognizedId, 1);
    }
    if (call.value > event->second->highest) {
        complain(m_header, format("{} with the value {}", call.text, call.value));
    }
    if (!object->byClient) {
        complain(m_header, format("{} for somebody else's object {}", call.text, object->id));
    }
    gf_applyEvent(*object, *event->second, call.value);
    ++m_lives[object->id].events;
    noteFreezes(*object);
}

void VirtualSimulator::noteFreezes(const SimObject& object)
{
    ObjectLife& life = m_lives[object.id];
    if (life.frozenAt == kNeverInLife && object.frozenPosition && object.frozenAltitude &&
        object.frozenAttitude) {
        life.frozenAt = nowLocked();
    }
}

void VirtualSimulator::onSubscribe(PacketReader& reader, SimCall& call)
{
    call.id = reader.u32();
    call.text = reader.text(kSimNameWidth);
    const std::string name = gf_upperCase(call.text);
    if (std::find(kSystemEvents.begin(), kSystemEvents.end(), name) == kSystemEvents.end()) {
        complain(m_header, format("no system event \"{}\"", call.text));
        return raise(kExceptionNameUnrecognized, 2);
    }
    if (!m_subscriptions.emplace(name, call.id).second) {
        complain(m_header, format("\"{}\" subscribed twice", call.text));
    }
    if (name == "SIM") {
        sendEvent("SIM", m_running ? 1 : 0);
    }
}

// ---- data

void VirtualSimulator::onAddToDefinition(PacketReader& reader, SimCall& call)
{
    call.id = reader.u32();
    call.text = reader.text(kSimNameWidth);
    const std::string unit{reader.text(kSimNameWidth)};
    call.value = reader.u32();
    const auto entry = gf_definitionEntry(call.text, unit, call.value);
    if (!entry) {
        complain(m_header, format("no variable \"{}\" in \"{}\" as type {}", call.text, unit, call.value));
        const bool type = call.value < 1 || call.value > static_cast<uint32_t>(SimDataType::StringV);
        return raise(type ? kExceptionInvalidDataType : kExceptionNameUnrecognized, type ? 4 : 2);
    }
    m_definitions[call.id].push_back(*entry);
}

void VirtualSimulator::onRequestData(PacketReader& reader, SimCall& call)
{
    call.value = reader.u32();  // request
    call.id = reader.u32();     // definition
    call.object = reader.u32();
    const uint32_t period = reader.u32();
    if (!m_definitions.contains(call.id)) {
        complain(m_header, format("definition {} is empty", call.id));
        return raise(kExceptionUnrecognizedId, 2);
    }
    const bool user = call.object == kSimUserObject || call.object == kVirtualUserId;
    const SimObject* object = user ? &m_user : findObject(call.object);
    if (!object) {
        complain(m_header, format("data of unknown object {}", call.object));
        return raise(kExceptionUnrecognizedId, 3);
    }
    if (period == kSimPeriodSecond) {
        m_periodic[call.value] = {call.id, object->id, m_nowUs};
    } else if (period == kSimPeriodOnce) {
        sendData(SimMessageId::ObjectData, call.value, call.id, *object, 1, 1);
    } else if (period == kPeriodNever) {
        m_periodic.erase(call.value);
    } else {
        complain(m_header, format("period {} isn't served", period));
        raise(kExceptionDataError, 4);
    }
}

void VirtualSimulator::onRequestByType(PacketReader& reader, SimCall& call)
{
    call.value = reader.u32();  // request
    call.id = reader.u32();     // definition
    const uint32_t radiusM = reader.u32();
    const uint32_t type = reader.u32();
    if (!m_definitions.contains(call.id)) {
        complain(m_header, format("definition {} is empty", call.id));
        return raise(kExceptionUnrecognizedId, 2);
    }
    if (type != kSimObjectTypeAircraft || radiusM > kWidestRadiusM) {
        complain(m_header, format("type {} within {} m", type, radiusM));
        return raise(kExceptionDataError, 3);
    }
    std::vector<const SimObject*> inRange{&m_user};
    for (const auto& [id, object] : m_objects) {
        const double distance = distNm(gf_placeOf(m_user), gf_placeOf(object));
        if (distance * kMetresPerNm <= radiusM) {
            inRange.push_back(&object);
        }
    }
    const auto outOf = static_cast<uint32_t>(inRange.size());
    uint32_t entry = 0;
    for (const SimObject* object : inRange) {
        sendData(SimMessageId::ObjectDataByType, call.value, call.id, *object, ++entry, outOf);
    }
}

void VirtualSimulator::onSetData(PacketReader& reader, SimCall& call)
{
    call.id = reader.u32();  // definition
    call.object = reader.u32();
    const uint32_t flags = reader.u32();
    const uint32_t count = reader.u32();
    const uint32_t unitSize = reader.u32();
    const auto definition = m_definitions.find(call.id);
    if (definition == m_definitions.end()) {
        complain(m_header, format("definition {} is empty", call.id));
        return raise(kExceptionUnrecognizedId, 1);
    }
    SimObject* object = findObject(call.object);
    if (!object) {
        const bool user = call.object == kSimUserObject || call.object == kVirtualUserId;
        complain(m_header, user ? "written to the user's aircraft"
                                : format("written to unknown object {}", call.object));
        return raise(kExceptionUnrecognizedId, 2);
    }
    const size_t bytes = reader.remaining();
    call.values = gf_readValues(reader, definition->second);
    if (flags != 0 || count != 1 || reader.remaining() != 0 || unitSize != bytes) {
        complain(m_header,
                 format("{} bytes, flags {}, count {}, unit size {}", bytes, flags, count, unitSize));
        return raise(kExceptionInvalidDataSize, 0);
    }
    writeObject(*object, definition->second, call);
}

static bool lf_isPosition(const DataDefinition& definition)
{
    return std::any_of(definition.begin(), definition.end(), [](const DefinitionEntry& entry) {
        return entry.field == &SimObject::lat || entry.field == &SimObject::lon;
    });
}

void VirtualSimulator::writeObject(SimObject& object, const DataDefinition& definition, SimCall& call)
{
    SimObject after = object;
    for (size_t i = 0; i < definition.size(); ++i) {
        if (!std::isfinite(call.values[i])) {
            complain(m_header, format("value {} of definition {} isn't finite", i, call.id));
            return raise(kExceptionDataError, 0);
        }
        if (!gf_setVariable(after, definition[i], call.values[i])) {
            complain(m_header, format("value {} of definition {} can't be written", i, call.id));
            return raise(kExceptionDataError, 0);
        }
    }
    if (std::string reason = gf_checkState(after); !reason.empty()) {
        complain(m_header, std::move(reason));
        return raise(kExceptionDataError, 0);
    }
    if (lf_isPosition(definition)) {
        if (std::string reason = gf_checkMovable(object); !reason.empty()) {
            complain(m_header, std::move(reason));
        }
        after.fallSpeed = 0;
        after.positioned = true;
        noteStep(object, after);
    }
    object = std::move(after);
}

void VirtualSimulator::noteStep(const SimObject& before, const SimObject& after)
{
    ObjectLife& life = m_lives[after.id];
    const double now = nowLocked();
    if (life.firstPositionAt == kNeverInLife) {
        life.firstPositionAt = now;
    }
    if (life.positions > 0 && now - life.firstPositionAt > kCalmSeconds) {
        const double step = distNm(gf_placeOf(before), gf_placeOf(after)) * kFeetPerNm;
        const double seconds = now - life.lastPositionAt + kStepJitter;
        const double knots = std::max(before.tas, after.tas);
        const double beyond = step - kStepMargin * knots * kFeetPerSecondPerKnot * seconds - kStepRounding;
        if (beyond > life.worstStepFeet) {
            life.worstStepFeet = beyond;
            life.worstStepAt = now;
        }
    }
    life.lastPositionAt = now;
    ++life.positions;
}

}  // namespace vlt
