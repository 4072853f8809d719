#include "traffic/flight_plan.h"

#include "core/base/display.h"
#include "core/base/log.h"
#include "core/base/paths.h"
#include "core/base/replace_file.h"
#include "core/base/text.h"
#include "sim/requests.h"

#include <filesystem>
#include <string>
#include <utility>

namespace vlt {

static std::filesystem::path planFolder;  // [worker] empty: none was made

static std::filesystem::path lf_file(uint32_t objectid)
{
    return planFolder / format("{}.pln", objectid);
}

void makeFlightPlanFolder(const std::filesystem::path& folder)
{
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) {
        throw std::filesystem::filesystem_error("create_directory", folder, error);
    }
    planFolder = folder;
}

// The codes come from the feed as they are: what XML reserves is left out, no airport code holds it.
static std::string lf_plainCode(const std::string& code)
{
    std::string plain;
    for (const char c : code) {
        if (c != '<' && c != '>' && c != '&' && static_cast<unsigned char>(c) >= ' ') {
            plain += c;
        }
    }
    return plain;
}

static std::string lf_flightPlanText(const AcBase& ac)
{
    const bool instrument = ac.category == AcCategory::Buzjets || ac.category == AcCategory::Large ||
                            ac.category == AcCategory::Heavy;
    return format("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
                  "<SimBase.Document Type=\"AceXML\" version=\"4,3\">\"\n"
                  "<FlightPlan.FlightPlan>\n"
                  "<FPType>{}</FPType>\n"
                  "<DepartureID>{}</DepartureID>\n"
                  "<DestinationID>{}</DestinationID>\n"
                  "</FlightPlan.FlightPlan>\n"
                  "</SimBase.Document>\n",
                  instrument ? "IFR" : "VFR", lf_plainCode(ac.origin), lf_plainCode(ac.destination));
}

void loadFlightPlan(LiveAc& ac)
{
    if (ac.origin.empty() || ac.destination.empty() || planFolder.empty()) {
        return;
    }
    const std::filesystem::path path = lf_file(ac.objectid);
    if (gf_replaceFile(path, lf_flightPlanText(ac)) && gf_setFlightPlan(ac.objectid, path.string())) {
        ac.flightPlanLoaded = true;
        return;
    }
    logLine(format("{} creating a flight plan failed", logName(ac)));
}

void removeFlightPlan(uint32_t objectid)
{
    const LiveAc* ac = gf_liveByObject(objectid);
    if (ac != nullptr && ac->flightPlanLoaded && std::filesystem::exists(lf_file(objectid))) {
        std::filesystem::remove(lf_file(objectid));
    }
}

void gf_removeFlightPlanFolder()
{
    if (planFolder.empty()) {
        return;
    }
    try {
        std::filesystem::remove_all(std::exchange(planFolder, {}));
    } catch (const std::exception& e) {
        showMessage(format("gf_removeFlightPlanFolder: {}", e.what()), true);
    }
}

}  // namespace vlt
