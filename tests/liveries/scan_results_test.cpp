#include "liveries/scan_results.h"

#include "core/base/display.h"
#include "core/base/errors.h"
#include "core/base/parameters.h"
#include "liveries/livery_place.h"
#include "liveries/match_index.h"
#include "liveries/regcodes.h"

namespace vlt {

class ScanResultsTest : public LiveryPlace
{
protected:
    [[nodiscard]] bool logged(const std::string& text) const
    {
        return workplace.log().find(text) != std::string::npos;
    }
};

TEST_F(ScanResultsTest, whatIsWrittenIsReadBackSorted)
{
    liveries = {{"RYR", "B738", "Z <&\"> title", "EI-DAC", 3, false},
                {"FDX", "B763", "Freighter", "N1", 1, true},
                {"FDX", "B744", "Freighter", "", 2, true}};
    ASSERT_TRUE(writeLiveriesScanned());
    const std::string text = gf_textOfFile("output/LiveriesScanned.xml");
    EXPECT_NE(std::string::npos,
              text.find(R"(<liv airl="FDX" type="B763" cargo="true" title="Freighter" atcid="N1" />)"))
        << text;
    liveries.clear();
    readLiveriesScanned();
    std::vector<std::string> read;
    for (const Livery& l : liveries) {
        read.push_back(format("{} {} {} {} {}", l.airline, l.model, l.title, l.atcid, l.cargo ? 1 : 0));
    }
    EXPECT_EQ((std::vector<std::string>{"FDX B744 Freighter  1", "FDX B763 Freighter N1 1",
                                        "RYR B738 Z <&\"> title EI-DAC 0"}),
              read);
}

TEST_F(ScanResultsTest, filesThatCannotBeUsedStopTheProgram)
{
    const std::pair<const char*, const char*> cases[] = {
        {"<liveries", "51: File output\\LiveriesScanned.xml not found"},
        {"<meta/>", "52: output\\LiveriesScanned.xml does not contain a <liveries> section"},
        {"<liveries/>", "533: output\\LiveriesScanned.xml does not contain liveries"}};
    for (const auto& [content, message] : cases) {
        workplace.folder.write("output/LiveriesScanned.xml", content);
        EXPECT_THAT([] { readLiveriesScanned(); }, testing::ThrowsMessage<UserErrorException>(message));
    }
}

TEST_F(ScanResultsTest, processingBuildsAllIndexesOnce)
{
    gf_clearMatchIndexes();
    liveries = {{"BAW", "A319", "A319 British Airways", "G-DBCJ", 1, false},
                {"BAW", "A320", "A320 British Airways", "", 1, false},
                {"ZZZ", "A320", "A320 white", "", 1, false},
                {"FDX", "B763", "B763 FedEx", "", 1, true},
                {"", "B763", "nobody's", "", 1, true}};
    ASSERT_TRUE(writeLiveriesScanned());
    processScannedLiveries();
    EXPECT_TRUE(liveries.empty());
    EXPECT_EQ(5, display.liveriesCount);
    EXPECT_EQ("A319 British Airways", findRegcodeTitle("GDBCJ"));
    EXPECT_EQ(2U, byModel[0]["A320"].size());
    EXPECT_EQ(0U, similarPerAirline["BAW"].count("A319")) << "has its own";
    EXPECT_TRUE(logged("3 airlines, 2 pax aircraft models and 1 cargo aircraft models\n"));
    EXPECT_TRUE(logged("Category Heavy: 0 pax liveries and 1 cargo liverie\n  B763\n"));

    std::filesystem::remove("output/LiveriesScanned.xml");
    liveries = {{"BAW", "A319", "late", "", 1, false}};
    processScannedLiveries();
    EXPECT_TRUE(liveries.empty());
    EXPECT_EQ(1U, byModel[0]["A319"].size());
}

TEST_F(ScanResultsTest, aCategoryWithoutLiveriesTakesItsOptionAway)
{
    gf_installLiveries({{"BAW", "A319", "A319", "", 1, false}, {"PVT", "R44", "R44", "", 1, false}});
    HIGH_PERF_AIRCRAFT.value = false;
    for (size_t i = 0; i < kCategoryCount; ++i) {
        gf_reportCategory(static_cast<AcCategory>(i));
    }
    EXPECT_FALSE(LIGHT_AIRCRAFT.value);
    EXPECT_TRUE(HELICOPTERS.value);
    EXPECT_FALSE(categoryInstalled[static_cast<size_t>(AcCategory::Light)]);
    EXPECT_TRUE(categoryInstalled[static_cast<size_t>(AcCategory::Rotorcraft)]);
    EXPECT_TRUE(logged("LIGHT_AIRCRAFT temporary switched off"));
    EXPECT_FALSE(logged("HIGH_PERF_AIRCRAFT temporary")) << "was off already";
}

TEST_F(ScanResultsTest, similarModelsTakeTheFirstOfTheirGroups)
{
    dbase.similarTypes = {{"A319", "A321"}, {"A319", "A320", "A320"}, {"A319", "B744"}, {"C25B"}};
    gf_installLiveries({{"BAW", "A319", "A319", "", 1, false},
                        {"BAW", "A320", "A320", "", 1, false},
                        {"BAW", "A321", "A321", "", 1, false},
                        {"BAW", "B744", "B744", "", 1, false}});
    // [A319 A320] sorts before [A319 A321] and [A319 B744]; C25B has nobody beside it.
    EXPECT_EQ((std::vector<std::string>{"A320"}), similarWithLiveries["A319"]);
    EXPECT_EQ((std::vector<std::string>{"A319"}), similarWithLiveries["A321"]);
    EXPECT_EQ(0U, similarWithLiveries.count("C25B"));
}

}  // namespace vlt
