#include "traffic/identity.h"

#include "airports/catalogue.h"
#include "core/base/parameters.h"
#include "core/base/talkative_log.h"
#include "core/base/text.h"
#include "liveries/database.h"
#include "liveries/regcodes.h"
#include "traffic/geodesy.h"
#include "traffic/performance.h"
#include "traffic/removal.h"
#include "traffic/stand_holding.h"

#include <algorithm>

namespace vlt {

// --- ghosts

bool gf_isGhost(std::string_view callsign)
{
    return callsign.ends_with('_');
}

std::string_view gf_withoutMark(std::string_view callsign)
{
    return callsign.substr(0, callsign.empty() ? 0 : callsign.size() - 1);
}

bool hasTwin(std::string_view callsign)
{
    return gf_liveByCallsign(gf_withoutMark(callsign)) != nullptr;
}

void ghostCheck(const std::string& callsign)
{
    LiveAc* ghost = gf_liveByCallsign(callsign + "_");
    if (ghost == nullptr) {
        return;
    }
    const std::string place =
        ghost->st == StState::Parked ? format("{:8}:", gf_standName(*ghost)) : std::string(9, ' ');
    logTalkative(
        format("{} {:8} is a ghost and will be removed, continue with {}", place, ghost->callsign, callsign));
    ghostCallsigns.push_back(ghost->callsign);
    removeAircraftFromSim(*ghost, "a ghost, its twin is here");
}

// --- doubles

// The other is another aircraft, in the simulator or on its way there, with this call sign or this
// registration, empty ones left out.
static bool lf_isDouble(const LiveAc& ac, std::string_view callsign, std::string_view regcode,
                        const LiveAc& other)
{
    return &other != &ac && other.fs != FsState::Buffer && other.fs != FsState::RemovingFromSim &&
           ((!callsign.empty() && other.callsign == callsign) ||
            (!regcode.empty() && other.regcode == regcode));
}

static bool lf_isDouble(const LiveAc& newcomer, const LiveAc& other)
{
    return lf_isDouble(newcomer, newcomer.callsign, newcomer.regcode, other);
}

// Another aircraft is seen under this call sign, or this registration.
static bool lf_isTaken(const LiveAc& ac, std::string_view callsign, std::string_view regcode)
{
    return std::ranges::any_of(
        liveAcs, [&](const LiveAc& other) { return lf_isDouble(ac, callsign, regcode, other); });
}

// The one shown longer goes if it is parked, or a ghost of a newcomer that is none.
static bool lf_makesWay(const LiveAc& newcomer, const LiveAc& other)
{
    const bool ghost = gf_isGhost(other.callsign) && !gf_isGhost(newcomer.callsign);
    return gf_isParked(other) || (ghost && other.fs == FsState::Active);
}

bool gf_doublesMakeWay(const LiveAc& newcomer)
{
    return std::ranges::all_of(liveAcs, [&newcomer](const LiveAc& other) {
        return !lf_isDouble(newcomer, other) || lf_makesWay(newcomer, other);
    });
}

void gf_removeDoubles(const LiveAc& newcomer)
{
    for (LiveAc& other : liveAcs) {
        if (lf_isDouble(newcomer, other)) {
            removeAircraftFromSim(other, "reported anew elsewhere");
        }
    }
}

// --- the route

// Origin and destination. False for a new flight.
static bool updateRoute(LiveAc& ac, const FeedRecord& record)
{
    bool same = true;
    const auto fill = [&same](std::string& text, const std::string& given) {
        if (text.empty() && !given.empty()) {
            text = given;
            same = false;
        }
    };
    fill(ac.origin, record.origin);
    fill(ac.destination, record.destination);
    const bool newFlight = !record.origin.empty() && !record.destination.empty() &&
                           record.origin != ac.origin && record.destination != ac.destination;
    if (!newFlight) {
        return same;
    }
    const AirportRecord* airport = findAirport(parkApf.code);
    if (airport != nullptr && !airport->iata.empty() && ac.origin == airport->iata &&
        ac.origin == record.destination) {
        return same;
    }
    ac.origin = record.origin;
    ac.destination = record.destination;
    if (ac.onGround && ac.st != StState::Parking && ac.st != StState::Parked) {
        gf_setSt(ac, StState::Taxi);
        ac.trackTarget = ac.hdg;
    }
    return false;
}

// --- the registration

static bool lf_differs(const RegRecord* rec, const LiveAc& ac)
{
    return rec != nullptr && !(rec->airl == ac.airline && rec->type == ac.model) &&
           (rec->opr.empty() || rec->opr != ac.airline);
}

static void lf_newIdentity(LiveAc& ac)
{
    titleCache.erase(ac.hexid);
    ac.title = {};
    gf_setSt(ac, StState::Birth);
}

static void lf_takeOperator(LiveAc& ac, const RegRecord& rec)
{
    ac.airline = gf_airlineOf(rec);
    gf_setModel(ac, rec.type);
}

// The registration that the record tells, unless it tells none, or one that is another aircraft's: then the
// one that the aircraft has.
static const std::string& lf_regcodeAfter(const LiveAc& ac, const FeedRecord& record)
{
    const bool takesOver =
        !record.regcode.empty() && record.regcode != ac.regcode && !lf_isTaken(ac, "", record.regcode);
    return takesOver ? record.regcode : ac.regcode;
}

// Another registration than the one known so far.
static bool lf_changeRegcode(LiveAc& ac, const FeedRecord& record, const RegRecord* rec)
{
    const std::string airline = gf_airlineOfCallsign(record.callsign);
    if (!lf_differs(rec, ac) || airline.empty() || (airline != rec->airl && airline != rec->opr)) {
        return true;
    }
    lf_takeOperator(ac, *rec);
    lf_newIdentity(ac);
    return false;
}

// The first registration, or one that was only the call sign so far.
static bool lf_learnRegcode(LiveAc& ac, const FeedRecord& record, const RegRecord* rec)
{
    if (const auto livery = regcodeTitles.find(record.regcode); livery != regcodeTitles.end()) {
        if (livery->second == ac.title) {
            return true;
        }
        if (rec != nullptr) {
            ac.airline = rec->airl;
            gf_setModel(ac, rec->type);
        }
    } else if (record.regcode == ac.regcode || !lf_differs(rec, ac)) {
        return true;
    } else {
        lf_takeOperator(ac, *rec);
    }
    lf_newIdentity(ac);
    return false;
}

// The registration. False if a new livery is needed.
static bool updateRegcode(LiveAc& ac, const FeedRecord& record)
{
    if (record.regcode.empty() || lf_regcodeAfter(ac, record) != record.regcode) {
        return true;
    }
    const RegRecord* rec = findRegcode(record.regcode);
    const bool known = !ac.regcode.empty() && (ac.regcode != ac.callsign || ac.regcode == record.regcode);
    bool same = true;
    if (!known) {
        same = lf_learnRegcode(ac, record, rec);
    } else if (ac.regcode != record.regcode) {
        same = lf_changeRegcode(ac, record, rec);
    }
    ac.regcode = record.regcode;
    return same;
}

// --- all of it

static void lf_fillBuffered(LiveAc& ac, const FeedRecord& record)
{
    const auto replace = [](std::string& text, const std::string& given) {
        if (!given.empty()) {
            text = given;
        }
    };
    replace(ac.destination, record.destination);
    replace(ac.origin, record.origin);
    replace(ac.callsign, record.callsign);
    replace(ac.regcode, record.regcode);
}

// The record tells a call sign that is new to the aircraft.
static bool lf_changesCallsign(const LiveAc& ac, const FeedRecord& record)
{
    return !record.callsign.empty() && record.callsign != ac.callsign &&
           record.callsign != lf_regcodeAfter(ac, record);
}

// Under this call sign the aircraft would be seen twice.
static bool lf_wouldBeDouble(const LiveAc& ac, const std::string& callsign)
{
    return (gf_isGhost(callsign) && hasTwin(callsign)) || lf_isTaken(ac, callsign, "");
}

static void lf_takeCallsign(LiveAc& ac, const std::string& callsign)
{
    ac.callsign = callsign;
    ac.coupledCs1 = callsign;
    ac.coupledCs2.clear();
    if (!gf_isGhost(callsign)) {
        ghostCheck(callsign);
    }
}

bool identityUpdate(LiveAc& ac, const FeedRecord& record)
{
    if (ac.takeOff || ac.approach) {
        return true;
    }
    if (ac.fs == FsState::Buffer) {
        lf_fillBuffered(ac, record);
        return true;
    }
    if (ac.fs != FsState::Active || ac.st == StState::PushingBack || ac.extendCount >= 1) {
        return true;
    }
    const bool newCallsign = lf_changesCallsign(ac, record);
    if (newCallsign && lf_wouldBeDouble(ac, record.callsign)) {
        return false;
    }
    const bool sameRoute = updateRoute(ac, record);
    const bool sameLivery = updateRegcode(ac, record);
    if (newCallsign) {
        lf_takeCallsign(ac, record.callsign);
    }
    if ((!newCallsign && sameRoute && sameLivery) || !GUID_CHANGES.value) {
        return true;
    }
    logTalkative(format("          {} respawns", gf_flightText(ac)));
    liveryRespawn(ac);
    return false;
}

// --- static twins

static bool lf_isCoupled(const StaticAc& parked, std::string_view callsign)
{
    return !callsign.empty() && (callsign == parked.coupledCs1 || callsign == parked.coupledCs2);
}

static bool sameFlight(const LiveAc& ac, const StaticAc& parked)
{
    if (parked.fs != FsState::Active) {
        return false;
    }
    const char* where = ac.onGround ? "on ground" : "airborne";
    if (!ac.regcode.empty() && ac.regcode == parked.regcode) {
        logTalkative(format("{:8}: {:8} {} removed, new {} {} has same regcode {}", gf_standName(parked),
                            parked.callsign, parked.regcode, where, ac.callsign, ac.regcode));
        return true;
    }
    const bool coupled = lf_isCoupled(parked, ac.callsign) || lf_isCoupled(parked, ac.coupledCs2) ||
                         (gf_isGhost(ac.callsign) && lf_isCoupled(parked, gf_withoutMark(ac.callsign)));
    if (coupled) {
        logTalkative(format("{:8}: {:8} \"{} {}\" removed, new {} {} \"{} {}\" has {} callsign",
                            gf_standName(parked), parked.callsign, parked.coupledCs1, parked.coupledCs2,
                            where, ac.callsign, ac.coupledCs1, ac.coupledCs2,
                            ac.callsign == parked.coupledCs1 ? "same" : "coupled"));
    }
    return coupled;
}

void gf_removeSameFlight(const LiveAc& ac)
{
    if (ac.callsign.empty()) {
        return;
    }
    const auto same =
        std::ranges::find_if(staticAcs, [&ac](const StaticAc& parked) { return sameFlight(ac, parked); });
    if (same != staticAcs.end()) {
        removeAircraftFromSim(*same, "the live one is here");
    }
}

void gf_removeStaticTwins()
{
    for (const LiveAc& ac : liveAcs) {
        if (ac.fs != FsState::Active || !ac.onGround) {
            continue;
        }
        const std::string twinCallsign = ac.callsign + "*";
        const auto twin = std::ranges::find_if(staticAcs, [&](const StaticAc& s) {
            return s.fs == FsState::Active &&
                   (s.callsign == twinCallsign || (!ac.regcode.empty() && s.regcode == ac.regcode));
        });
        if (twin != staticAcs.end()) {
            removeAircraftFromSim(*twin, "the live one is here");
        }
    }
}

}  // namespace vlt
