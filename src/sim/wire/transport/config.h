// What `SimConnect.cfg` says about the way to the simulator.
//
// Read anew for each connection, since users change the file while the program waits for the
// simulator. Stateless; any thread.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace vlt {

inline constexpr uint32_t kMinReceiveSize = 41088;  // bytes; no setting makes it smaller

// Auto and Pipe are one setting.
enum class SimProtocol { Auto, IPv6, IPv4 };

struct SimConfig {
    SimProtocol protocol = SimProtocol::Auto;
    std::string address;                        // host; empty for this machine
    std::string port;                           // number, or for Auto the pipe's name
    uint32_t maxReceiveSize = kMinReceiveSize;  // bytes; a longer message breaks the connection
    bool disableNagle = false;                  // send small packets at once
};

// Where the file is looked for, in this order: public documents, documents, current directory.
std::vector<std::filesystem::path> gf_simConfigFolders();

// Reads the section of `configIndex` from the files in `folders`, a later file over an earlier one.
// none if the index isn't 0 and no file has its section.
std::optional<SimConfig> gf_readSimConfig(std::span<const std::filesystem::path> folders,
                                          uint32_t configIndex);

// The port on which the simulator serves, as the simulator itself left it in the registry. Empty if
// it didn't, and for a value that is no port's text by its length. `protocol` is IPv6 or IPv4.
std::string gf_simPortFromRegistry(SimProtocol protocol);

}  // namespace vlt
