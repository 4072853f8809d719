// The replay itself: the same twice, and hostile recordings, after which the engine still stands.
#include "core/base/text.h"
#include "standin/day_airport.h"
#include "standin/long_run.h"
#include "standin/replay_files.h"
#include "support/road.h"
#include "traffic/geodesy.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <functional>
#include <set>
#include <sstream>

namespace vlt {

static std::string lf_textOf(const std::filesystem::path& path)
{
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}

// A flight along a parallel, `north` metres north of the airport, between two places east of it.
static std::vector<PathState> lf_flyBy(double from, double to, double north, double feet = 20000)
{
    return gf_journey({{{gf_at(from, north, 420, feet), gf_at(to, north, 420, feet)}, false, 0, 0}});
}

static void lf_shiftStamp(std::string& line, double seconds)
{
    const size_t at = line.find("1717");
    const size_t end = line.find(',', at);
    line.replace(at, end - at, format("{:.2f}", std::stod(line.substr(at, end - at)) + seconds));
}

class Replays : public ::testing::Test
{
public:
    // An aircraft that flies by, one that parks, and one that leaves its gate.
    void fill(double period = 4)
    {
        stage.useGates();
        stage.add({100001, "OVER1", "A320", "", "", ""}, lf_flyBy(-40000, 40000, 9000), period);
        stage.add({100002, "PARK2", "A320", "", "", ""},
                  gf_journey({{{gf_at(60, -2, 0), gf_at(60, -1, 0)}, false, 500, 0}}), period);
        stage.add({100003, "PUSH3", "A320", "", "", ""},
                  gf_journey({{{gf_at(0, 0, 0), gf_at(0, -80, 3), gf_at(60, -80, 0)}, true, 90, 0},
                              {{gf_at(60, -80, 0), gf_at(900, -80, 12)}, false, 40, 200}}),
                  period);
    }
    // Plays and expects that nothing was that must never be.
    ReplayResult play(double seconds)
    {
        ReplayResult result = stage.play(seconds);
        EXPECT_EQ(0, result.findings.invariantBreakCount)
            << (result.findings.invariantBreaks.empty() ? "" : result.findings.invariantBreaks[0].what);
        EXPECT_EQ(0U, result.counts.complaints)
            << (result.complaints.empty() ? "" : result.complaints[0].reason);
        return result;
    }
    static int64_t driven(const ReplayResult& result)
    {
        return std::ranges::count_if(result.findings.lives,
                                     [](const ReplayLife& life) { return life.activeTick >= 0; });
    }

    RoadStage stage;
    TempFolder out;
};

TEST_F(Replays, theSameInputGivesTheSameBytes)
{
    DayOptions day;
    day.world = stage.options.world;
    const FeedSource feed(day);
    stage.options.user.lat = kDayAirport.lat + 0.02;
    stage.options.seconds = 200;
    const char* names[] = {"tracks.csv", "events.csv", "aircraft.csv", "report.json"};
    for (const char* folder : {"a", "b"}) {
        ReplayRecorder recorder(out.path() / folder, 10, true);
        gf_writeReplay(gf_replay(feed, stage.options, &recorder), out.path() / folder);
    }
    for (const char* name : names) {
        const std::string first = lf_textOf(out.path() / "a" / name);
        EXPECT_GT(first.size(), 1000U) << name;
        EXPECT_TRUE(first == lf_textOf(out.path() / "b" / name)) << name;
    }
}

TEST_F(Replays, aLongOneForgetsWhatIsOverAndTellsWhatIsLeft)
{
    std::string lines;
    for (int i = 0; i < 60; ++i) {
        const double north = i * 0.0039 - 0.1;  // degrees
        lines += gf_roadLine(100001, "OVER1", stage.options.user.lat + north, stage.options.user.lon + 0.1,
                             i * 3.0) +
                 "\n";
    }
    FeedSource feed(out.write("fly-by.txt", lines));
    feed.repeat(0, 1200, 300);
    stage.options.seconds = 4800;
    stage.options.forgets = true;
    LongRunRecorder recorder(out.path());
    const ReplayResult result = gf_replay(feed, stage.options, &recorder);
    EXPECT_EQ(1U, result.lives.size()) << "those of the first hour are forgotten";
    EXPECT_EQ(1U, result.findings.lives.size());
    ASSERT_EQ(80U, recorder.minutes().size());
    const LongRunMinute& last = recorder.minutes().back();
    EXPECT_EQ(std::tuple(80, 4U, 4U, 0U), std::tuple(last.minute, last.created, last.removed, last.alive));
    EXPECT_GT(last.use.memoryMb, 5);
}

TEST(LongRun, itsFaultsAreLostObjectsGrowthAndWhatIsLeftOver)
{
    const auto minute = [](int32_t n, uint64_t alive, double mb) {
        return LongRunMinute{n, 9, 4, alive, {mb, 1, 7}};
    };
    const ProcessUse before{10, 1, 7};
    const struct {
        const char* what;
        std::vector<LongRunMinute> minutes;
        ProcessUse after;
        std::vector<std::string> expected;
    } cases[] = {
        {"all well, and growth within the first hour",
         {minute(1, 5, 10), minute(60, 5, 30), minute(90, 5, 90), minute(120, 5, 35)},
         {35, 1, 7},
         {}},
        {"an object too many",
         {minute(1, 6, 10)},
         before,
         {"minute 1: 9 objects created, 4 removed, but 6 alive"}},
        {"it grows",
         {minute(60, 5, 30), minute(120, 5, 35.1)},
         before,
         {"hour 2: memory has grown by 5.1 MB since the first"}},
        {"left over", {}, {10, 3, 8}, {"2 threads are left over", "1 descriptors are left over"}},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.expected, gf_longRunFaults(c.minutes, before, c.after)) << c.what;
    }
}

