#include "airports/learning.h"

#include "airports/airport_file.h"
#include "airports/airport_place.h"
#include "airports/learned_save.h"
#include "airports/loading.h"
#include "core/base/display.h"
#include "support/aircraft.h"
#include "support/fresh_run.h"

#include <gtest/gtest.h>
#include <pugixml.hpp>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <iterator>

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
}

TEST_F(LearningTest, whatWasLearnedIsThereAtTheNextVisitAndNothingElseIsSaved)
{
    archive("XTST", gf_airportText(gf_standText("A1", 0, "", "<opt reg='OLD' day='1' hh='5'/>") +
                                   gf_standText("A2", 500, "", "<opt reg='OLD2' day='1' hh='5'/>")));
    const AirportSource source = gf_sourceAt("archive/stock/XTST.xml");
    AirportLoad first = gf_readApf(source, "XTST");
    ASSERT_EQ("", first.failed);
    gf_installParkAirport(std::move(first), {47, 8});
    parkApf.code = "XTST";
    gf_saveIfLearned();
    EXPECT_FALSE(std::filesystem::exists("airports/learned/stock/XTST.xml")) << "nothing was learned";
    LiveAc ac = lf_visitor("BAW1");
    ac.cargo = true;
    noteCargoStand(ac);
    hourNow = {2, 10};
    EXPECT_TRUE(gf_registerStandUse(ac, false));
    const std::vector<std::string> before = gf_shownStands(parkApf.stands);
    closeAirport();
    const AirportLoad again = gf_readApf(gf_sourceAt("archive/stock/XTST.xml"), "XTST");
    EXPECT_EQ(before, gf_shownStands(again.apf.stands));
    EXPECT_EQ(std::string::npos, gf_textOfFile("airports/learned/stock/XTST.xml").find("OLD"));
    place.folder.write("blocked", "");
    EXPECT_FALSE(saveLearned("blocked/XTST.xml"));
    EXPECT_TRUE(display.message.load().ends_with("saving \"blocked/XTST.xml\" did not succeed"));
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
