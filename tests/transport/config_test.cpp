// What SimConnect.cfg decides, and the order of the ways that follows from it.
#include "sim/wire/transport/config.h"

#include "core/base/text.h"
#include "sim/wire/transport/chain.h"
#include "transport/sim_world.h"

#include <gtest/gtest.h>

namespace vlt {

class SimConfigTest : public testing::Test
{
protected:
    SimConfigTest()
    {
        world.writeRegistry("SimConnect_Port_IPv4=5111\nSimConnect_Port_IPv6=5222\n");
    }
    // Reads up to three files, in their order; an empty text is no file. [SimConnect] unless told.
    static std::optional<SimConfig> read(const std::vector<std::string>& files, uint32_t index = 0)
    {
        const TempFolder configs;
        std::vector<std::filesystem::path> folders;
        for (const std::string& file : files) {
            folders.push_back(configs.path() / std::to_string(folders.size()));
            if (!file.empty()) {
                configs.write(folders.back().string() + "/SimConnect.cfg",
                              (file[0] == '[' ? "" : "[SimConnect]\n") + file);
            }
        }
        return gf_readSimConfig(folders, index);
    }
    // The attempts of a chain, of which the one at `success` (from 1) is the good one.
    static std::vector<std::string> attempts(const SimConfig& config, size_t success = 0)
    {
        std::vector<std::string> made;
        const bool connected = gf_connectByChain(config, [&](const SimTarget& target) {
            constexpr const char* kRoads[] = {"pipe", "v6", "v4"};
            const std::string host = target.road == SimRoad::Pipe ? "" : " " + target.host;
            made.push_back(kRoads[static_cast<int>(target.road)] + host + " " + target.name);
            return made.size() == success;
        });
        EXPECT_EQ(success != 0, connected);
        return made;
    }

    SimWorld world;
};

TEST_F(SimConfigTest, readsKeysAndDefaults)
{
    const struct {
        const char* what;
        std::vector<std::string> files;
        const char* expected;
    } cases[] = {
        {"no file", {"", "", ""}, "auto - - 41088"},
        {"all keys",
         {"Protocol=IPv6\nAddress=fe80::1\nPort=500\nMaxReceiveSize=50000\nDisableNagle=1\n"},
         "v6 fe80::1 500 50000 nodelay"},
        {"pipe is auto", {"Protocol=IPv4", "Protocol=pipe"}, "auto - - 41088"},
        {"other words", {"Protocol=IPv6", "Protocol=TCP"}, "v6 - - 41088"},
        {"earlier port gives way to the registry", {"Port=500", "Protocol=IPv4"}, "v4 - 5111 41088"},
        {"of the right family", {"Port=500", "Protocol=IPv6"}, "v6 - 5222 41088"},
        {"port of the same file stays", {"Protocol=IPv4\nPort=500"}, "v4 - 500 41088"},
        {"auto leaves the port", {"Port=500", "Protocol=Auto"}, "auto - 500 41088"},
        {"later file over earlier", {"Address=a\nPort=1", "", "Address=b"}, "auto b 1 41088"},
        {"small receive size", {"MaxReceiveSize=1024"}, "auto - - 41088"},
        {"receive size never falls", {"MaxReceiveSize=60000", "MaxReceiveSize=50000"}, "auto - - 60000"},
        {"receive size that is no number", {"MaxReceiveSize=many"}, "auto - - 41088"},
        {"huge receive size", {"MaxReceiveSize=99999999999"}, "auto - - 4294967295"},
        {"nagle by any number", {"DisableNagle=-3"}, "auto - - 41088 nodelay"},
        {"nagle off again", {"DisableNagle=1", "DisableNagle=0"}, "auto - - 41088"},
        {"nagle by a word", {"DisableNagle=yes"}, "auto - - 41088"},
    };
    // As one line: protocol, address, port, sizes.
    const auto told = [](const std::vector<std::string>& files) {
        const SimConfig c = read(files).value();
        const char* protocol = c.protocol == SimProtocol::IPv6   ? "v6"
                               : c.protocol == SimProtocol::IPv4 ? "v4"
                                                                 : "auto";
        return format("{} {} {} {}{}", protocol, c.address.empty() ? "-" : c.address,
                      c.port.empty() ? "-" : c.port, c.maxReceiveSize, c.disableNagle ? " nodelay" : "");
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.expected, told(c.files)) << c.what;
    }
    for (const char* registry : {"", "SimConnect_Port_IPv4=000000000000000000500\n"}) {
        world.writeRegistry(registry);
        EXPECT_EQ("v4 - - 41088", told({"Port=500", "Protocol=IPv4"})) << "no usable port " << registry;
    }
}

TEST_F(SimConfigTest, needsTheSectionOfAnIndexInAnyFile)
{
    EXPECT_FALSE(read({"Port=500", "[SimConnect.22]\nPort=500", ""}, 2));
    EXPECT_EQ("600", read({"Port=500", "", "[SimConnect.2]\nPort=600"}, 2)->port);
}

TEST_F(SimConfigTest, looksIntoThreeFolders)
{
    const std::vector<std::filesystem::path> expected = {
        world.folder.path() / "public", world.folder.path() / "documents", std::filesystem::current_path()};
    EXPECT_EQ(expected, gf_simConfigFolders());
}

TEST_F(SimConfigTest, leadsToTheWaysInTheirOrder)
{
    const std::string pipe = std::string("pipe ") + kPipeName;
    const std::string six = "v6 ::1 5222";
    const std::string four = "v4 127.0.0.1 5111";
    const std::pair<const char*, std::vector<std::string>> cases[] = {
        {"", {pipe, six, four, pipe}},
        {"Port=own", {"pipe \\\\.\\pipe\\own", six, four, pipe}},
        {"Address=.", {pipe, six, four, pipe}},
        {"Address=simpc", {"pipe \\\\simpc\\pipe\\Lockheed Martin Prepar3D v5\\SimConnect"}},
        {"Protocol=IPv6\nAddress=fe80::1\nPort=500", {"v6 fe80::1 500"}},
        {"Protocol=IPv6\nAddress=::1\nPort=500", {"v6 ::1 500", four, pipe}},
        {"Protocol=IPv6\nAddress=::1", {four, pipe}},
        {"Protocol=IPv4\nAddress=10.0.0.7\nPort=500", {"v4 10.0.0.7 500"}},
        {"Protocol=IPv4\nAddress=127.0.0.1\nPort=500", {"v4 127.0.0.1 500", pipe}},
        {"Protocol=IPv4", {}},
        {"Protocol=IPv4\nPort=500", {"v4  500"}},
    };
    for (const auto& [file, expected] : cases) {
        const SimConfig config = *read({file});
        EXPECT_EQ(expected, attempts(config)) << file;
        for (size_t success = 1; success <= expected.size(); ++success) {
            EXPECT_EQ(success, attempts(config, success).size()) << "none after the good one, " << file;
        }
    }
    world.writeRegistry("");
    EXPECT_EQ((std::vector{pipe, pipe}), attempts({})) << "sockets without a port are left out";
}

}  // namespace vlt
