// What the user flies: from the texts that its author gave it to a type and a half span.
//
// The handlers run on the SimClient thread; the half span is a shared value that the worker reads.
#pragma once

#include "core/base/shared_value.h"

#include <optional>
#include <string_view>

namespace vlt {

extern SharedValue<double> userHalfSpan;  // nm, 0 while not known

// The simulator told the title.
void gf_onUserTitle(std::string_view title);
// The simulator told the model; none when it told nothing. Throws UserErrorException for a vehicle
// without a model, since the user isn't in an aircraft then.
void gf_onUserModel(std::optional<std::string_view> model);

// As at the start of a run.
void gf_resetUserAircraft();

}  // namespace vlt
