// velatra-tool match: asks the livery ladder, and tells what it tried.
#pragma once

#include <CLI/CLI.hpp>

namespace vlt {

// Adds `match`. One query comes from its options, many as JSON lines from standard input; each gives one
// JSON line with title, step and the rungs of the ladder.
void gf_addMatchCommand(CLI::App& tool);

}  // namespace vlt
