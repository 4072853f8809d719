#include "ui/status.h"

#include "airports/airports.h"
#include "core/base/display.h"
#include "core/base/parameters.h"
#include "link/qnh_reader.h"
#include "link/traffic_reader.h"

#include <nlohmann/json.hpp>

namespace vlt {

static const char* lf_feedWord(FeedState state)
{
    switch (state) {
    case FeedState::Receiving:
        return "receiving";
    case FeedState::Silent:
        return "silent";
    case FeedState::Stopped:
        return "stopped";
    }
    return "stopped";
}

std::string gf_statusLine()
{
    nlohmann::ordered_json status;
    status["error"] = display.error.load();
    status["message"] = display.message.load();
    status["sim"] = display.sim.name.load();
    status["simConnected"] = display.sim.connected.load();
    status["simRunning"] = display.sim.running.load();
    status["realTraffic"] = display.realTraffic.load();
    status["title"] = display.user.title.load();
    status["model"] = display.user.model.load();
    status["trafficFeed"] = lf_feedWord(trafficReader.state);
    status["weatherFeed"] = lf_feedWord(qnhReader.state);
    status["qnh"] = currentQnh.load();
    status["liveries"] = display.liveriesCount.load();
    status["scanFolder"] = display.scan.folder.load();
    status["scanFiles"] = display.scan.files.load();
    status["scanFound"] = display.scan.found.load();
    status["live"] = display.liveCount.load();
    status["airport"] = display.airport.code.load();
    status["airportName"] = display.airport.name.load();
    status["stands"] = display.airport.standCount.load();
    status["quality"] = display.airport.quality.load();
    status["reservedStand"] = display.airport.reservedStand.load();
    status["userStand"] = display.airport.userStand.load();
    status["airportAltitude"] = display.airport.altitude.load();
    status["trafficWeek"] = display.airport.trafficWeek.load();
    status["handmade"] = display.airport.handmade.load();
    status["static"] = display.airport.staticCount.load();
    status["wanted"] = display.airport.wanted.load();
    status["wantedPercent"] = display.airport.wantedPercent.load();
    status["maxFitReal"] = display.airport.maxFitReal.load();
    status["maxFitSoft"] = display.airport.maxFitSoft.load();
    status["parkingEnabled"] = display.airport.parkingEnabled.load();
    status["updates"] = updateCount.load();
    status["minutesToRenewal"] = display.minutesToRenewal.load();
    status["thirdParty"] = display.thirdPartyCount.load();
    status["orbx"] = display.orbxCount.load();
    status["learnSoftEnabled"] = display.airport.learnSoftEnabled.load();
    status["percentageEnabled"] = display.airport.percentageEnabled.load();
    status["flushStaticEnabled"] = display.airport.flushStaticEnabled.load();
    status["installPathEnabled"] = display.installPathEnabled.load();
    status["rangeNm"] = LATERAL_RANGE.value.load();
    // Texts of the user's files and of the simulator may hold any bytes.
    return status.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

}  // namespace vlt
