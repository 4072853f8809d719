#include "airports/parking/reserved_stand.h"

#include "airports/parking/park_list.h"
#include "airports/stand_search.h"
#include "core/base/display.h"
#include "core/base/log.h"
#include "core/base/text.h"
#include "sim/dispatch.h"
#include "traffic/geodesy.h"
#include "traffic/stand_holding.h"

#include <algorithm>
#include <string>

namespace vlt {

static bool lf_firstIsParkAirport()
{
    return !parkAirports.empty() && parkAirports.front().code == parkApf.code;
}

// A user on the ground here needs a line in the list, and it names the stand.
static void lf_takeUserStand()
{
    const bool here = userOnGround && parkAirport &&
                      distNm(gf_placeOf(userNow), gf_placeOf(*parkAirport)) <= kAirportRadius;
    if (!here) {
        return;
    }
    const std::string& stand = nearestStandId(gf_placeOf(userNow));
    if (lf_firstIsParkAirport()) {
        if (!stand.empty() && parkAirports.front().stand != stand) {
            gf_storeStand(stand);
        }
        return;
    }
    if (std::ranges::find(parkAirports, parkApf.code, &ParkListEntry::code) == parkAirports.end()) {
        const double distance = distNm(gf_placeOf(userNow), gf_placeOf(*parkAirport));
        gf_addParkAirport({parkApf.code, stand, parkAirport->lat, parkAirport->lon, distance});
    }
}

static void lf_findReservedStand()
{
    const std::string before = reservedStand;
    const bool listed = lf_firstIsParkAirport() && gf_standById(parkAirports.front().stand) != nullptr;
    reservedStand = listed ? parkAirports.front().stand : "";
    if (!before.empty() && before != reservedStand) {
        logLine(format("reserved stand changed from \"{}\" to \"{}\"", before, reservedStand));
    }
    display.airport.reservedStand = reservedStand;
}

static void lf_markReservedStands()
{
    for (ParkPos& stand : parkApf.stands) {
        stand.reserved = gf_keptForUser(stand);
    }
}

void updateReservedStand()
{
    lf_takeUserStand();
    lf_findReservedStand();
    lf_markReservedStands();
}

void gf_showUserStand()
{
    display.airport.userStand = nearestStandId(gf_placeOf(userNow));
}

void gf_noteUserStand()
{
    if (!noteStandRequested.exchange(false)) {
        return;
    }
    const std::string& stand = nearestStandId(gf_placeOf(userNow));
    if (!stand.empty() && lf_firstIsParkAirport() && parkAirports.front().stand != stand) {
        gf_storeStand(stand);
        updateReservedStand();
    }
}

}  // namespace vlt
