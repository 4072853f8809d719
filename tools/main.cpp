// velatra-tool: opens the engine's parts to people and tests. One subcommand per file beside this one.
#include "tools/decode.h"
#include "tools/match.h"
#include "tools/publish.h"
#include "tools/replay.h"
#include "tools/stand.h"

#include <exception>
#include <iostream>

int main(int argc, char** argv)
{
    try {
        CLI::App tool("Velatra's tool box");
        tool.require_subcommand(1);
        vlt::gf_addDecodeCommand(tool);
        vlt::gf_addMatchCommand(tool);
        vlt::gf_addPublishCommand(tool);
        vlt::gf_addReplayCommand(tool);
        vlt::gf_addStandCommand(tool);
        CLI11_PARSE(tool, argc, argv);
        return 0;
    } catch (const std::exception& e) {
        std::cerr << "velatra-tool: " << e.what() << '\n';
        return 1;
    }
}
