// Where a local pipe lives on a system that has no named pipes: a Unix socket in a file.
//
// Both ends ask here, so that they meet. Stateless; any thread.
#pragma once

#include <filesystem>
#include <string_view>

namespace vlt {

// The pipe is of this machine: its name has no host, or the host is a dot.
bool gf_isPipeOfThisMachine(std::string_view pipeName);

// The socket's file for a pipe's name such as `\\.\pipe\Lockheed Martin Prepar3D v5\SimConnect`:
// the folder `pipe` of the runtime folder and the name behind `\\host\pipe\`, its backslashes as
// slashes. A name without that front is taken as it stands. Creates nothing; a server makes the
// parent folder.
std::filesystem::path gf_localPipeFile(std::string_view pipeName);

}  // namespace vlt
