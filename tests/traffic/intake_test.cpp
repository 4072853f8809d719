#include "traffic/intake.h"

#include "traffic/stage.h"

#include <tuple>

namespace vlt {

class Intake : public Stage
{
protected:
    static FeedRecord record(double timestamp)
    {
        FeedRecord r;
        r.hexid = 20001;
        r.model = "A319";
        r.callsign = "BAW3AK";
        r.timestamp = timestamp;
        r.sample = gf_airSample(tick + kReplayDelayTicks);
        return r;
    }
    static void take(const FeedRecord& r)
    {
        feedQueue.push_back(r);
        EXPECT_TRUE(feedIntake());
    }
};

TEST_F(Intake, aNewAircraftTakesLateNamesAndNoSecondAddress)
{
    FeedRecord r = record(1000);
    take(r);
    r.timestamp = 1010;
    r.sample = gf_eastOf(r.sample, 1);
    std::tie(r.callsign, r.regcode, r.origin, r.destination) = std::tuple("BAW4", "G-ABCD", "EGLL", "EGKK");
    take(r);
    r.hexid = 20002;
    take(r);
    ASSERT_EQ(1U, liveAcs.size());
    const LiveAc& known = liveAcs.front();
    EXPECT_EQ("BAW4 G-ABCD EGLL EGKK",
              format("{} {} {} {}", known.callsign, known.regcode, known.origin, known.destination));
    EXPECT_EQ(2U, known.stream.size());
    EXPECT_NEAR(0.15, std::abs(-known.rotatePitch * kDegPerRad - 6.0), 1e-9) << "2.5 percent more or less";
    r.model = "B738";
    take(r);
    ASSERT_EQ(2U, liveAcs.size()) << "another type is another aircraft";
    EXPECT_EQ("BAW4", liveAcs[1].coupledCs1);
}

TEST_F(Intake, onlyWantedAndKnownTypesComeIn)
{
    // Light ones and helicopters may be unwanted; within 120 ft of the airport nobody comes in.
    // clang-format off
    const struct { const char *model, *regcode; double altitude; bool wanted; const char* category; } cases[] = {
        {"A319", "",       5000, false, "Large"}, {"ZZZ9", "", 5000, false, ""},
        {"ZZZ9", "G-EUUU", 5000, false, "Large"}, {"B77W", "", 5000, false, "Heavy"},
        {"C172", "",       5000, false, ""},      {"C172", "", 5000, true,  "Light"},
        {"R44",  "",       5000, false, ""},      {"F16",  "", 5000, true,  "HighPerf"},
        {"A319", "",       1620, true,  ""},      {"A319", "", 1621, true,  "Large"},
        {"A319", "",       1379, true,  "Large"}, {"A319", "", 0,    true,  "Large"},
    };
    // clang-format on
    for (const auto& c : afresh(cases)) {
        parkAirport = ParkAirportPlace{47, 8, 1500};
        LIGHT_AIRCRAFT.value = HELICOPTERS.value = c.wanted;
        FeedRecord r = record(1000);
        r.model = c.model;
        r.regcode = c.regcode;
        r.sample.altitude = c.altitude;
        take(r);
        EXPECT_EQ(c.category, liveAcs.empty() ? "" : gf_forCategory(kCategoryNames, liveAcs.front().category))
            << c.model << c.altitude;
    }
}

TEST_F(Intake, dropsWhatTellsNothingNew)
{
    // On the ground 20 m, in the air 450 m, make a report; 1 kt is 0.5144 m a second.
    // clang-format off
    const struct { const char* what; double dt, lastSpeed, speed, turnDeg; bool airborne, kept, liftsOff = false; } cases[] = {
        {"same time",              0,    300, 300, 0,      true,  false},
        {"a second later",         1.0,  300, 300, 90,     true,  false},
        {"in a turn",              1.1,  300, 300, 1.1,    true,  true},
        {"straight, 440 m",        2.85, 300, 300, 0.9,    true,  false},
        {"straight, 470 m",        3.05, 300, 300, 0.9,    true,  true},
        {"the first of the air",   1.1,  150, 150, 0,      true,  true,  true},
        {"slow in the air",        1.5,  120, 120, 0,      true,  true},
        {"track through north",    2,    300, 300, -359.5, true,  false},
        {"speed grows tenfold",    20,   10,  100, 0,      true,  false},
        {"speed falls to a tenth", 20,   100, 10,  0,      true,  false},
        {"not quite",              20,   100, 11,  0,      true,  true},
        {"from standing to 80",    20,   5,   80,  0,      true,  false},
        {"from standing to 79",    20,   5,   79,  0,      true,  true},
        {"taxiing 19 m",           3.7,  10,  10,  2,      false, false},
        {"taxiing 21 m",           4.1,  10,  10,  2,      false, true},
        {"in a bend",              1.1,  10,  10,  2.1,    false, true},
        {"fast on the ground",     1.1,  31,  31,  0,      false, true},
        {"standing 15 s",          15,   1,   0,   0,      false, false},
        {"standing longer",        15.1, 1,   0,   0,      false, true},
    };
    // clang-format on
    for (const auto& c : afresh(cases)) {
        LiveAc& ac = gf_addFlying(20001, "BAW3AK");
        ac.onGround = !c.airborne;
        ac.st = c.airborne ? StState::Flying : StState::Taxi;
        ac.feedTime = 1000;
        FeedRecord r = record(1000 + c.dt);
        for (PosSample* s : {&ac.stream.back(), &r.sample}) {
            s->airborne = c.airborne && (s == &r.sample || !c.liftsOff);
            s->speed = s == &r.sample ? c.speed : c.lastSpeed;
        }
        r.sample = gf_eastOf(r.sample, 2);
        r.sample.track += c.turnDeg;
        take(r);
        EXPECT_EQ(c.kept ? 3U : 2U, liveAcs.front().stream.size()) << c.what;
        EXPECT_EQ(c.kept ? 1000 + c.dt : 1000, liveAcs.front().feedTime) << c.what;
    }
}

}  // namespace vlt