TEST_F(Replays, flightPlansLieInTheirFolderAsLongAsTheirAircraftFlies)
{
    stage.options.planFolder = out.path() / "plans";
    const auto road = lf_flyBy(-9000, 30000, 3000);
    stage.add({100001, "JET1", "A320", "", "LHR", "A<M&S\x01"}, road);
    stage.add({100002, "PLAN2", "C172", "", "LHR", "EIN"}, lf_flyBy(-9000, 0, 3000));
    stage.add({100003, "NONE3", "A320", "", "", "AMS"}, road);
    std::set<std::string> plans;
    int32_t left = 0;
    stage.onLook = [&](const RoadLook&) {
        left = 0;
        for (const auto& file : std::filesystem::directory_iterator(stage.options.planFolder)) {
            plans.insert(lf_textOf(file));
            ++left;
        }
    };
    stage.watched = 100001;
    const ReplayResult result = play(300);
    std::set<std::string> expected;
    for (const auto& [rules, destination] : {std::pair("IFR", "AMS"), std::pair("VFR", "EIN")}) {
        expected.insert(
            format("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                   "<SimBase.Document Type=\"AceXML\" version=\"4,3\">\"\n<FlightPlan.FlightPlan>\n"
                   "<FPType>{}</FPType>\n<DepartureID>LHR</DepartureID>\n"
                   "<DestinationID>{}</DestinationID>\n</FlightPlan.FlightPlan>\n</SimBase.Document>\n",
                   rules, destination));
    }
    EXPECT_EQ(expected, plans);
    EXPECT_EQ(1, left) << "when the first reports no more, the second's is gone";
    EXPECT_EQ(3, driven(result));
    EXPECT_FALSE(std::filesystem::exists(stage.options.planFolder));
}

