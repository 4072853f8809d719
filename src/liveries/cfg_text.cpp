#include "liveries/cfg_text.h"

#include "core/base/encoding.h"
#include "core/base/text.h"
#include "core/base/text_files.h"
#include "platform/ini_text.h"

#include <algorithm>
#include <charconv>
#include <fstream>

namespace vlt {

constexpr std::string_view kSpace = " \t\n\v\f\r";
constexpr std::string_view kHeader = "[fltsim.";

std::string gf_cfgTextOf(std::string bytes)
{
    constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
    if (bytes.starts_with(kUtf8Mark)) {
        bytes.erase(0, kUtf8Mark.size());
    }
    std::erase(bytes, '\0');
    return gf_asUtf8(std::move(bytes));
}

static bool lf_isUtf16(std::string_view bytes)
{
    return bytes.starts_with("\xFF\xFE") || bytes.starts_with("\xFE\xFF");
}

// The file's bytes; none if it can't be opened. One byte beyond the longest tells that it is too long.
static std::optional<std::string> lf_bytes(const std::filesystem::path& path)
{
    std::ifstream file;
    file.rdbuf()->pubsetbuf(nullptr, 0);
    file.open(path, std::ios::binary);
    if (!file) {
        return std::nullopt;
    }
    std::error_code error;
    const uintmax_t told = std::filesystem::file_size(path, error);
    std::string bytes(error ? 0 : std::min<uintmax_t>(told, kMaxCfgBytes + 1), '\0');
    file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<size_t>(std::max<std::streamsize>(file.gcount(), 0)));
    return file.bad() ? std::nullopt : std::optional(std::move(bytes));
}

CfgText gf_readCfgText(const std::filesystem::path& path)
{
    std::optional<std::string> bytes = lf_bytes(path);
    if (!bytes) {
        readExtTextFile(path);  // for the reason in the log
        return {};
    }
    if (bytes->size() > kMaxCfgBytes) {
        return {{}, true, true, {}};
    }
    if (lf_isUtf16(*bytes)) {
        const ExtText text = readExtTextFile(path);
        return {format("{}", fmt::join(text.lines, "\n")), true, false, text.forUser};
    }
    return {gf_cfgTextOf(std::move(*bytes)), true, false, {}};
}

std::vector<std::string_view> gf_cfgLines(std::string_view text)
{
    std::vector<std::string_view> lines;
    lines.reserve(static_cast<size_t>(std::count(text.begin(), text.end(), '\n')) + 1);
    while (!text.empty()) {
        const size_t end = std::min(text.find('\n'), text.size());
        std::string_view line = text.substr(0, end);
        if (line.ends_with('\r')) {
            line.remove_suffix(1);
        }
        lines.push_back(line);
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return lines;
}

std::string_view gf_withoutSpace(std::string_view text)
{
    const size_t first = text.find_first_not_of(kSpace);
    if (first == std::string_view::npos) {
        return {};
    }
    return text.substr(first, text.find_last_not_of(kSpace) - first + 1);
}

// --- headers

// What follows "[fltsim." in a line that has it in any case of its letters.
static std::optional<std::string_view> lf_afterHeader(std::string_view line)
{
    for (size_t at = line.find('['); at != std::string_view::npos; at = line.find('[', at + 1)) {
        if (gf_sameIgnoringCase(line.substr(at, kHeader.size()), kHeader)) {
            return line.substr(at + kHeader.size());
        }
    }
    return std::nullopt;
}

// The digits of a header that is one from end to end; empty for one without a number.
static std::string_view lf_digits(std::string_view line, std::string_view afterHeader)
{
    const std::string_view front = line.substr(0, line.size() - afterHeader.size() - kHeader.size());
    const size_t digits = std::min(afterHeader.find_first_not_of("0123456789"), afterHeader.size());
    const std::string_view rest = afterHeader.substr(digits);
    const bool whole =
        gf_withoutSpace(front).empty() && rest.starts_with(']') && gf_withoutSpace(rest.substr(1)).empty();
    return whole ? afterHeader.substr(0, digits) : std::string_view();
}

// The digits of a header; none if the line isn't one.
static std::optional<std::string_view> lf_header(std::string_view line)
{
    if (line.starts_with("//")) {
        return std::nullopt;
    }
    const std::optional<std::string_view> after = lf_afterHeader(line);
    return after ? std::optional(lf_digits(line, *after)) : std::nullopt;
}

// What is wrong with the numbers of the headers, empty if they run from 0 without a gap.
static std::string lf_faultOf(const std::vector<std::string_view>& headers)
{
    std::vector<int32_t> numbers;
    bool allNumbered = true;
    for (const std::string_view digits : headers) {
        int32_t number = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
        if (digits.empty()) {
            allNumbered = false;
        } else if (error != std::errc()) {
            return format("fltsim num {} incorrect", digits);
        } else {
            numbers.push_back(number);
        }
    }
    std::sort(numbers.begin(), numbers.end());
    for (size_t i = 0; i < numbers.size(); ++i) {
        if (numbers[i] != static_cast<int32_t>(i)) {
            return format("non-consecutive [fltsim.x] numbers at .x={}", numbers[i]);
        }
    }
    return allNumbered ? "" : "a [fltsim.] section without a number";
}

// --- sections

static bool lf_saysNothing(std::string_view line)
{
    const std::string_view text = gf_withoutSpace(line);
    return text.empty() || text.starts_with("//") || text.starts_with(';');
}

static void lf_endSection(std::vector<std::string_view>& held, CfgSections& cut)
{
    while (!held.empty() && lf_saysNothing(held.back())) {
        held.pop_back();
    }
    if (!held.empty()) {
        cut.sections.push_back(std::move(held));
    }
    held.clear();
}

CfgSections gf_cfgSections(const std::vector<std::string_view>& lines)
{
    constexpr size_t kBracketWithin = 6;  // characters of a line that begins a section of another kind
    CfgSections cut;
    std::vector<std::string_view> headers;
    std::vector<std::string_view> held;
    bool inSection = false;
    for (const std::string_view line : lines) {
        const bool bracket = line.find('[') != std::string_view::npos;
        if (const auto header = bracket ? lf_header(line) : std::nullopt) {
            lf_endSection(held, cut);
            headers.push_back(*header);
            inSection = true;
        } else if (line.substr(0, kBracketWithin).find('[') != std::string_view::npos) {
            lf_endSection(held, cut);
            inSection = false;
        } else if (inSection) {
            held.push_back(line);
        }
    }
    lf_endSection(held, cut);
    cut.any = !headers.empty();
    cut.fault = lf_faultOf(headers);
    return cut;
}

// --- keys

std::optional<CfgKeyValue> gf_cfgKeyValue(std::string_view line)
{
    const size_t equals = line.find('=');
    if (equals == std::string_view::npos) {
        return std::nullopt;
    }
    const CfgKeyValue found{gf_withoutSpace(line.substr(0, equals)),
                            gf_withoutSpace(line.substr(equals + 1))};
    return found.value.empty() ? std::nullopt : std::optional(found);
}

std::string_view gf_withoutComment(std::string_view value)
{
    for (size_t i = 0; i < value.size(); ++i) {
        const bool clear = i == 0 || value[i - 1] == ' ' || value[i - 1] == '\t';
        if (clear && (value[i] == ';' || value.substr(i).starts_with("//"))) {
            return gf_withoutSpace(value.substr(0, i));
        }
    }
    return value;
}

}  // namespace vlt
