#include "core/base/version.h"

#include "core/base/text.h"

#include <nlohmann/json.hpp>

#include <regex>
#include <stdexcept>

namespace vlt {

const VersionData kProgramVersion{VELATRA_VERSION_MAJOR, VELATRA_VERSION_MINOR, VELATRA_VERSION_PATCH};

std::string gf_text(const VersionData& version)
{
    return format("{}.{}.{}", version.major, version.minor, version.patch);
}

static int32_t lf_number(const std::string& digits)
{
    try {
        return std::stoi(digits);
    } catch (const std::exception&) {
        throw std::runtime_error("parse error in version string");
    }
}

ParsedVersion gf_parseVersion(const std::string& text)
{
    if (text.empty()) {
        return {};
    }
    try {
        // The text is a line of a file of ours: a longer one than this can't be a version, and the
        // standard's regular expressions recurse once per character.
        constexpr size_t kLongestVersion = 200;
        if (text.size() > kLongestVersion) {
            throw std::runtime_error("parse error in version string");
        }
        static const std::regex kThreeNumbers(R"((\d+).(\d+).(\d+))");
        std::smatch groups;
        if (std::regex_match(text, groups, kThreeNumbers)) {
            return {{lf_number(groups[1]), lf_number(groups[2]), lf_number(groups[3])}, {}};
        }
        const auto json = nlohmann::json::parse(text);
        return {{json.value("major", 0), json.value("minor", 0), json.value("patch", 0)}, {}};
    } catch (const std::exception& e) {
        return {{}, e.what()};
    }
}

}  // namespace vlt
