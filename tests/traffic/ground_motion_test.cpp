// Bends, moves at the stand, the runway, and the drive onto a stand.
#include "traffic/ground_motion.h"

#include "traffic/arrival.h"
#include "traffic/legs.h"
#include "traffic/object_config.h"
#include "traffic/runway.h"
#include "traffic/stage.h"
#include "traffic/stand_moves.h"
#include "traffic/stays.h"
#include "traffic/step_motion.h"
#include "traffic/way.h"

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

// Random roads, from standing with the nose anywhere, through bends of any sharpness, to a stop: the object
// passes every sample, its nose turns as fast as it may and looks where it goes, and it never leaps.
TEST_F(GroundMotion, aTaxiingAircraftRollsWhereItsNoseLooks)
{
    double offAll = 0, seconds = 0;
    for (uint32_t seed = 0; seed < 60; ++seed) {
        SetUp();
        std::mt19937 random(seed);
        const auto from = [&random](int least, int most) {
            return least + static_cast<int>(random() % static_cast<uint32_t>(most - least + 1));
        };
        std::string scene = format("taxi {}: 0s", kCategoryNames[seed % 5]);
        double way = from(0, 359) * kRadPerDeg, east = 0, north = 0;
        for (int i = 0, metres = 0; i < 12; ++i, way += from(-90, 90) * kRadPerDeg) {
            metres = from(30, 120);
            east += metres * std::sin(way);
            north += metres * std::cos(way);
            scene += format(" {:.1f},{:.1f}@12+{:.1f}", east, north, metres / 6.17 + (i == 0 ? 20 : 0));
        }
        LiveAc& ac = add(scene + format(" {:.1f},{:.1f}s", east, north));
        ac.category = static_cast<AcCategory>(seed % 5);
        ac.hdg = from(0, 359) * kRadPerDeg;
        SCOPED_TRACE(seed);
        while (ac.stream.size() > 1 && !HasFailure()) {
            nextPosMain(ac);
            const PosSample end = ac.stream.front();
            for (; tick < end.time; ++tick) {
                const LiveAc before = ac;
                if (!end.stationary) {
                    stepMotion(ac);
                }
                const Metres step = gf_metres(gf_placeOf(before), gf_placeOf(ac));
                const double knots = std::abs(step) / kMetresPerTickPerKnot;
                EXPECT_LE(std::abs(angleDiff(before.hdg, ac.hdg)), gf_fastestTurn(ac) + 1e-9);
                EXPECT_LT(knots, 50);
                EXPECT_LT(knots - std::abs(before.velocity) / kMetresPerTickPerKnot, 5.1) << "a jerk";
                if (knots > 3) {
                    const double off = std::abs(angleDiff(ac.hdg, std::arg(step))) * kDegPerRad;
                    EXPECT_LT(off, 75);
                    offAll += off;
                    seconds += 1;
                }
            }
            EXPECT_NEAR(0, distNm(gf_placeOf(end), gf_placeOf(ac)) * kMetresPerNm, 0.1);
        }
    }
    EXPECT_LT(offAll / seconds, 3.5) << "degrees, in the mean";
}

TEST_F(GroundMotion, oneThatIsPushedLooksTheOtherWay)
{
    // Its nose is reported to look so many degrees off the way that its reports lead.
    const std::tuple<const char*, double, bool> cases[] = {{"taxi: 0s 12@3 24@3", 180, true},
                                                           {"taxi: 0s 12@3 24@3", 110, false},
                                                           {"taxi: 0@12 60@12 120@12", 180, false},
                                                           {"taxi runs: 0s 12@3 24@3", 180, false}};
    for (const auto& [scene, off, backwards] : afresh(cases)) {
        LiveAc& ac = add(scene);
        ac.hdg = gf_normalAngle((90 + off) * kRadPerDeg);
        for (PosSample& s : ac.stream) {
            s.heading = ac.hdg;
            s.headingValid = true;
        }
        EXPECT_EQ(backwards, gf_goesBackwards(ac)) << scene << off;
        EXPECT_EQ(backwards, gf_ticksOfTurn(ac) == 0 && ac.stream[0].stationary) << scene << off;
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
        {"21 m short of it",      [](LiveAc& ac) { ac.stream[1].lon = ac.stream[2].lon = gf_groundSample(-21, 0, 0, 0).lon; },
         false, false},
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
        {"it's a freighter's now",    "parking: 0",    kNobody, 2, true,  "parked",       true},
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
        const int32_t due = ac.leavesAt = tick + (towed ? 700 : -700);
        leaveStand(ac);
        EXPECT_EQ(std::max(due, tick + 1), ac.stream.front().time) << category;
        EXPECT_EQ(towed, ac.towed) << category << minutes;
        EXPECT_FALSE(ac.landed);
    }
}

TEST_F(GroundMotion, aPushBackLeadsTwoAndAHalfStandRadiiBackAndThenAside)
{
    LiveAc& ac = add("parked: 0s");
    gf_takeStand(ac, gf_addStand("A1", 0, 0, 90));
    pushBack(ac);
    ASSERT_EQ(4U, ac.stream.size());
    EXPECT_NEAR(-25, east(ac.stream[1]), 0.1);
    EXPECT_NEAR(-50, east(ac.stream[2]), 0.1);
    EXPECT_NEAR(17.05, std::abs(north(ac.stream[3])), 0.1) << "half a span";
    EXPECT_NEAR(0, north(ac.stream[3]) + north(ac.pushExitSample), 0.1) << "to the one side or the other";
    EXPECT_EQ("lights=1101010", commands());
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
    const auto leaves = [](LiveAc& ac) { gf_takeStand(ac, gf_addStand("A1", 0, 0, 90)), pullOut(ac); };
    const auto static_ = [](LiveAc& ac) { parkedConfig(static_cast<StaticAc&>(ac)); };
    const auto soft = [](LiveAc& ac) { ac.soft = true, parkedConfig(static_cast<StaticAc&>(ac)); };
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
        {"parked: 0s",         0, leaves, "taxi",  "lights=1101010 start=0 throttle=0 flaps=3072"},
        {"parked: 0s",         0, static_, "parked", "throttle=0 flaps=0 shutdown=0 lights=1000011"},
        {"parked: 0s",         0, soft, "parked", "throttle=0 flaps=0 shutdown=0 lights=1000010"},
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
        ac.climbConfigured = true;
        c.step(ac);
        EXPECT_EQ(c.commands, commands()) << c.scene;
        EXPECT_EQ(c.after, stateOf(ac)) << c.scene;
        EXPECT_EQ(c.step != rotationStart && c.step != gf_rejectLanding, ac.climbConfigured) << c.scene;
    }
}

}  // namespace vlt
