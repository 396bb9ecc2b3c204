#include <CLI/CLI.hpp>

#include "tools/BlockCommands.h"
#include "tools/InputOutput.h"
#include "tools/LinkCommands.h"
#include "tools/SchemeCommand.h"
#include "tools/TimecodeCommands.h"
#include "tools/ToolMain.h"
#include "tools/check/CheckCommand.h"

int main(int argc, char** argv) {
    return RunTool("tavarin", argc, argv, [&](CLI::App& app) {
        app.description(
            "The Tavarin Pro link, its session files and its time code, from a terminal.");
        AddLinkCommands(app);
        AddCheckCommand(app);
        AddBlockCommands(app);
        AddTimecodeCommands(app);
        AddSchemeCommand(app, argv[0]);
    });
}
