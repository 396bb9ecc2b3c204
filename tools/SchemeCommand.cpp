#include "tools/SchemeCommand.h"

#include <unistd.h>

#include <vector>

#include "tools/ToolFailure.h"

namespace {

constexpr char szSchemeProgram[] = "tavarin-scheme";

// Replaces this process by the program; returns only when there is none.
void Become(std::string const& strPath, std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), strPath);
    std::vector<char*> argv;
    for (std::string& strArgument : arguments) argv.push_back(strArgument.data());
    argv.push_back(nullptr);
    execvp(strPath.c_str(), argv.data());
}

}  // namespace

void AddSchemeCommand(CLI::App& app, std::string const& strProgram) {
    CLI::App* const pScheme =
        app.add_subcommand("scheme", "show, judge and convert colour schemes (tavarin-scheme)");
    pScheme->prefix_command();
    pScheme->set_help_flag();
    pScheme->callback([pScheme, strProgram] {
        const std::size_t nSlash = strProgram.rfind('/');
        if (nSlash != std::string::npos) {
            Become(strProgram.substr(0, nSlash + 1) + szSchemeProgram, pScheme->remaining());
        }
        Become(szSchemeProgram, pScheme->remaining());
        throw CToolFailure(
            exitTrouble,
            "tavarin-scheme is not installed; it is built where AppKit is (GNUstep on Linux)");
    });
}
