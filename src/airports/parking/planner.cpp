#include "airports/parking/planner.h"

#include "airports/parking/stand_choice.h"
#include "core/base/display.h"
#include "core/base/log.h"
#include "core/base/parameters.h"
#include "core/base/random.h"
#include "core/base/text.h"

#include <algorithm>
#include <cmath>

namespace vlt {

// --- how many

int32_t wantedCount()
{
    constexpr double kPercent = 100;
    const auto n = static_cast<int32_t>(parkApf.stands.size());
    int32_t percent = CUSTOM_PARKING_PERCENTAGE.value >= 0 ? CUSTOM_PARKING_PERCENTAGE.value.load()
                                                           : parking_percentage.value.load();
    int32_t wanted = n == 0 ? 0 : 1;
    if (n > 3 || (n >= 2 && percent >= 50)) {
        wanted = static_cast<int32_t>(std::lround(percent * n / kPercent));
    }
    if (CUSTOM_MAX_PARK.value != CUSTOM_MAX_PARK.def) {
        wanted = std::min(wanted, CUSTOM_MAX_PARK.value.load());
        percent = n == 0 ? 0 : static_cast<int32_t>(std::lround(wanted * kPercent / n));
    }
    maxPark = wanted;
    display.airport.wanted = wanted;
    display.airport.wantedPercent = percent;
    return wanted;
}

// --- the stands

void gf_renumberOptions()
{
    for (ParkPos& stand : parkApf.stands) {
        stand.planned = false;
        stand.neighbourPlanned = false;
        for (size_t i = 0; i < stand.options.size(); ++i) {
            stand.options[i].sequence = static_cast<int32_t>(i) + 1;
        }
    }
}

void gf_markPlanned(ParkPos& stand)
{
    stand.planned = true;
    for (const uint32_t index : stand.neighbours) {
        if (ParkPos* neighbour = gf_stand(index)) {
            neighbour->neighbourPlanned = true;
        }
    }
}

// --- the search

static PlanEntry lf_entry(const ParkPos& stand, const StandOption& option, HourStamp now, int32_t offset)
{
    const bool stays = option.coupledCs.empty() || gf_runsOn(stand, option, now);
    return {stand.index,      offset,     option.airline, option.type, option.callsign,
            option.coupledCs, option.reg, option.real,    stays};
}

// So that a pass looks through a stand's options once, and not again at every offset.
static std::vector<KnownHours> lf_knownHours(HourStamp now, bool real)
{
    const uint32_t yesterday = gf_halfHoursBefore(now, static_cast<int32_t>(kSlotsPerDay)).day;
    std::vector<KnownHours> known(parkApf.stands.size());
    for (const ParkPos& stand : parkApf.stands) {
        KnownHours& hours = known[stand.index - 1];
        for (const StandOption& option : stand.options) {
            if (option.real == real && gf_isOfDay(option, now.day)) {
                hours.today |= option.hours;
            }
            if (option.real == real && gf_isOfDay(option, yesterday)) {
                hours.yesterday |= option.hours;
            }
        }
    }
    return known;
}

static bool lf_knowsAnyone(const Planning& planning, const ParkPos& stand, HourStamp when)
{
    const KnownHours& hours = planning.known[stand.index - 1];
    return (when.day == planning.now.day ? hours.today : hours.yesterday).test(when.slot);
}

static void lf_searchStand(Planning& planning, ParkPos& stand, bool real, int32_t offset,
                           std::vector<PlanEntry>& out)
{
    std::string_view& why = planning.why[stand.index - 1];
    if (stand.reserved || stand.planned) {
        why = stand.planned ? "" : "reserved";
        return;
    }
    const HourStamp when = gf_halfHoursBefore(planning.now, offset);
    if (!lf_knowsAnyone(planning, stand, when)) {
        return;
    }
    std::vector<StandOption*> candidates = gf_candidates(stand, real, when, why);
    if (candidates.empty()) {
        return;
    }
    StandOption& option = gf_choose(stand, candidates);
    const Refusal refusal = gf_test(planning, stand, option, out);
    if (!refusal.why.empty()) {
        why = refusal.why;
        if (refusal.off) {
            option.sequence = 0;
        }
        return;
    }
    why = "";
    out.push_back(lf_entry(stand, option, planning.now, offset));
    gf_markPlanned(stand);
}

// One search over all stands that are open, at an offset in half hours. Appends to `out`.
static void lf_searchStands(Planning& planning, bool real, int32_t offset, std::vector<PlanEntry>& out)
{
    try {
        for (ParkPos& stand : parkApf.stands) {
            lf_searchStand(planning, stand, real, offset, out);
        }
    } catch (const std::exception& e) {
        logLine(format("lf_searchStands: day: [{},{}], offset {}: {}", planning.now.day, planning.now.slot,
                       offset, e.what()));
    }
}

static double lf_hours(int32_t halfHours)
{
    return halfHours * 0.5 + 0.5;
}

static void lf_logPass(const Planning& planning, bool real, size_t found, int32_t offset)
{
    if (found > 0) {
        logLine(format("{} {} position{} found, Max fit={} hours, hh:{} or {} hrs{} fit: {} hour", found,
                       real ? "real" : "soft", found == 1 ? "" : "s", lf_hours(MAX_FIT.value),
                       planning.now.slot, planning.now.slot * 0.5,
                       WEEK.value ? ", week" : format(", day {}", planning.now.day), offset * 0.5));
    }
}

// Gives what the last offset brought when the plan is full; else all is in the plan.
static std::vector<PlanEntry> fitPass(Planning& planning, int32_t wanted, int32_t have, bool real)
{
    const size_t before = parkPlan.size();
    std::vector<PlanEntry> out;
    int32_t offset = 0;
    for (;; ++offset) {
        lf_searchStands(planning, real, offset, out);
        if (std::ssize(parkPlan) + std::ssize(out) + have >= wanted) {
            break;
        }
        parkPlan.insert(parkPlan.end(), out.begin(), out.end());
        out.clear();
        if (offset >= MAX_FIT.value) {
            break;
        }
    }
    (real ? planning.maxFitReal : planning.maxFitSoft) = offset;
    if (real) {
        planning.maxFitSoft = -1;
    }
    lf_logPass(planning, real, parkPlan.size() + out.size() - before, offset);
    return out;
}

void planPass(Planning& planning, int32_t wanted, int32_t have, bool real)
{
    planning.why.resize(parkApf.stands.size(), "no history within Max fit");
    planning.known = lf_knownHours(planning.now, real);
    std::vector<PlanEntry> last = fitPass(planning, wanted, have, real);
    const auto surplus = std::ssize(parkPlan) + std::ssize(last) + have - wanted;
    if (surplus > 0 && !last.empty()) {
        gf_shuffle(last);
        for (auto n = std::min(surplus, std::ssize(last)); n > 0; --n) {
            planning.why[last.back().stand - 1] = "more than wanted";
            last.pop_back();
        }
    }
    parkPlan.insert(parkPlan.end(), last.begin(), last.end());
}

void gf_planPasses(Planning& planning, int32_t wanted, int32_t have)
{
    const auto isShort = [&] { return std::ssize(parkPlan) + have < wanted; };
    if (isShort()) {
        planning.maxFitReal = 0;
        planning.maxFitSoft = -1;
        planPass(planning, wanted, have, true);
    }
    if (isShort() && (PARK_SOFT.value || PARK_FAKE.value)) {
        planPass(planning, wanted, have, false);
    }
    display.airport.maxFitReal = planning.maxFitReal;
    display.airport.maxFitSoft = planning.maxFitSoft;
}

}  // namespace vlt
