// Saving of what was learned at the park airport, so that the next visit is better than this one.
//
// Worker thread, no state.
#pragma once

#include <filesystem>

namespace vlt {

// Writes the learned file of the park airport to where it is read from at the next visit, or, when one is
// given, to that path. Tells the user the outcome. False if it can't be written, which ends nothing.
bool saveLearned(std::filesystem::path path = {});

// Does so if anything was learned, or the user changed a parking setting meanwhile.
void gf_saveIfLearned();

}  // namespace vlt
