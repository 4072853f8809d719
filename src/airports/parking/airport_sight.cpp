#include "airports/parking/airport_sight.h"

#include "airports/airport_lookup.h"
#include "airports/catalogue.h"
#include "airports/parking/park_airport.h"
#include "airports/parking/park_list.h"
#include "airports/parking/static_parking.h"
#include "airports/server_files.h"
#include "core/base/clock.h"
#include "core/base/display.h"
#include "core/base/log.h"
#include "core/base/parameters.h"
#include "core/base/text.h"
#include "traffic/geodesy.h"

#include <algorithm>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace vlt {

static LatLon lastPosition;  // [worker] of the user at the last look

// The last fruitless look for an airport around a user on the ground.
struct FruitlessLook {
    LatLon position;
    int32_t tick = 0;
};
static std::optional<FruitlessLook> fruitlessLook;  // [worker]

// The ticks at which airports' files were found to be of no use.
static std::map<std::string, int32_t, std::less<>> uselessSince;  // [worker] by code

static bool waitsForServer = false;  // [worker] the last look could not end without an answer

static constexpr int32_t kAgainAfter = 300 * kTicksPerSecond;

// A file that can't be used costs the airport its parking, not the user the traffic.
static void lf_loadNow()
{
    std::string failed;
    try {
        const AirportSource source = findAirportFile(parkApf.code);
        if (source.served.awaited) {
            waitsForServer = true;
            return;
        }
        failed = gf_loadParkAirport(source);
    } catch (const std::exception& e) {
        failed = e.what();
    }
    if (!failed.empty()) {
        showMessage(failed, true);
        uselessSince[parkApf.code] = tick;
        closeAirport();
    }
}

// --- in and out of sight

static bool lf_isInSight(double distance)
{
    return distance <= AIRPORT_RANGE.value && userNow.agl <= AIRPORT_HEIGHT.value;
}

// An airport without a file needn't be asked for again at once: the server would be asked each time.
static bool lf_lookedInVainLately()
{
    constexpr double kMoved = 1.0;  // nm
    return fruitlessLook && distNm(fruitlessLook->position, gf_placeOf(userNow)) < kMoved &&
           tick - fruitlessLook->tick < kAgainAfter;
}

// Its file was of no use a short while ago: others come first.
static bool lf_isUseless(std::string_view code)
{
    const auto since = uselessSince.find(code);
    return since != uselessSince.end() && tick - since->second < kAgainAfter;
}

static void lf_findAirportAround()
{
    const std::optional<const AirportRecord*> closest = closestAirport(gf_placeOf(userNow));
    if (!closest) {
        waitsForServer = true;
        return;
    }
    const AirportRecord* airport = *closest;
    if (airport == nullptr) {
        logLine("User aircraft on the ground, no airport in sight");
        fruitlessLook = FruitlessLook{gf_placeOf(userNow), tick};
        return;
    }
    if (lf_isUseless(airport->code)) {
        return;
    }
    const AirportSource source = findAirportFile(airport->code);
    if (source.path.empty()) {
        logLine(format("User aircraft on the ground at {}, no airport file found", airport->code));
        fruitlessLook = FruitlessLook{gf_placeOf(userNow), tick};
    } else if (source.served.awaited) {
        waitsForServer = true;
    } else {
        logLine(format("User aircraft on the ground at {}", airport->code));
        fruitlessLook.reset();
        gf_comeInSight(airport->code);
    }
}

// A folder that can't be read costs the airport, not the run.
template <typename Look>
static void lf_tried(const Look& look)
{
    try {
        look();
    } catch (const std::exception& e) {
        logLine(format("checkInSight: {}", e.what()));
    }
}

// The first of the list that may have a file, which is the nearest once the user has moved; nullptr for none.
static const ParkListEntry* lf_firstUseful()
{
    const auto found = std::ranges::find_if(
        parkAirports, [](const ParkListEntry& entry) { return !lf_isUseless(entry.code); });
    if (found == parkAirports.end()) {
        return nullptr;
    }
    found->distance = distNm(gf_placeOf(userNow), gf_placeOf(*found));  // the list may be new
    return &*found;
}

static void checkInSight()
{
    if (userOnGround) {
        if (!lf_lookedInVainLately()) {
            lf_tried(lf_findAirportAround);
        }
        return;
    }
    const ParkListEntry* first = lf_firstUseful();
    if (first != nullptr && lf_isInSight(first->distance) && findAirport(first->code) != nullptr) {
        gf_comeInSight(first->code);
        logLine(format("{} in sight at {:.1F} nm", first->code, first->distance));
        lf_tried([first] { findAirportFile(first->code); });  // so that the server has answered by then
    }
}

// The user has landed elsewhere: the field under the wheels is the one to look at.
static void lf_lookUnderWheels()
{
    const LatLon user = gf_placeOf(userNow);
    if (gf_nearestReference(user) == findAirport(parkApf.code) || lf_lookedInVainLately()) {
        return;
    }
    const std::optional<const AirportRecord*> closest = closestAirport(user);
    const AirportRecord* field = closest.value_or(nullptr);
    const bool isOther = field != nullptr && field->code != parkApf.code && !lf_isUseless(field->code);
    const AirportSource source = isOther ? findAirportFile(field->code) : AirportSource{};
    waitsForServer = !closest || source.served.awaited;
    if (waitsForServer) {
        return;
    }
    fruitlessLook = FruitlessLook{user, tick};
    if (!source.path.empty()) {
        fruitlessLook.reset();
        logLine(format("\n{} User aircraft on the ground at {}, parked aircraft at {} will be removed first",
                       timeOfDayString(), field->code, parkApf.code));
        flushStatic();
    }
}

static void checkOutOfSight()
{
    if (userOnGround) {
        lf_tried(lf_lookUnderWheels);
        return;
    }
    const std::string code = parkApf.code;
    const double distance = distNm(gf_placeOf(userNow), gf_placeOf(*parkAirport));
    if (!lf_isInSight(distance)) {
        logLine(format("\n{} {} is out of sight ({:.1F} nm), parked aircraft will be removed",
                       timeOfDayString(), code, distance));
        flushStatic();
        return;
    }
    const ParkListEntry* first = lf_firstUseful();
    if (first != nullptr && first->code != code && lf_isInSight(first->distance) &&
        first->distance < distance) {
        logLine(format("\n{} {} is in sight ({:.1F} nm), parked aircraft at {} will be removed first",
                       timeOfDayString(), first->code, first->distance, code));
        flushStatic();
    }
}

bool gf_goOnLooking()
{
    if (waitsForServer && gf_serverAnswered()) {
        parkAirportCheck();
    }
    return waitsForServer;
}

void parkAirportCheck()
{
    if (gf_endIfPlaced()) {
        return;
    }
    waitsForServer = false;
    if (parkState == ParkState::InSight) {
        lf_loadNow();
        return;
    }
    if (gf_isNullPosition(gf_placeOf(userNow))) {
        return;
    }
    if (gf_placeOf(userNow) != lastPosition) {
        lastPosition = gf_placeOf(userNow);
        gf_sortParkAirports(lastPosition);
    }
    if (parkState == ParkState::Loaded) {
        checkOutOfSight();
    } else {
        checkInSight();
    }
}

void gf_forgetLooks()
{
    lastPosition = {};
    fruitlessLook.reset();
    uselessSince.clear();
    waitsForServer = false;
    gf_forgetServerFiles();
}

}  // namespace vlt
