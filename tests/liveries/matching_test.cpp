#include "liveries/matching.h"

#include "core/base/errors.h"
#include "core/base/parameters.h"
#include "liveries/database.h"
#include "liveries/livery_place.h"
#include "liveries/match_index.h"

#include <array>
#include <set>

namespace vlt {

class MatchingTest : public LiveryPlace
{
protected:
    MatchingTest()
    {
        RANDOM.value = false;
    }
};

static AcBase lf_aircraft(const std::string& airline, const std::string& model,
                          const std::string& regcode = "", bool cargo = false)
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
        int32_t depth;  // the first that answers
        const char* expected;
    } cases[] = {
        {"own registration", lf_aircraft("BAW", "A319", "GDBCJ"), 1, "1 VWorld A319 British Airways G-DBCJ"},
        {"own, whatever the model", lf_aircraft("XXX", "ZZZZ", "PHBXA"), 1, "1 VWorld B738 KLM PH-BXA"},
        {"airline and model", lf_aircraft("RYR", "B738", "EIXXX"), 2, "2 VWorld B738 Ryanair"},
        {"for its owner", lf_aircraft("SHT", "A320", "GEUUU"), 2, "2 VWorld A320 British Airways"},
        {"no airline, its owner", lf_aircraft("", "A320", "GEUUU"), 2, "2 VWorld A320 British Airways"},
        {"a freighter in its airline's passenger livery", lf_aircraft("FDX", "AT76", "", true), 2,
         "2 VWorld AT76 FedEx without the mark of a freighter"},
        {"a freighter prefers the freighter", lf_aircraft("UPS", "B744", "", true), 2, "2 VWorld B744F UPS"},
        {"no passenger aircraft takes a freighter's", lf_aircraft("UPS", "B744"), 5, ""},
        {"similar model of the airline", lf_aircraft("DLH", "A320"), 3, "3 VWorld A20N Lufthansa"},
        {"similar, the airline's own first", lf_aircraft("AFR", "A319"), 3, "3 VWorld A320 Air France"},
        {"private", lf_aircraft("PVT", "C172", "GXXXX"), 2, "4 VWorld C172 white"},
        {"private, large", lf_aircraft("PVT", "B738"), 2, "4 VWorld B738 white"},
        {"private of the model as such", lf_aircraft("PVT", "P28A"), 2, "2 VWorld P28A blue"},
        {"generic for any airline", lf_aircraft("TAP", "B738"), 4, "4 VWorld B738 white"},
        {"generic freighter", lf_aircraft("DHK", "B763", "", true), 4, "4 VWorld B763F white"},
        {"generic, light", lf_aircraft("NJE", "C172"), 3, "4 VWorld C172 white"},
        {"any of the model", lf_aircraft("NJE", "GLF5"), 3, "5 VWorld GLF5 grey"},
        {"any of a similar model", lf_aircraft("NJE", "C25B"), 3, "6 VWorld C25A white"},
        {"first of the category", lf_aircraft("NJE", "SR22"), 3, "6 VWorld C152 white"},
        {"an unknown type counts as light", lf_aircraft("RFR", "F18"), 3, "6 VWorld C152 white"},
        {"large without a livery", lf_aircraft("TAP", "A359"), 5, ""},
        {"unknown to all", lf_aircraft("", "A359"), 5, ""},
        {"a small freighter at step 5", lf_aircraft("NJE", "GLF5", "", true), 5, ""},
    };
    for (const auto& c : cases) {
        for (int32_t depth = 1; depth <= 4; ++depth) {
            MATCHING_DEPTH.value = depth;
            EXPECT_EQ(depth < c.depth ? "-" : c.expected, lf_matched(c.ac)) << c.what << ", depth " << depth;
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
    EXPECT_EQ("-", lf_matched(lf_aircraft("BAW", "A319", "GEUPA")));
    installed.push_back({"BAW", "A319", "zz A319 everyday", "", 1, false});
    gf_installLiveries(installed);
    EXPECT_EQ("2 zz A319 everyday", lf_matched(lf_aircraft("BAW", "A319")));
}

TEST_F(MatchingTest, chanceReachesEveryTitleOfAList)
{
    std::vector<Livery> installed;
    for (int32_t i = 0; i < 7; ++i) {
        installed.push_back({"BAW", "A319", format("A319 number {}", i), "", 1, false});
    }
    gf_installLiveries(installed);
    for (const bool random : {false, true}) {
        RANDOM.value = random;
        std::set<std::string> seen;
        for (int32_t i = 0; i < 300; ++i) {
            AcBase ac = lf_aircraft("BAW", "A319");
            matchLive(ac);
            seen.emplace(ac.title);
        }
        EXPECT_EQ(random ? 7U : 1U, seen.size());
        EXPECT_EQ("A319 number 0", *seen.begin());
    }
}

TEST_F(MatchingTest, aRefusedTitleIsNeitherGivenNorCountedAndTheTwentiethEndsTheWork)
{
    gf_installLiveries({{"BAW", "A319", "bad", "", 1, false}, {"BAW", "A319", "sound", "", 1, false}});
    AcBase ac = lf_aircraft("BAW", "A319");
    ac.title = "bad";
    gf_noteRefusedTitle(ac);
    for (int32_t i = 0; i < 20; ++i) {
        EXPECT_EQ("2 sound", lf_matched(ac));
    }
    ac.title = "sound";
    gf_noteRefusedTitle(ac);
    const auto counted = matchCounters;
    EXPECT_EQ("-", lf_matched(ac));
    EXPECT_EQ(counted, matchCounters);
    ac.title = {};
    EXPECT_FALSE(matchStatic(ac, false, "A12"));
    EXPECT_EQ(1U, refusedAircraft.count("A319 BAW"));
    EXPECT_TRUE(gf_explainMatch(ac, false).refused);
    EXPECT_EQ("", ac.title);
    const std::string titles(18, 'x');  // two are refused, seventeen follow
    for (size_t i = 1; i < titles.size(); ++i) {
        ac.title = std::string_view(titles).substr(0, i);
        EXPECT_NO_THROW(gf_noteRefusedTitle(ac)) << i;
        EXPECT_NO_THROW(gf_noteRefusedTitle(ac)) << "counts once";
    }
    ac.title = titles;
    EXPECT_THAT([&ac] { gf_noteRefusedTitle(ac); },
                testing::ThrowsMessage<UserErrorException>(testing::StartsWith("81: ")));
}

TEST_F(MatchingTest, anAircraftThatComesBackKeepsItsTitleAndFamily)
{
    for (const std::string model : {"A319", "A320"}) {
        AcBase ac = lf_aircraft("EZY", model);
        AcBase again = lf_aircraft("", "ZZZZ");  // nothing but its address would give it a title
        ac.hexid = again.hexid = 0x400123;
        ASSERT_TRUE(titleForHexid(ac) && titleForHexid(again));
        for (const AcBase& either : {ac, again}) {
            EXPECT_EQ(model == "A319" ? "FSLTL_A319_EZY" : "VWorld A320 easyJet", either.title);
            EXPECT_EQ(model == "A319", either.fsltl) << "the other throttle";
        }
        gf_noteRefusedTitle(again);
        EXPECT_TRUE(titleForHexid(again) && matchStatic(again, false, "A12")) << "what is set stays";
        EXPECT_EQ(ac.title, again.title);
        again.title = {};
        MATCHING_DEPTH.value = 1;
        EXPECT_FALSE(titleForHexid(again));
        MATCHING_DEPTH.value = 4;
    }
}

TEST_F(MatchingTest, theStandTellsAParkedAircraftsUse)
{
    AcBase ac = lf_aircraft("UPS", "B744");
    EXPECT_FALSE(matchStatic(ac, false, "519"));
    EXPECT_TRUE(matchStatic(ac, true, "519"));
    EXPECT_EQ("VWorld B744F UPS", ac.title);
    EXPECT_TRUE(ac.cargo);
}

TEST_F(MatchingTest, whatNoQueryMayFindIsNotInstalled)
{
    gf_installLiveries({{"BAW", "A319", std::string(256, 'a'), "G-LONG", 1, false},
                        {"", "A319", "no airline", "", 1, false},
                        {"BAW", "", "no model", "", 1, false},
                        {"BAW", "A319", "", "", 1, false},
                        {"BAW", "A319", std::string(255, 'x'), "", 1, false}});
    EXPECT_EQ(1U, airlineLiveries.size());
    EXPECT_EQ(1U, airlineLiveries["BAW"]["A319"].size());
    EXPECT_TRUE(regcodeTitles.empty());
}

TEST_F(MatchingTest, explainsWhatWasTriedWithoutCounting)
{
    MATCHING_DEPTH.value = 3;
    std::string told;
    for (AcBase ac : {lf_aircraft("DLH", "A320"), lf_aircraft("TAP", "A359")}) {
        for (const RungTrace& rung : gf_explainMatch(ac, false).rungs) {
            told += "BNtA"[static_cast<size_t>(rung.outcome)];  // beyond, not applicable, tried, answered
        }
    }
    EXPECT_EQ("NNtNANNtNtNBNNN", told);
    EXPECT_EQ((std::array<int32_t, 6>{}), matchCounters);
}

}  // namespace vlt
