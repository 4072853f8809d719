// One airport record of a scenery file, and what lies in it.
//
// Any thread; the state of a walk belongs to one file.
#pragma once

#include "airports/airports.h"
#include "scenery/bgl_words.h"

#include <cstdint>
#include <string>
#include <vector>

namespace vlt {

// A parking or helipad that makes no stand.
struct SkippedStand {
    std::string id;  // as far as it is known
    std::string reason;
};

struct BglAirport {
    Apf apf;             // with code, name, altitude, bglPath and stands
    bool newer = false;  // the newer form of the record
    std::vector<SkippedStand> skipped;
};

struct BglFile {
    std::vector<BglAirport> airports;  // in file order
    std::vector<std::string> log;      // lines for the log
};

inline constexpr uint32_t kOlderAirport = 0x3C;
inline constexpr uint32_t kNewerAirport = 0xAB;

// A record's place, in words. Its end is never beyond what it lies in.
struct BglRecord {
    uint32_t id = 0;
    uint64_t at = 0;
    uint64_t end = 0;
    uint64_t next = 0;      // where the one behind it begins
    uint32_t bytes = 0;     // as told
    bool advances = false;  // its size leads on
};

// What a file's airports go to.
struct BglWalk {
    const std::string& shown;
    BglFile& file;
};

// The record at a word, in something that ends at `limit`. Throws std::out_of_range beyond the file.
BglRecord gf_bglRecord(BglWords& words, uint64_t at, uint64_t limit);

// Adds the airport of the record to the walk's file, unless its code isn't one.
void gf_decodeAirport(BglWords& words, const BglRecord& record, bool newer, BglWalk& walk);

// The code of an airport out of its packed form; `valid` tells whether it is one of four characters.
std::string lf_decodeIdentifierOrRegionCode(uint32_t word, bool& valid);

}  // namespace vlt
