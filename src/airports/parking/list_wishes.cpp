#include "airports/parking/list_wishes.h"

#include "airports/airports.h"
#include "airports/catalogue.h"
#include "airports/parking/park_list.h"
#include "airports/parking/reserved_stand.h"
#include "core/base/display.h"
#include "core/base/parameters.h"
#include "traffic/geodesy.h"

#include <algorithm>
#include <string>

namespace vlt {

std::atomic<bool> listWishesAllowed{false};
std::atomic<bool> destinationChanged{false};
std::atomic<bool> reReadRequested{false};

static std::string ownEntry;  // [worker] the airport that is in the list as destination only, or empty

static void lf_putDestination()
{
    if (!ownEntry.empty()) {
        parkAirports.remove_if([](const ParkListEntry& entry) { return entry.code == ownEntry; });
        ownEntry.clear();
    }
    const std::string code = DESTINATION.value;
    const AirportRecord* airport = findAirport(code);
    if (airport != nullptr &&
        std::ranges::find(parkAirports, code, &ParkListEntry::code) == parkAirports.end()) {
        parkAirports.push_back({code, "", airport->lat, airport->lon, 0});
        ownEntry = code;
    }
    gf_sortParkAirports(gf_placeOf(userNow));
}

void gf_allowListWishes()
{
    destinationChanged = !DESTINATION.value.empty();
    listWishesAllowed = true;
}

void gf_serviceDestination()
{
    if (destinationChanged.exchange(false)) {
        lf_putDestination();
    }
}

void gf_serviceReRead()
{
    if (!reReadRequested.exchange(false)) {
        return;
    }
    const bool clean = lf_readMyParkAirports();
    ownEntry.clear();
    lf_putDestination();
    if (parkState == ParkState::Loaded) {
        updateReservedStand();
    }
    if (clean) {
        showMessage("park airports and stands are okay", true);
    }
    listWishesAllowed = true;
}

void gf_forgetListWishes()
{
    listWishesAllowed = false;
    destinationChanged = false;
    reReadRequested = false;
    ownEntry.clear();
}

}  // namespace vlt
