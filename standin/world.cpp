#include "standin/world.h"

#include "liveries/dbase_reader.h"
#include "liveries/match_index.h"
#include "liveries/regcodes.h"
#include "standin/publisher.h"

#include <pugixml.hpp>
#include <string>
#include <utility>
#include <vector>

namespace vlt {

void gf_installWorldLiveries(std::list<Livery> installed, const std::function<void()>& bindRegcodes)
{
    gf_clearMatchIndexes();
    liveries = std::move(installed);
    gf_sortLiveries();
    buildMatchIndexes(bindRegcodes);
    liveries.clear();
}

static void lf_bindRegcodes(const std::filesystem::path& folder)
{
    pugi::xml_document document;
    document.load_string(gf_regcodesText(folder).c_str());
    std::vector<RegcodeEntry> entries;
    std::vector<std::string> results;
    gf_readRegcodeDocument(document, "regcodes.xml", entries);
    gf_processRegcodeEntries(entries, results);
}

void gf_loadWorld(const std::filesystem::path& folder)
{
    pugi::xml_document document;
    document.load_string(gf_dbaseText(folder).c_str());
    gf_readDbaseSections(document, "dbase.xml");
    gf_installWorldLiveries(gf_worldLiveries(folder), [&folder] { lf_bindRegcodes(folder); });
}

}  // namespace vlt
