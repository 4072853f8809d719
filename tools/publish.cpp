#include "tools/publish.h"

#include "core/base/replace_file.h"
#include "core/base/text.h"
#include "core/base/zip_archive.h"
#include "liveries/match_index.h"
#include "liveries/scan_results.h"
#include "standin/airport_files.h"
#include "standin/livery_tree.h"
#include "standin/publisher.h"
#include "standin/scenery_tree.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <sstream>
#include <stdexcept>
#include <utility>

namespace vlt {

static void lf_report(const std::filesystem::path& path)
{
    const nlohmann::json line = {{"written", path.string()}, {"bytes", std::filesystem::file_size(path)}};
    std::cout << line.dump() << '\n';
}

static void lf_write(const std::filesystem::path& path, const std::string& text)
{
    if (!gf_replaceFile(path, text)) {
        throw std::runtime_error(format("{} can't be written", path.string()));
    }
    lf_report(path);
}

static void lf_publishZip(const PublishOptions& options, const char* zipName, const char* entry,
                          const std::string& text)
{
    std::filesystem::create_directories(options.out);
    const std::filesystem::path path = std::filesystem::path(options.out) / zipName;
    gf_writeZip(path, {{entry, text}});
    lf_report(path);
}

int gf_publishDbase(const PublishOptions& options)
{
    lf_publishZip(options, "dbase.zip", "dbase.xml", gf_dbaseText(options.world));
    return 0;
}

int gf_publishRegcodes(const PublishOptions& options)
{
    lf_publishZip(options, "AIG-regcodes.zip", "AIG-regcodes.xml", gf_regcodesText(options.world));
    return 0;
}

int gf_publishLiveries(const PublishOptions& options)
{
    std::filesystem::create_directories(options.out);
    liveries = gf_scannedWorldLiveries(options.world);
    gf_sortLiveries();
    const std::filesystem::path path = std::filesystem::path(options.out) / "LiveriesScanned.xml";
    if (!writeLiveriesScanned(path)) {
        throw std::runtime_error(format("{} can't be written", path.string()));
    }
    lf_report(path);
    return 0;
}

int gf_publishLiveryTree(const PublishOptions& options)
{
    gf_writeLiveryTree(options.world, options.out);
    lf_report(std::filesystem::path(options.out) / "add-on.xml");
    return 0;
}

int gf_publishSceneryTree(const PublishOptions& options)
{
    gf_writeSceneryTree(options.world, options.out);
    const nlohmann::json line = {{"written", options.out}};
    std::cout << line.dump() << '\n';
    return 0;
}

int gf_publishCatalogue(const PublishOptions& options)
{
    if (!options.base.empty()) {
        lf_write(options.out, gf_mergedCatalogue(options.base, options.world));
        return 0;
    }
    std::ifstream in(options.in, std::ios::binary);
    std::ostringstream source;
    source << in.rdbuf();
    if (!in) {
        throw std::runtime_error(format("{} can't be read", options.in));
    }
    lf_write(options.out, gf_catalogueText(source.view()));
    return 0;
}

static void lf_writeArchived(const std::filesystem::path& folder, const ArchivedAirport& airport)
{
    std::filesystem::create_directories(folder);
    lf_write(folder / (airport.code + ".xml"), gf_archivedText(airport));
}

int gf_publishAirports(const PublishOptions& options)
{
    const std::filesystem::path archive = std::filesystem::path(options.out) / "archive";
    for (ArchivedAirport& airport : gf_worldAirports(options.world)) {
        const std::string publisher = std::exchange(airport.publisher, "stock");
        lf_writeArchived(archive / "stock", airport);
        if (publisher != "stock") {
            airport.publisher = publisher;
            lf_writeArchived(archive / "thirdparty" / publisher, airport);
        }
    }
    return 0;
}

int gf_publishAirport(const PublishOptions& options)
{
    ArchivedAirport airport;
    airport.name = options.name;
    airport.elevation = options.elevation;
    airport.stands = gf_standsOfTable(options.in);
    lf_write(options.out, gf_archivedText(airport));
    return 0;
}

}  // namespace vlt
