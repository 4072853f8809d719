// Where the simulator keeps its lists of libraries, and what the paths in them mean.
//
// Worker thread; no state but the parameters.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

namespace vlt {

// The simulator's major version: as its install path tells, else as P3D_VERSION does.
int gf_simVersion();

// The simulator's folder below those of application data.
std::filesystem::path gf_simFolderBelow();

// `path` if it is absolute, else below `folder`; both and the result in the Windows form.
std::string gf_belowFolder(std::string_view folder, std::string_view path);
// The same below the folder in which the simulator is installed.
std::string gf_belowSimulator(std::string_view path);

}  // namespace vlt
