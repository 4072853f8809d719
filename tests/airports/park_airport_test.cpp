#include "airports/parking/park_airport.h"

#include "airports/airport_place.h"
#include "airports/parking/airport_sight.h"
#include "airports/parking/park_list.h"
#include "airports/parking/renewal.h"
#include "airports/parking/reserved_stand.h"
#include "airports/parking/static_parking.h"
#include "airports/stand_search.h"
#include "core/base/display.h"
#include "core/base/run_state.h"
#include "link/traffic_reader.h"
#include "sim/dispatch.h"
#include "traffic/stays.h"

#include <algorithm>
#include <asio/io_context.hpp>
#include <asio/ip/tcp.hpp>
#include <chrono>
#include <map>
#include <optional>
#include <set>
#include <utility>
#include <vector>

namespace vlt {

class ParkAirportTest : public AirportPlace
{
protected:
    void SetUp() override
    {
        AirportPlace::SetUp();
        airportCatalogue = {{"XAAA", "", 47, 8, 900}, {"XBBB", "", 47.2, 8, 500}, {"XFAR", "", 10, 10, 0}};
    }

    void list(const std::string& text) const
    {
        place.folder.write("airports/my_park_airports.txt", text);
    }
    std::string listFile() const
    {
        return gf_textOfFile("airports/my_park_airports.txt");
    }
    static std::string codes()
    {
        std::string all;
        for (const ParkListEntry& entry : parkAirports) {
            all += entry.code + (entry.stand.empty() ? "" : "," + entry.stand) + " ";
        }
        return all;
    }
    // The user, on the ground if there is no height.
    static void put(double milesNorth, double metresEast, std::optional<double> agl)
    {
        const PosSample sample = gf_groundSample(metresEast, milesNorth * kMetresPerNm, 0, 0);
        userOnGround = !agl;
        userNow = UserAc{.lat = sample.lat, .lon = sample.lon, .agl = agl.value_or(0)};
    }
    // One regular look.
    static void look()
    {
        parkAirportCheck();
        while (gf_goOnLooking()) {
        }
    }
};

// --- the list

TEST_F(ParkAirportTest, theListIsReadAndTheUsersSceneriesFollow)
{
    list("XAAA,A1\n\n  \nxbbb , B 2 \nXZZZ\nXAAA\nXFAR,1,2\n");
    EXPECT_FALSE(lf_readMyParkAirports()) << "XZZZ is unknown";
    EXPECT_EQ("XAAA,A1 XBBB,B 2 ", codes());
    EXPECT_EQ("airport XZZZ is unknown", display.message.load());
    list("XBBB");
    for (const char* file : {"XBBB.xml", "xaaa.XML", "XFAR.txt", "XZZZ.xml"}) {
        place.folder.write(format("airports/my_thirdparty/{}", file), "");
    }
    EXPECT_TRUE(lf_readMyParkAirports());
    EXPECT_EQ("XBBB XAAA ", codes());
}

TEST_F(ParkAirportTest, aStoredStandKeepsTheOtherLines)
{
    list("# mine\r\nXBBB\r\nxaaa,old\r\nlast");
    lf_readMyParkAirports();
    gf_sortParkAirports({47, 8});
    gf_storeStand("A7");
    EXPECT_EQ("# mine\r\nXBBB\r\nXAAA,A7\r\nlast\r\n", listFile());
    const std::string broken("\xFF\xFE\0\xD8", 4);
    list(broken);
    gf_storeStand("A8");
    EXPECT_EQ(broken, listFile()) << "what can't be read isn't overwritten";
}

TEST_F(ParkAirportTest, decimalCommasAreReadAsTheyAreMeantAndTold)
{
    std::string text = gf_airportText(gf_standText("A1", 0) + gf_standText("A2", 60));
    text.replace(text.find("8.00079"), 2, "8,");
    place.folder.write("airports/my_thirdparty/XAAA.xml", text);
    list("XAAA");
    lf_readMyParkAirports();
    put(0, 0, std::nullopt);
    for (int i = 0; i < 3 && parkState != ParkState::Loaded; ++i) {
        look();
    }
    ASSERT_EQ(2u, parkApf.stands.size());
    EXPECT_GT(parkApf.stands[1].lon, 8.0007);
    EXPECT_EQ("airports/my_thirdparty/XAAA.xml has decimal commas, the first is longitude=\"8,000792\" of A2",
              display.message.load());
    place.folder.write("airports/learned/stock/XAAA.xml",
                       gf_airportText("<parkpos id='H' latitude='47,0003' longitude='8' radius='20,5'/>",
                                      "<parameter name='handmade' value='true'/>"));
    flushStatic();
    look();
    look();
    ASSERT_EQ(1U, parkApf.stands.size());
    EXPECT_EQ("H 47.000300 8.000000 0.0 20.5", gf_shownStand(parkApf.stands.front()));
    EXPECT_TRUE(display.message.load().ends_with("the first is latitude=\"47,0003\" of H"));
}

TEST_F(ParkAirportTest, anAirportWithoutHistoryStaysEmptyAndIsToldOnce)
{
    archive("XAAA", gf_airportText(gf_standText("A1", 0) + gf_standText("A2", 60)));
    put(0, 0, std::nullopt);
    for (int i = 0; i < 3 && parkState != ParkState::Loaded; ++i) {
        look();
    }
    for (int i = 0; i < 3; ++i) {
        parkingAdjustments();
        look();
    }
    const std::string told = "no parking positions found";
    const std::string log = place.log();
    const size_t first = log.find(told);
    ASSERT_NE(std::string::npos, first);
    EXPECT_EQ(std::string::npos, log.find(told, first + 1));
    EXPECT_TRUE(parkPlan.empty() && staticAcs.empty() && !planningRuns);
    EXPECT_TRUE(display.airport.parkingEnabled);
}

// --- the whole life of it

// A user who walks and flies about while list and server change: what should be, told in few words.
class ParkWalk : public ParkAirportTest
{
protected:
    enum Served { None, Empty, Good };

