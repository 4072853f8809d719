#include "link/position_server.h"

#include "core/base/clock.h"
#include "core/base/display.h"
#include "core/base/random.h"
#include "core/base/run_state.h"
#include "core/base/text.h"
#include "support/fresh_run.h"

#include <asio.hpp>
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <future>
#include <string>
#include <vector>

namespace vlt {

using asio::ip::tcp;

class PositionServerTest : public ::testing::Test
{
protected:
    void SetUp() override
    {
        gf_freshRun();
        simTimeMode = false;
        openServer("0");
    }
    void TearDown() override
    {
        closeServer();
        gf_freshRun();
        simTimeMode = false;
    }
    tcp::socket connect()
    {
        tcp::socket client(m_context);
        client.connect({asio::ip::address_v4::loopback(), gf_serverPort()});
        return client;
    }
    // The next line, without its end; what the end of the connection leaves.
    static std::string hear(tcp::socket& client)
    {
        std::string line;
        asio::error_code error;
        for (char c = 0; asio::read(client, asio::buffer(&c, 1), error) == 1 && c != '\n';) {
            line += c;
        }
        return line.ends_with('\r') ? line.substr(0, line.size() - 1) : line;
    }
    // A client that has answered the question for its version.
    tcp::socket meet(const std::string& reply = "{}")
    {
        auto waiting = std::async(std::launch::async, [] { return waitForRealTraffic(nullptr); });
        tcp::socket client = connect();
        EXPECT_EQ("Qs999=version", hear(client));
        asio::write(client, asio::buffer(reply));
        EXPECT_TRUE(waiting.get());
        return client;
    }
    UserAc user{.lat = 47.6, .lon = 11.5};

private:
    asio::io_context m_context;
};

TEST_F(PositionServerTest, servesOneClientThatMayComeAndGo)
{
    EXPECT_TRUE(settingsOpen);
    tcp::socket client = meet(std::string(20000, 'x'));  // longer than anybody wants to know
    EXPECT_FALSE(settingsOpen);
    EXPECT_TRUE(simTimeMode && display.realTraffic && clientConnected);
    EXPECT_EQ(ClientNews::None, sendPosition({}, nullptr)) << "the null position isn't told";
    sendSimTime(0);
    sendSimTime(1717665600);
    EXPECT_EQ("Qs123=1717665600000", hear(client));

    tcp::socket second = connect();
    EXPECT_EQ(ClientNews::None, sendPosition(user, nullptr));
    EXPECT_EQ("", hear(second)) << "it is hung up on";
    EXPECT_TRUE(hear(client).starts_with("Qs121=0;0;"));

    client.close();
    ClientNews news = ClientNews::None;
    for (int i = 0; i < 100 && news == ClientNews::None; ++i) {
        news = sendPosition(user, nullptr);
    }
    EXPECT_EQ(ClientNews::Gone, news);
    EXPECT_FALSE(display.realTraffic || clientConnected);

    static std::atomic<int> worked;
    worked = 0;
    auto waiting = std::async(std::launch::async, [this] { return sendPosition(user, [] { ++worked; }); });
    while (worked < 3) {
        std::this_thread::yield();
    }
    client = connect();
    EXPECT_EQ(ClientNews::Came, waiting.get());
    EXPECT_EQ(ClientNews::None, sendPosition(user, nullptr));
    EXPECT_TRUE(hear(client).starts_with("Qs121=")) << "no version is asked for again";
    auto talking = std::async(std::launch::async, [&client] {
        return asio::write(client, asio::buffer(std::string(20'000'000, 'x')));  // unasked for
    });
    for (int i = 0; i < 500 && talking.wait_for(std::chrono::milliseconds(1)) != std::future_status::ready;
         ++i) {
        EXPECT_EQ(ClientNews::None, sendPosition({.lat = 1, .lon = 1}, nullptr));
    }
    ASSERT_EQ(std::future_status::ready, talking.wait_for(std::chrono::seconds(0))) << "it is let talk";
    closeServer();
    std::string line;
    while ((line = hear(client)).starts_with("Qs121=")) {
    }
    EXPECT_EQ("exit", line);
    EXPECT_EQ("", hear(client));
    EXPECT_EQ(ClientNews::None, sendPosition(user, nullptr)) << "nobody listens";
}

TEST_F(PositionServerTest, whoDoesNotReadForASecondIsGone)
{
    const tcp::socket client = meet();
    const std::string much(50'000'000, 'x');
    const auto begin = std::chrono::steady_clock::now();
    EXPECT_FALSE(sendToClient(much));
    const std::chrono::duration<double> took = std::chrono::steady_clock::now() - begin;
    EXPECT_GT(took.count(), 0.9);
    EXPECT_LT(took.count(), 3);
    EXPECT_FALSE(clientConnected);
}

TEST_F(PositionServerTest, aStopEndsEveryWait)
{
    auto unvisited = std::async(std::launch::async, [] { return waitForRealTraffic(nullptr); });
    gf_requestStop(ExitReason::NewSettings, 2);
    EXPECT_FALSE(unvisited.get());
    EXPECT_EQ(ClientNews::None, sendPosition(user, nullptr)) << "the run ends";
    ASSERT_TRUE(gf_resetRunState());
    auto unanswered = std::async(std::launch::async, [] { return waitForRealTraffic(nullptr); });
    tcp::socket client = connect();
    hear(client);
    gf_requestStop(ExitReason::NewSettings, 2);
    EXPECT_FALSE(unanswered.get());
}

TEST_F(PositionServerTest, aPortThatIsTakenIsTold)
{
    try {
        openServer(std::to_string(gf_serverPort()));
        FAIL();
    } catch (const std::runtime_error& e) {
        EXPECT_TRUE(
            std::string(e.what()).starts_with(format("Bind failed at port {} with error ", gf_serverPort())));
    }
    EXPECT_THROW(openServer("no port"), std::runtime_error);
}

TEST(PositionText, tellsEveryFieldAsRadiansAndThousandths)
{
    gf_seedRandom(5);
    const auto between = [](double low, double high) {
        return low + (high - low) * static_cast<double>(gf_randomNumber() % 1'000'001) / 1e6;
    };
    for (int round = 0; round < 100; ++round) {
        const UserAc user{.lat = between(-90, 90),
                          .lon = between(-180, 180),
                          .pitch = between(-1, 1),
                          .bank = between(-3, 3),
                          .heading = between(0, 6.28),
                          .altitude = between(-1000, 60000),
                          .speed = round == 0 ? 1e-9 : between(0, 600)};
        const std::string line = gf_positionText(user);
        ASSERT_TRUE(line.starts_with("Qs121=") && line.ends_with("\r\n"));
        EXPECT_EQ(std::string::npos, line.find('e')) << line;
        const std::string values = line.substr(6, line.size() - 8);
        std::vector<double> read;
        for (const std::string_view field : gf_split(values, ';')) {
            read.push_back(std::stod(std::string(field)));
        }
        ASSERT_EQ(7U, read.size()) << line;
        const double radians = std::acos(-1.0) / 180;
        const double expected[] = {user.pitch * 1e5,    user.bank * 1e5,  user.heading,
                                   user.altitude * 1e3, user.speed * 1e3, user.lat * radians,
                                   user.lon * radians};
        const double off[] = {0.5, 0.5, 5e-7, 0.5, 0, 5e-7, 5e-7};
        for (size_t i = 0; i < read.size(); ++i) {
            EXPECT_NEAR(expected[i], read[i], off[i] * 1.001) << "field " << i << " of " << line;
        }
    }
    EXPECT_TRUE(gf_positionText({.pitch = -1e-9}).starts_with("Qs121=0;")) << "no negative zero";
}

TEST(SimTime, followsTheGregorianCalendar)
{
    int64_t days = 10957;  // from 1970 to 2000
    for (int year = 2000; year <= 2100; ++year) {
        const bool leap = year % 4 == 0 && (year % 100 != 0 || year % 400 == 0);
        for (int day = 1; day <= (leap ? 366 : 365); ++day, ++days) {
            ASSERT_EQ(days * 86400 + 45296,
                      gf_simTime({.zuluTime = 45296, .zuluDay = day, .zuluYear = year}));
        }
    }
    for (const UserAc& untold :
         {UserAc{}, UserAc{.zuluDay = 1, .zuluYear = 1969}, UserAc{.zuluDay = 367, .zuluYear = 2024},
          UserAc{.zuluTime = -1, .zuluDay = 1, .zuluYear = 2024},
          UserAc{.zuluDay = 1, .zuluYear = INT64_MAX}}) {
        EXPECT_EQ(0, gf_simTime(untold));
    }
}

}  // namespace vlt
