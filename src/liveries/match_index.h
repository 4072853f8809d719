// Builds the indexes that answer livery queries from the list of installed liveries.
//
// Worker thread, before the traffic starts. The master index owns the titles; every other index holds
// views into it, so it must not change after it was built. State: the tables of liveries.h.
#pragma once

#include "liveries/liveries.h"

#include <string_view>

namespace vlt {

inline constexpr size_t kLongestTitle = 255;  // bytes that the simulator's field takes before its zero

// Sorts `liveries` by airline, model and title; equal ones keep their order.
void gf_sortLiveries();

// Takes liveries out of `liveries` that no query may find: those without airline, model or title, and
// those whose title the simulator's field can't hold. Each is logged.
void gf_dropUnusableLiveries();

// All indexes from the sorted list `liveries`, but for the registrations' (regcodes.h).
void buildMatchIndexes();

// Its parts, in this order: the master index, then those that lean on it.
void gf_buildAirlineLiveries();
void gf_buildByAirlineModel();
void gf_buildByModel();
void gf_buildSimilarWithLiveries();  // logs the number of models
void gf_buildSimilarPerAirline();
void gf_buildCategoryModels();  // lightModels, buzjetModels, rotorcraftModels

// The models of a category that have a livery, passenger and cargo together, sorted.
std::vector<std::string> gf_modelsOfCategory(AcCategory category);

// The livery is kept for the aircraft whose registration it carries. Fast for a long `specialTitles`.
bool gf_isSpecialTitle(std::string_view title);
// The titles of a list that are not special. The list must be one of the indexes': its answer is kept.
const TitleViews& gf_freeTitles(const TitleViews& titles);

// Empties the master index, all other indexes and what has grown on them: counters, remembered and
// refused titles.
void gf_clearMatchIndexes();

}  // namespace vlt
