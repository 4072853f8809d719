// Changes of identity, ghosts, doubles, who has a stand, and collisions with the user.
#include "traffic/identity.h"

#include "airports/catalogue.h"
#include "airports/parking/park_airport.h"
#include "liveries/liveries.h"
#include "sim/user_aircraft.h"
#include "traffic/collision.h"
#include "traffic/cycle.h"
#include "traffic/object_config.h"
#include "traffic/removal.h"
#include "traffic/stage.h"
#include "traffic/stand_claims.h"
#include "traffic/stand_spawn.h"

#include <set>

namespace vlt {

class Identity : public Stage
{
protected:
    void SetUp() override
    {
        Stage::SetUp();
        userHalfSpan = 17 / kMetresPerNm;
        userNow.lat = 46;
        userNow.lon = 8;
    }
    static void hold(uint32_t standId)
    {
        add("parked: 0s", 20009, "DLH1").standId = standId;
    }
};

TEST_F(Identity, whatBringsANewObject)
{
    // Call sign, registration, origin and destination, as they are, as they are reported, and with airline
    // and type afterwards. EI-DAC is known as Ryanair's B738; of PH-BXA, KLM's B738, there is a livery.
    // clang-format off
    const struct { const char *what, *state, *has, *told, *after; } cases[] = {
        {"nothing new",               "flying", "BAW3 G-D TLS LHR", "BAW3 G-D TLS LHR", "BAW3 G-D TLS LHR BAW A319"},
        {"a call sign",               "", "BAW3 G-D TLS LHR", "BAW9 G-D TLS LHR", "BAW9 G-D TLS LHR BAW A319 new"},
        {"none",                      "flying",       "BAW3 G-D TLS LHR", "- - - -", "BAW3 G-D TLS LHR BAW A319"},
        {"an origin",                 "", "BAW3 G-D - LHR", "BAW3 G-D TLS LHR", "BAW3 G-D TLS LHR BAW A319 new"},
        {"a destination",             "", "BAW3 G-D TLS -", "BAW3 G-D TLS LHR", "BAW3 G-D TLS LHR BAW A319 new"},
        {"another route",             "", "BAW3 G-D TLS LHR", "BAW3 G-D CDG FRA", "BAW3 G-D CDG FRA BAW A319 new"},
        {"from where it goes to", "flying", "BAW3 G-D TLS LHR", "BAW3 G-D CDG TLS", "BAW3 G-D TLS LHR BAW A319"},
        {"another origin only",       "flying", "BAW3 G-D TLS LHR", "BAW3 G-D CDG LHR", "BAW3 G-D TLS LHR BAW A319"},
        {"both at once",              "flying", "BAW3 - TLS LHR", "G-X G-X TLS LHR", "BAW3 G-X TLS LHR BAW A319"},
        {"another's registration",    "", "BAW3 G-D TLS LHR", "BAW9 G-O TLS LHR", "BAW9 G-D TLS LHR BAW A319 new"},
        {"the registration for it",   "flying", "BAW3 G-D TLS LHR", "G-D G-D TLS LHR", "BAW3 G-D TLS LHR BAW A319"},
        {"during the take-off",       "runs", "BAW3 G-D TLS LHR", "BAW9 G-D TLS LHR", "BAW3 G-D TLS LHR BAW A319"},
        {"on approach",               "lands", "BAW3 G-D TLS LHR", "BAW9 G-D TLS LHR", "BAW3 G-D TLS LHR BAW A319"},
        {"while it is extended", "extended", "BAW3 G-D TLS LHR", "BAW9 G-D TLS LHR", "BAW3 G-D TLS LHR BAW A319"},
        {"pushed back", "pushing_back", "BAW3 G-D TLS LHR", "BAW9 G-D TLS LHR", "BAW3 G-D TLS LHR BAW A319"},
        {"exchanges are off",         "flying", "BAW3 G-D TLS LHR", "BAW9 G-D TLS LHR", "BAW9 G-D TLS LHR BAW A319"},
        {"registered, other type", "", "BAW3 - TLS LHR", "BAW3 EI-DAC TLS LHR", "BAW3 EI-DAC TLS LHR RYR B738 new"},
        {"for the call sign", "", "BAW3 BAW3 TLS LHR", "BAW3 EI-DAC TLS LHR", "BAW3 EI-DAC TLS LHR RYR B738 new"},
        {"a registration, this type", "flying", "BAW3 - TLS LHR", "BAW3 G-X TLS LHR", "BAW3 G-X TLS LHR BAW A319"},
        {"with its own livery", "", "BAW3 - TLS LHR", "BAW3 PH-BXA TLS LHR", "BAW3 PH-BXA TLS LHR KLM B738 new"},
        {"which it wears",            "", "BAW3 - TLS LHR", "BAW3 PH-BXA TLS LHR", "BAW3 PH-BXA TLS LHR BAW A319"},
        {"another, and its airline", "", "BAW3 G-D TLS LHR", "RYR9 EI-DAC TLS LHR", "RYR9 EI-DAC TLS LHR RYR B738 new"},
        {"another, other airline",    "", "BAW3 G-D TLS LHR", "BAW3 EI-DAC TLS LHR", "BAW3 EI-DAC TLS LHR BAW A319"},
    };
    // clang-format on
    for (const auto& c : afresh(cases)) {
        GUID_CHANGES.value = std::string(c.what) != "exchanges are off";
        airportCatalogue = {{"XTST", "TLS", 47, 8, 0}};
        parkApf.code = "XTST";
        add("flying: 0^9000 500^9000", 20009, "DLH1").regcode = "G-O";
        LiveAc& ac = add(format("flying {}: 0^9000 500^9000", c.state));
        FeedRecord record;
        const auto read = [](const char* text, auto& names) {
            std::istringstream(text) >> names.callsign >> names.regcode >> names.origin >> names.destination;
            for (std::string* name : {&names.callsign, &names.regcode, &names.origin, &names.destination}) {
                *name = *name == "-" ? "" : *name;
            }
        };
        read(c.has, ac);
        read(c.told, record);
        ac.lat += 0.01;
        ac.bank = 0.2;
        ac.title = std::string(c.what) == "which it wears" ? regcodeTitles["PH-BXA"] : "some livery";
        titleCache[ac.hexid] = "some livery";
        const bool respawns = std::string(c.after).ends_with(" new");
        EXPECT_EQ(!respawns, identityUpdate(ac, record)) << c.what;
        EXPECT_EQ(c.after, format("{} {} {} {} {} {}{}", ac.callsign, ac.regcode, ac.origin, ac.destination,
                                  ac.airline, ac.model, ac.fs == FsState::LiveryRespawn ? " new" : ""))
            << c.what;
        EXPECT_EQ(ac.airline == "BAW", titleCache.contains(ac.hexid)) << c.what;
        EXPECT_EQ(ac.airline == "BAW", !ac.title.empty()) << c.what;
        if (respawns) {  // it comes back where it was
            const PosSample& front = ac.stream.front();
            EXPECT_TRUE(front.lat == ac.lat && front.roll == 0.2 && front.rollValid &&
                        front.time == tick + 1);
            EXPECT_LT(front.time, ac.stream[1].time) << c.what;
            std::tie(ac.throttleLevel, ac.flapsLevel) = std::tuple(3, 2);
            onObjectRemoved(ac.objectid);
            EXPECT_EQ(FsState::Buffer, ac.fs);
            EXPECT_TRUE(ac.throttleLevel == kNoThrottleLevel && ac.flapsLevel == kNoFlapsLevel &&
                        ac.objectid == kNoObject)
                << "the new object has been commanded nothing";
        }
    }
}

// Random reports under few names, objects that come and go at once: nobody is seen twice, no ghost beside its
// twin, and who comes back with another livery does so in place.
TEST_F(Identity, nobodyIsSeenTwiceWhateverIsReported)
{
    for (uint32_t seed = 0; seed < 5; ++seed) {
        SetUp();
        std::mt19937 random(seed);
        const auto oneOf = [&random](std::initializer_list<const char*> list) {
            return *(list.begin() + random() % list.size());
        };
        uint32_t objects = 100;
        size_t respawns = 0;
        for (int step = 0; step < 1500; ++step, tick += 100) {
            FeedRecord& record = feedQueue.emplace_back();
            record.hexid = 20001 + static_cast<uint32_t>(random() % 6);
            record.model = oneOf({"A319", "A319", "B738"});
            record.callsign = oneOf({"BAW1", "BAW1_", "BAW2", "BAW2_", "KLM3", ""});
            record.regcode = oneOf({"", "", "", "", "G-DBCJ", "EI-DAC", "PH-BXA"});
            record.timestamp = step * 2;
            record.sample = gf_eastOf(gf_airSample(tick + 600), step * 300.0 / 3600);
            record.sample.lat += (record.hexid - 20000) * 0.1;
            gf_takeFeed();
            gf_updateLiveAcs();
            spawnStack.clear();
            std::set<std::string> seen;
            for (LiveAc& ac : liveAcs) {
                if (ac.fs == FsState::Adding2Sim) {
                    ac.objectid = objects++;
                    setUpLiveAc(ac);
                }
                const bool respawn = ac.fs == FsState::LiveryRespawn;
                respawns += respawn;
                ASSERT_TRUE(!respawn || gf_placeOf(ac) == gf_placeOf(ac.stream.front()));
                for (const std::string& name : {ac.callsign, "registered " + ac.regcode}) {
                    ASSERT_TRUE((ac.fs != FsState::Active && !respawn) || name == "registered " ||
                                seen.insert(name).second)
                        << name << " twice, step " << step;
                }
            }
            for (const std::string& callsign : seen) {
                ASSERT_FALSE(seen.contains(callsign + "_")) << callsign << " beside its ghost, step " << step;
            }
            for (; !removeWaitQueue.empty(); removeWaitQueue.pop_front()) {
                onObjectRemoved(removeWaitQueue.front());
            }
        }
        EXPECT_GT(respawns, 10U);
    }
}

TEST_F(Identity, aGhostGoesForGoodWhenItsTwinComes)
{
    gf_addFlying(20001, "BAW3AK_");
    ghostCheck("BAW3AK");
    EXPECT_TRUE(goes(liveAcs[0]));
    EXPECT_EQ(std::vector<std::string>{"BAW3AK_"}, ghostCallsigns);
}

TEST_F(Identity, whoGetsAStandThatIsTaken)
{
    // clang-format off
    const struct { const char *holder, *newcomer, *scene; bool reports, newGetsIt, holderGoes; } cases[] = {
        {"DLH1",  "KLM5",  "parked: 0s",       false, true,  true},
        {"DLH1",  "KLM5",  "parked: 0s",       true,  false, false},
        {"DLH1",  "DLH1",  "parked: 0s",       true,  true,  true},
        {"DLH1",  "DLH1_", "parked: 0s",       false, false, false},  // a ghost's twin, and a ghost
        {"DLH1_", "DLH1",  "pushing_back: 0s", true,  true,  true},
        {"DLH1_", "KLM5",  "parked: 0s",       true,  true,  true},
        {"DLH1",  "KLM5_", "pushed_back: 0s",  false, false, false},
        {"DLH1",  "KLM5",  "taxi: 0s",         false, true,  false},
    };
    // clang-format on
    for (const auto& c : afresh(cases)) {
        LiveAc& holder = add(c.scene, 20001, c.holder);
        holder.standId = 1;
        holder.liveAtStand = c.reports;
        LiveAc& newcomer = add("birth: 0s", 20002, c.newcomer);
        newcomer.fs = FsState::Buffer;
        ASSERT_EQ(c.newGetsIt, standConflict(newcomer, 1)) << c.holder << c.newcomer << c.scene;
        if (c.newGetsIt) {
            gf_removeHolder(newcomer, 1);
        }
        EXPECT_EQ(c.holderGoes, goes(liveAcs[0])) << c.holder << c.newcomer << c.scene;
    }
}

TEST_F(Identity, whichPhaseANewAircraftOnTheGroundBegins)
{
    // Beside the stand A1 lies A2, 37 or 38 m off: two half spans of 17.05 m and a tenth are 37.5 m.
    // clang-format off
    const struct { const char *what, *scene; void (*before)(); bool comes; const char* after; } cases[] = {
        {"at its stand",               "birth: -30s -30s", [] {}, true, "parked: 0s"},
        {"no stand near: it waits",    "birth: -56s -56s", [] {}, false, "birth: -56s"},
        {"creeping onto its stand",    "birth: -30@5 -10@5", [] {}, true, "parked: 0s"},
        {"too fast for that",          "birth: -30@5 -10@6", [] {}, true, "taxi: -30@5 -10@6"},
        {"too far for that",           "birth: -46@5 -10@5", [] {}, true, "taxi: -46@5 -10@5"},
        {"no stand near",              "birth: -100@5 -80@4", [] {}, true, "taxi: -100@5 -80@4"},
        {"no airport", "birth: -30s -30s", closeAirport, true, "taxi: -30s -30s"},
        {"the reserved stand",         "birth: -30s -30s", [] { reservedStand = "A1"; }, true, "birth: -30s -30s"},
        {"its holder reports", "birth: -30s -30s", [] { hold(1); liveAcs[0].liveAtStand = true; }, false,
         "birth: -30s -30s"},
        {"it would touch", "birth: -1s -1s", [] { gf_addStand("A2", 0, 37, 90); hold(2); }, false, "birth: -1s -1s"},
        {"beside it somewhere", "birth: -1s -1s", [] { gf_addStand("A2", 0, 38, 90).lat = 0; hold(2);
          parkApf.stands[1].lon = 0; }, false, "birth: -1s -1s"},
        {"it wouldn't", "birth: -1s -1s", [] { gf_addStand("A2", 0, 38, 90); hold(2); }, true, "parked: 0s"},
    };
    // clang-format on
    for (const auto& c : afresh(cases)) {
        gf_addStand("A1", 0, 0, 90).neighbours = {2};
        c.before();
        LiveAc& ac = add(c.scene);
        ac.fs = FsState::Buffer;
        EXPECT_EQ(c.comes, gf_birthOnGround(ac)) << c.what;
        EXPECT_EQ(c.after, lookWithoutTimes(ac)) << c.what;
        if (ac.st == StState::Parked) {
            EXPECT_EQ(ac.hexid, parkApf.stands[0].occupiedByLive);
        }
    }
}

TEST_F(Identity, theLiveFlightReplacesItsStaticOne)
{
    // On a change of its stand, and every second: on the ground, by registration or the first call sign.
    // clang-format off
    const struct { const char *callsign, *coupled, *regcode, *scene; bool onStandChange, everySecond; } cases[] = {
        {"BAW1",  "",     "G-DBCJ", "taxi: 0",      true,  true},
        {"BAW1",  "",     "G-DBCJ", "flying: 0^900", true, false},
        {"DLH1",  "",     "",       "taxi: 0",      true,  true},
        {"DLH2",  "",     "",       "taxi: 0",      true,  false},
        {"BAW1",  "DLH2", "",       "taxi: 0",      true,  false},
        {"DLH1_", "",     "",       "taxi: 0",      true,  false},
        {"BAW1",  "",     "",       "taxi: 0",      false, false},
    };
    // clang-format on
    for (const auto& c : afresh(cases)) {
        StaticAc& parked = addStatic();
        parked.regcode = "G-DBCJ";
        parked.coupledCs1 = "DLH1";
        parked.coupledCs2 = "DLH2";
        LiveAc& ac = add(c.scene, 20001, c.callsign);
        ac.coupledCs2 = c.coupled;
        ac.regcode = c.regcode;
        gf_removeStaticTwins();
        EXPECT_EQ(c.everySecond, goes(staticAcs[0])) << c.callsign << c.scene;
        staticAcs[0].fs = FsState::Active;
        gf_removeSameFlight(ac);
        EXPECT_EQ(c.onStandChange, goes(staticAcs[0])) << c.callsign << c.scene;
    }
}

TEST_F(Identity, whoIsInTheUsersWay)
{
    // The user is at 47 N 8 E and looks east. On the ground (17 + 17.05) m * 1.15 are 39.2 m.
    // clang-format off
    const struct {
        const char* what; bool userOnGround; double userAgl; const char* scene; double hdgDeg; bool goes;
    } cases[] = {
        {"in the air, ahead and in line", false, 4000, "flying: 5556,183^5500", 270, true},
        {"700 ft off the line",           false, 4000, "flying: 5556,216^5500", 270, false},
        {"4 nm off",                      false, 4000, "flying: 7390^5500",     270, true},
        {"farther",                       false, 4000, "flying: 7430^5500",     270, false},
        {"999 ft above",                  false, 4000, "flying: 5556^5999",     270, true},
        {"1001 ft above",                 false, 4000, "flying: 5556^6001",     270, false},
        {"999 ft below",                  false, 4000, "flying: 5556^4001",     270, true},
        {"on the runway ahead",           false, 400,  "taxi: 1667,12",         0,   true},
        {"50 ft beside it",               false, 400,  "taxi: 1667,18",         0,   false},
        {"farther than a mile",           false, 400,  "taxi: 2037",            0,   false},
        {"the user still high",           false, 501,  "taxi: 1667",            0,   false},
        {"beside a taxiing user",         true,  0,    "taxi: 39",              0,   true},
        {"farther",                       true,  0,    "taxi: 39.4",            0,   false},
        {"above a taxiing user",          true,  0,    "flying: 0^5000",        0,   false},
    };
    // clang-format on
    for (const bool wanted : {false, true}) {
        for (const auto& c : afresh(cases)) {
            userOnGround = c.userOnGround;
            userNow = {47, 8, 0, 0, 90 * kRadPerDeg, 5000, c.userAgl, 140};
            COLLISION_USER_AIR.value = COLLISION_USER_GND.value = wanted;
            add(c.scene).hdg = c.hdgDeg * kRadPerDeg;
            add(c.scene, 20002, "DLH1").hdg = c.hdgDeg * kRadPerDeg;
            gf_checkCollisions();
            EXPECT_EQ(c.goes && wanted, goes(liveAcs[0])) << c.what;
            EXPECT_FALSE(goes(liveAcs[1])) << "one at a time";
            gf_checkCollisions();
            EXPECT_EQ(c.goes && wanted, goes(liveAcs[1])) << c.what;
        }
    }
}

TEST_F(Identity, staticAircraftInTheWay)
{
    // Of a user on the ground, once he moves: (17 + 17.05) m * 1.1 are 37.5 m. Of a taxiing aircraft, if
    // wanted.
    // clang-format off
    const struct { const char* scene; bool wanted, goes; double userAt; } cases[] = {  // metres, 0: elsewhere
        {"flying: 0^90",     false, true,  37}, {"flying: 0^90",    false, false, 38},
        {"taxi: 37",         false, false, 0},  {"taxi: 37",        true,  true,  0}, {"taxi: 38", true, false, 0},
        {"taxi rolls: 37",   true,  false, 0},  {"taxi runs: 37",   true,  false, 0},
        {"pushing_back: 37", true,  false, 0},  {"flying: 37^90",   true,  false, 0},
    };
    // clang-format on
    for (const auto& c : afresh(cases)) {
        userOnGround = true;
        COLLISION_LIVE_PARKED_GND.value = c.wanted;
        addStatic();
        gf_checkCollisions();
        add(c.scene);
        userNow.lat = c.userAt == 0 ? 46 : 47;
        userNow.lon = gf_groundSample(c.userAt, 0, 0, 0).lon;
        gf_checkCollisions();
        EXPECT_EQ(c.goes, goes(staticAcs[0])) << c.scene << c.userAt;
        staticAcs[0].fs = FsState::Active;
        gf_checkCollisions();
        EXPECT_FALSE(c.userAt != 0 && goes(staticAcs[0])) << "the user stands";
    }
}

TEST_F(Identity, aBlockedCallSignGoesOnce)
{
    gf_addFlying(20001, "BAW3AK");
    BLOCK_CALLSIGN.value = "BAW3AK";
    for (const bool changed : {false, true}) {
        blockChanged = changed;
        gf_serviceBlock();
        EXPECT_TRUE(goes(liveAcs[0]) == changed && !blockChanged);
    }
}

}  // namespace vlt
