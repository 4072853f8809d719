// The week of history at the built-in airport, planned at every half hour.
#include "standin/day_week.h"

#include "airports/loading.h"
#include "airports/parking/planner.h"
#include "core/base/clock.h"
#include "core/base/parameters.h"
#include "core/base/text.h"
#include "liveries/liveries.h"
#include "liveries/match_index.h"
#include "liveries/matching.h"
#include "standin/airport_files.h"
#include "standin/builtin_day.h"
#include "standin/world.h"
#include "support/fresh_run.h"
#include "support/temp_folder.h"
#include "traffic/performance.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>

namespace vlt {

static const std::filesystem::path kWorld = std::filesystem::path(VELATRA_SOURCE_DIR) / "data/world";

// What the feed tells at that moment of the day: who is heard, and who has landed in the hour before.
static Planning lf_heard(const BuiltinDay& day, const Fleet& fleet, double seconds)
{
    constexpr size_t kCallsign = 9;
    const double interval = kSchedules[static_cast<size_t>(FlightKind::Arrival)].interval;
    Planning planning;
    planning.now = gf_hourStamp(kDayStart + static_cast<int64_t>(seconds));
    for (const DayLine& line : day.lines(seconds - 15, seconds)) {
        planning.heard.emplace(gf_split(line.text, ',').at(kCallsign));
    }
    for (auto n = static_cast<int64_t>((seconds - 3600) / interval);
         static_cast<double>(n) * interval < seconds; ++n) {
        const DayFlight flight = gf_namedFlight(FlightKind::Arrival, n, fleet);
        planning.liveStayers.push_back({kNoStand, 0, "", flight.callsign, flight.airframe.hexid});
    }
    return planning;
}

// The plan's aircraft stand, unless there is no livery for them: gives how many there are of those.
static int lf_place()
{
    int without = 0;
    staticAcs.clear();
    for (const PlanEntry& entry : parkPlan) {
        const ParkPos& stand = parkApf.stands[entry.stand - 1];
        StaticAc ac;
        ac.airline = entry.airline;
        gf_setModel(ac, entry.type);
        ac.coupledCs1 = ac.callsign = entry.callsign;
        ac.regcode = entry.reg;
        ac.standId = entry.stand;
        ac.standLat = stand.lat;
        ac.standLon = stand.lon;
        ac.fs = FsState::Active;
        if (matchStatic(ac, stand.cargo, stand.id)) {
            staticAcs.push_back(ac);
        } else {
            ++without;
        }
    }
    return without;
}

TEST(DayWeek, givesEveryRuleOfThePlannerSomethingToDo)
{
    constexpr double kHalfHour = 1800;
    const TempFolder folder;
    gf_freshRun();
    gf_loadWorld(kWorld);
    const std::vector<ArchivedAirport> airports = gf_worldAirports(kWorld);
    parkApf = gf_readApfAlone(folder.write("XVEL.xml", gf_archivedText(airports.front())), "XVEL").apf;
    ASSERT_EQ(68u, parkApf.stands.size());
    parkApf.stands.back().reserved = true;
    const BuiltinDay day({.world = kWorld});
    const Fleet fleet = gf_fleet(kWorld, 1);
    std::map<std::string_view, int> seen;
    for (int halfHour = 1; halfHour <= 7 * 48; halfHour += halfHour % 2 == 0 ? 9 : 1) {
        if (halfHour % 2 != 0) {
            staticAcs.clear();
        }
        parking_percentage.value = halfHour % 3 == 0 ? 30 : 100;
        MAX_FIT.value = halfHour % 3 * 2;
        HELICOPTERS.value = halfHour % 4 != 0;
        Planning planning = lf_heard(day, fleet, halfHour * kHalfHour);
        parkPlan.clear();
        gf_renumberOptions();
        gf_planPasses(planning, wantedCount(), 0);
        for (const std::string_view why : planning.why) {
            ++seen[why];
        }
        seen["offset back over midnight"] +=
            static_cast<int>(std::ranges::count_if(parkPlan, [&](const PlanEntry& e) {
                return e.offset > static_cast<int32_t>(planning.now.slot);
            }));
        seen["soft"] += static_cast<int>(std::ranges::count(parkPlan, false, &PlanEntry::real));
        seen["leaves within the half hour"] +=
            static_cast<int>(std::ranges::count(parkPlan, false, &PlanEntry::stays));
        for (const ParkPos& stand : parkApf.stands) {
            const auto here = std::ranges::count_if(stand.options, [&](const StandOption& o) {
                return gf_isOfDay(o, planning.now.day) && o.hours.test(planning.now.slot);
            });
            seen["two to choose from"] += here > 1 ? 1 : 0;
        }
        seen["no livery"] += lf_place();
    }
    for (const char* rule :
         {"", "reserved", "helicopters are off", "neighbour planned",
          "would touch a static aircraft beside it", "registration already used", "real flight heard",
          "coupled flight heard", "stands elsewhere as a static aircraft", "planned elsewhere", "parked live",
          "more than wanted", "no history within Max fit", "no livery", "soft", "two to choose from",
          "offset back over midnight", "leaves within the half hour"}) {
        EXPECT_GT(seen[rule], 0) << rule;
    }
    gf_freshRun();
}

}  // namespace vlt
