// A place to load airports in: a working folder with a log, a server that serves a folder of its own, and
// the settings as they were afterwards.
#pragma once

#include "airports/airport_lookup.h"
#include "airports/airports.h"
#include "airports/catalogue.h"
#include "airports/parking/park_airport.h"
#include "core/base/parameters.h"
#include "core/base/paths.h"
#include "core/base/random.h"
#include "core/base/text.h"
#include "liveries/workplace.h"
#include "standin/file_server.h"
#include "support/aircraft.h"
#include "support/fresh_run.h"
#include "traffic/geodesy.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <initializer_list>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

namespace vlt {

// Chance, the same with every run of a test that seeds it: one of 0 to n - 1, or one of these values.
inline uint32_t draw(uint32_t n)
{
    return gf_randomNumber() % n;
}
template <typename Value>
Value one(std::initializer_list<Value> values)
{
    return values.begin()[draw(static_cast<uint32_t>(values.size()))];
}

class AirportPlace : public ::testing::Test
{
protected:
    void SetUp() override
    {
        makeFolders();
        gf_seedRandom(3);
        std::filesystem::create_directories("served/archive/stock");
        place.server.set("http://127.0.0.1:" + std::to_string(server.start()) + "/");
        airportCatalogue.clear();
        gf_freshRun();
    }
    void TearDown() override
    {
        airportCatalogue.clear();
        gf_freshRun();
    }
    // An airport file on the server, in the archive.
    void archive(const std::string& code, const std::string& text) const
    {
        place.folder.write("served/archive/stock/" + code + ".xml", text);
    }

    Workplace place;
    FileServer server{FileServerOptions{"served", 0, FileFault::None, ""}};
};

// What the server holds under the path now, or where the airport's file is now.
inline AirportSource gf_sourceAt(const std::string& path)
{
    gf_forgetServerFiles();
    AirportSource source{path, {}};
    do {
        source.served = gf_isLocalPath(path) ? ServerFile{} : gf_serverFile(path);
    } while (source.served.awaited);
    return source;
}
inline std::string gf_foundFile(const std::string& code)
{
    gf_forgetServerFiles();
    AirportSource source;
    do {
        source = findAirportFile(code);
    } while (source.served.awaited);
    return source.path;
}

// A whole airport file around these `parkpos` elements.
inline std::string gf_airportText(std::string_view stands, std::string_view more = "")
{
    return format("<meta/><parameters><parameter name='airport_name' value='Testfield'/>"
                  "<parameter name='publisher' value='stock'/><parameter name='altitude' value='1e3'/>{}"
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

// A stand, and who stood there, in short and as precise as the file is.
inline std::string gf_shownOption(const StandOption& o)
{
    return format(" [{} {} {} {}:{} day {} at {}{}{} #{}]", o.reg, o.airline, o.type, o.callsign, o.coupledCs,
                  o.day, setToHours(o.hours), o.real ? "" : " soft", o.archived ? "" : " learned",
                  o.sequence);
}
inline std::string gf_shownStand(const ParkPos& s)
{
    std::string text =
        format("{} {:.6f} {:.6f} {:.1f} {:.1f}{}{}{}{}{}{}", s.id, s.lat, s.lon, s.heading * kDegPerRad,
               s.radius * kMetresPerNm, s.heli ? " heli" : "", s.cargo ? " cargo" : "", s.ramp ? " ramp" : "",
               s.manual ? " manual" : "", s.radiusChanged ? " radius!" : "", s.cargoChanged ? " cargo!" : "");
    for (const StandOption& option : s.options) {
        text += gf_shownOption(option);
    }
    return text;
}
inline std::vector<std::string> gf_shownStands(const std::vector<ParkPos>& stands)
{
    std::vector<std::string> all;
    std::ranges::transform(stands, std::back_inserter(all), gf_shownStand);
    return all;
}

}  // namespace vlt
