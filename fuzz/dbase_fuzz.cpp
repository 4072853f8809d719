// Any bytes as the published data base, and as a regcode file: an orderly end, whatever they are.
#include "liveries/database.h"
#include "liveries/dbase_reader.h"
#include "liveries/liveries.h"
#include "liveries/regcode_files.h"

#include <pugixml.hpp>

#include <cstdlib>
#include <stdexcept>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    pugi::xml_document document;
    document.load_buffer(data, size);
    vlt::dbase = {};
    try {
        vlt::gf_readDbaseSections(document, "fuzz");
        if (vlt::dbase.aircrafts.empty() || vlt::dbase.ICAO_airlines.empty()) {
            std::abort();  // success with a list that may not be empty
        }
    } catch (const std::runtime_error&) {
    } catch (const std::out_of_range&) {
    }
    for (const auto& [type, halfSpan] : vlt::dbase.halfWingspans) {
        if (!(halfSpan > 0 && halfSpan <= vlt::dbase.largestHalfWingspan &&
              vlt::halfWingspanNm(type) == halfSpan)) {
            std::abort();
        }
    }
    std::vector<vlt::RegcodeEntry> entries;
    vlt::gf_readRegcodeDocument(document, "fuzz", entries);
    return 0;
}
