#include "airports/parking/stand_choice.h"

#include "core/base/parameters.h"
#include "core/base/random.h"
#include "liveries/database.h"
#include "traffic/geodesy.h"
#include "traffic/stand_holding.h"

#include <algorithm>

namespace vlt {

// --- who is known to stand there

static bool lf_names(const StandOption& option, std::string_view callsign)
{
    return gf_isSameCallsign(option.callsign, callsign) || gf_isSameCallsign(option.coupledCs, callsign);
}

static bool lf_isHeard(const Planning& planning, const std::string& callsign)
{
    return !callsign.empty() &&
           (planning.heard.contains(callsign) || planning.heard.contains(callsign + "_"));
}

// A static aircraft beside the stand would touch one of this type there.
static bool lf_touchesStatic(const ParkPos& stand, const StandOption& option)
{
    return std::ranges::any_of(stand.neighbours, [&](uint32_t index) {
        const StaticAc* beside = gf_staticHolder(index);
        return beside != nullptr && halfWingspanNm(option.type) + halfWingspanNm(beside->model) >
                                        distNm(gf_standPlace(*beside), gf_placeOf(stand));
    });
}

static bool lf_isCandidate(const StandOption& option, bool real, HourStamp when)
{
    return option.sequence != 0 && option.real == real && option.hours.test(when.slot) &&
           gf_isOfDay(option, when.day);
}

std::vector<StandOption*> gf_candidates(ParkPos& stand, bool real, HourStamp when, std::string_view& why)
{
    std::vector<StandOption*> candidates;
    for (StandOption& option : stand.options) {
        if (!lf_isCandidate(option, real, when)) {
            continue;
        }
        if (stand.heli && !HELICOPTERS.value) {
            why = "helicopters are off";
        } else if (stand.neighbourPlanned) {
            why = "neighbour planned";
        } else if (lf_touchesStatic(stand, option)) {
            why = "would touch a static aircraft beside it";
        } else {
            candidates.push_back(&option);
        }
    }
    return candidates;
}

StandOption& gf_choose(const ParkPos& stand, std::vector<StandOption*>& candidates)
{
    if (candidates.size() < 2 || !gf_randomAllowed()) {
        return *candidates.front();
    }
    if (const StaticAc* here = gf_staticHolder(stand.index)) {
        for (StandOption* option : candidates) {
            if (lf_names(*option, here->callsign) && option->airline == here->airline &&
                option->type == here->model) {
                return *option;
            }
        }
    }
    gf_shuffle(candidates);
    return *candidates.front();
}

// --- may the option's aircraft stand there?

template <typename Entries>
static bool lf_isPlanned(const Entries& plan, const StandOption& option)
{
    return std::ranges::any_of(plan, [&option](const PlanEntry& e) {
        return lf_names(option, e.callsign) || (!option.reg.empty() && e.reg == option.reg);
    });
}

static bool lf_isRegPlanned(const std::vector<PlanEntry>& plan, const std::string& reg)
{
    return !reg.empty() &&
           std::ranges::any_of(plan, [&reg](const PlanEntry& entry) { return entry.reg == reg; });
}

static bool lf_standsElsewhere(const ParkPos& stand, const StandOption& option)
{
    return std::ranges::any_of(staticAcs, [&](const StaticAc& s) {
        return s.standId != stand.index &&
               (lf_names(option, s.coupledCs1) || (!option.reg.empty() && s.regcode == option.reg));
    });
}

static bool lf_isLiveStayer(const Planning& planning, const StandOption& option)
{
    return std::ranges::any_of(planning.liveStayers,
                               [&option](const ParkedStay& stay) { return lf_names(option, stay.callsign); });
}

Refusal gf_test(const Planning& planning, const ParkPos& stand, const StandOption& option,
                const std::vector<PlanEntry>& out)
{
    if (lf_isRegPlanned(parkPlan, option.reg) || lf_isRegPlanned(out, option.reg)) {
        return {"registration already used"};
    }
    if (lf_isHeard(planning, option.callsign)) {
        return {"real flight heard"};
    }
    if (lf_isHeard(planning, option.coupledCs)) {
        return {"coupled flight heard", false};
    }
    if (lf_standsElsewhere(stand, option)) {
        return {"stands elsewhere as a static aircraft"};
    }
    if (lf_isPlanned(parkPlan, option) || lf_isPlanned(out, option)) {
        return {"planned elsewhere"};
    }
    if (lf_isLiveStayer(planning, option)) {
        return {"parked live"};
    }
    return {};
}

}  // namespace vlt
