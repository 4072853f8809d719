#include "standin/virtual_simulator.h"

#include "core/base/text.h"
#include "traffic/geodesy.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vlt {

constexpr int64_t kUsPerSecond = 1'000'000;
constexpr double kUnlistedCgFt = 10;  // of a title that no list tells about
constexpr uint32_t kNoGroup = 0;      // system events belong to no group

VirtualSimulator::VirtualSimulator(SimulatorOptions options) : m_options(std::move(options))
{
    for (const InstalledTitle& title : m_options.titles) {
        m_titles.emplace(title.title, title);
    }
    m_user.id = kVirtualUserId;
    m_user.kind = m_options.userKind;
    m_user.enginesOn = true;
    applyUser(m_options.user);
}

// ---- small things

double VirtualSimulator::nowLocked() const
{
    return static_cast<double>(m_nowUs) / kUsPerSecond;
}

double VirtualSimulator::elevationAt(double lat) const
{
    return gf_groundElevation(m_options.terrain, lat);
}

VariableSource VirtualSimulator::sourceOf(const SimObject& object) const
{
    return {object, elevationAt(object.lat), m_options.zuluStart + m_nowUs / kUsPerSecond};
}

SimObject* VirtualSimulator::findObject(uint32_t id)
{
    const auto found = m_objects.find(id);
    return found == m_objects.end() ? nullptr : &found->second;
}

std::optional<InstalledTitle> VirtualSimulator::findTitle(const std::string& title) const
{
    if (const auto found = m_titles.find(title); found != m_titles.end()) {
        return found->second;
    }
    if (m_options.anyTitle && !title.empty()) {
        return InstalledTitle{title, "A320", "Large", kUnlistedCgFt, 0};
    }
    return std::nullopt;
}

void VirtualSimulator::send(PacketWriter& writer)
{
    if (m_connected) {
        m_messages.push_back(writer.finish());
        ++m_counts.messages;
    }
}

void VirtualSimulator::sendEvent(const char* name, uint32_t data)
{
    if (const auto event = m_subscriptions.find(name); event != m_subscriptions.end()) {
        PacketWriter writer(SimMessageId::Event);
        writer.u32(kNoGroup).u32(event->second).u32(data);
        send(writer);
    }
}

void VirtualSimulator::sendObjectEvent(const char* name, uint32_t object)
{
    if (const auto event = m_subscriptions.find(name); event != m_subscriptions.end()) {
        PacketWriter writer(SimMessageId::ObjectAddRemove);
        writer.u32(kNoGroup).u32(event->second).u32(object).u32(kSimObjectTypeAircraft);
        send(writer);
    }
}

void VirtualSimulator::sendData(SimMessageId message, uint32_t request, uint32_t definition,
                                const SimObject& object, uint32_t entry, uint32_t outOf)
{
    const DataDefinition& entries = m_definitions.at(definition);
    PacketWriter writer(message);
    writer.u32(request).u32(object.id).u32(definition).u32(0).u32(entry).u32(outOf);
    writer.u32(static_cast<uint32_t>(entries.size()));
    gf_writeValues(writer, entries, sourceOf(object));
    send(writer);
}

// ---- the client's side

bool VirtualSimulator::connect()
{
    const std::scoped_lock lock(m_mutex);
    if (!m_started || m_connected) {
        return false;
    }
    m_connected = true;
    ++m_counts.connections;
    return true;
}

void VirtualSimulator::dropClient()
{
    for (auto at = m_objects.begin(); at != m_objects.end();) {
        const auto next = std::next(at);
        if (at->second.byClient) {
            eraseObject(at);
        }
        at = next;
    }
    m_newObjects.clear();
    m_removedObjects.clear();
    m_definitions.clear();
    m_events.clear();
    m_groups.clear();
    m_subscriptions.clear();
    m_periodic.clear();
    m_messages.clear();
    m_connected = false;
    m_opened = false;
    m_lastSendId = 0;
}

void VirtualSimulator::disconnect()
{
    const std::scoped_lock lock(m_mutex);
    dropClient();
}

std::vector<std::vector<std::byte>> VirtualSimulator::takeMessages()
{
    const std::scoped_lock lock(m_mutex);
    return std::exchange(m_messages, {});
}

// ---- the clock

void VirtualSimulator::advance(double seconds)
{
    const std::scoped_lock lock(m_mutex);
    const int64_t target = m_nowUs + std::llround(seconds * kUsPerSecond);
    for (;;) {
        const int64_t frameUs = (m_frames + 1) * kUsPerSecond / kFramesPerSecond;
        if (frameUs > target) {
            break;
        }
        m_nowUs = frameUs;
        ++m_frames;
        frame();
    }
    m_nowUs = target;
}

