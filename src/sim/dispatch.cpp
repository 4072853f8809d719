#include "sim/dispatch.h"

#include "core/base/display.h"
#include "core/base/errors.h"
#include "core/base/locks.h"
#include "core/base/log.h"
#include "core/base/parameters.h"
#include "core/base/run_state.h"
#include "core/base/text.h"
#include "sim/frame.h"
#include "sim/requests.h"
#include "sim/user_aircraft.h"
#include "sim/wire/exceptions.h"
#include "sim/wire/ids.h"
#include "sim/wire/packets.h"
#include "traffic/geodesy.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <optional>
#include <stdexcept>

namespace vlt {

static constexpr double kTeleportNm = 10.0;       // a jump of the user's aircraft beyond this is a new flight
static constexpr double kObjectDataBelow = 2500;  // feet above ground; higher up nobody needs it
static constexpr int32_t kNewFlightDelay = 30;    // seconds
static constexpr uint32_t kFramesPerLook = 30;

std::atomic<int32_t> wantedSimVersion{5};
std::atomic<bool> userOnGroundKnown{false};
std::atomic<bool> noteStandRequested{false};
std::atomic<bool> tooManyObjects{false};
std::vector<uint32_t> addedObjects;
bool simHasOpened = false;

static uint32_t framesSeen = 0;  // [simClient]
static LatLon userPrevPosition;  // [simClient] of the report before

static LatLon lf_userPosition()
{
    const UserAc user = gf_userRaw();
    return gf_placeOf(user);
}

void gf_requestNoteStand()
{
    constexpr double kStanding = 2.0;  // knots over the ground
    if (userOnGroundKnown && gf_userRaw().speed <= kStanding) {
        noteStandRequested = true;
    }
}

static void lf_newFlight()
{
    gf_requestStop(ExitReason::NewFlight, kNewFlightDelay);
}

static void lf_onEvent(PacketReader& body)
{
    body.u32();
    const uint32_t event = body.u32();
    const uint32_t data = body.u32();
    switch (event) {
    case kEventSim:
        gf_noteSimRunning(data == 1);
        break;
    case kEventPositionChanged:
        logLine("User ac position changed");
        lf_newFlight();
        break;
    case kEventFlightLoaded:
        logLine("Simconnect: flight loaded event");
        gf_requestNoteStand();
        lf_newFlight();
        break;
    default:
        break;
    }
}

static void lf_onObjectAddRemove(PacketReader& body)
{
    body.u32();
    const uint32_t event = body.u32();
    const uint32_t objectid = body.u32();
    if (body.u32() != kSimObjectTypeAircraft) {
        return;
    }
    if (event == kEventObjectAdded && objectid > userObjectId) {
        addedObjects.push_back(objectid);
    } else if (event == kEventObjectRemoved) {
        std::erase(addedObjects, objectid);
        gf_postSimMessage({.objectid = objectid, .kind = SimMessageKind::ObjectRemoved});
    }
}

static void lf_onFrameEvent(PacketReader& body)
{
    body.skip(3 * sizeof(uint32_t));
    const float rate = body.f32();
    gf_onFrame();
    if (++framesSeen % kFramesPerLook == 0) {
        frameRate = rate;
    }
}

// --- the opening message

static bool lf_versionFits(std::string_view simName)
{
    struct Version {
        std::string_view inName;
        std::string_view inPath;
        int32_t number;
    };
    static constexpr Version kVersions[] = {{"v5", "V5", 5}, {"v6", "V6", 6}};
    const std::string path = SIM_INSTALL_PATH.value;
    return std::ranges::any_of(kVersions, [&](const Version& v) {
        const bool pathFits =
            path.find(v.inName) != std::string::npos || path.find(v.inPath) != std::string::npos;
        return simName.find(v.inName) != std::string_view::npos && (pathFits || wantedSimVersion == v.number);
    });
}

static std::string lf_lettersDigitsBlanks(std::string_view text)
{
    std::string kept;
    std::ranges::copy_if(text, std::back_inserter(kept), [](char c) {
        return c == ' ' || (std::isalnum(static_cast<unsigned char>(c)) != 0);
    });
    return kept;
}

static void lf_onOpen(PacketReader& body)
{
    simHasOpened = true;
    const std::string application = lf_lettersDigitsBlanks(body.text(kSimNameWidth));
    if (application.empty()) {
        logLine("! Simulator name empty?");
    }
    if (application == "KittyHawk" || application == "SunRise") {
        throw UserErrorException(kPlainUserError, application + ", (MSFS) not being P3D connects ... ?");
    }
    const uint32_t major = body.u32();
    const uint32_t minor = body.u32();
    const uint32_t buildMajor = body.u32();
    const uint32_t buildMinor = body.u32();
    const std::string name = format("{} ({}.{}.{}.{})", application, major, minor, buildMajor, buildMinor);
    display.sim.name = name;
    display.sim.connected = true;
    showMessage(format("{} connected", name), true);
    if (!lf_versionFits(name)) {
        display.installPathEnabled = true;
        throw UserErrorException(kPlainUserError, format("wrong P3D version \"{}\" connects ... ?", name));
    }
    clearMessage();
}

// --- exceptions

static void lf_onCreationFailed(uint32_t sendId)
{
    const auto found = std::ranges::find(pendingCreates, sendId, &PendingCreate::sendId);
    if (found != pendingCreates.end()) {
        const uint32_t hexid = found->hexid;
        pendingCreates.erase(found);
        gf_postSimMessage({.a = hexid, .kind = SimMessageKind::CreationRefused});
    }
}

static void lf_onException(PacketReader& body)
{
    const uint32_t exception = body.u32();
    const uint32_t sendId = body.u32();
    const uint32_t index = body.u32();
    switch (exception) {
    case kExceptionUnrecognizedId:
        if (!gf_isNullPosition(lf_userPosition())) {
            logLineUnlessStopping("SIMCONNECT_EXCEPTION_UNRECOGNIZED_ID");
        }
        break;
    case kExceptionVersionMismatch:
        throw UserErrorException(kPlainUserError, format("Simconnect Version Mismatch, dwindex: {} ", index));
    case kExceptionTooManyObjects:
        tooManyObjects = true;
        showMessage("SimConnect: too many objects (max 1000)", true);
        break;
    case kExceptionCreateFailed:
        lf_onCreationFailed(sendId);
        break;
    case kExceptionFlightPlanFailed:
        logLine("Simconnect exception: load flight plan failed");
        break;
    default:
        logLine(format("SIMCON EXCEP {}", exception));
        break;
    }
}

// --- object data

static UserAc lf_readUser(PacketReader& body)
{
    UserAc user;
    for (double* value : {&user.lat, &user.lon, &user.pitch, &user.bank, &user.heading, &user.altitude,
                          &user.agl, &user.speed}) {
        *value = body.f64();
        if (!std::isfinite(*value)) {
            throw std::out_of_range("user data aren't finite");
        }
    }
    for (int64_t* value : {&user.zuluTime, &user.zuluDay, &user.zuluYear, &user.lights}) {
        *value = body.i64();
    }
    user.agl = std::max(user.agl, 0.0);
    return user;
}

static void lf_onUserData(uint32_t objectid, PacketReader& body)
{
    const UserAc user = lf_readUser(body);
    {
        const std::scoped_lock lock(simCallMutex);
        userRaw = user;
    }
    const LatLon position = gf_placeOf(user);
    if (!gf_isNullPosition(userPrevPosition) && distNm(userPrevPosition, position) > kTeleportNm) {
        logLine("Teleport");
        lf_newFlight();
    }
    userPrevPosition = position;
    userObjectId = objectid;
}

static void lf_onUserOnGround(PacketReader& body)
{
    const bool onGround = body.i64() != 0;
    if (!gf_isNullPosition(lf_userPosition())) {
        userOnGround = onGround;
        userOnGroundKnown = true;
    }
    secondDue = true;
}

struct DataHead {
    uint32_t request, objectid;
};

// Moves `body` past the head of an object data message to its values.
static DataHead lf_dataHead(PacketReader& body)
{
    const uint32_t request = body.u32();
    const uint32_t objectid = body.u32();
    constexpr size_t kRestOfHead = 5 * sizeof(uint32_t);  // definition, flags, entry, out of, count
    body.skip(kRestOfHead);
    return {request, objectid};
}

static void lf_onObjectData(PacketReader& body)
{
    const DataHead head = lf_dataHead(body);
    switch (head.request) {
    case kReqStaticData: {
        const double staticCg = body.f64();
        const double staticPitch = body.f64();
        gf_postSimMessage(
            {.objectid = head.objectid, .kind = SimMessageKind::StaticData, .x = staticCg, .y = staticPitch});
        break;
    }
    case kReqTitle:
        gf_onUserTitle(body.textV());
        break;
    case kReqModel:
        gf_onUserModel(body.remaining() == 0 ? std::nullopt : std::optional(body.textV()));
        break;
    case kReqUserOnGround:
        lf_onUserOnGround(body);
        break;
    case kReqUser:
        lf_onUserData(head.objectid, body);
        break;
    default:
        break;
    }
}

struct AircraftData {
    double agl, groundAltitude;
    bool onGround;
    std::string_view atcId;
};

static AircraftData lf_readAircraft(PacketReader& body)
{
    constexpr size_t kString32 = 32;
    AircraftData data{};
    data.agl = body.f64();
    data.groundAltitude = body.f64();
    data.onGround = body.i64() != 0;
    data.atcId = body.text(kString32);
    if (!std::isfinite(data.agl) || !std::isfinite(data.groundAltitude)) {
        throw std::out_of_range("aircraft data aren't finite");
    }
    return data;
}

// Takes the object out of the simulator's hands: from now on only the engine moves it.
static void lf_takeControl(uint32_t objectid)
{
    const std::scoped_lock lock(simCallMutex);
    SimConnect_AIReleaseControl(simHandle, objectid, kReqReleaseControl);
    for (const uint32_t event : {FREEZE_LATITUDE_LONGITUDE_SET, FREEZE_ALTITUDE_SET, FREEZE_ATTITUDE_SET}) {
        eventQueue.push_back({objectid, event, 1});
    }
}

static void lf_onNewObject(uint32_t objectid, const AircraftData& data)
{
    const auto pending = std::ranges::find(pendingCreates, data.atcId, &PendingCreate::tailNumber);
    if (pending == pendingCreates.end()) {
        logLine(format(
            "just spawned, but not by {}, oid: {}, callsign \"{}\", altaboveGnd:{:.0f} ft, onground:{}, "
            "gnd_alt:{:.0f} ft",
            kProgramName, objectid, data.atcId, data.agl, data.onGround, data.groundAltitude));
        return;
    }
    const uint32_t hexid = pending->hexid;
    pendingCreates.erase(pending);
    lf_takeControl(objectid);
    if (hexid > kLastStaticHexid) {
        gf_postSimMessage(
            {.objectid = objectid, .a = hexid, .kind = SimMessageKind::LiveObject, .y = data.agl});
    } else {
        gf_postSimMessage({.objectid = objectid, .a = hexid, .kind = SimMessageKind::StaticObject});
    }
}

static void lf_onAircraftInRange(PacketReader& body)
{
    const DataHead head = lf_dataHead(body);
    if (head.request != kReqAircraftInRange || head.objectid <= userObjectId) {
        return;
    }
    const AircraftData data = lf_readAircraft(body);
    if (std::erase(addedObjects, head.objectid) > 0) {
        lf_onNewObject(head.objectid, data);
    } else if (data.agl <= kObjectDataBelow && !data.atcId.empty() && !data.atcId.ends_with('*')) {
        gf_postSimMessage({.objectid = head.objectid,
                           .a = data.onGround ? 1U : 0U,
                           .kind = SimMessageKind::ObjectData,
                           .x = data.groundAltitude,
                           .y = data.agl});
    }
}

static void lf_dispatch(uint32_t id, PacketReader& body)
{
    constexpr uint32_t kIgnored[] = {12, 16};
    switch (static_cast<SimMessageId>(id)) {
    case SimMessageId::Exception:
        return lf_onException(body);
    case SimMessageId::Open:
        return lf_onOpen(body);
    case SimMessageId::Quit:
        simHasQuit = true;
        gf_noteSimRunning(false);
        return;
    case SimMessageId::Event:
        return lf_onEvent(body);
    case SimMessageId::ObjectAddRemove:
        return lf_onObjectAddRemove(body);
    case SimMessageId::FileName:
        logLine("SimConnect: New file event");
        gf_requestNoteStand();
        return lf_newFlight();
    case SimMessageId::Frame:
        return lf_onFrameEvent(body);
    case SimMessageId::ObjectData:
        return lf_onObjectData(body);
    case SimMessageId::ObjectDataByType:
        return lf_onAircraftInRange(body);
    }
    if (std::ranges::find(kIgnored, id) == std::end(kIgnored)) {
        logLine(format("! Unknown Dispatch dwID {}", id));
    }
}

void gf_dispatchMessage(std::span<const std::byte> message)
{
    uint32_t id = 0;
    try {
        PacketReader body(message);
        body.skip(2 * sizeof(uint32_t));
        id = body.u32();
        lf_dispatch(id, body);
    } catch (const std::out_of_range& e) {
        logLine(format("! message {} of {} bytes is dropped: {}", id, message.size(), e.what()));
    }
}

void gf_noteSimRunning(bool running)
{
    simRunning = running;
    display.sim.running = running;
}

void gf_beginConversation()
{
    simHasOpened = false;
    simHasQuit = false;
}

void gf_resetDispatch()
{
    gf_beginConversation();
    addedObjects.clear();
    userOnGroundKnown = false;
    noteStandRequested = false;
    tooManyObjects = false;
    framesSeen = 0;
    userPrevPosition = {};
}

}  // namespace vlt
