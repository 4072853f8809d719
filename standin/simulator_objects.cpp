// The virtual simulator's answers to packets about its AI objects: create, release, remove, flight
// plan.
#include "standin/virtual_simulator.h"

#include "core/base/text.h"
#include "sim/wire/exceptions.h"
#include "traffic/geodesy.h"

#include <algorithm>
#include <filesystem>

namespace vlt {

void VirtualSimulator::onCreate(PacketReader& reader, SimCall& call)
{
    call.text = reader.text(kSimNameWidth);
    call.tailNumber = reader.text(kSimTailNumberWidth);
    SimInitialPosition at;
    at.lat = reader.f64();
    at.lon = reader.f64();
    at.altitude = reader.f64();
    at.pitch = reader.f64();
    at.bank = reader.f64();
    at.heading = reader.f64();
    at.onGround = reader.u32();
    at.airspeed = reader.u32();
    call.value = reader.u32();  // request
    call.values = {at.lat, at.lon, at.altitude, at.pitch, at.bank, at.heading};
    if (call.tailNumber.empty()) {
        complain(m_header, format("\"{}\" without a tail number", call.text));
    }
    SimObject probe;
    probe.lat = at.lat;
    probe.lon = at.lon;
    probe.altitude = at.altitude;
    probe.pitch = at.pitch * kRadPerDeg;
    probe.bank = at.bank * kRadPerDeg;
    probe.heading = at.heading * kRadPerDeg;
    if (std::string reason = gf_checkState(probe); !reason.empty()) {
        complain(m_header, std::move(reason));
        ++m_counts.refused;
        return raise(kExceptionCreateFailed, 0);
    }
    const auto kind = findTitle(call.text);
    const bool full = m_objects.size() + m_newObjects.size() + 1 >= m_options.maxObjects;
    if (!kind || full || m_faults.refuseTitles) {
        ++m_counts.refused;
        return raise(full ? kExceptionTooManyObjects : kExceptionCreateFailed, 0);
    }
    call.object = createObject(*kind, call.tailNumber, at, true);
}

void VirtualSimulator::onRelease(PacketReader& reader, SimCall& call)
{
    call.object = reader.u32();
    call.value = reader.u32();
    SimObject* object = findObject(call.object);
    if (!object) {
        complain(m_header, format("release of unknown object {}", call.object));
        return raise(kExceptionUnrecognizedId, 1);
    }
    object->released = true;
    ObjectLife& life = m_lives[object->id];
    if (life.releasedAt == kNeverInLife) {
        life.releasedAt = nowLocked();
    }
}

void VirtualSimulator::onRemove(PacketReader& reader, SimCall& call)
{
    call.object = reader.u32();
    call.value = reader.u32();
    const SimObject* object = findObject(call.object);
    if (!object) {
        complain(m_header, format("removal of unknown object {}", call.object));
        return raise(kExceptionUnrecognizedId, 1);
    }
    if (!object->byClient) {
        complain(m_header, format("removal of somebody else's object {}", call.object));
    }
    if (std::find(m_removedObjects.begin(), m_removedObjects.end(), call.object) != m_removedObjects.end()) {
        complain(m_header, format("object {} removed twice", call.object));
        return;
    }
    m_removedObjects.push_back(call.object);
}

void VirtualSimulator::onFlightPlan(PacketReader& reader, SimCall& call)
{
    call.object = reader.u32();
    const std::filesystem::path path = reader.text(kSimPathWidth);
    call.text = path.filename().string();  // calls compare wherever the plans lie
    call.value = reader.u32();
    if (!findObject(call.object)) {
        complain(m_header, format("flight plan for unknown object {}", call.object));
        return raise(kExceptionUnrecognizedId, 1);
    }
    std::error_code error;
    if (!std::filesystem::is_regular_file(path, error)) {
        complain(m_header, format("no flight plan file \"{}\"", path.string()));
        raise(kExceptionFlightPlanFailed, 2);
    }
}

}  // namespace vlt
