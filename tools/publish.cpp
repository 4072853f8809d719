#include "tools/publish.h"

#include "core/text.h"
#include "core/xml_file.h"
#include "core/zip_archive.h"
#include "liveries/match_index.h"
#include "liveries/scan_results.h"
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
    std::string in;         // the catalogue's source
};

static void lf_report(const std::filesystem::path& path)
{
    const nlohmann::json line = {{"written", path.string()}, {"bytes", std::filesystem::file_size(path)}};
    std::cout << line.dump() << '\n';
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
    std::ifstream in(options.in, std::ios::binary);
    std::ostringstream source;
    source << in.rdbuf();
    if (!in || !gf_replaceFile(options.out, gf_catalogueText(source.view()))) {
        throw std::runtime_error(format("{} or {} can't be read or written", options.in, options.out));
    }
    lf_report(options.out);
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

    CLI::App* catalogue =
        publish->add_subcommand("catalogue", "airports_p3d.xml from a JSON list of airports");
    const auto options = std::make_shared<PublishOptions>();
    catalogue->add_option("--in", options->in, "the JSON file")->required();
    catalogue->add_option("--out", options->out, "the file to write")->required();
    catalogue->callback([options] { lf_publishCatalogue(*options); });
}

}  // namespace vlt
