#include "scenery/bgl.h"

#include "core/base/text.h"
#include "scenery/bgl_airport.h"

#include <fstream>
#include <set>

namespace vlt {

constexpr size_t kWindow = 1 << 14;      // bytes read at a time
constexpr size_t kHeadWindow = 1 << 12;  // of a file of which only the head may count
constexpr uint64_t kLeastWords = 15;
constexpr uint32_t kHeaderBytes = 56;
constexpr uint64_t kTable = kHeaderBytes / 4;  // word at which the section table begins
constexpr uint64_t kEntryWords = 5;
constexpr uint32_t kAirportSection = 3;
constexpr uint32_t kOtherEntries = 1U << 16;  // flag: the subsection entries have another size

static bool lf_hasHeader(BglWords& words)
{
    return words.has(kLeastWords) && words[1] == kHeaderBytes;
}

// An airport section that can be used: the word at which its first subsection entry begins; 0 for none.
static uint64_t lf_subsection(BglWords& words, uint64_t section)
{
    const uint64_t at = kTable + section * kEntryWords;
    const bool usable = words[at] == kAirportSection && (words[at + 1] & kOtherEntries) == 0;
    return usable ? words[at + 3] / 4 : 0;
}

bool gf_holdsAirports(std::istream& file)
{
    BglWords words(file, kHeadWindow);
    if (!lf_hasHeader(words)) {
        return false;
    }
    const uint64_t sections = words[5];
    if (!words.has(kTable + sections * kEntryWords)) {
        return false;
    }
    for (uint64_t i = 0; i < sections; ++i) {
        if (lf_subsection(words, i) != 0) {
            return true;
        }
    }
    return false;
}

// Files are read in windows of our own.
static std::ifstream lf_open(const std::filesystem::path& path)
{
    std::ifstream file;
    file.rdbuf()->pubsetbuf(nullptr, 0);
    file.open(path, std::ios::binary);
    return file;
}

bool holdsAirports(const std::filesystem::path& path)
{
    try {
        std::ifstream file = lf_open(path);
        return file && gf_holdsAirports(file);
    } catch (const std::exception&) {
        return false;  // it can't be read
    }
}

// Walks records to the end of the file. Ends at an airport where an earlier section's walk has been.
static void lf_walk(BglWords& words, uint64_t first, BglWalk& walk, std::set<uint64_t>& been)
{
    uint64_t at = first;
    while (at < words.size()) {
        const BglRecord record = gf_bglRecord(words, at, words.size());
        const bool newer = record.id == kNewerAirport;
        if (newer || record.id == kOlderAirport) {
            if (!been.insert(at).second) {
                return;
            }
            gf_decodeAirport(words, record, newer, walk);
        }
        if (!record.advances) {
            return;
        }
        at = record.next;
    }
}

BglFile gf_decodeBgl(std::istream& file, const std::string& shown)
{
    BglFile decoded;
    BglWalk walk{shown, decoded};
    try {
        BglWords words(file, kWindow);
        if (!lf_hasHeader(words)) {
            return decoded;
        }
        std::set<uint64_t> been;
        const uint64_t sections = words[5];
        for (uint64_t i = 0; i < sections; ++i) {
            words.step();
            if (const uint64_t entry = lf_subsection(words, i); entry != 0) {
                lf_walk(words, words[entry + 2] / 4, walk, been);
            }
        }
    } catch (const std::exception& e) {
        decoded.log.push_back(format("{} ends too early or is broken: {}", shown, e.what()));
    }
    return decoded;
}

BglFile decodeBglFile(const std::filesystem::path& path, const std::string& shown)
{
    std::ifstream file = lf_open(path);
    return file ? gf_decodeBgl(file, shown) : BglFile{};
}

}  // namespace vlt
