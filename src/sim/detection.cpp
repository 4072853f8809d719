#include "sim/detection.h"

#include "core/base/display.h"
#include "core/base/errors.h"
#include "core/base/log.h"
#include "core/base/parameters.h"
#include "core/base/text.h"
#include "platform/registry.h"

#include <algorithm>
#include <string>

namespace vlt {

static constexpr const char* kNoPath =
    "No P3D install path detected, type full Install Path above, and press Enter";

static std::string lf_key(int version)
{
    return format("SOFTWARE\\Lockheed Martin\\Prepar3D v{}", version);
}

static bool lf_installed(int version)
{
    return gf_registryHasKey(kLocalMachineKey, lf_key(version));
}

static bool lf_foldersGiven()
{
    const auto given = [](const StringParameter& p) { return !p.value.empty(); };
    return std::ranges::any_of(lfolders, given) || std::ranges::any_of(afolders, given);
}

static void lf_takePath(int version)
{
    logLine(format("P3Dv{} {}", version, "detected"));
    const std::string path = gf_registryText(kLocalMachineKey, lf_key(version), "SetupPath").value_or("");
    if (path.empty()) {
        throw UserErrorException(kPlainUserError, kNoPath);
    }
    ALL_INSTALL_PATH.value = path;
    SIM_INSTALL_PATH.value = path;
    saveParameter(SIM_INSTALL_PATH);
}

void gf_detectSimulator()
{
    const bool five = lf_installed(5);
    const bool six = lf_installed(6);
    if (five && six) {
        throw UserErrorException(kPlainUserError, "More than one P3D version detected, type full Install "
                                                  "Path to wanted version above and press Enter");
    }
    if (five || six) {
        lf_takePath(five ? 5 : 6);
        return;
    }
    showMessage("P3D not detected?", false);
    if (!lf_foldersGiven()) {
        ALL_INSTALL_PATH.value = "";
        throw UserErrorException(kPlainUserError, kNoPath);
    }
}

}  // namespace vlt
