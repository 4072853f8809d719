#include "traffic/flight_plan.h"

#include "core/base/display.h"
#include "core/base/log.h"
#include "core/base/paths.h"
#include "core/base/replace_file.h"
#include "core/base/text.h"
#include "platform/folders.h"
#include "sim/requests.h"

#include <filesystem>
#include <string>

namespace vlt {

static std::filesystem::path lf_folder()
{
    return gf_dataFolder() / "orig_dest";
}

static std::filesystem::path lf_file(uint32_t objectid)
{
    return lf_folder() / format("{}.pln", objectid);
}

void makeFlightPlanFolder()
{
    std::error_code error;
    std::filesystem::create_directories(lf_folder(), error);
    if (error) {
        throw std::filesystem::filesystem_error("create_directory", lf_folder(), error);
    }
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
    if (ac.origin.empty() || ac.destination.empty()) {
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
    try {
        std::filesystem::remove_all(lf_folder());
    } catch (const std::exception& e) {
        showMessage(format("gf_removeFlightPlanFolder: {}", e.what()), true);
    }
}

}  // namespace vlt
