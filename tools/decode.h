// `velatra-tool decode`: feed lines from standard input through the Traffic Reader.
#pragma once

namespace CLI {
class App;
}

namespace vlt {

// Adds the subcommand.
void gf_addDecodeCommand(CLI::App& app);

}  // namespace vlt
