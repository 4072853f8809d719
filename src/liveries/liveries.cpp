#include "liveries/liveries.h"

namespace vlt {

Dbase dbase;

std::list<Livery> liveries;
PerAirlineAndModel<std::vector<LiveryEntry>> airlineLiveries;
std::array<PerAirlineAndModel<TitleViews>, 2> byAirlineModel;
std::array<TextMap<TitleViews>, 2> byModel;
TextMap<std::string_view> regcodeTitles;
TitleViews specialTitles;
TextMap<std::vector<std::string>> similarWithLiveries;
PerAirlineAndModel<std::vector<std::string>> similarPerAirline;
std::vector<std::string> lightModels, buzjetModels, rotorcraftModels;
TitleViews refusedTitles;
std::unordered_map<uint32_t, std::string_view> titleCache;
std::set<std::string, std::less<>> failedLiveries;
std::set<std::string, std::less<>> refusedAircraft;
std::vector<std::string> dontUseTitles;
std::array<int32_t, 6> matchCounters{};
std::array<std::atomic<bool>, kCategoryCount> categoryInstalled{true, true, true, true, true, true};
bool liveriesProcessed = false;

}  // namespace vlt
