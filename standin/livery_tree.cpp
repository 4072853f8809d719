#include "standin/livery_tree.h"

#include "core/base/text.h"
#include "liveries/liveries.h"
#include "standin/publisher.h"

#include <fstream>
#include <list>
#include <map>
#include <stdexcept>

namespace vlt {

namespace fs = std::filesystem;

static void lf_write(const fs::path& path, std::string_view text)
{
    fs::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file << text;
    if (!file.flush()) {
        throw std::runtime_error(format("{} can't be written", path.string()));
    }
}

// The text as the author of the nth aircraft saves it: as it is, with a mark, or in UTF-16. Our tables are
// ASCII.
static std::string lf_encoded(const std::string& text, size_t n)
{
    if (n % 3 == 1) {
        return "\xEF\xBB\xBF" + text;
    }
    if (n % 3 == 2) {
        std::string wide = "\xFF\xFE";
        for (const char c : text) {
            wide.append({c, '\0'});
        }
        return wide;
    }
    return text;
}

static std::string lf_section(const Livery& livery, size_t number, size_t author)
{
    const bool loud = author % 2 == 1;
    std::string text = format("{}{}]\r\n{}={}\r\n", loud ? "[FLTSIM." : "[fltsim.", number,
                              loud ? "Title " : "title", livery.title);
    text += format("sim={0}\r\nmodel={0}\r\ntexture={1}\r\n", loud ? "AI" : "", number);
    if (livery.airline != kPrivateAirline) {
        text += format("atc_parking_codes={}{}\r\n", livery.airline, loud ? ",XXX" : "");
    }
    text += format("atc_parking_types={}\r\n", livery.cargo ? "cargo,RAMP" : "GATE");
    if (!livery.atcid.empty()) {
        text += format("ATC_ID={}{}\r\n", livery.atcid, loud ? " ; printed on the tail" : "");
    }
    return text + "\r\n// ----\r\n";
}

static void lf_writeAircraft(const std::string& type, const std::list<Livery>& all, size_t author,
                             const fs::path& folder)
{
    std::string text = "// An invented aircraft\r\n";
    size_t number = 0;
    for (const Livery& livery : all) {
        lf_write(folder / format("texture.{}", number) / "texture.cfg", "[fltsim]\r\n");
        text += lf_section(livery, number++, author);
    }
    text += format("[General]\r\natc_type=VELATRA\r\natc_model={}\r\n", type);
    // Without a name the model's folder has none behind its dot, which no disk of the simulator's keeps.
    const bool named = author % 2 == 1;
    lf_write(folder / (named ? "model.AI" : "model") / (named ? "AI.air" : ".air"), "flight model");
    lf_write(folder / (named ? "Aircraft.CFG" : "aircraft.cfg"), lf_encoded(text, author));
}

void gf_writeLiveryTree(const fs::path& world, const fs::path& folder)
{
    std::map<std::string, std::list<Livery>> byType;
    for (const Livery& livery : gf_worldLiveries(world)) {
        byType[livery.model].push_back(livery);
    }
    lf_write(folder / "add-on.xml",
             "\xEF\xBB\xBF<?xml version=\"1.0\"?>\r\n<SimBase.Document Type=\"AddOnXml\" version=\"4,0\">\r\n"
             "  <AddOn.Component><Category>Scenery</Category><Path>scenery</Path></AddOn.Component>\r\n"
             "  <AddOn.Component>\r\n    <Category>SimObjects</Category>\r\n    "
             "<Path>SimObjects\\Airplanes</Path>\r\n"
             "  </AddOn.Component>\r\n</SimBase.Document>\r\n");
    size_t author = 0;
    for (const auto& [type, all] : byType) {
        lf_writeAircraft(type, all, author++, folder / "SimObjects" / "Airplanes" / ("VWorld " + type));
    }
}

}  // namespace vlt
