#include <CLI/CLI.hpp>

#include "tools/BlockCommands.h"
#include "tools/InputOutput.h"
#include "tools/TimecodeCommands.h"

int main(int argc, char** argv) {
    CLI::App app{"Works with the files and the time code of the link plug-ins."};
    app.require_subcommand(1);
    AddBlockCommands(app);
    AddTimecodeCommands(app);
    try {
        app.parse(argc, argv);
    } catch (CLI::RuntimeError const& error) {
        return error.get_exit_code();
    } catch (CLI::ParseError const& error) {
        return app.exit(error) == 0 ? exitDone : exitTrouble;
    }
    return exitDone;
}
