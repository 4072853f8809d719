#include "core/base/cfg_entries.h"

#include "core/base/text.h"
#include "platform/ini_text.h"

namespace vlt {

std::vector<CfgEntry> gf_cfgEntries(const std::vector<std::string>& lines)
{
    std::vector<CfgEntry> entries;
    for (const std::string& whole : lines) {
        const std::string_view line = gf_trimmed(whole);
        if (line.starts_with('[')) {
            entries.push_back({std::string(gf_trimmed(line.substr(1, line.find(']') - 1))), {}});
            continue;
        }
        const size_t equals = line.find('=');
        if (!entries.empty() && equals != std::string_view::npos && !line.starts_with(';') &&
            !line.starts_with("//")) {
            entries.back().values.emplace_back(gf_trimmed(line.substr(0, equals)),
                                               gf_trimmed(line.substr(equals + 1)));
        }
    }
    return entries;
}

std::string_view gf_cfgValue(const CfgEntry& entry, std::string_view key)
{
    for (const auto& [name, value] : entry.values) {
        if (gf_sameIgnoringCase(name, key)) {
            return value;
        }
    }
    return {};
}

static std::string lf_resolved(std::string_view text)
{
    constexpr std::pair<std::string_view, char> kEntities[] = {
        {"&amp;", '&'}, {"&lt;", '<'}, {"&gt;", '>'}, {"&quot;", '"'}, {"&apos;", '\''}};
    std::string result;
    while (!text.empty()) {
        size_t length = 1;
        char c = text.front();
        for (const auto& [entity, meaning] : kEntities) {
            if (text.starts_with(entity)) {
                length = entity.size();
                c = meaning;
            }
        }
        result += c;
        text.remove_prefix(length);
    }
    return result;
}

std::vector<CfgTag> gf_cfgTags(const std::vector<std::string>& lines)
{
    constexpr std::string_view kComment = "<!--";
    const std::string whole = format("{}", fmt::join(lines, "\n"));
    const std::string_view text = whole;
    std::vector<CfgTag> tags;
    size_t at = text.find('<');
    while (at != std::string_view::npos) {
        const bool comment = text.substr(at).starts_with(kComment);
        const size_t end = comment ? text.find("-->", at + kComment.size()) : text.find('>', at);
        if (end == std::string_view::npos) {
            break;
        }
        const size_t next = text.find('<', end);
        if (!comment) {
            const std::string_view tag = text.substr(at + 1, end - at - 1);
            const std::string_view inner = text.substr(end + 1, next == text.npos ? next : next - end - 1);
            tags.push_back(
                {gf_upperCase(tag.substr(0, tag.find_first_of(" \t\r\n"))), lf_resolved(gf_trimmed(inner))});
        }
        at = next;
    }
    return tags;
}

}  // namespace vlt
