#include "airports/learning.h"

#include "airports/airport_file.h"
#include "airports/airport_place.h"
#include "airports/learned_save.h"
#include "airports/loading.h"
#include "airports/parking/static_parking.h"
#include "core/base/display.h"
#include "support/aircraft.h"
#include "support/fresh_run.h"
#include "support/full_disk.h"

#include <gtest/gtest.h>
#include <pugixml.hpp>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <iterator>
#include <string>

namespace vlt {

static LiveAc lf_visitor(const char* callsign, AcCategory category = AcCategory::Large)
{
    LiveAc ac;
    ac.hexid = 20000;
    ac.callsign = callsign;
    ac.airline = "BAW";
    ac.model = "A319";
    ac.regcode = "G-TEST";
    ac.category = category;
    ac.standId = 1;
    return ac;
}

// One stand, and a tick in the log of what was learned there.
class LearningTest : public AirportPlace
{
protected:
    void SetUp() override
    {
        AirportPlace::SetUp();
        gf_addStand("A1", 0, 0, 90).index = 1;
        parkState = ParkState::Loaded;
    }
    static std::string shown()
    {
        return gf_shownStand(parkApf.stands.front()).substr(gf_shownStand(parkApf.stands.front()).find('['));
    }
};

TEST_F(LearningTest, aStayFillsItsHalfHoursAndCouplesTheFlightThatLeaves)
{
    struct Case {
        const char* what;
        AcCategory category;
        bool cargo;
        HourStamp arrives, leaves;
        const char* expected;
    };
    using enum AcCategory;
    const Case cases[] = {
        {"within a half hour",
         Large,
         false,
         {2, 10},
         {2, 10},
         "[G-TEST BAW A319 BAW1: day 2 at 10 learned #1]"},
        {"a turn-round",
         Large,
         false,
         {2, 10},
         {2, 13},
         "[G-TEST BAW A319 BAW1:BAW2 day 2 at 10,11,12,13 learned #1]"},
        {"the longest",
         Large,
         false,
         {2, 10},
         {2, 15},
         "[G-TEST BAW A319 BAW1:BAW2 day 2 at 10,11,12,13,14,15 learned #1]"},
        {"too long",
         Large,
         false,
         {2, 10},
         {2, 16},
         "[G-TEST BAW A319 BAW1: day 2 at 10 learned #1] [G-TEST BAW A319 BAW2: day 2 at 16 learned #2]"},
        {"a wide one",
         Heavy,
         false,
         {2, 10},
         {2, 16},
         "[G-TEST BAW A319 BAW1:BAW2 day 2 at 10,11,12,13,14,15,16 learned #1]"},
        {"over midnight",
         Large,
         false,
         {3, 46},
         {4, 1},
         "[G-TEST BAW A319 BAW1:BAW2 day 3 at 46,47 learned #1] [G-TEST BAW A319 BAW2: day 4 at 0,1 learned "
         "#2]"},
        {"over the week's end",
         Large,
         true,
         {7, 47},
         {1, 9},
         "[G-TEST BAW A319 BAW1:BAW2 day 7 at 47 learned #1] [G-TEST BAW A319 BAW2: day 1 at "
         "0,1,2,3,4,5,6,7,8,9 learned #2]"},
        {"the clock goes back",
         Large,
         false,
         {2, 10},
         {2, 8},
         "[G-TEST BAW A319 BAW1: day 2 at 10 learned #1] [G-TEST BAW A319 BAW2: day 2 at 8 learned #2]"},
        {"a day between",
         Large,
         false,
         {2, 10},
         {4, 10},
         "[G-TEST BAW A319 BAW1: day 2 at 10 learned #1] [G-TEST BAW A319 BAW2: day 4 at 10 learned #2]"},
    };
    for (const Case& c : cases) {
        parkApf.stands.front().options.clear();
        parkApf.stands.front().realSightings.clear();
        LiveAc ac = lf_visitor("BAW1_", c.category);
        ac.cargo = c.cargo;
        EXPECT_TRUE(lf_addRealStandOption(1, ac, c.arrives, false)) << c.what;
        ac.callsign = c.arrives == c.leaves ? "BAW1" : "BAW2";
        EXPECT_TRUE(lf_addRealStandOption(1, ac, c.leaves, true)) << c.what;
        EXPECT_EQ(c.expected, shown()) << c.what;
    }
}

TEST_F(LearningTest, theArchiveKnowsBetter)
{
    LiveAc ac = lf_visitor("BAW1");
    StandOption archived;
    archived.reg = ac.regcode;
    archived.day = 2;
    archived.sequence = 1;
    archived.hours.set(20);
    parkApf.stands.front().options = {archived};
    EXPECT_FALSE(lf_addRealStandOption(1, ac, {2, 10}, false));
    EXPECT_TRUE(lf_addRealStandOption(1, ac, {3, 10}, false)) << "another day";
    ac.regcode.clear();
    ac.callsign.clear();
    EXPECT_FALSE(lf_addRealStandOption(1, ac, {4, 10}, false)) << "nameless";
    EXPECT_EQ(1, updateCount);
}

TEST_F(LearningTest, whoIsSeenOnlyInTheAirIsGuessedToHaveStoodSomewhere)
{
    LiveAc ac = lf_visitor("BAW1");
    ac.standId = kNoStand;
    ac.lat = 47;
    ac.lon = 8;
    ac.radius = parkApf.stands.front().radius;
    ac.agl = 2600;
    StandOption known;
    known.reg = ac.regcode;
    known.day = 2;
    known.hours.set(30);
    parkApf.stands.front().options = {known};
    hourNow = {2, 10};
    LEARN_SOFT.value = true;
    softLearningAllowed = true;
    offerSoftLearning(ac, false);
    EXPECT_EQ(0, updateCount) << "too high";
    ac.agl = 2400;
    ac.standId = 1;
    offerSoftLearning(ac, false);
    EXPECT_EQ(0, updateCount) << "it stood somewhere";
    ac.standId = kNoStand;
    offerSoftLearning(ac, false);
    ASSERT_EQ(1, updateCount);
    EXPECT_FALSE(parkApf.stands.front().options.back().real);
    hourNow.slot = 12;
    offerSoftLearning(ac, true);
    for (const size_t slot : {29, 30, 31}) {
        hourNow.slot = static_cast<uint32_t>(slot);
        ac.hexid = static_cast<uint32_t>(30'000 + slot);
        offerSoftLearning(ac, true);
        EXPECT_EQ(2, updateCount) << "it is known to be here around " << slot;
    }
    EXPECT_EQ("10,11,12", setToHours(parkApf.stands.front().options.back().hours)) << "it takes off again";
    parkApf.stands.front().options.clear();
    hourNow = {7, 46};
    ac.hexid = 20001;
    offerSoftLearning(ac, false);
    hourNow = {1, 1};
    ac.callsign = "BAW2";
    offerSoftLearning(ac, true);
    EXPECT_EQ("[G-TEST BAW A319 BAW1:BAW2 day 7 at 46,47 soft learned #1] "
              "[G-TEST BAW A319 BAW2: day 1 at 0,1 soft learned #2]",
              shown())
        << "after the night";
}

TEST_F(LearningTest, aVisitIsSavedOnceAndTheRunGoesOnWhereItCannotBe)
{
    const std::filesystem::path file = "airports/learned/stock/XTST.xml";
    const auto visit = [] {
        gf_addStand("A1", 0, 0, 90);
        parkApf.publisher = "stock";
        parkState = ParkState::Loaded;
        return lf_addRealStandOption(1, lf_visitor("BAW1"), {2, 10}, false);
    };
    ASSERT_TRUE(visit());
    closeAirport();
    const std::string saved = gf_textOfFile(file);
    EXPECT_TRUE(display.message.load().ends_with("\"" + file.string() + "\" saved with 1 update "));
    std::filesystem::remove(file);
    gf_saveIfLearned();
    closeAirport();
    EXPECT_FALSE(std::filesystem::exists(file)) << "a second time";
    ASSERT_TRUE(visit());
    parkApf.handmade = true;
    parkApf.stands.front().options.front().sequence = 0;
    closeAirport();
    EXPECT_NE(std::string::npos, gf_textOfFile(file).find("\"Qf_real\" value=\"63\"")) << "10122 * 0.00625";

    const std::string told = " saving \"" + file.string() + "\" did not succeed";
    place.folder.write(file.string(), "before");
    ASSERT_TRUE(visit());
    {
        const FullDisk full(saved.size() / 2);
        EXPECT_FALSE(saveLearned({}));
        closeAirport();
    }
    EXPECT_TRUE(display.message.load().ends_with(told)) << display.message.load();
    EXPECT_EQ(ParkState::None, parkState);
    EXPECT_EQ("before", gf_textOfFile(file));
    EXPECT_EQ(1, std::distance(std::filesystem::directory_iterator(file.parent_path()), {})) << "no rests";

    std::filesystem::remove_all("airports/learned");
    place.folder.write("airports/learned", "a file in the folder's place");
    ASSERT_TRUE(visit());
    clearMessage();
    closeAirport();
    EXPECT_TRUE(display.message.load().ends_with(told)) << display.message.load();
    EXPECT_EQ(ParkState::None, parkState);
}

TEST_F(LearningTest, aStrangeLearnedFileIsToldAndHarmsNothing)
{
    const std::string longReg(200, 'R');
    archive("XTST", gf_airportText(gf_standText("A1", 0, "", "<opt reg='OLD' day='1' hh='5'/>")));
    place.folder.write(
        "airports/learned/stock/XTST.xml",
        "<parameters><parameter name='airport_name' value='Elsewhere'/></parameters><parkpositions>"
        "<parkpos id='Z9'><opt reg='GONE' day='2' hh='20'/></parkpos>"
        "<parkpos id='A1'><opt reg='EMPTY' day='3' hh=''/><opt reg='NINE' day='9' hh='20'/>"
        "<opt reg='" +
            longReg + "' airl='BAW' type='A319' day='3' hh='20' cs='" + longReg +
            "'/></parkpos>"
            "</parkpositions>");
    parkApf.stands.clear();
    gf_installParkAirport(gf_readApf(gf_sourceAt("archive/stock/XTST.xml"), "XTST"), {47, 8});
    EXPECT_NE(std::string::npos, place.log().find("learned file airport name: \"Elsewhere\" differs"));
    EXPECT_NE(std::string::npos, place.log().find("learned stand Z9 in "));
    ASSERT_EQ(1U, parkApf.stands.size());
    EXPECT_EQ(4U, parkApf.stands.front().options.size());
    for (const bool anyDay : {false, true}) {
        WEEK.value = anyDay;
        Planning planning;
        planning.now = {3, 20};
        parkPlan.clear();
        gf_renumberOptions();
        gf_planPasses(planning, 1, 0);
        ASSERT_EQ(1U, parkPlan.size());
        EXPECT_TRUE(parkPlan.front().reg == longReg || (anyDay && parkPlan.front().reg == "NINE"));
    }
    planStep();
    EXPECT_TRUE(parkPlan.empty());
    ASSERT_TRUE(saveLearned({}));
    const AirportLoad again = gf_readApf(gf_sourceAt("archive/stock/XTST.xml"), "XTST");
    EXPECT_EQ(3U, again.apf.stands.front().options.size()) << "but for the one without hours";
}

TEST_F(LearningTest, whoWasSeenAroundThisTimeIsNotGuessed)
{
    const struct {
        bool lookedAt;  // lately, for it was seen at the stand
        uint32_t slot;
        int32_t updates;
    } cases[] = {{false, 12, 1}, {true, 12, 0}, {true, 13, 1}};
    LEARN_SOFT.value = true;
    for (const auto& c : cases) {
        ParkPos& stand = parkApf.stands.front();
        stand.options.clear();
        stand.softSightings.clear();
        LiveAc ac = lf_visitor("BAW1");
        ac.lat = 47;
        ac.lon = 8;
        ac.radius = stand.radius;
        hourNow = {2, 10};
        ASSERT_TRUE(gf_registerStandUse(ac, false));
        if (!c.lookedAt) {
            gf_forgetSoftLearning();
        }
        updateCount = 0;
        ac.standId = kNoStand;
        hourNow.slot = c.slot;
        offerSoftLearning(ac, true);
        EXPECT_EQ(c.updates, updateCount) << c.lookedAt << ' ' << c.slot;
    }
}

TEST_F(LearningTest, whatWasLearnedIsThereAtTheNextVisitAndNothingElseIsSaved)
{
    archive("XTST", gf_airportText(gf_standText("A1", 0, "", "<opt reg='OLD' day='1' hh='5'/>") +
                                   gf_standText("A2", 500, "", "<opt reg='OLD2' day='1' hh='5'/>") +
                                   gf_standText("Z9", 900)));
    const AirportSource source = gf_sourceAt("archive/stock/XTST.xml");
    AirportLoad first = gf_readApf(source, "XTST");
    ASSERT_EQ("", first.failed);
    gf_installParkAirport(std::move(first), {47, 8});
    parkApf.code = "XTST";
    gf_saveIfLearned();
    EXPECT_FALSE(std::filesystem::exists("airports/learned/stock/XTST.xml")) << "nothing was learned";
    LiveAc ac = lf_visitor("BAW1");
    ac.cargo = true;
    ac.standId = 2;
    noteCargoStand(ac);  // all that is learned of A2
    EXPECT_EQ(1, updateCount);
    ac.cargo = ac.soft = false;
    ac.standId = 1;
    hourNow = {2, 10};
    EXPECT_TRUE(gf_registerStandUse(ac, false));
    const std::vector<std::string> before = gf_shownStands(parkApf.stands);
    closeAirport();
    const AirportLoad again = gf_readApf(gf_sourceAt("archive/stock/XTST.xml"), "XTST");
    EXPECT_EQ(before, gf_shownStands(again.apf.stands));
    const std::string learned = gf_textOfFile("airports/learned/stock/XTST.xml");
    EXPECT_TRUE(learned.find("OLD") == std::string::npos && learned.find("Z9") == std::string::npos);
}

// The process dies at fifty random moments of saving again and again.
TEST_F(LearningTest, aKillAtAnyMomentLeavesAWholeFile)
{
    constexpr size_t kStands = 60;
    const std::filesystem::path file = "airports/learned/stock/XTST.xml";
    while (parkApf.stands.size() < kStands) {
        gf_addStand(format("B{}", parkApf.stands.size()).c_str(), 0, 0, 90);
    }
    for (ParkPos& stand : parkApf.stands) {
        lf_addRealStandOption(stand.index, lf_visitor("BAW1"), {2, 10}, false);
    }
    ASSERT_TRUE(saveLearned(file));
    int written = 0;
    for (int round = 0; round < 50; ++round) {
        const auto before = std::filesystem::last_write_time(file);
        const pid_t child = fork();
        ASSERT_GE(child, 0);
        if (child == 0) {
            while (true) {
                saveLearned(file);
            }
        }
        usleep(draw(20'000));
        kill(child, SIGKILL);
        ASSERT_EQ(child, waitpid(child, nullptr, 0));
        pugi::xml_document document;
        ASSERT_TRUE(document.load_file(file.c_str())) << round;
        EXPECT_EQ(kStands, gf_parkPositions(document).size()) << round;
        written += std::filesystem::last_write_time(file) != before ? 1 : 0;
    }
    EXPECT_GT(written, 10) << "the children did save";
    EXPECT_TRUE(saveLearned(file));
    std::filesystem::directory_iterator files(file.parent_path());
    EXPECT_EQ(1, std::distance(begin(files), end(files))) << "nothing is left beside it";
}

}  // namespace vlt
