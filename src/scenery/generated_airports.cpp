#include "scenery/generated_airports.h"

#include "airports/airport_file.h"
#include "core/base/download.h"
#include "core/base/log.h"
#include "core/base/paths.h"
#include "core/base/replace_file.h"
#include "core/base/text.h"
#include "liveries/liveries.h"

#include <pugixml.hpp>

#include <algorithm>
#include <chrono>
#include <filesystem>

namespace vlt {

namespace fs = std::filesystem;

void gf_tell(AirportScan& scan, std::string line)
{
    logLine(line);
    scan.told.push_back(std::move(line));
}

// --- the folders

// A folder of results while a scan makes it anew.
struct ResultFolder {
    fs::path place, made, old;
};

static std::vector<ResultFolder> lf_resultFolders()
{
    std::vector<ResultFolder> folders;
    for (const fs::path& place : {kMyOrbxFolder, kMyThirdpartyFolder}) {
        const std::string name = place.string();
        folders.push_back({place, name + ".new", name + ".old"});
    }
    return folders;
}

void gf_dropResults()
{
    for (const ResultFolder& folder : lf_resultFolders()) {
        std::error_code ignored;
        fs::remove_all(folder.made, ignored);
    }
}

void gf_beginResults()
{
    gf_dropResults();
    for (const ResultFolder& folder : lf_resultFolders()) {
        std::error_code error;
        fs::create_directories(folder.made, error);
        if (error) {
            logLine(format("{} can't be made: {}", gf_shown(folder.made), error.message()));
        }
    }
}

void gf_recoverResults()
{
    gf_dropResults();
    for (const ResultFolder& folder : lf_resultFolders()) {
        std::error_code error;
        if (!fs::exists(folder.old, error)) {
            continue;
        }
        if (fs::is_empty(folder.place, error) || !fs::exists(folder.place, error)) {
            fs::remove_all(folder.place, error);
            fs::rename(folder.old, folder.place, error);
        } else {
            fs::remove_all(folder.old, error);
        }
    }
}

static bool lf_swap(const ResultFolder& folder)
{
    std::error_code error;
    fs::remove_all(folder.old, error);
    fs::rename(folder.place, folder.old, error);
    if (!error || !fs::exists(folder.place)) {
        fs::rename(folder.made, folder.place, error);
    }
    if (error) {
        logLine(format("{} can't be replaced: {}", gf_shown(folder.place), error.message()));
    }
    return !error;
}

bool gf_placeResults()
{
    const std::vector<ResultFolder> folders = lf_resultFolders();
    const bool made = std::ranges::all_of(folders, [](const ResultFolder& folder) {
        std::error_code error;
        return fs::is_directory(folder.made, error);
    });
    bool placed = made;
    for (const ResultFolder& folder : folders) {
        placed = placed && lf_swap(folder);
    }
    for (const ResultFolder& folder : folders) {
        std::error_code error;
        if (!placed && fs::exists(folder.old, error)) {
            fs::remove_all(folder.place, error);
            fs::rename(folder.old, folder.place, error);
        }
        fs::remove_all(folder.old, error);
    }
    return placed;
}

// --- links

std::string gf_archivePath(std::string_view publisher, std::string_view code)
{
    if (publisher == kSimaddon) {
        return format("archive/simaddon/{}.xml", code);
    }
    std::string name;
    for (const char c : publisher) {
        name.append(c == ' ' ? "%20" : std::string(1, c));
    }
    return format("archive/thirdparty/{}/{}.xml", name, code);
}

std::optional<ArchivedAirportInfo> gf_archivedInfo(const std::string& path, AirportScan& scan)
{
    constexpr std::chrono::seconds kLimit(20);
    constexpr int32_t kMostFailures = 3;  // then the server isn't there
    if (scan.serverFailures >= kMostFailures) {
        return std::nullopt;
    }
    const std::optional<std::string> text = gf_fetchText(path, kLimit);
    pugi::xml_document document;
    if (!text || !document.load_buffer(text->data(), text->size())) {
        ++scan.serverFailures;
        return std::nullopt;
    }
    scan.serverFailures = 0;
    const auto stands = document.child("parkpositions").children("parkpos");
    return ArchivedAirportInfo{static_cast<size_t>(std::distance(stands.begin(), stands.end())),
                               gf_intParameter(document, "Qf_real").value_or(-1),
                               gf_intParameter(document, "RT_traffic_week").value_or(0)};
}

static bool lf_isThirdParty(std::string_view publisher, std::string_view code)
{
    return std::ranges::any_of(dbase.thirdParties, [&](const ThirdPartyAirports& row) {
        return row.pub == publisher && std::ranges::find(row.arpts, code) != row.arpts.end();
    });
}

static void lf_writeLink(const fs::path& folder, const Apf& apf, const std::string& archivePath,
                         AirportScan& scan)
{
    if (!gf_replaceFile(folder.string() + ".new/" + apf.code + ".txt", archivePath + "\n")) {
        scan.unwritten = true;
        gf_tell(scan, format("===> the link of {} could not be written", apf.code));
    }
}

LinkOutcome linkOrGenerate(const Apf& apf, AirportScan& scan)
{
    const std::string path = gf_archivePath(apf.publisher, apf.code);
    if (apf.publisher == kUnknownPublisher) {
        return {};
    }
    if (apf.publisher == kSimaddon) {
        if (!dbase.simaddonsP3D.contains(apf.code)) {
            gf_tell(scan, format("{} does not exist as simaddon", apf.code));
            return {};
        }
        lf_writeLink(kMyOrbxFolder, apf, path, scan);
        gf_tell(scan, format("{} airport {} linked to {}", kSimaddon, apf.code, path));
        scan.linked.try_emplace(apf.code, LinkedAirport{apf.publisher, std::nullopt});
        return {true, std::nullopt};
    }
    if (!lf_isThirdParty(apf.publisher, apf.code)) {
        gf_tell(scan, format("thirdparty {} {} does not exist", apf.publisher, apf.code));
        return {};
    }
    lf_writeLink(kMyThirdpartyFolder, apf, path, scan);
    gf_tell(scan, format("thirdparty airport {} linked to {}", apf.code, path));
    const auto [place, added] = scan.linked.try_emplace(apf.code, LinkedAirport{apf.publisher, std::nullopt});
    if (added) {
        place->second.archived = gf_archivedInfo(path, scan);
    }
    const std::optional<ArchivedAirportInfo>& archived = place->second.archived;
    return {true, archived ? std::optional(archived->stands) : std::nullopt};
}

// --- generated files

void generateAirport(Apf apf, AirportScan& scan)
{
    const size_t count = apf.stands.size();
    const fs::path& folder = apf.publisher == kSimaddon ? kMyOrbxFolder : kMyThirdpartyFolder;
    const fs::path path = folder.string() + ".new/" + apf.code + ".xml";
    size_t& before = scan.generated[path.string()];
    if (count == 0 || count < before) {
        return;
    }
    const auto helipads = std::ranges::count(apf.stands, true, &ParkPos::heli);
    std::string line =
        format("Generated {}: {} position{}", apf.code, count, gf_plural(static_cast<int64_t>(count)));
    if (helipads > 0) {
        line += format(", of which {} helipad{}", helipads, gf_plural(helipads));
    }
    gf_tell(scan, std::move(line));
    std::stable_sort(apf.stands.begin(), apf.stands.end(),
                     [](const ParkPos& a, const ParkPos& b) { return a.id < b.id; });
    if (count <= kMostStands && saveAirportFile(apf, path, AirportFileMode::Generated)) {
        before = count;
    } else {
        scan.unwritten = scan.unwritten || count <= kMostStands;
        gf_tell(scan, format("===> Generating {} did not succeed", apf.code));
    }
}

}  // namespace vlt
