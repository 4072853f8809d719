// Legs in the air, the configuration on the way, rotation, flare and touchdown.
#include "traffic/air_motion.h"

#include "traffic/air_config.h"
#include "traffic/leg_time.h"
#include "traffic/legs.h"
#include "traffic/stage.h"
#include "traffic/step_motion.h"
#include "traffic/way.h"

#include <tuple>

namespace vlt {

constexpr double kDeg = kRadPerDeg;

class AirMotion : public Stage
{
protected:
    static void fly(LiveAc& ac, int ticks)
    {
        for (int i = 0; i < ticks; ++i) {
            stepMotion(ac);
            ++tick;
        }
    }
    // The park airport lies at 1000 ft; `agl` is told by the simulator, whatever the altitude.
    static LiveAc& addAt(const std::string& scene, double agl)
    {
        parkAirport = ParkAirportPlace{47, 8, 1000};
        LiveAc& ac = add(scene);
        ac.agl = agl;
        return ac;
    }
};

// Random roads of every category: what it does in a tick stays within its powers, and each leg ends at its
// sample.
TEST_F(AirMotion, aRoadInTheAirIsFlownWithinTheCategorysPowers)
{
    // Feet a tick; degrees, and degrees a second.
    // clang-format off
    const struct { const char* category; double climb, bank, bankRate, pitchRate; } limits[] = {
        {"Light", 0.5, 40, 3.5, 1.0},  {"Buzjets", 0.75, 35, 2.75, 0.85}, {"Large", 0.6, 30, 2.0, 0.75},
        {"Heavy", 0.5, 20, 1.5, 0.5},  {"HighPerf", 1.0, 90, 10, 3.0},    {"Rotorcraft", 0.75, 75, 6, 3.0}};
    // clang-format on
    for (uint32_t seed = 0; seed < 60; ++seed) {
        SetUp();
        const auto& limit = limits[seed % 6];
        SCOPED_TRACE(format("{} {}", limit.category, seed));
        LiveAc& ac = addRoad(format("flying {}", limit.category), seed);
        ac.agl = seed % 12 < 6 ? 2500 : 900;
        while (ac.stream.size() > 1 && !HasFailure()) {
            ac.takeOff = true;
            nextPosMain(ac);
            const PosSample& end = ac.stream.front();
            const int32_t ticks = std::max(end.time - tick, kShortestLeg);
            const bool sinks = end.vs <= -250;  // and means it
            const double pitchOff = gf_pitchForVs(end.vs) - ac.pitch;
            for (int i = 0; i < ticks; ++i, ++tick) {
                const LiveAc before = ac;
                stepMotion(ac);
                const double climb = ac.alt - before.alt;
                EXPECT_LE(climb, limit.climb + 1e-9);
                EXPECT_TRUE(ac.agl > 1000 || !ac.takeOff || sinks || climb >= 0.2 - 1e-9);
                EXPECT_LT(distNm(gf_placeOf(before), gf_placeOf(ac)) * kMetresPerNm, 12) << "no leap";
                EXPECT_LE(std::abs(angleDiff(before.hdg, ac.hdg)), 9.8 / 100 * kDeg + 1e-9);
                EXPECT_LE(std::abs(ac.bank), limit.bank * kDeg + 1e-9);
                EXPECT_LE(std::abs(ac.bank - before.bank), limit.bankRate / 100 * kDeg + 1e-9);
                EXPECT_LE(std::abs(ac.pitch - before.pitch), limit.pitchRate / 100 * kDeg + 1e-9);
            }
            EXPECT_NEAR(0, distNm(gf_placeOf(end), gf_placeOf(ac)) * kMetresPerNm, 0.1);
            const double limitOff = std::max(std::abs(pitchOff) - limit.pitchRate / 100 * kDeg * ticks, 0.0);
            EXPECT_NEAR(limitOff, std::abs(gf_pitchForVs(end.vs) - ac.pitch), 1e-9);
        }
    }
}

TEST_F(AirMotion, aLegAimsAtItsReportAndMakesGoodWhatItIsOffSlowly)
{
    // The leg of 1543.3 m is 0.8333 nm: 3000 s at a knot. In the air a quarter of what it is off is made
    // good, within 3 percent and a percent more for each second beyond three; on the ground all, within ten.
    // clang-format off
    const struct { const char *what, *scene; double after; } cases[] = {  // seconds
        {"in time",                     "flying: 0^9@300 1543.3^9@300+10", 10},
        {"a little early: a quarter",   "flying: 0^9@300 1543.3^9@300+11", 10.25},
        {"a little late",               "flying: 0^9@300 1543.3^9@300+9",  9.75},
        {"late: three percent",         "flying: 0^9@300 1543.3^9@300+8.6", 10 / 1.03},
        {"the mean of both",            "flying: 0^9@200 1543.3^9@400+10", 10},
        {"onto the runway: by the first", "flying lands: 0^9@150 1543.3@450+20", 20},
        {"in the air: by the mean",     "flying lands: 0^9@150 1543.3^9@450+10", 10},
        {"slower than told: by the places", "flying: 0^9@600 1543.3^9@600+10", 8.59},
        {"faster than told", "flying: 0^9@200 1543.3^9@200+10", 11.65},
        {"no speed at all: by the places", "flying: 0^9@0 1543.3^9@0+200", 200},
        {"nonsense",                    "flying: 0^9@-10000000 1543.3^9@-10000000+200", 200},
        {"a crawl: the clock's end isn't reached", "flying: 0^9@0.6 -7700000^9@0.6+10", 1.5e6},
        {"on the ground: all of it",    "taxi: 0@300 1543.3@300+9.5", 9.5},
        {"ten percent at most",         "taxi: 0@300+3 1543.3@300+10", 10 / 1.1},
        {"it may creep",                "taxi: 0@300 1543.3@300+14",  14},
        {"it stands",                   "taxi: 0@10 0+2s", 2},
        {"it comes to rest: half the speed", "taxi: 0@150 1543.3@150+40 1543.3s", 40},
    };
    // clang-format on
    for (const auto& c : afresh(cases)) {
        LiveAc& ac = add(c.scene);
        legTime(ac);
        EXPECT_NEAR(c.after, (ac.stream[1].time - tick) / 100.0, c.after > 1e5 ? c.after : 0.06) << c.what;
    }
}

TEST_F(AirMotion, climbsAndSinksAsItsPlaceAllows)
{
    // Legs of 10 s; feet a tick are feet a second / 100. A vertical speed of 600 ft a minute is 0.1.
    // clang-format off
    const struct { const char *what, *scene; double agl; int32_t qnh; double expected; } cases[] = {  // feet a tick
        {"as reported",                         "flying: 0^9000 2000^9300",     5000, 1013, 0.3},
        {"no faster than the category",         "flying: 0^9000 2000^11000",    5000, 1013, 0.6},
        {"descending high up",                  "flying: 0^9000 2000^8200",     5000, 1013, -0.8},
        {"no faster than believable",           "flying: 0^9000 2000^7000",     5000, 1013, -1.0},
        {"level in a low circuit",              "flying: 0^9000 2000^9000",     1000, 1013, 0},
        {"climbing out it doesn't stay level",  "flying runs: 0^9000 2000^9000", 1000, 1013, 0.2},
        {"nor does it sink",                    "flying runs: 0^9000 2000^8500", 800,  1013, 0.2},
        {"unless it means it",                  "flying runs: 0^9000 2000^8500v-250", 800, 1013, -0.5},
        {"on approach it does",                 "flying lands: 0^2000v-700 2000^1500v-700", 800,  1013, -0.5},
        {"a frozen altitude goes on down",      "flying lands: 0^2000v-700 2000^2000v-900", 800,  1013, -800. / 6000},
        {"unless it climbs",                    "flying lands: 0^2000v60 2000^2000v60", 800,  1013, 0},
        {"or is high",                          "flying lands: 0^2000v-700 2000^2000v-900", 1001, 1013, 0},
        {"to the known airport",                "flying lands: 0^1500v-800 2000v-800", 500,  1013, -0.5},
        {"high pressure: 6 ft/min for 1 hPa",   "flying lands: 0^1500v-800 2000v-800", 500,  1020, -842. / 6000},
        {"but at least",                        "flying lands: 0^1500v-200 2000v-200", 500,  1014, -601. / 6000},
        {"high pressure, near the ground",      "flying lands: 0^1500v-800 2000v-800", 100,  1020, -0.1},
        {"not down before its reports are",     "flying lands: 0^1500v-800 2000v-800", 50,  1020, -0.05},
        {"no airport",                          "flying lands: 0^1500v-800 2000v-800", 500,  1000, -601. / 6000},
        {"off the ground",                      "flying: 0 2000^300",           100,  1013, 0.3},
        {"no faster than it can",               "flying: 0 2000^3000",          100,  1013, 0.6},
        {"reports on the ground, it lands",     "flying lands: 0v-700 2000v-900", 300,  1013, -800. / 6000},
        {"they climb, and soon are in the air", "flying: 0v50@777.5 2000v60@777.5 4000^200v90@777.5 9000^900", 300,  1013, 0.2},
        {"they climb, but on the ground",       "flying: 0v50 2000v60 4000v700", 300,  1013, 601. / 6000},
    };
    // clang-format on
    for (const auto& c : afresh(cases)) {
        LiveAc& ac = addAt(c.scene, c.agl);
        ac.onGround = false;
        currentQnh = c.qnh;
        if (std::string(c.what) == "no airport") {
            parkAirport.reset();
        }
        const bool ground = !ac.stream[1].airborne;
        for (size_t i = 1; i < ac.stream.size(); ++i) {
            ac.stream[i].time = tick + 1000;
        }
        airSettings(ac, 1000);
        EXPECT_NEAR(c.expected, ac.altRate, 1e-9) << c.what;
        if (ac.stream.size() == 2) {
            EXPECT_EQ(ac.stream[1].vs, ac.targetVs) << c.what;
        }
        EXPECT_EQ(ground, commands().starts_with("gear=1")) << c.what;
    }
}

TEST_F(AirMotion, pitchFollowsTheVerticalSpeed)
{
    const std::pair<double, double> cases[] = {
        {0, -3}, {2400, -11.8}, {9000, -11.8}, {-1200, -0.8}, {-4000, 2.5}};
    for (const auto& [vs, degrees] : cases) {
        EXPECT_NEAR(degrees * kDeg, gf_pitchForVs(vs), 1e-12) << vs;
    }
}

TEST_F(AirMotion, banksIntoTheTurnAndTakesReportedAttitudesNearTheGround)
{
    // A right turn by 30 degrees, half of it in this leg; right wing down is negative.
    // clang-format off
    const struct { bool given, lands; double agl, bankDeg, hdgDeg; } cases[] = {
        {false, false, 5000, -15, 105}, {true, false, 999, -5, 100},    {true, false, 1000, -5, 105},
        {true, true, 1999, -5, 100},    {true, true, 2000, -5, 105},
    };
    // clang-format on
    for (const auto& c : afresh(cases)) {
        LiveAc& ac = addAt("flying: 0^5000@200+5 1028.9^5000@200+10 1920,-514.5^5000@200+10", c.agl);
        ac.approach = c.lands;
        PosSample& next = ac.stream[1];
        next.attitudeGiven = next.headingValid = next.rollValid = c.given;
        next.heading = 100 * kDeg;
        next.roll = -5 * kDeg;
        nextPosMain(ac);
        fly(ac, ac.stream[0].time - tick);
        EXPECT_NEAR(c.bankDeg, ac.bank / kDeg, 0.1) << c.agl;
        EXPECT_NEAR(c.hdgDeg, ac.hdg / kDeg, 0.5) << c.agl;
    }
}

TEST_F(AirMotion, configuresByHeightAndVerticalSpeed)
{
    // The levels of throttle and flaps before; what is in force isn't commanded again.
    // Without lights told, those for below 10,000 ft come first.
    // clang-format off
    const struct {
        const char *what, *scene; double agl; uint32_t throttle, flaps; const char *after, *commands;
    } cases[] = {
        {"cruise", "flying: 0^35000", 2500, 5, 4, "flying", "lights=1100001 throttle=11468 gear=0 flaps=0"},
        {"at its lower end", "flying: 0^10000", 2500, 3, 0, "flying", "lights=1100001 gear=0"},
        {"clean",                        "flying: 0^9000",             2400, 3, 0, "flying",       "cabin=1 gear=0"},
        {"its approach is over",         "flying lands runs: 0^9000", 2400, 3, 3, "flying", "cabin=1 gear=0 flaps=0"},
        {"descending",                   "flying: 0^9000v-250", 2500, 3, 0, "flying", "cabin=1 throttle=8191 gear=0"},
        {"climbing",                     "flying: 0^9000v401", 2500, 4, 0, "flying", "cabin=1 throttle=11468 gear=0"},
        {"climbing, and it has less",    "flying: 0^9000v401",         2500, 2, 0, "flying",       "cabin=1 gear=0"},
        {"hardly climbing",              "flying: 0^9000v400",         2500, 4, 0, "flying",       "cabin=1 gear=0"},
        {"first flaps",                  "flying: 0^3000v100",         2399, 2, 0, "flying", "cabin=1 flaps=3072"},
        {"not in a climb",               "flying: 0^3000v101",         2399, 2, 0, "flying",       "cabin=1"},
        {"above 2000 ft only the first", "flying: 0^3000",             2051, 2, 1, "flying",       "cabin=1"},
        {"a small one: second flaps",    "flying Light: 0^3000",       1999, 2, 1, "flying", "cabin=1 flaps=10240"},
        {"lower", "flying Light: 0^3v-600", 625, 2, 1, "flying lands", "cabin=0 throttle=4914 flaps=16383 gear=1"},
        {"climb after take-off", "flying: 0^1500v601", 1200, 5, 1, "flying", "cabin=0 throttle=16383 gear=0 flaps=0"},
        {"level low",                    "flying: 0^1500v600",         1200, 2, 1, "flying",       "cabin=0"},
        {"level on its approach",        "flying lands: 0^1500v600",   1200, 2, 1, "flying lands", "cabin=0"},
        {"to us", "flying: 0^1500v-250", 2050, 2, 1, "flying lands", "cabin=0 throttle=4914 flaps=16383 gear=1"},
        {"to others",                    "flying: 19000^1500v-600",    1200, 2, 1, "flying",       "cabin=0"},
        {"a helicopter", "flying Rotorcraft: 0^12000", 2500, 5, 4, "flying", "lights=1100001 throttle=16383"},
    };
    // clang-format on
    for (const auto& c : afresh(cases)) {
        HELICOPTERS.value = true;
        LiveAc& ac = addAt(c.scene, c.agl);
        ac.throttleLevel = c.throttle;
        ac.flapsLevel = c.flaps;
        gf_airConfig(ac);
        const std::string low = c.commands[0] == 'l' ? "" : "lights=1111111 ";
        EXPECT_EQ(low + c.commands, commands()) << c.what;
        EXPECT_EQ(c.after, stateOf(ac)) << c.what;
        gf_airConfig(ac);
        const std::string again = commands();
        EXPECT_TRUE(again.empty() || again.starts_with("cabin=")) << c.what << ", once: " << again;
    }
}

TEST_F(AirMotion, flaresInStagesAndTouchesDown)
{
    LiveAc& other = addAt("flying: 0^1030 90^1030", 30);
    fly(other, 10);
    EXPECT_EQ(0U, other.flareStage) << "without an approach there is no flare";
    LiveAc& ac = addAt("flying lands: 0^1041@140 300^1000@130", 41);
    ac.staticCg = 10;
    ac.pitch = -2.5 * kDeg;
    ac.altRate = -0.12;
    flareStep(ac);
    EXPECT_EQ(0U, ac.flareStage) << "a foot too high";
    const std::tuple<double, double, double> stages[] = {
        {40, -0.1, -601}, {30, -0.075, -450}, {20, -0.05, -300}, {13, -0.025, -150}};
    for (const auto& [agl, altRate, vs] : stages) {
        ac.agl = agl;
        ac.alt = 1000 + agl;
        flareStep(ac);
        flareStep(ac);
        EXPECT_EQ(std::tuple(altRate, vs), std::tuple(ac.altRate, ac.stream[0].vs)) << agl;
    }
    ac.agl = 0;
    flareStep(ac);
    EXPECT_TRUE(flareActive && ac.flareStage == 4);
    EXPECT_EQ("throttle=0", commands());
    fly(ac, 200);
    EXPECT_NEAR(-3.25 * kDeg, ac.pitch, 1e-9) << "half of the category's 400 ticks";
    fly(ac, 300);
    EXPECT_NEAR(-4 * kDeg, ac.pitch, 1e-9) << "the flare's pitch, and no further";
    ac.bank = 1 * kDeg;
    ac.staticPitch = 0.5 * kDeg;
    onTouchdown(ac);
    EXPECT_TRUE(ac.onGround && !flareActive);
    fly(ac, 175);
    EXPECT_NEAR(-1.75 * kDeg, ac.pitch, 1e-9) << "half of the category's 350 ticks";
    EXPECT_NEAR(0.5 * kDeg, ac.bank, 1e-9);
    fly(ac, 177);
    EXPECT_NEAR(0.5 * kDeg, ac.pitch, 1e-9);
    EXPECT_TRUE(ac.bank == 0 && !ac.touchdownBlend);
}

TEST_F(AirMotion, rotatesThenClimbsHarderSecondBySecond)
{
    LiveAc& ac = addAt("take_off runs: 0 500", 0);
    ac.alt = 1000;
    ac.altRate = 0.5;
    ac.phaseTicks = ac.rotateTicks;
    ac.pitchRate = ac.rotatePitch / ac.rotateTicks;
    fly(ac, ac.rotateTicks);
    EXPECT_FALSE(ac.onGround);
    EXPECT_DOUBLE_EQ(1000, ac.alt) << "only the nose has come up";
    EXPECT_NEAR(ac.rotatePitch, ac.pitch, std::abs(ac.rotatePitch) * 0.06);
    const double rotated = ac.pitch;
    fly(ac, 100);
    EXPECT_NEAR((ac.climbPitch - ac.rotatePitch) / ac.initialClimbTicks * 100, ac.pitch - rotated, 1e-9);
    fly(ac, 199);
    EXPECT_NEAR(1000 + 0.5 * (99 * 0.1 + 100 * 0.2 + 100 * 0.5), ac.alt, 1e-9);
    EXPECT_EQ("", commands());
    fly(ac, 1);
    EXPECT_EQ("gear=0", commands()) << "three seconds after the nose came up";
    for (ac.agl = 799; ac.agl <= 800; ++ac.agl) {
        fly(ac, 300);
        EXPECT_EQ(ac.agl < 800 ? StState::TakeOff : StState::Flying, ac.st);
    }
    EXPECT_EQ("throttle=11468", commands());
    EXPECT_LE(ac.pitch, ac.climbPitch);
}

}  // namespace vlt
