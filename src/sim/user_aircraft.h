// What the user flies: from the texts that its author gave it to a type, a half span and a category.
//
// The handlers run on the SimClient thread; the results are shared values that the worker reads.
#pragma once

#include "core/base/shared_value.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vlt {

extern std::string userTitle;              // [simClient] the aircraft's title, whole
extern std::string userModel;              // [simClient] its model after deduction
extern SharedValue<double> userHalfSpan;   // nm, 0 while not known
extern SharedValue<int32_t> userCategory;  // index of the size category

// The simulator told the title.
void gf_onUserTitle(std::string_view title);
// The simulator told the model; none when it told nothing. Throws UserErrorException for a vehicle
// without a model, since the user isn't in an aircraft then.
void gf_onUserModel(std::optional<std::string_view> model);

// As at the start of a run.
void gf_resetUserAircraft();

}  // namespace vlt