double VirtualSimulator::now() const
{
    const std::scoped_lock lock(m_mutex);
    return nowLocked();
}

void VirtualSimulator::frame()
{
    if (!m_started) {
        return;
    }
    constexpr double kFrameSeconds = 1.0 / kFramesPerSecond;
    takeRemovedObjects();
    bringNewObjects();
    if (m_running) {
        moveUser(kFrameSeconds);
        for (auto& [id, object] : m_objects) {
            gf_moveUnfrozen(object, elevationAt(object.lat), nowLocked(), kFrameSeconds);
        }
    }
    sampleTracks();
    answerPeriodic();
    const auto event = m_subscriptions.find("FRAME");
    if (event != m_subscriptions.end() && !m_faults.noFrames) {
        PacketWriter writer(SimMessageId::Frame);
        writer.u32(kNoGroup).u32(event->second).u32(0).f32(kFramesPerSecond).f32(1);
        send(writer);
    }
}

void VirtualSimulator::bringNewObjects()
{
    for (SimObject& object : std::exchange(m_newObjects, {})) {
        const double delay = object.byClient ? m_faults.acknowledgeAfter : 0;
        if (delay == kNeverInLife || nowLocked() < object.createdAt + delay) {
            m_newObjects.push_back(std::move(object));
            continue;
        }
        const uint32_t id = object.id;
        ObjectLife& life = m_lives[id];
        life.id = id;
        life.title = object.kind.title;
        life.model = object.kind.model;
        life.category = object.kind.category;
        life.tailNumber = object.tailNumber;
        life.byClient = object.byClient;
        life.createdAt = object.createdAt;
        m_objects.emplace(id, std::move(object));
        ++m_counts.created;
        sendObjectEvent("OBJECTADDED", id);
    }
}

void VirtualSimulator::eraseObject(std::map<uint32_t, SimObject>::iterator at)
{
    m_lives[at->first].removedAt = nowLocked();
    std::erase_if(m_periodic, [&](const auto& entry) { return entry.second.object == at->first; });
    m_objects.erase(at);
    ++m_counts.removed;
}

void VirtualSimulator::takeRemovedObjects()
{
    for (const uint32_t id : std::exchange(m_removedObjects, {})) {
        if (const auto at = m_objects.find(id); at != m_objects.end()) {
            eraseObject(at);
            sendObjectEvent("OBJECTREMOVED", id);
        }
    }
}

void VirtualSimulator::moveUser(double seconds)
{
    if (m_userState.speed != 0) {
        const LatLon to = destination({m_userState.lat, m_userState.lon}, m_userState.heading,
                                      m_userState.speed * kFeetPerSecondPerKnot * seconds);
        m_userState.lat = to.lat;
        m_userState.lon = to.lon;
    }
    applyUser(m_userState);
}

void VirtualSimulator::sampleTracks()
{
    const double frameTime = static_cast<double>(m_frames) / kFramesPerSecond;
    const double period = m_options.trackPeriod;
    const double before = static_cast<double>(m_frames - 1) / kFramesPerSecond;
    if (period <= 0 || std::floor(frameTime / period) == std::floor(before / period)) {
        return;
    }
    for (const auto& [id, object] : m_objects) {
        m_lives[id].track.push_back(gf_trackPoint(object, elevationAt(object.lat), frameTime));
    }
}

void VirtualSimulator::answerPeriodic()
{
    for (auto& [request, periodic] : m_periodic) {
        if (m_nowUs < periodic.nextUs) {
            continue;
        }
        periodic.nextUs += kUsPerSecond;
        const SimObject* object = periodic.object == kVirtualUserId ? &m_user : findObject(periodic.object);
        if (object) {
            sendData(SimMessageId::ObjectData, request, periodic.definition, *object, 1, 1);
        }
    }
}

// ---- the world's doings

void VirtualSimulator::setStarted(bool started)
{
    const std::scoped_lock lock(m_mutex);
    m_started = started;
    if (!started) {
        dropClient();
    }
}

bool VirtualSimulator::started() const
{
    const std::scoped_lock lock(m_mutex);
    return m_started;
}

void VirtualSimulator::setRunning(bool running)
{
    const std::scoped_lock lock(m_mutex);
    if (running != m_running) {
        m_running = running;
        sendEvent("SIM", running ? 1 : 0);
    }
}

