#include "scenery/stand_ids.h"

#include "airports/airport_file.h"
#include "core/base/text.h"

#include <algorithm>
#include <set>

namespace vlt {

constexpr std::string_view kLetters = "abcdef";

std::optional<std::string> gf_freeId(StandIds& ids, const std::string& id, size_t place)
{
    if (ids.used.insert(id).second) {
        return id;
    }
    for (const char letter : kLetters) {
        if (ids.used.insert(id + letter).second) {
            ids.marked.push_back(place);
            return id + letter;
        }
    }
    return std::nullopt;
}

// The id is the base alone, or with one of the letters.
static bool lf_isOf(const std::string& id, std::string_view base)
{
    return id == base || (id.size() == base.size() + 1 && id.starts_with(base) &&
                          kLetters.find(id.back()) != std::string_view::npos);
}

static void lf_giveLetters(const std::string& base, std::vector<ParkPos>& stands)
{
    std::vector<ParkPos*> same;
    for (ParkPos& stand : stands) {
        if (lf_isOf(stand.id, base)) {
            same.push_back(&stand);
        }
    }
    std::stable_sort(same.begin(), same.end(),
                     [](const ParkPos* a, const ParkPos* b) { return a->radius > b->radius; });
    for (size_t i = 0; i < same.size() && i <= kLetters.size(); ++i) {
        same[i]->id = i == 0 ? base : base + kLetters[i - 1];
    }
}

void gf_renumber(const StandIds& ids, std::vector<ParkPos>& stands)
{
    // All bases before any id changes: the largest of a group loses its letter.
    std::set<std::string> bases;
    for (const size_t place : ids.marked) {
        bases.insert(stands[place].id.substr(0, stands[place].id.size() - 1));
    }
    for (const std::string& base : bases) {
        lf_giveLetters(base, stands);
    }
}

bool gf_isStandWidth(double widthM)
{
    return gf_isStandRadius(widthM / 2 / kMetresPerNm);
}

}  // namespace vlt
