#include "standin/replay_judge.h"

#include "core/base/text.h"
#include "standin/record_check.h"
#include "traffic/stand_holding.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <set>
#include <unordered_map>
#include <utility>

namespace vlt {

void ReplayJudge::note(std::string what)
{
    ++m_findings.invariantBreakCount;
    if (m_findings.invariantBreaks.size() < kMostBreaks) {
        m_findings.invariantBreaks.push_back({tick, std::move(what)});
    }
}

// --- the feed

void ReplayJudge::onReport(const FeedRecord& record)
{
    constexpr double kLongestGap = 30;  // seconds
    m_due.onReport(record);
    Reports& reports = m_reports[record.hexid];
    if (record.sample.airborne) {
        reports.firstGround.reset();
    } else if (reports.airborne && record.timestamp - reports.timestamp <= kLongestGap) {
        reports.firstGround = gf_placeOf(record.sample);
    }
    reports.airborne = record.sample.airborne;
    reports.timestamp = record.timestamp;
}

// --- every tick: lives, touchdowns, stands

ReplayJudge::Seen& ReplayJudge::seenOf(const LiveAc& ac)
{
    const auto [at, isNew] = m_seen.try_emplace(ac.hexid);
    if (isNew) {
        at->second.life = m_findings.lives.size();
        ReplayLife& life = m_findings.lives.emplace_back();
        life.hexid = ac.hexid;
        life.firstTick = tick;
        life.fs = FsState::RemovingFromSim;  // differs from every beginning
    }
    return at->second;
}

// The names change seldom.
static void lf_copyNames(ReplayLife& life, const LiveAc& ac)
{
    life.callsign = ac.callsign;
    life.airline = ac.airline;
    life.model = ac.model;
    life.regcode = ac.regcode;
    life.title = ac.title;
    life.titleStep = ac.titleStep;
}

void ReplayJudge::look(const LiveAc& ac)
{
    Seen& seen = seenOf(ac);
    ReplayLife& life = m_findings.lives[seen.life];
    seen.tick = tick;
    if (ac.fs != life.fs || tick % kTicksPerSecond == 0) {
        lf_copyNames(life, ac);
    }
    if (ac.fs == FsState::Active && life.activeTick < 0) {
        life.activeTick = tick;
    }
    if (ac.landingRoll && !seen.landingRoll) {
        life.touchdown = Touchdown{tick, gf_placeOf(ac), -seen.altRate * kTicksPerMinute};
    }
    seen.altRate = ac.altRate;
    seen.landingRoll = ac.landingRoll;
    const bool parked = ac.st == StState::Parked;
    if (parked && !seen.parked) {
        life.stands += (life.stands.empty() ? "" : " ") + gf_standName(ac);
        life.standDistanceM = distNm(gf_placeOf(ac), gf_standPlace(ac)) * kMetresPerNm;
    }
    seen.parked = parked;
    if (ac.st == StState::TakeOff && life.st == StState::Taxi) {
        m_due.onRotation(ac);
    }
    life.fs = ac.fs;
    life.st = ac.st;
    life.why = ac.goesBecause;
}

void ReplayJudge::close(const Seen& seen)
{
    ReplayLife& life = m_findings.lives[seen.life];
    const auto reports = m_reports.find(life.hexid);
    if (life.touchdown && reports != m_reports.end() && reports->second.firstGround) {
        life.firstGroundReportM = distNm(life.touchdown->at, *reports->second.firstGround) * kMetresPerNm;
    }
}

void ReplayJudge::onTick()
{
    for (const LiveAc& ac : liveAcs) {
        look(ac);
    }
    if (m_seen.size() == liveAcs.size()) {
        return;
    }
    std::erase_if(m_seen, [this](const auto& entry) {
        if (entry.second.tick == tick) {
            return false;
        }
        close(entry.second);
        m_findings.lives[entry.second.life].goneTick = tick;
        return true;
    });
}

// --- every second: what must never be

void ReplayJudge::checkIdentities()
{
    std::set<std::string_view> callsigns, registrations;
    for (const LiveAc& ac : liveAcs) {
        if (ac.fs != FsState::Active) {
            continue;
        }
        if (!callsigns.insert(ac.callsign).second) {
            note(format("two active aircraft with the call sign {}", ac.callsign));
        }
        if (!ac.regcode.empty() && !registrations.insert(ac.regcode).second) {
            note(format("two active aircraft with the registration {}", ac.regcode));
        }
    }
    for (const std::string_view callsign : callsigns) {
        if (callsign.ends_with('_') && callsigns.contains(callsign.substr(0, callsign.size() - 1))) {
            note(format("{} is active beside its twin", callsign));
        }
    }
}

void ReplayJudge::checkNumbers(const LiveAc& ac)
{
    const double numbers[] = {ac.lat, ac.lon, ac.alt, ac.hdg, ac.pitch, ac.bank, ac.vsOut, ac.tasOut};
    if (!std::ranges::all_of(numbers, [](double x) { return std::isfinite(x); })) {
        note(format("{} has a number that isn't finite", ac.callsign));
    }
}

// A parked object doesn't move. The frame after its arrival may still bring the last step.
void ReplayJudge::checkParked(const LiveAc& ac, const std::unordered_map<uint32_t, const SimObject*>& objects)
{
    const auto object = objects.find(ac.objectid);
    if (ac.st != StState::Parked || object == objects.end() || !object->second->positioned) {
        m_parked.erase(ac.objectid);
        return;
    }
    const SimObject& o = *object->second;
    const Parked now{gf_placeOf(o), {o.heading, o.altitude, o.pitch, o.bank}, false};
    const auto [at, isNew] = m_parked.try_emplace(ac.objectid, now);
    Parked& before = at->second;
    if (isNew) {
        return;
    }
    if (before.settled && (before.at != now.at || before.attitude != now.attitude)) {
        note(format("{} moved while parked, by {:.3f} m and {:.3f} ft", ac.callsign,
                    distNm(before.at, now.at) * kMetresPerNm, now.attitude[1] - before.attitude[1]));
    }
    before = now;
    before.settled = true;
}

void ReplayJudge::onSecond(const VirtualSimulator& simulator)
{
    const std::vector<SimObject> objects = simulator.objects();
    std::unordered_map<uint32_t, const SimObject*> byId;
    for (const SimObject& object : objects) {
        byId.emplace(object.id, &object);
    }
    m_active = 0;
    for (const LiveAc& ac : liveAcs) {
        if (ac.fs != FsState::Active) {
            m_parked.erase(ac.objectid);
            continue;
        }
        ++m_active;
        checkNumbers(ac);
        if (const std::string_view wrong = gf_impossible(ac); !wrong.empty()) {
            note(format("{} {}", ac.callsign, wrong));
        }
        checkParked(ac, byId);
        if (std::string wrong = m_due.onSecond(ac); !wrong.empty()) {
            note(std::move(wrong));
        }
        if (!byId.contains(ac.objectid)) {
            note(format("{} is driven, but its object {} isn't there", ac.callsign, ac.objectid));
        }
    }
    checkIdentities();
    m_statics.onSecond([this](std::string what) { note(std::move(what)); });
    const SimulatorCounts counts = simulator.counts();
    if (counts.created - counts.removed != objects.size()) {
        note(format("{} objects created, {} removed, but {} alive", counts.created, counts.removed,
                    objects.size()));
    }
}

void ReplayJudge::forget()
{
    ReplayJudge next;
    next.m_findings.invariantBreaks = std::move(m_findings.invariantBreaks);
    next.m_findings.invariantBreakCount = m_findings.invariantBreakCount;
    next.m_active = m_active;
    *this = std::move(next);
}

ReplayFindings ReplayJudge::finish()
{
    for (const auto& [hexid, seen] : m_seen) {
        close(seen);
    }
    m_findings.due = m_due.finish();
    m_findings.statics = m_statics.finish();
    return std::move(m_findings);
}

}  // namespace vlt
