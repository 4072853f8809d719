// velatra-tool publish: makes the files of the download server, and the airport catalogue.
#pragma once

#include <CLI/CLI.hpp>

namespace vlt {

// Adds `publish` with its subcommands dbase, regcodes, liveries and catalogue. Each prints what it wrote
// as one JSON line.
void gf_addPublishCommand(CLI::App& tool);

}  // namespace vlt
