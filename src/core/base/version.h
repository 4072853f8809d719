// Versions of the program.
#pragma once

#include <compare>
#include <cstdint>
#include <string>

namespace vlt {

// All zero: no version is known.
struct VersionData {
    int32_t major = 0;
    int32_t minor = 0;
    int32_t patch = 0;
    auto operator<=>(const VersionData&) const = default;
};

// The version that this program is, as the build says.
extern const VersionData kProgramVersion;

// "{}.{}.{}"
std::string gf_text(const VersionData& version);

// Three numbers with one character between each, or a JSON object with the keys major, minor, patch. An
// empty text gives no version; anything else that can't be read is shown to the user and gives none.
VersionData gf_parseVersion(const std::string& text);

}  // namespace vlt
