// What SimConnect.cfg decides, and the order of the ways that follows from it.
#include "sim/transport/config.h"

#include "sim/transport/chain.h"
#include "transport/sim_world.h"

#include <gtest/gtest.h>

namespace vlt {

class SimConfigTest : public testing::Test
{
protected:
    // Reads up to three files, in their order; an empty text is no file.
    std::optional<SimConfig> read(const std::vector<std::string>& files, uint32_t index = 0)
    {
        const TempFolder configs;
        std::vector<std::filesystem::path> folders;
        for (size_t i = 0; i < files.size(); ++i) {
            folders.push_back(configs.path() / std::to_string(i));
            if (!files[i].empty()) {
                configs.write(std::to_string(i) + "/SimConnect.cfg", files[i]);
            }
        }
        return gf_readSimConfig(folders, index);
    }

    SimWorld world;
};

TEST_F(SimConfigTest, readsKeysAndDefaults)
{
    world.writeRegistry("SimConnect_Port_IPv4=5111\nSimConnect_Port_IPv6=5222\n");
    const std::string front = "[SimConnect]\n";
    const struct {
        const char* what;
        std::vector<std::string> files;
        SimConfig expected;
    } cases[] = {
        {"no file", {"", "", ""}, {}},
        {"all keys",
         {front + "Protocol=IPv6\nAddress=fe80::1\nPort=500\nMaxReceiveSize=50000\nDisableNagle=1\n"},
         {SimProtocol::IPv6, "fe80::1", "500", 50000, true}},
        {"case of letters",
         {"[simconnect]\nPROTOCOL=ipV4\nport=500\n"},
         {SimProtocol::IPv4, "", "500", 41088, false}},
        {"pipe is auto", {front + "Protocol=IPv4", front + "Protocol=pipe"}, {}},
        {"other words",
         {front + "Protocol=IPv6", front + "Protocol=TCP"},
         {SimProtocol::IPv6, "", "", 41088, false}},
        {"no port with IPv4", {front + "Protocol=IPv4"}, {SimProtocol::IPv4, "", "", 41088, false}},
        {"port of an earlier file gives way to the registry",
         {front + "Port=500", front + "Protocol=IPv4"},
         {SimProtocol::IPv4, "", "5111", 41088, false}},
        {"of the right family",
         {front + "Port=500", front + "Protocol=IPv6"},
         {SimProtocol::IPv6, "", "5222", 41088, false}},
        {"port of the same file stays",
         {front + "Protocol=IPv4\nPort=500"},
         {SimProtocol::IPv4, "", "500", 41088, false}},
        {"auto leaves the port",
         {front + "Port=500", front + "Protocol=Auto"},
         {SimProtocol::Auto, "", "500", 41088, false}},
        {"later file over earlier",
         {front + "Address=a\nPort=1", "", front + "Address=b"},
         {SimProtocol::Auto, "b", "1", 41088, false}},
        {"small receive size", {front + "MaxReceiveSize=1024"}, {}},
        {"receive size never falls",
         {front + "MaxReceiveSize=60000", front + "MaxReceiveSize=50000"},
         {SimProtocol::Auto, "", "", 60000, false}},
        {"receive size without sense", {front + "MaxReceiveSize=-1"}, {}},
        {"receive size that is no number", {front + "MaxReceiveSize=many"}, {}},
        {"huge receive size",
         {front + "MaxReceiveSize=99999999999"},
         {SimProtocol::Auto, "", "", 0xFFFFFFFF, false}},
        {"nagle by any number", {front + "DisableNagle=-3"}, {SimProtocol::Auto, "", "", 41088, true}},
        {"nagle off again", {front + "DisableNagle=1", front + "DisableNagle=0"}, {}},
        {"nagle by a word", {front + "DisableNagle=yes"}, {}},
        {"section of another index", {"[SimConnect.1]\nPort=500"}, {}},
    };
    for (const auto& c : cases) {
        const auto config = read(c.files);
        ASSERT_TRUE(config) << c.what;
        EXPECT_EQ(c.expected.protocol, config->protocol) << c.what;
        EXPECT_EQ(c.expected.address, config->address) << c.what;
        EXPECT_EQ(c.expected.port, config->port) << c.what;
        EXPECT_EQ(c.expected.maxReceiveSize, config->maxReceiveSize) << c.what;
        EXPECT_EQ(c.expected.disableNagle, config->disableNagle) << c.what;
    }
}

TEST_F(SimConfigTest, losesThePortWhenTheRegistryHasNone)
{
    EXPECT_EQ("", read({"[SimConnect]\nPort=500", "[SimConnect]\nProtocol=IPv4"})->port);
    world.writeRegistry("SimConnect_Port_IPv4=000000000000000000500\n");
    EXPECT_EQ("", read({"[SimConnect]\nPort=500", "[SimConnect]\nProtocol=IPv4"})->port);
}

TEST_F(SimConfigTest, needsTheSectionOfAnIndexInAnyFile)
{
    const std::string second = "[SimConnect.2]\nPort=600";
    EXPECT_FALSE(read({"[SimConnect]\nPort=500", "", ""}, 2));
    EXPECT_FALSE(read({"[SimConnect.22]\nPort=500"}, 2));
    EXPECT_EQ("600", read({"[SimConnect]\nPort=500", "", second}, 2)->port);
    EXPECT_EQ("601", read({second, "[SimConnect.2]\nPort=601"}, 2)->port);
}

TEST_F(SimConfigTest, looksIntoThreeFolders)
{
    const std::vector<std::filesystem::path> expected = {
        world.folder.path() / "public", world.folder.path() / "documents", std::filesystem::current_path()};
    EXPECT_EQ(expected, gf_simConfigFolders());
}

// The attempts of a chain as one line, the one at `success` (from 1) being the good one.
static std::string lf_attempts(const SimConfig& config, int success = 0)
{
    std::string line;
    int count = 0;
    const bool connected = gf_connectByChain(config, [&](const SimTarget& target) {
        constexpr const char* kRoads[] = {"pipe ", "v6 ", "v4 "};
        line += kRoads[static_cast<int>(target.road)];
        line += target.road == SimRoad::Pipe ? target.name : target.host + " " + target.name;
        line += "; ";
        return ++count == success;
    });
    return line + (connected ? "connected" : "failed");
}

TEST_F(SimConfigTest, leadsToTheWaysInTheirOrder)
{
    world.writeRegistry("SimConnect_Port_IPv4=5111\nSimConnect_Port_IPv6=5222\n");
    const std::string pipe = std::string("pipe ") + kPipeName + "; ";
    const struct {
        const char* what;
        SimConfig config;
        int success;
        std::string expected;
    } cases[] = {
        {"all four", {}, 0, pipe + "v6 ::1 5222; v4 127.0.0.1 5111; " + pipe + "failed"},
        {"first", {}, 1, pipe + "connected"},
        {"second", {}, 2, pipe + "v6 ::1 5222; connected"},
        {"third", {}, 3, pipe + "v6 ::1 5222; v4 127.0.0.1 5111; connected"},
        {"fourth", {}, 4, pipe + "v6 ::1 5222; v4 127.0.0.1 5111; " + pipe + "connected"},
        {"pipe by name, default name at the end",
         {SimProtocol::Auto, "", "own", kMinReceiveSize, false},
         0,
         "pipe \\\\.\\pipe\\own; v6 ::1 5222; v4 127.0.0.1 5111; " + pipe + "failed"},
        {"this machine by its short name",
         {SimProtocol::Auto, ".", "", kMinReceiveSize, false},
         2,
         pipe + "v6 ::1 5222; connected"},
        {"another machine's pipe",
         {SimProtocol::Auto, "simpc", "", kMinReceiveSize, false},
         0,
         "pipe \\\\simpc\\pipe\\Lockheed Martin Prepar3D v5\\SimConnect; failed"},
        {"IPv6 of another machine",
         {SimProtocol::IPv6, "fe80::1", "500", kMinReceiveSize, false},
         0,
         "v6 fe80::1 500; failed"},
        {"IPv6 of this machine",
         {SimProtocol::IPv6, "::1", "500", kMinReceiveSize, false},
         0,
         "v6 ::1 500; v4 127.0.0.1 5111; " + pipe + "failed"},
        {"IPv6 of this machine without a port",
         {SimProtocol::IPv6, "::1", "", kMinReceiveSize, false},
         1,
         "v4 127.0.0.1 5111; connected"},
        {"IPv4 of another machine",
         {SimProtocol::IPv4, "10.0.0.7", "500", kMinReceiveSize, false},
         0,
         "v4 10.0.0.7 500; failed"},
        {"IPv4 of this machine",
         {SimProtocol::IPv4, "127.0.0.1", "500", kMinReceiveSize, false},
         0,
         "v4 127.0.0.1 500; " + pipe + "failed"},
        {"IPv4 with nothing else", {SimProtocol::IPv4, "", "", kMinReceiveSize, false}, 0, "failed"},
        {"IPv4 without an address",
         {SimProtocol::IPv4, "", "500", kMinReceiveSize, false},
         0,
         "v4  500; failed"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.expected, lf_attempts(c.config, c.success)) << c.what;
    }
}

TEST_F(SimConfigTest, skipsSocketsWithoutAPort)
{
    const std::string pipe = std::string("pipe ") + kPipeName + "; ";
    EXPECT_EQ(pipe + pipe + "failed", lf_attempts({}));
}

}  // namespace vlt
