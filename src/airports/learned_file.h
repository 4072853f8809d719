// The learned file: what live traffic and the user taught, laid over an airport file.
//
// Worker thread, no state: what the file was saved with is only read.
#pragma once

#include "airports/airports.h"
#include "airports/parking_settings.h"

#include <filesystem>
#include <optional>
#include <string>

namespace vlt {

// Merges the learned file `path` into `apf`; a handmade one replaces its stands and sets `apf.handmade`. The
// parking settings that it was saved with go to `settings`. `shown` is the path as the log names it. A file
// that can't be parsed is moved aside, and has no settings; what else goes wrong is logged. The stands are
// whole afterwards either way: a handmade file that fails keeps the archived ones. Gives the file's first
// number with a decimal comma, as gf_decimalComma does.
std::string lf_readLearned(const std::filesystem::path& path, const std::string& shown, Apf& apf,
                           std::optional<ParkingSettings>& settings);

}  // namespace vlt