void VirtualSimulator::applyUser(const UserState& user)
{
    m_userState = user;
    m_user.lat = user.lat;
    m_user.lon = user.lon;
    m_user.heading = user.heading;
    m_user.tas = user.speed;
    const double standing = elevationAt(user.lat) + m_user.kind.cgFt;
    m_user.altitude = user.onGround ? standing : std::max(user.altitude, standing);
}

uint32_t VirtualSimulator::createObject(const InstalledTitle& kind, std::string tailNumber,
                                        const SimInitialPosition& position, bool byClient)
{
    SimObject object;
    object.id = m_nextObjectId++;
    object.kind = kind;
    object.tailNumber = std::move(tailNumber);
    object.byClient = byClient;
    object.lat = position.lat;
    object.lon = position.lon;
    object.altitude = position.altitude;
    object.pitch = position.pitch * kRadPerDeg;
    object.bank = position.bank * kRadPerDeg;
    object.heading = position.heading * kRadPerDeg;
    object.tas = position.airspeed;
    object.createdAt = nowLocked();
    if (position.onGround != 0) {
        object.altitude = elevationAt(position.lat) + kind.cgFt;
        object.pitch = kind.staticPitch;
        object.bank = 0;
    }
    m_newObjects.push_back(object);
    return object.id;
}

uint32_t VirtualSimulator::addForeignAircraft(const std::string& title, const std::string& tailNumber,
                                              const SimInitialPosition& position)
{
    const std::scoped_lock lock(m_mutex);
    const InstalledTitle kind = findTitle(title).value_or(InstalledTitle{title, "C172", "Light", 4, 0});
    return createObject(kind, tailNumber, position, false);
}

void VirtualSimulator::quit()
{
    const std::scoped_lock lock(m_mutex);
    PacketWriter writer(SimMessageId::Quit);
    send(writer);
}

void VirtualSimulator::loadFlight()
{
    const std::scoped_lock lock(m_mutex);
    sendEvent("FLIGHTLOADED", 0);
}

void VirtualSimulator::setUser(const UserState& user)
{
    const std::scoped_lock lock(m_mutex);
    applyUser(user);
}

void VirtualSimulator::fill()
{
    const std::scoped_lock lock(m_mutex);
    const SimInitialPosition far{m_userState.lat + 5, m_userState.lon, 30000, 0, 0, 0, 0, 0};
    for (size_t count = m_objects.size() + m_newObjects.size() + 1; count < m_options.maxObjects; ++count) {
        createObject({"Somebody else's", "C172", "Light", 4, 0}, format("X{}", count), far, false);
    }
}

SimulatorFaults VirtualSimulator::faults() const
{
    const std::scoped_lock lock(m_mutex);
    return m_faults;
}

void VirtualSimulator::setFaults(const SimulatorFaults& faults)
{
    const std::scoped_lock lock(m_mutex);
    m_faults = faults;
}

// ---- looking on

UserState VirtualSimulator::user() const
{
    const std::scoped_lock lock(m_mutex);
    return m_userState;
}

std::optional<SimObject> VirtualSimulator::object(uint32_t id) const
{
    const std::scoped_lock lock(m_mutex);
    const auto found = m_objects.find(id);
    return found == m_objects.end() ? std::nullopt : std::optional(found->second);
}

std::vector<SimObject> VirtualSimulator::objects() const
{
    const std::scoped_lock lock(m_mutex);
    std::vector<SimObject> all;
    all.reserve(m_objects.size());
    for (const auto& [id, object] : m_objects) {
        all.push_back(object);
    }
    return all;
}

std::vector<ObjectLife> VirtualSimulator::lives() const
{
    const std::scoped_lock lock(m_mutex);
    std::vector<ObjectLife> all;
    all.reserve(m_lives.size());
    for (const auto& [id, life] : m_lives) {
        all.push_back(life);
    }
    return all;
}

void VirtualSimulator::forgetRemoved()
{
    const std::scoped_lock lock(m_mutex);
    std::erase_if(m_lives, [](const auto& entry) { return entry.second.removedAt != kNeverInLife; });
}

std::vector<Complaint> VirtualSimulator::complaints() const
{
    const std::scoped_lock lock(m_mutex);
    return m_complaints;
}

SimulatorCounts VirtualSimulator::counts() const
{
    const std::scoped_lock lock(m_mutex);
    return m_counts;
}

std::vector<SimCall> VirtualSimulator::takeCalls()
{
    const std::scoped_lock lock(m_mutex);
    return std::exchange(m_calls, {});
}

}  // namespace vlt
