#include "link/qnh_reader.h"

#include "core/base/run_state.h"
#include "support/fresh_run.h"
#include "traffic/traffic.h"

#include <gtest/gtest.h>

#include <string>

namespace vlt {

class QnhReaderTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        gf_freshRun();
        realTrafficHere = true;
        qnhReader.onStarted();
    }
    static int32_t hear(const std::string& datagram)
    {
        qnhReader.take(datagram);
        return currentQnh;
    }
};

TEST_F(QnhReaderTest, takesThePressureInEitherUnitAndNothingElse)
{
    constexpr int32_t kBefore = 999;
    const struct {
        const char* datagram;
        int32_t expected;
    } cases[] = {
        {R"({"QNH": 1021, "TA": 5000})", 1021},
        {R"({"QNH": 2992})", 1013},
        {R"({"QNH": 3005.4})", 1018},
        {R"({"QNH": 1002.6})", 1003},
        {R"({"QNH": "1030"})", 1030},
        {R"({"QNH": "2950 in"})", 999},
        {R"({"QNH": 1080})", 1080},
        {R"({"QNH": 1081})", kBefore},
        {R"({"QNH": 930})", 930},
        {R"({"QNH": 929})", kBefore},
        {R"({"QNH": 1e300})", kBefore},
        {R"({"QNH": 18446744073709551615})", kBefore},
        {R"({"QNH": "99999999999"})", kBefore},
        {R"({"QNH": "high"})", kBefore},
        {R"({"QNH": true})", kBefore},
        {R"({"QNH": null})", kBefore},
        {R"({"QNH": {}})", kBefore},
        {R"({"qnh": 1021})", kBefore},
        {R"([1021])", kBefore},
        {R"({"QNH": 1021)", kBefore},
    };
    for (const auto& c : cases) {
        currentQnh = kBefore;
        EXPECT_EQ(c.expected, hear(c.datagram)) << c.datagram;
    }
}

TEST_F(QnhReaderTest, theLampIsSilentUntilItHears)
{
    EXPECT_EQ(FeedState::Silent, qnhReader.state);
    hear("no weather");
    EXPECT_EQ(FeedState::Silent, qnhReader.state);
    hear(R"({"QNH": 1013})");  // the pressure that stands there already
    EXPECT_EQ(FeedState::Receiving, qnhReader.state);
    qnhReader.lookWhetherSilent();
    EXPECT_EQ(FeedState::Receiving, qnhReader.state);
    qnhReader.lookWhetherSilent();
    EXPECT_EQ(FeedState::Silent, qnhReader.state);
    hear(R"({"QNH": 1005})");
    EXPECT_EQ(FeedState::Receiving, qnhReader.state);
    qnhReader.forget();  // RealTraffic has gone
    EXPECT_EQ(kStandardQnh, currentQnh);
    EXPECT_EQ(FeedState::Silent, qnhReader.state);
    qnhReader.onStopped();
    qnhReader.lookWhetherSilent();
    EXPECT_EQ(FeedState::Stopped, qnhReader.state);
}

}  // namespace vlt
