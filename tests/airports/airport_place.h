// A place to load airports in: a working folder with a log, a server that serves a folder of its own, and
// the settings as they were afterwards.
#pragma once

#include "airports/airports.h"
#include "airports/catalogue.h"
#include "airports/parking/park_airport.h"
#include "core/base/parameters.h"
#include "core/base/paths.h"
#include "core/base/run_state.h"
#include "core/base/text.h"
#include "liveries/workplace.h"
#include "standin/file_server.h"
#include "support/aircraft.h"
#include "support/fresh_run.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>

namespace vlt {

class AirportPlace : public ::testing::Test
{
protected:
    void SetUp() override
    {
        makeFolders();
        std::filesystem::create_directories("served/archive/stock");
        place.server.set("http://127.0.0.1:" + std::to_string(server.start()) + "/");
        airportCatalogue.clear();
        reset();
    }
    void TearDown() override
    {
        airportCatalogue.clear();
        reset();
    }
    static void reset()
    {
        gf_freshRun();
    }

    // An airport file on the server, in the archive.
    void archive(const std::string& code, const std::string& text) const
    {
        place.folder.write("served/archive/stock/" + code + ".xml", text);
    }

    std::string log() const
    {
        return place.log();
    }

    Workplace place;
    FileServer server{FileServerOptions{"served", 0, FileFault::None, ""}};
};

// A whole airport file around these `parkpos` elements.
inline std::string gf_airportText(std::string_view stands, std::string_view more = "")
{
    return format("<meta/><parameters><parameter name='airport_name' value='Testfield'/>"
                  "<parameter name='publisher' value='stock'/><parameter name='altitude' value='1000'/>{}"
                  "</parameters><parkpositions>{}</parkpositions>",
                  more, stands);
}

// A `parkpos` at 47 N 8 E and `metres` east of there, with `more` attributes and children.
inline std::string gf_standText(std::string_view id, double metres, std::string_view more = "",
                                std::string_view children = "")
{
    return format("<parkpos id='{}' latitude='47.000000' longitude='{:.6f}' heading='90.0' radius='20.0' "
                  "{}>{}</parkpos>",
                  id, 8 + metres / 111120 / 0.6819984, more, children);
}

}  // namespace vlt
