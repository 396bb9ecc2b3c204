#include <CLI/CLI.hpp>

#include "tools/LinkCommands.h"
#include "tools/ToolExit.h"

int main(int argc, char** argv) {
    CLI::App app{"The Tavarin Pro link, its session files and its time code, from a terminal."};
    app.name("tavarin");
    app.set_version_flag("--version", TAVARIN_VERSION);
    app.require_subcommand(1);
    AddLinkCommands(app);

    try {
        app.parse(argc, argv);
    } catch (CLI::RuntimeError const& failure) {
        return failure.get_exit_code();
    } catch (CLI::ParseError const& usage) {
        return app.exit(usage) == 0 ? kToolDone : kToolUsage;
    }
    return kToolDone;
}
