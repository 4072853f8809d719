#include "standin/summary.h"

#include "standin/motion_breaks.h"
#include "standin/picture.h"
#include "test_client.h"
#include "traffic/geodesy.h"

#include <cmath>
#include <functional>
#include <gtest/gtest.h>
#include <nlohmann/json.hpp>
#include <numbers>
#include <pugixml.hpp>

namespace vlt {

TEST(MotionBreaks, findsWhatNoAircraftDoesAndNothingElse)
{
    constexpr double kNorth = 168.78 / 6076.115 / 60;      // degrees of latitude in a second at 100 kt
    constexpr double kCircle = kNorth / (9 * kRadPerDeg);  // radius of a turn at 9 degrees a second
    const double shrink = std::cos(47.6 * kRadPerDeg);
    const auto onGround = [](TrackPoint& p, double part, int s) {
        p.onGround = true;
        p.agl = 10;
        p.lat = 47.6 + s * kNorth * part;
        p.tas = 100 * part;
        p.heading = std::numbers::pi;
    };
    // Changes a point of a flight straight north at 100 kt, 3000 ft, by its second.
    using Change = std::function<void(TrackPoint&, int)>;
    const struct {
        const char* what;
        int seconds;
        Change change;
        std::string kinds;  // of all breaks, in their order
    } cases[] = {
        // clang-format off
        {"straight on",          60, [](auto&, int) {}, ""},
        {"a mile too far",       60, [](auto& p, int s) { p.lat += s >= 30 ? 1 / 60.0 : 0; }, "jump "},
        {"in the first second",  60, [](auto& p, int s) { p.lat -= s == 0 ? 1 / 60.0 : 0; }, ""},
        {"nose to the side",     60, [](auto& p, int s) { p.heading = s / 2 == 15 ? 0.87 : 0; }, "turn sideways turn "},
        {"twice the speed told",  3, [](auto& p, int s) { p.lat += s * kNorth; }, "jump jump "},
        {"a drop of 500 ft",     60, [](auto& p, int s) { p.altitude -= s == 30 ? 500 : 0; }, "height height "},
        {"below the ground",     60, [](auto& p, int s) { p.agl = s == 30 ? -3 : 2000; }, "below ground "},
        {"upside down",          60, [](auto& p, int s) { p.bank = s == 30 ? 1.75 : 0; }, "attitude "},
        {"9 degrees a second",   10, [&](auto& p, int s) {
             p.heading = s * 9 * kRadPerDeg;
             p.lat = 47.6 + kCircle * std::sin(p.heading);
             p.lon = 11.5 + kCircle * (1 - std::cos(p.heading)) / shrink;
         }, ""},
        {"pushed back at 5 kt",  60, [&](auto& p, int s) { onGround(p, 0.05, s); }, ""},
        {"backwards at 100 kt",   3, [&](auto& p, int s) { onGround(p, 1, s); }, "backward backward "},
        // clang-format on
    };
    for (const auto& c : cases) {
        ObjectLife life;
        life.category = "Large";
        life.firstPositionAt = 0;
        for (int second = 0; second <= c.seconds; ++second) {
            life.track.push_back({.time = second * 1.0,
                                  .lat = 47.6 + second * kNorth,
                                  .lon = 11.5,
                                  .altitude = 3000,
                                  .tas = 100,
                                  .agl = 2000});
            c.change(life.track.back(), second);
        }
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
        const uint32_t id = client.create("House <A320>", "DLH<1>\xff", {47.6, 11.6, 6000, 0, 0, 90, 0, 0});
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
    const auto& object = summary["objects"].at(0);
    EXPECT_EQ(100, object["positions"]);
    // 99 steps of 0.0001 degrees of longitude, 0.006 nm times the cosine of the latitude; the first
    // sample comes within a second of the first step.
    EXPECT_NEAR(99 * 0.006 * std::cos(47.6 * kRadPerDeg), object["track"]["nm"].get<double>(), 0.05);
    const std::string svg = gf_trafficSvg({.title = "A & B <C>",
                                           .subtitle = "",
                                           .user = {47.6, 11.5},
                                           .atDayAirport = true,
                                           .lives = simulator.lives()});
    pugi::xml_document document;
    ASSERT_TRUE(document.load_string(svg.c_str()));
    EXPECT_FALSE(document.select_nodes("//*[local-name()='text' and text()='DLH<1>?']").empty());
    EXPECT_TRUE(document.load_string(gf_trafficSvg({}).c_str())) << "nobody there";
}

}  // namespace vlt
