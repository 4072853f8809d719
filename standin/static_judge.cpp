#include "standin/static_judge.h"

#include "airports/airports.h"
#include "core/base/text.h"
#include "traffic/geodesy.h"
#include "traffic/stand_holding.h"
#include "traffic/stays.h"

#include <algorithm>
#include <set>
#include <utility>

namespace vlt {

void StaticJudge::look(const StaticAc& ac)
{
    const auto [at, isNew] = m_present.try_emplace(ac.hexid, m_findings.lives.size());
    if (isNew) {
        m_findings.lives.push_back({ac.hexid,
                                    ac.callsign,
                                    ac.airline,
                                    ac.model,
                                    ac.regcode,
                                    std::string(ac.title),
                                    ac.titleStep,
                                    gf_standName(ac),
                                    tick,
                                    -1,
                                    -1,
                                    ac.soft,
                                    ac.fs,
                                    {}});
    }
    StaticLife& life = m_findings.lives[at->second];
    life.fs = ac.fs;
    life.why = ac.goesBecause;
    if (ac.fs == FsState::Active && life.activeTick < 0) {
        life.activeTick = tick;
    }
}

// --- what must never be

static void lf_checkStand(const StaticAc& s, const StaticJudge::Note& note)
{
    if (const LiveAc* live = gf_liveHolder(s.standId, kParked)) {
        note(format("{} and the static {} stand at {}", live->callsign, s.callsign, gf_standName(s)));
    }
    const ParkPos* stand = gf_stand(s.standId);
    if (stand == nullptr || distNm(gf_standPlace(s), gf_placeOf(*stand)) > 0) {
        note(format("the static {} doesn't stand on a stand", s.callsign));
        return;
    }
    const auto touches = [&s](const StaticAc& other) {
        return s.radius + other.radius > distNm(gf_standPlace(s), gf_standPlace(other));
    };
    for (const uint32_t index : stand->neighbours) {
        const StaticAc* beside = gf_staticHolder(index);
        if (beside != nullptr && s.hexid < beside->hexid && touches(*beside)) {
            note(format("the static {} and {} touch", s.callsign, beside->callsign));
        }
        const LiveAc* live = gf_liveHolder(index, kParked);
        if (live != nullptr && touches(*live)) {
            note(format("{} and the static {} touch", live->callsign, s.callsign));
        }
    }
}

static void lf_checkRegistrations(const StaticJudge::Note& note)
{
    std::set<std::string_view> seen;
    const auto look = [&](const StaticAc& ac) {
        if (ac.fs == FsState::Active && !ac.regcode.empty() && !seen.insert(ac.regcode).second) {
            note(format("{} is there twice, live or static", ac.regcode));
        }
    };
    std::ranges::for_each(staticAcs, look);
    for (const LiveAc& ac : liveAcs) {
        if (ac.st == StState::Parked) {
            look(ac);
        }
    }
}

void StaticJudge::onSecond(const Note& note)
{
    ParkedCount count{hourNow, 0, static_cast<int32_t>(std::ranges::count_if(liveAcs, gf_isParked)), maxPark};
    std::set<uint32_t> here;
    for (const StaticAc& s : staticAcs) {
        look(s);
        here.insert(s.hexid);
        if (s.fs == FsState::Active) {
            ++count.statics;
            lf_checkStand(s, note);
        }
    }
    std::erase_if(m_present, [&](const auto& present) {
        const bool gone = !here.contains(present.first);
        if (gone) {
            m_findings.lives[present.second].goneTick = tick;
        }
        return gone;
    });
    lf_checkRegistrations(note);
    std::vector<ParkedCount>& counts = m_findings.halfHours;
    if (counts.empty() || counts.back().stamp != count.stamp) {
        counts.push_back(count);
    } else {
        counts.back() = count;
    }
    m_findings.updates = updateCount;
}

StaticFindings StaticJudge::finish()
{
    return std::exchange(m_findings, {});
}

}  // namespace vlt
