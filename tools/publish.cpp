#include "tools/publish.h"

#include "core/base/text.h"
#include "core/base/xml_file.h"
#include "core/base/zip_archive.h"
#include "liveries/match_index.h"
#include "liveries/scan_results.h"
#include "standin/airport_files.h"
#include "standin/publisher.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <sstream>
#include <stdexcept>

namespace vlt {

// What the options of one subcommand say.
struct PublishOptions {
    std::string world = "data/world";
    std::string out = ".";  // folder, or file for the catalogue
    std::string in;         // the catalogue's source, or a stands table
    std::string base;       // the catalogue to which a world's airports are added
    ArchivedAirport airport;
};

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

static void lf_publishLiveries(const PublishOptions& options)
{
    std::filesystem::create_directories(options.out);
    liveries = gf_worldLiveries(options.world);
    gf_sortLiveries();
    const std::filesystem::path path = std::filesystem::path(options.out) / "LiveriesScanned.xml";
    if (!writeLiveriesScanned(path)) {
        throw std::runtime_error(format("{} can't be written", path.string()));
    }
    lf_report(path);
}

static void lf_publishCatalogue(const PublishOptions& options)
{
    if (!options.base.empty()) {
        lf_write(options.out, gf_mergedCatalogue(options.base, options.world));
        return;
    }
    std::ifstream in(options.in, std::ios::binary);
    std::ostringstream source;
    source << in.rdbuf();
    if (!in) {
        throw std::runtime_error(format("{} can't be read", options.in));
    }
    lf_write(options.out, gf_catalogueText(source.view()));
}

// The archive as the server keeps it.
static void lf_publishAirports(const PublishOptions& options)
{
    const std::filesystem::path folder = std::filesystem::path(options.out) / "archive" / "stock";
    std::filesystem::create_directories(folder);
    for (const ArchivedAirport& airport : gf_worldAirports(options.world)) {
        lf_write(folder / (airport.code + ".xml"), gf_archivedText(airport));
    }
}

static void lf_publishAirport(const PublishOptions& options)
{
    ArchivedAirport airport = options.airport;
    airport.stands = gf_standsOfTable(options.in);
    lf_write(options.out, gf_archivedText(airport));
}

// A subcommand that makes a file from the world folder in the out folder.
static void lf_addWorldCommand(CLI::App& publish, const char* name, const char* what,
                               void (*run)(const PublishOptions&))
{
    CLI::App* command = publish.add_subcommand(name, what);
    const auto options = std::make_shared<PublishOptions>();
    command->add_option("--world", options->world, "folder of the plain tables")->capture_default_str();
    command->add_option("--out", options->out, "folder to write to")->capture_default_str();
    command->callback([options, run] { run(*options); });
}

static void lf_addCatalogueCommand(CLI::App& publish)
{
    CLI::App* command = publish.add_subcommand(
        "catalogue",
        "airports_p3d.xml from a JSON list of airports, or from another one and a world's airports");
    const auto options = std::make_shared<PublishOptions>();
    CLI::Option* in = command->add_option("--in", options->in, "the JSON file");
    CLI::Option* base = command->add_option("--base", options->base, "the airports_p3d.xml to begin with");
    command->add_option("--world", options->world, "folder of the plain tables")
        ->needs(base)
        ->capture_default_str();
    command->add_option("--out", options->out, "the file to write")->required();
    in->excludes(base);
    command->callback([options, in, base] {
        if (in->empty() && base->empty()) {
            throw CLI::RequiredError("--in or --base");
        }
        lf_publishCatalogue(*options);
    });
}

static void lf_addAirportCommand(CLI::App& publish)
{
    CLI::App* command =
        publish.add_subcommand("airport-file", "one archived airport file from a table of stands");
    const auto options = std::make_shared<PublishOptions>();
    command->add_option("--stands", options->in, "the table: id,lat,lon,heading,radius_m,kind")->required();
    command->add_option("--name", options->airport.name, "the airport's name")->required();
    command->add_option("--elevation", options->airport.elevation, "feet")->required();
    command->add_option("--out", options->out, "the file to write")->required();
    command->callback([options] { lf_publishAirport(*options); });
}

void gf_addPublishCommand(CLI::App& tool)
{
    CLI::App* publish = tool.add_subcommand("publish", "make the download server's files from plain tables");
    publish->require_subcommand(1);
    lf_addWorldCommand(*publish, "dbase", "dbase.zip", [](const PublishOptions& options) {
        lf_publishZip(options, "dbase.zip", "dbase.xml", gf_dbaseText(options.world));
    });
    lf_addWorldCommand(*publish, "regcodes", "AIG-regcodes.zip", [](const PublishOptions& options) {
        lf_publishZip(options, "AIG-regcodes.zip", "AIG-regcodes.xml", gf_regcodesText(options.world));
    });
    lf_addWorldCommand(*publish, "liveries", "LiveriesScanned.xml, as if the liveries had been scanned",
                       lf_publishLiveries);

    lf_addWorldCommand(*publish, "airport-files", "the archive of airport files, archive/stock",
                       lf_publishAirports);
    lf_addCatalogueCommand(*publish);
    lf_addAirportCommand(*publish);
}

}  // namespace vlt
