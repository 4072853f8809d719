// The subcommand `replay`: a recording through the whole engine on a virtual clock.
#pragma once

#include <CLI/CLI.hpp>

namespace vlt {

void gf_addReplayCommand(CLI::App& app);

}  // namespace vlt
