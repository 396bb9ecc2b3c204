#include "tools/MistypedCommand.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

#include "tools/InputOutput.h"

namespace {

// How many letters have to be put in, taken out or changed to get from one word to the other.
std::size_t Distance(std::string const& strFrom, std::string const& strTo) {
    std::vector<std::size_t> row(strTo.size() + 1);
    std::iota(row.begin(), row.end(), std::size_t{0});
    for (std::size_t nFrom = 0; nFrom < strFrom.size(); ++nFrom) {
        std::size_t nDiagonal = std::exchange(row[0], nFrom + 1);
        for (std::size_t nTo = 0; nTo < strTo.size(); ++nTo) {
            const std::size_t nChanged = nDiagonal + (strFrom[nFrom] != strTo[nTo]);
            nDiagonal = row[nTo + 1];
            row[nTo + 1] = std::min({nChanged, row[nTo] + 1, row[nTo + 1] + 1});
        }
    }
    return row.back();
}

std::string Nearest(CLI::App const& app, std::string const& strWord) {
    const auto commands = app.get_subcommands([](CLI::App const*) { return true; });
    const auto nearest = std::min_element(
        commands.begin(), commands.end(), [&](CLI::App const* pLeft, CLI::App const* pRight) {
            return Distance(strWord, pLeft->get_name()) < Distance(strWord, pRight->get_name());
        });
    return nearest == commands.end() ? "" : (*nearest)->get_name();
}

CLI::App const* Named(CLI::App const& app, std::string const& strName) {
    const auto found =
        app.get_subcommands([&](CLI::App const* pApp) { return pApp->get_name() == strName; });
    return found.empty() ? nullptr : found.front();
}

bool TakesValue(CLI::App const& app, std::string const& strOption) {
    const CLI::Option* const pOption = app.get_option_no_throw(strOption);
    return pOption != nullptr && pOption->get_items_expected_min() > 0;
}

}  // namespace

std::string DescribeMistypedCommand(CLI::App const& app, int argc, char const* const* argv) {
    CLI::App const* pApp = &app;
    std::string strWay = app.get_name();
    for (int nWord = 1; nWord < argc; ++nWord) {
        const std::string strWord = argv[nWord];
        if (pApp->get_require_subcommand_min() == 0) return "";
        if (strWord.starts_with('-')) {
            nWord += TakesValue(*pApp, strWord);
            continue;
        }
        CLI::App const* const pNext = Named(*pApp, strWord);
        if (pNext == nullptr)
            return "there is no command " + Quoted(strWord) + " in \"" + strWay +
                   "\"; did you mean " + Quoted(Nearest(*pApp, strWord)) + "?";
        pApp = pNext;
        strWay += " " + strWord;
    }
    return "";
}
