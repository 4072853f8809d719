// Airports in scenery files: what the stand-in's writer puts in must come out, and broken files must do no
// harm.
#include "scenery/bgl.h"

#include "core/base/text.h"
#include "standin/bgl_writer.h"
#include "support/temp_folder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <random>
#include <sstream>

namespace vlt {

static BglFile lf_decode(const std::string& bytes)
{
    std::istringstream in(bytes);
    return gf_decodeBgl(in, "x.bgl");
}

static BglParkingPlan lf_parking(const std::string& id, double radiusM = 20, int type = 8)
{
    return {id, type, radiusM, 90, 47.5, 11.25, {}};
}

static BglAirportPlan lf_airport(std::vector<BglParkingPlan> parkings, bool newer = false)
{
    return {"EHAM", 100, newer, {"Sch\xF6nefeld"}, {}, std::move(parkings)};
}

static std::string lf_stands(const Apf& apf)
{
    std::string text;
    for (const ParkPos& stand : apf.stands) {
        text += format("{} {:.1F}{}{} ", stand.id, stand.radius * kMetresPerNm, stand.ramp ? "r" : "",
                       stand.cargo ? "c" : "");
    }
    return text;
}

TEST(Bgl, whatAnAuthorWritesComesOut)
{
    std::mt19937 random(1);
    const auto between = [&random](double a, double b) {
        return std::uniform_real_distribution(a, b)(random);
    };
    const char* const names[] = {"", "r", "p", "np", "ep", "sep", "sp", "swp", "wp", "nwp", "g", "A", "Z"};
    for (int round = 0; round < 40; ++round) {
        BglAirportPlan plan{"X1AZ", between(0, 3000), round % 2 == 1, {"Name"}, {}, {}};
        for (int i = 0; i < 30; ++i) {
            plan.parkings.push_back({format("{}{}", names[i % 13], i * 130), i % 11 + 1, between(1.1, 199),
                                     between(1, 359), between(-89, 89), between(-179, 179),
                                     std::vector<std::string>(i % 4, "KLM")});
        }
        plan.helipads.push_back({between(3, 90), 0, 1, 2});
        const BglFile file = lf_decode(gf_bglFile({lf_airport({}), plan}));
        ASSERT_EQ(2U, file.airports.size());
        const Apf& apf = file.airports[1].apf;
        EXPECT_EQ("X1AZ Name", apf.code + " " + apf.name);
        EXPECT_NEAR(plan.elevationM / 0.3048, apf.altitude, 0.51);
        ASSERT_EQ(31U, apf.stands.size()) << round;
        EXPECT_TRUE(apf.stands[0].heli);
        EXPECT_NEAR(2 * std::numbers::pi, apf.stands[0].heading, 1e-9);
        for (size_t i = 0; i < 30; ++i) {
            const ParkPos& stand = apf.stands[i + 1];
            const BglParkingPlan& told = plan.parkings[i];
            EXPECT_EQ(told.id, stand.id);
            EXPECT_NEAR(told.lat, stand.lat, 1e-6);
            EXPECT_NEAR(told.lon, stand.lon, 1e-6);
            EXPECT_NEAR(told.headingDeg, stand.heading * 180 / std::numbers::pi, 1e-4);
            EXPECT_NEAR(told.radiusM, stand.radius * kMetresPerNm, 1e-4);
            EXPECT_EQ(told.type <= 7, stand.ramp);
            EXPECT_EQ(told.type == 5, stand.cargo);
        }
    }
}

TEST(Bgl, whatIsNoStandIsSkippedWithItsReason)
{
    BglParkingPlan nowhere = lf_parking("g6");
    nowhere.lat = nowhere.lon = 0.0005;
    BglAirportPlan plan = lf_airport({lf_parking("g1", 1.0), lf_parking("g2", 1.1), lf_parking("g3", 200),
                                      lf_parking("g4", 20, 12), lf_parking("g5", 20, 0), nowhere});
    plan.helipads = {{20, 1, 5, 6}, {20, 1, 5, 6}, {1e-40, 1, 5, 7}};
    plan.names = {"one", "two", "one"};
    const BglFile file = lf_decode(gf_bglFile({plan, {"XY", 0, false, {}, {}, {lf_parking("1")}}}));
    ASSERT_EQ(1U, file.airports.size()) << "a code of two letters is none";
    EXPECT_EQ("", file.airports[0].apf.name);
    EXPECT_EQ("helipad1 10.0 g2 1.1 ", lf_stands(file.airports[0].apf));
    std::vector<std::string> skipped;
    for (const SkippedStand& s : file.airports[0].skipped) {
        skipped.push_back(s.id);
    }
    EXPECT_EQ((std::vector<std::string>{"helipad", "helipad", "g1", "g3", "g4", "g5", "g6"}), skipped);
    EXPECT_THAT(file.log, testing::Contains("skipped position with radius 1.0 meters, in x.bgl"));
    EXPECT_EQ(328, file.airports[0].apf.altitude);
    plan.elevationM = -10;
    EXPECT_EQ(0, lf_decode(gf_bglFile({plan})).airports[0].apf.altitude);
}

TEST(Bgl, ofDoubledIdsTheLargestKeepsThePlainOne)
{
    std::vector<BglParkingPlan> parkings;
    for (const double radius : {10, 30, 20, 40, 15, 25, 35, 50}) {
        parkings.push_back(lf_parking("g12", radius));
    }
    parkings.push_back(lf_parking("g1", 5));
    const BglFile file = lf_decode(gf_bglFile({lf_airport(parkings)}));
    EXPECT_EQ("g12f 10.0 g12b 30.0 g12d 20.0 g12 40.0 g12e 15.0 g12c 25.0 g12a 35.0 g1 5.0 ", [&] {
        std::string text = lf_stands(file.airports[0].apf);
        std::erase(text, 'r');
        return text;
    }());
    EXPECT_THAT(file.log, testing::ElementsAre("===> Warning more then 6 the same ids g12, in x.bgl"));
}

TEST(Bgl, identifiersUnpackAndNamesAreTextOfEitherEncoding)
{
    bool valid = false;
    EXPECT_EQ("EHAM", lf_decodeIdentifierOrRegionCode((((16 * 38 + 19) * 38 + 12) * 38 + 24) << 5, valid));
    EXPECT_TRUE(valid);
    lf_decodeIdentifierOrRegionCode((((16 * 38 + 0) * 38 + 12) * 38 + 24) << 5, valid);
    EXPECT_FALSE(valid);
    BglAirportPlan plan = lf_airport({});
    EXPECT_EQ("Sch\xC3\xB6nefeld", lf_decode(gf_bglFile({plan})).airports[0].apf.name);
    plan.names = {"Sch\xC3\xB6nefeld"};
    EXPECT_EQ("Sch\xC3\xB6nefeld", lf_decode(gf_bglFile({plan})).airports[0].apf.name);
    plan.names = {std::string(60, 'x')};
    EXPECT_EQ(45U, lf_decode(gf_bglFile({plan})).airports[0].apf.name.size());
}

TEST(Bgl, cutAndAlteredFilesDoNoHarm)
{
    BglAirportPlan plan = lf_airport({lf_parking("g1"), lf_parking("g2")}, true);
    plan.helipads = {{20, 1, 5, 6}};
    const std::string whole = gf_bglFile({plan, lf_airport({lf_parking("g3")})});
    size_t most = 0;
    for (size_t length = 0; length <= whole.size(); ++length) {
        const BglFile file = lf_decode(whole.substr(0, length));
        size_t stands = 0;
        for (const BglAirport& airport : file.airports) {
            stands += airport.apf.stands.size();
        }
        EXPECT_LE(most, stands) << "a longer file has no fewer, at " << length;
        most = stands;
    }
    EXPECT_EQ(4U, most);
    for (size_t bit = 0; bit < whole.size() * 8; ++bit) {
        std::string altered = whole;
        altered[bit / 8] = static_cast<char>(altered[bit / 8] ^ 1 << bit % 8);
        EXPECT_LE(lf_decode(altered).airports.size(), 2U);
    }
}

TEST(Bgl, filesThatCannotBeEndInTime)
{
    const TempFolder folder;
    const std::string small = gf_bglFile({lf_airport({lf_parking("g1")})});
    EXPECT_FALSE(holdsAirports(folder.path() / "none.bgl"));
    EXPECT_FALSE(holdsAirports(folder.write("short.bgl", small.substr(0, 14))));
    EXPECT_FALSE(holdsAirports(folder.write("table.bgl", small.substr(0, 80)))) << "the table doesn't fit";
    // 2 GB, nearly all of it a hole.
    const auto sparse = folder.write("sparse.bgl", small);
    ASSERT_TRUE(holdsAirports(sparse));
    std::filesystem::resize_file(sparse, 1ULL << 31);
    EXPECT_EQ(1U, decodeBglFile(sparse, "sparse").airports.size());
    // 100,000 sections that all lead to the same airport.
    std::string many = small.substr(0, 56);
    const uint32_t sections = 100000;
    std::memcpy(many.data() + 20, &sections, 4);
    const uint32_t begin = 56 + sections * 20;
    for (uint32_t i = 0; i < sections; ++i) {
        const uint32_t entry[] = {3, 1, 1, begin, 16};
        many.append(reinterpret_cast<const char*>(entry), sizeof entry);
    }
    const uint32_t subsection[] = {0, 1, begin + 16, 0};
    many.append(reinterpret_cast<const char*>(subsection), sizeof subsection);
    const std::string records = small.substr(small.find("a record between") - 6);
    EXPECT_EQ(1U, lf_decode(many + records).airports.size());
    // A list that tells of more parkings than its record has room for.
    std::string list = small;
    const size_t at = list.rfind(std::string("\x3D\0", 2));
    list[at + 6] = list[at + 7] = '\xFF';
    const BglFile file = lf_decode(list);
    EXPECT_EQ("g1 20.0 ", lf_stands(file.airports.at(0).apf));
    EXPECT_THAT(file.log,
                testing::ElementsAre("65534 of 65535 parkings lie beyond the end of their list, in x.bgl"));
}

}  // namespace vlt
