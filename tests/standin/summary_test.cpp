#include "standin/summary.h"

#include "standin/installed_titles.h"
#include "standin/motion_breaks.h"
#include "standin/picture.h"
#include "standin/picture_motion.h"
#include "support/temp_folder.h"
#include "test_client.h"
#include "traffic/geodesy.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <pugixml.hpp>

namespace vlt {

constexpr double kFeetPerSecondOf100Knots = 168.78;

// A minute straight north at 100 kt, 3000 ft.
static ObjectLife lf_northbound()
{
    ObjectLife life;
    life.category = "Large";
    life.firstPositionAt = 0;
    for (int second = 0; second <= 60; ++second) {
        TrackPoint point;
        point.time = second;
        point.lon = 11.5;
        point.lat = 47.6 + second * kFeetPerSecondOf100Knots / 6076.115 / 60;
        point.altitude = 3000;
        point.agl = 2000;
        point.tas = 100;
        life.track.push_back(point);
    }
    return life;
}

// The same on the ground, the nose to the south, at `part` of the speed.
static void lf_goBackwards(ObjectLife& life, double part)
{
    for (TrackPoint& point : life.track) {
        point.onGround = true;
        point.agl = 10;
        point.lat = 47.6 + (point.lat - 47.6) * part;
        point.heading = std::acos(-1);
        point.tas *= part;
    }
}

TEST(MotionBreaks, findsWhatNoAircraftDoesAndNothingElse)
{
    const double deg = std::acos(-1) / 180;
    const struct {
        const char* what;
        std::function<void(ObjectLife&)> change;
        std::string kinds;  // of all breaks, in their order
    } cases[] = {
        {"straight on", [](ObjectLife&) {}, ""},
        {"a jump of a mile ahead",
         [](ObjectLife& life) {
             for (size_t i = 30; i < life.track.size(); ++i) {
                 life.track[i].lat += 1.0 / 60;
             }
         },
         "jump "},
        {"a jump within the first second", [](ObjectLife& life) { life.track[0].lat -= 1.0 / 60; }, ""},
        {"nose to the side",
         [&](ObjectLife& life) { life.track[30].heading = life.track[31].heading = 50 * deg; },
         "turn sideways turn "},
        {"twice the speed told",
         [](ObjectLife& life) {
             for (TrackPoint& point : life.track) {
                 point.lat = 47.6 + (point.lat - 47.6) * 2;
             }
             life.track.resize(4);
         },
         "jump jump "},
        {"a drop of 500 ft", [](ObjectLife& life) { life.track[30].altitude -= 500; }, "height height "},
        {"below the ground", [](ObjectLife& life) { life.track[30].agl = -3; }, "below ground "},
        {"upside down", [&](ObjectLife& life) { life.track[30].bank = 100 * deg; }, "attitude "},
        {"a turn at 9 degrees a second",
         [&](ObjectLife& life) {
             life.track.resize(11);
             // Chords of a circle: the way of each second points to the mean of its two headings.
             for (int i = 1; i < 11; ++i) {
                 TrackPoint& point = life.track[i];
                 point.heading = gf_normalAngle(i * 9 * deg);
                 const LatLon from{life.track[i - 1].lat, life.track[i - 1].lon};
                 const LatLon to = destination(from, (i - 0.5) * 9 * deg, kFeetPerSecondOf100Knots);
                 point.lat = to.lat;
                 point.lon = to.lon;
             }
         },
         ""},
        {"pushed back at 5 kt", [](ObjectLife& life) { lf_goBackwards(life, 0.05); }, ""},
        {"backwards at 100 kt",
         [](ObjectLife& life) {
             lf_goBackwards(life, 1);
             life.track.resize(4);
         },
         "backward backward "},
    };
    for (const auto& c : cases) {
        ObjectLife life = lf_northbound();
        c.change(life);
        std::string kinds;
        for (const MotionBreak& one : gf_motionBreaks(life)) {
            kinds += one.kind + " ";
        }
        EXPECT_EQ(c.kinds, kinds) << c.what;
    }
}

TEST(Summary, tellsAndDrawsAFlightWhateverItsNames)
{
    SimulatorOptions options;
    options.anyTitle = true;
    VirtualSimulator simulator(options);
    {
        TestClient client(simulator);
        client.define();
        const uint32_t id = client.create("House <A320>", "DLH<1>", {47.6, 11.6, 6000, 0, 0, 90, 0, 0});
        client.freeze(id);
        for (int i = 0; i < 100; ++i) {
            client.setPosition(id, {47.6, 11.6 + i * 1e-4, 0, 0, 1.57, 6000, 0, 150});
            client.wait(0.1);
        }
        SimConnect_AIRemoveObject(client.handle, 4711, 105);
    }
    const auto summary = nlohmann::json::parse(gf_summary(simulator, {"world", "feed", 7, 3, 0, ""}));
    EXPECT_EQ(100, summary["packets"]["SetDataOnSimObject"]);
    EXPECT_EQ(0, summary["alive"]) << "the client is gone and its object with it";
    ASSERT_EQ(1, summary["complaintList"].size());
    EXPECT_EQ("AIRemoveObject", summary["complaintList"][0]["function"]);
    const auto& object = summary["objects"][0];
    EXPECT_EQ(100, object["positions"]);
    // 99 steps of 0.0001 degrees of longitude, 0.006 nm times the cosine of the latitude; the first
    // sample comes within a second of the first step.
    EXPECT_NEAR(99 * 0.006 * std::cos(47.6 * std::acos(-1) / 180), object["track"]["nm"].get<double>(), 0.05);

    Chart chart;
    chart.title = "A & B <C>";
    chart.atDayAirport = true;
    chart.user = {47.6, 11.5};
    chart.lives = simulator.lives();
    ASSERT_EQ(1u, chart.lives.size());
    chart.lives[0].tailNumber = "DLH<1>\xff";
    pugi::xml_document document;
    const std::string svg = gf_trafficSvg(chart);
    ASSERT_TRUE(document.load_string(svg.c_str()));
    EXPECT_EQ(std::string::npos, svg.find("nan"));
    EXPECT_FALSE(document.select_nodes("//*[local-name()='text' and text()='DLH<1>?']").empty());
    EXPECT_FALSE(document.select_nodes("//*[local-name()='polyline']").empty());
    EXPECT_TRUE(document.load_string(gf_trafficSvg({}).c_str())) << "nobody there";
}

// An aircraft that lands, parks, is pushed back and takes off again, half a minute for each.
static MotionTrack lf_turnaround()
{
    const StState phases[] = {StState::Flying,      StState::Taxi,       StState::Parking, StState::Parked,
                              StState::PushingBack, StState::PushedBack, StState::Taxi,    StState::TakeOff};
    MotionTrack track{"A&B <1>", 36, {}, {{100, {47.6, 11.5}}}};
    for (int second = 0; second < 240; ++second) {
        const StState st = phases[second / 30];
        const bool airborne = st == StState::Flying || st == StState::TakeOff;
        track.looks.push_back({static_cast<double>(second),
                               {47.6, 11.5 + second * 1e-5},
                               airborne ? 2000.0 : 1608.0,
                               80,
                               0,
                               second < 60 || second > 200 ? 130.0 : 5.0,
                               st,
                               !airborne});
    }
    return track;
}

TEST(MotionPictures, drawTheFirstWhoDidIt)
{
    MotionTrack later = lf_turnaround();
    later.name = "LATER";
    for (MotionLook& look : later.looks) {
        look.time += 20;
    }
    const std::vector<MotionPicture> pictures = gf_motionPictures({later, lf_turnaround()});
    ASSERT_EQ(5U, pictures.size());
    for (const MotionPicture& picture : pictures) {
        pugi::xml_document document;
        EXPECT_TRUE(document.load_string(picture.svg.c_str())) << picture.name;
        EXPECT_EQ(std::string::npos, picture.svg.find("nan")) << picture.name;
        EXPECT_NE(std::string::npos, picture.svg.find(">A&amp;B &lt;1&gt;")) << picture.name;
    }
    EXPECT_NE(std::string::npos, pictures[1].svg.find("touchdown at 30.00 s"));
    EXPECT_NE(std::string::npos, pictures[3].svg.find("rotation at 210.00 s"));
    later.looks.resize(100);
    EXPECT_THROW(gf_motionPictures({later}), std::runtime_error) << "nobody is pushed back";
}

TEST(InstalledTitles, readsRowsByTheirHeaderAndLeavesBadOnesOut)
{
    const TempFolder folder;
    const auto titles =
        gf_readTitles(folder.write("titles.csv", "title,cg_ft,model,category,static_pitch_deg\r\n"
                                                 "\"House, \"\"new\"\" A320\",9.5,A320,Large,-0.5\r\n"
                                                 "No height,,A320,Large,0\n"
                                                 ",9,A320,Large,0\n"
                                                 "Cut off,9\n"
                                                 "Plain,4.2,C172,Light,1\n"));
    ASSERT_EQ(2u, titles.size());
    EXPECT_EQ("House, \"new\" A320", titles[0].title);
    EXPECT_EQ("A320", titles[0].model);
    EXPECT_DOUBLE_EQ(9.5, titles[0].cgFt);
    EXPECT_NEAR(-0.5 * std::acos(-1) / 180, titles[0].staticPitch, 1e-12);
    EXPECT_EQ("Plain", titles[1].title);
    EXPECT_TRUE(gf_readTitles("no such file").empty());
}

}  // namespace vlt
