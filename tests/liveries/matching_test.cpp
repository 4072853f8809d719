#include "liveries/matching.h"

#include "core/base/errors.h"
#include "core/base/parameters.h"
#include "core/base/random.h"
#include "liveries/database.h"
#include "liveries/match_index.h"
#include "support/world.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <set>
#include <utility>

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

// A world of few airlines and models, so that they meet, and the ladder over a plain list of its liveries.
class LadderTest : public MatchingTest
{
protected:
    using Titles = std::set<std::string>;  // one of which is given; an empty one stands for none

    static uint32_t draw(uint32_t n)
    {
        return gf_randomNumber() % n;
    }
    static std::string one(std::initializer_list<const char*> values)
    {
        return values.begin()[draw(static_cast<uint32_t>(values.size()))];
    }
    static std::string model()
    {
        return one({"A319", "A320", "B744", "C172", "C152", "C25A", "EC35"});
    }
    void build()
    {
        installed.clear();
        for (uint32_t i = draw(12); i > 0; --i) {
            installed.push_back({one({"BAW", "CFE", "PVT", "ZZZ"}), model(), one({"special ", "", "", ""}),
                                 one({"", "", "G-AAAA", "G-BBBB"}), 1, draw(3) == 0});
            installed.back().title += format("title {}", i);
        }
        dbase.similarTypes.clear();
        for (uint32_t i = draw(4); i > 0; --i) {
            std::set<std::string> group{model(), model(), model()};
            dbase.similarTypes.emplace_back(group.begin(), group.end());
        }
        dbase.registrations.clear();
        dbase.registrations["G-AAAA"] = {one({"BAW", "ZZZ"}), "A319", one({"", "CFE"}), false};
        gf_installLiveries(installed);
    }

    template <typename Wanted>
    Titles titles(Wanted wanted) const
    {
        Titles all;
        for (const Livery& l : installed) {
            if (!l.title.starts_with("special") && wanted(l)) {
                all.insert(l.title);
            }
        }
        return all;
    }
    Titles of(const std::string& airline, const std::string& type, bool cargo) const
    {
        const Titles own = titles(
            [&](const Livery& l) { return l.airline == airline && l.model == type && l.cargo == cargo; });
        return own.empty() && cargo ? of(airline, type, false) : own;
    }
    Titles any(const std::string& type, bool cargo) const
    {
        return titles([&](const Livery& l) { return l.model == type && l.cargo == cargo; });
    }
    bool isThere(const std::string& type) const
    {
        return !any(type, false).empty() || !any(type, true).empty();
    }
    bool has(const std::string& airline, const std::string& type) const
    {
        return std::ranges::any_of(installed,
                                   [&](const Livery& l) { return l.airline == airline && l.model == type; });
    }
    // The look-alikes that are there: of several groups those that come first by name.
    std::vector<std::string> alike(const std::string& type) const
    {
        std::set<std::vector<std::string>> lists;
        for (std::vector<std::string> group : dbase.similarTypes) {
            if (std::erase(group, type) != 0) {
                std::erase_if(group, [this](const std::string& other) { return !isThere(other); });
                lists.insert(group);
            }
        }
        lists.erase(std::vector<std::string>{});
        return lists.empty() ? std::vector<std::string>{} : *lists.begin();
    }
    Titles ofAlike(const AcBase& ac, const std::string& airline, bool parked) const
    {
        Titles all;
        for (const std::string& type : alike(ac.model)) {
            if (!has(ac.airline, ac.model) && has(ac.airline, type) &&
                (parked || categoryOf(type) == ac.category)) {
                all.merge(of(airline, type, ac.cargo));
            }
        }
        return all;
    }
    Titles anyAlike(const AcBase& ac) const
    {
        Titles all;
        for (const std::string& type : alike(ac.model)) {
            all.merge(any(type, ac.cargo));
        }
        for (const Livery& l : installed) {
            if (alike(ac.model).empty() && isThere(l.model) && categoryOf(l.model) == ac.category) {
                Titles these = any(l.model, ac.cargo);
                all.merge(these.empty() ? these = {""} : these);
            }
        }
        return all;
    }
    // The step and the titles of the first rung that has any.
    std::pair<int32_t, Titles> climb(const AcBase& ac, bool parked) const
    {
        const auto row = dbase.registrations.find(ac.regcode);
        const std::string owner =
            row != dbase.registrations.end() && !row->second.opr.empty() ? row->second.airl : "nobody";
        const bool small = ac.category != AcCategory::Large && ac.category != AcCategory::Heavy;
        std::set<std::vector<std::string>> own;
        for (const Livery& l : installed) {
            if (l.atcid == ac.regcode && !l.atcid.empty()) {
                own.insert({l.airline, l.model, l.title});
            }
        }
        const Titles generic = of("ZZZ", ac.model, ac.cargo);
        const struct {
            int32_t step, depth;
            bool applies;
            Titles titles;
        } rungs[] = {
            {1, 1, !own.empty(), own.empty() ? Titles{} : Titles{own.begin()->back()}},
            {4, 2, ac.airline == "PVT", generic},
            {2, 2, true, of(ac.airline, ac.model, ac.cargo)},
            {2, 2, true, of(owner, ac.model, ac.cargo)},
            {3, 3, true, ofAlike(ac, ac.airline, parked)},
            {3, 3, true, ofAlike(ac, owner, parked)},
            {4, 4, true, generic},
            {4, 3, small && ac.airline != "PVT", generic},
            {5, 3, small, any(ac.model, ac.cargo)},
            {6, 3, small, anyAlike(ac)},
        };
        for (const auto& rung : rungs) {
            if (rung.depth <= MATCHING_DEPTH.value && rung.applies && !rung.titles.empty()) {
                return {rung.step, rung.titles};
            }
        }
        return {0, {""}};
    }

