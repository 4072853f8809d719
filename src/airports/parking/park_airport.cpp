#include "airports/parking/park_airport.h"

#include "airports/airport_lookup.h"
#include "airports/catalogue.h"
#include "airports/loading.h"
#include "airports/parking/park_list.h"
#include "airports/parking/reserved_stand.h"
#include "airports/stand_search.h"
#include "core/base/clock.h"
#include "core/base/display.h"
#include "core/base/log.h"
#include "core/base/parameters.h"
#include "core/base/text.h"
#include "link/traffic_reader.h"
#include "traffic/auto_range.h"
#include "traffic/removal.h"
#include "traffic/stays.h"

#include <algorithm>
#include <optional>
#include <string>
#include <utility>

namespace vlt {

static LatLon lastPosition;  // [worker] of the user at the last look

// The last fruitless look for an airport around a user on the ground.
struct FruitlessLook {
    LatLon position;
    int32_t tick = 0;
};
static std::optional<FruitlessLook> fruitlessLook;  // [worker]

// --- becoming and ceasing

bool setParkAirport(std::string_view code)
{
    const AirportRecord* airport = findAirport(code);
    if (airport == nullptr) {
        return false;
    }
    parkApf = Apf{};
    parkApf.code = airport->code;
    parkApf.altitude = static_cast<int32_t>(airport->altitude);
    parkAirport = ParkAirportPlace{airport->lat, airport->lon, airport->altitude};
    parkState = ParkState::InSight;
    display.airport.code = airport->code;
    logLine(format("The park airport is {}", airport->code));
    return true;
}

void closeAirport()
{
    updateCount = 0;
    parkState = ParkState::None;
    softLearningAllowed = true;
    reservedStand.clear();
    parkApf = Apf{};
    parkAirport.reset();
    trafficReader.setParkAirport(std::nullopt);
    gf_forgetNearestStand();
    display.airport = {};
    gf_takeUsersSettingsBack();
    gf_keepWithinMaxLive();
}

void gf_resetParkAirport()
{
    closeAirport();
    parkAirports.clear();
    lastPosition = {};
    fruitlessLook.reset();
}

// --- the load

static void lf_putSettingsInForce(const AirportLoad& load)
{
    gf_keepUsersSettings();
    display.airport.percentageEnabled = load.learned;
    if (load.settings) {
        gf_applyParkingSettings(*load.settings);
    } else if (!load.learned) {
        parking_percentage.value = parking_percentage.def;
        logLine(format("{:24}: {}%", parking_percentage.name, parking_percentage.def));
    }
}

static void lf_allowSoftLearning()
{
    softLearningAllowed = !gf_hasGoodQuality(parkApf);
    display.airport.learnSoftEnabled = softLearningAllowed;
    if (softLearningAllowed) {
        gf_forgetUsersSetting(LEARN_SOFT);  // what is changed from now on is the user's doing
    } else {
        LEARN_SOFT.value = false;
    }
}

static void lf_showAirport()
{
    display.airport.standCount = static_cast<int32_t>(parkApf.stands.size());
    display.airport.altitude = parkApf.altitude;
    display.airport.trafficWeek = parkApf.trafficWeek;
    display.airport.handmade = parkApf.handmade;
    display.airport.name = parkApf.name;
    display.airport.quality = gf_qualityText(parkApf.quality);
    display.airport.flushStaticEnabled = true;
}

void gf_installParkAirport(AirportLoad load, LatLon place)
{
    lf_putSettingsInForce(load);
    parkApf = std::move(load.apf);
    parkAirport = ParkAirportPlace{place.lat, place.lon, static_cast<double>(parkApf.altitude)};
    parkState = ParkState::Loaded;
    updateCount = 0;
    gf_forgetNearestStand();
    lf_allowSoftLearning();
    lf_showAirport();
    trafficReader.setParkAirport(parkAirport);
    gf_keepWithinMaxLive();
    gf_adaptRange();
}

// The park airport's file. The text is empty on success, else what went wrong.
static std::string lf_readParkedFile()
{
    const std::string& code = parkApf.code;
    const std::string path = findAirportFile(code);
    if (path.empty()) {
        return format("lf_readParkedFile {} not found", code);
    }
    if (path.find("unknown") != std::string::npos) {
        return format("lf_readParkedFile {} has publisher:unknown, {}", code, path);
    }
    AirportLoad load = gf_readApf(path, code);
    if (load.failed.empty()) {
        gf_installParkAirport(std::move(load), gf_placeOf(*parkAirport));
        updateReservedStand();
        return {};
    }
    return load.failed;
}

// A file that can't be used costs the airport its parking, not the user the traffic.
static std::string lf_tryToReadParkedFile()
{
    try {
        return lf_readParkedFile();
    } catch (const std::exception& e) {
        return e.what();
    }
}

static void lf_loadNow()
{
    if (const std::string failed = lf_tryToReadParkedFile(); !failed.empty()) {
        showMessage(failed, true);
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
    constexpr int32_t kAgainAfter = 300 * kTicksPerSecond;
    return fruitlessLook && distNm(fruitlessLook->position, gf_placeOf(userNow)) < kMoved &&
           tick - fruitlessLook->tick < kAgainAfter;
}

static void lf_findAirportAround()
{
    fruitlessLook = FruitlessLook{gf_placeOf(userNow), tick};
    const AirportRecord* airport = closestAirport(gf_placeOf(userNow));
    if (airport == nullptr) {
        logLine("User aircraft on the ground, no airport in sight");
        return;
    }
    if (findAirportFile(airport->code).empty()) {
        logLine(format("User aircraft on the ground at {}, no airport file found", airport->code));
        return;
    }
    logLine(format("User aircraft on the ground at {}", airport->code));
    fruitlessLook.reset();
    setParkAirport(airport->code);
}

// A folder that can't be read costs the airport, not the run.
static void lf_lookAround()
{
    try {
        if (!lf_lookedInVainLately()) {
            lf_findAirportAround();
        }
    } catch (const std::exception& e) {
        logLine(format("checkInSight: {}", e.what()));
    }
}

static void checkInSight()
{
    if (userOnGround) {
        lf_lookAround();
        return;
    }
    if (parkAirports.empty()) {
        return;
    }
    const ParkListEntry& first = parkAirports.front();
    if (lf_isInSight(first.distance) && setParkAirport(first.code)) {
        logLine(format("{} in sight at {:.1F} nm", first.code, first.distance));
    }
}

static void checkOutOfSight()
{
    if (userOnGround) {
        return;
    }
    const std::string code = parkApf.code;
    const double distance = distNm(gf_placeOf(userNow), gf_placeOf(*parkAirport));
    if (!lf_isInSight(distance)) {
        logLine(format("\n{} {} is out of sight ({:.1F} nm), parked aircraft will be removed",
                       timeOfDayString(), code, distance));
        gf_flushParked();
        closeAirport();
        return;
    }
    if (parkAirports.empty()) {
        return;
    }
    const ParkListEntry& first = parkAirports.front();
    if (first.code != code && lf_isInSight(first.distance) && first.distance < distance) {
        logLine(format("\n{} {} is in sight ({:.1F} nm), parked aircraft at {} will be removed first",
                       timeOfDayString(), first.code, first.distance, code));
        gf_flushParked();
        closeAirport();
    }
}

void parkAirportCheck()
{
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
    } else if (!parkAirports.empty()) {
        ParkListEntry& first = parkAirports.front();
        first.distance = distNm(lastPosition, gf_placeOf(first));
    }
    if (parkState == ParkState::Loaded) {
        checkOutOfSight();
    } else {
        checkInSight();
    }
}

}  // namespace vlt
