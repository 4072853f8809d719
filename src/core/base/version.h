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

// What a text told of a version.
struct ParsedVersion {
    VersionData version;
    std::string failed;  // why it couldn't be read; empty when it could
};

// Three numbers with one character between each, or a JSON object with the keys major, minor, patch. An
// empty text gives no version.
ParsedVersion gf_parseVersion(const std::string& text);

}  // namespace vlt