    // XAAA has twenty stands that are known well; XBBB two, and a learned file.
    void serve(const std::string& at, Served what)
    {
        std::string stands;
        for (int i = 0; what == Good && i < (at == "XAAA" ? 20 : 2); ++i) {
            stands += gf_standText(format("S{}", i), i * 60.0);
        }
        archive(
            at,
            gf_airportText(
                stands,
                at == "XAAA"
                    ? "<parameter name='Qf_real' value='45'/><parameter name='RT_traffic_week' value='24'/>"
                    : ""));
        if (what == None) {
            std::filesystem::remove("served/archive/stock/" + at + ".xml");
        }
        served[at] = what;
        gf_forgetServerFiles();  // else it would be asked again after five minutes only
    }

    static double far(std::string_view airport)
    {
        return distNm(gf_placeOf(userNow), gf_placeOf(*findAirport(airport)));
    }
    static bool inSight(std::string_view airport)
    {
        return far(airport) <= AIRPORT_RANGE.value && userNow.agl <= AIRPORT_HEIGHT.value;
    }
    std::string first() const
    {
        return lines.empty() ? "" : lines.front().substr(0, 4);
    }
    // The user's stand gets its line, and the line says what is reserved.
    void reserve(bool noted)
    {
        const std::string stand = nearestStandId(gf_placeOf(userNow));
        const std::string line = stand.empty() ? code : code + "," + stand;
        const bool here = userOnGround && far(code) <= 5;
        if ((here || noted) && first() == code && !stand.empty()) {
            lines.front() = line;
        } else if (here && std::ranges::none_of(lines, [this](auto& l) { return l.starts_with(code); })) {
            lines.insert(lines.begin(), line);
        }
        const std::string listed = first() == code && lines.front() != code ? lines.front().substr(5) : "";
        reserved = gf_standById(listed) != nullptr ? listed : "";
        kept = {reserved, stand};
    }
    void become(const std::string& airport, ParkState now)
    {
        if (state == ParkState::Loaded) {  // each airport sets false: true is what the user has made of it
            learnSoft = softInForce || learnSoft;
        }
        softInForce = now != ParkState::Loaded && learnSoft;
        code = airport;
        state = now;
        reserved.clear();
    }
    // The server's file was of no use less than five minutes ago.
    bool isUseless(const std::string& at) const
    {
        const auto since = useless.find(at);
        return since != useless.end() && tick - since->second < 300 * kTicksPerSecond;
    }
    std::string firstUseful() const
    {
        const auto found =
            std::ranges::find_if(lines, [this](const std::string& l) { return !isUseless(l.substr(0, 4)); });
        return found == lines.end() ? "" : found->substr(0, 4);
    }
    static std::string underWheels()
    {
        return far("XAAA") <= 5 ? "XAAA" : far("XBBB") <= 5 ? "XBBB" : "";
    }
    bool lookedInVainLately() const
    {
        return distNm(vain, last) < 1 && tick - vainTick < 300 * kTicksPerSecond;
    }
    void expectGround()
    {
        const std::string at = underWheels();
        if (lookedInVainLately() || isUseless(at)) {
            return;
        }
        const bool none = at.empty() || served[at] == None;
        vain = none ? last : LatLon{};
        vainTick = tick;
        if (!none) {
            become(at, ParkState::InSight);
        }
    }
    void expectLook()
    {
        if (state == ParkState::InSight) {
            if (served[code] != Good) {
                useless[code] = tick;
            }
            become(served[code] == Good ? code : "",
                   served[code] == Good ? ParkState::Loaded : ParkState::None);
            return;
        }
        const LatLon before = std::exchange(last, gf_placeOf(userNow));
        if (gf_isNullPosition(last)) {
            last = before;
            return;
        }
        if (last != before) {
            std::ranges::stable_sort(lines, {}, [](const std::string& l) { return far(l.substr(0, 4)); });
        }
        const std::string next = firstUseful();
        const bool listed = !next.empty() && inSight(next);
        if (state == ParkState::None) {
            if (userOnGround) {
                expectGround();
            } else if (listed) {
                become(next, ParkState::InSight);
            }
        } else if (userOnGround) {
            const std::string at = underWheels();
            if (far(code) <= 5 || lookedInVainLately()) {
                return;
            }
            const bool none = at.empty() || isUseless(at) || served[at] == None;
            vain = none ? last : LatLon{};
            vainTick = tick;
            if (!none) {
                become("", ParkState::None);
            }
        } else if (!inSight(code) || (listed && far(next) < far(code))) {
            become("", ParkState::None);
        }
    }

