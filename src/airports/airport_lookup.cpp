#include "airports/airport_lookup.h"

#include "airports/airport_file.h"
#include "airports/airports.h"
#include "core/base/display.h"
#include "core/base/log.h"
#include "core/base/paths.h"
#include "core/base/text.h"
#include "core/base/text_files.h"
#include "platform/paths_form.h"

#include <pugixml.hpp>

#include <algorithm>
#include <cmath>

namespace vlt {

static constexpr std::string_view kArchive = "archive";
static constexpr std::string_view kLocal = "airports";

bool gf_isLocalPath(std::string_view path)
{
    return path.starts_with(kLocal) && path.size() > kLocal.size() &&
           (path[kLocal.size()] == '/' || path[kLocal.size()] == '\\');
}

// --- the user's folders

// The path begins with the folder, in any case of its letters, which it has as it stands here afterwards.
static bool lf_leadsInto(std::string& path, std::string_view folder)
{
    const bool begins = path.find('/') == folder.size() &&
                        gf_upperCase(path.substr(0, folder.size())) == gf_upperCase(folder);
    if (begins) {
        path.replace(0, folder.size(), folder);
    }
    return begins;
}

// A link leads to another airport file; whatever else it says counts as nothing.
static std::string lf_readLink(const std::filesystem::path& link)
{
    const ExtText text = readExtTextFile(link);
    if (!text.forUser.empty()) {
        showMessage(text.forUser, true);
    }
    if (!text.whole || text.lines.empty()) {
        return {};
    }
    // The line ends with "xml"; what some editors leave behind it is cut off, and so is what people put
    // around.
    const std::string& line = text.lines.front();
    std::string path = line.substr(std::min(line.find_first_not_of(" \t\"'"), line.size()));
    const size_t last = path.find_last_of("lL");
    path.erase(last == std::string::npos ? 0 : last + 1);
    std::ranges::replace(path, '\\', '/');
    const bool leadsSomewhere = lf_leadsInto(path, kArchive) || lf_leadsInto(path, kLocal);
    if (!leadsSomewhere || path.find("..") != std::string::npos) {
        logLine(format("\"{}\" leads nowhere: \"{}\"", gf_shown(link), line));
        return {};
    }
    return path;
}

static std::string lf_findInFolder(const std::filesystem::path& folder, const std::string& code)
{
    const std::filesystem::path link = gf_toNativeForm((folder / (code + ".txt")).string());
    if (std::filesystem::exists(link)) {
        if (std::string path = lf_readLink(link); !path.empty()) {
            return path;
        }
    }
    const std::filesystem::path file = gf_toNativeForm((folder / (code + ".xml")).string());
    return std::filesystem::exists(file) ? file.generic_string() : std::string();
}

// --- all of them

static std::string lf_findInFolders(const std::string& code)
{
    for (const std::filesystem::path& folder : {kMyThirdpartyFolder, kMyOrbxFolder}) {
        if (std::string path = lf_findInFolder(folder, code); !path.empty()) {
            return path;
        }
    }
    return {};
}

AirportSource findAirportFile(const std::string& code)
{
    if (!gf_isAirportCode(code)) {
        return {};
    }
    if (std::string path = lf_findInFolders(code); !path.empty()) {
        const ServerFile served = gf_isLocalPath(path) ? ServerFile{} : gf_serverFile(path);
        return {std::move(path), served};
    }
    std::string path = format("archive/stock/{}.xml", code);
    const ServerFile served = gf_serverFile(path);
    const bool none = !served.awaited && !served.text;
    return none ? AirportSource{} : AirportSource{std::move(path), served};
}

// --- the learned file

// A publisher's name as it can stand in a path: without what separates folders or leads out of one.
static std::string lf_publisherFolder(std::string_view publisher)
{
    static constexpr std::string_view kUnfit = "\\/:*?\"<>|";
    std::string folder(gf_trimmed(publisher));
    std::ranges::replace_if(
        folder,
        [](char c) {
            return static_cast<unsigned char>(c) < ' ' || kUnfit.find(c) != std::string_view::npos;
        },
        '_');
    if (folder.find_first_not_of('.') == std::string::npos) {
        folder = "unknown";
    }
    return folder;
}

static void lf_replaceAll(std::string& text, std::string_view what, std::string_view with)
{
    for (size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + with.size())) {
        text.replace(at, what.size(), with);
    }
}

// True if `what` was there.
static bool lf_replaceFirst(std::string& text, std::string_view what, std::string_view with)
{
    const size_t at = text.find(what);
    if (at == std::string::npos) {
        return false;
    }
    text.replace(at, what.size(), with);
    return true;
}

std::string learnedPath(std::string_view path, std::string_view publisher)
{
    const std::string learned = kLearnedFolder.generic_string();
    std::string text(path);
    if (text.find(kArchive) != std::string::npos) {
        lf_replaceAll(text, "/", "\\");
        lf_replaceAll(text, "%20", " ");
        lf_replaceFirst(text, kArchive, learned);
        return text;
    }
    if (gf_isLocalPath(text)) {
        lf_replaceFirst(text, kLocal, learned);
        const std::string thirdParty = "thirdparty\\" + lf_publisherFolder(publisher);
        if (!lf_replaceFirst(text, "my_thirdparty2024", thirdParty)) {
            lf_replaceFirst(text, "my_thirdparty", thirdParty);
        }
    }
    return text;
}

std::string gf_savedPath(std::string_view code, std::string_view publisher)
{
    const bool ours = publisher == "stock" || publisher == "simaddon";
    return format("{}/{}/{}.xml", kLearnedFolder.generic_string(),
                  ours ? std::string(publisher) : "thirdparty/" + lf_publisherFolder(publisher), code);
}

// --- another airport's stands

static ClosestStand lf_closestStand(const pugi::xml_document& document, LatLon position)
{
    ClosestStand closest;
    for (const pugi::xml_node& node : document.child("parkpositions").children("parkpos")) {
        const LatLon stand{gf_decimal(node, "latitude"), gf_decimal(node, "longitude")};
        const bool possible = stand != LatLon{} && std::abs(stand.lat) <= 90 && std::abs(stand.lon) <= 180;
        if (const double distance = distNm(position, stand); possible && distance < closest.distance) {
            closest = {distance, node.attribute("id").as_string()};
        }
    }
    return closest;
}

std::optional<ClosestStand> gf_readDestApfForClosestStand(const std::string& code, LatLon position)
{
    const AirportSource source = findAirportFile(code);
    if (source.served.awaited) {
        return std::nullopt;
    }
    pugi::xml_document document;
    const bool parsed = gf_isLocalPath(source.path)
                            ? static_cast<bool>(document.load_file(gf_toNativeForm(source.path).c_str()))
                            : source.served.text && document.load_buffer(source.served.text->data(),
                                                                         source.served.text->size());
    return parsed ? lf_closestStand(document, position) : ClosestStand{};
}

}  // namespace vlt
