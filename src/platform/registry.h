// Text values of the registry, read only: install paths and ports of other programs.
//
// On Linux the file registry.ini in the roaming application data stands for it, with one section
// for each key, such as [HKEY_LOCAL_MACHINE\SOFTWARE\Lockheed Martin\Prepar3D v5]. Read anew at
// each call; any thread.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace vlt {

// The root keys that may be asked for.
inline constexpr std::string_view kLocalMachineKey = "HKEY_LOCAL_MACHINE";
inline constexpr std::string_view kCurrentUserKey = "HKEY_CURRENT_USER";

// A text value, in UTF-8. `key` is the path below `root`, with backslashes. none if the key or the
// value isn't there. Letters' case doesn't matter in any of the three.
std::optional<std::string> gf_registryText(std::string_view root, std::string_view key,
                                           std::string_view value);

// Whether the key is there, with or without values, or any key below it.
bool gf_registryHasKey(std::string_view root, std::string_view key);

}  // namespace vlt
