// Bends, moves at the stand, the runway, and the drive onto a stand.
#include "traffic/ground_motion.h"

#include "traffic/arrival.h"
#include "traffic/legs.h"
#include "traffic/object_config.h"
#include "traffic/runway.h"
#include "traffic/stage.h"
#include "traffic/stays.h"
#include "traffic/step_motion.h"
#include "traffic/taxi_curve.h"

#include <tuple>

namespace vlt {

class GroundMotion : public Stage
{
protected:
    // Comes to rest 12 m short of the stand A1.
    static LiveAc& arriving()
    {
        gf_addStand("A1", 0, 0, 90);
        return add("taxi landed: -42@5 -12@4 -12s");
    }
    // A live and a static one at the stand A1, or `apart` metres off at its neighbour A2.
    static void occupy(double apart)
    {
        gf_addStand("A2", 0, apart, 90);
        parkApf.stands[0].neighbours = {2};
        add("parked: 0s", 20002, "DLH1").standId = apart == 0 ? 1 : 2;
        addStatic(apart == 0 ? 1 : 2);
    }
};

TEST_F(GroundMotion, whichBendsBecomeCurvesAndWhichLegsAreHalved)
{
    // A leg east, and one that turns right by so many degrees, if any. Reports come every 10 s.
    // clang-format off
    const struct { const char* what; double deg, legM, from, to; const char* after; } cases[] = {
        {"as good as straight",                  2.9,  90,  10,   10,   "taxi: 90 190,-5"},
        {"a gentle bend",                        3.1,  90,  10,   10,   "curve taxi: 190,-5"},
        {"a right angle",                        90,   40,  10,   10,   "curve taxi: 40,-100"},
        {"after a long leg: half stays straight", 90,   100, 10,   10,   "taxi: 50 100 100,-100"},
        {"the same, fast",                       90,   100, 44,   44,   "curve taxi: 100,-100@44"},
        {"at 45 degrees not",                    44.9, 100, 10,   10,   "curve taxi: 171,-71"},
        {"nearly back",                          161,  40,  10,   10,   "taxi: 40 -55,-33"},
        {"just a curve",                         159,  40,  10,   10,   "curve taxi: -53,-36"},
        {"the speed changes on a long leg",      0,    150, 10,   15.1, "taxi: 75@13 150@15"},
        {"slower",                               0,    150, 15.1, 10,   "taxi: 75@13 150"},
        {"no change",                            0,    150, 10,   15,   "taxi: 150@15"},
        {"no long leg",                          0,    99,  10,   20,   "taxi: 99@20"},
        {"from standing",                        0,    150, 0,    8,    "taxi: 75@4 150@8"},
        {"no leg at all",                        0,    0,   10,   10,   "taxi turns: 0@10s"},
    };
    // clang-format on
    for (const auto& c : afresh(cases)) {
        const double angle = c.deg * kRadPerDeg;
        LiveAc& ac = add(format("taxi: 0@{} {}@{}+10 {},{}@{}+10", c.from, c.legM, c.to,
                                c.legM + 100 * std::cos(angle), -100 * std::sin(angle), c.to));
        ac.stream.resize(c.deg == 0 ? 2 : 3);
        nextPos(ac);
        EXPECT_EQ(c.after, (gf_hasCurve(ac.curve) ? "curve " : "") + lookWithoutTimes(ac)) << c.what;
    }
}

TEST_F(GroundMotion, whereItParksAndWhoMakesWay)
{
    // Two half spans of 17.05 m and a tenth are 37.5 m.
    // clang-format off
    const struct { const char* what; void (*spoil)(LiveAc&); bool parks, othersGo; } cases[] = {
        {"nothing speaks against it", [](LiveAc&) {}, true, false},
        {"the reserved stand",    [](LiveAc&) { reservedStand = "A1"; }, false, false},
        {"where the user stands", [](LiveAc&) { userNow.lat = 47; userNow.lon = 8; }, false, false},
        {"just out of a stand",   [](LiveAc& ac) { ac.prevSt = StState::Parked; }, false, false},
        {"just pushed back",      [](LiveAc& ac) { ac.prevSt = StState::PushedBack; }, false, false},
        {"the same, but towed",   [](LiveAc& ac) { ac.prevSt = StState::Parked; ac.towed = true; }, true, false},
        {"looked there before",   [](LiveAc& ac) { ac.lastParkLat = 47; ac.lastParkLon = ac.stream[2].lon; },
         false, false},
        {"looked beside it",      [](LiveAc& ac) { ac.lastParkLat = 47; }, true, false},
        {"still fast",            [](LiveAc& ac) { ac.stream[1].speed = 5.1; }, false, false},
        {"still far",             [](LiveAc& ac) { ac.lon = gf_groundSample(-48, 0, 0, 0).lon; }, false, false},
        {"no airport",            [](LiveAc&) { parkAirport.reset(); }, false, false},
        {"somebody is there",     [](LiveAc&) { occupy(0); }, true, true},
        {"they would touch",      [](LiveAc&) { occupy(37); }, true, true},
        {"they wouldn't",         [](LiveAc&) { occupy(38); }, true, false},
    };
    // clang-format on
    for (const auto& c : afresh(cases)) {
        arriving();
        c.spoil(liveAcs[0]);
        nextPos(liveAcs[0]);
        EXPECT_EQ(c.parks, liveAcs[0].st == StState::Parking) << c.what;
        EXPECT_EQ(c.parks, look(liveAcs[0]).ends_with(": 0@4 0+1s")) << c.what;
        EXPECT_EQ(c.othersGo, liveAcs.size() > 1 && goes(liveAcs[1])) << c.what;
        EXPECT_EQ(c.othersGo, !staticAcs.empty() && goes(staticAcs[0])) << c.what;
    }
}

TEST_F(GroundMotion, whoArrivesParksWhereNobodyElseIs)
{
    // One aircraft is wanted parked, and there is one already, at A2.
    // clang-format off
    const struct { const char *what, *scene; uint32_t claims, other; bool cargo; const char* after; bool otherGoes; } cases[] = {
        {"it parks",                  "parking: -1.9", kNobody, 2, false, "parked",       true},
        {"not quite there",           "parking: -2.1", kNobody, 2, false, "taxi",         false},
        {"the claim is its own",      "parking: 0",    20001,   2, false, "parked",       true},
        {"another has a claim",       "parking: 0",    20009,   2, false, "parking extended goes", false},
        {"another is parked there",   "parking: 0",    kNobody, 1, false, "parking extended goes", false},
        {"a freighter doesn't count", "parking: 0",    kNobody, 2, true,  "parked",       false},
    };
    // clang-format on
    for (const auto& c : afresh(cases)) {
        maxPark = 1;
        gf_addStand("A1", 0, 0, 90).occupiedByLive = c.claims;
        gf_addStand("A2", 100, 0, 90);
        add(c.scene).cargo = c.cargo;
        gf_takeStand(liveAcs[0], parkApf.stands[0]);
        add("parked: 100s", 20002, "DLH1").standId = c.other;
        liveAcs[0].parkedSince = tick;
        arrivedAtStand(liveAcs[0]);
        EXPECT_EQ(c.after, stateOf(liveAcs[0])) << c.what;
        EXPECT_EQ(c.otherGoes, goes(liveAcs[1])) << c.what;
        EXPECT_EQ(c.claims, parkApf.stands[0].occupiedByLive) << c.what;
    }
}

TEST_F(GroundMotion, oneTooManyAndTheLongestParkedAndTheOldestStaticGo)
{
    // The half hour is Monday's fourth: the static one of Sunday's 30th came before that of Sunday's 40th.
    const std::tuple<int32_t, bool, const char*> cases[] = {{0, false, "-----xx"},
                                                            {2, false, "-x---xx"},
                                                            {2, true, "-----xx"},
                                                            {6, false, "-----xx"},
                                                            {7, false, "------x"}};
    for (const auto& [limit, loadOnly, after] : afresh(cases)) {
        maxPark = limit;
        INITIAL_LOAD_ONLY.value = loadOnly;
        hourNow = {1, 4};
        for (const int32_t since : {2000, 1000, 1500}) {
            add("parked: 0s", 20001 + static_cast<uint32_t>(liveAcs.size()), "DLH").parkedSince = since;
        }
        for (const HourStamp stamp : {HourStamp{7, 40}, HourStamp{1, 2}, HourStamp{7, 30}}) {
            addStatic(0, stamp);
        }
        addStatic().fs = FsState::RemovingFromSim;  // is there still
        const auto who = [] {
            std::string text;
            const auto gone = [](const auto& ac) { return goes(ac) ? 'x' : '-'; };
            std::ranges::transform(liveAcs, std::back_inserter(text), gone);
            std::ranges::transform(staticAcs, std::back_inserter(text), gone);
            return text;
        };
        maxParkCheck(0);
        EXPECT_EQ(after, who()) << limit << loadOnly;
        removeOldestParked(after[1] == 'x' ? 1 : 2);
        EXPECT_TRUE(who().starts_with("-xx")) << "fewer are wanted";
    }
}

TEST_F(GroundMotion, theReservedStandIsClearedAndWhoRestsOnItGoesAfterAMinute)
{
    gf_addStand("A1", 0, 0, 90);
    add("parked: 0s").standId = 1;
    add("taxi: 0s", 20002, "DLH1");
    addStatic(1);
    addStatic(2);
    const auto seen = [] {
        clearReservedStand();
        return format("{:d}{:d}{:d}{:d}", goes(liveAcs[0]), goes(liveAcs[1]), goes(staticAcs[0]),
                      goes(staticAcs[1]));
    };
    EXPECT_EQ("0000", seen()) << "none is reserved";
    reservedStand = "A1";
    for (int second = 0; second < 60; second += 15, tick += 15 * kTicksPerSecond) {
        EXPECT_EQ(second == 0 ? "0010" : "1010", seen()) << "the static one first";
    }
    EXPECT_EQ("1110", seen());
}

TEST_F(GroundMotion, whoLeavesTooSoonAfterItsLandingIsTowed)
{
    // The front sample of who is parked lies a week ahead.
    const std::tuple<const char*, double, bool> cases[] = {
        {"Buzjets", 14.9, true}, {"Buzjets", 15, false}, {"Large", 24.9, true}, {"Large", 25, false},
        {"Heavy", 59.9, true},   {"Heavy", 60, false},   {"Light", 0, false},   {"HighPerf", 0, false}};
    for (const auto& [category, minutes, towed] : afresh(cases)) {
        LiveAc& ac = add(format("parked landed extended {}: 0s", category));
        ac.stream.front().time = tick + kParkedAheadTicks - static_cast<int32_t>(minutes * kTicksPerMinute);
        leaveStand(ac);
        EXPECT_EQ(towed, ac.towed) << category << minutes;
        EXPECT_FALSE(ac.landed);
    }
}

TEST_F(GroundMotion, theRoundOfTheParkedSendsAwayWhoStayedTooLong)
{
    const std::tuple<const char*, int32_t, bool, int32_t> cases[] = {// minutes, reports, minutes, -1: goes
                                                                     {"parked: 0s", 90, false, 90},
                                                                     {"parked: 0s", 91, false, -1},
                                                                     {"parked: 0s", 200, true, 0},
                                                                     {"parked Heavy: 0s", 180, false, 180},
                                                                     {"parked Heavy: 0s", 181, false, -1}};
    for (const auto& [scene, minutes, reports, told] : afresh(cases)) {
        tick = 2'000'000;
        LiveAc& ac = add(scene);
        ac.liveAtStand = reports;
        ac.parkedSince = tick - minutes * kTicksPerMinute;
        INITIAL_LOAD_ONLY.value = true;
        EXPECT_EQ(1U, oldParkedRound().size());
        INITIAL_LOAD_ONLY.value = false;
        const auto stays = oldParkedRound();
        EXPECT_EQ(told < 0, goes(ac)) << scene << minutes;
        EXPECT_EQ(told, stays.empty() ? -1 : stays[0].minutes) << scene << minutes;
    }
}

TEST_F(GroundMotion, whenTheNoseComesUp)
{
    // The leg takes 500 ticks; without a height told it climbs as its category can.
    // clang-format off
    const struct { const char *what, *scene; double climb; } cases[] = {  // feet a tick, 0: it rolls on
        {"all ahead climb",                     "taxi runs: 0@130 400^100v800@150 800^100v800@150", 0.1},
        {"one ahead doesn't",                   "taxi runs: 0@130 400^100v800@150 800^100v200@130", 0},
        {"climbing, told on the ground",        "taxi runs: 0@130 400v800@150 800v800@150", 0.6},
        {"it is too slow yet",                  "taxi runs: 0@42 400^100v800@150 800^100v800@150", 0},
        {"no climb told, fast in the air",      "taxi runs: 0@130 400^100@140 800^100@140", 0.6},
        {"the same, a knot too slow",           "taxi runs: 0@130 400^100@140 800^100@139", 0},
        {"fast on the ground",                  "taxi runs: 0@130 400@160 800@160", 0},
        {"a climb of exactly 256",              "taxi runs: 0@130 400v256@150 800v256@150", 0},
        {"no run",                              "taxi: 0@130 400^100v800@150 800^100v800@150", 0},
        {"a light one is off the ground at 90", "taxi runs Light: 0@80 400^100@90 800^100@90", 0.5},
    };
    // clang-format on
    for (const auto& c : afresh(cases)) {
        LiveAc& ac = add(c.scene);
        ac.alt = 50;
        gf_judgeRotation(ac, 500);
        EXPECT_EQ(c.climb > 0, ac.st == StState::TakeOff) << c.what;
        EXPECT_EQ(c.climb > 0 ? ac.rotateTicks : 1, ac.phaseTicks) << c.what;
        EXPECT_NEAR(c.climb, ac.altRate, 1e-9) << c.what;
    }
}

TEST_F(GroundMotion, whatIsCommandedAtEachStep)
{
    // The landing was to the east; the nose is so many degrees off it. In a take-off that fails, the climb
    // still builds up until tick -300.
    const auto low = [](LiveAc& ac) { ac.agl = 1999, setUpLiveAc(ac); };
    const auto high = [](LiveAc& ac) { ac.agl = 2000, setUpLiveAc(ac); };
    const auto touches = [](LiveAc& ac) { onTouchdown(ac); };
    const auto late = [](LiveAc& ac) { ac.phaseTicks = -301, onTouchdown(ac); };
    // clang-format off
    const struct { const char* scene; double offDeg; void (*step)(LiveAc&); const char *after, *commands; } cases[] = {
        {"taxi runs: 0@10 40@19",              0,     nextPos, "taxi runs",  "throttle=0"},
        {"taxi runs: 0@15 40@10",              0,     nextPos, "taxi runs",  "throttle=4914"},
        {"taxi runs: 0@10 40@20",              0,     nextPos, "taxi runs",  "throttle=4914"},
        {"taxi runs: 0@20 40@10",              0,     nextPos, "taxi runs",  "throttle=8191"},
        {"taxi runs: 0@10 40@25",              0,     nextPos, "taxi runs",  "throttle=8191"},
        {"taxi runs: 0@25 40@10",              0,     nextPos, "taxi runs",  "throttle=16383"},
        {"taxi runs: 0@10 40@30",              0,     nextPos, "taxi runs",  "throttle=16383"},
        {"taxi runs Rotorcraft: 0@10 40@19",   0,     nextPos, "taxi runs",  "throttle=16383"},
        {"taxi: 0@10 40@10",                   0,     nextPos, "taxi",       "throttle=0"},
        {"taxi rolls: 0@91 100@91",            14.99, nextPos, "taxi rolls", ""},
        {"taxi rolls: 0@90 100@90",            14.99, nextPos, "taxi rolls", "spoilers=0 flaps=3072"},
        {"taxi rolls: 0@91 100@91",  15.01, nextPos, "taxi", "flaps=0 throttle=0 spoilers=0 lights=1101011"},
        {"taxi rolls Rotorcraft: 0@91 100@91", 15.01, nextPos, "taxi",       "throttle=16383 lights=1101011"},
        {"taxi rolls landed lands: 0@130 400@140", 0, rotationStart, "take_off runs",
         "throttle=0 spoilers=0 flaps=3072 lights=1111110 throttle=16383 spoilers=16383"},
        {"taxi rolls Rotorcraft: 0@30 100@50", 0, rotationStart, "take_off runs", "throttle=16383 lights=1111110"},
        {"taxi rolls landed: 0@130 400@140",   0, gf_rejectLanding, "taxi runs rolls",
         "throttle=11468 spoilers=16383 flaps=3072 lights=1111110"},
        {"flying: 0^9999",                     0,     low,  "flying", "start=0 spoilers=0 lights=1110110"},
        {"flying: 0^10000",                    0,     high, "flying", "start=0 spoilers=0 lights=1100101"},
        {"taxi: 0",            0, low, "taxi",   "spoilers=0 start=0 lights=1101011 throttle=0 flaps=3072"},
        {"birth: 0",           0, low, "birth",  "spoilers=0 start=0 lights=1100011 throttle=0 flaps=0"},
        {"parked: 0s",         0, low, "parked", "spoilers=0 shutdown=0 lights=1000011 throttle=0 flaps=0"},
        {"taxi Rotorcraft: 0", 0, low, "taxi",   "start=0 lights=1101011 throttle=16383"},
        {"flying: 0^1000 90",                  0,     touches, "flying",     ""},
        {"flying lands: 0^1000 90",            0,     touches, "flying rolls landed blends", "spoilers=16383"},
        {"take_off runs: 0^9 90",              0,     touches, "take_off runs", ""},
        {"take_off runs: 0 90^9",              0,     late,    "take_off runs", ""},
        {"take_off runs: 0 90",                0,     late, "taxi rolls landed blends", "gear=1 spoilers=16383"},
    };
    // clang-format on
    for (const auto& c : afresh(cases)) {
        LiveAc& ac = add(c.scene);
        ac.landingHdg = ac.hdg - c.offDeg * kRadPerDeg;
        ac.lagLimit = 3000;
        ac.climbConfigured = true;
        c.step(ac);
        EXPECT_EQ(c.commands, commands()) << c.scene;
        EXPECT_EQ(c.after, stateOf(ac)) << c.scene;
        EXPECT_EQ(c.step == nextPos && ac.st == StState::Taxi && !ac.takeOff && !ac.landingRoll ? 2900 : 3000,
                  ac.lagLimit)
            << c.scene;
        EXPECT_EQ(c.step != rotationStart && c.step != gf_rejectLanding, ac.climbConfigured) << c.scene;
    }
}

}  // namespace vlt
