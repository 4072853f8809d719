#include "tools/scan.h"

#include "core/base/log.h"
#include "core/base/ordered_tasks.h"
#include "core/base/parameters.h"
#include "core/base/paths.h"
#include "core/base/text.h"
#include "liveries/scan_store.h"
#include "scenery/airports_scan.h"
#include "tools/dbase_source.h"

#include <nlohmann/json.hpp>

#include <filesystem>
#include <iostream>
#include <stdexcept>

namespace vlt {

namespace fs = std::filesystem;

// Reads the data base, and goes to the folder of the results. The folders in the form that they keep there.
static std::vector<std::string> lf_begin(const ScanOptions& options)
{
    std::vector<std::string> folders;
    for (const std::string& folder : options.folders) {
        folders.push_back(gf_shown(fs::absolute(folder)));
    }
    fs::create_directories(options.out);
    const std::string dbasePath = options.dbase.empty() ? "" : fs::absolute(options.dbase).string();
    fs::current_path(options.out);
    fs::create_directories(kInputFolder);
    makeFolders();
    logStart();
    gf_loadDbase(dbasePath);
    LIG_PRIORITIZE.value = options.prioritize;
    if (options.threads > 0) {
        scanThreads = options.threads;
    }
    return folders;
}

int gf_scanLiveries(const ScanOptions& options)
{
    const std::vector<std::string> folders = lf_begin(options);
    const LiveryScan result = scanAndStoreLiveries(folders);
    gf_logEnd();
    if (result == LiveryScan::NotStored) {
        throw std::runtime_error(format("{} can't be written", kLiveriesScannedFile.string()));
    }
    const nlohmann::json line = {{"found", result == LiveryScan::Stored},
                                 {"results", fs::absolute(kOutputFolder).string()}};
    std::cout << line.dump() << '\n';
    return result == LiveryScan::Stored ? 0 : 2;
}

int gf_scanScenery(const ScanOptions& options)
{
    const std::vector<std::string> folders = lf_begin(options);
    const bool done = gf_scanSceneries(folders);
    gf_logEnd();
    const nlohmann::json line = {{"done", done}, {"results", fs::absolute(kAirportsFolder).string()}};
    std::cout << line.dump() << '\n';
    return done ? 0 : 1;
}

}  // namespace vlt
