#include "tools/ToolMain.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cstring>
#include <filesystem>
#include <iostream>
#include <sstream>

#include "tools/HelpFormatter.h"
#include "tools/InputOutput.h"
#include "tools/MistypedCommand.h"
#include "tools/ToolFailure.h"

namespace {

// Without its line feed.
std::string UsageText(CLI::App const& app, CLI::ParseError const& usage) {
    std::ostringstream said, help;
    app.exit(usage, help, said);
    std::string strText = said.str();
    while (!strText.empty() && strText.back() == '\n') strText.pop_back();
    return strText;
}

// What nobody expected has a message made for programmers; say at least what it belongs to.
CToolFailure Unexpected(std::exception const& failure) {
    if (const auto* pFile = dynamic_cast<std::filesystem::filesystem_error const*>(&failure)) {
        return {exitTrouble,
                "cannot use " + Quoted(pFile->path1().string()) + ": " + pFile->code().message(),
                "", "unreadable"};
    }
    if (dynamic_cast<std::bad_alloc const*>(&failure)) {
        return {exitTrouble, "there is not enough memory", "", "memory"};
    }
    return {exitTrouble, failure.what()};
}

int Report(std::string const& strProgram, CToolFailure const& failure, bool fJson) {
    failure.Report(strProgram, fJson);
    return failure.Status();
}

}  // namespace

int RunTool(std::string const& strProgram, int argc, char** argv,
            std::function<void(CLI::App&)> const& addCommands) {
    const bool fJson = std::any_of(
        argv, argv + argc, [](const char* szWord) { return std::strcmp(szWord, "--json") == 0; });
    CLI::App app{"", strProgram};
    int nStatus = exitDone;
    try {
        app.formatter(std::make_shared<CHelpFormatter>());
        app.set_version_flag("--version", TAVARIN_VERSION);
        app.require_subcommand(1);
        addCommands(app);
        try {
            app.parse(argc, argv);
        } catch (CLI::RuntimeError const& end) {
            nStatus = end.get_exit_code();
        } catch (CLI::ParseError const& usage) {
            if (usage.get_exit_code() != 0) {
                const std::string strMistyped = DescribeMistypedCommand(app, argc, argv);
                throw CToolFailure(exitTrouble,
                                   strMistyped.empty() ? UsageText(app, usage) : strMistyped, "",
                                   "usage");
            }
            app.exit(usage);
        }
        RequireOutput();
        return nStatus;
    } catch (CToolFailure const& failure) {
        return Report(strProgram, failure, fJson);
    } catch (std::exception const& failure) {
        return Report(strProgram, Unexpected(failure), fJson);
    }
}