    void changeTheWorld()
    {
        if (draw(15) == 0) {
            serve(one({"XAAA", "XBBB"}), one({Good, Good, Good, Empty, None}));
        }
        if (draw(20) == 0) {
            lines = {one({"XAAA", "XAAA,S1", "XAAA,Z9"}), one({"XBBB", "XBBB,S1"}), "XFAR"};
            std::swap(lines[0], lines[draw(2)]);
            lines.resize(draw(4));
            if (draw(4) == 0) {  // another run
                gf_resetParkAirport();
                gf_forgetLooks();
                become("", ParkState::None);
                vain = last = {};
                useless.clear();
            }
            list(joined(lines, "\r\n"));
            lf_readMyParkAirports();
        }
        if (draw(3) == 0) {
            put(one({0.0, 0.0, 0.7, 4.9, 5.1, 5.9, 6.1, 7.1, 12.0, 19.999, 20.001, -19.999, -20.001, -31.0}),
                one({0.0, 61.0, 115.0}), one<std::optional<double>>({{}, {}, 3000, 18000, 18001}));
        }
        if (draw(30) == 0) {
            userNow = {};  // no position
        }
        tick += one({1, 16, 16, 150}) * kTicksPerSecond;
        if (softLearningAllowed && draw(9) == 0) {
            LEARN_SOFT.value = softInForce = draw(2) == 0;  // by the user
            learnSoft = state == ParkState::Loaded ? learnSoft : softInForce;
        }
    }
    static std::string joined(const std::vector<std::string>& texts, const std::string& end)
    {
        std::string all;
        for (const std::string& text : texts) {
            all += text + end;
        }
        return all;
    }
    // The window's part of the airport, and what else is in force for it.
    static std::string shown()
    {
        const ShownAirport& a = display.airport;
        return format("{}|{}|{}|{}|{} {} {} {} {} {} {} {} {} {} {} {} {} {}", a.code.load(), a.name.load(),
                      a.quality.load(), a.reservedStand.load(), a.userStand.load(), a.standCount.load(),
                      a.altitude.load(), a.trafficWeek.load(), a.learnSoftEnabled.load(),
                      a.percentageEnabled.load(), a.flushStaticEnabled.load(),
                      parking_percentage.value.load(), MAX_LIVE.value.load(), PARK_SOFT.value.load(),
                      AUTO_RANGE.value ? -1 : LATERAL_RANGE.value.load(), LEARN_SOFT.value.load(),
                      trafficReader.parkElevation.load(), trafficReader.parkLat.load());
    }
    std::string expectedShown(const std::string& userStand) const
    {
        if (state != ParkState::Loaded) {
            return format("{}|||| 0 0 0 true false false 77 70 true 50 {} nan 0", code, softInForce);
        }
        const std::string stands = reserved + "|" + userStand;
        return code == "XAAA"
                   ? format("XAAA|Testfield|45|{} 20 1000 24 false false true 30 70 true 50 false 1000 47",
                            stands)
                   : format("XBBB|Testfield|  |{} 2 1000 0 true true true 55 5 false -1 {} 1000 47.2", stands,
                            softInForce);
    }

