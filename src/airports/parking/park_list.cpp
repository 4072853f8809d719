#include "airports/parking/park_list.h"

#include "airports/catalogue.h"
#include "core/base/display.h"
#include "core/base/log.h"
#include "core/base/paths.h"
#include "core/base/replace_file.h"
#include "core/base/text.h"
#include "core/base/text_files.h"

#include <algorithm>
#include <filesystem>
#include <set>
#include <string_view>
#include <vector>

namespace vlt {

// What the log calls the file.
static std::string lf_fileName()
{
    return kMyParkAirportsFile.filename().string();
}

static std::string lf_codeOf(std::string_view line)
{
    return gf_upperCase(gf_trimmed(line.substr(0, line.find(','))));
}

// A line with more fields than a code and a stand is somebody's slip: it is skipped, and stays.
static bool lf_isWellFormed(std::string_view line)
{
    return std::ranges::count(line, ',') <= 1;
}

// --- reading

// The airports that stand in the list already.
using KnownCodes = std::set<std::string, std::less<>>;

static void lf_append(const AirportRecord& airport, std::string_view stand, KnownCodes& known)
{
    known.insert(airport.code);
    parkAirports.push_back({airport.code, std::string(stand), airport.lat, airport.lon, 0});
}

// False for an airport that isn't known.
static bool lf_readLine(std::string_view line, KnownCodes& known)
{
    if (!lf_isWellFormed(line)) {
        logLine(format("{}:{} wrong syntax, skipped", lf_fileName(), line));
        return true;
    }
    const std::string code = lf_codeOf(line);
    const AirportRecord* airport = findAirport(code);
    if (airport == nullptr) {
        showMessage(format("airport {} is unknown", code), false);
        return false;
    }
    if (known.contains(code)) {
        logLine(format("{}:{} double, skipped", lf_fileName(), line));
        return true;
    }
    const size_t comma = line.find(',');
    lf_append(*airport, comma == std::string_view::npos ? "" : gf_trimmed(line.substr(comma + 1)), known);
    return true;
}

static ExtText lf_text()
{
    ExtText text = readExtTextFile(kMyParkAirportsFile);
    if (!text.forUser.empty()) {
        showMessage(text.forUser, true);
    }
    return text;
}

static bool lf_readFile(KnownCodes& known)
{
    constexpr size_t kMany = 3000;
    std::error_code error;
    if (!std::filesystem::exists(kMyParkAirportsFile, error)) {
        logLine(gf_shown(kMyParkAirportsFile) + " not found");
        return true;
    }
    const ExtText text = lf_text();
    bool clean = text.whole;
    for (const std::string& line : text.lines) {
        if (!gf_trimmed(line).empty()) {
            clean = lf_readLine(line, known) && clean;
        }
    }
    const std::string shown = gf_shown(kMyParkAirportsFile);
    logLine(format("{} park airport{} read from \"{}\"", parkAirports.size(),
                   gf_plural(std::ssize(parkAirports)), shown));
    if (parkAirports.size() > kMany) {
        showMessage(
            format("Warning: There are a lot of airports ({}) in {}, that will cost {} much cpu time, and "
                   "may give stutters",
                   parkAirports.size(), shown, kProgramName),
            true);
    }
    return clean;
}

// The user's third-party sceneries are park airports without being named.
static void lf_addThirdParty(KnownCodes& known)
{
    int64_t added = 0;
    for (const auto& entry : std::filesystem::directory_iterator(kMyThirdpartyFolder)) {
        const std::filesystem::path& file = entry.path();
        if (gf_upperCase(file.extension().string()) != ".XML") {
            continue;
        }
        const AirportRecord* airport = findAirport(gf_upperCase(file.stem().string()));
        if (airport != nullptr && !known.contains(airport->code)) {
            lf_append(*airport, "", known);
            ++added;
        }
    }
    logLine(format("{} park airport{} added from my_thirdparty folder(-s) ", added, gf_plural(added)));
}

bool lf_readMyParkAirports()
{
    try {
        parkAirports.clear();
        KnownCodes known;
        const bool clean = lf_readFile(known);
        lf_addThirdParty(known);
        return clean;
    } catch (const std::exception& e) {
        logLine(format("lf_readMyParkAirports: {}", e.what()));
        return false;
    }
}

void gf_sortParkAirports(LatLon user)
{
    for (ParkListEntry& entry : parkAirports) {
        entry.distance = distNm(user, gf_placeOf(entry));
    }
    parkAirports.sort([](const ParkListEntry& a, const ParkListEntry& b) { return a.distance < b.distance; });
}

// --- writing

static std::string lf_lineFor(const ParkListEntry& entry)
{
    return entry.stand.empty() ? entry.code : entry.code + "," + entry.stand;
}

static bool lf_write(const std::vector<std::string>& lines)
{
    std::string text;
    for (const std::string& line : lines) {
        text += line + "\r\n";
    }
    const bool written = gf_replaceFile(kMyParkAirportsFile, text);
    if (!written) {
        logLine(format("could not save to \"{}\"", gf_shown(kMyParkAirportsFile)));
    }
    return written;
}

// Puts the entry's line in the place of its old one, or at the end of the file.
static void lf_store(const ParkListEntry& entry)
{
    const std::string line = lf_lineFor(entry);
    std::error_code error;
    if (!std::filesystem::exists(kMyParkAirportsFile, error)) {
        if (lf_write({line})) {
            logLine(format("{} created with {}", lf_fileName(), line));
        }
        return;
    }
    auto [lines, whole, forUser] = lf_text();
    if (!whole) {
        return;  // what can't be read isn't overwritten
    }
    const auto old = std::ranges::find_if(lines, [&entry](const std::string& there) {
        return lf_isWellFormed(there) && lf_codeOf(there) == entry.code;
    });
    if (old != lines.end()) {
        *old = line;
        if (lf_write(lines)) {
            logLine(format("{}:{},{} updated stand", lf_fileName(), entry.code, entry.stand));
        }
        return;
    }
    lines.push_back(line);
    if (lf_write(lines)) {
        logLine(format("{}:{} new entry", lf_fileName(), line));
    }
}

void gf_storeStand(const std::string& stand)
{
    if (!parkAirports.empty()) {
        parkAirports.front().stand = stand;
        lf_store(parkAirports.front());
    }
}

void gf_addParkAirport(const ParkListEntry& entry)
{
    parkAirports.push_front(entry);
    lf_store(entry);
}

}  // namespace vlt
