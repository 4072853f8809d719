// What SimConnect.cfg decides, and the order of the ways that follows from it.
#include "sim/wire/transport/config.h"

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
    // Reads up to three files, in their order; an empty text is no file.
    static std::optional<SimConfig> read(const std::vector<std::string>& files, uint32_t index = 0)
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
    // The same for files whose section is [SimConnect]; as one line: protocol, address, port, sizes.
    static std::string told(std::vector<std::string> files)
    {
        for (std::string& file : files) {
            file.insert(0, file.empty() || file.starts_with('[') ? "" : "[SimConnect]\n");
        }
        const SimConfig c = read(files).value();
        constexpr const char* kProtocols[] = {"auto", "v6", "v4"};
        std::string line = kProtocols[c.protocol == SimProtocol::IPv6   ? 1
                                      : c.protocol == SimProtocol::IPv4 ? 2
                                                                        : 0];
        line += (c.address.empty() ? " -" : " " + c.address) + (c.port.empty() ? " -" : " " + c.port);
        return line + " " + std::to_string(c.maxReceiveSize) + (c.disableNagle ? " nodelay" : "");
    }
    // The attempts of a chain as one line, the one at `success` (from 1) being the good one.
    static std::string attempts(const std::string& file, int success = 0)
    {
        std::string line;
        int count = 0;
        const bool connected =
            gf_connectByChain(*read({"[SimConnect]\n" + file}), [&](const SimTarget& target) {
                constexpr const char* kRoads[] = {"pipe ", "v6 ", "v4 "};
                line += kRoads[static_cast<int>(target.road)];
                line += target.road == SimRoad::Pipe ? target.name : target.host + " " + target.name;
                line += "; ";
                return ++count == success;
            });
        return line + (connected ? "connected" : "failed");
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
        {"case of letters", {"[simconnect]\nPROTOCOL=ipV4\nport=500\n"}, "v4 - 500 41088"},
        {"pipe is auto", {"Protocol=IPv4", "Protocol=pipe"}, "auto - - 41088"},
        {"other words", {"Protocol=IPv6", "Protocol=TCP"}, "v6 - - 41088"},
        {"earlier port gives way to the registry", {"Port=500", "Protocol=IPv4"}, "v4 - 5111 41088"},
        {"of the right family", {"Port=500", "Protocol=IPv6"}, "v6 - 5222 41088"},
        {"port of the same file stays", {"Protocol=IPv4\nPort=500"}, "v4 - 500 41088"},
        {"auto leaves the port", {"Port=500", "Protocol=Auto"}, "auto - 500 41088"},
        {"later file over earlier", {"Address=a\nPort=1", "", "Address=b"}, "auto b 1 41088"},
        {"small receive size", {"MaxReceiveSize=1024"}, "auto - - 41088"},
        {"receive size never falls", {"MaxReceiveSize=60000", "MaxReceiveSize=50000"}, "auto - - 60000"},
        {"receive size without sense", {"MaxReceiveSize=-1"}, "auto - - 41088"},
        {"receive size that is no number", {"MaxReceiveSize=many"}, "auto - - 41088"},
        {"huge receive size", {"MaxReceiveSize=99999999999"}, "auto - - 4294967295"},
        {"nagle by any number", {"DisableNagle=-3"}, "auto - - 41088 nodelay"},
        {"nagle off again", {"DisableNagle=1", "DisableNagle=0"}, "auto - - 41088"},
        {"nagle by a word", {"DisableNagle=yes"}, "auto - - 41088"},
        {"section of another index", {"[SimConnect.1]\nPort=500"}, "auto - - 41088"},
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

TEST_F(SimConfigTest, leadsToTheWaysInTheirOrder)
{
    const std::string pipe = std::string("pipe ") + kPipeName + "; ";
    const std::string six = "v6 ::1 5222; ";
    const std::string four = "v4 127.0.0.1 5111; ";
    const struct {
        const char* file;
        int success;
        std::string expected;
    } cases[] = {
        {"", 0, pipe + six + four + pipe + "failed"},
        {"", 1, pipe + "connected"},
        {"", 2, pipe + six + "connected"},
        {"", 3, pipe + six + four + "connected"},
        {"", 4, pipe + six + four + pipe + "connected"},
        {"Port=own", 0, "pipe \\\\.\\pipe\\own; " + six + four + pipe + "failed"},
        {"Address=.", 2, pipe + six + "connected"},
        {"Address=simpc", 0, "pipe \\\\simpc\\pipe\\Lockheed Martin Prepar3D v5\\SimConnect; failed"},
        {"Protocol=IPv6\nAddress=fe80::1\nPort=500", 0, "v6 fe80::1 500; failed"},
        {"Protocol=IPv6\nAddress=::1\nPort=500", 0, "v6 ::1 500; " + four + pipe + "failed"},
        {"Protocol=IPv6\nAddress=::1", 1, four + "connected"},
        {"Protocol=IPv4\nAddress=10.0.0.7\nPort=500", 0, "v4 10.0.0.7 500; failed"},
        {"Protocol=IPv4\nAddress=127.0.0.1\nPort=500", 0, "v4 127.0.0.1 500; " + pipe + "failed"},
        {"Protocol=IPv4", 0, "failed"},
        {"Protocol=IPv4\nPort=500", 0, "v4  500; failed"},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(c.expected, attempts(c.file, c.success)) << c.file;
    }
    world.writeRegistry("");
    EXPECT_EQ(pipe + pipe + "failed", attempts("")) << "sockets without a port are left out";
}

}  // namespace vlt
