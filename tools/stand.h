// The subcommand `stand`: which stand the reports of a feed lead to.
#pragma once

#include <CLI/CLI.hpp>

namespace vlt {

void gf_addStandCommand(CLI::App& app);

}  // namespace vlt
