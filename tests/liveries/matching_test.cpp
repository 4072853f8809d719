#include "liveries/matching.h"

#include "core/errors.h"
#include "core/parameters.h"
#include "core/random.h"
#include "liveries/database.h"
#include "liveries/match_index.h"
#include "support/world.h"

#include <gtest/gtest.h>

#include <set>

namespace vlt {

class MatchingTest : public testing::Test
{
protected:
    MatchingTest()
    {
        gf_loadSmallWorld();
        RANDOM.value = false;
    }
    ~MatchingTest() override
    {
        gf_clearWorld();
        RANDOM.value = true;
        MATCHING_DEPTH.value = 4;
    }
};

static AcBase lf_aircraft(const char* airline, const char* model, const char* regcode = "",
                          bool cargo = false)
{
    AcBase ac;
    ac.airline = airline;
    ac.model = model;
    ac.regcode = regcode;
    ac.cargo = cargo;
    ac.category = categoryOf(model);
    return ac;
}

// The title, with the step in front: "2 VWorld ...", or "-".
static std::string lf_matched(AcBase ac)
{
    const auto before = matchCounters;
    matchLive(ac);
    for (size_t i = 0; i < before.size(); ++i) {
        if (matchCounters[i] == before[i] + 1) {
            return format("{} {}", i + 1, ac.title);
        }
    }
    return ac.title.empty() ? "-" : "a title, but no step counted";
}

TEST_F(MatchingTest, eachAircraftGetsTheTitleOfItsRung)
{
    const struct {
        const char* what;
        AcBase ac;
        const char* expected;
    } cases[] = {
        {"own registration, without its hyphen", lf_aircraft("BAW", "A319", "GDBCJ"),
         "1 VWorld A319 British Airways G-DBCJ"},
        {"own registration wins over the model", lf_aircraft("XXX", "ZZZZ", "PHBXA"),
         "1 VWorld B738 KLM PH-BXA"},
        {"airline and model", lf_aircraft("RYR", "B738", "EIXXX"), "2 VWorld B738 Ryanair"},
        {"operated for its owner", lf_aircraft("SHT", "A320", "GEUUU"), "2 VWorld A320 British Airways"},
        {"no airline, operated for its owner", lf_aircraft("", "A320", "GEUUU"),
         "2 VWorld A320 British Airways"},
        {"a freighter takes the passenger livery of its airline", lf_aircraft("FDX", "AT76", "", true),
         "2 VWorld AT76 FedEx without the mark of a freighter"},
        {"a freighter prefers the freighter", lf_aircraft("UPS", "B744", "", true), "2 VWorld B744F UPS"},
        {"a passenger aircraft never takes a freighter's livery", lf_aircraft("UPS", "B744"), "-"},
        {"similar model of the airline", lf_aircraft("DLH", "A320"), "3 VWorld A20N Lufthansa"},
        {"similar model, but the airline's own comes first", lf_aircraft("AFR", "A319"),
         "3 VWorld A320 Air France"},
        {"private", lf_aircraft("PVT", "C172", "GXXXX"), "4 VWorld C172 white"},
        {"generic for any airline", lf_aircraft("TAP", "B738"), "4 VWorld B738 white"},
        {"generic freighter", lf_aircraft("DHK", "B763", "", true), "4 VWorld B763F white"},
        {"any of the model", lf_aircraft("NJE", "GLF5"), "5 VWorld GLF5 grey"},
        {"private of the model as such", lf_aircraft("PVT", "P28A"), "2 VWorld P28A blue"},
        {"any of a similar model", lf_aircraft("NJE", "C25B"), "6 VWorld C25A white"},
        {"nothing similar: the first of the category", lf_aircraft("NJE", "SR22"), "6 VWorld C152 white"},
        {"large without a livery", lf_aircraft("TAP", "A359"), "-"},
        {"an unknown type counts as light", lf_aircraft("RFR", "F18"), "6 VWorld C152 white"},
        {"unknown to all", lf_aircraft("", "A359"), "-"},
        {"a small freighter has no passenger livery at step 5", lf_aircraft("NJE", "GLF5", "", true), "-"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.expected, lf_matched(c.ac)) << c.what;
    }
}

TEST_F(MatchingTest, depthDecidesWhichStepsAnswer)
{
    struct Row {
        const char* what;
        AcBase ac;
        const char* expected[4];  // for the depths 1 to 4: the step, or "-"
    };
    const Row rows[] = {
        {"own registration", lf_aircraft("BAW", "A319", "G-DBCJ"), {"1", "1", "1", "1"}},
        {"airline and model", lf_aircraft("BAW", "A319", "GXXXX"), {"-", "2", "2", "2"}},
        {"similar", lf_aircraft("DLH", "A320"), {"-", "-", "3", "3"}},
        {"generic, large", lf_aircraft("TAP", "B738"), {"-", "-", "-", "4"}},
        {"generic, large, private", lf_aircraft("PVT", "B738"), {"-", "4", "4", "4"}},
        {"generic, light", lf_aircraft("NJE", "C172"), {"-", "-", "4", "4"}},
        {"any of the model, buzjet", lf_aircraft("NJE", "GLF5"), {"-", "-", "5", "5"}},
        {"similar, rotorcraft", lf_aircraft("NJE", "C25B"), {"-", "-", "6", "6"}},
    };
    for (const Row& row : rows) {
        for (int32_t depth = 1; depth <= 4; ++depth) {
            MATCHING_DEPTH.value = depth;
            EXPECT_EQ(row.expected[depth - 1], lf_matched(row.ac).substr(0, 1))
                << row.what << ", depth " << depth;
        }
    }
}

TEST_F(MatchingTest, similarModelsOfAnotherCategoryAreForParkedAircraftOnly)
{
    // The data base calls B738 and E190 alike; let the 737 be heavy.
    dbase.large.erase("B738");
    dbase.heavy.insert("B738");
    gf_installLiveries({{"KLM", "E190", "E190 KLM", "", 1, false}});
    AcBase ac = lf_aircraft("KLM", "B738");
    matchLive(ac);
    EXPECT_EQ("", ac.title);
    EXPECT_TRUE(matchStatic(ac, false, "A12"));
    EXPECT_EQ("E190 KLM", ac.title);
}

TEST_F(MatchingTest, similarModelsOfTheAirlineAreTriedInOwnersLivery)
{
    // CFE flies the 737 for BAW. The list asked is CFE's own; what is tried on it is BAW's.
    gf_installLiveries({{"CFE", "E190", "special E190 Cityflyer", "", 1, false},
                        {"BAW", "E190", "E190 British Airways", "", 1, false}});
    dbase.registrations["G-OWNR"] = {"BAW", "B738", "CFE", false};
    EXPECT_EQ("3 E190 British Airways", lf_matched(lf_aircraft("CFE", "B738", "G-OWNR")));
    EXPECT_EQ("-", lf_matched(lf_aircraft("CFE", "B738", "G-NONE")));
}

TEST_F(MatchingTest, aSpecialLiveryIsReachedThroughItsRegistrationOnly)
{
    std::vector<Livery> installed{{"BAW", "A319", "special A319 retro", "G-EUPJ", 1, false}};
    gf_installLiveries(installed);
    EXPECT_EQ("1 special A319 retro", lf_matched(lf_aircraft("BAW", "A319", "GEUPJ")));
    for (const bool random : {false, true}) {
        RANDOM.value = random;
        EXPECT_EQ("-", lf_matched(lf_aircraft("BAW", "A319", "GEUPA"))) << random;
    }
    installed.push_back({"BAW", "A319", "zz A319 everyday", "", 1, false});
    gf_installLiveries(installed);
    for (const bool random : {false, true}) {
        RANDOM.value = random;
        for (int32_t i = 0; i < 50; ++i) {
            EXPECT_EQ("2 zz A319 everyday", lf_matched(lf_aircraft("BAW", "A319"))) << random;
        }
    }
}

TEST_F(MatchingTest, aTitleThatBecomesSpecialLaterIsNoLongerDrawn)
{
    gf_installLiveries(
        {{"BAW", "A319", "A319 first", "", 1, false}, {"BAW", "A319", "A319 second", "", 1, false}});
    EXPECT_EQ("2 A319 first", lf_matched(lf_aircraft("BAW", "A319")));
    specialTitles.push_back(airlineLiveries["BAW"]["A319"][0].title);
    EXPECT_EQ("2 A319 second", lf_matched(lf_aircraft("BAW", "A319")));
    specialTitles.push_back(airlineLiveries["BAW"]["A319"][1].title);
    EXPECT_EQ("-", lf_matched(lf_aircraft("BAW", "A319")));
}

TEST_F(MatchingTest, chanceReachesEveryTitleOfAList)
{
    std::vector<Livery> installed;
    for (int32_t i = 0; i < 7; ++i) {
        installed.push_back({"BAW", "A319", format("A319 number {}", i), "", 1, false});
    }
    gf_installLiveries(installed);
    RANDOM.value = true;
    gf_seedRandom(1);
    std::set<std::string> seen;
    for (int32_t i = 0; i < 300; ++i) {
        seen.insert(lf_matched(lf_aircraft("BAW", "A319")));
    }
    EXPECT_EQ(7U, seen.size());
    RANDOM.value = false;
    EXPECT_EQ("2 A319 number 0", lf_matched(lf_aircraft("BAW", "A319")));
}

TEST_F(MatchingTest, aRefusedTitleIsNeitherGivenNorCounted)
{
    AcBase ac = lf_aircraft("RYR", "B738");
    matchLive(ac);
    gf_noteRefusedTitle(ac);
    const auto counted = matchCounters;
    matchLive(ac);
    EXPECT_EQ("", ac.title);
    EXPECT_EQ(counted, matchCounters);
    EXPECT_FALSE(matchStatic(ac, false, "A12"));
    EXPECT_EQ("", ac.title);
    EXPECT_EQ(1U, refusedAircraft.count("B738 RYR"));
}

TEST_F(MatchingTest, theTwentiethRefusalEndsTheWork)
{
    for (int32_t i = 0; i < 19; ++i) {
        AcBase ac = lf_aircraft("RYR", "B738");
        ac.title = "any";
        EXPECT_NO_THROW(gf_noteRefusedTitle(ac)) << i;
    }
    AcBase last = lf_aircraft("BAW", "A319");
    last.title = "the last";
    try {
        gf_noteRefusedTitle(last);
        FAIL() << "no exception";
    } catch (const UserErrorException& e) {
        EXPECT_STREQ("81: there are too many liveries that could not be created by P3D!, see Log.txt",
                     e.what());
    }
}

TEST_F(MatchingTest, anAircraftThatComesBackKeepsItsTitle)
{
    gf_installLiveries(
        {{"BAW", "A319", "A319 one", "", 1, false}, {"BAW", "A319", "A319 two", "", 1, false}});
    AcBase ac = lf_aircraft("BAW", "A319");
    ac.hexid = 0x400123;
    ASSERT_TRUE(titleForHexid(ac));
    EXPECT_EQ("A319 one", ac.title);
    EXPECT_EQ(1, matchCounters[1]);

    AcBase again = lf_aircraft("", "ZZZZ");  // nothing else would give it a title at that depth
    again.hexid = ac.hexid;
    MATCHING_DEPTH.value = 1;
    ASSERT_TRUE(titleForHexid(again));
    EXPECT_EQ("A319 one", again.title);
    EXPECT_EQ(1, matchCounters[1]) << "a remembered title is no match";

    gf_noteRefusedTitle(ac);
    again.title = {};
    EXPECT_FALSE(titleForHexid(again));
    EXPECT_EQ(0U, titleCache.count(ac.hexid));
}

TEST_F(MatchingTest, aTitleThatIsSetStays)
{
    AcBase ac = lf_aircraft("BAW", "A319");
    ac.title = "set before";
    EXPECT_TRUE(titleForHexid(ac));
    ac.cargo = true;
    EXPECT_TRUE(matchStatic(ac, false, "A12"));
    EXPECT_EQ("set before", ac.title);
    EXPECT_TRUE(ac.cargo);
}

TEST_F(MatchingTest, theStandTellsAParkedAircraftsUse)
{
    AcBase ac = lf_aircraft("UPS", "B744");
    EXPECT_FALSE(matchStatic(ac, false, "519"));
    EXPECT_TRUE(matchStatic(ac, true, "519"));
    EXPECT_EQ("VWorld B744F UPS", ac.title);
    EXPECT_TRUE(ac.cargo);
    EXPECT_EQ(0, matchCounters[1]) << "parked aircraft are not counted";
}

TEST_F(MatchingTest, marksTheFamilyWithTheOtherThrottle)
{
    AcBase ac = lf_aircraft("EZY", "A319");
    matchLive(ac);
    EXPECT_TRUE(ac.fsltl);
    ac.model = "A320";
    matchLive(ac);
    EXPECT_EQ("VWorld A320 easyJet", ac.title);
    EXPECT_FALSE(ac.fsltl);
}

TEST_F(MatchingTest, aTitleTooLongForTheSimulatorIsNeverGiven)
{
    const std::string fits(255, 'x');
    const std::string tooLong(256, 'a');
    gf_installLiveries({{"BAW", "A319", tooLong, "G-LONG", 1, false}, {"BAW", "A319", fits, "", 1, false}});
    EXPECT_EQ("2 " + fits, lf_matched(lf_aircraft("BAW", "A319", "G-LONG")));
}

TEST_F(MatchingTest, incompleteLiveriesOfAnEditedFileAreLeftOut)
{
    gf_installLiveries({{"", "A319", "no airline", "", 1, false},
                        {"BAW", "", "no model", "", 1, false},
                        {"BAW", "A319", "", "", 1, false}});
    EXPECT_TRUE(airlineLiveries.empty());
    EXPECT_EQ("-", lf_matched(lf_aircraft("", "A319")));
    EXPECT_EQ("-", lf_matched(lf_aircraft("BAW", "A319")));
}

TEST_F(MatchingTest, explainsWhatWasTriedWithoutCounting)
{
    MATCHING_DEPTH.value = 3;
    AcBase ac = lf_aircraft("DLH", "A320");
    const MatchTrace trace = gf_explainMatch(ac, false);
    EXPECT_EQ("VWorld A20N Lufthansa", ac.title);
    EXPECT_EQ(3, trace.step);
    const std::vector<RungOutcome> expected{RungOutcome::NotApplicable, RungOutcome::NotApplicable,
                                            RungOutcome::Nothing, RungOutcome::NotApplicable,
                                            RungOutcome::Answered};
    std::vector<RungOutcome> outcomes;
    for (const RungTrace& rung : trace.rungs) {
        outcomes.push_back(rung.outcome);
    }
    EXPECT_EQ(expected, outcomes);
    EXPECT_EQ((std::array<int32_t, 6>{}), matchCounters);

    gf_noteRefusedTitle(ac);
    const MatchTrace refused = gf_explainMatch(ac, false);
    EXPECT_TRUE(refused.refused);
    EXPECT_EQ("", ac.title);

    AcBase heavy = lf_aircraft("TAP", "A359");
    const MatchTrace none = gf_explainMatch(heavy, false);
    EXPECT_EQ(0, none.step);
    EXPECT_EQ(10U, none.rungs.size());
    EXPECT_EQ(RungOutcome::BeyondDepth, none.rungs[6].outcome) << "generic needs depth 4";
}

}  // namespace vlt
