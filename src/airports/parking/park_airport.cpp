#include "airports/parking/park_airport.h"

#include "airports/catalogue.h"
#include "airports/learned_save.h"
#include "airports/learning.h"
#include "airports/parking/park_list.h"
#include "airports/parking/renewal.h"
#include "airports/parking/reserved_stand.h"
#include "airports/parking/static_parking.h"
#include "airports/stand_search.h"
#include "core/base/display.h"
#include "core/base/log.h"
#include "core/base/parameters.h"
#include "core/base/text.h"
#include "link/traffic_reader.h"
#include "traffic/auto_range.h"
#include "traffic/removal.h"
#include "traffic/stays.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace vlt {

std::atomic<bool> flushStaticRequested{false};

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

static bool toldThatItCalculates = false;  // [worker] in this run

void gf_comeInSight(std::string_view code)
{
    if (!setParkAirport(code)) {
        return;
    }
    gf_preparePlanning();
    if (!toldThatItCalculates) {
        toldThatItCalculates = true;
        showMessage("Calculating static parked aircraft ...", false);
    }
}

// Nothing of it is saved.
static void lf_forgetAirport()
{
    const bool wasLoaded = parkState == ParkState::Loaded;
    updateCount = 0;
    parkState = ParkState::None;
    softLearningAllowed = true;
    reservedStand.clear();
    parkPlan.clear();
    trafficReader.collectCallsigns = false;
    gf_endPlanning();
    gf_forgetRenewal();
    gf_forgetSoftLearning();
    parkApf = Apf{};
    parkAirport.reset();
    trafficReader.setParkAirport(std::nullopt);
    gf_forgetNearestStand();
    display.airport = {};
    if (wasLoaded) {
        gf_takeUsersSettingsBack();
        gf_adaptRange();
        gf_keepWithinMaxLive();
    }
}

void closeAirport()
{
    gf_saveIfLearned();
    lf_forgetAirport();
}

void flushStatic()
{
    parkPlan.clear();
    gf_flushParked();
    closeAirport();
}

void gf_serviceFlush()
{
    if (flushStaticRequested.exchange(false)) {
        flushStatic();
    }
}

void gf_resetParkAirport()
{
    flushStaticRequested = false;
    toldThatItCalculates = false;
    lf_forgetAirport();
    parkAirports.clear();
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
    if (!softLearningAllowed) {
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
    gf_keepAirportsSettings();
    lf_showAirport();
    trafficReader.setParkAirport(parkAirport);
    gf_keepWithinMaxLive();
    gf_adaptRange();
}

// What is wrong with the park airport's file; empty: it is loaded. `warnings` are those of the load.
static std::string lf_readParkedFile(const AirportSource& source, std::vector<std::string>& warnings)
{
    const std::string& code = parkApf.code;
    if (source.path.empty()) {
        return format("lf_readParkedFile {} not found (archive/stock/{}.xml)", code, code);
    }
    if (source.path.find("unknown") != std::string::npos) {
        return format("lf_readParkedFile {} has publisher:unknown, {}", code, source.path);
    }
    AirportLoad load = gf_readApf(source, code);
    warnings = load.warnings;
    if (!load.failed.empty()) {
        return format("{}, {}: {}", code, source.path, load.failed);
    }
    gf_installParkAirport(std::move(load), gf_placeOf(*parkAirport));
    updateReservedStand();
    return {};
}

std::string gf_loadParkAirport(const AirportSource& source)
{
    std::vector<std::string> warnings;
    std::string failed = lf_readParkedFile(source, warnings);
    if (failed.empty()) {
        initialPlanning();
    }
    for (const std::string& warning : warnings) {
        showMessage(warning, true);
    }
    return failed;
}

}  // namespace vlt
