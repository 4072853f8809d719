#include "core/base/sim_folders.h"

#include "core/base/parameters.h"
#include "core/base/text.h"

#include <algorithm>

namespace vlt {

int gf_simVersion()
{
    const std::string path = gf_upperCase(SIM_INSTALL_PATH.value.load());
    for (const int version : {5, 6}) {
        if (path.find(format("V{}", version)) != std::string::npos) {
            return version;
        }
    }
    return P3D_VERSION.value;
}

std::filesystem::path gf_simFolderBelow()
{
    return std::filesystem::path("Lockheed Martin") / format("Prepar3D v{}", gf_simVersion());
}

std::string gf_belowFolder(std::string_view folder, std::string_view path)
{
    std::string below(path);
    std::replace(below.begin(), below.end(), '/', '\\');
    const bool absolute = below.starts_with('\\') || (below.size() > 1 && below[1] == ':');
    if (absolute) {
        return below;
    }
    while (below.starts_with(".\\")) {
        below.erase(0, 2);
    }
    std::string whole(folder);
    std::replace(whole.begin(), whole.end(), '/', '\\');
    while (whole.ends_with('\\')) {
        whole.pop_back();
    }
    return whole + '\\' + below;
}

std::string gf_belowSimulator(std::string_view path)
{
    return gf_belowFolder(SIM_INSTALL_PATH.value.load(), path);
}

}  // namespace vlt