    std::map<std::string, Served> served;
    std::map<std::string, int32_t> useless;  // since which tick
    std::vector<std::string> lines;          // of the list
    std::string code, reserved;
    std::set<std::string> kept;  // the stands closed to static parking
    ParkState state = ParkState::None;
    LatLon last, vain;  // of the user at the last look, and at the last one in vain
    int32_t vainTick = 0;
    bool learnSoft = true, softInForce = true;
};

TEST_F(ParkWalk, theParkAirportFollowsUserListAndServer)
{
    MAX_LIVE.value = 70;
    parking_percentage.value = 77;
    AUTO_RANGE.value = false;
    LATERAL_RANGE.value = 50;
    place.folder.write("airports/learned/stock/XBBB.xml",
                       gf_airportText("", "<parameter name='MAX_LIVE' value='5'/>"
                                          "<parameter name='parking_percentage' value='55'/>"
                                          "<parameter name='PARK_SOFT' value='false'/>"
                                          "<parameter name='LATERAL_RANGE' value='12'/>"
                                          "<parameter name='AUTO_RANGE' value='true'/>"
                                          "<parameter name='LEARN_SOFT' value='false'/>"));
    std::set<std::string> looks;
    for (int step = 0; step < 3000; ++step) {
        SCOPED_TRACE(step);
        changeTheWorld();
        expectLook();
        const bool loads = parkState == ParkState::InSight;
        look();
        if (loads && state == ParkState::Loaded) {
            reserve(false);
        }
        const std::string stand = nearestStandId(gf_placeOf(userNow));
        noteStandRequested = draw(9) == 0;
        if (noteStandRequested && !stand.empty() && first() == code && lines.front() != code + "," + stand) {
            reserve(true);
        }
        gf_noteUserStand();
        gf_showUserStand();
        looks.insert(code + (state == ParkState::Loaded ? "" : "?"));
        for (const ParkPos& s : parkApf.stands) {
            ASSERT_EQ(kept.contains(s.id), s.reserved) << s.id;
        }
        ASSERT_EQ(code, parkApf.code);
        ASSERT_EQ(state, parkState);
        ASSERT_EQ(joined(lines, " "), codes());
        ASSERT_TRUE(std::ranges::is_permutation(joined(lines, "\r\n"), listFile())) << listFile();
        ASSERT_EQ(expectedShown(stand), shown());
        ASSERT_EQ(reserved, reservedStand);
        ASSERT_EQ(state != ParkState::None, parkAirport.has_value());
    }
    EXPECT_EQ(5U, looks.size()) << "neither airport was always away";
}

TEST_F(ParkAirportTest, aFieldBesideItBecomesTheParkAirportUnderTheUsersWheels)
{
    airportCatalogue = {{"XAAA", "", 47 + 4 / 60.0, 8, 0}, {"XCCC", "", 47, 8, 0}};
    archive("XCCC", gf_airportText(gf_standText("C1", 0)));
    setParkAirport("XAAA");
    parkState = ParkState::Loaded;
    put(0, 0, {});
    look();
    look();
    EXPECT_EQ("XCCC", parkApf.code);
}

TEST_F(ParkAirportTest, aServerThatNeverAnswersHoldsNoLook)
{
    asio::io_context context;
    asio::ip::tcp::acceptor silent(context, {asio::ip::address_v4::loopback(), 0});
    const ScopedVariable address("VELATRA_SERVER",
                                 format("http://127.0.0.1:{}/", silent.local_endpoint().port()));
    put(0, 0, {});
    const auto begun = std::chrono::steady_clock::now();
    for (int i = 0; i < 5; ++i) {
        parkAirportCheck();
        EXPECT_TRUE(gf_goOnLooking());
    }
    closeRequested = true;
    gf_forgetServerFiles();
    closeRequested = false;
    EXPECT_LT(std::chrono::steady_clock::now() - begun, std::chrono::seconds(5));
}

// --- what goes with it

TEST_F(ParkAirportTest, whoIsParkedThereGoesWithTheAirportAndOthersForgetTheirStand)
{
    gf_addStand("A1", 0, 0, 90);
    parkState = ParkState::Loaded;
    put(-30, 0, 3000);
    for (const StState st : {StState::Parked, StState::Parking, StState::PushingBack}) {
        gf_addOnGround(20001 + static_cast<uint32_t>(st), "BAW3AK", st).standId = 1;
    }
    staticAcs.emplace_back().fs = FsState::Active;
    look();
    ASSERT_EQ("", parkApf.code);
    for (const LiveAc& ac : liveAcs) {
        EXPECT_EQ(kNoStand, ac.standId);
        EXPECT_EQ(ac.st == StState::Parked, ac.fs == FsState::RemovingFromSim);
    }
    EXPECT_EQ(FsState::RemovingFromSim, staticAcs[0].fs);
}

}  // namespace vlt
