#include <CLI/CLI.hpp>

#include "tools/BlockCommands.h"
#include "tools/LinkCommands.h"
#include "tools/SchemeCommand.h"
#include "tools/TimecodeCommands.h"
#include "tools/ToolFailure.h"
#include "tools/check/CheckCommand.h"

int main(int argc, char** argv) {
    CLI::App app{"The Tavarin Pro link, its session files and its time code, from a terminal."};
    app.name("tavarin");
    app.set_version_flag("--version", TAVARIN_VERSION);
    app.require_subcommand(1);
    AddLinkCommands(app);
    AddCheckCommand(app);
    AddBlockCommands(app);
    AddTimecodeCommands(app);
    AddSchemeCommand(app, argv[0]);
    try {
        app.parse(argc, argv);
    } catch (CToolFailure const& failure) {
        failure.Report("tavarin");
        return failure.Status();
    } catch (CLI::RuntimeError const& end) {
        return end.get_exit_code();
    } catch (CLI::ParseError const& usage) {
        return app.exit(usage) == 0 ? exitDone : exitTrouble;
    }
    return exitDone;
}