TEST_F(Replays, parkedAircraftDontDanceForTwoHours)
{
    stage.useGates();
    // Reports every ten seconds, up to 15 m off to all sides.
    std::vector<PathState> noise;
    for (int i = 0; i < 720; ++i) {
        PathState state;
        state.time = i * 10.0;
        const double angle = i * 2.4;
        const double off = (i * 37 % 150) / 10.0;
        state.east = 60 + off * std::sin(angle);
        state.north = off * std::cos(angle);
        noise.push_back(state);
    }
    stage.add({}, noise, 10);
    play(7200);
    // That none moves is a law of every replay; here that they stay parked.
    EXPECT_GT(std::ranges::count(stage.looks, FsState::Active, &RoadLook::fs), 60'000);
    EXPECT_EQ("parked", gf_phases(stage.looks));
}

TEST_F(Replays, hostileRecordings)
{
    const struct {
        const char* what;
        std::function<void(Replays&)> fill;
        int64_t leastDriven;
    } cases[] = {
        {"in order", [](Replays& t) { t.fill(); }, 3},
        {"every report three times",
         [](Replays& t) {
             for (int i = 0; i < 3; ++i) {
                 t.fill();
             }
         },
         3},
        {"reports too rare to follow", [](Replays& t) { t.fill(60); }, 0},
        {"a minute of silence",
         [](Replays& t) {
             t.fill();
             t.stage.editLines([](std::string& line) {
                 const int second = std::stoi(line.substr(line.find("1717665") + 7));
                 if (second > 700 && second < 760) {
                     line.clear();
                 }
             });
         },
         3},
        {"two aircraft with one call sign",
         [](Replays& t) {
             t.stage.add({100001, "TWIN1", "A320", "", "", ""}, lf_flyBy(-40000, 40000, 9000));
             t.stage.add({100002, "TWIN1", "B738", "", "", ""}, lf_flyBy(30000, -20000, -9000, 9000));
         },
         1},
        {"one aircraft under two addresses",
         [](Replays& t) {
             t.stage.add({100001, "ONE1", "A320", "G-EUUA", "", ""}, lf_flyBy(-40000, 40000, 9000));
             t.stage.add({100002, "ONE2", "A320", "G-EUUA", "", ""}, lf_flyBy(-40000, 40000, 9000), 4, 2);
         },
         1},
        {"an aircraft that appears in two places in turn",
         [](Replays& t) {
             t.stage.add({100001, "JUMP1", "A320", "", "", ""}, lf_flyBy(-40000, 40000, 9000), 8);
             t.stage.add({100001, "JUMP1", "A320", "", "", ""}, lf_flyBy(40000, -40000, -9000, 9000), 8, 4);
         },
         1},
        {"time stamps out of order and jumping",
         [](Replays& t) {
             t.fill();
             // The lines come in their order, but say other times.
             t.stage.editLines([n = 0](std::string& line) mutable {
                 constexpr double kShifts[] = {0, -7, 0, 180, -600};
                 lf_shiftStamp(line, kShifts[++n % 5]);
             });
         },
         2},
        {"a clock that is two hours off for a minute",
         [](Replays& t) {
             t.fill();
             t.stage.editLines([](std::string& line) {
                 const int second = std::stoi(line.substr(line.find("1717665") + 7));
                 lf_shiftStamp(line, second > 700 && second < 760 ? 7200 : 0);
             });
         },
         3},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        stage.clear();
        stage.options.airportFile.clear();
        c.fill(*this);
        EXPECT_GE(driven(play(400)), c.leastDriven);
    }
}

TEST_F(Replays, atThePoleAndAcrossTheDateLine)
{
    const struct {
        const char* what;
        double lat, lon, dLat, dLon;
    } cases[] = {{"the date line eastwards", -17, 179.6, 0, 0.0006},
                 {"the date line westwards", 52, -179.7, 0, -0.0009},
                 {"close by the pole", 89.7, 10, 0.0012, 0}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.what);
        stage.clear();
        stage.options.airportFile.clear();
        stage.options.user.lat = c.lat;
        stage.options.user.lon = c.lon;
        for (int i = 0; i < 200; ++i) {
            stage.add({i * 3.0, gf_roadLine(100001, "EDGE1", c.lat + c.dLat * i * 3, c.lon + c.dLon * i * 3,
                                            i * 3.0)});
        }
        double worst = 0;
        std::optional<LatLon> before;
        stage.watched = 100001;
        stage.onLook = [&](const RoadLook& look) {
            const LatLon at{look.lat, look.lon};
            if (look.fs == FsState::Active && before) {
                worst = std::max(worst, distNm(*before, at) * kMetresPerNm);
            }
            before = look.fs == FsState::Active ? std::optional(at) : std::nullopt;
        };
        EXPECT_EQ(1, driven(play(500)));
        // 280 kt are 14 m in a tenth of a second.
        EXPECT_GT(worst, 5);
        EXPECT_LT(worst, 60);
    }
}

TEST(PressureAltitude, isTheFifthFieldShifted)
{
    EXPECT_EQ("RTTFC,1,2,3,1900,0,0", gf_withPressureAltitude("RTTFC,1,2,3,1081,0,0", 983));
    EXPECT_EQ("RTTFC,1,2,3,262,0,0", gf_withPressureAltitude("RTTFC,1,2,3,1081,0,0", 1043));
    for (const char* untouched : {"RTTFC,1,2,3,0,0,1", "RTTFC,1", ""}) {
        EXPECT_EQ(untouched, gf_withPressureAltitude(untouched, 983));
    }
}

}  // namespace vlt