    std::vector<Livery> installed;
};

TEST_F(LadderTest, everyAircraftGetsATitleOfItsFirstRung)
{
    gf_seedRandom(3);
    RANDOM.value = true;
    std::array<int, 7> steps{};
    for (int round = 0; round < 4000; ++round) {
        build();
        MATCHING_DEPTH.value = static_cast<int32_t>(1 + draw(4));
        AcBase ac = lf_aircraft(one({"", "BAW", "CFE", "PVT"}), model(), one({"", "", "G-AAAA", "G-BBBB"}),
                                draw(3) == 0);
        const bool parked = draw(2) == 0;
        const auto [step, titles] = climb(ac, parked);
        const MatchTrace trace = gf_explainMatch(ac, parked);
        ASSERT_TRUE(titles.contains(std::string(ac.title))) << round << ", step " << step << ": " << ac.title;
        ASSERT_EQ(ac.title.empty() ? 0 : step, trace.step) << round;
        ++steps[static_cast<size_t>(trace.step)];
        const auto before = std::exchange(matchCounters, {});
        parked ? void(matchStatic(ac, ac.cargo, "A1")) : matchLive(ac);
        EXPECT_TRUE(titles.contains(std::string(ac.title)));
        EXPECT_EQ(parked || ac.title.empty() ? 0 : 1,
                  step == 0 ? 0 : matchCounters.at(static_cast<size_t>(step) - 1));
        matchCounters = before;
    }
    EXPECT_LT(20, *std::ranges::min_element(steps)) << "every step is reached";
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

TEST_F(MatchingTest, aRefusedTitleIsLeftOutAndItsNeighboursAreTaken)
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
}

TEST_F(MatchingTest, theTwentiethTitleRefusedEndsTheWork)
{
    AcBase ac = lf_aircraft("RYR", "B738");
    const std::string titles(20, 'x');  // refused ones of 1 to 20 letters
    for (size_t i = 1; i < titles.size(); ++i) {
        ac.title = std::string_view(titles).substr(0, i);
        EXPECT_NO_THROW(gf_noteRefusedTitle(ac)) << i;
        EXPECT_NO_THROW(gf_noteRefusedTitle(ac)) << "counts once";
    }
    ac.title = titles;
    try {
        gf_noteRefusedTitle(ac);
        FAIL() << "no exception";
    } catch (const UserErrorException& e) {
        EXPECT_TRUE(std::string_view(e.what()).starts_with("81: ")) << e.what();
    }
}

TEST_F(MatchingTest, anAircraftThatComesBackKeepsItsTitleAndFamily)
{
    for (const char* model : {"A319", "A320"}) {
        AcBase ac = lf_aircraft("EZY", model);
        ac.hexid = std::string_view(model) == "A319" ? 0x400123 : 0x400124;
        matchCounters = {};
        ASSERT_TRUE(titleForHexid(ac));
        EXPECT_EQ(std::string_view(model) == "A319" ? "FSLTL_A319_EZY" : "VWorld A320 easyJet", ac.title);
        AcBase again = lf_aircraft("", "ZZZZ");  // nothing else would give it a title
        again.hexid = ac.hexid;
        ASSERT_TRUE(titleForHexid(again));
        EXPECT_EQ(ac.title, again.title);
        for (const AcBase& either : {ac, again}) {
            EXPECT_EQ(std::string_view(model) == "A319", either.fsltl) << "the other throttle";
        }
        EXPECT_EQ(1, matchCounters[1]) << "a remembered title is no match";
        ac.title = "set before";
        EXPECT_TRUE(titleForHexid(ac) && matchStatic(ac, false, "A12"));
        EXPECT_EQ("set before", ac.title);
        gf_noteRefusedTitle(again);
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
    AcBase ac = lf_aircraft("DLH", "A320");
    std::string told;
    for (const RungTrace& rung : gf_explainMatch(ac, false).rungs) {
        told +=
            "BNtA"[static_cast<size_t>(rung.outcome)];  // beyond the depth, not applicable, tried, answered
    }
    EXPECT_EQ("NNtNA", told);
    EXPECT_EQ((std::array<int32_t, 6>{}), matchCounters);
    AcBase heavy = lf_aircraft("TAP", "A359");
    EXPECT_EQ(RungOutcome::BeyondDepth, gf_explainMatch(heavy, false).rungs.at(6).outcome) << "needs depth 4";
}

}  // namespace vlt
