#include "ui/status.h"

#include "core/base/display.h"
#include "core/base/parameters.h"
#include "core/base/text.h"

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
    status["error"] = gf_textOf(&Display::errorText);
    status["message"] = gf_textOf(&Display::messageText);
    status["sim"] = gf_textOf(&Display::simText);
    status["simConnected"] = display.simIndicator.load();
    status["simRunning"] = display.simRunningIndicator.load();
    status["realTraffic"] = display.rtIndicator.load();
    status["title"] = gf_textOf(&Display::titleText);
    status["model"] = gf_textOf(&Display::modelText);
    status["trafficFeed"] = lf_feedWord(display.trafficFeedState);
    status["weatherFeed"] = lf_feedWord(display.weatherFeedState);
    status["liveries"] = display.liveriesCount.load();
    status["live"] = display.liveCount.load();
    status["airport"] = gf_textOf(&Display::airportCode);
    status["airportName"] = gf_textOf(&Display::airportName);
    status["stands"] = display.standCount.load();
    status["quality"] = gf_textOf(&Display::qualityText);
    status["reservedStand"] = gf_textOf(&Display::reservedStandText);
    status["userStand"] = gf_textOf(&Display::standText);
    status["rangeNm"] = LATERAL_RANGE.value.load();
    // Texts of the user's files and of the simulator may hold any bytes.
    return status.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

}  // namespace vlt
